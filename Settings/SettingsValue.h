#ifndef SETTINGSVALUE_H
#define SETTINGSVALUE_H

#include <PkoAPI/PkoCommonTypes.h>

#include <QJsonValue>
#include <QString>
#include <QVariant>

// Conversions of feature values between the camera's types, JSON and text.
// A value is a QVariant holding qlonglong (integer), double (float), bool
// (boolean) or QString (enumeration, string). Nothing here talks to a camera.
class SettingsValue {
public:
    // "Integer", "Float", "Boolean", "Enumeration", "String", "Command",
    // "Raw", "Unknown".
    static QString TypeName(ZMT::PkoAPI::PkoFeatureDataType type);
    // The type of a TypeName text; PkoFeatureDataUnknown for any other text.
    static ZMT::PkoAPI::PkoFeatureDataType TypeFromName(const QString& name);
    // Integer, float, boolean, enumeration and string features hold a value
    // that settings can keep.
    static bool IsSettable(ZMT::PkoAPI::PkoFeatureDataType type);

    // Text for people and for persistence text: integers in decimal, floats
    // in the shortest text that reads back to the same double, booleans
    // "true"/"false", texts as they are.
    static QString ToText(const QVariant& value);
    // Parses text as a value of type: decimal or 0x-hexadecimal integers,
    // floats in C notation (finite only), booleans true/false/1/0 in any
    // case, texts as they are. False, with what was expected in expected,
    // when the text does not fit; value is unchanged then.
    static bool FromText(ZMT::PkoAPI::PkoFeatureDataType type, const QString& text, QVariant& value, QString& expected);

    // JSON form: numbers (integers beyond 2^53 as decimal text, which JSON
    // numbers would round), true/false, strings.
    static QJsonValue ToJson(const QVariant& value);
    // Reads a JSON value as a value of type: an integer needs an integral
    // number or decimal text, a float any number, a boolean true/false,
    // enumerations and strings a string. False, with what was expected,
    // when it does not fit.
    static bool FromJson(ZMT::PkoAPI::PkoFeatureDataType type, const QJsonValue& json, QVariant& value,
                         QString& expected);

    // Same type and same value (floats bit for bit, but 0.0 equals -0.0).
    static bool Equal(const QVariant& a, const QVariant& b);
    // The value as the type it is for: converts qlonglong <-> double where
    // exact. Returns an invalid QVariant when it cannot.
    static QVariant As(ZMT::PkoAPI::PkoFeatureDataType type, const QVariant& value);
};

#endif  // SETTINGSVALUE_H
