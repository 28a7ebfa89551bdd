#include "ChangeRecorder.h"

void ChangeRecorder::OnChanged(const QString& name, const QString& value)
{
    m_Changes.append(qMakePair(name, value));
    m_Threads.append(QThread::currentThread());
}
