#include "FeatureBase.h"

#include <algorithm>
#include <utility>

namespace ZMT::PkoAPI {

FeatureBase::~FeatureBase() = default;

int FeatureBase::RegisterObserver(const IFeatureObserverPtr& observer)
{
    if (!observer)
        return PkoErrorBadParameter;
    const int check = CheckObserverOperation(true);
    if (check != PkoErrorSuccess)
        return check;
    std::lock_guard<std::mutex> lock(m_Mutex);
    if (IsRegisteredLocked(observer.get()))
        return PkoErrorAlreadyRegistered;
    m_Observers.push_back(observer);
    return PkoErrorSuccess;
}

int FeatureBase::UnregisterObserver(const IFeatureObserverPtr& observer)
{
    if (!observer)
        return PkoErrorBadParameter;
    const int check = CheckObserverOperation(false);
    if (check != PkoErrorSuccess)
        return check;
    IFeatureObserverPtr removed;  // released after the lock: its destructor may call into the SDK
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        auto it = std::find(m_Observers.begin(), m_Observers.end(), observer);
        if (it == m_Observers.end())
            return PkoErrorNotRegistered;
        removed = std::move(*it);
        m_Observers.erase(it);
        // Wait out a callback of this observer in progress, unless it is the
        // caller itself (unregistering from inside FeatureChanged).
        if (m_CallingThread != std::this_thread::get_id())
            m_CallDone.wait(lock, [&] { return m_Calling != observer.get(); });
    }
    return PkoErrorSuccess;
}

std::vector<IFeatureObserverPtr> FeatureBase::Observers()
{
    std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Observers;
}

void FeatureBase::Deliver(const shared_ptr<FeatureBase>& self, const std::vector<IFeatureObserverPtr>& observers)
{
    const FeaturePtr feature(self);
    for (const IFeatureObserverPtr& observer : observers) {
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            if (!IsRegisteredLocked(observer.get()))
                continue;  // unregistered since the change
            m_Calling = observer.get();
            m_CallingThread = std::this_thread::get_id();
        }
        try {
            observer->FeatureChanged(feature);
        } catch (...) {
            // A client's exception must not end the notification thread.
        }
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            m_Calling = nullptr;
            m_CallingThread = std::thread::id();
        }
        m_CallDone.notify_all();
    }
}

void FeatureBase::DropObservers()
{
    std::vector<IFeatureObserverPtr> dropped;
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        dropped.swap(m_Observers);
    }
}

bool FeatureBase::IsRegisteredLocked(const IFeatureObserver* observer) const
{
    return std::any_of(m_Observers.begin(), m_Observers.end(),
                       [observer](const IFeatureObserverPtr& registered) { return registered.get() == observer; });
}

}  // namespace ZMT::PkoAPI
