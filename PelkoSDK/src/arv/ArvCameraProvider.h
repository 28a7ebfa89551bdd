#ifndef PKOAPI_SRC_ARV_ARVCAMERAPROVIDER_H
#define PKOAPI_SRC_ARV_ARVCAMERAPROVIDER_H

#include "CameraProvider.h"

#include <mutex>

namespace ZMT::PkoAPI::Arv {

// The cameras Aravis reaches. A camera once found keeps its object for the
// lifetime of the process, also while it is not found again.
class ArvCameraProvider : public CameraProvider {
public:
    // Runs a discovery (about a second).
    void AppendCameras(std::vector<CameraPtr>& cameras) override;
    // IDs are "ARV:" + what Aravis can open; one not known yet is probed.
    CameraPtr FindCamera(const std::string& id) override;

private:
    std::mutex m_Mutex;  // guards m_Known, which grows as Aravis finds cameras
    std::vector<CameraPtr> m_Known;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
