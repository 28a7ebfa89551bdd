#ifndef LINEPROBE_H
#define LINEPROBE_H

#include "MonitorLine.h"

#include <QString>
#include <QStringList>
#include <QVector>

class FeatureManager;

// Knows the three generations of I/O feature names and reads the camera's
// lines through them: which lines there are, how each is set up, and the
// levels of all of them at once.
//
//   standard: "LineSelector" lines with "LineMode", "LineSource",
//     "LineInverter"; levels in "LineStatusAll" (bit i = line i) or, without
//     it, "LineStatus" of each line through the selector;
//   "SyncOut*": inputs SyncIn1.. with levels in "SyncInLevels", outputs of
//     "SyncOutSelector" with "SyncOutSource"/"SyncOutPolarity" and levels in
//     "SyncOutLevels";
//   "LineOut*": the same with "LineIn*" and "LineOut*".
//
// GUI thread only, like the FeatureManager it reads through.
class LineProbe {
public:
    enum class Family { None, Standard, SyncOut, LineOut };

    explicit LineProbe(FeatureManager* manager);

    // Finds the family and the lines; false when the camera shows no line
    // levels at all (then there is nothing to monitor).
    bool Probe();
    Family GetFamily() const { return m_Family; }
    // Whether one read of a level mask gives every line's level (per family
    // one or two masks); otherwise each line costs a selector round trip.
    bool HasStatusMask() const { return !m_Masks.isEmpty(); }
    // The mask features read per poll ("LineStatusAll", or the inputs' and
    // outputs' masks); empty without masks.
    const QStringList& MaskFeatures() const { return m_Masks; }

    const QVector<MonitorLine>& Lines() const { return m_Lines; }
    // Re-reads direction, source and inversion of every line through the
    // selector round trip; the lines themselves stay.
    void ReadSetup();
    // The features whose changes change a line's setup.
    QStringList SetupFeatures() const;

    // Levels of all lines now, bit i = Lines()[i]. False, leaving levels
    // alone, when a read fails.
    bool ReadLevels(unsigned long long& levels);

private:
    FeatureManager* m_Manager;
    Family m_Family = Family::None;
    QVector<MonitorLine> m_Lines;
    QStringList m_Masks;
    QString m_Selector;
};

#endif
