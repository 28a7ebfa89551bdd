#include <PkoAPI/PkoSystem.h>

#include "CameraProvider.h"

#include <new>

namespace ZMT::PkoAPI {

CameraPtr FindByID(const std::vector<CameraPtr>& cameras, const std::string& id)
{
    for (const CameraPtr& candidate : cameras) {
        std::string candidateId;
        if (candidate->GetID(candidateId) == PkoErrorSuccess && candidateId == id)
            return candidate;
    }
    return CameraPtr();
}

PkoSystem& PkoSystem::GetInstance()
{
    static PkoSystem instance;
    return instance;
}

PkoSystem::PkoSystem() : m_Providers(MakeCameraProviders()) {}

PkoSystem::~PkoSystem() = default;

int PkoSystem::GetCameras(std::vector<CameraPtr>& cameras)
{
    try {
        std::vector<CameraPtr> all;
        for (const std::unique_ptr<CameraProvider>& provider : m_Providers)
            provider->AppendCameras(all);
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
    try {
        for (const std::unique_ptr<CameraProvider>& provider : m_Providers) {
            if (CameraPtr found = provider->FindCamera(id)) {
                camera = found;
                return PkoErrorSuccess;
            }
        }
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorNotFound;
}

}  // namespace ZMT::PkoAPI
