#include "FeatureManager.h"

#include "FeatureText.h"

#include <QByteArray>
#include <QDebug>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

using ZMT::PkoAPI::Feature;
using ZMT::PkoAPI::FeaturePtr;
using ZMT::PkoAPI::PkoFeatureDataType;

namespace {

QString ReadQText(const FeaturePtr& feature, int (Feature::*read)(char*, unsigned int&))
{
    std::string text;
    if (!feature)
        return QString();
    const int error =
        FeatureText::Read([&](char* buffer, unsigned int& length) { return ((*feature).*read)(buffer, length); }, text);
    if (error != ZMT::PkoAPI::PkoErrorSuccess)
        return QString();
    return FeatureText::ToQString(text);
}

// Truncates towards zero; saturates where a double has no 64-bit counterpart
// (the cast alone would be undefined there).
long long ToInt64(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= 9223372036854775808.0)
        return std::numeric_limits<long long>::max();
    if (value < -9223372036854775808.0)
        return std::numeric_limits<long long>::min();
    return static_cast<long long>(value);
}

PkoFeatureDataType ReadDataType(const FeaturePtr& feature)
{
    PkoFeatureDataType dataType = ZMT::PkoAPI::PkoFeatureDataUnknown;
    if (feature->GetDataType(dataType) != ZMT::PkoAPI::PkoErrorSuccess)
        return ZMT::PkoAPI::PkoFeatureDataUnknown;
    return dataType;
}

bool ReadWritable(const FeaturePtr& feature)
{
    bool writable = false;
    if (feature->IsWritable(writable) != ZMT::PkoAPI::PkoErrorSuccess)
        return false;
    return writable;
}

}  // namespace

FeatureManager::FeatureManager(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features)
    : m_Features(features)
{}

FeaturePtr FeatureManager::GetFeature(const std::string& name)
{
    if (!m_Features)
        return FeaturePtr();
    // A shared copy: the host may replace its list while we walk it.
    const QVector<FeaturePtr> features = *m_Features;
    for (const FeaturePtr& feature : features) {
        if (!feature)
            continue;
        std::string featureName;
        const int error = FeatureText::Read(
            [&](char* buffer, unsigned int& length) { return feature->GetName(buffer, length); }, featureName);
        if (error != ZMT::PkoAPI::PkoErrorSuccess)
            continue;
        if (featureName == name)
            return feature;
    }
    return FeaturePtr();
}

FeaturePtr FeatureManager::GetFeature(const char* name)
{
    if (name == nullptr)
        return FeaturePtr();
    return GetFeature(std::string(name));
}

FeaturePtr FeatureManager::GetFeature(const QString& name)
{
    const QByteArray bytes = name.toLatin1();
    return GetFeature(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size())));
}

FeaturePtr FeatureManager::GetFeature(const QString& name, const QString& fallback1)
{
    FeaturePtr feature = GetFeature(name);
    if (!feature && !fallback1.isEmpty())
        feature = GetFeature(fallback1);
    return feature;
}

FeaturePtr FeatureManager::GetFeature(const QString& name, const QString& fallback1, const QString& fallback2)
{
    FeaturePtr feature = GetFeature(name, fallback1);
    // fallback1 is tried a second time on purpose; it is harmless and kept.
    if (!feature && !fallback1.isEmpty())
        feature = GetFeature(fallback1);
    if (!feature && !fallback2.isEmpty())
        feature = GetFeature(fallback2);
    return feature;
}

bool FeatureManager::IsAvailable(const QString& name)
{
    return IsAvailable(name, QString(""), QString(""));
}

bool FeatureManager::IsAvailable(const QString& name, const QString& fallback1)
{
    return IsAvailable(name, fallback1, QString(""));
}

bool FeatureManager::IsAvailable(const QString& name, const QString& fallback1, const QString& fallback2)
{
    return static_cast<bool>(GetFeature(name, fallback1, fallback2));
}

bool FeatureManager::IsWritable(const QString& name)
{
    return IsWritable(name, QString(""));
}

bool FeatureManager::IsWritable(const QString& name, const QString& fallback1)
{
    const FeaturePtr feature = GetFeature(name, fallback1);
    if (!feature)
        return false;
    return ReadWritable(feature);
}

bool FeatureManager::IsWritable(const QString& name, const QString& fallback1, const QString& fallback2)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return false;
    return ReadWritable(feature);
}

double FeatureManager::GetValue(const QString& name)
{
    return GetValue(name, QString(""), QString(""));
}

double FeatureManager::GetValue(const QString& name, const QString& fallback1)
{
    return GetValue(name, fallback1, QString(""));
}

double FeatureManager::GetValue(const QString& name, const QString& fallback1, const QString& fallback2)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return -1.0;
    switch (ReadDataType(feature)) {
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double value = -1.0;
            if (feature->GetValue(value) != ZMT::PkoAPI::PkoErrorSuccess)
                return -1.0;
            return value;
        }
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long value = -1;
            if (feature->GetValue(value) != ZMT::PkoAPI::PkoErrorSuccess)
                return -1.0;
            return static_cast<double>(value);
        }
        case ZMT::PkoAPI::PkoFeatureDataBool: {
            bool value = false;
            if (feature->GetValue(value) != ZMT::PkoAPI::PkoErrorSuccess)
                return 0.0;
            return value ? 1.0 : 0.0;
        }
        default:
            return -1.0;
    }
}

double FeatureManager::SetValue(const QString& name, double value)
{
    return SetValue(name, QString(""), QString(""), value);
}

double FeatureManager::SetValue(const QString& name, const QString& fallback1, double value)
{
    return SetValue(name, fallback1, QString(""), value);
}

double FeatureManager::SetValue(const QString& name, const QString& fallback1, const QString& fallback2, double value)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return value;

    switch (ReadDataType(feature)) {
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double minimum = -1.0;
            double maximum = -1.0;
            double increment = -1.0;
            if (feature->GetRange(minimum, maximum) != ZMT::PkoAPI::PkoErrorSuccess) {
                minimum = -1.0;
                maximum = -1.0;
            }
            if (feature->GetIncrement(increment) != ZMT::PkoAPI::PkoErrorSuccess)
                increment = -1.0;
            const double upper = AlignToIncrement(minimum, maximum, increment);
            double aligned = AlignToIncrement(minimum, value, increment);
            // Minimum first: a value below it is never compared with the upper bound.
            if (aligned < minimum)
                aligned = minimum;
            else if (aligned > upper)
                aligned = upper;
            if (ReadWritable(feature)) {
                const int error = feature->SetValue(aligned);
                if (error != ZMT::PkoAPI::PkoErrorSuccess)
                    qDebug() << "Error: FeatureManager::SetValue:Double: " << name << " : " << error;
            }
            double readBack = -1.0;
            if (feature->GetValue(readBack) != ZMT::PkoAPI::PkoErrorSuccess)
                readBack = -1.0;
            return readBack;
        }
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long minimum = -1;
            long long maximum = -1;
            long long increment = -1;
            if (feature->GetRange(minimum, maximum) != ZMT::PkoAPI::PkoErrorSuccess) {
                minimum = -1;
                maximum = -1;
            }
            if (feature->GetIncrement(increment) != ZMT::PkoAPI::PkoErrorSuccess)
                increment = -1;
            const double dMinimum = static_cast<double>(minimum);
            const double dIncrement = static_cast<double>(increment);
            const long long upper = ToInt64(AlignToIncrement(dMinimum, static_cast<double>(maximum), dIncrement));
            long long aligned = ToInt64(AlignToIncrement(dMinimum, value, dIncrement));
            if (aligned < minimum)
                aligned = minimum;
            else if (aligned > upper)
                aligned = upper;
            if (ReadWritable(feature)) {
                const int error = feature->SetValue(aligned);
                if (error != ZMT::PkoAPI::PkoErrorSuccess)
                    qDebug() << "Error: FeatureManager::SetValue:Int: " << name << " : " << error;
            }
            long long readBack = -1;
            if (feature->GetValue(readBack) != ZMT::PkoAPI::PkoErrorSuccess)
                readBack = -1;
            return static_cast<double>(readBack);
        }
        case ZMT::PkoAPI::PkoFeatureDataBool: {
            const bool wanted = value != 0.0;
            if (ReadWritable(feature))
                feature->SetValue(wanted);  // a refusal shows in the read-back
            bool readBack = false;
            if (feature->GetValue(readBack) != ZMT::PkoAPI::PkoErrorSuccess)
                readBack = false;
            return readBack ? 1.0 : 0.0;
        }
        default:
            return value;
    }
}

double FeatureManager::ReadValueAndRange(const FeaturePtr& feature, bool* writable, double* minimum, double* maximum,
                                         double* increment)
{
    double result = -1.0;
    if (writable != nullptr)
        *writable = ReadWritable(feature);

    double dMinimum = -1.0;
    double dMaximum = -1.0;
    double dIncrement = -1.0;
    switch (ReadDataType(feature)) {
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long value = -1;
            long long lMinimum = -1;
            long long lMaximum = -1;
            long long lIncrement = -1;
            if (feature->GetValue(value) != ZMT::PkoAPI::PkoErrorSuccess)
                value = -1;
            if (feature->GetRange(lMinimum, lMaximum) != ZMT::PkoAPI::PkoErrorSuccess) {
                lMinimum = -1;
                lMaximum = -1;
            }
            if (feature->GetIncrement(lIncrement) != ZMT::PkoAPI::PkoErrorSuccess)
                lIncrement = -1;
            result = static_cast<double>(value);
            dMinimum = static_cast<double>(lMinimum);
            dMaximum = static_cast<double>(lMaximum);
            dIncrement = static_cast<double>(lIncrement);
            if (minimum != nullptr)
                *minimum = dMinimum;
            if (maximum != nullptr)
                *maximum = dMaximum;
            if (increment != nullptr)
                *increment = dIncrement;
            if (lIncrement <= 0)
                return result;
            break;
        }
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double value = -1.0;
            if (feature->GetValue(value) != ZMT::PkoAPI::PkoErrorSuccess)
                value = -1.0;
            if (feature->GetRange(dMinimum, dMaximum) != ZMT::PkoAPI::PkoErrorSuccess) {
                dMinimum = -1.0;
                dMaximum = -1.0;
            }
            if (feature->GetIncrement(dIncrement) != ZMT::PkoAPI::PkoErrorSuccess)
                dIncrement = -1.0;
            result = value;
            if (minimum != nullptr)
                *minimum = dMinimum;
            if (maximum != nullptr)
                *maximum = dMaximum;
            if (dIncrement <= 0.0) {
                // A float without a usable step still gets one a spin box can use.
                if (increment != nullptr)
                    *increment = 0.01;
                return result;
            }
            if (increment != nullptr)
                *increment = dIncrement;
            break;
        }
        default:
            if (writable != nullptr)
                *writable = false;
            if (minimum != nullptr)
                *minimum = -1.0;
            if (maximum != nullptr)
                *maximum = -1.0;
            if (increment != nullptr)
                *increment = -1.0;
            return -1.0;
    }
    if (maximum != nullptr)
        *maximum = AlignToIncrement(dMinimum, dMaximum, dIncrement);
    return result;
}

double FeatureManager::GetValueWithRange(const QString& name, bool& writable, double& minimum, double& maximum,
                                         double& increment)
{
    return GetValueWithRange(name, QString(""), QString(""), writable, minimum, maximum, increment);
}

double FeatureManager::GetValueWithRange(const QString& name, const QString& fallback1, bool& writable, double& minimum,
                                         double& maximum, double& increment)
{
    return GetValueWithRange(name, fallback1, QString(""), writable, minimum, maximum, increment);
}

double FeatureManager::GetValueWithRange(const QString& name, const QString& fallback1, const QString& fallback2,
                                         bool& writable, double& minimum, double& maximum, double& increment)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return -1.0;
    return ReadValueAndRange(feature, &writable, &minimum, &maximum, &increment);
}

double FeatureManager::GetRange(const QString& name, double& minimum, double& maximum)
{
    return GetRange(name, QString(""), QString(""), minimum, maximum);
}

double FeatureManager::GetRange(const QString& name, const QString& fallback1, double& minimum, double& maximum)
{
    return GetRange(name, fallback1, QString(""), minimum, maximum);
}

double FeatureManager::GetRange(const QString& name, const QString& fallback1, const QString& fallback2,
                                double& minimum, double& maximum)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return -1.0;
    return ReadValueAndRange(feature, nullptr, &minimum, &maximum, nullptr);
}

double FeatureManager::GetRangeAndIncrement(const QString& name, double& minimum, double& maximum, double& increment)
{
    return GetRangeAndIncrement(name, QString(""), QString(""), minimum, maximum, increment);
}

double FeatureManager::GetRangeAndIncrement(const QString& name, const QString& fallback1, double& minimum,
                                            double& maximum, double& increment)
{
    return GetRangeAndIncrement(name, fallback1, QString(""), minimum, maximum, increment);
}

double FeatureManager::GetRangeAndIncrement(const QString& name, const QString& fallback1, const QString& fallback2,
                                            double& minimum, double& maximum, double& increment)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return -1.0;
    return ReadValueAndRange(feature, nullptr, &minimum, &maximum, &increment);
}

double FeatureManager::GetIncrement(const QString& name)
{
    return GetIncrement(name, QString(""));
}

double FeatureManager::GetIncrement(const QString& name, const QString& fallback1)
{
    const FeaturePtr feature = GetFeature(name, fallback1);
    if (!feature)
        return -1.0;
    switch (ReadDataType(feature)) {
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long increment = -1;
            if (feature->GetIncrement(increment) != ZMT::PkoAPI::PkoErrorSuccess)
                return -1.0;
            return static_cast<double>(increment);
        }
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double increment = -1.0;
            if (feature->GetIncrement(increment) != ZMT::PkoAPI::PkoErrorSuccess)
                return -1.0;
            return increment;
        }
        default:
            return -1.0;
    }
}

PkoFeatureDataType FeatureManager::GetDataType(const QString& name)
{
    return GetDataType(name, QString(""), QString(""));
}

PkoFeatureDataType FeatureManager::GetDataType(const QString& name, const QString& fallback1)
{
    return GetDataType(name, fallback1, QString(""));
}

PkoFeatureDataType FeatureManager::GetDataType(const QString& name, const QString& fallback1, const QString& fallback2)
{
    const FeaturePtr feature = GetFeature(name, fallback1, fallback2);
    if (!feature)
        return ZMT::PkoAPI::PkoFeatureDataUnknown;
    return ReadDataType(feature);
}

QString FeatureManager::GetStringValue(const QString& name)
{
    return GetStringValue(name, QString(""));
}

QString FeatureManager::GetStringValue(const QString& name, const QString& fallback1)
{
    QString result("");
    const FeaturePtr feature = GetFeature(name, fallback1);
    if (feature)
        result = ReadQText(feature, &Feature::GetValue);
    return result;
}

QString FeatureManager::SetStringValue(const QString& name, const QString& value)
{
    return SetStringValue(name, QString(""), QString(""), value);
}

QString FeatureManager::SetStringValue(const QString& name, const QString& fallback1, const QString& value)
{
    return SetStringValue(name, fallback1, QString(""), value);
}

QString FeatureManager::SetStringValue(const QString& name, const QString& fallback1, const QString& fallback2,
                                       const QString& value)
{
    // fallback2 is accepted but not searched; kept on purpose.
    Q_UNUSED(fallback2);
    const FeaturePtr feature = GetFeature(name, fallback1);
    if (feature) {
        const QByteArray text = value.toLatin1();
        feature->SetValue(text.constData());  // callers learn of a refusal only by reading back
        // Looks up a feature named like the value and drops the answer; kept on purpose.
        GetStringValue(value);
    }
    return value;
}

QStringList FeatureManager::GetAvailableValues(const QString& name)
{
    return GetAvailableValues(name, QString(""));
}

QStringList FeatureManager::GetAvailableValues(const QString& name, const QString& fallback1)
{
    QStringList available;
    const FeaturePtr feature = GetFeature(name, fallback1);
    if (!feature)
        return available;

    std::vector<std::string> entries;
    try {
        unsigned int count = 0;
        if (feature->GetValues(nullptr, count) != ZMT::PkoAPI::PkoErrorSuccess || count == 0)
            return available;
        std::vector<const char*> pointers(count, nullptr);
        if (feature->GetValues(pointers.data(), count) != ZMT::PkoAPI::PkoErrorSuccess)
            return available;
        const std::size_t filled = std::min<std::size_t>(count, pointers.size());
        for (std::size_t i = 0; i < filled; ++i) {
            if (pointers[i] != nullptr)
                entries.emplace_back(pointers[i]);
        }
    } catch (const std::bad_alloc&) {
        return available;
    } catch (const std::length_error&) {
        return available;
    }

    for (const std::string& entry : entries) {
        bool isAvailable = false;
        if (feature->IsValueAvailable(entry.c_str(), isAvailable) == ZMT::PkoAPI::PkoErrorSuccess && isAvailable)
            available.append(QString::fromLatin1(entry.data(), static_cast<int>(entry.size())));
    }
    return available;
}

bool FeatureManager::IsValueAvailable(const QString& name, const QString& entry)
{
    const FeaturePtr feature = GetFeature(name);
    if (!feature)
        return false;
    const QByteArray text = entry.toLatin1();
    bool available = false;
    if (feature->IsValueAvailable(text.constData(), available) != ZMT::PkoAPI::PkoErrorSuccess)
        return false;
    return available;
}

bool FeatureManager::RunCommand(const QString& name)
{
    const FeaturePtr feature = GetFeature(name);
    if (!feature)
        return false;
    // Inverted on purpose: true reports an SDK error, not success.
    return feature->RunCommand() != ZMT::PkoAPI::PkoErrorSuccess;
}

QString FeatureManager::GetDisplayName(const QString& name)
{
    return GetDisplayName(name, QString(""), QString(""));
}

QString FeatureManager::GetDisplayName(const QString& name, const QString& fallback1)
{
    return GetDisplayName(name, fallback1, QString(""));
}

QString FeatureManager::GetDisplayName(const QString& name, const QString& fallback1, const QString& fallback2)
{
    return ReadQText(GetFeature(name, fallback1, fallback2), &Feature::GetDisplayName);
}

QString FeatureManager::GetDisplayName(const QStringList& candidates)
{
    return ReadQText(GetFirstFeature(candidates), &Feature::GetDisplayName);
}

QString FeatureManager::GetFeatureName(const QStringList& candidates)
{
    return ReadQText(GetFirstFeature(candidates), &Feature::GetName);
}

QString FeatureManager::GetCategory(const QString& name)
{
    return ReadQText(GetFeature(name), &Feature::GetCategory);
}

double FeatureManager::AlignToIncrement(double minimum, double value, double increment)
{
    const double steps = std::floor(((value - minimum) / increment) * 1.000000000001);
    const double aligned = minimum + steps * increment;
    return value <= aligned ? value : aligned;
}

FeaturePtr FeatureManager::GetFirstFeature(const QStringList& candidates)
{
    for (const QString& candidate : candidates) {
        FeaturePtr feature = GetFeature(candidate);
        if (feature)
            return feature;
    }
    return FeaturePtr();
}
