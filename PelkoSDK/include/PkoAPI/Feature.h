#ifndef PKOAPI_FEATURE_H
#define PKOAPI_FEATURE_H

#include <PkoAPI/IFeatureObserver.h>
#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/SharedPointer.h>

namespace ZMT {
namespace PkoAPI {

// One named setting or action of a camera (GenICam feature).
//
// General contract, for every operation below:
// - Returns PkoErrorSuccess (0) or a negative PkoErrorCode; never throws.
// - On failure no output parameter is changed and the camera is unchanged
//   (PkoErrorTimeout below says when a late request still takes effect).
// - Every operation may be called from any thread.
// - PkoErrorTimeout: the camera did not answer in time (it may be dying).
//   A call never waits more than a fraction of a second for a camera that
//   stopped answering, whether its own request or another one is stuck: it
//   gives up, and until the stuck request returns further calls give up at
//   once. Then calls work again or fail with PkoErrorConnectionLost. A call
//   that gave up after its request reached the camera may still take effect
//   (observers hear of it then); one that gave up before never does.
//
// Text protocol (GetName, GetDisplayName, GetCategory, GetValue(char*, ...)):
// call with buffer == nullptr to get the length of the text (without a
// terminating NUL) in length. Then call with a buffer of at least length bytes
// and length set to the buffer's size: the text is copied, a NUL is added when
// the buffer has room for it, and length is set to the text's length. A buffer
// that is too small gives PkoErrorMoreData and is left untouched.
//
// Entry list protocol (GetValues): call with entries == nullptr for the number
// of entries in count, then with an array of at least count pointers. The
// pointers stay valid as long as the Feature object lives.
class Feature {
public:
    virtual ~Feature() = default;

    virtual int GetName(char* name, unsigned int& length) = 0;
    virtual int GetDisplayName(char* displayName, unsigned int& length) = 0;
    // Category path such as "/AcquisitionControl".
    virtual int GetCategory(char* category, unsigned int& length) = 0;
    virtual int GetDataType(PkoFeatureDataType& dataType) = 0;

    // Current value. PkoErrorWrongType when the type does not fit: the integer
    // form serves integer features, the double form float features, the bool
    // form boolean features, the text form enumeration and string features.
    virtual int GetValue(long long& value) = 0;
    virtual int GetValue(double& value) = 0;
    virtual int GetValue(bool& value) = 0;
    virtual int GetValue(char* value, unsigned int& length) = 0;

    // Writes a value. PkoErrorInvalidAccess when the feature is not writable
    // now, PkoErrorInvalidValue when the value is out of range, off the
    // increment grid, or names an unknown or unavailable entry,
    // PkoErrorWrongType when the type does not fit.
    virtual int SetValue(const long long& value) = 0;
    virtual int SetValue(const double& value) = 0;
    virtual int SetValue(bool value) = 0;
    virtual int SetValue(const char* value) = 0;

    // Range and increment of integer and float features.
    virtual int GetRange(long long& minimum, long long& maximum) = 0;
    virtual int GetRange(double& minimum, double& maximum) = 0;
    // Float features without an increment report 0.
    virtual int GetIncrement(long long& increment) = 0;
    virtual int GetIncrement(double& increment) = 0;

    // Every entry of an enumeration, available now or not, in the camera's order.
    virtual int GetValues(const char** entries, unsigned int& count) = 0;
    // Whether one entry can be chosen now; PkoErrorNotFound for an unknown entry.
    virtual int IsValueAvailable(const char* entry, bool& available) = 0;
    virtual int IsWritable(bool& writable) = 0;

    // Executes a command feature; PkoErrorWrongType for any other type.
    virtual int RunCommand() = 0;

    // Registers observer for changes of this feature (see IFeatureObserver).
    // PkoErrorBadParameter for a null observer, PkoErrorAlreadyRegistered when
    // it is registered on this feature already (it is not registered twice).
    virtual int RegisterObserver(const IFeatureObserverPtr& observer) = 0;
    // PkoErrorNotRegistered when observer is not registered on this feature.
    virtual int UnregisterObserver(const IFeatureObserverPtr& observer) = 0;

protected:
    Feature() = default;
    Feature(const Feature&) = delete;
    Feature& operator=(const Feature&) = delete;
};

typedef shared_ptr<Feature> FeaturePtr;

}  // namespace PkoAPI
}  // namespace ZMT

#endif
