#ifndef PKOAPI_SRC_SIMSTATE_H
#define PKOAPI_SRC_SIMSTATE_H

#include "EvalScope.h"
#include "FeatureDecl.h"

#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// The whole state of one simulated camera and the rules that act on it:
// values (one per selector entry for selected features), writability, entry
// availability, computed values, the journal, injected faults and the
// acquisition counters. Not thread-safe: the camera calls it under its lock.
// Feature operations return the SDK's codes and leave outputs untouched on
// failure; the features to notify after a change are collected for
// TakeNotifications.
class SimState {
public:
    // Checks the declarations and sets the initial values. False, with a
    // readable reason in error, when a declaration cannot be used.
    bool Init(std::vector<FeatureDecl> decls, std::string& error);

    int Count() const { return static_cast<int>(m_Slots.size()); }
    const FeatureDecl& Decl(int index) const { return m_Slots[index].decl; }
    // The first feature of that name in camera order; -1 when there is none.
    int IndexOf(const std::string& name) const;

    // Feature operations by index (0 <= index < Count()).
    int GetText(int index, Operation which, char* buffer, unsigned int& length) const;
    int GetDataType(int index, PkoFeatureDataType& dataType) const;
    int GetInteger(int index, long long& value) const;
    int GetFloat(int index, double& value) const;
    int GetBoolean(int index, bool& value) const;
    int GetString(int index, char* buffer, unsigned int& length) const;
    // form is the type the caller's overload serves (PkoFeatureDataString
    // for the text form, which also serves enumerations); text is the value
    // in the journal's format, isNull marks a null text pointer.
    int SetValue(int index, PkoFeatureDataType form, const std::string& text, bool isNull = false);
    int GetIntegerRange(int index, long long& minimum, long long& maximum) const;
    int GetFloatRange(int index, double& minimum, double& maximum) const;
    int GetIntegerIncrement(int index, long long& increment) const;
    int GetFloatIncrement(int index, double& increment) const;
    // storage holds the entry texts that the returned pointers point into.
    int GetValues(int index, const std::vector<std::string>& storage, const char** entries, unsigned int& count) const;
    int IsValueAvailable(int index, const char* entry, bool& available) const;
    int IsWritable(int index, bool& writable) const;
    int RunCommand(int index);
    // The injected fault of op on this feature, PkoErrorSuccess when none.
    int Fault(int index, Operation op) const;

    // Test hooks (see SimCamera).
    int ChangeFromCamera(const std::string& feature, const std::string& valueText, const std::string& selectorEntry);
    std::string ValueText(const std::string& feature, const std::string& selectorEntry) const;
    const std::vector<JournalEntry>& Journal() const { return m_Journal; }
    void ClearJournal() { m_Journal.clear(); }
    void InjectFault(const std::string& feature, Operation op, int errorCode) { m_Faults[feature][op] = errorCode; }
    void InjectNaN(const std::string& feature) { m_NaN.insert(feature); }
    void ClearFaults();
    unsigned long long SoftwareTriggers() const { return m_SoftwareTriggers; }

    // Acquisition, driven by the camera's frame thread.
    bool IsAcquiring() const { return m_Acquiring; }
    // Counts restarts, so that the frame thread notices a new acquisition.
    unsigned long long AcquisitionNumber() const { return m_AcquisitionNumber; }
    // Frames come at the frame rate (no frame trigger, or a free-running source).
    bool IsFreeRunning() const;
    double FramePeriodSeconds() const;
    // Consumes one pending software trigger; false when none is pending.
    bool TakeSoftwareTrigger();
    // Counts one frame; ends a single- or multi-frame acquisition after its last.
    void DeliverFrame();
    unsigned long long FramesDelivered() const { return m_FramesDelivered; }
    // The camera opens (frame count restarts) or closes (acquisition ends
    // without notifications: nobody is listening any more).
    void OnOpen();
    void OnClose();

    // Features changed since the last call, in order (may repeat).
    std::vector<int> TakeNotifications();
    // Whether the frame thread has something new to look at since the last call.
    bool TakeWake();

    // Rule evaluation, used by SimContext.
    std::string TextIn(int index, const EvalScope& scope) const;
    std::string TextAtEntry(int index, const std::string& selectorEntry, const EvalScope& scope) const;
    std::string SelectorEntryIn(int index, const EvalScope& scope) const;

private:
    struct Slot {
        FeatureDecl decl;
        int selector = -1;          // the feature selecting this one
        std::vector<int> selected;  // the features this one selects
        std::vector<int> notifies;
        std::vector<std::string> values;  // one per selector entry, else one
    };
    enum class Check { Write, Declaration, Camera };

    int EntryIndex(int index, const EvalScope& scope) const;
    std::string EffectiveText(int index, int entry, const EvalScope& scope) const;
    bool Holds(const Predicate& predicate) const;
    bool Writable(int index) const;
    bool EntryAvailable(int index, const std::string& entry) const;
    int Canonical(int index, const std::string& text, Check check, std::string& canonical) const;
    bool Fits(int index, PkoFeatureDataType form) const;
    std::string FrameStartText(const std::string& feature) const;
    bool IsSoftwareTriggered() const;
    void Record(int index, const std::string& value, const std::string& writer, int result);
    void Changed(int index, const std::vector<int>& extra = std::vector<int>());
    void AcquisitionChanged();
    // After a change, an enumeration whose entry became unavailable moves to
    // the first available one, as a camera does. True when it moved.
    bool MoveOffUnavailableEntry(int index);

    std::vector<Slot> m_Slots;
    std::unordered_map<std::string, int> m_FirstIndex;
    std::vector<int> m_AcquisitionDependants;

    std::vector<JournalEntry> m_Journal;
    std::map<std::string, std::map<Operation, int>> m_Faults;
    std::set<std::string> m_NaN;

    bool m_Acquiring = false;
    unsigned long long m_AcquisitionNumber = 0;
    unsigned long long m_FramesThisAcquisition = 0;
    unsigned long long m_FramesDelivered = 0;
    unsigned long long m_PendingTriggers = 0;
    unsigned long long m_SoftwareTriggers = 0;

    std::vector<int> m_Pending;
    bool m_Wake = false;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
