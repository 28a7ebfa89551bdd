#include "ViewerFeatureObserver.h"

#include "FeatureTableModel.h"

#include <QMetaObject>

ViewerFeatureObserver::ViewerFeatureObserver(FeatureTableModel* target) : m_Target(target) {}

void ViewerFeatureObserver::FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Target == nullptr) {
        return;
    }
    // The pointer only serves as a key: the table maps it to its row. The
    // queued call is dropped by Qt if the table dies before it runs.
    FeatureTableModel* target = m_Target;
    const ZMT::PkoAPI::Feature* changed = feature.get();
    QMetaObject::invokeMethod(
        target, [target, changed]() { target->OnFeatureChanged(changed); }, Qt::QueuedConnection);
}

void ViewerFeatureObserver::Detach()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_Target = nullptr;
}
