#ifndef SETTINGSJSON_H
#define SETTINGSJSON_H

#include "SettingsDocument.h"
#include "SettingsProblem.h"

#include <QByteArray>
#include <QString>
#include <QVector>

// Our settings file format, JSON read and written with Qt's JSON classes:
//
//   {
//     "format": "pelko-camera-settings", "formatVersion": 1,
//     "camera": {"model": "...", "id": "..."},
//     "saved": "2025-01-31T12:00:00Z", "only": "all" | "trigger-io",
//     "features": [
//       {"name": "TriggerSelector", "type": "Enumeration", "value": "FrameStart"},
//       {"name": "TriggerMode", "selector": "TriggerSelector", "entry": "FrameStart",
//        "type": "Enumeration", "value": "Off"}, ...
//     ]
//   }
//
// "features" lists the values in the order they are written; "type" and the
// header fields may be left out by hand-made files.
class SettingsJson {
public:
    static const char* const kFormatName;  // "pelko-camera-settings"

    static QByteArray Write(const SettingsDocument& document);

    // Reads data as a settings file named fileName (for messages). A syntax
    // error, or a file that is no settings file at all, returns false with
    // one problem naming the line and what was expected; document is
    // unchanged then. Otherwise returns true and fills document with every
    // usable entry; an entry that is not usable (no name, a value that does
    // not fit its "type") is left out and listed as an error in problems,
    // with its line.
    static bool Read(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                     QVector<SettingsProblem>& problems);

    // The line (from 1) where each element of the top-level "features"
    // array starts, in order; data must be valid JSON. Qt's parser keeps no
    // positions, so this follows strings and brackets to find them.
    static QVector<int> FeatureLines(const QByteArray& data);
    // The line (from 1) of a byte offset.
    static int LineOf(const QByteArray& data, int offset);
};

#endif  // SETTINGSJSON_H
