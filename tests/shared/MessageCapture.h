#ifndef MESSAGECAPTURE_H
#define MESSAGECAPTURE_H

#include <QStringList>
#include <QtGlobal>

// Collects every Qt message while it lives, then puts back the handler it
// replaced. Only one may exist at a time. A tab widget constructed while it
// lives replaces it in turn, so create it after the widget.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    // The messages so far, oldest first, exactly as the handler received them.
    QStringList Messages() const;

private:
    QtMessageHandler m_Previous;
};

#endif
