#ifndef PKOAPI_SRC_ARV_ARVANCHOR_H
#define PKOAPI_SRC_ARV_ARVANCHOR_H

#include <PkoAPI/PkoCommonTypes.h>

#include <mutex>
#include <shared_mutex>

namespace ZMT::PkoAPI::Arv {

class ArvCameraImpl;

// How features reach their camera. Clients may keep features after the
// camera object is gone; the camera detaches the anchor first thing in its
// destructor, and from then on every feature operation fails cleanly.
class ArvAnchor {
public:
    explicit ArvAnchor(ArvCameraImpl* camera) : m_Camera(camera) {}
    ArvAnchor(const ArvAnchor&) = delete;
    ArvAnchor& operator=(const ArvAnchor&) = delete;

    // op(camera)'s result, or PkoErrorBadHandle once the camera is gone.
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
    ArvCameraImpl* m_Camera;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
