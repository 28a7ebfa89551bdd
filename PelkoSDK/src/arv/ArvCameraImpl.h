#ifndef PKOAPI_SRC_ARV_ARVCAMERAIMPL_H
#define PKOAPI_SRC_ARV_ARVCAMERAIMPL_H

#include "../DeviceAnchor.h"
#include "../Notifier.h"
#include "ArvDependencyGraph.h"

#include <PkoAPI/Camera.h>

#include <arv.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace ZMT::PkoAPI::Arv {

class ArvFeature;
class ArvPoller;

// A camera that Aravis can open (GigE Vision, USB3 Vision, Aravis's fake
// camera). While open it owns the Aravis device, a stream with a few
// buffers and three threads: notifications, polling of observed features
// for changes made by the camera (every 200 ms), and frame reception.
//
// Aravis is not thread-safe: every call on the device, its node map and the
// stream's control runs under m_Mutex, and a selector write and the access
// it selects for run in one critical section. Observers are called on the
// notification thread with no lock of the camera held.
//
// A camera that dies is found out by the first call, which waits out
// Aravis's retries (seconds). Other callers do not queue behind such a stuck
// call: they give up with PkoErrorTimeout, and until it returns every further
// call fails at once the same way. The open state, the session and the lost
// flag are also kept under m_StateMutex, which is never held across a call
// to the camera, so that the state queries never wait for one.
class ArvCameraImpl final : public Camera {
public:
    // arvId is what Aravis opens (its device id or an address); the SDK id is
    // "ARV:" + arvId. model and name are shown until the camera is opened.
    ArvCameraImpl(std::string arvId, std::string model, std::string name);
    // Cuts its features off (they fail with PkoErrorBadHandle from then on)
    // and closes.
    ~ArvCameraImpl() override;

    // The SDK id of an Aravis device id.
    static std::string IdFor(const std::string& arvId);
    static const char* IdPrefix() { return "ARV:"; }

    int GetID(std::string& id) const override;
    int GetModel(std::string& model) const override;
    int GetName(std::string& name) const override;

    // Opens the device (PkoErrorNotFound when Aravis cannot), walks its node
    // map and starts the threads; a stream that cannot be set up leaves the
    // camera open without frames.
    int Open() override;
    // Stops the threads and releases the device; never blocks on a lost one.
    int Close() override;
    bool IsOpen() const override;

    int GetFeatures(std::vector<FeaturePtr>& features) override;
    int GetFeatureByName(const char* name, FeaturePtr& feature) override;

    int StartAcquisition() override;
    int StopAcquisition() override;
    bool IsAcquiring() const override;
    unsigned long long FramesDelivered() const override;
    int GetLatestFrame(Frame& frame) override;
    bool IsConnectionLost() const override;

    // Runs op() (or op(*this)) for a feature of session under the device
    // lock: PkoErrorBadHandle when that session is over, PkoErrorConnectionLost
    // at once after the camera stopped answering, else op's result; the
    // changes it announced are then posted to observers.
    // PkoErrorTimeout when another call is stuck on the camera.
    template <class Op>
    int Access(unsigned long long session, Op&& op)
    {
        return WithDevice([&]() -> int {
            if (!m_Open || session != m_Session)
                return PkoErrorBadHandle;
            if (m_Lost->load())
                return PkoErrorConnectionLost;
            int result = PkoErrorSuccess;
            if constexpr (std::is_invocable_v<Op, ArvCameraImpl&>)
                result = op(*this);
            else
                result = op();
            if (result == PkoErrorConnectionLost)
                m_Lost->store(true);
            PostLocked();
            return result;
        });
    }

    // PkoErrorSuccess while session is the open one, lost or not, else
    // PkoErrorBadHandle. Lets clients unregister observers from a lost camera.
    int CheckSession(unsigned long long session) const;

    // A write of feature index succeeded: its observers and those of every
    // feature depending on it hear of it. Device lock held.
    void ChangedLocked(int index);
    // A command ran; keeps the acquisition state. Device lock held.
    void CommandRunLocked(const std::string& name);

private:
    // Runs step() under the device lock and returns its result. Gives up with
    // PkoErrorTimeout instead of queueing behind a call stuck on the camera.
    template <class Step>
    int WithDevice(Step&& step)
    {
        std::unique_lock<std::timed_mutex> lock(m_Mutex, std::defer_lock);
        if (const int result = LockDevice(lock))
            return result;
        m_CallSince.store(SteadyNow());
        const int result = step();
        EndCallLocked();
        return result;
    }
    // PkoErrorSuccess with lock owned, or PkoErrorTimeout.
    int LockDevice(std::unique_lock<std::timed_mutex>& lock);
    // The call under the device lock is over; waiters may queue again.
    void EndCallLocked();
    static long long SteadyNow();

    int OpenLocked();
    int RunCommandByName(const char* name);
    void PostLocked();
    void PollObserved();
    void ReceiveFrames(unsigned long long session);
    // Pushes count buffers of the current payload size. Device lock held.
    void QueueBuffersLocked(unsigned int count);
    long long PayloadSizeLocked();

    const std::string m_ArvId;
    const std::string m_Id;
    std::shared_ptr<DeviceAnchor<ArvCameraImpl>> m_Anchor;

    mutable std::timed_mutex m_Mutex;
    // When the holder of m_Mutex started its call (SteadyNow()); 0: none.
    std::atomic<long long> m_CallSince{0};
    // Set by the first caller that gave up on a stuck call; cleared when
    // that call returns.
    std::atomic<bool> m_Stalled{false};
    // Guards the next five for readers without m_Mutex; writers hold both.
    mutable std::mutex m_StateMutex;
    std::string m_Model;
    std::string m_Name;
    bool m_Open = false;
    unsigned long long m_Session = 0;
    // Set by Aravis's control-lost signal (on its own thread) or by a call
    // that timed out; shared with the signal handler, which may outlive a
    // session by a moment.
    std::shared_ptr<std::atomic<bool>> m_Lost;
    ::ArvDevice* m_Device = nullptr;
    ::ArvStream* m_Stream = nullptr;
    gulong m_LostHandler = 0;
    std::vector<shared_ptr<ArvFeature>> m_Features;
    std::unordered_map<std::string, int> m_FirstIndex;
    std::unique_ptr<ArvDependencyGraph> m_Graph;
    // What the poller saw last per feature; reset by writes, so that a
    // client's own write is announced once, by the write.
    std::vector<std::optional<std::string>> m_Signatures;
    std::vector<int> m_Pending;
    std::shared_ptr<Notifier> m_Notifier;
    std::unique_ptr<ArvPoller> m_Poller;
    std::thread m_FrameThread;
    std::atomic<bool> m_Receiving{false};

    std::atomic<bool> m_Acquiring{false};
    std::atomic<unsigned long long> m_FramesDelivered{0};
    unsigned long long m_FramesThisAcquisition = 0;
    unsigned long long m_FrameLimit = 0;  // 0: no limit (continuous)
    std::mutex m_FrameMutex;
    std::optional<Frame> m_LatestFrame;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
