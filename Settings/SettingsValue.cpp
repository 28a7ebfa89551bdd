#include "SettingsValue.h"

#include <QLocale>

#include <cmath>
#include <limits>

using namespace ZMT::PkoAPI;

namespace {

// Largest magnitude up to which every integer is exactly a double.
const qint64 kExactDoubleLimit = qint64(1) << 53;

bool ParseInteger(const QString& text, qlonglong& value)
{
    QString trimmed = text.trimmed();
    bool negative = false;
    if (trimmed.startsWith(QLatin1Char('-')) || trimmed.startsWith(QLatin1Char('+'))) {
        negative = trimmed.startsWith(QLatin1Char('-'));
        trimmed.remove(0, 1);
    }
    if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('-')) || trimmed.startsWith(QLatin1Char('+')))
        return false;
    bool ok = false;
    qulonglong magnitude = 0;
    if (trimmed.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        magnitude = trimmed.mid(2).toULongLong(&ok, 16);
    else
        magnitude = trimmed.toULongLong(&ok, 10);
    if (!ok)
        return false;
    const qulonglong limit = negative ? qulonglong(std::numeric_limits<qlonglong>::max()) + 1
                                      : qulonglong(std::numeric_limits<qlonglong>::max());
    if (magnitude > limit)
        return false;
    value = negative ? qlonglong(0 - magnitude) : qlonglong(magnitude);
    return true;
}

}  // namespace

QString SettingsValue::TypeName(PkoFeatureDataType type)
{
    switch (type) {
        case PkoFeatureDataInt:
            return QStringLiteral("Integer");
        case PkoFeatureDataFloat:
            return QStringLiteral("Float");
        case PkoFeatureDataEnum:
            return QStringLiteral("Enumeration");
        case PkoFeatureDataString:
            return QStringLiteral("String");
        case PkoFeatureDataBool:
            return QStringLiteral("Boolean");
        case PkoFeatureDataCommand:
            return QStringLiteral("Command");
        case PkoFeatureDataRaw:
            return QStringLiteral("Raw");
        case PkoFeatureDataUnknown:
            break;
    }
    return QStringLiteral("Unknown");
}

PkoFeatureDataType SettingsValue::TypeFromName(const QString& name)
{
    for (PkoFeatureDataType type : {PkoFeatureDataInt, PkoFeatureDataFloat, PkoFeatureDataEnum, PkoFeatureDataString,
                                    PkoFeatureDataBool, PkoFeatureDataCommand, PkoFeatureDataRaw}) {
        if (name == TypeName(type))
            return type;
    }
    return PkoFeatureDataUnknown;
}

bool SettingsValue::IsSettable(PkoFeatureDataType type)
{
    return type == PkoFeatureDataInt || type == PkoFeatureDataFloat || type == PkoFeatureDataBool ||
           type == PkoFeatureDataEnum || type == PkoFeatureDataString;
}

QString SettingsValue::ToText(const QVariant& value)
{
    switch (value.userType()) {
        case QMetaType::LongLong:
            return QString::number(value.toLongLong());
        case QMetaType::Double:
            return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
        case QMetaType::Bool:
            return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        default:
            return value.toString();
    }
}

bool SettingsValue::FromText(PkoFeatureDataType type, const QString& text, QVariant& value, QString& expected)
{
    switch (type) {
        case PkoFeatureDataInt: {
            qlonglong parsed = 0;
            if (!ParseInteger(text, parsed)) {
                expected = QStringLiteral("an integer");
                return false;
            }
            value = QVariant(parsed);
            return true;
        }
        case PkoFeatureDataFloat: {
            bool ok = false;
            const double parsed = QLocale::c().toDouble(text.trimmed(), &ok);
            if (!ok || !std::isfinite(parsed)) {
                expected = QStringLiteral("a number");
                return false;
            }
            value = QVariant(parsed);
            return true;
        }
        case PkoFeatureDataBool: {
            const QString word = text.trimmed().toLower();
            if (word == QLatin1String("true") || word == QLatin1String("1")) {
                value = QVariant(true);
                return true;
            }
            if (word == QLatin1String("false") || word == QLatin1String("0")) {
                value = QVariant(false);
                return true;
            }
            expected = QStringLiteral("true or false (or 1 or 0)");
            return false;
        }
        case PkoFeatureDataEnum:
        case PkoFeatureDataString:
            value = QVariant(text);
            return true;
        default:
            expected = QStringLiteral("a feature that holds a value (not %1)").arg(TypeName(type));
            return false;
    }
}

QJsonValue SettingsValue::ToJson(const QVariant& value)
{
    switch (value.userType()) {
        case QMetaType::LongLong: {
            const qlonglong integer = value.toLongLong();
            if (integer > -kExactDoubleLimit && integer < kExactDoubleLimit)
                return QJsonValue(integer);
            return QJsonValue(QString::number(integer));
        }
        case QMetaType::Double:
            return QJsonValue(value.toDouble());
        case QMetaType::Bool:
            return QJsonValue(value.toBool());
        default:
            return QJsonValue(value.toString());
    }
}

bool SettingsValue::FromJson(PkoFeatureDataType type, const QJsonValue& json, QVariant& value, QString& expected)
{
    switch (type) {
        case PkoFeatureDataInt: {
            if (json.isDouble()) {
                const double number = json.toDouble();
                if (std::floor(number) == number && std::fabs(number) < double(kExactDoubleLimit)) {
                    value = QVariant(qlonglong(number));
                    return true;
                }
            } else if (json.isString()) {
                qlonglong parsed = 0;
                if (ParseInteger(json.toString(), parsed)) {
                    value = QVariant(parsed);
                    return true;
                }
            }
            expected = QStringLiteral("an integer");
            return false;
        }
        case PkoFeatureDataFloat:
            if (json.isDouble()) {
                value = QVariant(json.toDouble());
                return true;
            }
            expected = QStringLiteral("a number");
            return false;
        case PkoFeatureDataBool:
            if (json.isBool()) {
                value = QVariant(json.toBool());
                return true;
            }
            expected = QStringLiteral("true or false");
            return false;
        case PkoFeatureDataEnum:
            if (json.isString()) {
                value = QVariant(json.toString());
                return true;
            }
            expected = QStringLiteral("the name of an entry, in quotes");
            return false;
        case PkoFeatureDataString:
            if (json.isString()) {
                value = QVariant(json.toString());
                return true;
            }
            expected = QStringLiteral("a text in quotes");
            return false;
        default:
            expected = QStringLiteral("a feature that holds a value (not %1)").arg(TypeName(type));
            return false;
    }
}

bool SettingsValue::Equal(const QVariant& a, const QVariant& b)
{
    if (a.userType() != b.userType())
        return false;
    switch (a.userType()) {
        case QMetaType::LongLong:
            return a.toLongLong() == b.toLongLong();
        case QMetaType::Double:
            return a.toDouble() == b.toDouble();
        case QMetaType::Bool:
            return a.toBool() == b.toBool();
        default:
            return a.toString() == b.toString();
    }
}

QVariant SettingsValue::As(PkoFeatureDataType type, const QVariant& value)
{
    switch (type) {
        case PkoFeatureDataInt:
            if (value.userType() == QMetaType::LongLong)
                return value;
            if (value.userType() == QMetaType::Double) {
                const double number = value.toDouble();
                if (std::floor(number) == number && std::fabs(number) < double(kExactDoubleLimit))
                    return QVariant(qlonglong(number));
            }
            return QVariant();
        case PkoFeatureDataFloat:
            if (value.userType() == QMetaType::Double)
                return value;
            if (value.userType() == QMetaType::LongLong && std::llabs(value.toLongLong()) < kExactDoubleLimit)
                return QVariant(double(value.toLongLong()));
            return QVariant();
        case PkoFeatureDataBool:
            return value.userType() == QMetaType::Bool ? value : QVariant();
        case PkoFeatureDataEnum:
        case PkoFeatureDataString:
            return value.userType() == QMetaType::QString ? value : QVariant();
        default:
            return QVariant();
    }
}
