#ifndef LOADREPORT_H
#define LOADREPORT_H

#include "SettingsDocument.h"
#include "SettingsEntry.h"
#include "SettingsProblem.h"

#include <QMetaType>
#include <QString>
#include <QVariant>
#include <QVector>

// What became of one entry of a settings file when it was loaded.
struct EntryResult {
    enum class Outcome {
        Applied,       // written, and read back as in the file
        Adjusted,      // written, but the camera holds another value (snapped, clamped)
        Refused,       // the camera refused the write (code says why)
        NotAvailable,  // not writable now (locked, e.g. while acquiring)
        Skipped,       // not written: the check found a problem with it
        NotWritten,    // not reached: the load was cancelled, stopped or the camera lost
    };

    SettingsEntry entry;  // as in the file (value converted to the camera's type)
    Outcome outcome = Outcome::NotWritten;
    QVariant written;   // what was written (the file's value on the increment grid)
    QVariant readBack;  // what the camera held afterwards; invalid when unread
    int code = 0;       // the SDK's code of a failed write
    QString message;    // why it was refused, skipped or not written
    int attempts = 0;   // writes tried

    bool IsProblem() const { return outcome != Outcome::Applied; }
    bool IsFailure() const { return outcome == Outcome::Refused || outcome == Outcome::NotAvailable; }
    // "applied", "adjusted", "refused", "not available", "skipped", "not written"
    static QString OutcomeName(Outcome outcome);
};

// The whole account of a load: the check, every entry's result, the kept
// values and what a rollback did.
struct LoadReport {
    enum class Status {
        Done,          // every entry was tried
        FileRejected,  // the check found errors and no partial load was asked for: nothing written
        BackupFailed,  // the kept values could not be read or stored: nothing written
        Cancelled,     // stopped by the user; results say what was written
        Stopped,       // stopped at the first failure (stop or rollback on error)
        CameraLost,    // the camera stopped answering; results say what was written
    };

    Status status = Status::Done;
    QString statusMessage;              // one line about the status, for people
    QVector<SettingsProblem> problems;  // what the check found
    QVector<EntryResult> results;       // one per entry of the file, in its order
    SettingsDocument backup;            // the values kept before the first write
    bool rolledBack = false;            // the kept values were written back
    bool rollbackComplete = false;      // ... and every one of them read back as kept
    QVector<EntryResult> rollback;      // the results of writing them back

    int Count(EntryResult::Outcome outcome) const;
    // Every entry applied or adjusted, and no rollback: what exit code 0 means.
    bool AllApplied() const;
};

Q_DECLARE_METATYPE(LoadReport)
Q_DECLARE_METATYPE(EntryResult)

#endif  // LOADREPORT_H
