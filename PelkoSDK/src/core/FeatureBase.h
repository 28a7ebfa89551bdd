#ifndef PKOAPI_SRC_FEATUREBASE_H
#define PKOAPI_SRC_FEATUREBASE_H

#include <PkoAPI/Feature.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace ZMT::PkoAPI {

// The backend-independent half of a feature: its observers and the delivery
// of one change to them. A backend derives from it and implements the value
// operations; its notification thread calls Deliver.
class FeatureBase : public Feature {
public:
    ~FeatureBase() override;

    int RegisterObserver(const IFeatureObserverPtr& observer) override;
    int UnregisterObserver(const IFeatureObserverPtr& observer) override;

    // The observers registered now. Taken when the change happens, so that an
    // observer registered after a change does not hear of it: a client that
    // unregisters, writes and registers again must not be told of its write.
    std::vector<IFeatureObserverPtr> Observers();
    // Calls FeatureChanged(self) on each of observers (a snapshot taken by
    // Observers() at the change) that is still registered when its turn
    // comes; called on the notification thread with no SDK lock held. self
    // must point at this object. Exceptions thrown by observers are dropped.
    void Deliver(const shared_ptr<FeatureBase>& self, const std::vector<IFeatureObserverPtr>& observers);
    // Forgets every observer (the device closed). Does not wait for a
    // callback in progress.
    void DropObservers();

protected:
    FeatureBase() = default;
    // Lets the backend refuse observer operations (device closed, injected
    // fault): the code to return, or PkoErrorSuccess to go on. Called before
    // the observer lock is taken: the backend takes its own device lock here,
    // and the device posts changes (reading the observers) under that lock.
    virtual int CheckObserverOperation(bool registering) = 0;

private:
    bool IsRegisteredLocked(const IFeatureObserver* observer) const;

    std::mutex m_Mutex;
    std::condition_variable m_CallDone;
    std::vector<IFeatureObserverPtr> m_Observers;
    // The observer being called right now and the thread calling it.
    const IFeatureObserver* m_Calling = nullptr;
    std::thread::id m_CallingThread;
};

}  // namespace ZMT::PkoAPI

#endif
