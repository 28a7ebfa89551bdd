#ifndef TENOTSUPPORTED_H
#define TENOTSUPPORTED_H

#include "TabExtensionException.h"

// The camera does not support what the tab needs.
class TENotSupported : public TabExtensionException {
public:
    TENotSupported(const QString& origin, const QString& message) : TabExtensionException(origin, message, 4) {}
};

#endif
