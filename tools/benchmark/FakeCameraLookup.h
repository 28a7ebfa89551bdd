#ifndef FAKECAMERALOOKUP_H
#define FAKECAMERALOOKUP_H

#include <PkoAPI/PkoAPI.h>

#include <QString>

// The SDK's camera for the fake GigE Vision camera with that serial, under
// either id discovery gives it; null when discovery has not found it.
ZMT::PkoAPI::CameraPtr FindFakeCamera(const QString& serial);

#endif
