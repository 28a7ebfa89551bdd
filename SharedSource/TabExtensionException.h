#ifndef TABEXTENSIONEXCEPTION_H
#define TABEXTENSIONEXCEPTION_H

#include <QString>

// Thrown by a tab widget that refuses to exist; the plug-in hands
// m_ErrorCode back to the host. Thrown and caught by reference.
class TabExtensionException {
public:
    TabExtensionException(const QString& origin, const QString& message, int errorCode)
        : m_Origin(origin), m_Message(message), m_ErrorCode(errorCode)
    {}

    QString m_Origin;   // the class that threw
    QString m_Message;  // why
    int m_ErrorCode;    // what CreateTabWidget returns to the host
};

#endif
