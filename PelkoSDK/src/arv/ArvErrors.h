#ifndef PKOAPI_SRC_ARV_ARVERRORS_H
#define PKOAPI_SRC_ARV_ARVERRORS_H

#include <glib.h>

namespace ZMT::PkoAPI::Arv {

// Turns Aravis's GError reports into the SDK's error codes. Aravis reports
// failures through the GError only (return values are not reliable), so
// callers pass a fresh null GError* to every call and test it afterwards.
class ArvErrors {
public:
    // PkoErrorSuccess for null; otherwise the named code that fits the
    // error's domain and code, PkoErrorOther for anything unknown.
    static int ToCode(const GError* error);
    // True when the error means that the device stopped answering (a
    // transfer timed out after Aravis's retries, or the link is gone).
    static bool MeansConnectionLost(const GError* error);
};

}  // namespace ZMT::PkoAPI::Arv

#endif
