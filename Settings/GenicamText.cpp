#include "GenicamText.h"

#include "FeatureLayout.h"
#include "SettingsValue.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

using namespace ZMT::PkoAPI;

const char* const GenicamText::kHeader = "# Pelko camera settings, GenICam persistence text";
const char* const GenicamText::kEndMarker = "# End of settings";

namespace {

const QLatin1String kModel("# Model: ");
const QLatin1String kCamera("# Camera: ");
const QLatin1String kSaved("# Saved: ");
const QLatin1String kOnly("# Only: ");

QString ValueText(const SettingsEntry& entry)
{
    if (entry.value.userType() == QMetaType::Bool)
        return entry.value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    return SettingsValue::ToText(entry.value);
}

struct Line {
    QString name;
    QString value;
    int number = 0;
};

}  // namespace

QByteArray GenicamText::Write(const SettingsDocument& document)
{
    QStringList lines;
    lines << QLatin1String(kHeader);
    if (!document.cameraModel.isEmpty())
        lines << kModel + document.cameraModel;
    if (!document.cameraId.isEmpty())
        lines << kCamera + document.cameraId;
    if (document.saved.isValid())
        lines << kSaved + document.saved.toUTC().toString(Qt::ISODate);
    if (!document.scope.isEmpty())
        lines << kOnly + document.scope;
    lines << QStringLiteral("# One feature a line: name, a tab, the value; a selector before what it selects.");

    // The selector and entry the previous line was written under.
    QString lastSelector;
    QString lastEntry;
    for (const SettingsEntry& entry : document.entries) {
        if (entry.IsSelected()) {
            if (entry.selector != lastSelector || entry.selectorEntry != lastEntry)
                lines << entry.selector + QLatin1Char('\t') + entry.selectorEntry;
            lastSelector = entry.selector;
            lastEntry = entry.selectorEntry;
        } else {
            lastSelector.clear();
            lastEntry.clear();
        }
        lines << entry.feature + QLatin1Char('\t') + ValueText(entry);
    }
    lines << QLatin1String(kEndMarker);
    return (lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
}

bool GenicamText::Read(const QByteArray& data, const QString& fileName, SettingsDocument& document,
                       QVector<SettingsProblem>& problems)
{
    auto fail = [&](int line, const QString& message) {
        SettingsProblem problem;
        problem.kind = SettingsProblem::Kind::Syntax;
        problem.file = fileName;
        problem.line = line;
        problem.message = message;
        problems.append(problem);
        return false;
    };
    static const QRegularExpression namePattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    const QStringList texts = QString::fromUtf8(data).split(QLatin1Char('\n'));
    SettingsDocument result;
    result.fileName = fileName;
    QVector<Line> lines;
    bool ours = false;
    bool ended = false;
    int lastNumber = 0;
    for (int i = 0; i < texts.size(); ++i) {
        QString text = texts.at(i);
        // Every carriage return before the line feed is line end, so that a
        // value never ends in one and reads back as written.
        while (text.endsWith(QLatin1Char('\r')))
            text.chop(1);
        const int number = i + 1;
        if (text.trimmed().isEmpty())
            continue;
        lastNumber = number;
        if (ended)
            return fail(number, QStringLiteral("expected nothing after \"%1\"").arg(QLatin1String(kEndMarker)));
        if (text.startsWith(QLatin1Char('#'))) {
            if (text == QLatin1String(kHeader))
                ours = true;
            else if (text == QLatin1String(kEndMarker))
                ended = true;
            else if (text.startsWith(kModel))
                result.cameraModel = text.mid(kModel.size());
            else if (text.startsWith(kCamera))
                result.cameraId = text.mid(kCamera.size());
            else if (text.startsWith(kSaved))
                result.saved = QDateTime::fromString(text.mid(kSaved.size()), Qt::ISODate);
            else if (text.startsWith(kOnly))
                result.scope = text.mid(kOnly.size());
            continue;
        }
        const int tab = text.indexOf(QLatin1Char('\t'));
        if (tab < 0) {
            return fail(number,
                        QStringLiteral("expected a feature name, a tab and a value, found \"%1\"").arg(text.left(60)));
        }
        Line line;
        line.name = text.left(tab).trimmed();
        line.value = text.mid(tab + 1);
        line.number = number;
        if (!namePattern.match(line.name).hasMatch()) {
            return fail(number, QStringLiteral("expected a feature name (letters, digits, '_') before the tab, "
                                               "found \"%1\"")
                                    .arg(line.name.left(60)));
        }
        lines.append(line);
    }
    if (ours && !ended) {
        return fail(
            lastNumber + 1,
            QStringLiteral("expected \"%1\" as the last line: the file is cut short").arg(QLatin1String(kEndMarker)));
    }

    QStringList selectors;
    for (const Line& line : lines) {
        if (FeatureLayout::IsSelectorName(line.name) && !selectors.contains(line.name))
            selectors.append(line.name);
    }
    // A selector line followed (before anything else of its own) by a line
    // it selects only selects; any other selector line is a value of its own.
    QHash<QString, QString> current;
    for (int i = 0; i < lines.size(); ++i) {
        const Line& line = lines.at(i);
        SettingsEntry entry;
        entry.feature = line.name;
        entry.value = QVariant(line.value);
        entry.fromText = true;
        entry.line = line.number;
        if (selectors.contains(line.name)) {
            current.insert(line.name, line.value);
            bool selecting = false;
            for (int j = i + 1; j < lines.size(); ++j) {
                const QString& next = lines.at(j).name;
                if (next == line.name)
                    break;
                if (FeatureLayout::SelectorFor(next, selectors) == line.name) {
                    selecting = true;
                    break;
                }
                // Some other feature: the run of this selector has ended.
                if (!FeatureLayout::IsSelectorName(next))
                    break;
            }
            if (selecting)
                continue;
        } else {
            const QString selector = FeatureLayout::SelectorFor(line.name, selectors);
            if (!selector.isEmpty() && current.contains(selector)) {
                entry.selector = selector;
                entry.selectorEntry = current.value(selector);
            }
        }
        result.entries.append(entry);
    }
    document = result;
    return true;
}
