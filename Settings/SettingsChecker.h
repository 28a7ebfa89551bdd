#ifndef SETTINGSCHECKER_H
#define SETTINGSCHECKER_H

#include "FeatureLayout.h"
#include "SettingsDocument.h"
#include "SettingsProblem.h"

#include <QString>
#include <QVariant>
#include <QVector>

#include <algorithm>

// What checking a settings file against a camera found.
struct SettingsCheck {
    QVector<SettingsProblem> problems;  // errors and notes, in the file's order
    QVector<bool> usable;               // per entry of the document: may be written
    QVector<QVariant> toWrite;          // per usable entry: the value snapped onto the increment grid
    QVector<QString> reasons;           // per unusable entry: its error's message
    bool cameraLost = false;            // the camera stopped answering during the check

    bool HasErrors() const { return SettingsProblem::HasErrors(problems); }
    int UsableCount() const { return int(std::count(usable.begin(), usable.end(), true)); }
};

// Checks every entry of a settings file against the camera before anything
// is written: the camera has the feature (and the selector with that entry),
// it holds a value (no command), the value has the feature's type, names one
// of its entries, lies in its range. Off the increment grid is a note (the
// value is snapped when written), so is a file saved from another model.
//
// Reads names, types, entry lists and ranges only: writes nothing and moves
// no selector, so the range of a selected feature is the one at its
// selector's current entry. Thread-safe as far as the SDK is.
class SettingsChecker {
public:
    // Converts every usable entry of document in place to the camera's type
    // (texts of persistence files become numbers, booleans ...). Entries
    // that fail are marked unusable and each gets an error in the result;
    // they are left unchanged. A camera that stops answering while being
    // checked makes the entries left unusable with a File-kind error each.
    static SettingsCheck Check(SettingsDocument& document, const FeatureLayout& layout, const QString& cameraModel);
};

#endif  // SETTINGSCHECKER_H
