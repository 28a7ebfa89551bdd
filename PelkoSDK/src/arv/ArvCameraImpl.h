#ifndef PKOAPI_SRC_ARV_ARVCAMERAIMPL_H
#define PKOAPI_SRC_ARV_ARVCAMERAIMPL_H

#include "ArvDependencyGraph.h"
#include "DeviceAnchor.h"
#include "Notifier.h"

#include <PkoAPI/Camera.h>

#include <arv.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace ZMT::PkoAPI::Arv {

class ArvFeature;
class ArvPoller;
class ArvVolatileWatch;

// A camera that Aravis can open (GigE Vision, USB3 Vision, Aravis's fake
// camera). While open it owns the Aravis device and three threads: the
// device thread that makes the clients' calls, notifications, and polling
// of observed features for changes made by the camera; from the first
// acquisition on also a stream with a few buffers and a thread for frame
// reception.
//
// A description that carries caching information (Cachable, IsVolatile,
// PollingTime, pInvalidator) gets Aravis's register cache, and only the
// nodes it marks as changing by themselves are polled (every 200 ms unless
// the node has a PollingTime); the rest changes only through writes, which
// the dependency graph follows. Any other description keeps every register
// uncached and every observed feature polled every 200 ms: Aravis would
// cache its registers as well, and nothing tells what may change by itself.
// PKO_GENICAM_CACHE=off treats every description so; =debug has Aravis
// read each cached register anyway and warn where the cache was wrong.
//
// Aravis is not thread-safe: every call on the device, its node map and the
// stream's control runs under m_Mutex, and a selector write and the access
// it selects for run in one critical section. Observers are called on the
// notification thread with no lock of the camera held.
//
// A camera that dies is found out by the first call that reaches it, which
// waits out Aravis's retries (seconds). Client calls therefore never reach
// the camera on the client's thread: the device thread makes them while the
// client waits, and the client stops waiting with PkoErrorTimeout when the
// call holding the device is stuck; until that call returns every further
// call fails at once the same way. So no client, the GUI thread included,
// waits more than a fraction of a second for a dead camera. The open state,
// the session, the lost flag and the feature list are also kept under
// m_StateMutex, which is never held across a call to the camera, so that
// state queries and feature lookups never wait for one.
//
// Close never waits for the camera either, lost, dying or stopped: it ends
// the session under m_StateMutex, fails the calls still queued, stops the
// notifications and hands the rest to a closer thread, which waits for the
// device, poller and frame threads (one of them may sit for seconds in a
// request to a dying camera) and then releases the stream and the device.
// The closer uses this object's members only after those threads ended, and
// this object outlives it: the next Open waits for it before it opens the
// device again, and so does the destructor (PkoSystem keeps each camera
// object until the process ends, so only the exit may wait for a dying
// camera, for as long as Aravis tries to reach it).
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
    // map and starts the threads. The stream follows with the first
    // acquisition; one that cannot be set up leaves the camera without
    // frames.
    int Open() override;
    // Ends the session at once, whatever the camera does: from its return on
    // the camera is closed (IsOpen false, camera calls fail with
    // PkoErrorDeviceNotOpen, feature calls with PkoErrorBadHandle), no
    // observer is called any more (an observer call in progress is waited
    // for; Close from inside one does not wait for it), and calls queued for
    // the device fail with PkoErrorBadHandle. A call the camera is working on
    // returns PkoErrorBadHandle to its caller within a fraction of a second
    // and may still take effect on the camera. The threads end and the
    // device is released in the background (see above); the next Open waits
    // for that. Close waits for an Open in progress on another thread.
    int Close() override;
    bool IsOpen() const override;
    int GetOpenProblem(std::string& problem) const override;

    int GetFeatures(std::vector<FeaturePtr>& features) override;
    int GetFeatureByName(const char* name, FeaturePtr& feature) override;

    int StartAcquisition() override;
    int StopAcquisition() override;
    bool IsAcquiring() const override;
    unsigned long long FramesDelivered() const override;
    int GetLatestFrame(Frame& frame) override;
    bool IsConnectionLost() const override;

    // Runs op(*this, out) for a feature of session on the device thread,
    // under the device lock, and copies out back to result when op
    // succeeded: PkoErrorBadHandle when that session is over,
    // PkoErrorConnectionLost at once after the camera stopped answering, else
    // op's result; the changes it announced are then posted to observers.
    // The caller waits for a camera that answers, however slowly, but not
    // for one that stopped: PkoErrorTimeout once the device call in progress
    // has been waiting for the camera too long (the call may still take
    // effect later, and its observers hear of it then). op must not refer to
    // the caller's stack: it may run after the caller gave up.
    template <class Out, class Op>
    int Access(unsigned long long session, Out& result, Op op)
    {
        try {
            auto out = std::make_shared<Out>(result);
            const int code = Run(session, [out, op](ArvCameraImpl& camera) { return op(camera, *out); });
            if (code == PkoErrorSuccess)
                result = std::move(*out);
            return code;
        } catch (const std::bad_alloc&) {
            return PkoErrorResources;
        }
    }

    // PkoErrorSuccess while session is the open one, lost or not, else
    // PkoErrorBadHandle. Lets clients unregister observers from a lost camera.
    int CheckSession(unsigned long long session) const;
    // CheckSession, and PkoErrorConnectionLost once the camera was lost: for
    // what a feature knows without asking the camera.
    int CheckReachable(unsigned long long session) const;

    // A write of feature index succeeded: its observers and those of every
    // feature depending on it hear of it. Device lock held.
    void ChangedLocked(int index);
    // A command is about to run: the first acquisition sets up the stream
    // and its buffers. Device lock held.
    void PrepareCommandLocked(const std::string& name);
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

    // One client call handed to the device thread.
    struct PendingCall {
        PendingCall(unsigned long long callSession, std::function<int(ArvCameraImpl&)> callStep)
            : session(callSession), step(std::move(callStep))
        {}
        const unsigned long long session;
        const std::function<int(ArvCameraImpl&)> step;
        std::mutex mutex;
        std::condition_variable finished;
        // Both under mutex; done is also read without it while waiting.
        bool abandoned = false;
        std::atomic<bool> done{false};
        int result = PkoErrorSuccess;
    };
    // Queues step for the device thread and waits for it as Access says.
    int Run(unsigned long long session, std::function<int(ArvCameraImpl&)> step);
    // The device thread: runs the queued calls one by one until stopped.
    void ServeCalls();
    // True when a waiter should stop waiting for the device: someone gave up
    // already, or waitingSince is kGiveUpAfter ago and the call holding the
    // device has been in it for kStuckAfter. Marks the device stalled.
    bool GiveUp(std::chrono::steady_clock::time_point waitingSince);

    // What Close finishes after it let go of m_LifecycleMutex: an observer
    // called meanwhile may open or close the camera itself.
    struct Ending {
        // Stops the notifications (waiting for a callback in progress) and
        // drops the observers.
        void Finish();
        std::shared_ptr<Notifier> notifier;
        std::vector<shared_ptr<ArvFeature>> features;
    };
    // Ends the session and starts the closer; m_LifecycleMutex held.
    Ending CloseLocked();
    // The closer thread: waits for the session's threads and releases what
    // the session held.
    void TearDown();
    // Waits for the closer thread of the last session. m_LifecycleMutex held.
    void JoinCloser();
    int OpenLocked();
    int RunCommandByName(const char* name);
    void PostLocked();
    // One polling round; returns the pause until the next.
    std::chrono::milliseconds PollObserved();
    // Polling of a description without marks: every observed feature.
    std::chrono::milliseconds PollEveryObserved(const std::vector<int>& observed, unsigned long long session);
    // Polling of a marked description: the watched nodes due.
    std::chrono::milliseconds PollWatched(const std::vector<int>& due, std::chrono::milliseconds pause,
                                          unsigned long long session);
    void ReceiveFrames(unsigned long long session);
    // Sets up the stream, its buffers and the frame thread unless there
    // are; setting up a GigE Vision stream takes from a few to some fifty
    // milliseconds, so it waits for the first acquisition instead of
    // slowing every Open. Device lock held.
    void StartStreamLocked();
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
    // Open, Close and the destructor one at a time; guards m_Closer.
    std::mutex m_LifecycleMutex;
    // Tears down the last session; joined by Open and the destructor.
    std::thread m_Closer;
    // Guards the next eight for readers without m_Mutex; writers hold both,
    // but Close, which ends the session without m_Mutex (the device may be
    // stuck in a call): m_Open and m_Session are atomic for the readers that
    // hold m_Mutex alone.
    mutable std::mutex m_StateMutex;
    std::string m_Model;
    std::string m_Name;
    // Why the last Open failed beyond its code (a refused description).
    std::string m_OpenProblem;
    std::atomic<bool> m_Open{false};
    std::atomic<unsigned long long> m_Session{0};
    // Set by Aravis's control-lost signal (on its own thread) or by a call
    // that timed out; shared with the signal handler, which may outlive a
    // session by a moment.
    std::shared_ptr<std::atomic<bool>> m_Lost;
    std::vector<shared_ptr<ArvFeature>> m_Features;
    std::unordered_map<std::string, int> m_FirstIndex;
    ::ArvDevice* m_Device = nullptr;
    ::ArvStream* m_Stream = nullptr;
    gulong m_LostHandler = 0;
    std::unique_ptr<ArvDependencyGraph> m_Graph;
    // What the poller saw last per feature; reset by writes, so that a
    // client's own write is announced once, by the write.
    std::vector<std::optional<std::string>> m_Signatures;
    // Null unless the description is marked and the cache is on.
    std::unique_ptr<ArvVolatileWatch> m_Watch;
    std::vector<int> m_Pending;
    std::shared_ptr<Notifier> m_Notifier;
    std::unique_ptr<ArvPoller> m_Poller;
    // Client calls for the device thread; guarded by m_CallsMutex.
    std::mutex m_CallsMutex;
    std::condition_variable m_CallsWake;
    std::deque<std::shared_ptr<PendingCall>> m_Calls;
    // m_Calls.size(), for the device thread's look without the mutex.
    std::atomic<std::size_t> m_Queued{0};
    bool m_Serving = false;
    std::thread m_CallThread;
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
