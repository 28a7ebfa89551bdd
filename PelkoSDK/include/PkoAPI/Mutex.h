#ifndef PKOAPI_MUTEX_H
#define PKOAPI_MUTEX_H

// The SDK's mutex, for clients that share SDK objects between threads.
// Non-recursive: locking it twice from one thread deadlocks.

#include <mutex>

namespace ZMT {
namespace PkoAPI {

class Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }
    // True when the lock was taken.
    bool TryLock() { return m_mutex.try_lock(); }

private:
    std::mutex m_mutex;
};

// Holds a Mutex for the lifetime of a scope.
class MutexLocker {
public:
    explicit MutexLocker(Mutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~MutexLocker() { m_mutex.Unlock(); }
    MutexLocker(const MutexLocker&) = delete;
    MutexLocker& operator=(const MutexLocker&) = delete;

private:
    Mutex& m_mutex;
};

}  // namespace PkoAPI
}  // namespace ZMT

#endif
