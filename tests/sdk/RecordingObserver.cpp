#include "RecordingObserver.h"

#include "SdkTestSupport.h"

#include <algorithm>
#include <utility>

RecordingObserver::RecordingObserver(std::atomic<bool>* destroyed) : m_Destroyed(destroyed) {}

RecordingObserver::~RecordingObserver()
{
    if (m_Destroyed)
        *m_Destroyed = true;
}

void RecordingObserver::FeatureChanged(const ZMT::PkoAPI::FeaturePtr& feature)
{
    Hook hook;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Calls.push_back(Call{NameOf(feature), std::this_thread::get_id()});
        hook = m_Hook;
    }
    if (hook)
        hook(feature);
}

void RecordingObserver::SetHook(Hook hook)
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_Hook = std::move(hook);
}

std::vector<RecordingObserver::Call> RecordingObserver::Calls() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Calls;
}

int RecordingObserver::Count() const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return static_cast<int>(m_Calls.size());
}

int RecordingObserver::CountFor(const std::string& feature) const
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return static_cast<int>(
        std::count_if(m_Calls.begin(), m_Calls.end(), [&](const Call& call) { return call.feature == feature; }));
}

void RecordingObserver::Clear()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    m_Calls.clear();
}
