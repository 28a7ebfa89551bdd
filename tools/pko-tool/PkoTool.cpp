#include "PkoTool.h"

#include "FeatureIo.h"
#include "FeatureLayout.h"
#include "LoadReport.h"
#include "SelectorCursor.h"
#include "SettingsChecker.h"
#include "SettingsComparer.h"
#include "SettingsFile.h"
#include "SettingsLoader.h"
#include "SettingsSaver.h"
#include "SettingsValue.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTextStream>

#include <string>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

const char* const kWriterName = "pko-tool";

// One NAME[@SELECTOR=ENTRY][=VALUE] argument.
struct Target {
    QString feature;
    QString selector;
    QString entry;
    QString value;
    bool hasValue = false;

    QString Key() const { return selector.isEmpty() ? feature : feature + '@' + selector + '=' + entry; }
};

bool ParseTarget(const QString& text, bool withValue, Target& target)
{
    QString rest = text;
    const int at = rest.indexOf(QLatin1Char('@'));
    const int equals = rest.indexOf(QLatin1Char('='));
    if (at >= 0 && (equals < 0 || at < equals)) {
        target.feature = rest.left(at);
        rest = rest.mid(at + 1);
        const int selectorEnd = rest.indexOf(QLatin1Char('='));
        if (selectorEnd <= 0)
            return false;
        target.selector = rest.left(selectorEnd);
        rest = rest.mid(selectorEnd + 1);
        const int entryEnd = rest.indexOf(QLatin1Char('='));
        if (withValue) {
            if (entryEnd <= 0)
                return false;
            target.entry = rest.left(entryEnd);
            target.value = rest.mid(entryEnd + 1);
            target.hasValue = true;
        } else {
            if (entryEnd >= 0 || rest.isEmpty())
                return false;
            target.entry = rest;
        }
    } else if (withValue) {
        if (equals <= 0)
            return false;
        target.feature = rest.left(equals);
        target.value = rest.mid(equals + 1);
        target.hasValue = true;
    } else {
        if (equals >= 0)
            return false;
        target.feature = rest;
    }
    return !target.feature.isEmpty();
}

QJsonValue JsonValue(const QVariant& value)
{
    return value.isValid() ? SettingsValue::ToJson(value) : QJsonValue();
}

QJsonObject JsonEntry(const SettingsEntry& entry)
{
    QJsonObject object;
    object.insert(QStringLiteral("name"), entry.feature);
    if (entry.IsSelected()) {
        object.insert(QStringLiteral("selector"), entry.selector);
        object.insert(QStringLiteral("entry"), entry.selectorEntry);
    }
    object.insert(QStringLiteral("key"), entry.Key());
    return object;
}

QJsonObject JsonProblem(const SettingsProblem& problem)
{
    QJsonObject object;
    object.insert(QStringLiteral("kind"), SettingsProblem::KindName(problem.kind));
    object.insert(QStringLiteral("error"), problem.IsError());
    object.insert(QStringLiteral("file"), problem.file);
    if (problem.line > 0)
        object.insert(QStringLiteral("line"), problem.line);
    if (!problem.entry.isEmpty())
        object.insert(QStringLiteral("entry"), problem.entry);
    object.insert(QStringLiteral("message"), problem.message);
    object.insert(QStringLiteral("text"), problem.ToText());
    return object;
}

QJsonArray JsonProblems(const QVector<SettingsProblem>& problems)
{
    QJsonArray array;
    for (const SettingsProblem& problem : problems)
        array.append(JsonProblem(problem));
    return array;
}

QJsonObject JsonResult(const EntryResult& result)
{
    QJsonObject object = JsonEntry(result.entry);
    object.insert(QStringLiteral("outcome"), EntryResult::OutcomeName(result.outcome));
    object.insert(QStringLiteral("value"), JsonValue(result.entry.value));
    if (result.attempts > 0) {
        object.insert(QStringLiteral("written"), JsonValue(result.written));
        object.insert(QStringLiteral("readBack"), JsonValue(result.readBack));
    }
    if (result.code != PkoErrorSuccess)
        object.insert(QStringLiteral("error"), FeatureIo::ErrorName(result.code));
    if (!result.message.isEmpty())
        object.insert(QStringLiteral("message"), result.message);
    return object;
}

QString StatusName(LoadReport::Status status)
{
    switch (status) {
        case LoadReport::Status::Done:
            return QStringLiteral("done");
        case LoadReport::Status::FileRejected:
            return QStringLiteral("file-rejected");
        case LoadReport::Status::BackupFailed:
            return QStringLiteral("backup-failed");
        case LoadReport::Status::Cancelled:
            return QStringLiteral("cancelled");
        case LoadReport::Status::Stopped:
            return QStringLiteral("stopped");
        case LoadReport::Status::CameraLost:
            break;
    }
    return QStringLiteral("camera-lost");
}

// "minimum 10, maximum 1000000, increment 1" or "entries Off, On"; empty
// when the camera does not say.
QString Limits(const FeatureLayout::Item& item, QJsonObject& json)
{
    if (item.type == PkoFeatureDataInt || item.type == PkoFeatureDataFloat) {
        QVariant minimum;
        QVariant maximum;
        QVariant increment;
        if (FeatureIo::Range(item.feature, item.type, minimum, maximum, increment) != PkoErrorSuccess)
            return QString();
        json.insert(QStringLiteral("minimum"), JsonValue(minimum));
        json.insert(QStringLiteral("maximum"), JsonValue(maximum));
        json.insert(QStringLiteral("increment"), JsonValue(increment));
        return QStringLiteral("minimum %1, maximum %2, increment %3")
            .arg(SettingsValue::ToText(minimum), SettingsValue::ToText(maximum), SettingsValue::ToText(increment));
    }
    if (item.type == PkoFeatureDataEnum) {
        QStringList entries;
        if (FeatureIo::Entries(item.feature, entries) != PkoErrorSuccess)
            return QString();
        QStringList available;
        for (const QString& entry : entries) {
            bool usable = false;
            if (item.feature->IsValueAvailable(entry.toUtf8().constData(), usable) == PkoErrorSuccess && usable)
                available << entry;
        }
        json.insert(QStringLiteral("entries"), QJsonArray::fromStringList(available));
        return QStringLiteral("entries %1").arg(available.join(QStringLiteral(", ")));
    }
    return QString();
}

QString FormatName(SettingsFile::Format format)
{
    return format == SettingsFile::Format::Json ? QStringLiteral("json") : QStringLiteral("genicam");
}

SettingsFile::Format FormatForPath(const QString& path)
{
    return path.endsWith(QLatin1String(".txt"), Qt::CaseInsensitive) ||
                   path.endsWith(QLatin1String(".pfs"), Qt::CaseInsensitive)
               ? SettingsFile::Format::GenicamText
               : SettingsFile::Format::Json;
}

}  // namespace

QString PkoTool::HelpText()
{
    return QStringLiteral(
        "Usage: pko-tool [--json] COMMAND [ARGUMENTS] [OPTIONS]\n"
        "\n"
        "Reads, writes, saves and loads the settings of the cameras the Pelko SDK\n"
        "reaches: its simulated models and the GenICam cameras Aravis finds.\n"
        "\n"
        "Commands:\n"
        "  list\n"
        "      The cameras, one a line: ID, model, name.\n"
        "  features CAMERA [--category C]\n"
        "      Name, type, access, value and range of every feature (or of one category).\n"
        "  get CAMERA NAME[@SELECTOR=ENTRY]...\n"
        "      Reads values, under a selector's entry where given.\n"
        "  set CAMERA NAME[@SELECTOR=ENTRY]=VALUE...\n"
        "      Writes values and prints what the camera read back; minimum, maximum\n"
        "      and increment (or the entries) when a write is refused or adjusted.\n"
        "  save CAMERA FILE [--only trigger-io] [--format json|genicam]\n"
        "      Saves every feature that is readable and writable now (or only the\n"
        "      trigger and I/O features) in the order they must be written.\n"
        "      The format follows the file name (.txt, .pfs: GenICam text) unless given.\n"
        "  load CAMERA FILE [--dry-run] [--partial] [--stop-on-error]\n"
        "                   [--rollback-on-error] [--backup FILE] [--verbose] [--progress]\n"
        "      Checks the whole file, keeps the current values (in FILE with --backup),\n"
        "      writes each entry and reads it back. With any error in the file nothing\n"
        "      is written, unless --partial. --dry-run only checks. --stop-on-error stops\n"
        "      at the first refused write; --rollback-on-error then also writes the kept\n"
        "      values back and verifies them. --verbose lists applied entries too;\n"
        "      --progress prints [done/total] on standard error as entries are written.\n"
        "  diff CAMERA FILE\n"
        "      Compares the camera with the file, feature by feature: only the differences.\n"
        "\n"
        "Options:\n"
        "  --json    Print one JSON object with the results, for scripts.\n"
        "  --help    This text.\n"
        "\n"
        "CAMERA is an ID as \"pko-tool list\" prints it, e.g. SIM-LINE-ROUTING or\n"
        "ARV:127.0.0.1. A selected feature is named with its selector's entry:\n"
        "TriggerMode@TriggerSelector=FrameStart.\n"
        "\n"
        "Exit codes:\n"
        "  0  all applied (adjusted counts as applied and is listed); diff: no difference\n"
        "  1  some write refused or not available now; diff: differences found\n"
        "  2  bad file or arguments (a load writes nothing then)\n"
        "  3  camera not found, not opened, or lost\n");
}

int PkoTool::Run(const QStringList& arguments)
{
    ToolArguments parsed(
        {QStringLiteral("category"), QStringLiteral("only"), QStringLiteral("format"), QStringLiteral("backup")});
    if (!parsed.Parse(arguments))
        return Fail(ExitBadInput, parsed.Error());
    m_Json = parsed.IsSet(QStringLiteral("json"));
    const QString command = parsed.Command();
    if (parsed.IsSet(QStringLiteral("help")) || arguments.contains(QStringLiteral("-h")) ||
        command == QLatin1String("help")) {
        std::fputs(HelpText().toLocal8Bit().constData(), m_Out);
        return ExitOk;
    }
    if (command.isEmpty()) {
        std::fputs(HelpText().toLocal8Bit().constData(), m_Err);
        return ExitBadInput;
    }
    m_Result.insert(QStringLiteral("command"), command);

    // Every option a command knows; anything else is a mistake worth saying.
    static const QHash<QString, QStringList> known{
        {QStringLiteral("list"), {}},
        {QStringLiteral("features"), {QStringLiteral("category")}},
        {QStringLiteral("get"), {}},
        {QStringLiteral("set"), {}},
        {QStringLiteral("save"), {QStringLiteral("only"), QStringLiteral("format")}},
        {QStringLiteral("load"),
         {QStringLiteral("dry-run"), QStringLiteral("partial"), QStringLiteral("stop-on-error"),
          QStringLiteral("rollback-on-error"), QStringLiteral("backup"), QStringLiteral("verbose"),
          QStringLiteral("progress")}},
        {QStringLiteral("diff"), {}},
    };
    if (!known.contains(command))
        return Fail(ExitBadInput, QStringLiteral("unknown command \"%1\"; see pko-tool --help").arg(command));
    for (const QString& option : parsed.Options()) {
        if (option != QLatin1String("json") && !known.value(command).contains(option))
            return Fail(ExitBadInput, QStringLiteral("%1 takes no option --%2").arg(command, option));
    }
    const QStringList positional = parsed.Positional();
    if (command == QLatin1String("list"))
        return List();
    if (command == QLatin1String("features"))
        return Features(positional, parsed);
    if (command == QLatin1String("get"))
        return Get(positional);
    if (command == QLatin1String("set"))
        return Set(positional);
    if (command == QLatin1String("save"))
        return Save(positional, parsed);
    if (command == QLatin1String("load"))
        return Load(positional, parsed);
    return Diff(positional);
}

void PkoTool::Print(const QString& line)
{
    if (m_Json)
        return;
    std::fputs(line.toLocal8Bit().constData(), m_Out);
    std::fputc('\n', m_Out);
}

void PkoTool::PrintError(const QString& line)
{
    if (m_Json)
        return;
    std::fputs(("pko-tool: " + line).toLocal8Bit().constData(), m_Err);
    std::fputc('\n', m_Err);
}

int PkoTool::Fail(int code, const QString& message)
{
    PrintError(message);
    m_Result.insert(QStringLiteral("error"), message);
    return Finish(code);
}

int PkoTool::Finish(int code)
{
    if (m_Json) {
        m_Result.insert(QStringLiteral("exitCode"), code);
        std::fputs(QJsonDocument(m_Result).toJson(QJsonDocument::Indented).constData(), m_Out);
    }
    std::fflush(m_Out);
    std::fflush(m_Err);
    if (m_Camera) {
        const QString journalPath = qEnvironmentVariable("PKO_TOOL_JOURNAL");
        Sim::SimCameraPtr simulated = dynamic_pointer_cast<Sim::SimCamera>(m_Camera);
        if (!journalPath.isEmpty() && simulated) {
            QFile file(journalPath);
            if (file.open(QIODevice::WriteOnly | QIODevice::Append)) {
                QTextStream stream(&file);
                for (const Sim::JournalEntry& entry : simulated->Journal()) {
                    stream << QString::fromStdString(entry.feature) << '\t' << QString::fromStdString(entry.value)
                           << '\t' << QString::fromStdString(entry.writer) << '\t' << entry.result << '\n';
                }
            }
        }
        m_Camera->Close();
        m_Camera = CameraPtr();
    }
    return code;
}

int PkoTool::OpenCamera(const QString& id)
{
    m_CameraId = id;
    m_Result.insert(QStringLiteral("camera"), id);
    CameraPtr camera;
    int code = PkoSystem::GetInstance().GetCameraByID(id.toUtf8().constData(), camera);
    if (code != PkoErrorSuccess || !camera) {
        PrintError(QStringLiteral("no camera %1 (%2); \"pko-tool list\" shows the cameras")
                       .arg(id, FeatureIo::ErrorName(code)));
        m_Result.insert(QStringLiteral("error"), QStringLiteral("camera not found"));
        return ExitCameraLost;
    }
    code = camera->Open();
    if (code != PkoErrorSuccess) {
        PrintError(QStringLiteral("camera %1 cannot be opened (%2)").arg(id, FeatureIo::ErrorName(code)));
        m_Result.insert(QStringLiteral("error"), QStringLiteral("camera cannot be opened"));
        return ExitCameraLost;
    }
    m_Camera = camera;
    return ExitOk;
}

int PkoTool::LoadLayout(FeatureLayout& layout)
{
    const int code = layout.Build(m_Camera);
    if (code != PkoErrorSuccess) {
        PrintError(QStringLiteral("the features of camera %1 cannot be read (%2)")
                       .arg(m_CameraId, FeatureIo::ErrorName(code)));
        m_Result.insert(QStringLiteral("error"), QStringLiteral("camera lost"));
        return ExitCameraLost;
    }
    return ExitOk;
}

int PkoTool::List()
{
    std::vector<CameraPtr> cameras;
    const int code = PkoSystem::GetInstance().GetCameras(cameras);
    if (code != PkoErrorSuccess)
        return Fail(ExitCameraLost,
                    QStringLiteral("the cameras cannot be listed (%1)").arg(FeatureIo::ErrorName(code)));
    QJsonArray list;
    for (const CameraPtr& camera : cameras) {
        std::string id;
        std::string model;
        std::string name;
        camera->GetID(id);
        camera->GetModel(model);
        camera->GetName(name);
        Print(QStringLiteral("%1\t%2\t%3")
                  .arg(QString::fromStdString(id), QString::fromStdString(model), QString::fromStdString(name)));
        QJsonObject object;
        object.insert(QStringLiteral("id"), QString::fromStdString(id));
        object.insert(QStringLiteral("model"), QString::fromStdString(model));
        object.insert(QStringLiteral("name"), QString::fromStdString(name));
        list.append(object);
    }
    m_Result.insert(QStringLiteral("cameras"), list);
    return Finish(ExitOk);
}

int PkoTool::Features(const QStringList& positional, const ToolArguments& arguments)
{
    if (positional.size() != 1)
        return Fail(ExitBadInput, QStringLiteral("usage: pko-tool features CAMERA [--category C]"));
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);
    const QString category = arguments.Value(QStringLiteral("category"));
    QVector<QStringList> rows;
    QJsonArray list;
    for (const FeatureLayout::Item& item : layout.Items()) {
        const QString path = FeatureIo::Category(item.feature);
        if (!category.isEmpty()) {
            const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
            if (path.compare(category, Qt::CaseInsensitive) != 0 && !parts.contains(category, Qt::CaseInsensitive))
                continue;
        }
        QJsonObject object;
        object.insert(QStringLiteral("name"), item.name);
        object.insert(QStringLiteral("type"), SettingsValue::TypeName(item.type));
        object.insert(QStringLiteral("category"), path);
        if (!item.selector.isEmpty())
            object.insert(QStringLiteral("selector"), item.selector);
        bool writable = false;
        int code = item.feature->IsWritable(writable);
        if (FeatureIo::IsLost(code))
            return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost").arg(m_CameraId));
        QVariant value;
        bool readable = false;
        if (SettingsValue::IsSettable(item.type)) {
            code = FeatureIo::Read(item.feature, item.type, value);
            if (FeatureIo::IsLost(code))
                return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost").arg(m_CameraId));
            readable = code == PkoErrorSuccess;
        }
        QString access;
        if (item.type == PkoFeatureDataCommand)
            access = writable ? QStringLiteral("X") : QStringLiteral("-");
        else
            access = QStringLiteral("%1%2").arg(readable ? "R" : "-", writable ? "W" : "-");
        object.insert(QStringLiteral("access"), access);
        object.insert(QStringLiteral("value"), JsonValue(value));
        QJsonObject limits;
        const QString range = Limits(item, limits);
        for (auto it = limits.constBegin(); it != limits.constEnd(); ++it)
            object.insert(it.key(), it.value());
        list.append(object);
        rows.append({item.name, SettingsValue::TypeName(item.type), access,
                     readable ? SettingsValue::ToText(value) : QStringLiteral("-"), range});
    }
    m_Result.insert(QStringLiteral("features"), list);
    QVector<int> widths(4, 0);
    const QStringList header{QStringLiteral("NAME"), QStringLiteral("TYPE"), QStringLiteral("ACCESS"),
                             QStringLiteral("VALUE"), QStringLiteral("RANGE")};
    rows.prepend(header);
    for (const QStringList& row : rows) {
        for (int column = 0; column < 4; ++column)
            widths[column] = qMax(widths.at(column), qMin(row.at(column).size(), 40));
    }
    for (const QStringList& row : rows) {
        QString line;
        for (int column = 0; column < 4; ++column)
            line += row.at(column).leftJustified(widths.at(column)) + QStringLiteral("  ");
        Print((line + row.at(4)).trimmed());
    }
    return Finish(ExitOk);
}

int PkoTool::Get(const QStringList& positional)
{
    if (positional.size() < 2)
        return Fail(ExitBadInput, QStringLiteral("usage: pko-tool get CAMERA NAME[@SELECTOR=ENTRY]..."));
    QVector<Target> targets;
    for (const QString& text : positional.mid(1)) {
        Target target;
        if (!ParseTarget(text, false, target))
            return Fail(ExitBadInput, QStringLiteral("\"%1\" is no NAME or NAME@SELECTOR=ENTRY").arg(text));
        targets.append(target);
    }
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);
    for (const Target& target : targets) {
        if (!layout.Has(target.feature))
            return Fail(ExitBadInput, QStringLiteral("camera %1 has no feature %2").arg(m_CameraId, target.feature));
        if (!target.selector.isEmpty() && !layout.IsSelector(target.selector))
            return Fail(ExitBadInput, QStringLiteral("camera %1 has no selector %2").arg(m_CameraId, target.selector));
    }
    Sim::WriterScope writer(kWriterName);
    SelectorCursor cursor(layout);
    int exitCode = ExitOk;
    QJsonArray values;
    for (const Target& target : targets) {
        const FeatureLayout::Item* item = layout.Find(target.feature);
        QJsonObject object;
        object.insert(QStringLiteral("name"), target.feature);
        object.insert(QStringLiteral("key"), target.Key());
        if (!target.selector.isEmpty()) {
            object.insert(QStringLiteral("selector"), target.selector);
            object.insert(QStringLiteral("entry"), target.entry);
        }
        object.insert(QStringLiteral("type"), SettingsValue::TypeName(item->type));
        int code = target.selector.isEmpty() ? PkoErrorSuccess : cursor.Select(target.selector, target.entry);
        QVariant value;
        if (code == PkoErrorSuccess)
            code = FeatureIo::Read(item->feature, item->type, value);
        if (FeatureIo::IsLost(code))
            return Fail(ExitCameraLost,
                        QStringLiteral("camera %1 was lost (%2)").arg(m_CameraId, FeatureIo::ErrorName(code)));
        if (code != PkoErrorSuccess) {
            PrintError(QStringLiteral("%1 cannot be read (%2)").arg(target.Key(), FeatureIo::ErrorName(code)));
            object.insert(QStringLiteral("error"), FeatureIo::ErrorName(code));
            exitCode = ExitRefused;
        } else {
            Print(target.Key() + '=' + SettingsValue::ToText(value));
            object.insert(QStringLiteral("value"), JsonValue(value));
        }
        values.append(object);
    }
    const int restored = cursor.RestoreAll();
    m_Result.insert(QStringLiteral("values"), values);
    if (FeatureIo::IsLost(restored))
        return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost").arg(m_CameraId));
    return Finish(exitCode);
}

int PkoTool::Set(const QStringList& positional)
{
    if (positional.size() < 2)
        return Fail(ExitBadInput, QStringLiteral("usage: pko-tool set CAMERA NAME[@SELECTOR=ENTRY]=VALUE..."));
    QVector<Target> targets;
    for (const QString& text : positional.mid(1)) {
        Target target;
        if (!ParseTarget(text, true, target))
            return Fail(ExitBadInput, QStringLiteral("\"%1\" is no NAME=VALUE or NAME@SELECTOR=ENTRY=VALUE").arg(text));
        targets.append(target);
    }
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);
    QVector<QVariant> values;
    for (const Target& target : targets) {
        const FeatureLayout::Item* item = layout.Find(target.feature);
        if (item == nullptr)
            return Fail(ExitBadInput, QStringLiteral("camera %1 has no feature %2").arg(m_CameraId, target.feature));
        if (!target.selector.isEmpty() && !layout.IsSelector(target.selector))
            return Fail(ExitBadInput, QStringLiteral("camera %1 has no selector %2").arg(m_CameraId, target.selector));
        QVariant value;
        QString expected;
        if (!SettingsValue::FromText(item->type, target.value, value, expected)) {
            return Fail(ExitBadInput,
                        QStringLiteral("%1 is %2: expected %3, found \"%4\"")
                            .arg(target.feature, SettingsValue::TypeName(item->type), expected, target.value));
        }
        values.append(value);
    }
    Sim::WriterScope writer(kWriterName);
    SelectorCursor cursor(layout);
    int exitCode = ExitOk;
    QJsonArray results;
    for (int i = 0; i < targets.size(); ++i) {
        const Target& target = targets.at(i);
        const FeatureLayout::Item* item = layout.Find(target.feature);
        QJsonObject object;
        object.insert(QStringLiteral("name"), target.feature);
        object.insert(QStringLiteral("key"), target.Key());
        object.insert(QStringLiteral("requested"), JsonValue(values.at(i)));
        int code = target.selector.isEmpty() ? PkoErrorSuccess : cursor.Select(target.selector, target.entry);
        QVariant written = values.at(i);
        if (code == PkoErrorSuccess && (item->type == PkoFeatureDataInt || item->type == PkoFeatureDataFloat)) {
            QVariant minimum;
            QVariant maximum;
            QVariant increment;
            code = FeatureIo::Range(item->feature, item->type, minimum, maximum, increment);
            if (code == PkoErrorSuccess)
                written = FeatureIo::Snap(written, minimum, increment);
        }
        if (code == PkoErrorSuccess)
            code = FeatureIo::Write(item->feature, item->type, written);
        if (code == PkoErrorSuccess && layout.IsSelector(target.feature))
            cursor.Written(target.feature, written.toString());
        QVariant readBack;
        int readCode = code;
        if (code == PkoErrorSuccess)
            readCode = FeatureIo::Read(item->feature, item->type, readBack);
        if (FeatureIo::IsLost(code) || FeatureIo::IsLost(readCode))
            return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost (%2)")
                                            .arg(m_CameraId, FeatureIo::ErrorName(code != 0 ? code : readCode)));
        QJsonObject limits;
        if (code != PkoErrorSuccess) {
            const QString range = Limits(*item, limits);
            Print(QStringLiteral("%1: refused %2 (%3)%4")
                      .arg(target.Key(), SettingsValue::ToText(values.at(i)), FeatureIo::ErrorName(code),
                           range.isEmpty() ? QString() : "; " + range));
            object.insert(QStringLiteral("outcome"),
                          code == PkoErrorInvalidAccess ? QStringLiteral("not available") : QStringLiteral("refused"));
            object.insert(QStringLiteral("error"), FeatureIo::ErrorName(code));
            exitCode = ExitRefused;
        } else if (readCode != PkoErrorSuccess) {
            Print(QStringLiteral("%1: written, but cannot be read back (%2)")
                      .arg(target.Key(), FeatureIo::ErrorName(readCode)));
            object.insert(QStringLiteral("outcome"), QStringLiteral("applied"));
            object.insert(QStringLiteral("error"), FeatureIo::ErrorName(readCode));
        } else if (SettingsValue::Equal(readBack, values.at(i))) {
            Print(target.Key() + '=' + SettingsValue::ToText(readBack));
            object.insert(QStringLiteral("outcome"), QStringLiteral("applied"));
        } else {
            const QString range = Limits(*item, limits);
            Print(QStringLiteral("%1=%2 (adjusted from %3%4)")
                      .arg(target.Key(), SettingsValue::ToText(readBack), SettingsValue::ToText(values.at(i)),
                           range.isEmpty() ? QString() : "; " + range));
            object.insert(QStringLiteral("outcome"), QStringLiteral("adjusted"));
        }
        object.insert(QStringLiteral("written"), JsonValue(written));
        object.insert(QStringLiteral("readBack"), JsonValue(readBack));
        for (auto it = limits.constBegin(); it != limits.constEnd(); ++it)
            object.insert(it.key(), it.value());
        results.append(object);
    }
    const int restored = cursor.RestoreAll();
    m_Result.insert(QStringLiteral("results"), results);
    if (FeatureIo::IsLost(restored))
        return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost").arg(m_CameraId));
    return Finish(exitCode);
}

int PkoTool::Save(const QStringList& positional, const ToolArguments& arguments)
{
    if (positional.size() != 2)
        return Fail(ExitBadInput,
                    QStringLiteral("usage: pko-tool save CAMERA FILE [--only trigger-io] [--format json|genicam]"));
    SettingsSaver::Scope scope = SettingsSaver::Scope::All;
    if (arguments.IsSet(QStringLiteral("only")) &&
        !SettingsSaver::ScopeFromName(arguments.Value(QStringLiteral("only")), scope)) {
        return Fail(
            ExitBadInput,
            QStringLiteral("--only takes trigger-io or all, not \"%1\"").arg(arguments.Value(QStringLiteral("only"))));
    }
    const QString path = positional.at(1);
    SettingsFile::Format format = FormatForPath(path);
    if (arguments.IsSet(QStringLiteral("format")) &&
        !SettingsFile::FormatFromName(arguments.Value(QStringLiteral("format")), format)) {
        return Fail(ExitBadInput, QStringLiteral("--format takes json or genicam, not \"%1\"")
                                      .arg(arguments.Value(QStringLiteral("format"))));
    }
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);
    SettingsDocument document;
    QStringList notes;
    const int code = SettingsSaver::Save(m_Camera, layout, scope, document, notes);
    for (const QString& note : notes)
        PrintError(QStringLiteral("note: ") + note);
    m_Result.insert(QStringLiteral("notes"), QJsonArray::fromStringList(notes));
    if (code != PkoErrorSuccess)
        return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost while saving (%2); %3 not written")
                                        .arg(m_CameraId, FeatureIo::ErrorName(code), path));
    QString error;
    if (!SettingsFile::Write(path, document, format, error))
        return Fail(ExitBadInput, error);
    QSet<QString> features;
    for (const SettingsEntry& entry : document.entries)
        features.insert(entry.feature);
    Print(QStringLiteral("Saved %1 values of %2 features of %3 to %4 (%5)")
              .arg(document.entries.size())
              .arg(features.size())
              .arg(m_CameraId, path, FormatName(format)));
    m_Result.insert(QStringLiteral("file"), path);
    m_Result.insert(QStringLiteral("format"), FormatName(format));
    m_Result.insert(QStringLiteral("only"), SettingsSaver::ScopeName(scope));
    m_Result.insert(QStringLiteral("values"), document.entries.size());
    m_Result.insert(QStringLiteral("features"), features.size());
    return Finish(ExitOk);
}

void PkoTool::PrintLoadReport(const LoadReport& report, bool verbose)
{
    for (const EntryResult& result : report.results) {
        if (!verbose && result.outcome == EntryResult::Outcome::Applied)
            continue;
        QString line = QStringLiteral("%1  %2").arg(EntryResult::OutcomeName(result.outcome).leftJustified(13),
                                                    result.entry.Key());
        if (result.entry.value.isValid())
            line += QStringLiteral(" = ") + SettingsValue::ToText(result.entry.value);
        if (result.outcome == EntryResult::Outcome::Adjusted)
            line += QStringLiteral(" -> ") + SettingsValue::ToText(result.readBack);
        if (!result.message.isEmpty() && result.outcome != EntryResult::Outcome::Adjusted)
            line += QStringLiteral("  (%1)").arg(result.message);
        Print(line);
    }
    if (report.rolledBack) {
        for (const EntryResult& result : report.rollback) {
            Print(QStringLiteral("rolled back   %1 = %2%3")
                      .arg(result.entry.Key(), SettingsValue::ToText(result.entry.value),
                           result.outcome == EntryResult::Outcome::Applied
                               ? QString()
                               : QStringLiteral("  (%1: %2)")
                                     .arg(EntryResult::OutcomeName(result.outcome), result.message)));
        }
    }
    Print(report.statusMessage);
}

int PkoTool::Load(const QStringList& positional, const ToolArguments& arguments)
{
    if (positional.size() != 2)
        return Fail(ExitBadInput, QStringLiteral("usage: pko-tool load CAMERA FILE [--dry-run] [--partial] "
                                                 "[--stop-on-error] [--rollback-on-error] [--backup FILE]"));
    const QString path = positional.at(1);
    m_Result.insert(QStringLiteral("file"), path);
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    const bool parsed = SettingsFile::Read(path, document, problems);
    if (!parsed) {
        for (const SettingsProblem& problem : problems)
            PrintError(problem.ToText());
        m_Result.insert(QStringLiteral("problems"), JsonProblems(problems));
        m_Result.insert(QStringLiteral("error"), QStringLiteral("bad file"));
        return Finish(ExitBadInput);
    }
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);

    if (arguments.IsSet(QStringLiteral("dry-run"))) {
        std::string model;
        m_Camera->GetModel(model);
        const SettingsCheck check = SettingsChecker::Check(document, layout, QString::fromStdString(model));
        problems += check.problems;
        for (const SettingsProblem& problem : problems)
            PrintError(problem.ToText());
        m_Result.insert(QStringLiteral("problems"), JsonProblems(problems));
        m_Result.insert(QStringLiteral("dryRun"), true);
        m_Result.insert(QStringLiteral("entries"), document.entries.size());
        m_Result.insert(QStringLiteral("usable"), check.UsableCount());
        if (check.cameraLost)
            return Fail(ExitCameraLost, QStringLiteral("camera %1 was lost").arg(m_CameraId));
        const bool errors = SettingsProblem::HasErrors(problems);
        Print(QStringLiteral("Dry run: %1 of %2 entries of %3 can be written to %4%5; nothing was written.")
                  .arg(check.UsableCount())
                  .arg(document.entries.size())
                  .arg(path, m_CameraId, errors ? QStringLiteral(", the file has errors") : QString()));
        return Finish(errors ? ExitBadInput : ExitOk);
    }

    SettingsLoader::Options options;
    options.stopOnError = arguments.IsSet(QStringLiteral("stop-on-error"));
    options.rollbackOnError = arguments.IsSet(QStringLiteral("rollback-on-error"));
    options.partial = arguments.IsSet(QStringLiteral("partial"));
    options.backupPath = arguments.Value(QStringLiteral("backup"));
    if (arguments.IsSet(QStringLiteral("backup")) && options.backupPath.isEmpty())
        return Fail(ExitBadInput, QStringLiteral("--backup needs a file name"));
    options.backupFormat = FormatForPath(options.backupPath);
    SettingsLoader loader(m_Camera, layout);
    if (arguments.IsSet(QStringLiteral("progress"))) {
        FILE* err = m_Err;
        loader.SetProgress([err](int done, int total) {
            std::fprintf(err, "[%d/%d]\n", done, total);
            std::fflush(err);
        });
    }
    const LoadReport report = loader.Load(document, options);
    problems += report.problems;
    for (const SettingsProblem& problem : problems)
        PrintError(problem.ToText());
    if (!options.backupPath.isEmpty() && report.status != LoadReport::Status::FileRejected &&
        report.status != LoadReport::Status::BackupFailed && !report.backup.entries.isEmpty()) {
        Print(QStringLiteral("Kept the current values of %1 entries in %2")
                  .arg(report.backup.entries.size())
                  .arg(options.backupPath));
    }
    PrintLoadReport(report, arguments.IsSet(QStringLiteral("verbose")));

    m_Result.insert(QStringLiteral("status"), StatusName(report.status));
    m_Result.insert(QStringLiteral("message"), report.statusMessage);
    m_Result.insert(QStringLiteral("problems"), JsonProblems(problems));
    QJsonArray results;
    for (const EntryResult& result : report.results)
        results.append(JsonResult(result));
    m_Result.insert(QStringLiteral("results"), results);
    QJsonObject counts;
    for (EntryResult::Outcome outcome :
         {EntryResult::Outcome::Applied, EntryResult::Outcome::Adjusted, EntryResult::Outcome::Refused,
          EntryResult::Outcome::NotAvailable, EntryResult::Outcome::Skipped, EntryResult::Outcome::NotWritten}) {
        counts.insert(EntryResult::OutcomeName(outcome), report.Count(outcome));
    }
    m_Result.insert(QStringLiteral("counts"), counts);
    if (!options.backupPath.isEmpty())
        m_Result.insert(QStringLiteral("backup"), options.backupPath);
    m_Result.insert(QStringLiteral("kept"), report.backup.entries.size());
    if (report.rolledBack) {
        QJsonArray rollback;
        for (const EntryResult& result : report.rollback)
            rollback.append(JsonResult(result));
        m_Result.insert(QStringLiteral("rollback"), rollback);
        m_Result.insert(QStringLiteral("rollbackComplete"), report.rollbackComplete);
    }

    switch (report.status) {
        case LoadReport::Status::FileRejected:
        case LoadReport::Status::BackupFailed:
            return Finish(ExitBadInput);
        case LoadReport::Status::CameraLost:
            return Finish(ExitCameraLost);
        default:
            return Finish(report.AllApplied() ? ExitOk : ExitRefused);
    }
}

int PkoTool::Diff(const QStringList& positional)
{
    if (positional.size() != 2)
        return Fail(ExitBadInput, QStringLiteral("usage: pko-tool diff CAMERA FILE"));
    const QString path = positional.at(1);
    m_Result.insert(QStringLiteral("file"), path);
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    if (!SettingsFile::Read(path, document, problems)) {
        for (const SettingsProblem& problem : problems)
            PrintError(problem.ToText());
        m_Result.insert(QStringLiteral("problems"), JsonProblems(problems));
        m_Result.insert(QStringLiteral("error"), QStringLiteral("bad file"));
        return Finish(ExitBadInput);
    }
    if (const int code = OpenCamera(positional.at(0)))
        return Finish(code);
    FeatureLayout layout;
    if (const int code = LoadLayout(layout))
        return Finish(code);
    QVector<SettingsDifference> differences;
    int equal = 0;
    const int code = SettingsComparer::Compare(m_Camera, layout, document, differences, equal, problems);
    for (const SettingsProblem& problem : problems)
        PrintError(problem.ToText());
    QJsonArray list;
    for (const SettingsDifference& difference : differences) {
        QJsonObject object = JsonEntry(difference.entry);
        object.insert(QStringLiteral("kind"), SettingsDifference::KindName(difference.kind));
        object.insert(QStringLiteral("file"), JsonValue(difference.entry.value));
        if (difference.kind == SettingsDifference::Kind::Different) {
            object.insert(QStringLiteral("camera"), JsonValue(difference.cameraValue));
            Print(QStringLiteral("%1: camera %2, file %3")
                      .arg(difference.entry.Key(), SettingsValue::ToText(difference.cameraValue),
                           SettingsValue::ToText(difference.entry.value)));
        } else {
            object.insert(QStringLiteral("message"), difference.message);
            Print(QStringLiteral("%1: %2").arg(difference.entry.Key(), difference.message));
        }
        list.append(object);
    }
    m_Result.insert(QStringLiteral("differences"), list);
    m_Result.insert(QStringLiteral("equal"), equal);
    m_Result.insert(QStringLiteral("problems"), JsonProblems(problems));
    if (code != PkoErrorSuccess)
        return Fail(
            ExitCameraLost,
            QStringLiteral("camera %1 was lost while comparing (%2)").arg(m_CameraId, FeatureIo::ErrorName(code)));
    Print(QStringLiteral("%1 differences, %2 equal").arg(differences.size()).arg(equal));
    return Finish(differences.isEmpty() ? ExitOk : ExitRefused);
}
