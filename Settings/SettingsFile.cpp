#include "SettingsFile.h"

#include "GenicamText.h"
#include "SettingsJson.h"

#include <QFile>
#include <QSaveFile>

bool SettingsFile::FormatFromName(const QString& name, Format& format)
{
    if (name == QLatin1String("json")) {
        format = Format::Json;
        return true;
    }
    if (name == QLatin1String("genicam")) {
        format = Format::GenicamText;
        return true;
    }
    return false;
}

SettingsFile::Format SettingsFile::Detect(const QByteArray& data)
{
    for (const char c : data) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            continue;
        return c == '{' ? Format::Json : Format::GenicamText;
    }
    return Format::Json;
}

bool SettingsFile::Read(const QString& path, SettingsDocument& document, QVector<SettingsProblem>& problems)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        SettingsProblem problem;
        problem.kind = SettingsProblem::Kind::File;
        problem.file = path;
        problem.message = QStringLiteral("cannot read the file: %1").arg(file.errorString());
        problems.append(problem);
        return false;
    }
    return Parse(file.readAll(), path, document, problems);
}

bool SettingsFile::Parse(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                         QVector<SettingsProblem>& problems)
{
    if (Detect(data) == Format::Json)
        return SettingsJson::Read(data, fileName, document, problems);
    return GenicamText::Read(data, fileName, document, problems);
}

bool SettingsFile::Write(const QString& path, const SettingsDocument& document, Format format, QString& error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray data = format == Format::Json ? SettingsJson::Write(document) : GenicamText::Write(document);
    if (file.write(data) != data.size() || !file.commit()) {
        error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    return true;
}
