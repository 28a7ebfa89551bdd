#include "FeatureIo.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

typedef int (Feature::*TextGetter)(char*, unsigned int&);

QString ReadText(const FeaturePtr& feature, TextGetter getter, int& code)
{
    unsigned int length = 0;
    code = ((*feature).*getter)(nullptr, length);
    if (code != PkoErrorSuccess)
        return QString();
    std::string buffer(length + 1, '\0');
    unsigned int size = length + 1;
    code = ((*feature).*getter)(&buffer[0], size);
    if (code != PkoErrorSuccess)
        return QString();
    buffer.resize(size);
    return QString::fromUtf8(buffer.data(), int(buffer.size()));
}

}  // namespace

QString FeatureIo::Name(const FeaturePtr& feature)
{
    if (!feature)
        return QString();
    int code = 0;
    return ReadText(feature, &Feature::GetName, code);
}

QString FeatureIo::Category(const FeaturePtr& feature)
{
    if (!feature)
        return QString();
    int code = 0;
    return ReadText(feature, &Feature::GetCategory, code);
}

int FeatureIo::Read(const FeaturePtr& feature, PkoFeatureDataType type, QVariant& value)
{
    if (!feature)
        return PkoErrorBadHandle;
    int code = PkoErrorWrongType;
    switch (type) {
        case PkoFeatureDataInt: {
            long long integer = 0;
            code = feature->GetValue(integer);
            if (code == PkoErrorSuccess)
                value = QVariant(qlonglong(integer));
            break;
        }
        case PkoFeatureDataFloat: {
            double number = 0.0;
            code = feature->GetValue(number);
            if (code == PkoErrorSuccess)
                value = QVariant(number);
            break;
        }
        case PkoFeatureDataBool: {
            bool flag = false;
            code = feature->GetValue(flag);
            if (code == PkoErrorSuccess)
                value = QVariant(flag);
            break;
        }
        case PkoFeatureDataEnum:
        case PkoFeatureDataString: {
            const QString text = ReadText(feature, static_cast<TextGetter>(&Feature::GetValue), code);
            if (code == PkoErrorSuccess)
                value = QVariant(text);
            break;
        }
        default:
            break;
    }
    return code;
}

int FeatureIo::Write(const FeaturePtr& feature, PkoFeatureDataType type, const QVariant& value)
{
    if (!feature)
        return PkoErrorBadHandle;
    switch (type) {
        case PkoFeatureDataInt:
            if (value.userType() != QMetaType::LongLong)
                return PkoErrorWrongType;
            return feature->SetValue(static_cast<long long>(value.toLongLong()));
        case PkoFeatureDataFloat:
            if (value.userType() != QMetaType::Double)
                return PkoErrorWrongType;
            return feature->SetValue(value.toDouble());
        case PkoFeatureDataBool:
            if (value.userType() != QMetaType::Bool)
                return PkoErrorWrongType;
            return feature->SetValue(value.toBool());
        case PkoFeatureDataEnum:
        case PkoFeatureDataString: {
            if (value.userType() != QMetaType::QString)
                return PkoErrorWrongType;
            const QByteArray text = value.toString().toUtf8();
            return feature->SetValue(text.constData());
        }
        default:
            return PkoErrorWrongType;
    }
}

int FeatureIo::Range(const FeaturePtr& feature, PkoFeatureDataType type, QVariant& minimum, QVariant& maximum,
                     QVariant& increment)
{
    if (!feature)
        return PkoErrorBadHandle;
    if (type == PkoFeatureDataInt) {
        long long low = 0;
        long long high = 0;
        long long step = 0;
        int code = feature->GetRange(low, high);
        if (code == PkoErrorSuccess)
            code = feature->GetIncrement(step);
        if (code != PkoErrorSuccess)
            return code;
        minimum = QVariant(qlonglong(low));
        maximum = QVariant(qlonglong(high));
        increment = QVariant(qlonglong(step));
        return PkoErrorSuccess;
    }
    if (type == PkoFeatureDataFloat) {
        double low = 0.0;
        double high = 0.0;
        double step = 0.0;
        int code = feature->GetRange(low, high);
        if (code == PkoErrorSuccess)
            code = feature->GetIncrement(step);
        if (code != PkoErrorSuccess)
            return code;
        minimum = QVariant(low);
        maximum = QVariant(high);
        increment = QVariant(step);
        return PkoErrorSuccess;
    }
    return PkoErrorWrongType;
}

int FeatureIo::Entries(const FeaturePtr& feature, QStringList& entries)
{
    if (!feature)
        return PkoErrorBadHandle;
    unsigned int count = 0;
    int code = feature->GetValues(nullptr, count);
    if (code != PkoErrorSuccess)
        return code;
    std::vector<const char*> names(count, nullptr);
    if (count > 0) {
        code = feature->GetValues(names.data(), count);
        if (code != PkoErrorSuccess)
            return code;
    }
    QStringList result;
    for (unsigned int i = 0; i < count && i < names.size(); ++i)
        result.append(QString::fromUtf8(names[i] != nullptr ? names[i] : ""));
    entries = result;
    return PkoErrorSuccess;
}

QVariant FeatureIo::Snap(const QVariant& value, const QVariant& minimum, const QVariant& increment)
{
    if (value.userType() == QMetaType::LongLong && minimum.userType() == QMetaType::LongLong &&
        increment.userType() == QMetaType::LongLong) {
        const qlonglong step = increment.toLongLong();
        if (step <= 1)
            return value;
        const qlonglong base = minimum.toLongLong();
        const qlonglong offset = value.toLongLong() - base;
        qlonglong steps = offset / step;
        const qlonglong rest = offset % step;
        if (rest * 2 >= step)
            ++steps;
        else if (rest * 2 <= -step)
            --steps;
        return QVariant(base + steps * step);
    }
    if (value.userType() == QMetaType::Double && minimum.userType() == QMetaType::Double &&
        increment.userType() == QMetaType::Double) {
        const double step = increment.toDouble();
        if (!(step > 0.0) || !std::isfinite(step))
            return value;
        const double base = minimum.toDouble();
        const double exact = (value.toDouble() - base) / step;
        const double steps = std::round(exact);
        // A value a rounding error off the grid is on it; recomputing it
        // from the grid would only change its last digits.
        if (std::fabs(exact - steps) <= 1e-9 * std::max(1.0, std::fabs(exact)))
            return value;
        return QVariant(base + steps * step);
    }
    return value;
}

bool FeatureIo::IsLost(int code)
{
    return code == PkoErrorConnectionLost || code == PkoErrorTimeout;
}

QString FeatureIo::ErrorName(int code)
{
    return QString::fromLatin1(PkoErrorName(code));
}
