#include "SimCameraImpl.h"

#include "FeatureList.h"
#include "SimFeature.h"
#include "ValueText.h"

#include <algorithm>
#include <chrono>
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
        m_FrameThread = std::thread(&SimCameraImpl::FrameLoop, this, m_Session + 1);
        m_Notifier = std::move(notifier);
    } catch (const std::system_error&) {
        return PkoErrorResources;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    ++m_Session;
    m_Open = true;
    m_State.OnOpen();
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
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Open)
            return PkoErrorDeviceNotOpen;
        id = m_State.FramesDelivered();
        width = m_FrameWidth;
        height = m_FrameHeight;
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
    bool wake = false;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        result = m_State.ChangeFromCamera(feature, valueText, selectorEntry);
        PostLocked();
        wake = m_State.TakeWake();
    }
    if (wake)
        m_FrameWake.notify_all();
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

void SimCameraImpl::PostLocked()
{
    const std::vector<int> changed = m_State.TakeNotifications();
    if (!m_Notifier)
        return;
    for (int index : changed)
        m_Notifier->Post(m_Features[index]);
}

void SimCameraImpl::DeliverFrameLocked()
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
    m_State.DeliverFrame();
}

void SimCameraImpl::FrameLoop(unsigned long long session)
{
    using Clock = std::chrono::steady_clock;
    std::unique_lock<std::mutex> lock(m_Mutex);
    unsigned long long acquisition = 0;
    bool timing = false;
    Clock::time_point next;
    while (m_Session == session) {
        m_State.TakeWake();
        if (!m_State.IsAcquiring()) {
            timing = false;
            m_FrameWake.wait(lock);
            continue;
        }
        if (m_State.AcquisitionNumber() != acquisition) {
            acquisition = m_State.AcquisitionNumber();
            timing = false;
        }
        if (m_State.IsFreeRunning()) {
            const auto period = std::chrono::duration_cast<Clock::duration>(
                std::chrono::duration<double>(m_State.FramePeriodSeconds()));
            const Clock::time_point now = Clock::now();
            if (!timing) {
                next = now + period;
                timing = true;
            }
            if (now < next) {
                m_FrameWake.wait_until(lock, next);
                continue;
            }
            DeliverFrameLocked();
            PostLocked();
            // After a stall, carry on at the frame rate rather than catching up.
            next = next + period < now ? now + period : next + period;
            continue;
        }
        timing = false;
        if (m_State.TakeSoftwareTrigger()) {
            DeliverFrameLocked();
            PostLocked();
            continue;
        }
        m_FrameWake.wait(lock);
    }
}

}  // namespace ZMT::PkoAPI::Sim
