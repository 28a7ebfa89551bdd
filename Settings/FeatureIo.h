#ifndef FEATUREIO_H
#define FEATUREIO_H

#include <PkoAPI/Feature.h>

#include <QString>
#include <QStringList>
#include <QVariant>

// The SDK calls the settings code makes on one feature, with values as
// QVariant (see SettingsValue). Every function returns the SDK's code
// (PkoErrorSuccess or a negative PkoErrorCode), never throws, and leaves its
// outputs unchanged on failure. A null feature gives PkoErrorBadHandle.
class FeatureIo {
public:
    static QString Name(const ZMT::PkoAPI::FeaturePtr& feature);
    static QString Category(const ZMT::PkoAPI::FeaturePtr& feature);

    // Reads the value in the form that fits type.
    static int Read(const ZMT::PkoAPI::FeaturePtr& feature, ZMT::PkoAPI::PkoFeatureDataType type, QVariant& value);
    // Writes value, which must already have the form of type
    // (PkoErrorWrongType otherwise).
    static int Write(const ZMT::PkoAPI::FeaturePtr& feature, ZMT::PkoAPI::PkoFeatureDataType type,
                     const QVariant& value);

    // Minimum, maximum and increment of an integer or float feature, as
    // qlonglong or double; a float without increment reports 0.0.
    static int Range(const ZMT::PkoAPI::FeaturePtr& feature, ZMT::PkoAPI::PkoFeatureDataType type, QVariant& minimum,
                     QVariant& maximum, QVariant& increment);
    // Every entry of an enumeration in the camera's order.
    static int Entries(const ZMT::PkoAPI::FeaturePtr& feature, QStringList& entries);

    // value moved onto the grid minimum + k * increment (to the nearest
    // point), for integers and floats with an increment; any other value as
    // it is. The range is not applied.
    static QVariant Snap(const QVariant& value, const QVariant& minimum, const QVariant& increment);

    // True for the codes that mean the camera is gone or not answering: the
    // work on it has to stop.
    static bool IsLost(int code);
    // "PkoErrorInvalidValue"
    static QString ErrorName(int code);
};

#endif  // FEATUREIO_H
