// The signals of a simulated camera: line levels, triggers, the sensor's
// exposure and readout, counters and the coalesced notifications of the
// features that show them. Everything here runs on the camera's clock
// (SignalState::now); AdvanceTo plays the events between two instants in
// order, so the result does not depend on how often anybody looks.

#include "SimState.h"

#include "ValueText.h"

#include <algorithm>
#include <cmath>

namespace ZMT::PkoAPI::Sim {

namespace {

// Features driven by signals notify at most this often each.
constexpr long long kNotifyIntervalNs = 10000000;
// Levels settle in a few rounds (an input passed through to an output that a
// cable brings back); a loop that keeps toggling stops here.
constexpr int kSettleRounds = 8;
constexpr long long kDefaultReadoutNs = 5000000;

// The selector entries that start one frame each, in the order that counts.
const char* const kFrameTriggers[] = {"FrameStart", "ExposureStart", "ExposureActive"};

int Find(const std::vector<std::string>& entries, const std::string& entry)
{
    auto it = std::find(entries.begin(), entries.end(), entry);
    return it == entries.end() ? -1 : static_cast<int>(it - entries.begin());
}

long long ToNs(double ms)
{
    return static_cast<long long>(std::llround(ms * 1e6));
}

SignalConfig::Activation ActivationOf(const std::string& text)
{
    if (text == "FallingEdge")
        return SignalConfig::Activation::Falling;
    if (text == "AnyEdge")
        return SignalConfig::Activation::Any;
    if (text == "LevelHigh" || text == "HighLevel")
        return SignalConfig::Activation::High;
    if (text == "LevelLow" || text == "LowLevel")
        return SignalConfig::Activation::Low;
    return SignalConfig::Activation::Rising;
}

// Whether a trigger whose source sits at level is active: high for rising
// and high-level activations, low for falling and low-level ones.
bool Active(SignalConfig::Activation activation, bool level)
{
    using A = SignalConfig::Activation;
    return (activation == A::Falling || activation == A::Low) ? !level : level;
}

bool IsLevelActivation(SignalConfig::Activation activation)
{
    return activation == SignalConfig::Activation::High || activation == SignalConfig::Activation::Low;
}

// Whether a change of the source from one level to another fires an edge
// activation.
bool Fires(SignalConfig::Activation activation, bool from, bool to)
{
    using A = SignalConfig::Activation;
    if (from == to)
        return false;
    return activation == A::Any || (activation == A::Rising && to) || (activation == A::Falling && !to);
}

}  // namespace

void SimState::InitSignals()
{
    m_LineNames.clear();
    m_Family = LineFamily::None;
    m_MaskPrefix.clear();
    m_MaskInputs = 0;
    const int lineSelector = IndexOf("LineSelector");
    if (lineSelector >= 0 && IndexOf("LineMode") >= 0 && IndexOf("LineSource") >= 0) {
        m_Family = LineFamily::Lines;
        m_LineNames = m_Slots[lineSelector].decl.entries;
    } else {
        for (const char* prefix : {"SyncOut", "LineOut"}) {
            const int outputs = IndexOf(std::string(prefix) + "Selector");
            if (outputs < 0 || IndexOf(std::string(prefix) + "Source") < 0)
                continue;
            m_Family = LineFamily::Masks;
            m_MaskPrefix = prefix;
            // The inputs of these families are named like the outputs with
            // "In" for "Out", and counted by the bits of their levels mask.
            std::string inputPrefix = prefix;
            inputPrefix.replace(inputPrefix.find("Out"), 3, "In");
            const int mask = IndexOf(inputPrefix + "Levels");
            long long bits = mask >= 0 ? m_Slots[mask].decl.intMaximum : 0;
            for (int k = 1; bits > 0 && k <= 62; ++k, bits >>= 1)
                m_LineNames.push_back(inputPrefix + std::to_string(k));
            m_MaskInputs = static_cast<int>(m_LineNames.size());
            for (const std::string& output : m_Slots[outputs].decl.entries)
                m_LineNames.push_back(output);
            break;
        }
    }

    m_SignalFeatures.clear();
    m_SignalKinds.clear();
    const std::pair<const char*, SignalKind> signalFeatures[] = {
        {"LineStatus", SignalKind::SelectedLine}, {"LineStatusAll", SignalKind::AnyLine},
        {"SyncInLevels", SignalKind::AnyInput},   {"LineInLevels", SignalKind::AnyInput},
        {"SyncOutLevels", SignalKind::AnyOutput}, {"LineOutLevels", SignalKind::AnyOutput},
        {"AcquisitionStatus", SignalKind::Value}, {"CounterValue", SignalKind::Value},
    };
    for (const auto& feature : signalFeatures) {
        const int index = IndexOf(feature.first);
        if (index >= 0) {
            m_SignalFeatures.push_back(index);
            m_SignalKinds.push_back(feature.second);
        }
    }
    m_CounterSelector = IndexOf("CounterSelector");
    m_CounterValue = IndexOf("CounterValue");

    const std::size_t count = m_LineNames.size();
    m_Signals = SignalState();
    m_Signals.drive.assign(count, 0);
    m_Signals.level.assign(count, 0);
    m_Signals.pulses.assign(count, SignalState::PulseTrain());
    m_Signals.remote.assign(count, 0);
    m_Signals.toggled.assign(count, 0);
    m_ConfigDirty = true;
    Settle();
    m_SignalTexts.clear();
    for (int index : m_SignalFeatures)
        m_SignalTexts.push_back(TextIn(index, EvalScope()));
    m_Pending.clear();
}

int SimState::LineIndex(const std::string& name) const
{
    auto it = std::find(m_LineNames.begin(), m_LineNames.end(), name);
    return it == m_LineNames.end() ? -1 : static_cast<int>(it - m_LineNames.begin());
}

int SimState::CheckLine(const std::string& line, bool wantOutput, int& index) const
{
    index = LineIndex(line);
    if (index < 0)
        return PkoErrorNotFound;
    if (m_Config.lines[index].output != wantOutput)
        return PkoErrorInvalidAccess;
    return PkoErrorSuccess;
}

int SimState::LineLevel(const std::string& line, bool& high) const
{
    const int index = LineIndex(line);
    if (index < 0)
        return PkoErrorNotFound;
    high = m_Signals.level[index] != 0;
    return PkoErrorSuccess;
}

bool SimState::Level(const std::string& lineOrSignal) const
{
    using Source = SignalConfig::Source;
    const int line = LineIndex(lineOrSignal);
    if (line >= 0)
        return m_Signals.level[line] != 0;
    static const std::pair<const char*, Source> kSignals[] = {
        {"ExposureActive", Source::ExposureActive},       {"FrameReadout", Source::FrameReadout},
        {"AcquisitionActive", Source::AcquisitionActive}, {"AcquisitionTriggerWait", Source::AcquisitionTriggerWait},
        {"FrameTriggerWait", Source::FrameTriggerWait},   {"FrameTrigger", Source::FrameTrigger},
    };
    for (const auto& signal : kSignals) {
        if (lineOrSignal == signal.first) {
            SignalConfig::Line internal;
            internal.source = signal.second;
            return SourceLevel(internal);
        }
    }
    return false;
}

std::string SimState::StoredAt(int feature, const std::string& selectorEntry) const
{
    if (feature < 0)
        return std::string();
    const Slot& slot = m_Slots[feature];
    if (slot.selector < 0)
        return slot.values[0];
    const int entry = Find(m_Slots[slot.selector].decl.entries, selectorEntry);
    return entry < 0 ? std::string() : slot.values[entry];
}

void SimState::StoreAt(int feature, const std::string& selectorEntry, const std::string& text)
{
    if (feature < 0)
        return;
    Slot& slot = m_Slots[feature];
    const int entry = slot.selector < 0 ? 0 : Find(m_Slots[slot.selector].decl.entries, selectorEntry);
    if (entry >= 0)
        slot.values[entry] = text;
}

std::string SimState::SettingAt(const char* feature, const std::string& selectorEntry) const
{
    const int index = IndexOf(feature);
    if (index < 0)
        return std::string();
    return selectorEntry.empty() ? TextIn(index, EvalScope()) : TextAtEntry(index, selectorEntry, EvalScope());
}

int SimState::TriggerLine(const std::string& source) const
{
    const int line = LineIndex(source);
    if (line >= 0)
        return line;
    // The mask families name their inputs "Line1", "Line2" as trigger sources.
    if (m_Family == LineFamily::Masks && source.rfind("Line", 0) == 0) {
        long long k = 0;
        if (ParseInteger(source.substr(4), k) && k >= 1 && k <= m_MaskInputs)
            return static_cast<int>(k - 1);
    }
    return -1;
}

void SimState::ReadTrigger(const std::string& selectorEntry, SignalConfig::Trigger& trigger) const
{
    trigger = SignalConfig::Trigger();
    if (SettingAt("TriggerMode", selectorEntry) != "On")
        return;
    trigger.on = true;
    const std::string source = SettingAt("TriggerSource", selectorEntry);
    trigger.name = source;
    trigger.activation = ActivationOf(SettingAt("TriggerActivation", selectorEntry));
    double delayUs = 0.0;
    if (ParseFloat(SettingAt("TriggerDelay", selectorEntry), delayUs) && delayUs > 0.0)
        trigger.delayNs = static_cast<long long>(delayUs * 1000.0);
    if (source == "Software") {
        trigger.software = true;
    } else if (source == "Freerun" || source == "FixedRate" || source.empty()) {
        trigger.freeRun = true;
    } else if (source == "InputLines") {
        for (std::size_t i = 0; i < m_Config.lines.size(); ++i) {
            if (!m_Config.lines[i].output && m_Config.lines[i].routed)
                trigger.lines.push_back(static_cast<int>(i));
        }
    } else if (const int line = TriggerLine(source); line >= 0) {
        trigger.lines.push_back(line);
        trigger.name = m_LineNames[line];
    }
}

void SimState::ReadConfig()
{
    using Source = SignalConfig::Source;
    SignalConfig& c = m_Config;
    c.lines.assign(m_LineNames.size(), SignalConfig::Line());
    for (std::size_t i = 0; i < m_LineNames.size(); ++i) {
        const std::string& name = m_LineNames[i];
        SignalConfig::Line& line = c.lines[i];
        std::string source;
        if (m_Family == LineFamily::Lines) {
            line.output = SettingAt("LineMode", name) == "Output";
            line.inverted = SettingAt("LineInverter", name) == "true";
            line.routed = SettingAt("LineRouting", name) == "Trigger";
            source = SettingAt("LineSource", name);
            if (!line.output) {
                // An input's stored status is the level applied to it.
                m_Signals.drive[i] = StoredAt(IndexOf("LineStatus"), name) == "true";
                continue;
            }
            if (source.rfind("UserOutput", 0) == 0) {
                line.source = Source::Stored;
                line.stored = SettingAt("UserOutputValue", source) == "true";
            } else if (source == "Direct") {
                line.source = Source::Stored;
                line.stored = StoredAt(IndexOf("LineStatus"), name) == "true";
            }
        } else {
            const bool input = static_cast<int>(i) < m_MaskInputs;
            line.output = !input;
            const std::string inputPrefix = name.substr(0, name.size() - 1);
            if (input) {
                long long bits = 0;
                ParseInteger(StoredAt(IndexOf(inputPrefix + "Levels"), std::string()), bits);
                m_Signals.drive[i] = ((bits >> i) & 1) != 0;
                continue;
            }
            line.inverted = SettingAt((m_MaskPrefix + "Polarity").c_str(), name) == "Invert";
            source = SettingAt((m_MaskPrefix + "Source").c_str(), name);
            if (source == "GPO") {
                long long bits = 0;
                ParseInteger(StoredAt(IndexOf(m_MaskPrefix + "Levels"), std::string()), bits);
                line.source = Source::Stored;
                line.stored = ((bits >> (i - m_MaskInputs)) & 1) != 0;
            }
        }
        if (line.source == Source::Stored)
            continue;
        if (source == "ExposureActive" || source == "Exposing")
            line.source = Source::ExposureActive;
        else if (source == "FrameTriggerWait" || source == "FrameTriggerReady")
            line.source = Source::FrameTriggerWait;
        else if (source == "AcquisitionActive" || source == "Acquiring")
            line.source = Source::AcquisitionActive;
        else if (source == "AcquisitionTriggerWait" || source == "AcquisitionTriggerReady")
            line.source = Source::AcquisitionTriggerWait;
        else if (source == "FrameReadout")
            line.source = Source::FrameReadout;
        else if (source == "FrameTrigger")
            line.source = Source::FrameTrigger;
        else if (const int followed = LineIndex(source); followed >= 0 && followed != static_cast<int>(i)) {
            line.source = Source::Line;
            line.sourceLine = followed;
        }
    }

    c.frame = SignalConfig::Trigger();
    const int selector = IndexOf("TriggerSelector");
    if (selector < 0) {
        ReadTrigger(std::string(), c.frame);
    } else {
        for (const char* entry : kFrameTriggers) {
            if (Find(m_Slots[selector].decl.entries, entry) < 0 || !EntryAvailable(selector, entry))
                continue;
            ReadTrigger(entry, c.frame);
            if (c.frame.on) {
                c.frame.width = std::string(entry) == "ExposureActive";
                break;
            }
        }
    }
    c.acquisition = SignalConfig::Trigger();
    if (selector >= 0 && Find(m_Slots[selector].decl.entries, "AcquisitionStart") >= 0)
        ReadTrigger("AcquisitionStart", c.acquisition);
    if (SettingAt("ExposureMode", std::string()) == "TriggerWidth" ||
        SettingAt("ExposureAuto", std::string()) == "other")
        c.frame.width = true;

    double exposureUs = 0.0;
    c.exposureNs = ParseFloat(SettingAt("ExposureTime", std::string()), exposureUs) && exposureUs > 0.0
                       ? static_cast<long long>(exposureUs * 1000.0)
                       : 10000000;
    double readoutUs = 0.0;
    c.readoutNs = ParseFloat(SettingAt("SensorReadoutTime", std::string()), readoutUs) && readoutUs > 0.0
                      ? static_cast<long long>(readoutUs * 1000.0)
                      : kDefaultReadoutNs;
    double rate = 30.0;
    double configured = 0.0;
    if (ParseFloat(SettingAt("AcquisitionFrameRate", std::string()), configured) && configured > 0.0)
        rate = configured;
    c.periodNs = static_cast<long long>(1e9 / std::clamp(rate, 0.01, 10000.0));
    const std::string mode = SettingAt("AcquisitionMode", std::string());
    c.frameLimit = 0;
    if (mode == "SingleFrame") {
        c.frameLimit = 1;
    } else if (mode == "MultiFrame") {
        long long frames = 1;
        ParseInteger(SettingAt("AcquisitionFrameCount", std::string()), frames);
        c.frameLimit = frames < 1 ? 1 : static_cast<unsigned long long>(frames);
    }

    m_CounterSources.clear();
    if (m_CounterSelector >= 0) {
        for (const std::string& entry : m_Slots[m_CounterSelector].decl.entries)
            m_CounterSources.push_back(SettingAt("CounterEventSource", entry));
    }
}

void SimState::SetDrive(int line, bool high)
{
    if ((m_Signals.drive[line] != 0) == high)
        return;
    m_Signals.drive[line] = high;
    // The stored status is the applied level, so that what the camera shows
    // and ChangeFromCamera agree.
    if (m_Family == LineFamily::Lines) {
        StoreAt(IndexOf("LineStatus"), m_LineNames[line], FormatBoolean(high));
    } else {
        const std::string& name = m_LineNames[line];
        const int mask = IndexOf(name.substr(0, name.size() - 1) + "Levels");
        long long bits = 0;
        ParseInteger(StoredAt(mask, std::string()), bits);
        bits = high ? (bits | (1LL << line)) : (bits & ~(1LL << line));
        StoreAt(mask, std::string(), FormatInteger(bits));
    }
}

bool SimState::SourceLevel(const SignalConfig::Line& line) const
{
    using Source = SignalConfig::Source;
    using Phase = SignalState::Phase;
    const bool active = m_Acquiring && m_Signals.acquisition == SignalState::Acquisition::Active;
    switch (line.source) {
        case Source::Stored:
            return line.stored;
        case Source::Line:
            return m_Signals.level[line.sourceLine] != 0;
        case Source::ExposureActive:
            return m_Signals.phase == Phase::Exposing;
        case Source::FrameTriggerWait:
            return active && m_Signals.phase == Phase::Idle && !IsFreeRunningNow() && CanStartFrame();
        case Source::AcquisitionActive:
            return m_Acquiring;
        case Source::AcquisitionTriggerWait:
            return m_Acquiring && m_Signals.acquisition == SignalState::Acquisition::Armed;
        case Source::FrameReadout:
            return m_Signals.phase == Phase::Readout;
        case Source::FrameTrigger:
            return m_Signals.frameTrigger;
        case Source::Low:
            break;
    }
    return false;
}

bool SimState::UpdateLevels()
{
    bool changed = false;
    for (const auto& wire : m_Signals.wires) {
        if (m_Config.lines[wire.first].output && !m_Config.lines[wire.second].output)
            SetDrive(wire.second, m_Signals.level[wire.first] != 0);
    }
    for (std::size_t i = 0; i < m_Config.lines.size(); ++i) {
        const SignalConfig::Line& line = m_Config.lines[i];
        const bool level = (line.output ? SourceLevel(line) : m_Signals.drive[i] != 0) != line.inverted;
        if ((m_Signals.level[i] != 0) == level)
            continue;
        m_Signals.level[i] = level;
        m_Signals.toggled[i] = 1;
        changed = true;
        if (m_Signals.journalLevels)
            Append(JournalEntry{m_LineNames[i], FormatBoolean(level), "line", PkoErrorSuccess});
        if (m_Signals.remote[i] && line.output)
            m_Signals.outgoing.push_back(SignalState::Edge{static_cast<int>(i), level, m_Signals.now});
    }
    return changed;
}

bool SimState::TriggerLevel(const SignalConfig::Trigger& trigger) const
{
    for (int line : trigger.lines) {
        if (m_Signals.level[line])
            return true;
    }
    return false;
}

bool SimState::UpdateTriggers()
{
    bool moved = false;
    const bool frame = TriggerLevel(m_Config.frame);
    if (frame != m_Signals.frameTrigger) {
        const bool from = m_Signals.frameTrigger;
        m_Signals.frameTrigger = frame;
        FrameTrigger(from, frame);
        moved = true;
    }
    const bool acquisition = TriggerLevel(m_Config.acquisition);
    if (acquisition != m_Signals.acquisitionTrigger) {
        const bool from = m_Signals.acquisitionTrigger;
        m_Signals.acquisitionTrigger = acquisition;
        AcquisitionTrigger(from, acquisition);
        moved = true;
    }
    return moved;
}

bool SimState::CanStartFrame() const
{
    return m_Config.frameLimit == 0 || m_Signals.startedThisAcquisition < m_Config.frameLimit;
}

bool SimState::IsFreeRunningNow() const
{
    return !m_Config.frame.on || m_Config.frame.freeRun;
}

void SimState::FrameTrigger(bool from, bool to)
{
    const SignalConfig::Trigger& trigger = m_Config.frame;
    if (!trigger.on || trigger.software || trigger.freeRun || !m_Acquiring ||
        m_Signals.acquisition != SignalState::Acquisition::Active)
        return;
    if (trigger.width) {
        // AnyEdge alternates: one edge opens the exposure, the next closes it.
        const bool active = trigger.activation == SignalConfig::Activation::Any ? !m_Signals.frameTriggerHeld
                                                                                : Active(trigger.activation, to);
        if (active == m_Signals.frameTriggerHeld)
            return;
        m_Signals.frameTriggerHeld = active;
        if (active) {
            Count("FrameTrigger");
            if (m_Signals.phase == SignalState::Phase::Idle && CanStartFrame())
                BeginExposure(trigger.name, true);
            else
                Count("FrameTriggerMissed");
        } else if (m_Signals.phase == SignalState::Phase::Exposing && m_Signals.frame.width) {
            EndExposure();
        }
        return;
    }
    if (IsLevelActivation(trigger.activation)) {
        const bool active = Active(trigger.activation, to);
        m_Signals.frameTriggerHeld = active;
        // While it holds, UpdateSensor starts frame after frame.
        if (active && m_Signals.phase != SignalState::Phase::Idle) {
            Count("FrameTrigger");
            Count("FrameTriggerMissed");
        }
        return;
    }
    if (Fires(trigger.activation, from, to))
        Fire(trigger.name);
}

void SimState::Fire(const std::string& trigger)
{
    Count("FrameTrigger");
    if (m_Signals.phase != SignalState::Phase::Idle || !CanStartFrame()) {
        Count("FrameTriggerMissed");
        return;
    }
    if (m_Config.frame.delayNs > 0) {
        m_Signals.phase = SignalState::Phase::Delay;
        m_Signals.phaseEnd = m_Signals.now + m_Config.frame.delayNs;
        m_Signals.frame.trigger = trigger;
        SignalsChanged();
        return;
    }
    BeginExposure(trigger, false);
}

void SimState::AcquisitionTrigger(bool from, bool to)
{
    const SignalConfig::Trigger& trigger = m_Config.acquisition;
    if (!trigger.on || m_Signals.acquisition != SignalState::Acquisition::Armed)
        return;
    const bool fires =
        IsLevelActivation(trigger.activation) ? Active(trigger.activation, to) : Fires(trigger.activation, from, to);
    if (!fires)
        return;
    m_Signals.acquisition = SignalState::Acquisition::Active;
    m_Signals.nextFreeRun = m_Signals.now;
    Count("AcquisitionTrigger");
    SignalsChanged();
}

bool SimState::UpdateSensor()
{
    if (!m_Acquiring || m_Signals.acquisition != SignalState::Acquisition::Active ||
        m_Signals.phase != SignalState::Phase::Idle || !CanStartFrame())
        return false;
    const SignalConfig::Trigger& trigger = m_Config.frame;
    if (IsFreeRunningNow()) {
        if (m_Signals.now < m_Signals.nextFreeRun)
            return false;
        m_Signals.nextFreeRun = m_Signals.now + m_Config.periodNs;
        BeginExposure(std::string(), false);
        return true;
    }
    if (trigger.software && m_SoftwarePending > 0) {
        --m_SoftwarePending;
        Fire("Software");
        return true;
    }
    if (!trigger.software && !trigger.width && IsLevelActivation(trigger.activation) && m_Signals.frameTriggerHeld) {
        Fire(trigger.name);
        return true;
    }
    return false;
}

void SimState::BeginExposure(const std::string& trigger, bool width)
{
    m_Signals.phase = SignalState::Phase::Exposing;
    m_Signals.frame.start = m_Signals.now;
    m_Signals.frame.trigger = trigger;
    m_Signals.frame.width = width;
    m_Signals.phaseEnd = width ? SignalState::kNever : m_Signals.now + m_Config.exposureNs;
    ++m_Signals.startedThisAcquisition;
    Count("ExposureStart");
    SignalsChanged();
}

void SimState::EndExposure()
{
    m_LastFrameExposureUs = static_cast<double>(m_Signals.now - m_Signals.frame.start) / 1000.0;
    m_Signals.phase = SignalState::Phase::Readout;
    m_Signals.phaseEnd = m_Signals.now + m_Config.readoutNs;
    Count("ExposureEnd");
    SignalsChanged();
}

void SimState::EndReadout()
{
    m_Signals.phase = SignalState::Phase::Idle;
    m_Signals.phaseEnd = SignalState::kNever;
    m_LastFrameStart = m_Signals.frame.start;
    m_LastFrameTrigger = m_Signals.frame.trigger;
    ++m_FramesDelivered;
    ++m_FramesThisAcquisition;
    Count("FrameEnd");
    SignalsChanged();
    if (m_Config.frameLimit != 0 && m_FramesThisAcquisition >= m_Config.frameLimit) {
        m_Acquiring = false;
        AcquisitionStopped();
        AcquisitionChanged();
    }
}

void SimState::AcquisitionStarted()
{
    Settle();
    m_Signals.acquisition =
        m_Config.acquisition.on ? SignalState::Acquisition::Armed : SignalState::Acquisition::Active;
    m_Signals.startedThisAcquisition = 0;
    m_Signals.nextFreeRun = m_Signals.now;
    m_Signals.frameTriggerHeld = false;
    m_SoftwarePending = 0;
    SignalsChanged();
}

void SimState::AcquisitionStopped()
{
    // A frame in the making is dropped.
    m_Signals.acquisition = SignalState::Acquisition::Off;
    m_Signals.phase = SignalState::Phase::Idle;
    m_Signals.phaseEnd = SignalState::kNever;
    m_Signals.frameTriggerHeld = false;
    m_SoftwarePending = 0;
    SignalsChanged();
}

void SimState::Count(const char* event)
{
    if (m_CounterValue < 0)
        return;
    Slot& counter = m_Slots[m_CounterValue];
    for (std::size_t i = 0; i < m_CounterSources.size() && i < counter.values.size(); ++i) {
        if (m_CounterSources[i] != event)
            continue;
        long long value = 0;
        ParseInteger(counter.values[i], value);
        counter.values[i] = FormatInteger(value + 1);
        SignalsChanged();
    }
}

void SimState::SignalsChanged()
{
    m_Signals.notifyDue = true;
}

void SimState::FlushSignalNotifications(bool force)
{
    if (!m_Signals.notifyDue)
        return;
    if (!force && m_Signals.now - m_Signals.lastNotify < kNotifyIntervalNs)
        return;
    m_Signals.notifyDue = false;
    m_Signals.lastNotify = m_Signals.now;
    // What observers would see differently, and lines that toggled and came
    // back within the interval (a lamp should flicker); a counter under
    // another selector entry is not news to them.
    for (std::size_t i = 0; i < m_SignalFeatures.size(); ++i) {
        std::string text = TextIn(m_SignalFeatures[i], EvalScope());
        if (text == m_SignalTexts[i] && !Toggled(m_SignalKinds[i], m_SignalFeatures[i]))
            continue;
        m_SignalTexts[i].swap(text);
        // Once per instant: a write at this time may have announced it already.
        const auto now = m_Pending.begin() + std::min(m_PendingNow, m_Pending.size());
        if (std::find(now, m_Pending.end(), m_SignalFeatures[i]) == m_Pending.end())
            m_Pending.push_back(m_SignalFeatures[i]);
    }
    std::fill(m_Signals.toggled.begin(), m_Signals.toggled.end(), 0);
}

bool SimState::Toggled(SignalKind kind, int feature) const
{
    const auto& toggled = m_Signals.toggled;
    const int inputs = m_Family == LineFamily::Masks ? m_MaskInputs : 0;
    switch (kind) {
        case SignalKind::SelectedLine: {
            const int line = LineIndex(SelectorEntryIn(feature, EvalScope()));
            return line >= 0 && toggled[line];
        }
        case SignalKind::AnyLine:
            return std::any_of(toggled.begin(), toggled.end(), [](char t) { return t != 0; });
        case SignalKind::AnyInput:
            return std::any_of(toggled.begin(), toggled.begin() + inputs, [](char t) { return t != 0; });
        case SignalKind::AnyOutput:
            return std::any_of(toggled.begin() + inputs, toggled.end(), [](char t) { return t != 0; });
        case SignalKind::Value:
            break;
    }
    return false;
}

void SimState::Settle()
{
    if (m_ConfigDirty) {
        m_ConfigDirty = false;
        ReadConfig();
    }
    for (int round = 0; round < kSettleRounds; ++round) {
        bool moved = UpdateLevels();
        if (moved)
            SignalsChanged();
        moved = UpdateTriggers() || moved;
        moved = UpdateSensor() || moved;
        if (!moved)
            break;
    }
    FlushSignalNotifications(false);
    if (!m_Signals.outgoing.empty() || m_Signals.notifyDue)
        m_Wake = true;
}

long long SimState::NextEventTime()
{
    long long next = SignalState::kNever;
    for (const SignalState::PulseTrain& train : m_Signals.pulses) {
        if (train.running)
            next = std::min(next, train.nextEdge);
    }
    if (m_Signals.phase != SignalState::Phase::Idle)
        next = std::min(next, m_Signals.phaseEnd);
    else if (m_Acquiring && m_Signals.acquisition == SignalState::Acquisition::Active && IsFreeRunningNow() &&
             CanStartFrame())
        next = std::min(next, std::max(m_Signals.nextFreeRun, m_Signals.now));
    if (m_Signals.notifyDue)
        next = std::min(next, m_Signals.lastNotify + kNotifyIntervalNs);
    return next;
}

void SimState::AdvanceTo(long long time)
{
    Settle();
    for (;;) {
        const long long next = NextEventTime();
        if (next > time)
            break;
        if (next > m_Signals.now)
            m_PendingNow = m_Pending.size();
        m_Signals.now = std::max(m_Signals.now, next);
        const long long now = m_Signals.now;
        for (std::size_t i = 0; i < m_Signals.pulses.size(); ++i) {
            SignalState::PulseTrain& train = m_Signals.pulses[i];
            if (!train.running || train.nextEdge > now)
                continue;
            const bool rising = !m_Signals.drive[i];
            SetDrive(static_cast<int>(i), rising);
            if (rising) {
                train.nextEdge = now + train.highNs;
            } else if (train.endless || --train.left > 0) {
                train.nextEdge = now + train.periodNs - train.highNs;
            } else {
                train.running = false;
                train.nextEdge = SignalState::kNever;
            }
        }
        if (m_Signals.phaseEnd <= now) {
            switch (m_Signals.phase) {
                case SignalState::Phase::Delay:
                    BeginExposure(m_Signals.frame.trigger, false);
                    break;
                case SignalState::Phase::Exposing:
                    EndExposure();
                    break;
                case SignalState::Phase::Readout:
                    EndReadout();
                    break;
                case SignalState::Phase::Idle:
                    break;
            }
        }
        Settle();
        FlushSignalNotifications(false);
    }
    if (time > m_Signals.now)
        m_PendingNow = m_Pending.size();
    m_Signals.now = std::max(m_Signals.now, time);
    Settle();
}

int SimState::DriveInput(const std::string& line, bool high)
{
    Settle();
    int index = -1;
    if (const int result = CheckLine(line, false, index))
        return result;
    m_Signals.pulses[index] = SignalState::PulseTrain();
    SetDrive(index, high);
    Settle();
    return PkoErrorSuccess;
}

int SimState::StartPulses(const std::string& line, double periodMs, double highMs, int count)
{
    Settle();
    int index = -1;
    if (const int result = CheckLine(line, false, index))
        return result;
    const long long periodNs = std::isfinite(periodMs) ? ToNs(periodMs) : 0;
    const long long highNs = std::isfinite(highMs) ? ToNs(highMs) : 0;
    if (count < 0 || highNs <= 0 || periodNs <= highNs)
        return PkoErrorBadParameter;
    SignalState::PulseTrain& train = m_Signals.pulses[index];
    train.running = true;
    train.periodNs = periodNs;
    train.highNs = highNs;
    train.endless = count == 0;
    train.left = count;
    // The first pulse starts now; a line already high first goes low.
    if (m_Signals.drive[index]) {
        SetDrive(index, false);
        Settle();
    }
    SetDrive(index, true);
    train.nextEdge = m_Signals.now + highNs;
    Settle();
    m_Wake = true;
    return PkoErrorSuccess;
}

int SimState::StopPulses(const std::string& line)
{
    Settle();
    int index = -1;
    if (const int result = CheckLine(line, false, index))
        return result;
    m_Signals.pulses[index] = SignalState::PulseTrain();
    return PkoErrorSuccess;
}

int SimState::Wire(const std::string& output, const std::string& input)
{
    Settle();
    int from = -1;
    int to = -1;
    if (const int result = CheckLine(output, true, from))
        return result;
    if (const int result = CheckLine(input, false, to))
        return result;
    const std::pair<int, int> wire(from, to);
    if (std::find(m_Signals.wires.begin(), m_Signals.wires.end(), wire) == m_Signals.wires.end())
        m_Signals.wires.push_back(wire);
    Settle();
    return PkoErrorSuccess;
}

int SimState::Unwire(const std::string& output, const std::string& input)
{
    const int from = LineIndex(output);
    const int to = LineIndex(input);
    auto it = std::find(m_Signals.wires.begin(), m_Signals.wires.end(), std::make_pair(from, to));
    if (from < 0 || to < 0 || it == m_Signals.wires.end())
        return PkoErrorNotFound;
    m_Signals.wires.erase(it);
    return PkoErrorSuccess;
}

int SimState::MarkRemoteOutput(const std::string& line, bool wired)
{
    Settle();
    int index = -1;
    if (wired) {
        if (const int result = CheckLine(line, true, index))
            return result;
    } else if ((index = LineIndex(line)) < 0) {
        return PkoErrorNotFound;
    }
    m_Signals.remote[index] = wired;
    return PkoErrorSuccess;
}

int SimState::CheckInput(const std::string& line) const
{
    int index = -1;
    return CheckLine(line, false, index);
}

std::vector<SignalState::Edge> SimState::TakeOutgoing()
{
    std::vector<SignalState::Edge> edges;
    edges.swap(m_Signals.outgoing);
    return edges;
}

}  // namespace ZMT::PkoAPI::Sim
