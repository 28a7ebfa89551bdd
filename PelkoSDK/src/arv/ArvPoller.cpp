#include "ArvPoller.h"

#include <algorithm>
#include <utility>

namespace ZMT::PkoAPI::Arv {

ArvPoller::ArvPoller(std::chrono::milliseconds firstPause, Tick tick)
    : m_FirstPause(firstPause), m_Tick(std::move(tick))
{
    m_Thread = std::thread(&ArvPoller::Run, this);
}

ArvPoller::~ArvPoller()
{
    Stop();
}

void ArvPoller::Stop()
{
    RequestStop();
    if (m_Thread.joinable())
        m_Thread.join();
}

void ArvPoller::RequestStop()
{
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Stopping = true;
    }
    m_Wake.notify_all();
}

void ArvPoller::Run()
{
    // A camera cannot usefully be asked more often than this.
    constexpr std::chrono::milliseconds kShortest(5);
    std::chrono::milliseconds pause = m_FirstPause;
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        if (m_Wake.wait_for(lock, std::max(pause, kShortest), [this] { return m_Stopping; }))
            return;
        lock.unlock();
        pause = m_Tick();
        lock.lock();
    }
}

}  // namespace ZMT::PkoAPI::Arv
