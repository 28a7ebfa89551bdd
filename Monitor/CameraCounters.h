#ifndef CAMERACOUNTERS_H
#define CAMERACOUNTERS_H

#include <QMap>
#include <QString>

class FeatureManager;

// The camera's event counters the monitor shows: which "CounterSelector"
// entry counts frames ("FrameEnd"), frame triggers ("FrameTrigger") and
// missed frame triggers ("FrameTriggerMissed"), their values and their
// reset, each through a selector round trip.
class CameraCounters {
public:
    enum Kind { Frames, FrameTriggers, MissedTriggers };
    static constexpr int kKinds = 3;

    explicit CameraCounters(FeatureManager* manager);

    // Finds the counters by their event sources; false when the camera has none.
    bool Probe();
    bool Has(Kind kind) const { return m_Entries.contains(kind); }
    // Whether "CounterReset" exists and can be run now.
    bool CanReset();

    // Reads every counter found; a counter whose read fails keeps its value.
    // Returns false when any read failed.
    bool Read();
    // -1 for a counter the camera lacks.
    long long Value(Kind kind) const { return m_Values.value(kind, -1); }

    // Resets every counter found; false when any reset was refused.
    bool Reset();

private:
    FeatureManager* m_Manager;
    QMap<int, QString> m_Entries;
    QMap<int, long long> m_Values;
};

#endif
