#include "GateObserver.h"

#include <chrono>

void GateObserver::FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>&)
{
    std::unique_lock<std::mutex> lock(m_Lock);
    m_Held = true;
    m_Changed.notify_all();
    m_Changed.wait_for(lock, std::chrono::seconds(5), [this] { return m_Open; });
}

bool GateObserver::WaitUntilHeld(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(m_Lock);
    return m_Changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return m_Held; });
}

void GateObserver::Open()
{
    std::lock_guard<std::mutex> lock(m_Lock);
    m_Open = true;
    m_Changed.notify_all();
}
