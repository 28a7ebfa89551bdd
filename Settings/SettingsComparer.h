#ifndef SETTINGSCOMPARER_H
#define SETTINGSCOMPARER_H

#include "FeatureLayout.h"
#include "SettingsDocument.h"
#include "SettingsProblem.h"

#include <PkoAPI/Camera.h>

#include <QString>
#include <QVariant>
#include <QVector>

// One entry of a settings file whose value the camera does not hold.
struct SettingsDifference {
    enum class Kind {
        Different,   // the camera holds another value
        Missing,     // the camera lacks the feature or entry, or the file's value does not fit it
        Unreadable,  // the camera's value cannot be read (or selected) now
    };
    Kind kind = Kind::Different;
    SettingsEntry entry;   // as in the file
    QVariant cameraValue;  // Different only
    QString message;       // Missing and Unreadable: why

    static QString KindName(Kind kind);
};

// Compares a camera with a settings file, entry by entry.
class SettingsComparer {
public:
    // Checks the file against the camera (SettingsChecker: entries that fail
    // are differences of kind Missing) and reads the camera's value of every
    // other entry, moving selectors for that and putting them back (the
    // only writes made). differences gets the entries that differ, in the
    // file's order; equal counts the equal ones. Returns PkoErrorSuccess,
    // or the code with which the camera stopped answering (differences
    // then hold what was compared before).
    static int Compare(const ZMT::PkoAPI::CameraPtr& camera, const FeatureLayout& layout,
                       const SettingsDocument& document, QVector<SettingsDifference>& differences, int& equal,
                       QVector<SettingsProblem>& notes);
};

#endif  // SETTINGSCOMPARER_H
