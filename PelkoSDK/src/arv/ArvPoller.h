#ifndef PKOAPI_SRC_ARV_ARVPOLLER_H
#define PKOAPI_SRC_ARV_ARVPOLLER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace ZMT::PkoAPI::Arv {

// A thread that runs tick until it is stopped, each time after the pause the
// previous tick asked for (the first after firstPause). The pause runs from
// the end of one tick to the start of the next, so a slow camera lowers the
// rate instead of piling up work.
class ArvPoller {
public:
    typedef std::function<std::chrono::milliseconds()> Tick;

    // Starts the thread; throws std::system_error when it cannot.
    ArvPoller(std::chrono::milliseconds firstPause, Tick tick);
    // Stop().
    ~ArvPoller();
    ArvPoller(const ArvPoller&) = delete;
    ArvPoller& operator=(const ArvPoller&) = delete;

    // Ends the thread after the tick in progress; must not be called from
    // inside tick. Calling it twice does nothing.
    void Stop();
    // Asks the thread to end after the tick in progress without waiting for
    // it (a tick may sit in a call to a dying camera); Stop joins it later.
    void RequestStop();

private:
    void Run();

    const std::chrono::milliseconds m_FirstPause;
    const Tick m_Tick;
    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    bool m_Stopping = false;
    std::thread m_Thread;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
