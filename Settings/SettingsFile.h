#ifndef SETTINGSFILE_H
#define SETTINGSFILE_H

#include "SettingsDocument.h"
#include "SettingsProblem.h"

#include <QByteArray>
#include <QString>
#include <QVector>

// Settings files on disk in either format.
class SettingsFile {
public:
    enum class Format { Json, GenicamText };

    // "json" or "genicam"; false for any other name.
    static bool FormatFromName(const QString& name, Format& format);
    // JSON when the first character that is no white space is '{' (or the
    // data is empty), persistence text otherwise.
    static Format Detect(const QByteArray& data);

    // Reads and parses the file in the format its contents show. On failure
    // (unreadable, syntax or layout error) returns false with the problem
    // in problems and leaves document unchanged; entry problems that do not
    // stop the reading are added to problems as well (see SettingsJson).
    static bool Read(const QString& path, SettingsDocument& document, QVector<SettingsProblem>& problems);
    static bool Parse(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                      QVector<SettingsProblem>& problems);

    // Writes the document in format, replacing the file only once the
    // whole of it has been written. False, with the reason in error, when
    // it cannot be written; an existing file is then left as it was.
    static bool Write(const QString& path, const SettingsDocument& document, Format format, QString& error);
};

#endif  // SETTINGSFILE_H
