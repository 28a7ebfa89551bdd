#include "SimState.h"

#include "TextProtocol.h"

#include "SimContext.h"
#include "ValueText.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace ZMT::PkoAPI::Sim {

namespace {

// Rules may read computed features that read others; deeper chains than this
// are taken as a cycle and end at the stored value.
constexpr std::size_t kMaxRuleDepth = 16;

int Find(const std::vector<std::string>& entries, const std::string& entry)
{
    auto it = std::find(entries.begin(), entries.end(), entry);
    return it == entries.end() ? -1 : static_cast<int>(it - entries.begin());
}

void AppendOnce(std::vector<int>& list, int index)
{
    if (std::find(list.begin(), list.end(), index) == list.end())
        list.push_back(index);
}

bool OnFloatGrid(double value, double minimum, double increment)
{
    const double steps = (value - minimum) / increment;
    const double nearest = std::round(steps);
    // Clients snap with floating-point arithmetic; a value a few ulps off the
    // grid is on it.
    return std::fabs(steps - nearest) <= 1e-9 * std::max(1.0, std::fabs(nearest));
}

}  // namespace

bool SimState::Init(std::vector<FeatureDecl> decls, std::string& error)
{
    for (const FeatureDecl& decl : decls) {
        if (!decl.error.empty()) {
            error = "\"" + decl.name + "\": " + decl.error;
            return false;
        }
    }

    // Camera order: categories in the order they first appear, features in
    // declaration order within each.
    std::vector<std::string> categories;
    for (const FeatureDecl& decl : decls) {
        if (Find(categories, decl.category) < 0)
            categories.push_back(decl.category);
    }
    std::vector<std::size_t> order;
    for (const std::string& category : categories) {
        for (std::size_t i = 0; i < decls.size(); ++i) {
            if (decls[i].category == category)
                order.push_back(i);
        }
    }
    m_Slots.clear();
    for (std::size_t i : order) {
        Slot slot;
        slot.decl = std::move(decls[i]);
        m_Slots.push_back(std::move(slot));
    }
    m_FirstIndex.clear();
    for (int i = 0; i < Count(); ++i)
        m_FirstIndex.emplace(m_Slots[i].decl.name, i);

    for (int i = 0; i < Count(); ++i) {
        Slot& slot = m_Slots[i];
        const FeatureDecl& decl = slot.decl;
        const std::string where = "\"" + decl.name + "\": ";
        if (decl.dataType == PkoFeatureDataInt && !decl.opaque &&
            (decl.intIncrement <= 0 || decl.intMinimum > decl.intMaximum)) {
            error = where + "bad range or increment";
            return false;
        }
        if (decl.dataType == PkoFeatureDataFloat && !decl.opaque &&
            (!(decl.floatMinimum <= decl.floatMaximum) || !(decl.floatIncrement >= 0.0) ||
             !std::isfinite(decl.floatMaximum - decl.floatMinimum))) {
            error = where + "bad range or increment";
            return false;
        }
        if (decl.dataType == PkoFeatureDataEnum && !decl.opaque) {
            if (decl.entries.empty()) {
                error = where + "an enumeration needs entries";
                return false;
            }
            for (std::size_t e = 0; e < decl.entries.size(); ++e) {
                if (Find(decl.entries, decl.entries[e]) != static_cast<int>(e)) {
                    error = where + "entry \"" + decl.entries[e] + "\" appears twice";
                    return false;
                }
            }
        }
        for (const auto& rule : decl.entryRules) {
            if (decl.dataType != PkoFeatureDataEnum || decl.opaque || Find(decl.entries, rule.first) < 0) {
                error = where + "availability rule for unknown entry \"" + rule.first + "\"";
                return false;
            }
        }
        for (const std::string& name : decl.selects) {
            const int target = IndexOf(name);
            if (decl.dataType != PkoFeatureDataEnum || decl.opaque) {
                error = where + "only an enumeration can be a selector";
                return false;
            }
            if (target < 0 || target == i) {
                error = where + "selects unknown feature \"" + name + "\"";
                return false;
            }
            if (m_Slots[target].selector >= 0) {
                error = where + "\"" + name + "\" already has a selector";
                return false;
            }
            m_Slots[target].selector = i;
            slot.selected.push_back(target);
        }
        for (const std::string& name : decl.notifies) {
            const int target = IndexOf(name);
            if (target < 0) {
                error = where + "notifies unknown feature \"" + name + "\"";
                return false;
            }
            AppendOnce(slot.notifies, target);
        }
    }

    for (int i = 0; i < Count(); ++i) {
        Slot& slot = m_Slots[i];
        const std::string where = "\"" + slot.decl.name + "\": ";
        const std::size_t count = slot.selector >= 0 ? m_Slots[slot.selector].decl.entries.size() : 1;
        std::string canonical = slot.decl.value;
        const bool hasValue = !slot.decl.opaque && slot.decl.dataType != PkoFeatureDataCommand;
        if (hasValue && Canonical(i, slot.decl.value, Check::Declaration, canonical) != PkoErrorSuccess) {
            error = where + "value \"" + slot.decl.value + "\" is not valid";
            return false;
        }
        slot.values.assign(count, canonical);
        for (const auto& valueAt : slot.decl.valuesAt) {
            const int entry = slot.selector >= 0 ? Find(m_Slots[slot.selector].decl.entries, valueAt.first) : -1;
            if (entry < 0) {
                error = where + "no selector entry \"" + valueAt.first + "\"";
                return false;
            }
            if (!hasValue || Canonical(i, valueAt.second, Check::Declaration, canonical) != PkoErrorSuccess) {
                error = where + "value \"" + valueAt.second + "\" is not valid";
                return false;
            }
            slot.values[entry] = canonical;
        }
    }

    m_AcquisitionDependants.clear();
    for (int i = 0; i < Count(); ++i) {
        if (m_Slots[i].decl.lockedWhileAcquiring)
            AppendOnce(m_AcquisitionDependants, i);
    }
    for (const char* command : {"AcquisitionStart", "AcquisitionStop"}) {
        const int index = IndexOf(command);
        if (index < 0)
            continue;
        for (int target : m_Slots[index].notifies)
            AppendOnce(m_AcquisitionDependants, target);
    }
    InitSignals();
    return true;
}

int SimState::IndexOf(const std::string& name) const
{
    auto it = m_FirstIndex.find(name);
    return it == m_FirstIndex.end() ? -1 : it->second;
}

int SimState::Fault(int index, Operation op) const
{
    auto feature = m_Faults.find(m_Slots[index].decl.name);
    if (feature == m_Faults.end())
        return PkoErrorSuccess;
    auto fault = feature->second.find(op);
    return fault == feature->second.end() ? PkoErrorSuccess : fault->second;
}

int SimState::GetText(int index, Operation which, char* buffer, unsigned int& length) const
{
    if (const int fault = Fault(index, which))
        return fault;
    const FeatureDecl& decl = m_Slots[index].decl;
    switch (which) {
        case Operation::GetName:
            return CopyText(decl.name, buffer, length);
        case Operation::GetDisplayName:
            return CopyText(decl.displayName.empty() ? decl.name : decl.displayName, buffer, length);
        case Operation::GetCategory:
            return CopyText(decl.category, buffer, length);
        default:
            return PkoErrorInternal;
    }
}

int SimState::GetDataType(int index, PkoFeatureDataType& dataType) const
{
    if (const int fault = Fault(index, Operation::GetDataType))
        return fault;
    dataType = static_cast<PkoFeatureDataType>(m_Slots[index].decl.dataType);
    return PkoErrorSuccess;
}

bool SimState::Fits(int index, PkoFeatureDataType form) const
{
    const FeatureDecl& decl = m_Slots[index].decl;
    if (decl.opaque)
        return false;
    if (form == PkoFeatureDataString)
        return decl.dataType == PkoFeatureDataString || decl.dataType == PkoFeatureDataEnum;
    return decl.dataType == form;
}

int SimState::GetInteger(int index, long long& value) const
{
    if (const int fault = Fault(index, Operation::GetValue))
        return fault;
    if (!Fits(index, PkoFeatureDataInt))
        return PkoErrorWrongType;
    long long parsed = 0;
    if (!ParseInteger(TextIn(index, EvalScope()), parsed))
        return PkoErrorInternal;
    value = parsed;
    return PkoErrorSuccess;
}

int SimState::GetFloat(int index, double& value) const
{
    if (const int fault = Fault(index, Operation::GetValue))
        return fault;
    if (m_NaN.count(m_Slots[index].decl.name) != 0) {
        value = std::numeric_limits<double>::quiet_NaN();
        return PkoErrorSuccess;
    }
    if (!Fits(index, PkoFeatureDataFloat))
        return PkoErrorWrongType;
    double parsed = 0.0;
    if (!ParseFloat(TextIn(index, EvalScope()), parsed))
        return PkoErrorInternal;
    value = parsed;
    return PkoErrorSuccess;
}

int SimState::GetBoolean(int index, bool& value) const
{
    if (const int fault = Fault(index, Operation::GetValue))
        return fault;
    if (!Fits(index, PkoFeatureDataBool))
        return PkoErrorWrongType;
    bool parsed = false;
    if (!ParseBoolean(TextIn(index, EvalScope()), parsed))
        return PkoErrorInternal;
    value = parsed;
    return PkoErrorSuccess;
}

int SimState::GetString(int index, char* buffer, unsigned int& length) const
{
    if (const int fault = Fault(index, Operation::GetValue))
        return fault;
    if (!Fits(index, PkoFeatureDataString))
        return PkoErrorWrongType;
    return CopyText(TextIn(index, EvalScope()), buffer, length);
}

int SimState::SetValue(int index, PkoFeatureDataType form, const std::string& text, bool isNull)
{
    int result = Fault(index, Operation::SetValue);
    if (result == PkoErrorSuccess && isNull)
        result = PkoErrorBadParameter;
    if (result == PkoErrorSuccess && !Fits(index, form))
        result = PkoErrorWrongType;
    if (result == PkoErrorSuccess && !Writable(index))
        result = PkoErrorInvalidAccess;
    std::string canonical;
    if (result == PkoErrorSuccess)
        result = Canonical(index, text, Check::Write, canonical);
    Record(index, text, WriterScope::Current(), result);
    if (result != PkoErrorSuccess)
        return result;
    m_Slots[index].values[EntryIndex(index, EvalScope())] = canonical;
    Changed(index);
    return PkoErrorSuccess;
}

int SimState::GetIntegerRange(int index, long long& minimum, long long& maximum) const
{
    if (const int fault = Fault(index, Operation::GetRange))
        return fault;
    if (!Fits(index, PkoFeatureDataInt))
        return PkoErrorWrongType;
    minimum = m_Slots[index].decl.intMinimum;
    maximum = m_Slots[index].decl.intMaximum;
    return PkoErrorSuccess;
}

int SimState::GetFloatRange(int index, double& minimum, double& maximum) const
{
    if (const int fault = Fault(index, Operation::GetRange))
        return fault;
    if (!Fits(index, PkoFeatureDataFloat))
        return PkoErrorWrongType;
    minimum = m_Slots[index].decl.floatMinimum;
    maximum = m_Slots[index].decl.floatMaximum;
    return PkoErrorSuccess;
}

int SimState::GetIntegerIncrement(int index, long long& increment) const
{
    if (const int fault = Fault(index, Operation::GetIncrement))
        return fault;
    if (!Fits(index, PkoFeatureDataInt))
        return PkoErrorWrongType;
    increment = m_Slots[index].decl.intIncrement;
    return PkoErrorSuccess;
}

int SimState::GetFloatIncrement(int index, double& increment) const
{
    if (const int fault = Fault(index, Operation::GetIncrement))
        return fault;
    if (!Fits(index, PkoFeatureDataFloat))
        return PkoErrorWrongType;
    increment = m_Slots[index].decl.floatIncrement;
    return PkoErrorSuccess;
}

int SimState::GetValues(int index, const std::vector<std::string>& storage, const char** entries,
                        unsigned int& count) const
{
    if (const int fault = Fault(index, Operation::GetValues))
        return fault;
    if (m_Slots[index].decl.dataType != PkoFeatureDataEnum || m_Slots[index].decl.opaque)
        return PkoErrorWrongType;
    return CopyEntries(
        storage, [](const std::string& entry) { return entry.c_str(); }, entries, count);
}

int SimState::IsValueAvailable(int index, const char* entry, bool& available) const
{
    if (const int fault = Fault(index, Operation::IsValueAvailable))
        return fault;
    if (entry == nullptr)
        return PkoErrorBadParameter;
    const FeatureDecl& decl = m_Slots[index].decl;
    if (decl.dataType != PkoFeatureDataEnum || decl.opaque)
        return PkoErrorWrongType;
    if (Find(decl.entries, entry) < 0)
        return PkoErrorNotFound;
    available = EntryAvailable(index, entry);
    return PkoErrorSuccess;
}

int SimState::IsWritable(int index, bool& writable) const
{
    if (const int fault = Fault(index, Operation::IsWritable))
        return fault;
    writable = Writable(index);
    return PkoErrorSuccess;
}

int SimState::RunCommand(int index)
{
    const FeatureDecl& decl = m_Slots[index].decl;
    int result = Fault(index, Operation::RunCommand);
    if (result == PkoErrorSuccess && (decl.dataType != PkoFeatureDataCommand || decl.opaque))
        result = PkoErrorWrongType;
    if (result == PkoErrorSuccess && !Writable(index))
        result = PkoErrorInvalidAccess;
    Record(index, "(execute)", WriterScope::Current(), result);
    if (result != PkoErrorSuccess)
        return result;

    std::vector<int> extra;
    if (decl.name == "AcquisitionStart" && !m_Acquiring) {
        m_Acquiring = true;
        m_FramesThisAcquisition = 0;
        Changed(index, m_AcquisitionDependants);
        AcquisitionStarted();
        return PkoErrorSuccess;
    } else if (decl.name == "AcquisitionStop" && m_Acquiring) {
        m_Acquiring = false;
        Changed(index, m_AcquisitionDependants);
        AcquisitionStopped();
        return PkoErrorSuccess;
    } else if (decl.name == "TriggerSoftware") {
        ++m_SoftwareTriggers;
        Settle();  // the trigger goes to what the settings say now
        if (m_Signals.acquisition == SignalState::Acquisition::Armed && m_Config.acquisition.software) {
            m_Signals.acquisition = SignalState::Acquisition::Active;
            m_Signals.nextFreeRun = m_Signals.now;
            Count("AcquisitionTrigger");
            SignalsChanged();
        } else if (m_Acquiring && m_Config.frame.on && m_Config.frame.software) {
            ++m_SoftwarePending;
        }
        m_Wake = true;
    } else if (decl.name == "CounterReset" && m_CounterSelector >= 0 && m_CounterValue >= 0) {
        m_Slots[m_CounterValue].values[EntryIndex(m_CounterValue, EvalScope())] = "0";
        extra.push_back(m_CounterValue);
    }
    Changed(index, extra);
    return PkoErrorSuccess;
}

int SimState::ChangeFromCamera(const std::string& feature, const std::string& valueText,
                               const std::string& selectorEntry)
{
    const int index = IndexOf(feature);
    if (index < 0)
        return PkoErrorNotFound;
    const Slot& slot = m_Slots[index];
    int entry = 0;
    if (selectorEntry.empty())
        entry = EntryIndex(index, EvalScope());
    else if (slot.selector < 0 || (entry = Find(m_Slots[slot.selector].decl.entries, selectorEntry)) < 0)
        return PkoErrorNotFound;

    int result = PkoErrorSuccess;
    if (slot.decl.opaque || slot.decl.dataType == PkoFeatureDataCommand)
        result = PkoErrorWrongType;
    std::string canonical;
    if (result == PkoErrorSuccess)
        result = Canonical(index, valueText, Check::Camera, canonical);
    Record(index, valueText, "camera", result);
    if (result != PkoErrorSuccess)
        return result;
    m_Slots[index].values[entry] = canonical;
    Changed(index);
    return PkoErrorSuccess;
}

std::string SimState::ValueText(const std::string& feature, const std::string& selectorEntry) const
{
    const int index = IndexOf(feature);
    if (index < 0)
        return std::string();
    return selectorEntry.empty() ? TextIn(index, EvalScope()) : TextAtEntry(index, selectorEntry, EvalScope());
}

void SimState::ClearFaults()
{
    m_Faults.clear();
    m_NaN.clear();
}

void SimState::OnOpen()
{
    m_FramesDelivered = 0;
}

void SimState::OnClose()
{
    m_Acquiring = false;
    AcquisitionStopped();
    // Nobody drives the inputs of a camera that is not open.
    for (SignalState::PulseTrain& train : m_Signals.pulses)
        train = SignalState::PulseTrain();
    m_Pending.clear();
    m_Wake = true;
}

void SimState::ClearJournal()
{
    m_Journal.clear();
    m_JournalDropped = 0;
}

void SimState::SetJournalCapacity(std::size_t entries)
{
    m_JournalCapacity = std::max<std::size_t>(entries, 1);
    while (m_Journal.size() > m_JournalCapacity) {
        m_Journal.pop_front();
        ++m_JournalDropped;
    }
}

std::vector<int> SimState::TakeNotifications()
{
    std::vector<int> pending;
    pending.swap(m_Pending);
    m_PendingNow = 0;
    // Observers of a signal-driven feature notified now read its value now:
    // the coalesced signal notifications must not tell them again.
    for (std::size_t i = 0; i < m_SignalFeatures.size(); ++i) {
        if (std::find(pending.begin(), pending.end(), m_SignalFeatures[i]) != pending.end())
            m_SignalTexts[i] = TextIn(m_SignalFeatures[i], EvalScope());
    }
    return pending;
}

bool SimState::TakeWake()
{
    return std::exchange(m_Wake, false);
}

std::string SimState::TextIn(int index, const EvalScope& scope) const
{
    // A selector pinned by the rule being evaluated reads as its pinned entry.
    for (const auto& pin : scope.pinned) {
        if (pin.first == index)
            return m_Slots[index].decl.entries[pin.second];
    }
    return EffectiveText(index, EntryIndex(index, scope), scope);
}

std::string SimState::TextAtEntry(int index, const std::string& selectorEntry, const EvalScope& scope) const
{
    const Slot& slot = m_Slots[index];
    if (slot.selector < 0)
        return TextIn(index, scope);
    const int entry = Find(m_Slots[slot.selector].decl.entries, selectorEntry);
    return entry < 0 ? std::string() : EffectiveText(index, entry, scope);
}

std::string SimState::SelectorEntryIn(int index, const EvalScope& scope) const
{
    const Slot& slot = m_Slots[index];
    if (slot.selector < 0)
        return std::string();
    return m_Slots[slot.selector].decl.entries[EntryIndex(index, scope)];
}

int SimState::EntryIndex(int index, const EvalScope& scope) const
{
    const int selector = m_Slots[index].selector;
    if (selector < 0)
        return 0;
    for (const auto& pin : scope.pinned) {
        if (pin.first == selector)
            return pin.second;
    }
    const int entry = Find(m_Slots[selector].decl.entries, TextIn(selector, scope));
    return entry < 0 ? 0 : entry;
}

std::string SimState::EffectiveText(int index, int entry, const EvalScope& scope) const
{
    const Slot& slot = m_Slots[index];
    const bool inProgress = std::find(scope.computing.begin(), scope.computing.end(), index) != scope.computing.end();
    if (slot.decl.computed && !inProgress && scope.computing.size() < kMaxRuleDepth) {
        EvalScope inner = scope;
        if (slot.selector >= 0) {
            auto pin = std::find_if(inner.pinned.begin(), inner.pinned.end(),
                                    [&](const std::pair<int, int>& p) { return p.first == slot.selector; });
            if (pin != inner.pinned.end())
                pin->second = entry;
            else
                inner.pinned.emplace_back(slot.selector, entry);
        }
        inner.computing.push_back(index);
        const SimContext context(*this, inner);
        try {
            if (std::optional<std::string> value = slot.decl.computed(context))
                return *value;
        } catch (...) {
            // A failing rule leaves the stored value in place.
        }
    }
    return slot.values[entry];
}

bool SimState::Holds(const Predicate& predicate) const
{
    const EvalScope scope;
    const SimContext context(*this, scope);
    try {
        return predicate(context);
    } catch (...) {
        return false;
    }
}

bool SimState::Writable(int index) const
{
    const FeatureDecl& decl = m_Slots[index].decl;
    if (decl.readOnly || (decl.lockedWhileAcquiring && m_Acquiring))
        return false;
    return !decl.writableWhen || Holds(decl.writableWhen);
}

bool SimState::EntryAvailable(int index, const std::string& entry) const
{
    for (const auto& rule : m_Slots[index].decl.entryRules) {
        if (rule.first == entry && !Holds(rule.second))
            return false;
    }
    return true;
}

int SimState::Canonical(int index, const std::string& text, Check check, std::string& canonical) const
{
    const FeatureDecl& decl = m_Slots[index].decl;
    const bool checkRange = check != Check::Camera;
    switch (decl.dataType) {
        case PkoFeatureDataInt: {
            long long value = 0;
            if (!ParseInteger(text, value))
                return PkoErrorInvalidValue;
            if (checkRange) {
                if (value < decl.intMinimum || value > decl.intMaximum)
                    return PkoErrorInvalidValue;
                const unsigned long long offset =
                    static_cast<unsigned long long>(value) - static_cast<unsigned long long>(decl.intMinimum);
                if (offset % static_cast<unsigned long long>(decl.intIncrement) != 0)
                    return PkoErrorInvalidValue;
            }
            canonical = FormatInteger(value);
            return PkoErrorSuccess;
        }
        case PkoFeatureDataFloat: {
            double value = 0.0;
            if (!ParseFloat(text, value))
                return PkoErrorInvalidValue;
            if (checkRange) {
                if (value < decl.floatMinimum || value > decl.floatMaximum)
                    return PkoErrorInvalidValue;
                if (decl.floatIncrement > 0.0 && !OnFloatGrid(value, decl.floatMinimum, decl.floatIncrement))
                    return PkoErrorInvalidValue;
            }
            canonical = FormatFloat(value);
            return PkoErrorSuccess;
        }
        case PkoFeatureDataBool: {
            bool value = false;
            if (!ParseBoolean(text, value))
                return PkoErrorInvalidValue;
            canonical = FormatBoolean(value);
            return PkoErrorSuccess;
        }
        case PkoFeatureDataEnum:
            if (Find(decl.entries, text) < 0 || (check == Check::Write && !EntryAvailable(index, text)))
                return PkoErrorInvalidValue;
            canonical = text;
            return PkoErrorSuccess;
        case PkoFeatureDataString:
        case PkoFeatureDataRaw:
            canonical = text;
            return PkoErrorSuccess;
        default:
            return PkoErrorWrongType;
    }
}

void SimState::Record(int index, const std::string& value, const std::string& writer, int result)
{
    Append(JournalEntry{m_Slots[index].decl.name, value, writer, result});
}

void SimState::Append(JournalEntry entry)
{
    if (m_Journal.size() >= m_JournalCapacity) {
        m_Journal.pop_front();
        ++m_JournalDropped;
    }
    m_Journal.push_back(std::move(entry));
}

void SimState::Changed(int index, const std::vector<int>& extra)
{
    const Slot& slot = m_Slots[index];
    std::vector<int> affected{index};
    for (int target : slot.selected)
        AppendOnce(affected, target);
    for (int target : slot.notifies)
        AppendOnce(affected, target);
    for (int target : extra)
        AppendOnce(affected, target);
    for (std::size_t i = 1; i < affected.size(); ++i) {
        if (MoveOffUnavailableEntry(affected[i])) {
            for (int target : m_Slots[affected[i]].selected)
                AppendOnce(affected, target);
        }
    }
    m_Pending.insert(m_Pending.end(), affected.begin(), affected.end());
    m_Wake = true;
    m_ConfigDirty = true;
}

void SimState::AcquisitionChanged()
{
    m_Pending.insert(m_Pending.end(), m_AcquisitionDependants.begin(), m_AcquisitionDependants.end());
    m_Wake = true;
    m_ConfigDirty = true;
}

bool SimState::MoveOffUnavailableEntry(int index)
{
    Slot& slot = m_Slots[index];
    if (slot.decl.dataType != PkoFeatureDataEnum || slot.decl.opaque || slot.decl.entryRules.empty())
        return false;
    std::string& value = slot.values[EntryIndex(index, EvalScope())];
    if (EntryAvailable(index, value))
        return false;
    for (const std::string& entry : slot.decl.entries) {
        if (EntryAvailable(index, entry)) {
            value = entry;
            return true;
        }
    }
    return false;
}

}  // namespace ZMT::PkoAPI::Sim
