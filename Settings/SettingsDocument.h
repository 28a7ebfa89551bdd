#ifndef SETTINGSDOCUMENT_H
#define SETTINGSDOCUMENT_H

#include "SettingsEntry.h"

#include <QDateTime>
#include <QString>
#include <QVector>

// The contents of a settings file: where the values came from and the
// values in the order they must be written. A selected feature appears once
// per entry of its selector; an entry for the selector itself (no selector
// of its own) is the entry the selector is left at.
struct SettingsDocument {
    // The version this program writes and the newest it reads.
    static const int kFormatVersion = 1;

    int formatVersion = kFormatVersion;
    QString cameraModel;
    QString cameraId;
    QDateTime saved;   // UTC; invalid when the file does not say
    QString scope;     // "all" or "trigger-io"; empty when the file does not say
    QString fileName;  // where it was read from or written to; used in messages
    QVector<SettingsEntry> entries;
};

#endif  // SETTINGSDOCUMENT_H
