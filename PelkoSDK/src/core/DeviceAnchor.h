#ifndef PKOAPI_SRC_DEVICEANCHOR_H
#define PKOAPI_SRC_DEVICEANCHOR_H

#include <PkoAPI/PkoCommonTypes.h>

#include <mutex>
#include <shared_mutex>

namespace ZMT::PkoAPI {

// How features reach their camera (a backend's camera class). Clients may
// keep features after the camera is gone; the camera detaches the anchor
// first thing in its destructor, and from then on every feature operation
// fails cleanly.
template <class Camera>
class DeviceAnchor {
public:
    explicit DeviceAnchor(Camera* camera) : m_Camera(camera) {}
    DeviceAnchor(const DeviceAnchor&) = delete;
    DeviceAnchor& operator=(const DeviceAnchor&) = delete;

    // op(camera)'s result, or PkoErrorBadHandle once the camera is gone.
    // The camera cannot be destroyed while op runs.
    template <class Op>
    int With(Op&& op)
    {
        std::shared_lock<std::shared_mutex> lock(m_Mutex);
        return m_Camera != nullptr ? op(*m_Camera) : PkoErrorBadHandle;
    }

    // Waits for operations in progress, then cuts the link.
    void Detach()
    {
        std::unique_lock<std::shared_mutex> lock(m_Mutex);
        m_Camera = nullptr;
    }

private:
    std::shared_mutex m_Mutex;
    Camera* m_Camera;
};

}  // namespace ZMT::PkoAPI

#endif
