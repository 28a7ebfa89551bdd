#include "ArvCameraProvider.h"

#include "ArvCameraImpl.h"
#include "ArvDiscovery.h"

namespace ZMT::PkoAPI::Arv {

namespace {

CameraPtr MakeArvCamera(const ArvDiscovery::Device& device)
{
    const std::string model = device.model.empty() ? device.id : device.model;
    return CameraPtr(new ArvCameraImpl(device.id, model, model + " (" + ArvCameraImpl::IdFor(device.id) + ")"));
}

}  // namespace

void ArvCameraProvider::AppendCameras(std::vector<CameraPtr>& cameras)
{
    // Discovery takes a while: not under the lock.
    const std::vector<ArvDiscovery::Device> found = ArvDiscovery::Discover();
    std::lock_guard<std::mutex> lock(m_Mutex);
    std::vector<CameraPtr> listed;
    for (const ArvDiscovery::Device& device : found) {
        const std::string id = ArvCameraImpl::IdFor(device.id);
        CameraPtr camera = FindByID(m_Known, id);
        if (!camera) {
            camera = MakeArvCamera(device);
            m_Known.push_back(camera);
        }
        // A device seen on two interfaces is listed once.
        if (!FindByID(listed, id))
            listed.push_back(camera);
    }
    cameras.insert(cameras.end(), listed.begin(), listed.end());
}

CameraPtr ArvCameraProvider::FindCamera(const std::string& id)
{
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (CameraPtr known = FindByID(m_Known, id))
            return known;
    }
    const std::string prefix = ArvCameraImpl::IdPrefix();
    if (id.compare(0, prefix.size(), prefix) != 0 || id.size() == prefix.size())
        return CameraPtr();
    // A camera not listed yet: Aravis decides whether it exists.
    const std::string arvId = id.substr(prefix.size());
    int errorCode = PkoErrorSuccess;
    ::ArvDevice* probe = ArvDiscovery::Open(arvId, errorCode);
    if (probe == nullptr)
        return CameraPtr();
    g_object_unref(probe);
    std::lock_guard<std::mutex> lock(m_Mutex);
    CameraPtr created = FindByID(m_Known, id);
    if (!created) {
        ArvDiscovery::Device device;
        device.id = arvId;
        created = MakeArvCamera(device);
        m_Known.push_back(created);
    }
    return created;
}

}  // namespace ZMT::PkoAPI::Arv
