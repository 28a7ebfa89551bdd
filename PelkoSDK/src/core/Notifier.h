#ifndef PKOAPI_SRC_NOTIFIER_H
#define PKOAPI_SRC_NOTIFIER_H

#include "FeatureBase.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ZMT::PkoAPI {

// The notification thread of one open device: changed features are queued
// by Post and delivered to their observers in order, one at a time.
class Notifier {
public:
    // Starts the thread; throws std::system_error when it cannot.
    Notifier();
    // Stop().
    ~Notifier();
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    // Queues one change of feature for the observers it has now (null, or a
    // feature without observers, is ignored). Never blocks on a callback.
    void Post(const shared_ptr<FeatureBase>& feature);
    // Waits until every change posted before the call has been delivered.
    // False on timeout, after Stop, and on the notification thread itself
    // (which cannot wait for its own work).
    bool WaitIdle(int timeoutMs);
    // Drops the changes not yet delivered and ends the thread, waiting for a
    // callback in progress. Called from inside a callback it does not wait:
    // the thread ends when that callback returns.
    void Stop();
    bool IsNotificationThread() const;

private:
    // Shared with the thread, so that a thread left to finish on its own
    // (Stop from inside a callback) never touches a destroyed Notifier.
    struct Queue {
        std::mutex mutex;
        std::condition_variable wake;
        std::condition_variable delivered;
        struct Change {
            shared_ptr<FeatureBase> feature;
            std::vector<IFeatureObserverPtr> observers;
        };
        std::deque<Change> pending;
        unsigned long long posted = 0;
        unsigned long long done = 0;
        bool stopping = false;
    };
    static void Run(const std::shared_ptr<Queue>& queue);

    std::shared_ptr<Queue> m_Queue;
    std::mutex m_ThreadMutex;
    std::thread m_Thread;
    std::thread::id m_ThreadId;
};

}  // namespace ZMT::PkoAPI

#endif
