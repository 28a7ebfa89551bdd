#ifndef PKOAPI_SIM_SIMTYPES_H
#define PKOAPI_SIM_SIMTYPES_H

// Types of the simulated camera backend: rule callbacks, journal records and
// the operations that faults can be injected into.

#include <functional>
#include <optional>
#include <string>

namespace ZMT {
namespace PkoAPI {
namespace Sim {

// Read-only view of a simulated camera's state, handed to rule callbacks.
// Values are texts as in the journal (see JournalEntry). A name the camera
// does not have reads as "".
class Context {
public:
    virtual ~Context() = default;
    // Value of feature under the current value of its selector (if it has one).
    virtual std::string Text(const std::string& feature) const = 0;
    // Value of a selected feature for one entry of its selector, whatever the
    // selector's current value is.
    virtual std::string TextAt(const std::string& feature, const std::string& selectorEntry) const = 0;
    // The feature's selector's current entry, "" when it has no selector.
    virtual std::string SelectorEntry(const std::string& feature) const = 0;
    virtual bool IsAcquiring() const = 0;
    // The level now of one of the camera's I/O lines ("Line0", "SyncIn1")
    // or of one of its sensor signals ("ExposureActive", "FrameTriggerWait",
    // "AcquisitionActive", "AcquisitionTriggerWait", "FrameReadout"); false
    // for a name the camera does not have.
    virtual bool Level(const std::string& lineOrSignal) const = 0;
};

// A rule on the camera's state: writability, entry availability.
typedef std::function<bool(const Context&)> Predicate;
// A derived value: returns the value text, or nothing to use the stored value.
// While a selected feature's value is computed for one selector entry, the
// Context reads that entry for every feature of the same selector; reading
// the computed feature itself gives its stored value.
typedef std::function<std::optional<std::string>(const Context&)> ValueRule;
// Rules run while the camera is locked: they must reach the camera through
// the Context only, never through Feature or Camera calls. A rule that throws
// counts as false (Predicate) or as nothing (ValueRule).

// One write that reached the simulated camera, in the order they arrived.
// value is the written value as text: integers in decimal, floats in the
// shortest text that reads back to the same double, booleans "true"/"false",
// entries and strings as given, commands "(execute)".
struct JournalEntry {
    std::string feature;
    std::string value;
    std::string writer;  // WriterScope's name, "client" by default, "camera" for camera-side changes,
                         // "line" for a line's level change (only when asked for, see SimCamera)
    int result;          // the code the write returned; refused writes are journaled too
};

// Operations of Feature that faults can be injected into.
enum class Operation {
    GetName,
    GetDisplayName,
    GetCategory,
    GetDataType,
    GetValue,  // every form of GetValue
    SetValue,  // every form of SetValue
    GetRange,
    GetIncrement,
    GetValues,
    IsValueAvailable,
    IsWritable,
    RunCommand,
    RegisterObserver,
    UnregisterObserver,
};

// Names the writer of every write made on this thread while it lives
// (scopes nest; the innermost wins). Lets tests tell the tab's writes from
// the viewer's or the camera's in the journal.
class WriterScope {
public:
    explicit WriterScope(const std::string& writer);
    ~WriterScope();
    WriterScope(const WriterScope&) = delete;
    WriterScope& operator=(const WriterScope&) = delete;

    // The current writer name of this thread.
    static std::string Current();

private:
    std::string m_Previous;
};

}  // namespace Sim
}  // namespace PkoAPI
}  // namespace ZMT

#endif
