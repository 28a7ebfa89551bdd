#include "RecordingTabWidget.h"

RecordingTabWidget::RecordingTabWidget(FeatureVectorPtr features, const QStringList& observed)
    : BaseTabPluginWidget(features, nullptr)
{
    m_ObservedFeatures = observed;
}

RecordingTabWidget::~RecordingTabWidget()
{
    if (!m_FreeOnDestruction)
        return;
    delete m_UpdateTimer;
    delete m_Mutex;
    delete m_ChangedFeatures;
    delete m_FeatureManager;
}

void RecordingTabWidget::UpdateFromChangedFeatures()
{
    m_Calls.append(*m_ChangedFeatures);
    // A non-recursive mutex held by this thread cannot be taken again.
    const bool wasFree = m_Mutex->tryLock();
    if (wasFree)
        m_Mutex->unlock();
    m_MutexHeld.append(!wasFree);
    if (m_DuringUpdate)
        m_DuringUpdate();
}
