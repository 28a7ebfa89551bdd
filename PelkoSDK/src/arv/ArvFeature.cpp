#include "ArvFeature.h"

#include "TextProtocol.h"

#include "ArvCameraImpl.h"
#include "ArvErrors.h"
#include "ArvScopedError.h"

#include <cfloat>
#include <cmath>
#include <new>
#include <string>
#include <tuple>
#include <utility>

namespace ZMT::PkoAPI::Arv {

namespace {

// The code for the error of one Aravis call. A transfer that failed after
// Aravis's retries means the camera stopped answering.
int CodeOf(const ArvScopedError& error)
{
    if (ArvErrors::MeansConnectionLost(error.Get()))
        return PkoErrorConnectionLost;
    return ArvErrors::ToCode(error.Get());
}

std::vector<const char*> PointersTo(const std::vector<std::string>& entries)
{
    std::vector<const char*> pointers;
    pointers.reserve(entries.size());
    for (const std::string& entry : entries)
        pointers.push_back(entry.c_str());
    return pointers;
}

// Aravis reports the smallest positive double for a float without increment.
bool HasFloatIncrement(double increment)
{
    return increment > DBL_MIN && std::isfinite(increment);
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

ArvFeature::ArvFeature(std::shared_ptr<ArvAnchor> anchor, unsigned long long session, int index, ArvNodeInfo info)
    : m_Anchor(std::move(anchor)),
      m_Session(session),
      m_Index(index),
      m_Info(std::move(info)),
      m_EntryPointers(PointersTo(m_Info.entries))
{}

template <class Out, class Op>
int ArvFeature::Call(Out& out, Op op)
{
    return m_Anchor->With([&](ArvCameraImpl& camera) { return camera.Access(m_Session, out, std::move(op)); });
}

template <class Op>
int ArvFeature::Call(Op op)
{
    struct Nothing {
    } nothing;
    return Call(nothing, [op](ArvCameraImpl& camera, Nothing&) { return op(camera); });
}

template <class Op>
int ArvFeature::Describe(Op&& op)
{
    return m_Anchor->With([&](ArvCameraImpl& camera) {
        const int reachable = camera.CheckReachable(m_Session);
        return reachable != PkoErrorSuccess ? reachable : op();
    });
}

template <class Out, class Read>
int ArvFeature::ReadOne(Out& result, PkoFeatureDataType type, Read read)
{
    return Call(result, [this, type, read](ArvCameraImpl&, Out& out) -> int {
        if (m_Info.type != type)
            return PkoErrorWrongType;
        ArvScopedError error;
        const Out value = read(error.Out());
        if (error)
            return CodeOf(error);
        out = value;
        return PkoErrorSuccess;
    });
}

template <class Out, class ReadMin, class ReadMax>
int ArvFeature::ReadRange(Out& minimum, Out& maximum, PkoFeatureDataType type, ReadMin readMin, ReadMax readMax)
{
    std::pair<Out, Out> range(minimum, maximum);
    const int result = Call(range, [this, type, readMin, readMax](ArvCameraImpl&, std::pair<Out, Out>& out) -> int {
        if (m_Info.type != type)
            return PkoErrorWrongType;
        ArvScopedError minError;
        const Out low = readMin(minError.Out());
        if (minError)
            return CodeOf(minError);
        ArvScopedError maxError;
        const Out high = readMax(maxError.Out());
        if (maxError)
            return CodeOf(maxError);
        out = {low, high};
        return PkoErrorSuccess;
    });
    if (result == PkoErrorSuccess)
        std::tie(minimum, maximum) = range;
    return result;
}

int ArvFeature::GetName(char* name, unsigned int& length)
{
    return Describe([&]() -> int { return CopyText(m_Info.name, name, length); });
}

int ArvFeature::GetDisplayName(char* displayName, unsigned int& length)
{
    return Describe([&]() -> int { return CopyText(m_Info.displayName, displayName, length); });
}

int ArvFeature::GetCategory(char* category, unsigned int& length)
{
    return Describe([&]() -> int { return CopyText(m_Info.category, category, length); });
}

int ArvFeature::GetDataType(PkoFeatureDataType& dataType)
{
    return Describe([&]() -> int {
        dataType = m_Info.type;
        return PkoErrorSuccess;
    });
}

int ArvFeature::GetValue(long long& value)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadOne(value, PkoFeatureDataInt,
                   [node](GError** error) { return arv_gc_integer_get_value(ARV_GC_INTEGER(node), error); });
}

int ArvFeature::GetValue(double& value)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadOne(value, PkoFeatureDataFloat,
                   [node](GError** error) { return arv_gc_float_get_value(ARV_GC_FLOAT(node), error); });
}

int ArvFeature::GetValue(bool& value)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadOne(value, PkoFeatureDataBool,
                   [node](GError** error) { return arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error) != FALSE; });
}

int ArvFeature::ReadTextLocked(std::string& text)
{
    ArvScopedError error;
    const char* read = nullptr;
    if (m_Info.type == PkoFeatureDataEnum)
        read = arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(m_Info.node), error.Out());
    else if (m_Info.type == PkoFeatureDataString)
        read = arv_gc_string_get_value(ARV_GC_STRING(m_Info.node), error.Out());
    else
        return PkoErrorWrongType;
    if (error)
        return CodeOf(error);
    text = read != nullptr ? read : "";
    return PkoErrorSuccess;
}

int ArvFeature::GetValue(char* value, unsigned int& length)
{
    std::string text;
    const int result = Call(text, [this](ArvCameraImpl&, std::string& out) -> int { return ReadTextLocked(out); });
    return result != PkoErrorSuccess ? result : CopyText(text, value, length);
}

int ArvFeature::SetValue(const long long& value)
{
    return Call([this, value](ArvCameraImpl& camera) -> int {
        if (m_Info.type != PkoFeatureDataInt)
            return PkoErrorWrongType;
        if (const int access = RequireWritableLocked())
            return access;
        auto* integer = ARV_GC_INTEGER(m_Info.node);
        ArvScopedError minError;
        const gint64 minimum = arv_gc_integer_get_min(integer, minError.Out());
        if (minError)
            return CodeOf(minError);
        ArvScopedError maxError;
        const gint64 maximum = arv_gc_integer_get_max(integer, maxError.Out());
        if (maxError)
            return CodeOf(maxError);
        ArvScopedError incError;
        const gint64 increment = arv_gc_integer_get_inc(integer, incError.Out());
        if (incError)
            return CodeOf(incError);
        if (value < minimum || value > maximum)
            return PkoErrorInvalidValue;
        const unsigned long long offset =
            static_cast<unsigned long long>(value) - static_cast<unsigned long long>(minimum);
        if (increment > 1 && offset % static_cast<unsigned long long>(increment) != 0)
            return PkoErrorInvalidValue;
        ArvScopedError error;
        arv_gc_integer_set_value(integer, value, error.Out());
        if (error)
            return CodeOf(error);
        camera.ChangedLocked(m_Index);
        return PkoErrorSuccess;
    });
}

int ArvFeature::SetValue(const double& value)
{
    return Call([this, value](ArvCameraImpl& camera) -> int {
        if (m_Info.type != PkoFeatureDataFloat)
            return PkoErrorWrongType;
        if (const int access = RequireWritableLocked())
            return access;
        auto* number = ARV_GC_FLOAT(m_Info.node);
        ArvScopedError minError;
        const double minimum = arv_gc_float_get_min(number, minError.Out());
        if (minError)
            return CodeOf(minError);
        ArvScopedError maxError;
        const double maximum = arv_gc_float_get_max(number, maxError.Out());
        if (maxError)
            return CodeOf(maxError);
        ArvScopedError incError;
        const double increment = arv_gc_float_get_inc(number, incError.Out());
        if (incError)
            return CodeOf(incError);
        if (!(value >= minimum && value <= maximum))
            return PkoErrorInvalidValue;
        if (HasFloatIncrement(increment) && !OnFloatGrid(value, minimum, increment))
            return PkoErrorInvalidValue;
        ArvScopedError error;
        arv_gc_float_set_value(number, value, error.Out());
        if (error)
            return CodeOf(error);
        camera.ChangedLocked(m_Index);
        return PkoErrorSuccess;
    });
}

int ArvFeature::SetValue(bool value)
{
    return Call([this, value](ArvCameraImpl& camera) -> int {
        if (m_Info.type != PkoFeatureDataBool)
            return PkoErrorWrongType;
        if (const int access = RequireWritableLocked())
            return access;
        ArvScopedError error;
        arv_gc_boolean_set_value(ARV_GC_BOOLEAN(m_Info.node), value ? TRUE : FALSE, error.Out());
        if (error)
            return CodeOf(error);
        camera.ChangedLocked(m_Index);
        return PkoErrorSuccess;
    });
}

int ArvFeature::SetValue(const char* value)
{
    if (value == nullptr)
        return PkoErrorBadParameter;
    std::string text;
    try {
        text = value;
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return Call([this, value = std::move(text)](ArvCameraImpl& camera) -> int {
        if (m_Info.type != PkoFeatureDataEnum && m_Info.type != PkoFeatureDataString)
            return PkoErrorWrongType;
        if (const int access = RequireWritableLocked())
            return access;
        ArvScopedError error;
        if (m_Info.type == PkoFeatureDataEnum) {
            std::size_t entry = 0;
            while (entry < m_Info.entries.size() && m_Info.entries[entry] != value)
                ++entry;
            if (entry == m_Info.entries.size())
                return PkoErrorInvalidValue;
            bool available = false;
            if (const int result = EntryAvailableLocked(entry, available))
                return result;
            if (!available)
                return PkoErrorInvalidValue;
            arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(m_Info.node), value.c_str(), error.Out());
        } else {
            auto* text = ARV_GC_STRING(m_Info.node);
            ArvScopedError lengthError;
            const gint64 maxLength = arv_gc_string_get_max_length(text, lengthError.Out());
            if (!lengthError && maxLength > 0 && static_cast<gint64>(value.size()) > maxLength)
                return PkoErrorInvalidValue;
            arv_gc_string_set_value(text, value.c_str(), error.Out());
        }
        if (error)
            return CodeOf(error);
        camera.ChangedLocked(m_Index);
        return PkoErrorSuccess;
    });
}

int ArvFeature::GetRange(long long& minimum, long long& maximum)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadRange(
        minimum, maximum, PkoFeatureDataInt,
        [node](GError** error) { return arv_gc_integer_get_min(ARV_GC_INTEGER(node), error); },
        [node](GError** error) { return arv_gc_integer_get_max(ARV_GC_INTEGER(node), error); });
}

int ArvFeature::GetRange(double& minimum, double& maximum)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadRange(
        minimum, maximum, PkoFeatureDataFloat,
        [node](GError** error) { return arv_gc_float_get_min(ARV_GC_FLOAT(node), error); },
        [node](GError** error) { return arv_gc_float_get_max(ARV_GC_FLOAT(node), error); });
}

int ArvFeature::GetIncrement(long long& increment)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadOne(increment, PkoFeatureDataInt,
                   [node](GError** error) { return arv_gc_integer_get_inc(ARV_GC_INTEGER(node), error); });
}

int ArvFeature::GetIncrement(double& increment)
{
    ::ArvGcNode* node = m_Info.node;
    return ReadOne(increment, PkoFeatureDataFloat, [node](GError** error) {
        const double read = arv_gc_float_get_inc(ARV_GC_FLOAT(node), error);
        return HasFloatIncrement(read) ? read : 0.0;
    });
}

int ArvFeature::GetValues(const char** entries, unsigned int& count)
{
    // The entries are known from the description: no need to ask the camera.
    return Describe([&]() -> int {
        if (m_Info.type != PkoFeatureDataEnum)
            return PkoErrorWrongType;
        return CopyEntries(
            m_EntryPointers, [](const char* entry) { return entry; }, entries, count);
    });
}

int ArvFeature::EntryAvailableLocked(std::size_t entry, bool& available)
{
    auto* node = ARV_GC_FEATURE_NODE(m_Info.entryNodes[entry]);
    ArvScopedError implementedError;
    const gboolean implemented = arv_gc_feature_node_is_implemented(node, implementedError.Out());
    if (implementedError)
        return CodeOf(implementedError);
    ArvScopedError availableError;
    const gboolean isAvailable = arv_gc_feature_node_is_available(node, availableError.Out());
    if (availableError)
        return CodeOf(availableError);
    available = implemented != FALSE && isAvailable != FALSE;
    return PkoErrorSuccess;
}

int ArvFeature::IsValueAvailable(const char* entry, bool& available)
{
    if (entry == nullptr)
        return PkoErrorBadParameter;
    std::size_t index = 0;
    while (index < m_Info.entries.size() && m_Info.entries[index] != entry)
        ++index;
    return Call(available, [this, index](ArvCameraImpl&, bool& out) -> int {
        if (m_Info.type != PkoFeatureDataEnum)
            return PkoErrorWrongType;
        if (index == m_Info.entries.size())
            return PkoErrorNotFound;
        return EntryAvailableLocked(index, out);
    });
}

int ArvFeature::WritableLocked(bool& writable)
{
    auto* node = ARV_GC_FEATURE_NODE(m_Info.node);
    const ArvGcAccessMode imposed = arv_gc_feature_node_get_imposed_access_mode(node);
    const ArvGcAccessMode actual = arv_gc_feature_node_get_actual_access_mode(node);
    const bool mayWrite =
        imposed != ARV_GC_ACCESS_MODE_RO && (actual == ARV_GC_ACCESS_MODE_RW || actual == ARV_GC_ACCESS_MODE_WO);
    if (!mayWrite) {
        writable = false;
        return PkoErrorSuccess;
    }
    ArvScopedError implementedError;
    const gboolean implemented = arv_gc_feature_node_is_implemented(node, implementedError.Out());
    if (implementedError)
        return CodeOf(implementedError);
    ArvScopedError availableError;
    const gboolean available = arv_gc_feature_node_is_available(node, availableError.Out());
    if (availableError)
        return CodeOf(availableError);
    ArvScopedError lockedError;
    const gboolean locked = arv_gc_feature_node_is_locked(node, lockedError.Out());
    if (lockedError)
        return CodeOf(lockedError);
    writable = implemented != FALSE && available != FALSE && locked == FALSE;
    return PkoErrorSuccess;
}

int ArvFeature::RequireWritableLocked()
{
    bool writable = false;
    if (const int result = WritableLocked(writable))
        return result;
    return writable ? PkoErrorSuccess : PkoErrorInvalidAccess;
}

int ArvFeature::IsWritable(bool& writable)
{
    return Call(writable, [this](ArvCameraImpl&, bool& out) -> int { return WritableLocked(out); });
}

int ArvFeature::RunCommand()
{
    return Call([this](ArvCameraImpl& camera) -> int {
        if (m_Info.type != PkoFeatureDataCommand)
            return PkoErrorWrongType;
        if (const int access = RequireWritableLocked())
            return access;
        camera.PrepareCommandLocked(m_Info.name);
        ArvScopedError error;
        arv_gc_command_execute(ARV_GC_COMMAND(m_Info.node), error.Out());
        if (error)
            return CodeOf(error);
        camera.CommandRunLocked(m_Info.name);
        camera.ChangedLocked(m_Index);
        return PkoErrorSuccess;
    });
}

std::string ArvFeature::SignatureLocked(int& errorCode)
{
    std::string signature;
    int result = PkoErrorSuccess;
    switch (m_Info.type) {
        case PkoFeatureDataInt: {
            ArvScopedError error;
            const gint64 value = arv_gc_integer_get_value(ARV_GC_INTEGER(m_Info.node), error.Out());
            result = CodeOf(error);
            signature = std::to_string(value);
            break;
        }
        case PkoFeatureDataFloat: {
            ArvScopedError error;
            const double value = arv_gc_float_get_value(ARV_GC_FLOAT(m_Info.node), error.Out());
            result = CodeOf(error);
            char text[64];
            std::snprintf(text, sizeof text, "%.17g", value);
            signature = text;
            break;
        }
        case PkoFeatureDataBool: {
            ArvScopedError error;
            const gboolean value = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(m_Info.node), error.Out());
            result = CodeOf(error);
            signature = value ? "1" : "0";
            break;
        }
        case PkoFeatureDataEnum:
        case PkoFeatureDataString:
            result = ReadTextLocked(signature);
            break;
        default:
            break;
    }
    bool writable = false;
    if (result == PkoErrorSuccess)
        result = WritableLocked(writable);
    signature += writable ? "|w|" : "|r|";
    for (std::size_t i = 0; result == PkoErrorSuccess && i < m_Info.entries.size(); ++i) {
        bool available = false;
        result = EntryAvailableLocked(i, available);
        signature += available ? '1' : '0';
    }
    errorCode = result;
    return result == PkoErrorSuccess ? signature : std::string();
}

int ArvFeature::CheckObserverOperation(bool registering)
{
    // Neither touches the camera; unregistering works on a lost camera too.
    return m_Anchor->With([&](ArvCameraImpl& camera) {
        return registering ? camera.CheckReachable(m_Session) : camera.CheckSession(m_Session);
    });
}

}  // namespace ZMT::PkoAPI::Arv
