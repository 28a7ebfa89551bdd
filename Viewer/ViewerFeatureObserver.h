#ifndef VIEWERFEATUREOBSERVER_H
#define VIEWERFEATUREOBSERVER_H

#include <PkoAPI/IFeatureObserver.h>

#include <mutex>

class FeatureTableModel;

// Hands the SDK's change callbacks (which arrive on SDK threads) to the
// Features table in the GUI thread. The SDK may keep the observer alive after
// the table is gone, so the table detaches itself before it dies.
class ViewerFeatureObserver : public ZMT::PkoAPI::IFeatureObserver {
public:
    explicit ViewerFeatureObserver(FeatureTableModel* target);

    // Queues FeatureTableModel::OnFeatureChanged for the feature into the
    // target's thread; does nothing once detached. Never throws.
    void FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature) override;
    // No callback reaches the target after this returns. Cannot fail.
    void Detach();

private:
    std::mutex m_Mutex;
    FeatureTableModel* m_Target;
};

#endif
