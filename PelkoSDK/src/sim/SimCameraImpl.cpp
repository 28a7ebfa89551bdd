#include "SimCameraImpl.h"

#include "FeatureList.h"
#include "SimFeature.h"
#include "ValueText.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <new>
#include <system_error>
#include <utility>

namespace ZMT::PkoAPI::Sim {

SimCameraImpl::SimCameraImpl(std::string id, std::string model, SimState state)
    : m_Id(std::move(id)),
      m_Model(std::move(model)),
      m_Anchor(std::make_shared<DeviceAnchor<SimCameraImpl>>(this)),
      m_State(std::move(state))
{
    m_Features.reserve(m_State.Count());
    for (int i = 0; i < m_State.Count(); ++i)
        m_Features.emplace_back(new SimFeature(m_Anchor, i, m_State.Decl(i).entries));
}

SimCameraImpl::~SimCameraImpl()
{
    m_Anchor->Detach();
    Close();
}

int SimCameraImpl::GetID(std::string& id) const
{
    id = m_Id;
    return PkoErrorSuccess;
}

int SimCameraImpl::GetModel(std::string& model) const
{
    model = m_Model;
    return PkoErrorSuccess;
}

int SimCameraImpl::GetName(std::string& name) const
{
    name = m_Model + " (" + m_Id + ")";
    return PkoErrorSuccess;
}

int SimCameraImpl::Open()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Open)
        return PkoErrorSuccess;
    try {
        auto notifier = std::make_shared<Notifier>();
        m_FrameThread = std::thread(&SimCameraImpl::SignalLoop, this, m_Session + 1);
        m_Notifier = std::move(notifier);
    } catch (const std::system_error&) {
        return PkoErrorResources;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    ++m_Session;
    m_Open = true;
    m_State.OnOpen();
    m_FramesSeen = 0;
    // Nothing happened while closed: the time just moves on.
    if (!m_ManualClock)
        m_State.AdvanceTo(RealClockNs());
    return PkoErrorSuccess;
}

int SimCameraImpl::Close()
{
    std::shared_ptr<Notifier> notifier;
    std::thread frameThread;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Open)
            return PkoErrorSuccess;
        m_Open = false;
        ++m_Session;
        m_State.OnClose();
        m_State.TakeWake();
        notifier = std::move(m_Notifier);
        frameThread = std::move(m_FrameThread);
    }
    // Threads are ended outside the lock: a callback in progress may still be
    // reading features.
    m_FrameWake.notify_all();
    if (frameThread.joinable())
        frameThread.join();
    if (notifier)
        notifier->Stop();
    for (const shared_ptr<SimFeature>& feature : m_Features)
        feature->DropObservers();
    return PkoErrorSuccess;
}

bool SimCameraImpl::IsOpen() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Open;
}

int SimCameraImpl::GetFeatures(std::vector<FeaturePtr>& features)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Open)
        return PkoErrorDeviceNotOpen;
    return CopyFeatureList(m_Features, features);
}

int SimCameraImpl::GetFeatureByName(const char* name, FeaturePtr& feature)
{
    if (name == nullptr)
        return PkoErrorBadParameter;
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Open)
        return PkoErrorDeviceNotOpen;
    const int index = m_State.IndexOf(name);
    if (index < 0)
        return PkoErrorNotFound;
    feature = m_Features[index];
    return PkoErrorSuccess;
}

int SimCameraImpl::StartAcquisition()
{
    return RunCommandByName("AcquisitionStart");
}

int SimCameraImpl::StopAcquisition()
{
    return RunCommandByName("AcquisitionStop");
}

bool SimCameraImpl::IsAcquiring() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.IsAcquiring();
}

unsigned long long SimCameraImpl::FramesDelivered() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.FramesDelivered();
}

int SimCameraImpl::GetLatestFrame(Frame& frame)
{
    unsigned long long id = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    long long timestamp = 0;
    double exposureUs = 0.0;
    std::string trigger;
    try {
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Open)
            return PkoErrorDeviceNotOpen;
        id = m_State.FramesDelivered();
        width = m_FrameWidth;
        height = m_FrameHeight;
        timestamp = m_State.LastFrameStart();
        exposureUs = m_State.LastFrameExposureUs();
        trigger = m_State.LastFrameTrigger();
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    if (id == 0)
        return PkoErrorNotFound;
    try {
        // A diagonal ramp that moves by two grey levels per frame.
        std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height);
        for (unsigned int y = 0; y < height; ++y) {
            unsigned char* row = pixels.data() + static_cast<std::size_t>(y) * width;
            for (unsigned int x = 0; x < width; ++x)
                row[x] = static_cast<unsigned char>(x + y + 2 * id);
        }
        frame.mono8.swap(pixels);
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    frame.width = width;
    frame.height = height;
    frame.id = id;
    frame.timestampNs = timestamp;
    frame.exposureUs = exposureUs;
    frame.trigger.swap(trigger);
    return PkoErrorSuccess;
}

bool SimCameraImpl::IsConnectionLost() const
{
    return false;  // a simulated camera never goes away
}

std::vector<JournalEntry> SimCameraImpl::Journal() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.Journal();
}

void SimCameraImpl::ClearJournal()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.ClearJournal();
}

void SimCameraImpl::InjectFault(const std::string& feature, Operation op, int errorCode)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.InjectFault(feature, op, errorCode);
}

void SimCameraImpl::InjectNaN(const std::string& feature)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.InjectNaN(feature);
}

void SimCameraImpl::ClearFaults()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.ClearFaults();
}

int SimCameraImpl::ChangeFromCamera(const std::string& feature, const std::string& valueText,
                                    const std::string& selectorEntry)
{
    int result = PkoErrorSuccess;
    std::vector<SignalState::Edge> outgoing;
    bool wake = false;
    {
        // Also while closed: a camera's own state changes whether anybody listens.
        std::lock_guard<std::mutex> lock(m_Mutex);
        CatchUpLocked();
        result = m_State.ChangeFromCamera(feature, valueText, selectorEntry);
        PostLocked();
        outgoing = m_State.TakeOutgoing();
        wake = m_State.TakeWake();
    }
    if (wake)
        m_FrameWake.notify_all();
    SendOutgoing(outgoing);
    return result;
}

std::string SimCameraImpl::ValueText(const std::string& feature, const std::string& selectorEntry) const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.ValueText(feature, selectorEntry);
}

unsigned long long SimCameraImpl::SoftwareTriggers() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.SoftwareTriggers();
}

bool SimCameraImpl::WaitForNotifications(int timeoutMs)
{
    std::shared_ptr<Notifier> notifier;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        notifier = m_Notifier;
    }
    // A closed camera has nothing queued.
    return notifier == nullptr || notifier->WaitIdle(timeoutMs);
}

int SimCameraImpl::RunCommandByName(const char* name)
{
    int index = -1;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Open)
            return PkoErrorDeviceNotOpen;
        index = m_State.IndexOf(name);
    }
    if (index < 0)
        return PkoErrorNotFound;
    return m_Features[index]->RunCommand();
}

unsigned long long SimCameraImpl::JournalDropped() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_State.JournalDropped();
}

void SimCameraImpl::SetJournalCapacity(std::size_t entries)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.SetJournalCapacity(entries);
}

void SimCameraImpl::JournalLevelChanges(bool on)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_State.JournalLevelChanges(on);
}

std::vector<std::string> SimCameraImpl::Lines() const
{
    return m_State.LineNames();  // fixed since construction
}

int SimCameraImpl::LineLevel(const std::string& line, bool& high) const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (!m_Open)
        return PkoErrorDeviceNotOpen;
    return m_State.LineLevel(line, high);
}

int SimCameraImpl::DriveInput(const std::string& line, bool high)
{
    return Locked(PkoErrorDeviceNotOpen, [&] { return m_State.DriveInput(line, high); });
}

int SimCameraImpl::StartPulses(const std::string& line, double periodMs, double highMs, int count)
{
    return Locked(PkoErrorDeviceNotOpen, [&] { return m_State.StartPulses(line, periodMs, highMs, count); });
}

int SimCameraImpl::StopPulses(const std::string& line)
{
    return Locked(PkoErrorDeviceNotOpen, [&] { return m_State.StopPulses(line); });
}

int SimCameraImpl::Wire(const std::string& outputLine, const std::string& inputLine)
{
    return Locked(PkoErrorDeviceNotOpen, [&] { return m_State.Wire(outputLine, inputLine); });
}

int SimCameraImpl::Unwire(const std::string& outputLine, const std::string& inputLine)
{
    return Locked(PkoErrorDeviceNotOpen, [&] { return m_State.Unwire(outputLine, inputLine); });
}

void SimCameraImpl::UseManualClock()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Open)
        CatchUpLocked();
    m_ManualClock = true;
}

int SimCameraImpl::AdvanceClock(double ms)
{
    if (!std::isfinite(ms) || ms < 0.0)
        return PkoErrorBadParameter;
    return Locked(PkoErrorDeviceNotOpen, [&] {
        if (!m_ManualClock)
            return int(PkoErrorInvalidAccess);
        m_State.AdvanceTo(m_State.Now() + static_cast<long long>(std::llround(ms * 1e6)));
        return int(PkoErrorSuccess);
    });
}

long long SimCameraImpl::ClockNs() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_ManualClock ? m_State.Now() : std::max(m_State.Now(), RealClockNs());
}

int SimCameraImpl::WireTo(SimCameraImpl& target, const std::string& outputLine, const std::string& inputLine)
{
    if (&target == this)
        return Wire(outputLine, inputLine);
    if (const int result = target.Locked(PkoErrorDeviceNotOpen, [&] { return target.m_State.CheckInput(inputLine); }))
        return result;
    bool level = false;
    long long time = 0;
    const int result = Locked(PkoErrorDeviceNotOpen, [&] {
        if (const int marked = m_State.MarkRemoteOutput(outputLine, true))
            return marked;
        m_RemoteWires.push_back(RemoteWire{outputLine, target.m_Anchor, inputLine});
        m_State.LineLevel(outputLine, level);
        time = m_State.Now();
        return int(PkoErrorSuccess);
    });
    if (result == PkoErrorSuccess)
        target.ReceiveLevel(inputLine, level, time);
    return result;
}

int SimCameraImpl::UnwireFrom(SimCameraImpl& target, const std::string& outputLine, const std::string& inputLine)
{
    if (&target == this)
        return Unwire(outputLine, inputLine);
    return Locked(PkoErrorDeviceNotOpen, [&] {
        auto it = std::find_if(m_RemoteWires.begin(), m_RemoteWires.end(), [&](const RemoteWire& wire) {
            return wire.output == outputLine && wire.target == target.m_Anchor && wire.input == inputLine;
        });
        if (it == m_RemoteWires.end())
            return int(PkoErrorNotFound);
        m_RemoteWires.erase(it);
        const bool stillWired = std::any_of(m_RemoteWires.begin(), m_RemoteWires.end(),
                                            [&](const RemoteWire& wire) { return wire.output == outputLine; });
        m_State.MarkRemoteOutput(outputLine, stillWired);
        return int(PkoErrorSuccess);
    });
}

long long SimCameraImpl::RealClockNs() const
{
    // One epoch for every camera, so that the times of cameras wired
    // together compare.
    static const std::chrono::steady_clock::time_point epoch = std::chrono::steady_clock::now();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - epoch).count();
}

void SimCameraImpl::CatchUpLocked()
{
    if (!m_ManualClock)
        m_State.AdvanceTo(RealClockNs());
}

void SimCameraImpl::PostLocked()
{
    m_State.Settle();
    if (m_State.FramesDelivered() != m_FramesSeen) {
        m_FramesSeen = m_State.FramesDelivered();
        NoteFrameSizeLocked();
    }
    const std::vector<int> changed = m_State.TakeNotifications();
    if (!m_Notifier)
        return;
    for (int index : changed)
        m_Notifier->Post(m_Features[index]);
}

void SimCameraImpl::SendOutgoing(const std::vector<SignalState::Edge>& edges)
{
    if (edges.empty())
        return;
    // Cables that lead back (A to B to A) could bounce levels for ever.
    thread_local int depth = 0;
    if (depth >= 8)
        return;
    std::vector<RemoteWire> wires;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        wires = m_RemoteWires;
    }
    ++depth;
    const std::vector<std::string>& names = m_State.LineNames();
    for (const SignalState::Edge& edge : edges) {
        for (const RemoteWire& wire : wires) {
            if (wire.output != names[edge.line])
                continue;
            wire.target->With([&](SimCameraImpl& target) {
                target.ReceiveLevel(wire.input, edge.high, edge.time);
                return int(PkoErrorSuccess);
            });
        }
    }
    --depth;
}

void SimCameraImpl::ReceiveLevel(const std::string& input, bool high, long long time)
{
    Locked(PkoErrorDeviceNotOpen, [&] {
        if (m_ManualClock && time > m_State.Now())
            m_State.AdvanceTo(time);
        return m_State.DriveInput(input, high);
    });
}

void SimCameraImpl::NoteFrameSizeLocked()
{
    // Bounded, so that an odd Width or Height cannot ask for gigabytes.
    constexpr long long kMaxSide = 4096;
    const auto side = [&](const char* name, long long fallback) {
        long long value = 0;
        if (!ParseInteger(m_State.ValueText(name, std::string()), value) || value < 1)
            value = fallback;
        return static_cast<unsigned int>(std::min(value, kMaxSide));
    };
    m_FrameWidth = side("Width", 640);
    m_FrameHeight = side("Height", 480);
}

void SimCameraImpl::SignalLoop(unsigned long long session)
{
    // Waking for every edge of a fast pulse train would cost more than it
    // shows; events are played in order whenever the thread looks.
    constexpr long long kMinWaitNs = 1000000;
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (m_Session == session) {
        m_State.TakeWake();
        CatchUpLocked();
        PostLocked();
        const std::vector<SignalState::Edge> outgoing = m_State.TakeOutgoing();
        if (!outgoing.empty()) {
            lock.unlock();
            SendOutgoing(outgoing);
            lock.lock();
            continue;
        }
        const long long next = m_State.NextEventTime();
        if (m_ManualClock || next == SignalState::kNever) {
            m_FrameWake.wait(lock);
            continue;
        }
        const long long wait = std::max(next - RealClockNs(), kMinWaitNs);
        m_FrameWake.wait_for(lock, std::chrono::nanoseconds(wait));
    }
}

int Wire(const SimCameraPtr& a, const std::string& outputLine, const SimCameraPtr& b, const std::string& inputLine)
{
    auto* from = dynamic_cast<SimCameraImpl*>(a.get());
    auto* to = dynamic_cast<SimCameraImpl*>(b.get());
    if (from == nullptr || to == nullptr)
        return PkoErrorBadParameter;
    return from->WireTo(*to, outputLine, inputLine);
}

int Unwire(const SimCameraPtr& a, const std::string& outputLine, const SimCameraPtr& b, const std::string& inputLine)
{
    auto* from = dynamic_cast<SimCameraImpl*>(a.get());
    auto* to = dynamic_cast<SimCameraImpl*>(b.get());
    if (from == nullptr || to == nullptr)
        return PkoErrorBadParameter;
    return from->UnwireFrom(*to, outputLine, inputLine);
}

}  // namespace ZMT::PkoAPI::Sim
