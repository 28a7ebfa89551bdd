#include <PkoAPI/PkoSystem.h>
#include <PkoAPI/Sim/SimCamera.h>

#include "arv/ArvCameraImpl.h"
#include "arv/ArvDiscovery.h"

#include <cstring>
#include <mutex>
#include <new>

namespace ZMT::PkoAPI {

namespace {

// Guards m_Cameras, which grows as Aravis finds cameras.
std::mutex& CamerasMutex()
{
    static std::mutex mutex;
    return mutex;
}

// The camera of that id in cameras, or null.
CameraPtr Find(const std::vector<CameraPtr>& cameras, const std::string& id)
{
    for (const CameraPtr& candidate : cameras) {
        std::string candidateId;
        if (candidate->GetID(candidateId) == PkoErrorSuccess && candidateId == id)
            return candidate;
    }
    return CameraPtr();
}

CameraPtr MakeArvCamera(const Arv::ArvDiscovery::Device& device)
{
    const std::string model = device.model.empty() ? device.id : device.model;
    return CameraPtr(
        new Arv::ArvCameraImpl(device.id, model, model + " (" + Arv::ArvCameraImpl::IdFor(device.id) + ")"));
}

}  // namespace

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
        // Discovery takes a while: not under the lock.
        const std::vector<Arv::ArvDiscovery::Device> found = Arv::ArvDiscovery::Discover();
        std::lock_guard<std::mutex> lock(CamerasMutex());
        std::vector<CameraPtr> all;
        for (const CameraPtr& camera : m_Cameras) {
            if (dynamic_pointer_cast<Sim::SimCamera>(camera))
                all.push_back(camera);
        }
        for (const Arv::ArvDiscovery::Device& device : found) {
            const std::string id = Arv::ArvCameraImpl::IdFor(device.id);
            CameraPtr camera = Find(m_Cameras, id);
            if (!camera) {
                camera = MakeArvCamera(device);
                m_Cameras.push_back(camera);
            }
            if (!Find(all, id))
                all.push_back(camera);
        }
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
        {
            std::lock_guard<std::mutex> lock(CamerasMutex());
            if (CameraPtr known = Find(m_Cameras, id)) {
                camera = known;
                return PkoErrorSuccess;
            }
        }
        const std::size_t prefix = std::strlen(Arv::ArvCameraImpl::IdPrefix());
        if (std::strncmp(id, Arv::ArvCameraImpl::IdPrefix(), prefix) != 0 || id[prefix] == '\0')
            return PkoErrorNotFound;
        // A camera not listed yet: Aravis decides whether it exists.
        const std::string arvId(id + prefix);
        int errorCode = PkoErrorSuccess;
        ::ArvDevice* probe = Arv::ArvDiscovery::Open(arvId, errorCode);
        if (probe == nullptr)
            return PkoErrorNotFound;
        g_object_unref(probe);
        std::lock_guard<std::mutex> lock(CamerasMutex());
        CameraPtr created = Find(m_Cameras, id);
        if (!created) {
            Arv::ArvDiscovery::Device device;
            device.id = arvId;
            created = MakeArvCamera(device);
            m_Cameras.push_back(created);
        }
        camera = created;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

}  // namespace ZMT::PkoAPI
