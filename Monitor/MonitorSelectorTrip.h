#ifndef MONITORSELECTORTRIP_H
#define MONITORSELECTORTRIP_H

#include <QString>

class FeatureManager;

// Reaches the features behind a selector one entry at a time and puts the
// selector back as it was when the object goes: save, select, act, restore.
// The selector is written only when it has to move, so a round trip over
// the entry that is selected already writes nothing.
class MonitorSelectorTrip {
public:
    // Reads the selector's current entry; manager must outlive the object.
    MonitorSelectorTrip(FeatureManager* manager, const QString& selector);
    // Writes the saved entry back when the selector was moved. Cannot fail
    // loudly: a refused write leaves the selector where it is.
    ~MonitorSelectorTrip();
    MonitorSelectorTrip(const MonitorSelectorTrip&) = delete;
    MonitorSelectorTrip& operator=(const MonitorSelectorTrip&) = delete;

    // Moves the selector to entry; false when the camera did not take it
    // (read back), in which case the caller should not trust what it reads.
    bool Select(const QString& entry);

private:
    FeatureManager* m_Manager;
    QString m_Selector;
    QString m_Saved;
    QString m_Current;
};

#endif
