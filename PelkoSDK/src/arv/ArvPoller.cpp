#include "ArvPoller.h"

#include <utility>

namespace ZMT::PkoAPI::Arv {

ArvPoller::ArvPoller(std::chrono::milliseconds period, std::function<void()> tick)
    : m_Period(period), m_Tick(std::move(tick))
{
    m_Thread = std::thread(&ArvPoller::Run, this);
}

ArvPoller::~ArvPoller()
{
    Stop();
}

void ArvPoller::Stop()
{
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Stopping = true;
    }
    m_Wake.notify_all();
    if (m_Thread.joinable())
        m_Thread.join();
}

void ArvPoller::Run()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        if (m_Wake.wait_for(lock, m_Period, [this] { return m_Stopping; }))
            return;
        lock.unlock();
        m_Tick();
        lock.lock();
    }
}

}  // namespace ZMT::PkoAPI::Arv
