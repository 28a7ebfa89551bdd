#include <PkoAPI/PkoSystem.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <cstring>
#include <new>

namespace ZMT::PkoAPI {

PkoSystem& PkoSystem::GetInstance()
{
    static PkoSystem instance;
    return instance;
}

PkoSystem::PkoSystem()
{
    for (const std::string& id : Sim::ModelIds()) {
        if (Sim::SimCameraPtr camera = Sim::CreateModel(id))
            m_Cameras.push_back(camera);
    }
}

int PkoSystem::GetCameras(std::vector<CameraPtr>& cameras)
{
    try {
        std::vector<CameraPtr> all(m_Cameras);
        cameras.swap(all);
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

int PkoSystem::GetCameraByID(const char* id, CameraPtr& camera)
{
    if (id == nullptr)
        return PkoErrorBadParameter;
    for (const CameraPtr& candidate : m_Cameras) {
        std::string candidateId;
        if (candidate->GetID(candidateId) == PkoErrorSuccess && candidateId == id) {
            camera = candidate;
            return PkoErrorSuccess;
        }
    }
    return PkoErrorNotFound;
}

}  // namespace ZMT::PkoAPI
