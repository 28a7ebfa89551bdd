#ifndef PKOAPI_SRC_SIM_SIMCAMERAPROVIDER_H
#define PKOAPI_SRC_SIM_SIMCAMERAPROVIDER_H

#include "CameraProvider.h"

namespace ZMT::PkoAPI::Sim {

// The ready-made simulated models, made once and always present.
class SimCameraProvider : public CameraProvider {
public:
    SimCameraProvider();

    void AppendCameras(std::vector<CameraPtr>& cameras) override;
    CameraPtr FindCamera(const std::string& id) override;

private:
    // Never changes after construction, so it needs no lock.
    std::vector<CameraPtr> m_Cameras;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
