#include "SimCameraProvider.h"

#include <PkoAPI/Sim/SimCamera.h>

namespace ZMT::PkoAPI::Sim {

SimCameraProvider::SimCameraProvider()
{
    for (const std::string& id : ModelIds()) {
        if (SimCameraPtr camera = CreateModel(id))
            m_Cameras.push_back(camera);
    }
}

void SimCameraProvider::AppendCameras(std::vector<CameraPtr>& cameras)
{
    cameras.insert(cameras.end(), m_Cameras.begin(), m_Cameras.end());
}

CameraPtr SimCameraProvider::FindCamera(const std::string& id)
{
    return FindByID(m_Cameras, id);
}

}  // namespace ZMT::PkoAPI::Sim
