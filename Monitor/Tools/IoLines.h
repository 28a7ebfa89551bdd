#ifndef IOLINES_H
#define IOLINES_H

#include <QString>
#include <QStringList>

class FeatureManager;

// The camera's digital lines under the three namings: "Line*" lines with a
// direction each ("LineSource", "LineInverter", user outputs with
// "UserOutputSelector"/"UserOutputValue"), and the "SyncOut*" and "LineOut*"
// outputs with a "...Polarity" and a "...Levels" bit mask whose bits drive
// the "GPO" outputs, beside inputs shown in "SyncInLevels"/"LineInLevels".
// Every access that needs a selector moves it and puts it back.
class IoLines {
public:
    enum class Naming { None, Lines, SyncOut, LineOut };

    explicit IoLines(FeatureManager& manager);

    Naming Kind() const { return m_Naming; }
    QString SelectorName() const;
    QString SourceName() const;
    QString InverterName() const;

    // Output and input lines in the camera's order.
    QStringList Outputs() const;
    QStringList Inputs() const;

    // False (outputs untouched) when a read fails.
    bool ReadSource(const QString& output, QString& source) const;
    bool ReadInverted(const QString& output, bool& inverted) const;
    // The value the output shows when a user output drives it: for "Line*"
    // that user output's "UserOutputValue", for the bit masks the output's
    // bit as written (its level, taken back through the polarity of a "GPO"
    // output).
    bool ReadUserValue(const QString& output, const QString& source, bool& value) const;
    bool ReadInputLevel(const QString& input, bool& high) const;

    // Sources of the output that a user output drives, in the camera's order.
    QStringList UserSources(const QString& output) const;
    static bool IsUserSource(const QString& source);

    // Each write is read back; false when the camera does not show the value.
    bool WriteSource(const QString& output, const QString& source) const;
    bool WriteInverted(const QString& output, bool inverted) const;
    bool WriteUserValue(const QString& output, const QString& source, bool value) const;

private:
    QString MaskName() const;
    QString InputMaskName() const;
    int OutputBit(const QString& output) const;
    // The bit mask as written: levels with the "GPO" outputs' polarity undone.
    bool ReadWrittenMask(long long& mask) const;

    FeatureManager& m_Manager;
    Naming m_Naming = Naming::None;
};

#endif
