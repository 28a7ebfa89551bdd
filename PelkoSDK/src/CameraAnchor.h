#ifndef PKOAPI_SRC_CAMERAANCHOR_H
#define PKOAPI_SRC_CAMERAANCHOR_H

#include <PkoAPI/PkoCommonTypes.h>

#include <mutex>
#include <shared_mutex>

namespace ZMT::PkoAPI::Sim {

class SimCameraImpl;

// How features reach their camera. Clients may keep features after the
// camera is gone; the camera detaches the anchor first thing in its
// destructor, and from then on every feature operation fails cleanly.
class CameraAnchor {
public:
    explicit CameraAnchor(SimCameraImpl* camera) : m_Camera(camera) {}
    CameraAnchor(const CameraAnchor&) = delete;
    CameraAnchor& operator=(const CameraAnchor&) = delete;

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
    SimCameraImpl* m_Camera;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
