#include "Notifier.h"

#include <chrono>
#include <utility>

namespace ZMT::PkoAPI {

Notifier::Notifier() : m_Queue(std::make_shared<Queue>())
{
    m_Thread = std::thread(&Notifier::Run, m_Queue);
    m_ThreadId = m_Thread.get_id();
}

Notifier::~Notifier()
{
    Stop();
}

void Notifier::Post(const shared_ptr<FeatureBase>& feature)
{
    if (!feature)
        return;
    std::vector<IFeatureObserverPtr> observers = feature->Observers();
    if (observers.empty())
        return;
    {
        std::lock_guard<std::mutex> lock(m_Queue->mutex);
        if (m_Queue->stopping)
            return;
        m_Queue->pending.push_back(Queue::Change{feature, std::move(observers)});
        ++m_Queue->posted;
    }
    m_Queue->wake.notify_one();
}

bool Notifier::WaitIdle(int timeoutMs)
{
    if (IsNotificationThread())
        return false;
    std::unique_lock<std::mutex> lock(m_Queue->mutex);
    const unsigned long long target = m_Queue->posted;
    const bool idle = m_Queue->delivered.wait_for(lock, std::chrono::milliseconds(timeoutMs < 0 ? 0 : timeoutMs),
                                                  [&] { return m_Queue->done >= target || m_Queue->stopping; });
    return idle && m_Queue->done >= target;
}

void Notifier::Stop()
{
    std::deque<Queue::Change> dropped;  // released outside the lock
    {
        std::lock_guard<std::mutex> lock(m_Queue->mutex);
        m_Queue->stopping = true;
        dropped.swap(m_Queue->pending);
    }
    m_Queue->wake.notify_all();
    m_Queue->delivered.notify_all();

    std::thread thread;
    {
        std::lock_guard<std::mutex> lock(m_ThreadMutex);
        thread = std::move(m_Thread);
    }
    if (!thread.joinable())
        return;
    if (thread.get_id() == std::this_thread::get_id())
        thread.detach();
    else
        thread.join();
}

bool Notifier::IsNotificationThread() const
{
    return m_ThreadId == std::this_thread::get_id();
}

void Notifier::Run(const std::shared_ptr<Queue>& queue)
{
    std::unique_lock<std::mutex> lock(queue->mutex);
    for (;;) {
        queue->wake.wait(lock, [&] { return queue->stopping || !queue->pending.empty(); });
        if (queue->stopping)
            break;
        Queue::Change change = std::move(queue->pending.front());
        queue->pending.pop_front();
        lock.unlock();
        change.feature->Deliver(change.feature, change.observers);
        change = Queue::Change();  // may hold the last references: not under the lock
        lock.lock();
        ++queue->done;
        queue->delivered.notify_all();
    }
}

}  // namespace ZMT::PkoAPI
