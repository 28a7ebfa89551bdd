#ifndef SELECTORROUNDTRIP_H
#define SELECTORROUNDTRIP_H

#include <QString>

class FeatureManager;

// Moves a selector to an entry for a few reads or writes and puts it back
// where the user left it, at the latest when it goes out of scope. A
// selector that already shows the entry is not written at all.
class SelectorRoundTrip {
public:
    SelectorRoundTrip(FeatureManager& manager, const QString& selector);
    ~SelectorRoundTrip();
    SelectorRoundTrip(const SelectorRoundTrip&) = delete;
    SelectorRoundTrip& operator=(const SelectorRoundTrip&) = delete;

    // False when the selector does not exist or does not show the entry
    // after the write.
    bool Select(const QString& entry);
    // Writes the kept entry back if the selector moved; false when the
    // selector does not show it afterwards.
    bool Restore();
    QString Kept() const { return m_Kept; }

private:
    FeatureManager& m_Manager;
    QString m_Selector;
    QString m_Kept;
    bool m_Moved = false;
};

#endif
