#ifndef PKOAPI_IFEATUREOBSERVER_H
#define PKOAPI_IFEATUREOBSERVER_H

#include <PkoAPI/SharedPointer.h>

namespace ZMT {
namespace PkoAPI {

class Feature;

// Implemented by clients that want to hear about changed feature values.
//
// Contract of the SDK towards an observer registered with
// Feature::RegisterObserver:
// - FeatureChanged is called on a thread of the SDK, never on the thread that
//   made the change, and never while the SDK holds a lock that a call back
//   into the SDK (reading the feature, unregistering) would need.
// - It is called after every change of the feature's value or state, whoever
//   made it (a client, another feature such as a selector, or the camera).
// - The SDK holds a reference to the observer while it is registered and
//   during every call, so the observer outlives its last callback.
// - Once UnregisterObserver has returned, the observer is not called for that
//   feature again.
// An exception thrown by FeatureChanged is caught and dropped by the SDK.
class IFeatureObserver {
public:
    virtual void FeatureChanged(const shared_ptr<Feature>& feature) = 0;
    virtual ~IFeatureObserver() = default;
};

typedef shared_ptr<IFeatureObserver> IFeatureObserverPtr;

}  // namespace PkoAPI
}  // namespace ZMT

#endif
