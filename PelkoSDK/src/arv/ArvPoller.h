#ifndef PKOAPI_SRC_ARV_ARVPOLLER_H
#define PKOAPI_SRC_ARV_ARVPOLLER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace ZMT::PkoAPI::Arv {

// A thread that runs tick every period until it is stopped. The period is
// measured from the end of one tick to the start of the next, so a slow
// camera lowers the rate instead of piling up work.
class ArvPoller {
public:
    // Starts the thread; throws std::system_error when it cannot.
    ArvPoller(std::chrono::milliseconds period, std::function<void()> tick);
    // Stop().
    ~ArvPoller();
    ArvPoller(const ArvPoller&) = delete;
    ArvPoller& operator=(const ArvPoller&) = delete;

    // Ends the thread after the tick in progress; must not be called from
    // inside tick. Calling it twice does nothing.
    void Stop();

private:
    void Run();

    const std::chrono::milliseconds m_Period;
    const std::function<void()> m_Tick;
    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    bool m_Stopping = false;
    std::thread m_Thread;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
