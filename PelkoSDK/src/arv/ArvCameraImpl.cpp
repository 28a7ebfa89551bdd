#include "ArvCameraImpl.h"

#include "FeatureList.h"

#include "ArvDescriptionCheck.h"
#include "ArvDescriptionMarks.h"
#include "ArvDiscovery.h"
#include "ArvErrors.h"
#include "ArvFeature.h"
#include "ArvFrameConverter.h"
#include "ArvNodeInfo.h"
#include "ArvPoller.h"
#include "ArvScopedError.h"
#include "ArvVolatileWatch.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

namespace ZMT::PkoAPI::Arv {

namespace {

constexpr std::chrono::milliseconds kPollPeriod(200);
// A caller waits this long at least before it gives up on the device lock,
// and only when the holder has been in its call for kStuckAfter: a call to a
// camera that answers takes a few milliseconds.
constexpr std::chrono::milliseconds kGiveUpAfter(200);
constexpr std::chrono::milliseconds kStuckAfter(400);
constexpr std::chrono::milliseconds kLockSlice(25);
// How long the device thread and its clients stay awake for each other.
constexpr std::chrono::microseconds kSpin(500);
constexpr unsigned int kStreamBuffers = 4;
// Frames larger than this are not buffered (a misread payload size must not
// take the machine's memory).
constexpr long long kMaxPayload = 64LL * 1024 * 1024;

// The register cache for a description with caching information, as
// PKO_GENICAM_CACHE asks: "off" (none), "debug" (cached, and every cached
// read checked against the camera), anything else on.
ArvRegisterCachePolicy CachePolicyForMarked()
{
    const char* setting = std::getenv("PKO_GENICAM_CACHE");
    if (setting != nullptr && std::strcmp(setting, "off") == 0)
        return ARV_REGISTER_CACHE_POLICY_DISABLE;
    if (setting != nullptr && std::strcmp(setting, "debug") == 0)
        return ARV_REGISTER_CACHE_POLICY_DEBUG;
    return ARV_REGISTER_CACHE_POLICY_ENABLE;
}

void OnControlLost(::ArvDevice* /*device*/, gpointer flag)
{
    static_cast<std::atomic<bool>*>(flag)->store(true);
}

}  // namespace

ArvCameraImpl::ArvCameraImpl(std::string arvId, std::string model, std::string name)
    : m_ArvId(std::move(arvId)),
      m_Id(IdFor(m_ArvId)),
      m_Anchor(std::make_shared<DeviceAnchor<ArvCameraImpl>>(this)),
      m_Model(std::move(model)),
      m_Name(std::move(name)),
      m_Lost(std::make_shared<std::atomic<bool>>(false))
{}

ArvCameraImpl::~ArvCameraImpl()
{
    m_Anchor->Detach();
    std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
    CloseLocked().Finish();
    // The closer uses this object.
    JoinCloser();
}

std::string ArvCameraImpl::IdFor(const std::string& arvId)
{
    return IdPrefix() + arvId;
}

int ArvCameraImpl::GetID(std::string& id) const
{
    id = m_Id;
    return PkoErrorSuccess;
}

int ArvCameraImpl::GetModel(std::string& model) const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    model = m_Model;
    return PkoErrorSuccess;
}

int ArvCameraImpl::GetName(std::string& name) const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    name = m_Name;
    return PkoErrorSuccess;
}

int ArvCameraImpl::Open()
{
    Ending ending;
    std::unique_lock<std::mutex> lifecycle(m_LifecycleMutex);
    if (m_Open.load())
        return PkoErrorSuccess;
    // The last session's device must be gone before the camera is opened
    // again; on a dying camera that takes as long as Aravis tries to reach it.
    JoinCloser();
    int result = PkoErrorSuccess;
    {
        // Opening is the caller's own wait: no giving up here.
        std::lock_guard<std::timed_mutex> lock(m_Mutex);
        {
            std::lock_guard<std::mutex> state(m_StateMutex);
            m_OpenProblem.clear();
        }
        m_CallSince.store(SteadyNow());
        result = OpenLocked();
        EndCallLocked();
    }
    // A camera whose threads could not all start is no use half open.
    if (result != PkoErrorSuccess && m_Open.load())
        ending = CloseLocked();
    lifecycle.unlock();
    ending.Finish();
    return result;
}

int ArvCameraImpl::OpenLocked()
{
    int errorCode = PkoErrorSuccess;
    ::ArvDevice* device = ArvDiscovery::Open(m_ArvId, errorCode);
    if (device == nullptr)
        return errorCode;

    // Aravis caches registers without a Cachable mark too: a description
    // that says nothing about caching gets no cache.
    std::size_t xmlSize = 0;
    const char* xml = arv_device_get_genicam_xml(device, &xmlSize);
    // Aravis opens half a description and recurses without end on a cycle
    // of pointers: neither may get as far as the node map.
    std::string problem;
    const int checked = ArvDescriptionCheck::Check(xml, xmlSize, problem);
    if (checked != PkoErrorSuccess) {
        g_object_unref(device);
        std::lock_guard<std::mutex> state(m_StateMutex);
        m_OpenProblem = std::move(problem);
        return checked;
    }
    const ArvDescriptionMarks marks = ArvDescriptionMarks::Parse(xml, xmlSize);
    const ArvRegisterCachePolicy policy = marks.Marked() ? CachePolicyForMarked() : ARV_REGISTER_CACHE_POLICY_DISABLE;
    arv_device_set_register_cache_policy(device, policy);
    arv_device_set_range_check_policy(device, ARV_RANGE_CHECK_POLICY_ENABLE);
    arv_device_set_access_check_policy(device, ARV_ACCESS_CHECK_POLICY_ENABLE);

    const unsigned long long session = m_Session.load() + 1;
    auto lost = std::make_shared<std::atomic<bool>>(false);
    try {
        std::vector<ArvNodeInfo> infos = ArvNodeInfo::Walk(arv_device_get_genicam(device));
        auto graph = std::make_unique<ArvDependencyGraph>(infos);
        std::unique_ptr<ArvVolatileWatch> watch;
        if (policy != ARV_REGISTER_CACHE_POLICY_DISABLE)
            watch = std::make_unique<ArvVolatileWatch>(infos, marks, kPollPeriod);
        std::vector<shared_ptr<ArvFeature>> features;
        std::unordered_map<std::string, int> firstIndex;
        features.reserve(infos.size());
        for (std::size_t i = 0; i < infos.size(); ++i) {
            firstIndex.emplace(infos[i].name, static_cast<int>(i));
            features.emplace_back(new ArvFeature(m_Anchor, session, static_cast<int>(i), std::move(infos[i])));
        }
        auto notifier = std::make_shared<Notifier>();

        {
            std::lock_guard<std::mutex> state(m_StateMutex);
            m_Features = std::move(features);
            m_FirstIndex = std::move(firstIndex);
        }
        m_Graph = std::move(graph);
        m_Watch = std::move(watch);
        m_Signatures.assign(m_Features.size(), std::nullopt);
        m_Notifier = std::move(notifier);
    } catch (const std::exception&) {
        g_object_unref(device);
        {
            std::lock_guard<std::mutex> state(m_StateMutex);
            m_Features.clear();
            m_FirstIndex.clear();
        }
        m_Graph.reset();
        m_Watch.reset();
        return PkoErrorResources;
    }

    m_Device = device;
    {
        std::lock_guard<std::mutex> state(m_StateMutex);
        m_Lost = lost;
        m_Session = session;
        m_Open = true;
    }
    m_LostHandler = g_signal_connect(device, "control-lost", G_CALLBACK(OnControlLost), m_Lost.get());
    m_Acquiring = false;
    m_FramesDelivered = 0;
    m_FramesThisAcquisition = 0;
    m_FrameLimit = 0;
    {
        std::lock_guard<std::mutex> frameLock(m_FrameMutex);
        m_LatestFrame.reset();
    }

    // The model as the camera reports it, when it has one.
    const auto modelIndex = m_FirstIndex.find("DeviceModelName");
    if (modelIndex != m_FirstIndex.end() && m_Features[modelIndex->second]->Info().type == PkoFeatureDataString) {
        ArvScopedError error;
        const char* model =
            arv_gc_string_get_value(ARV_GC_STRING(m_Features[modelIndex->second]->Info().node), error.Out());
        if (!error && model != nullptr && *model != '\0') {
            std::lock_guard<std::mutex> state(m_StateMutex);
            m_Model = model;
            m_Name = m_Model + " (" + m_Id + ")";
        }
    }

    // The stream waits for the first acquisition (see PrepareCommandLocked).
    try {
        {
            std::lock_guard<std::mutex> calls(m_CallsMutex);
            m_Serving = true;
        }
        m_CallThread = std::thread(&ArvCameraImpl::ServeCalls, this);
        m_Poller = std::make_unique<ArvPoller>(kPollPeriod, [this] { return PollObserved(); });
    } catch (const std::system_error&) {
        // Open() closes again, which ends what was started.
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

void ArvCameraImpl::StartStreamLocked()
{
    if (m_Stream != nullptr)
        return;
    // Frames are optional: without a usable stream the acquisition starts
    // all the same and delivers none.
    ArvScopedError streamError;
    m_Stream = arv_device_create_stream(m_Device, nullptr, nullptr, streamError.Out());
    if (streamError && m_Stream != nullptr) {
        g_object_unref(m_Stream);
        m_Stream = nullptr;
    }
    if (m_Stream == nullptr)
        return;
    QueueBuffersLocked(kStreamBuffers);
    try {
        m_Receiving = true;
        // It waits for the device lock held here before it looks at the stream.
        m_FrameThread = std::thread(&ArvCameraImpl::ReceiveFrames, this, m_Session.load());
    } catch (const std::system_error&) {
        m_Receiving = false;
        g_object_unref(m_Stream);
        m_Stream = nullptr;
    }
}

int ArvCameraImpl::Close()
{
    Ending ending;
    {
        std::lock_guard<std::mutex> lifecycle(m_LifecycleMutex);
        ending = CloseLocked();
    }
    // An observer called now may close or open the camera itself.
    ending.Finish();
    return PkoErrorSuccess;
}

void ArvCameraImpl::Ending::Finish()
{
    // No notification after Close: what is queued is dropped, a callback in
    // progress is waited for, and what the threads still post is ignored.
    if (notifier)
        notifier->Stop();
    for (const shared_ptr<ArvFeature>& feature : features)
        feature->DropObservers();
    notifier.reset();
    features.clear();
}

ArvCameraImpl::Ending ArvCameraImpl::CloseLocked()
{
    Ending ending;
    // Not m_Mutex: a call stuck on a dying camera holds it for seconds.
    {
        std::lock_guard<std::mutex> state(m_StateMutex);
        if (!m_Open.load())
            return ending;
        m_Open = false;
        ++m_Session;
        try {
            ending.features = m_Features;
        } catch (const std::bad_alloc&) {
            // The closer drops the observers then.
        }
    }
    // Written by Open alone, which cannot run now: no need for m_Mutex.
    ending.notifier = m_Notifier;
    m_Receiving = false;
    std::deque<std::shared_ptr<PendingCall>> queued;
    {
        std::lock_guard<std::mutex> calls(m_CallsMutex);
        m_Serving = false;
        queued.swap(m_Calls);
        m_Queued.store(0, std::memory_order_release);
    }
    m_CallsWake.notify_all();
    for (const std::shared_ptr<PendingCall>& call : queued) {
        {
            std::lock_guard<std::mutex> lock(call->mutex);
            call->result = PkoErrorBadHandle;
            call->done.store(true);
        }
        call->finished.notify_all();
    }
    if (m_Poller)
        m_Poller->RequestStop();
    try {
        m_Closer = std::thread(&ArvCameraImpl::TearDown, this);
    } catch (const std::system_error&) {
        TearDown();
    }
    return ending;
}

void ArvCameraImpl::JoinCloser()
{
    if (m_Closer.joinable())
        m_Closer.join();
}

void ArvCameraImpl::TearDown()
{
    // Each ends after the step in progress, which may wait for Aravis to
    // give up on a dying camera. Calls that were not queued in time fail
    // with PkoErrorBadHandle, the session being over.
    if (m_CallThread.joinable())
        m_CallThread.join();
    if (m_Poller)
        m_Poller->Stop();
    // Started by the device thread, which is gone.
    if (m_FrameThread.joinable())
        m_FrameThread.join();

    std::unique_ptr<ArvPoller> poller;
    std::shared_ptr<Notifier> notifier;
    std::vector<shared_ptr<ArvFeature>> features;
    ::ArvStream* stream = nullptr;
    ::ArvDevice* device = nullptr;
    std::shared_ptr<std::atomic<bool>> lostFlag;
    {
        // Free: the threads that take it are gone, and Open waits for us.
        std::lock_guard<std::timed_mutex> lock(m_Mutex);
        std::lock_guard<std::mutex> state(m_StateMutex);
        poller = std::move(m_Poller);
        notifier = std::move(m_Notifier);
        features = std::move(m_Features);
        m_Features.clear();
        m_FirstIndex.clear();
        m_Pending.clear();
        stream = std::exchange(m_Stream, nullptr);
        device = std::exchange(m_Device, nullptr);
        if (device != nullptr && m_LostHandler != 0)
            g_signal_handler_disconnect(device, m_LostHandler);
        m_LostHandler = 0;
        m_Graph.reset();
        m_Watch.reset();
        m_Signatures.clear();
        m_Acquiring = false;
        // A closed camera is not lost; the next Open tries again.
        lostFlag = std::exchange(m_Lost, std::make_shared<std::atomic<bool>>(false));
    }
    for (const shared_ptr<ArvFeature>& feature : features)
        feature->DropObservers();
    features.clear();
    notifier.reset();
    poller.reset();
    // Releasing a device that stopped answering waits for Aravis's timeouts.
    // The old lost flag lives until the device is gone: a control-lost signal
    // already under way on Aravis's thread may still set it.
    if (stream != nullptr)
        g_object_unref(stream);
    if (device != nullptr)
        g_object_unref(device);
    lostFlag.reset();
}

int ArvCameraImpl::GetOpenProblem(std::string& problem) const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    try {
        problem = m_OpenProblem;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

bool ArvCameraImpl::IsOpen() const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    return m_Open;
}

int ArvCameraImpl::GetFeatures(std::vector<FeaturePtr>& features)
{
    // The list is made at open: no need to wait for the device.
    std::lock_guard<std::mutex> state(m_StateMutex);
    if (!m_Open)
        return PkoErrorDeviceNotOpen;
    if (m_Lost->load())
        return PkoErrorConnectionLost;
    return CopyFeatureList(m_Features, features);
}

int ArvCameraImpl::GetFeatureByName(const char* name, FeaturePtr& feature)
{
    if (name == nullptr)
        return PkoErrorBadParameter;
    std::lock_guard<std::mutex> state(m_StateMutex);
    if (!m_Open)
        return PkoErrorDeviceNotOpen;
    if (m_Lost->load())
        return PkoErrorConnectionLost;
    const auto found = m_FirstIndex.find(name);
    if (found == m_FirstIndex.end())
        return PkoErrorNotFound;
    feature = m_Features[found->second];
    return PkoErrorSuccess;
}

int ArvCameraImpl::StartAcquisition()
{
    return RunCommandByName("AcquisitionStart");
}

int ArvCameraImpl::StopAcquisition()
{
    return RunCommandByName("AcquisitionStop");
}

bool ArvCameraImpl::IsAcquiring() const
{
    // A closed camera's flag is reset by its closer, a moment later.
    return m_Open.load() && m_Acquiring.load();
}

unsigned long long ArvCameraImpl::FramesDelivered() const
{
    return m_FramesDelivered.load();
}

int ArvCameraImpl::GetLatestFrame(Frame& frame)
{
    {
        std::lock_guard<std::mutex> lock(m_StateMutex);
        if (!m_Open)
            return PkoErrorDeviceNotOpen;
    }
    std::lock_guard<std::mutex> frameLock(m_FrameMutex);
    if (!m_LatestFrame)
        return PkoErrorNotFound;
    try {
        frame = *m_LatestFrame;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

bool ArvCameraImpl::IsConnectionLost() const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    return m_Open && m_Lost->load();
}

int ArvCameraImpl::CheckSession(unsigned long long session) const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    return m_Open && session == m_Session ? PkoErrorSuccess : PkoErrorBadHandle;
}

int ArvCameraImpl::CheckReachable(unsigned long long session) const
{
    std::lock_guard<std::mutex> lock(m_StateMutex);
    if (!m_Open || session != m_Session)
        return PkoErrorBadHandle;
    return m_Lost->load() ? PkoErrorConnectionLost : PkoErrorSuccess;
}

int ArvCameraImpl::Run(unsigned long long session, std::function<int(ArvCameraImpl&)> step)
{
    if (const int reachable = CheckReachable(session))
        return reachable;
    if (m_Stalled.load())
        return PkoErrorTimeout;
    auto call = std::make_shared<PendingCall>(session, std::move(step));
    {
        std::lock_guard<std::mutex> calls(m_CallsMutex);
        if (!m_Serving)
            return PkoErrorBadHandle;
        m_Calls.push_back(call);
        m_Queued.fetch_add(1, std::memory_order_release);
    }
    m_CallsWake.notify_one();
    const auto waitingSince = std::chrono::steady_clock::now();
    // Most calls are answered within a few tens of microseconds.
    while (!call->done.load() && std::chrono::steady_clock::now() - waitingSince < kSpin)
        std::this_thread::yield();
    std::unique_lock<std::mutex> lock(call->mutex);
    while (!call->finished.wait_for(lock, kLockSlice, [&call] { return call->done.load(); })) {
        if (m_Session.load() != session) {
            // Closed meanwhile: the device thread drops it if it has not
            // started it yet.
            call->abandoned = true;
            return PkoErrorBadHandle;
        }
        if (GiveUp(waitingSince)) {
            // Not started: it never will be. Started: it ends on its own.
            call->abandoned = true;
            return PkoErrorTimeout;
        }
    }
    return call->result;
}

void ArvCameraImpl::ServeCalls()
{
    for (;;) {
        std::shared_ptr<PendingCall> call;
        {
            // Clients make their calls one after another: catching the next
            // one awake saves the thread two wake-ups per call.
            const auto spinUntil = std::chrono::steady_clock::now() + kSpin;
            while (m_Queued.load(std::memory_order_acquire) == 0 && std::chrono::steady_clock::now() < spinUntil)
                std::this_thread::yield();
            std::unique_lock<std::mutex> calls(m_CallsMutex);
            m_CallsWake.wait(calls, [this] { return !m_Serving || !m_Calls.empty(); });
            if (m_Calls.empty())
                return;
            call = std::move(m_Calls.front());
            m_Calls.pop_front();
            m_Queued.fetch_sub(1, std::memory_order_release);
        }
        int result = PkoErrorSuccess;
        {
            std::lock_guard<std::timed_mutex> device(m_Mutex);
            {
                // Decided with the device in hand, so that a call whose client
                // gave up while it waited for the device never runs.
                std::lock_guard<std::mutex> lock(call->mutex);
                if (call->abandoned)
                    continue;
            }
            m_CallSince.store(SteadyNow());
            if (!m_Open || call->session != m_Session) {
                result = PkoErrorBadHandle;
            } else if (m_Lost->load()) {
                result = PkoErrorConnectionLost;
            } else {
                try {
                    result = call->step(*this);
                } catch (const std::exception&) {
                    result = PkoErrorResources;
                }
                if (result == PkoErrorConnectionLost)
                    m_Lost->store(true);
                PostLocked();
            }
            EndCallLocked();
        }
        {
            std::lock_guard<std::mutex> lock(call->mutex);
            call->result = result;
            call->done.store(true);
        }
        call->finished.notify_all();
    }
}

bool ArvCameraImpl::GiveUp(std::chrono::steady_clock::time_point waitingSince)
{
    if (m_Stalled.load())
        return true;
    if (std::chrono::steady_clock::now() - waitingSince < kGiveUpAfter)
        return false;
    const long long since = m_CallSince.load();
    if (since == 0 || SteadyNow() - since < std::chrono::nanoseconds(kStuckAfter).count())
        return false;
    m_Stalled.store(true);
    if (m_CallSince.load() == since)
        return true;
    // The stuck call ended meanwhile; its end may have missed the flag.
    m_Stalled.store(false);
    return false;
}

int ArvCameraImpl::LockDevice(std::unique_lock<std::timed_mutex>& lock)
{
    const auto waitingSince = std::chrono::steady_clock::now();
    for (;;) {
        if (m_Stalled.load())
            return PkoErrorTimeout;
        if (lock.try_lock_for(kLockSlice))
            return PkoErrorSuccess;
        if (GiveUp(waitingSince))
            return PkoErrorTimeout;
    }
}

void ArvCameraImpl::EndCallLocked()
{
    m_CallSince.store(0);
    m_Stalled.store(false);
}

long long ArvCameraImpl::SteadyNow()
{
    // Never 0, which means "no call".
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
               .count() |
           1;
}

void ArvCameraImpl::ChangedLocked(int index)
{
    for (int affected : m_Graph->Affected(index)) {
        m_Pending.push_back(affected);
        m_Signatures[affected].reset();
        if (m_Watch)
            m_Watch->Forget(affected);
    }
}

void ArvCameraImpl::PrepareCommandLocked(const std::string& name)
{
    if (name == "AcquisitionStart")
        StartStreamLocked();
}

void ArvCameraImpl::CommandRunLocked(const std::string& name)
{
    if (name == "AcquisitionStart") {
        m_FramesThisAcquisition = 0;
        m_FrameLimit = 0;
        const auto mode = m_FirstIndex.find("AcquisitionMode");
        if (mode != m_FirstIndex.end() && m_Features[mode->second]->Info().type == PkoFeatureDataEnum) {
            ArvScopedError error;
            const char* text = arv_gc_enumeration_get_string_value(
                ARV_GC_ENUMERATION(m_Features[mode->second]->Info().node), error.Out());
            const std::string value = !error && text != nullptr ? text : "";
            if (value == "SingleFrame") {
                m_FrameLimit = 1;
            } else if (value == "MultiFrame") {
                const auto count = m_FirstIndex.find("AcquisitionFrameCount");
                if (count != m_FirstIndex.end() && m_Features[count->second]->Info().type == PkoFeatureDataInt) {
                    ArvScopedError countError;
                    const gint64 frames = arv_gc_integer_get_value(
                        ARV_GC_INTEGER(m_Features[count->second]->Info().node), countError.Out());
                    m_FrameLimit = !countError && frames > 0 ? static_cast<unsigned long long>(frames) : 1;
                }
            }
        }
        m_Acquiring = true;
    } else if (name == "AcquisitionStop") {
        m_Acquiring = false;
    }
}

int ArvCameraImpl::RunCommandByName(const char* name)
{
    FeaturePtr feature;
    const int result = GetFeatureByName(name, feature);
    return result != PkoErrorSuccess ? result : feature->RunCommand();
}

void ArvCameraImpl::PostLocked()
{
    std::vector<int> pending;
    pending.swap(m_Pending);
    if (!m_Notifier)
        return;
    for (int index : pending)
        m_Notifier->Post(m_Features[index]);
}

std::chrono::milliseconds ArvCameraImpl::PollObserved()
{
    std::vector<int> observed;
    std::vector<int> due;
    std::chrono::milliseconds pause = kPollPeriod;
    bool watched = false;
    unsigned long long session = 0;
    const int listed = WithDevice([&]() -> int {
        if (!m_Open || m_Lost->load())
            return PkoErrorConnectionLost;
        session = m_Session;
        for (std::size_t i = 0; i < m_Features.size(); ++i) {
            if (!m_Features[i]->Observers().empty())
                observed.push_back(static_cast<int>(i));
        }
        watched = m_Watch != nullptr;
        if (watched)
            due = m_Watch->StartRound(observed, ArvVolatileWatch::Clock::now(), pause);
        return PkoErrorSuccess;
    });
    if (listed != PkoErrorSuccess)
        return kPollPeriod;
    return watched ? PollWatched(due, pause, session) : PollEveryObserved(observed, session);
}

std::chrono::milliseconds ArvCameraImpl::PollEveryObserved(const std::vector<int>& observed, unsigned long long session)
{
    // One feature per lock, so that clients wait for one read at most.
    for (int index : observed) {
        const int result = WithDevice([&]() -> int {
            if (!m_Open || session != m_Session || m_Lost->load())
                return PkoErrorConnectionLost;
            int errorCode = PkoErrorSuccess;
            std::string signature = m_Features[index]->SignatureLocked(errorCode);
            if (errorCode == PkoErrorConnectionLost) {
                m_Lost->store(true);
                return errorCode;
            }
            if (errorCode != PkoErrorSuccess)
                return PkoErrorSuccess;
            std::optional<std::string>& last = m_Signatures[index];
            if (last && *last != signature)
                m_Notifier->Post(m_Features[index]);
            last = std::move(signature);
            return PkoErrorSuccess;
        });
        // A stuck call of someone else: the next tick tries again.
        if (result != PkoErrorSuccess)
            break;
    }
    return kPollPeriod;
}

std::chrono::milliseconds ArvCameraImpl::PollWatched(const std::vector<int>& due, std::chrono::milliseconds pause,
                                                     unsigned long long session)
{
    // One node per lock, so that clients wait for one read at most.
    for (int index : due) {
        const int result = WithDevice([&]() -> int {
            if (!m_Open || session != m_Session || m_Lost->load())
                return PkoErrorConnectionLost;
            std::vector<int> changed;
            ArvScopedError error;
            m_Watch->ReadLocked(index, m_Device, changed, error.Out());
            if (ArvErrors::MeansConnectionLost(error.Get())) {
                m_Lost->store(true);
                return PkoErrorConnectionLost;
            }
            for (int feature : changed)
                m_Notifier->Post(m_Features[feature]);
            return PkoErrorSuccess;
        });
        if (result != PkoErrorSuccess)
            break;
    }
    return pause;
}

long long ArvCameraImpl::PayloadSizeLocked()
{
    const auto found = m_FirstIndex.find("PayloadSize");
    if (found == m_FirstIndex.end() || m_Features[found->second]->Info().type != PkoFeatureDataInt) {
        ArvGcNode* node = arv_device_get_feature(m_Device, "PayloadSize");
        if (node == nullptr || !ARV_IS_GC_INTEGER(node))
            return 0;
        ArvScopedError error;
        const gint64 size = arv_gc_integer_get_value(ARV_GC_INTEGER(node), error.Out());
        return error ? 0 : size;
    }
    ArvScopedError error;
    const gint64 size = arv_gc_integer_get_value(ARV_GC_INTEGER(m_Features[found->second]->Info().node), error.Out());
    return error ? 0 : size;
}

void ArvCameraImpl::QueueBuffersLocked(unsigned int count)
{
    const long long payload = PayloadSizeLocked();
    if (payload <= 0 || payload > kMaxPayload)
        return;
    for (unsigned int i = 0; i < count; ++i)
        arv_stream_push_buffer(m_Stream, arv_buffer_new_allocate(static_cast<size_t>(payload)));
}

void ArvCameraImpl::ReceiveFrames(unsigned long long session)
{
    ::ArvStream* stream = nullptr;
    {
        std::lock_guard<std::timed_mutex> lock(m_Mutex);
        stream = m_Stream;
    }
    // The stream's buffer queues are Aravis's thread-safe async queues: popping
    // and pushing buffers does not take the device lock, so a waiting pop
    // never holds up feature access.
    while (m_Receiving.load()) {
        ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 100000);
        if (buffer == nullptr)
            continue;
        bool converted = false;
        Frame frame;
        try {
            converted = ArvFrameConverter::ToMono8(buffer, frame);
        } catch (const std::bad_alloc&) {
            // The frame is dropped; the next one may fit.
        }
        const bool resize = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SIZE_MISMATCH;
        // Waits for a stuck call: the buffer must go back either way.
        std::lock_guard<std::timed_mutex> lock(m_Mutex);
        if (!m_Open || session != m_Session) {
            g_object_unref(buffer);
            return;
        }
        m_CallSince.store(SteadyNow());
        // A camera may send a frame more after the last one of a single- or
        // multi-frame acquisition: it is not delivered.
        const bool delivered = converted && m_Acquiring.load();
        if (delivered) {
            frame.id = m_FramesDelivered.load() + 1;
            {
                std::lock_guard<std::mutex> frameLock(m_FrameMutex);
                m_LatestFrame = std::move(frame);
            }
            ++m_FramesDelivered;
            ++m_FramesThisAcquisition;
            if (m_FrameLimit != 0 && m_FramesThisAcquisition >= m_FrameLimit && m_Acquiring.load()) {
                // A single- or multi-frame acquisition ends after its frames,
                // also on cameras that would go on sending.
                m_Acquiring = false;
                const auto stop = m_FirstIndex.find("AcquisitionStop");
                if (stop != m_FirstIndex.end() && !m_Lost->load()) {
                    ArvScopedError error;
                    arv_gc_command_execute(ARV_GC_COMMAND(m_Features[stop->second]->Info().node), error.Out());
                    if (ArvErrors::MeansConnectionLost(error.Get()))
                        m_Lost->store(true);
                }
            }
        }
        if (resize) {
            // The image size changed since the buffers were made.
            g_object_unref(buffer);
            QueueBuffersLocked(1);
        } else {
            arv_stream_push_buffer(stream, buffer);
        }
        EndCallLocked();
    }
}

}  // namespace ZMT::PkoAPI::Arv
