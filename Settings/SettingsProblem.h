#ifndef SETTINGSPROBLEM_H
#define SETTINGSPROBLEM_H

#include <QString>
#include <QVector>

// Something wrong with a settings file, found while reading it or while
// checking it against a camera. Errors keep a file from being loaded (unless
// a partial load is asked for); warnings are only shown.
struct SettingsProblem {
    enum class Kind {
        File,            // the file cannot be read or written
        Syntax,          // not JSON / not persistence text
        Format,          // JSON, but not laid out as a settings file
        UnknownFeature,  // the camera has no feature of that name
        UnknownEntry,    // an enumeration or selector entry the camera lacks
        WrongType,       // the value does not fit the feature's type
        OutOfRange,      // outside the feature's range
        NotSettable,     // a command or raw block: never part of settings
        Note,            // worth knowing, loads anyway (a warning)
    };

    Kind kind = Kind::Note;
    QString file;
    int line = 0;     // 0: the problem belongs to no line
    QString entry;    // the entry's key ("TriggerMode@TriggerSelector=FrameStart"); may be empty
    QString message;  // says what was found and, for syntax errors, what was expected

    bool IsError() const { return kind != Kind::Note; }

    // "file:line: entry: message", leaving out what is unknown.
    QString ToText() const
    {
        QString text;
        if (!file.isEmpty())
            text += file + (line > 0 ? QStringLiteral(":%1: ").arg(line) : QStringLiteral(": "));
        else if (line > 0)
            text += QStringLiteral("line %1: ").arg(line);
        if (!entry.isEmpty())
            text += entry + QStringLiteral(": ");
        return text + message;
    }

    // Machine-readable name of the kind ("unknown-feature").
    static QString KindName(Kind kind)
    {
        switch (kind) {
            case Kind::File:
                return QStringLiteral("file");
            case Kind::Syntax:
                return QStringLiteral("syntax");
            case Kind::Format:
                return QStringLiteral("format");
            case Kind::UnknownFeature:
                return QStringLiteral("unknown-feature");
            case Kind::UnknownEntry:
                return QStringLiteral("unknown-entry");
            case Kind::WrongType:
                return QStringLiteral("wrong-type");
            case Kind::OutOfRange:
                return QStringLiteral("out-of-range");
            case Kind::NotSettable:
                return QStringLiteral("not-settable");
            case Kind::Note:
                break;
        }
        return QStringLiteral("note");
    }

    static bool HasErrors(const QVector<SettingsProblem>& problems)
    {
        for (const SettingsProblem& problem : problems) {
            if (problem.IsError())
                return true;
        }
        return false;
    }
};

#endif  // SETTINGSPROBLEM_H
