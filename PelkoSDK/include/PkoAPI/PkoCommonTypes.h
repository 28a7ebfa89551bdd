#ifndef PKOAPI_PKOCOMMONTYPES_H
#define PKOAPI_PKOCOMMONTYPES_H

// Basic types shared by every part of the camera SDK.

namespace ZMT {
namespace PkoAPI {

// Every SDK operation returns one of these codes; 0 is success, every failure
// is negative. Callers compare against the named values, never against "< 0".
enum PkoErrorCode : int {
    PkoErrorSuccess = 0,
    PkoErrorInternal = -1,            // a bug or broken invariant inside the SDK
    PkoErrorNotStarted = -2,          // the system or camera is not ready
    PkoErrorNotFound = -3,            // no such camera, feature or enumeration entry
    PkoErrorBadHandle = -4,           // the object was closed or never opened
    PkoErrorDeviceNotOpen = -5,       // the camera is not open
    PkoErrorInvalidAccess = -6,       // the feature is not writable (or not readable) now
    PkoErrorBadParameter = -7,        // null pointer where one is required, or similar
    PkoErrorMoreData = -9,            // the caller's buffer or array is too small
    PkoErrorWrongType = -10,          // the operation does not fit the feature's data type
    PkoErrorInvalidValue = -11,       // out of range, off the increment grid, entry unavailable
    PkoErrorTimeout = -12,            // the camera did not answer in time
    PkoErrorOther = -13,              // any other failure
    PkoErrorResources = -14,          // resources exhausted (memory, buffers)
    PkoErrorAlreadyRegistered = -15,  // the observer is already registered on this feature
    PkoErrorNotRegistered = -16,      // the observer is not registered on this feature
    PkoErrorConnectionLost = -17,     // the camera stopped answering
    PkoErrorBadDescription = -18,     // the camera's feature description is damaged or cannot be used
};

// The data type of a feature, as reported by Feature::GetDataType.
enum PkoFeatureDataType : int {
    PkoFeatureDataUnknown = 0,
    PkoFeatureDataInt = 1,      // 64-bit signed integer
    PkoFeatureDataFloat = 2,    // double
    PkoFeatureDataEnum = 3,     // one entry of a list of named entries
    PkoFeatureDataString = 4,   // 8-bit text
    PkoFeatureDataBool = 5,     // true / false
    PkoFeatureDataCommand = 6,  // an action without value
    PkoFeatureDataRaw = 7,      // a block of bytes
};

// Human-readable name of an error code ("PkoErrorNotFound"); never null.
const char* PkoErrorName(int errorCode);

}  // namespace PkoAPI
}  // namespace ZMT

#endif
