#ifndef GENICAMTEXT_H
#define GENICAMTEXT_H

#include "SettingsDocument.h"
#include "SettingsProblem.h"

#include <QByteArray>
#include <QString>
#include <QVector>

// The plain GenICam persistence text that other GenICam tools read and
// write: one "Name<TAB>Value" a line, "#" comment lines, and a selector's
// line before the lines of the features it selects.
//
// Writing: the header is a block of comments (model, ID, time, format),
// closed by "# End of settings" so that a file cut short is noticed when we
// read it back. A selector line precedes each run of values under one of its
// entries; a settings entry of a selector itself is a selector line that no
// selected value follows (in files of other tools, the last line of a
// selector counts so too).
//
// Reading needs no camera: which feature a selector selects comes from
// FeatureLayout's naming rule. Values stay text until SettingsChecker reads
// them by the camera's types.
class GenicamText {
public:
    static const char* const kHeader;     // first line of our files
    static const char* const kEndMarker;  // last line of our files

    // UTF-8 text; booleans as 1/0.
    static QByteArray Write(const SettingsDocument& document);
    // Reads data as persistence text named fileName (for messages). A line
    // that is no "Name<TAB>Value" (or a file of ours without its end line)
    // returns false with one problem naming the line and what was expected;
    // document is unchanged then.
    static bool Read(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                     QVector<SettingsProblem>& problems);
};

#endif  // GENICAMTEXT_H
