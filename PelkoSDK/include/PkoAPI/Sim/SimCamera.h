#ifndef PKOAPI_SIM_SIMCAMERA_H
#define PKOAPI_SIM_SIMCAMERA_H

#include <PkoAPI/Camera.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <string>
#include <vector>

namespace ZMT {
namespace PkoAPI {
namespace Sim {

// A camera simulated in process, made by CameraBuilder or by CreateModel.
// It behaves as a real camera behind the same Camera/Feature interface:
// selectors, writability and entry availability rules, range and increment
// checks, notifications on an SDK thread of its own, acquisition that ends by
// itself. On top it offers hooks for tests (journal, faults, camera-side
// changes). All members are thread-safe.
//
// Built-in behaviour of standard command names: "AcquisitionStart" and
// "AcquisitionStop" start and stop acquisition; "TriggerSoftware" delivers a
// frame when acquiring with "TriggerMode" "On" and "TriggerSource"
// "Software" for the "FrameStart" trigger, and is counted in any case.
// An acquisition in "SingleFrame" or "MultiFrame" mode ("AcquisitionFrameCount"
// frames) ends by itself after its frames, notifying from the SDK thread.
class SimCamera : public Camera {
public:
    // Every write so far (accepted and refused), oldest first.
    virtual std::vector<JournalEntry> Journal() const = 0;
    virtual void ClearJournal() = 0;

    // Makes op fail with errorCode on every feature named feature, until
    // ClearFaults. Nothing else happens during a failed operation.
    virtual void InjectFault(const std::string& feature, Operation op, int errorCode) = 0;
    // GetValue(double&) of feature succeeds and yields NaN.
    virtual void InjectNaN(const std::string& feature) = 0;
    virtual void ClearFaults() = 0;

    // A change made by the camera itself (an input line toggling, a sensor
    // reading): bypasses writability, range and availability, is journaled
    // with writer "camera" and notifies observers from the SDK thread.
    // selectorEntry picks the entry of the feature's selector to change
    // ("" = the selector's current entry). PkoErrorNotFound for an unknown
    // feature or entry, PkoErrorInvalidValue for a text that does not parse.
    virtual int ChangeFromCamera(const std::string& feature, const std::string& valueText,
                                 const std::string& selectorEntry = std::string()) = 0;

    // Current value text of feature (as in the journal) at its selector's
    // current entry, or at selectorEntry when given; "" when unknown.
    virtual std::string ValueText(const std::string& feature,
                                  const std::string& selectorEntry = std::string()) const = 0;

    // Number of "TriggerSoftware" executions since the camera was built.
    virtual unsigned long long SoftwareTriggers() const = 0;

    // Blocks until the SDK thread has delivered every notification queued
    // before the call; false on timeout.
    virtual bool WaitForNotifications(int timeoutMs) = 0;
};

typedef shared_ptr<SimCamera> SimCameraPtr;

// The ready-made models. Each ID names a realistic camera of one family:
//   "SIM-LINE-ROUTING"  "Line*" outputs, "LineRouting", "TriggerSource"
//                       with "InputLines", "ExposureMode" Timed/TriggerWidth
//   "SIM-LINE-SFNC"     "Line*" outputs without "LineRouting", "Software"
//                       trigger source, "ExposureMode" Timed/TriggerWidth
//   "SIM-SYNCOUT"       "SyncOut*" outputs with the "SyncOutLevels" bit mask,
//                       "ExposureAuto" with an entry "other", no "LineSelector"
//   "SIM-LINEOUT"       "LineOut*" outputs with "LineOutLevels"
//   "SIM-NO-TRIGGER"    no trigger or line features at all
std::vector<std::string> ModelIds();
// A new, closed camera of that model; null for an unknown ID.
SimCameraPtr CreateModel(const std::string& id);

}  // namespace Sim
}  // namespace PkoAPI
}  // namespace ZMT

#endif
