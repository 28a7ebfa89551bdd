#ifndef PKOAPI_SRC_SIMSTATE_H
#define PKOAPI_SRC_SIMSTATE_H

#include "EvalScope.h"
#include "FeatureDecl.h"
#include "SignalConfig.h"
#include "SignalState.h"

#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <cstddef>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// The whole state of one simulated camera and the rules that act on it:
// values (one per selector entry for selected features), writability, entry
// availability, computed values, the journal, injected faults and the
// acquisition counters, and the signals of its lines and sensor
// (SimStateSignals.cpp). Not thread-safe: the camera calls it under its lock.
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
    std::vector<JournalEntry> Journal() const { return std::vector<JournalEntry>(m_Journal.begin(), m_Journal.end()); }
    void ClearJournal();
    unsigned long long JournalDropped() const { return m_JournalDropped; }
    void SetJournalCapacity(std::size_t entries);
    void JournalLevelChanges(bool on) { m_Signals.journalLevels = on; }
    void InjectFault(const std::string& feature, Operation op, int errorCode) { m_Faults[feature][op] = errorCode; }
    void InjectNaN(const std::string& feature) { m_NaN.insert(feature); }
    void ClearFaults();
    unsigned long long SoftwareTriggers() const { return m_SoftwareTriggers; }

    bool IsAcquiring() const { return m_Acquiring; }
    unsigned long long FramesDelivered() const { return m_FramesDelivered; }
    // The newest frame's exposure start (camera time), exposure and trigger.
    long long LastFrameStart() const { return m_LastFrameStart; }
    double LastFrameExposureUs() const { return m_LastFrameExposureUs; }
    const std::string& LastFrameTrigger() const { return m_LastFrameTrigger; }
    // The camera opens (frame count restarts) or closes (acquisition ends
    // without notifications: nobody is listening any more).
    void OnOpen();
    void OnClose();

    // Features changed since the last call, in order (may repeat).
    std::vector<int> TakeNotifications();
    // Whether the signal thread has something new to look at since the last call.
    bool TakeWake();

    // Signals (SimStateSignals.cpp); times are the camera's clock in ns.
    // Line operations return the codes SimCamera documents.
    const std::vector<std::string>& LineNames() const { return m_LineNames; }
    int LineLevel(const std::string& line, bool& high) const;
    bool Level(const std::string& lineOrSignal) const;
    int DriveInput(const std::string& line, bool high);
    int StartPulses(const std::string& line, double periodMs, double highMs, int count);
    int StopPulses(const std::string& line);
    int Wire(const std::string& output, const std::string& input);
    int Unwire(const std::string& output, const std::string& input);
    // For cables to other cameras: checks that line is an output (and
    // marks it, so that its level changes show in TakeOutgoing) or an input.
    int MarkRemoteOutput(const std::string& line, bool wired);
    int CheckInput(const std::string& line) const;
    // Level changes of outputs wired to other cameras since the last call.
    std::vector<SignalState::Edge> TakeOutgoing();
    long long Now() const { return m_Signals.now; }
    // Plays everything that happens until time (no earlier than Now()).
    void AdvanceTo(long long time);
    // When something happens next by itself; SignalState::kNever if nothing will.
    long long NextEventTime();
    // Brings levels, triggers and the sensor up to date after a change of
    // features or inputs at Now(). Every operation that changes the state
    // ends with it (the camera calls it before taking notifications).
    void Settle();

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
    void Record(int index, const std::string& value, const std::string& writer, int result);
    void Append(JournalEntry entry);
    void Changed(int index, const std::vector<int>& extra = std::vector<int>());
    void AcquisitionChanged();
    // After a change, an enumeration whose entry became unavailable moves to
    // the first available one, as a camera does. True when it moved.
    bool MoveOffUnavailableEntry(int index);

    std::vector<Slot> m_Slots;
    std::unordered_map<std::string, int> m_FirstIndex;
    std::vector<int> m_AcquisitionDependants;

    std::deque<JournalEntry> m_Journal;
    std::map<std::string, std::map<Operation, int>> m_Faults;
    std::set<std::string> m_NaN;

    bool m_Acquiring = false;
    unsigned long long m_FramesThisAcquisition = 0;
    unsigned long long m_FramesDelivered = 0;
    unsigned long long m_SoftwareTriggers = 0;

    std::vector<int> m_Pending;
    bool m_Wake = false;

    // Signals (SimStateSignals.cpp).
    enum class LineFamily { None, Lines, Masks };
    // Which line toggles a signal-driven feature shows.
    enum class SignalKind { SelectedLine, AnyLine, AnyInput, AnyOutput, Value };
    bool Toggled(SignalKind kind, int feature) const;
    void InitSignals();
    int LineIndex(const std::string& name) const;
    int CheckLine(const std::string& line, bool wantOutput, int& index) const;
    std::string StoredAt(int feature, const std::string& selectorEntry) const;
    void StoreAt(int feature, const std::string& selectorEntry, const std::string& text);
    std::string SettingAt(const char* feature, const std::string& selectorEntry) const;
    void ReadConfig();
    void ReadTrigger(const std::string& selectorEntry, SignalConfig::Trigger& trigger) const;
    int TriggerLine(const std::string& source) const;
    void SetDrive(int line, bool high);
    bool UpdateLevels();
    bool SourceLevel(const SignalConfig::Line& line) const;
    bool TriggerLevel(const SignalConfig::Trigger& trigger) const;
    bool UpdateTriggers();
    bool UpdateSensor();
    void FrameTrigger(bool from, bool to);
    void AcquisitionTrigger(bool from, bool to);
    bool CanStartFrame() const;
    bool IsFreeRunningNow() const;
    void Fire(const std::string& trigger);
    void BeginExposure(const std::string& trigger, bool width);
    void EndExposure();
    void EndReadout();
    void AcquisitionStarted();
    void AcquisitionStopped();
    void Count(const char* event);
    void SignalsChanged();
    void FlushSignalNotifications(bool force);

    std::size_t m_JournalCapacity = 100000;
    unsigned long long m_JournalDropped = 0;

    LineFamily m_Family = LineFamily::None;
    std::vector<std::string> m_LineNames;
    std::string m_MaskPrefix;  // "SyncOut", "LineOut"
    int m_MaskInputs = 0;      // mask family: lines [0, m_MaskInputs) are its inputs
    std::vector<int> m_SignalFeatures;
    std::vector<SignalKind> m_SignalKinds;
    std::vector<std::string> m_SignalTexts;  // as last notified
    std::size_t m_PendingNow = 0;            // m_Pending from here on was added at the current time
    int m_CounterSelector = -1;
    int m_CounterValue = -1;
    std::vector<std::string> m_CounterSources;  // per counter entry
    SignalConfig m_Config;
    bool m_ConfigDirty = true;
    SignalState m_Signals;
    unsigned long long m_SoftwarePending = 0;
    long long m_LastFrameStart = 0;
    double m_LastFrameExposureUs = 0.0;
    std::string m_LastFrameTrigger;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
