#include "MessageCapture.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex g_Lock;
QStringList g_Messages;

void Capture(QtMsgType, const QMessageLogContext&, const QString& message)
{
    QMutexLocker locker(&g_Lock);
    g_Messages.append(message);
}

}  // namespace

MessageCapture::MessageCapture()
{
    {
        QMutexLocker locker(&g_Lock);
        g_Messages.clear();
    }
    m_Previous = qInstallMessageHandler(Capture);
}

MessageCapture::~MessageCapture()
{
    qInstallMessageHandler(m_Previous);
}

QStringList MessageCapture::Messages() const
{
    QMutexLocker locker(&g_Lock);
    return g_Messages;
}
