#include "CountingFeature.h"

CountingFeature::CountingFeature(const ZMT::PkoAPI::FeaturePtr& inner) : m_Inner(inner) {}

int CountingFeature::GetName(char* name, unsigned int& length)
{
    ++m_NameReads;
    return m_Inner->GetName(name, length);
}

int CountingFeature::GetDisplayName(char* displayName, unsigned int& length)
{
    return m_Inner->GetDisplayName(displayName, length);
}

int CountingFeature::GetCategory(char* category, unsigned int& length)
{
    return m_Inner->GetCategory(category, length);
}

int CountingFeature::GetDataType(ZMT::PkoAPI::PkoFeatureDataType& dataType)
{
    return m_Inner->GetDataType(dataType);
}

int CountingFeature::GetValue(long long& value)
{
    return m_Inner->GetValue(value);
}

int CountingFeature::GetValue(double& value)
{
    return m_Inner->GetValue(value);
}

int CountingFeature::GetValue(bool& value)
{
    return m_Inner->GetValue(value);
}

int CountingFeature::GetValue(char* value, unsigned int& length)
{
    ++m_TextReads;
    return m_Inner->GetValue(value, length);
}

int CountingFeature::SetValue(const long long& value)
{
    return m_Inner->SetValue(value);
}

int CountingFeature::SetValue(const double& value)
{
    return m_Inner->SetValue(value);
}

int CountingFeature::SetValue(bool value)
{
    return m_Inner->SetValue(value);
}

int CountingFeature::SetValue(const char* value)
{
    return m_Inner->SetValue(value);
}

int CountingFeature::GetRange(long long& minimum, long long& maximum)
{
    return m_Inner->GetRange(minimum, maximum);
}

int CountingFeature::GetRange(double& minimum, double& maximum)
{
    return m_Inner->GetRange(minimum, maximum);
}

int CountingFeature::GetIncrement(long long& increment)
{
    return m_Inner->GetIncrement(increment);
}

int CountingFeature::GetIncrement(double& increment)
{
    return m_Inner->GetIncrement(increment);
}

int CountingFeature::GetValues(const char** entries, unsigned int& count)
{
    return m_Inner->GetValues(entries, count);
}

int CountingFeature::IsValueAvailable(const char* entry, bool& available)
{
    return m_Inner->IsValueAvailable(entry, available);
}

int CountingFeature::IsWritable(bool& writable)
{
    return m_Inner->IsWritable(writable);
}

int CountingFeature::RunCommand()
{
    return m_Inner->RunCommand();
}

int CountingFeature::RegisterObserver(const ZMT::PkoAPI::IFeatureObserverPtr& observer)
{
    return m_Inner->RegisterObserver(observer);
}

int CountingFeature::UnregisterObserver(const ZMT::PkoAPI::IFeatureObserverPtr& observer)
{
    return m_Inner->UnregisterObserver(observer);
}
