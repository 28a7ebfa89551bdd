#include "SettingsJson.h"

#include "SettingsValue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>

using namespace ZMT::PkoAPI;

const char* const SettingsJson::kFormatName = "pelko-camera-settings";

namespace {

// What the parser wanted where it stopped.
QString Expectation(QJsonParseError::ParseError error)
{
    switch (error) {
        case QJsonParseError::UnterminatedObject:
            return QStringLiteral("expected ',' or '}' after a member of an object (is the file cut short?)");
        case QJsonParseError::MissingNameSeparator:
            return QStringLiteral("expected ':' after a member name");
        case QJsonParseError::UnterminatedArray:
            return QStringLiteral("expected ',' or ']' after an element of an array (is the file cut short?)");
        case QJsonParseError::MissingValueSeparator:
            return QStringLiteral("expected ',' between two values");
        case QJsonParseError::IllegalValue:
            return QStringLiteral("expected a value: a number, a \"text\", true, false, null, an object or an array");
        case QJsonParseError::TerminationByNumber:
            return QStringLiteral("expected more after a number (is the file cut short?)");
        case QJsonParseError::IllegalNumber:
            return QStringLiteral("expected a number");
        case QJsonParseError::IllegalEscapeSequence:
            return QStringLiteral("expected an escape sequence such as \\\" or \\n");
        case QJsonParseError::IllegalUTF8String:
            return QStringLiteral("expected UTF-8 text");
        case QJsonParseError::UnterminatedString:
            return QStringLiteral("expected '\"' to end a text (is the file cut short?)");
        case QJsonParseError::MissingObject:
            return QStringLiteral("expected an object '{' or an array '['");
        case QJsonParseError::DeepNesting:
            return QStringLiteral("expected less deeply nested objects");
        case QJsonParseError::DocumentTooLarge:
            return QStringLiteral("expected a smaller file");
        case QJsonParseError::GarbageAtEnd:
            return QStringLiteral("expected the end of the file after the closing '}'");
        case QJsonParseError::NoError:
            break;
    }
    return QStringLiteral("expected JSON");
}

QJsonValue Member(const QJsonObject& object, const char* name)
{
    return object.value(QLatin1String(name));
}

}  // namespace

QByteArray SettingsJson::Write(const SettingsDocument& document)
{
    QJsonObject camera;
    camera.insert(QStringLiteral("model"), document.cameraModel);
    camera.insert(QStringLiteral("id"), document.cameraId);
    QJsonArray features;
    for (const SettingsEntry& entry : document.entries) {
        QJsonObject object;
        object.insert(QStringLiteral("name"), entry.feature);
        if (entry.IsSelected()) {
            object.insert(QStringLiteral("selector"), entry.selector);
            object.insert(QStringLiteral("entry"), entry.selectorEntry);
        }
        if (entry.type != PkoFeatureDataUnknown)
            object.insert(QStringLiteral("type"), SettingsValue::TypeName(entry.type));
        object.insert(QStringLiteral("value"), SettingsValue::ToJson(entry.value));
        features.append(object);
    }
    QJsonObject root;
    root.insert(QStringLiteral("format"), QLatin1String(kFormatName));
    root.insert(QStringLiteral("formatVersion"), document.formatVersion);
    root.insert(QStringLiteral("camera"), camera);
    if (document.saved.isValid())
        root.insert(QStringLiteral("saved"), document.saved.toUTC().toString(Qt::ISODate));
    if (!document.scope.isEmpty())
        root.insert(QStringLiteral("only"), document.scope);
    root.insert(QStringLiteral("features"), features);
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool SettingsJson::Read(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                        QVector<SettingsProblem>& problems)
{
    auto fail = [&](SettingsProblem::Kind kind, int line, const QString& message) {
        SettingsProblem problem;
        problem.kind = kind;
        problem.file = fileName;
        problem.line = line;
        problem.message = message;
        problems.append(problem);
        return false;
    };
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError) {
        if (data.trimmed().isEmpty())
            return fail(SettingsProblem::Kind::Syntax, 1, QStringLiteral("expected settings, the file is empty"));
        return fail(SettingsProblem::Kind::Syntax, LineOf(data, error.offset),
                    Expectation(error.error) + QStringLiteral(" (%1)").arg(error.errorString()));
    }
    if (!json.isObject())
        return fail(SettingsProblem::Kind::Format, 1, QStringLiteral("expected an object '{' at the top"));
    const QJsonObject root = json.object();
    if (Member(root, "format").toString() != QLatin1String(kFormatName)) {
        return fail(
            SettingsProblem::Kind::Format, 1,
            QStringLiteral("expected \"format\": \"%1\": this is no settings file").arg(QLatin1String(kFormatName)));
    }
    const QJsonValue version = Member(root, "formatVersion");
    const int formatVersion = version.isUndefined() ? SettingsDocument::kFormatVersion : version.toInt(-1);
    if (formatVersion < 1 || formatVersion > SettingsDocument::kFormatVersion) {
        return fail(SettingsProblem::Kind::Format, 1,
                    QStringLiteral("expected \"formatVersion\" 1 to %1, found %2: a newer program wrote the file")
                        .arg(SettingsDocument::kFormatVersion)
                        .arg(version.toVariant().toString()));
    }
    const QJsonValue list = Member(root, "features");
    if (!list.isArray())
        return fail(SettingsProblem::Kind::Format, 1, QStringLiteral("expected \"features\": [ ... ]"));

    SettingsDocument result;
    result.formatVersion = formatVersion;
    result.fileName = fileName;
    const QJsonObject camera = Member(root, "camera").toObject();
    result.cameraModel = Member(camera, "model").toString();
    result.cameraId = Member(camera, "id").toString();
    result.saved = QDateTime::fromString(Member(root, "saved").toString(), Qt::ISODate);
    result.scope = Member(root, "only").toString();

    const QJsonArray features = list.toArray();
    const QVector<int> lines = FeatureLines(data);
    for (int i = 0; i < features.size(); ++i) {
        const int line = i < lines.size() ? lines.at(i) : 0;
        SettingsProblem problem;
        problem.kind = SettingsProblem::Kind::Format;
        problem.file = fileName;
        problem.line = line;
        if (!features.at(i).isObject()) {
            problem.message = QStringLiteral("expected an object {\"name\": ..., \"value\": ...}");
            problems.append(problem);
            continue;
        }
        const QJsonObject object = features.at(i).toObject();
        SettingsEntry entry;
        entry.line = line;
        entry.feature = Member(object, "name").toString();
        if (entry.feature.isEmpty()) {
            problem.message = QStringLiteral("expected \"name\": the feature's name");
            problems.append(problem);
            continue;
        }
        entry.selector = Member(object, "selector").toString();
        entry.selectorEntry = Member(object, "entry").toString();
        problem.entry = entry.Key();
        if (entry.selector.isEmpty() != entry.selectorEntry.isEmpty()) {
            problem.message = QStringLiteral("expected both \"selector\" and \"entry\", or neither");
            problems.append(problem);
            continue;
        }
        const QJsonValue typeName = Member(object, "type");
        if (!typeName.isUndefined()) {
            entry.type = SettingsValue::TypeFromName(typeName.toString());
            if (!SettingsValue::IsSettable(entry.type)) {
                problem.kind = SettingsProblem::Kind::WrongType;
                problem.message = QStringLiteral(
                                      "expected \"type\" Integer, Float, Boolean, Enumeration or "
                                      "String, found %1")
                                      .arg(typeName.toVariant().toString());
                problems.append(problem);
                continue;
            }
        }
        const QJsonValue value = Member(object, "value");
        if (value.isUndefined() || value.isNull() || value.isArray() || value.isObject()) {
            problem.message = QStringLiteral("expected \"value\": a number, a text, true or false");
            problems.append(problem);
            continue;
        }
        if (entry.type != PkoFeatureDataUnknown) {
            QString expected;
            if (!SettingsValue::FromJson(entry.type, value, entry.value, expected)) {
                problem.kind = SettingsProblem::Kind::WrongType;
                problem.message =
                    QStringLiteral("expected %1 for a value of type %2, found %3")
                        .arg(expected, SettingsValue::TypeName(entry.type),
                             QString::fromUtf8(
                                 QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).mid(1).chopped(1)));
                problems.append(problem);
                continue;
            }
        } else if (value.isBool()) {
            entry.value = QVariant(value.toBool());
        } else if (value.isString()) {
            entry.value = QVariant(value.toString());
        } else {
            const QVariant integral = SettingsValue::As(PkoFeatureDataInt, QVariant(value.toDouble()));
            entry.value = integral.isValid() ? integral : QVariant(value.toDouble());
        }
        result.entries.append(entry);
    }
    document = result;
    return true;
}

QVector<int> SettingsJson::FeatureLines(const QByteArray& data)
{
    QVector<int> lines;
    int line = 1;
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    int keyStart = -1;
    QByteArray lastKey;       // the last string closed at depth 1
    bool keyPending = false;  // lastKey may still be followed by ':'
    int featuresDepth = -1;   // depth inside the "features" array, while in it
    bool expectElement = false;
    for (int i = 0; i < data.size(); ++i) {
        const char c = data.at(i);
        if (c == '\n')
            ++line;
        if (inString) {
            if (escaped)
                escaped = false;
            else if (c == '\\')
                escaped = true;
            else if (c == '"') {
                inString = false;
                if (depth == 1 && featuresDepth < 0) {
                    lastKey = data.mid(keyStart, i - keyStart);
                    keyPending = true;
                }
            }
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            continue;
        if (expectElement) {
            // An empty list (or a trailing ',') has no element here.
            if (c != ']')
                lines.append(line);
            expectElement = false;
        }
        switch (c) {
            case '"':
                inString = true;
                keyStart = i + 1;
                break;
            case ':':
                break;
            case '{':
            case '[':
                if (c == '[' && depth == 1 && keyPending && lastKey == "features") {
                    featuresDepth = depth + 1;
                    expectElement = true;
                }
                ++depth;
                break;
            case '}':
            case ']':
                --depth;
                if (featuresDepth >= 0 && depth < featuresDepth)
                    featuresDepth = -1;
                break;
            case ',':
                if (featuresDepth >= 0 && depth == featuresDepth)
                    expectElement = true;
                break;
            default:
                break;
        }
        if (c != '"' && c != ':')
            keyPending = false;
    }
    return lines;
}

int SettingsJson::LineOf(const QByteArray& data, int offset)
{
    const int end = qBound(0, offset, data.size());
    return 1 + int(std::count(data.constBegin(), data.constBegin() + end, '\n'));
}
