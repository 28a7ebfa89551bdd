#include "SimFeature.h"

#include "SimCameraImpl.h"
#include "SimState.h"
#include "ValueText.h"

#include <utility>

namespace ZMT::PkoAPI::Sim {

SimFeature::SimFeature(std::shared_ptr<CameraAnchor> anchor, int index, std::vector<std::string> entries)
    : m_Anchor(std::move(anchor)), m_Index(index), m_Entries(std::move(entries))
{}

template <class Op>
int SimFeature::Call(Op&& op)
{
    return m_Anchor->With([&](SimCameraImpl& camera) { return camera.Access(op); });
}

int SimFeature::GetName(char* name, unsigned int& length)
{
    return Call([&](SimState& s) { return s.GetText(m_Index, Operation::GetName, name, length); });
}

int SimFeature::GetDisplayName(char* displayName, unsigned int& length)
{
    return Call([&](SimState& s) { return s.GetText(m_Index, Operation::GetDisplayName, displayName, length); });
}

int SimFeature::GetCategory(char* category, unsigned int& length)
{
    return Call([&](SimState& s) { return s.GetText(m_Index, Operation::GetCategory, category, length); });
}

int SimFeature::GetDataType(PkoFeatureDataType& dataType)
{
    return Call([&](SimState& s) { return s.GetDataType(m_Index, dataType); });
}

int SimFeature::GetValue(long long& value)
{
    return Call([&](SimState& s) { return s.GetInteger(m_Index, value); });
}

int SimFeature::GetValue(double& value)
{
    return Call([&](SimState& s) { return s.GetFloat(m_Index, value); });
}

int SimFeature::GetValue(bool& value)
{
    return Call([&](SimState& s) { return s.GetBoolean(m_Index, value); });
}

int SimFeature::GetValue(char* value, unsigned int& length)
{
    return Call([&](SimState& s) { return s.GetString(m_Index, value, length); });
}

int SimFeature::SetValue(const long long& value)
{
    return Call([&](SimState& s) { return s.SetValue(m_Index, PkoFeatureDataInt, FormatInteger(value)); });
}

int SimFeature::SetValue(const double& value)
{
    return Call([&](SimState& s) { return s.SetValue(m_Index, PkoFeatureDataFloat, FormatFloat(value)); });
}

int SimFeature::SetValue(bool value)
{
    return Call([&](SimState& s) { return s.SetValue(m_Index, PkoFeatureDataBool, FormatBoolean(value)); });
}

int SimFeature::SetValue(const char* value)
{
    return Call([&](SimState& s) {
        return s.SetValue(m_Index, PkoFeatureDataString, value ? std::string(value) : std::string(), value == nullptr);
    });
}

int SimFeature::GetRange(long long& minimum, long long& maximum)
{
    return Call([&](SimState& s) { return s.GetIntegerRange(m_Index, minimum, maximum); });
}

int SimFeature::GetRange(double& minimum, double& maximum)
{
    return Call([&](SimState& s) { return s.GetFloatRange(m_Index, minimum, maximum); });
}

int SimFeature::GetIncrement(long long& increment)
{
    return Call([&](SimState& s) { return s.GetIntegerIncrement(m_Index, increment); });
}

int SimFeature::GetIncrement(double& increment)
{
    return Call([&](SimState& s) { return s.GetFloatIncrement(m_Index, increment); });
}

int SimFeature::GetValues(const char** entries, unsigned int& count)
{
    return Call([&](SimState& s) { return s.GetValues(m_Index, m_Entries, entries, count); });
}

int SimFeature::IsValueAvailable(const char* entry, bool& available)
{
    return Call([&](SimState& s) { return s.IsValueAvailable(m_Index, entry, available); });
}

int SimFeature::IsWritable(bool& writable)
{
    return Call([&](SimState& s) { return s.IsWritable(m_Index, writable); });
}

int SimFeature::RunCommand()
{
    return Call([&](SimState& s) { return s.RunCommand(m_Index); });
}

int SimFeature::CheckObserverOperation(bool registering)
{
    const Operation op = registering ? Operation::RegisterObserver : Operation::UnregisterObserver;
    return Call([&](SimState& s) { return s.Fault(m_Index, op); });
}

}  // namespace ZMT::PkoAPI::Sim
