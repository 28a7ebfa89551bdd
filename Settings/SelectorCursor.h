#ifndef SELECTORCURSOR_H
#define SELECTORCURSOR_H

#include "FeatureLayout.h"

#include <QHash>
#include <QString>
#include <QStringList>

// Moves selectors for the reads and writes of selected features, and puts
// them back where they were: the selector round trip of FeatureLayout's
// write order. Remembers where each selector stands, so a selector is only
// written when it has to move. Assumes nobody else moves the camera's
// selectors meanwhile. Not thread-safe; one per save, load or comparison.
class SelectorCursor {
public:
    // layout must outlive the cursor.
    explicit SelectorCursor(const FeatureLayout& layout) : m_Layout(layout) {}

    // Makes selector stand at entry. The first use of a selector reads
    // where it stands (its home, where Restore puts it back); entry is
    // written unless the selector stands there already. Returns the SDK's
    // code of the read or write that failed (PkoErrorNotFound for a selector
    // the camera lacks); the selector has not moved then.
    int Select(const QString& selector, const QString& entry);
    // Where the selector stands before the cursor moves it (read on first
    // use). Returns the SDK's code; entry is unchanged on failure.
    int Home(const QString& selector, QString& entry);
    // The selector itself was written to entry on purpose (a settings entry
    // of its own): it stands there now, and Restore puts it back there.
    void Written(const QString& selector, const QString& entry);
    // The state of the selector is no longer known (a write of it failed
    // half-way): the next use reads it again. Its home is kept.
    void Forget(const QString& selector);

    // Puts the selector back home when it stands elsewhere. Returns the SDK
    // code of the failed write, PkoErrorSuccess when nothing had to be done.
    int Restore(const QString& selector);
    // Restore for every selector used, the most recently first used first;
    // tries all and returns the first failure's code.
    int RestoreAll();

    // Selector writes made so far.
    int Moves() const { return m_Moves; }

private:
    int Current(const QString& selector, QString& entry);

    const FeatureLayout& m_Layout;
    QHash<QString, QString> m_Current;  // where a selector stands, when known
    QHash<QString, QString> m_Home;
    QStringList m_Used;  // order of first use
    int m_Moves = 0;
};

#endif  // SELECTORCURSOR_H
