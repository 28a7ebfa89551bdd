#ifndef FEATUREMANAGER_H
#define FEATUREMANAGER_H

#include <PkoAPI/PkoAPI.h>

#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <string>

// The camera's feature list as the host hands it to a tab.
typedef QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> FeatureVectorPtr;

// Reads and writes camera features by name for the tab widgets.
//
// Every operation takes a primary name and up to two fallback names ("" means
// none) so that one call serves cameras that name a feature differently. No
// operation throws: a missing feature or a failed SDK call gives the fixed
// fallback result stated at each operation. Numeric writes are snapped onto
// the feature's increment grid and clamped to its range, then read back.
// GUI thread only; holds no lock and caches nothing.
class FeatureManager {
public:
    // Keeps a shared reference to the list; never changes it. A null pointer
    // behaves as an empty list.
    explicit FeatureManager(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features);

    // First feature of exactly this name (case-sensitive) in list order;
    // features whose name cannot be read are skipped. Null when none matches.
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFeature(const std::string& name);
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFeature(const char* name);
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFeature(const QString& name);
    // As above, trying the fallbacks in turn while nothing is found. Null when
    // no name matches.
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFeature(const QString& name, const QString& fallback1);
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFeature(const QString& name, const QString& fallback1,
                                                             const QString& fallback2);

    // True when a feature of one of the names exists.
    bool IsAvailable(const QString& name);
    bool IsAvailable(const QString& name, const QString& fallback1);
    bool IsAvailable(const QString& name, const QString& fallback1, const QString& fallback2);

    // The SDK's answer; false when no feature is found or the query fails.
    bool IsWritable(const QString& name);
    bool IsWritable(const QString& name, const QString& fallback1);
    bool IsWritable(const QString& name, const QString& fallback1, const QString& fallback2);

    // Value of an integer, float or boolean (0/1) feature. -1 when no feature
    // is found, the type is not numeric or an integer/float read fails; 0 when
    // a boolean read fails.
    double GetValue(const QString& name);
    double GetValue(const QString& name, const QString& fallback1);
    double GetValue(const QString& name, const QString& fallback1, const QString& fallback2);

    // Snaps value down onto the increment grid, clamps it to the range and
    // writes it when the feature is writable (a boolean takes value != 0).
    // Returns the value read back afterwards (-1, or false for a boolean, when
    // that read fails). Without a feature, or for a non-numeric type, nothing
    // is written and value is returned unchanged. A refused integer or float
    // write is logged on the debug stream; nothing is thrown.
    double SetValue(const QString& name, double value);
    double SetValue(const QString& name, const QString& fallback1, double value);
    double SetValue(const QString& name, const QString& fallback1, const QString& fallback2, double value);

    // Current value with writability, range and increment (the maximum snapped
    // onto the increment grid). Each failed read gives -1; a float increment
    // <= 0 is reported as 0.01, and an increment <= 0 leaves the maximum
    // unsnapped. Without a feature returns -1 and leaves the outputs untouched;
    // for a non-numeric type returns -1 with writable false and the rest -1.
    double GetValueWithRange(const QString& name, bool& writable, double& minimum, double& maximum, double& increment);
    double GetValueWithRange(const QString& name, const QString& fallback1, bool& writable, double& minimum,
                             double& maximum, double& increment);
    double GetValueWithRange(const QString& name, const QString& fallback1, const QString& fallback2, bool& writable,
                             double& minimum, double& maximum, double& increment);

    // GetValueWithRange without the writability and increment outputs.
    double GetRange(const QString& name, double& minimum, double& maximum);
    double GetRange(const QString& name, const QString& fallback1, double& minimum, double& maximum);
    double GetRange(const QString& name, const QString& fallback1, const QString& fallback2, double& minimum,
                    double& maximum);

    // GetValueWithRange without the writability output.
    double GetRangeAndIncrement(const QString& name, double& minimum, double& maximum, double& increment);
    double GetRangeAndIncrement(const QString& name, const QString& fallback1, double& minimum, double& maximum,
                                double& increment);
    double GetRangeAndIncrement(const QString& name, const QString& fallback1, const QString& fallback2,
                                double& minimum, double& maximum, double& increment);

    // Increment of an integer or float feature as the SDK reports it; -1 when
    // no feature is found, the type is not numeric or the read fails.
    double GetIncrement(const QString& name);
    double GetIncrement(const QString& name, const QString& fallback1);

    // The feature's data type; PkoFeatureDataUnknown when no feature is found
    // or the read fails.
    ZMT::PkoAPI::PkoFeatureDataType GetDataType(const QString& name);
    ZMT::PkoAPI::PkoFeatureDataType GetDataType(const QString& name, const QString& fallback1);
    ZMT::PkoAPI::PkoFeatureDataType GetDataType(const QString& name, const QString& fallback1,
                                                const QString& fallback2);

    // Current enumeration entry or string; "" when no feature is found or the
    // read fails.
    QString GetStringValue(const QString& name);
    QString GetStringValue(const QString& name, const QString& fallback1);

    // Writes value as 8-bit text to the feature found by name or fallback1
    // (fallback2 is accepted but not searched). Returns value in every case,
    // so a refused write cannot be told from a done one; nothing is logged.
    QString SetStringValue(const QString& name, const QString& value);
    QString SetStringValue(const QString& name, const QString& fallback1, const QString& value);
    QString SetStringValue(const QString& name, const QString& fallback1, const QString& fallback2,
                           const QString& value);

    // Enumeration entries that can be chosen now, in the camera's order.
    // Empty when no feature is found or the entries cannot be read; an entry
    // whose availability query fails is left out.
    QStringList GetAvailableValues(const QString& name);
    QStringList GetAvailableValues(const QString& name, const QString& fallback1);

    // Whether entry can be chosen now; false when no feature is found or the
    // query fails.
    bool IsValueAvailable(const QString& name, const QString& entry);

    // Executes a command feature. True only when the SDK reported an error;
    // a missing feature gives false, like a successful command.
    bool RunCommand(const QString& name);

    // Display name of the feature found; "" when none is found or the read fails.
    QString GetDisplayName(const QString& name);
    QString GetDisplayName(const QString& name, const QString& fallback1);
    QString GetDisplayName(const QString& name, const QString& fallback1, const QString& fallback2);
    // Display name of the first candidate that exists; "" as above.
    QString GetDisplayName(const QStringList& candidates);

    // The SDK's name of the first candidate that exists; "" when none does.
    QString GetFeatureName(const QStringList& candidates);

    // Category path such as "/AcquisitionControl"; "" when no feature is
    // found or the read fails.
    QString GetCategory(const QString& name);

    // Snaps value down onto the grid minimum + k * increment; never returns
    // more than value. The factor 1.000000000001 keeps values that lie on the
    // grid from dropping a step through rounding error.
    static double AlignToIncrement(double minimum, double value, double increment);

private:
    // Shared by GetValueWithRange, GetRange and GetRangeAndIncrement; null
    // outputs are not wanted.
    double ReadValueAndRange(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature, bool* writable,
                             double* minimum, double* maximum, double* increment);
    // First candidate that exists, or null.
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> GetFirstFeature(const QStringList& candidates);

    QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> m_Features;
};

#endif
