#ifndef PKOAPI_SIM_SIMCAMERA_H
#define PKOAPI_SIM_SIMCAMERA_H

#include <PkoAPI/Camera.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <cstddef>
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
// "Software" for the frame trigger (each press one frame, however fast they
// come), and is counted in any case; "CounterReset" zeroes the selected
// "CounterValue".
// An acquisition in "SingleFrame" or "MultiFrame" mode ("AcquisitionFrameCount"
// frames) ends by itself after its frames, notifying from the SDK thread.
//
// Signals. Every I/O line has a level at every instant, and frames come from
// a simulated sensor: a trigger starts an exposure ("ExposureTime", or as
// long as the trigger holds in "TriggerWidth" exposure), a readout of
// "SensorReadoutTime" follows, and the frame is delivered at its end. A
// trigger that arrives while the sensor exposes or reads out is missed and
// counted. The cameras understand the standard names of three generations of
// I/O features:
//   "LineSelector" lines, each an input or output ("LineMode"), an output
//     driven by "LineSource" ("Off", "ExposureActive", "FrameTriggerWait",
//     "AcquisitionActive", "UserOutputN" with "UserOutputValue", "Direct"
//     with its stored "LineStatus"; others are low), "LineInverter" inverting
//     either direction, "LineRouting" "Trigger" for the trigger source
//     "InputLines";
//   "SyncOutSelector"/"LineOutSelector" outputs with "...Source" ("GPO": the
//     output's bit of the stored "...Levels"; "Exposing", "FrameTriggerReady",
//     "AcquisitionTriggerReady", "FrameTrigger", "FrameReadout",
//     "Acquiring", or an input's name) and "...Polarity" "Invert", beside
//     inputs "SyncIn1".. / "LineIn1".. whose levels show in "SyncInLevels" /
//     "LineInLevels"; the trigger source "LineK" is input K.
// Frame triggers are the "FrameStart", "ExposureStart" or "ExposureActive"
// entries of "TriggerSelector" with "TriggerMode" "On" (the first available
// one counts), with "TriggerSource" a line, "InputLines" or "Software", and
// "TriggerActivation" "RisingEdge", "FallingEdge", "AnyEdge", "LevelHigh" /
// "HighLevel" or "LevelLow" / "LowLevel". "TriggerWidth" exposure (or
// "ExposureAuto" "other") exposes while the trigger is active: high for
// rising and high-level activations, low for falling and low-level ones. A
// level activation in timed exposure exposes frame after frame while it
// holds. "TriggerDelay" (microseconds) delays the exposure. An
// "AcquisitionStart" trigger that is "On" makes a started acquisition wait
// for it before its first frame. Counters count "FrameTrigger",
// "FrameTriggerMissed", "ExposureStart", "ExposureEnd", "FrameEnd" and
// "AcquisitionTrigger" events ("CounterEventSource" of "CounterSelector").
//
// Time: the camera runs on the real clock until UseManualClock; from then on
// only AdvanceClock moves its time, so that tests are exact and never sleep.
// Features driven by signals (line status and level masks, counters,
// acquisition status) notify their observers at most once per 10 ms of
// camera time each, and once more after the last change, however fast the
// signals change.
class SimCamera : public Camera {
public:
    // The journal keeps this many entries unless SetJournalCapacity says
    // otherwise; older ones are dropped.
    static constexpr std::size_t kDefaultJournalCapacity = 100000;

    // Every write so far (accepted and refused), oldest first, at most the
    // journal's capacity of them: the newest.
    virtual std::vector<JournalEntry> Journal() const = 0;
    // Empties the journal and sets JournalDropped to 0.
    virtual void ClearJournal() = 0;
    // Entries dropped from the front since the journal was last cleared.
    virtual unsigned long long JournalDropped() const = 0;
    // At least 1; a smaller journal drops its oldest entries at once.
    virtual void SetJournalCapacity(std::size_t entries) = 0;
    // Whether each level change of a line is journaled too (feature: the
    // line's name, value "true"/"false", writer "line"). Off by default: a
    // pulse train would fill the journal.
    virtual void JournalLevelChanges(bool on) = 0;

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

    // The camera's I/O lines in connector order, inputs and outputs alike.
    virtual std::vector<std::string> Lines() const = 0;
    // The level of a line now (an input as applied and inverted, an output
    // as it drives its connector). PkoErrorNotFound for an unknown line,
    // PkoErrorDeviceNotOpen while the camera is closed.
    virtual int LineLevel(const std::string& line, bool& high) const = 0;

    // The calls below fail, changing nothing, with PkoErrorNotFound for a
    // line the camera does not have, PkoErrorInvalidAccess for a line that
    // is not an input (or output) now, PkoErrorBadParameter for a value out
    // of range, and PkoErrorDeviceNotOpen while the camera is closed.

    // Applies a level to an input line from outside, as a sensor would.
    // Stops a pulse train running on that line.
    virtual int DriveInput(const std::string& line, bool high) = 0;
    // Pulses an input: high for highMs, then low for the rest of periodMs,
    // starting now, count pulses (0: until StopPulses). 0 < highMs < periodMs.
    virtual int StartPulses(const std::string& line, double periodMs, double highMs, int count) = 0;
    // Stops the pulse train on that line (if any); the line keeps its level.
    virtual int StopPulses(const std::string& line) = 0;
    // A cable from an output of this camera to one of its inputs: the input
    // follows the output's level from now on. Wiring twice is harmless.
    virtual int Wire(const std::string& outputLine, const std::string& inputLine) = 0;
    // PkoErrorNotFound also when there is no such cable.
    virtual int Unwire(const std::string& outputLine, const std::string& inputLine) = 0;

    // From now on the camera's time moves only by AdvanceClock. Calling it
    // again changes nothing.
    virtual void UseManualClock() = 0;
    // Moves the camera's time on by ms (>= 0) and plays everything that
    // happens meanwhile: pulses, exposures, frames, notifications.
    // PkoErrorInvalidAccess on the real clock, PkoErrorBadParameter for a
    // negative or non-finite ms, PkoErrorDeviceNotOpen while closed.
    virtual int AdvanceClock(double ms) = 0;
    // The camera's time in nanoseconds (the timestamps of its frames). The
    // real clock of every simulated camera counts from the same instant, so
    // the times of cameras in one process compare.
    virtual long long ClockNs() const = 0;
};

typedef shared_ptr<SimCamera> SimCameraPtr;

// A cable from an output of camera a to an input of camera b (a master
// camera's strobe to a slave's trigger). The input follows the output from
// now on, at the time of a's clock: a slave on a manual clock is moved on to
// the time of each level change that reaches it. Same errors as
// SimCamera::Wire; PkoErrorBadParameter for a null camera or one not made
// by this SDK. Unwire is the opposite (PkoErrorNotFound when not wired).
int Wire(const SimCameraPtr& a, const std::string& outputLine, const SimCameraPtr& b, const std::string& inputLine);
int Unwire(const SimCameraPtr& a, const std::string& outputLine, const SimCameraPtr& b, const std::string& inputLine);

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
