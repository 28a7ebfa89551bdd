#include "SettingsLoader.h"

#include "FeatureIo.h"
#include "SelectorCursor.h"
#include "SettingsChecker.h"
#include "SettingsValue.h"

#include <PkoAPI/Sim/SimTypes.h>

#include <QSet>

#include <string>

using namespace ZMT::PkoAPI;
typedef EntryResult::Outcome Outcome;

namespace {

// Refusals that may go away once other entries are written.
bool MayDependOnOthers(int code)
{
    return code == PkoErrorInvalidAccess || code == PkoErrorInvalidValue;
}

Outcome FailureOutcome(int code)
{
    return code == PkoErrorInvalidAccess ? Outcome::NotAvailable : Outcome::Refused;
}

}  // namespace

SettingsLoader::SettingsLoader(const CameraPtr& camera, const FeatureLayout& layout)
    : m_Camera(camera), m_Layout(layout)
{}

bool SettingsLoader::Lost(int code) const
{
    return FeatureIo::IsLost(code) || (code != PkoErrorSuccess && m_Camera && m_Camera->IsConnectionLost());
}

QString SettingsLoader::CameraText(bool id) const
{
    std::string text;
    if (m_Camera) {
        if (id)
            m_Camera->GetID(text);
        else
            m_Camera->GetModel(text);
    }
    return QString::fromStdString(text);
}

LoadReport SettingsLoader::Load(const SettingsDocument& file, const Options& options)
{
    Sim::WriterScope writer("settings");
    LoadReport report;
    SettingsDocument document = file;
    const SettingsCheck check = SettingsChecker::Check(document, m_Layout, CameraText(false));
    report.problems = check.problems;
    report.results.resize(document.entries.size());
    QVector<int> order;
    for (int i = 0; i < document.entries.size(); ++i) {
        EntryResult& result = report.results[i];
        result.entry = document.entries.at(i);
        if (check.usable.at(i)) {
            order.append(i);
        } else {
            result.outcome = Outcome::Skipped;
            result.message = check.reasons.at(i);
        }
    }
    if (check.cameraLost) {
        report.status = LoadReport::Status::CameraLost;
        report.statusMessage = QStringLiteral(
            "The camera stopped answering while the file was checked; nothing "
            "was written.");
        return report;
    }
    if (check.HasErrors() && !options.partial) {
        for (int i : order)
            report.results[i].message = QStringLiteral("not written: the file has errors");
        report.status = LoadReport::Status::FileRejected;
        report.statusMessage = QStringLiteral("The file has errors; nothing was written.");
        return report;
    }

    SelectorCursor cursor(m_Layout);
    int code = Keep(document, check, cursor, report);
    if (code == PkoErrorSuccess)
        code = cursor.RestoreAll();
    if (Lost(code)) {
        report.status = LoadReport::Status::CameraLost;
        report.statusMessage = QStringLiteral("The camera stopped answering before anything was written (%1).")
                                   .arg(FeatureIo::ErrorName(code));
        return report;
    }
    if (!options.backupPath.isEmpty()) {
        QString error;
        if (!SettingsFile::Write(options.backupPath, report.backup, options.backupFormat, error)) {
            report.status = LoadReport::Status::BackupFailed;
            report.statusMessage =
                QStringLiteral("The current values could not be kept: %1; nothing was written.").arg(error);
            return report;
        }
    }

    const bool stopAtFirst = options.stopOnError || options.rollbackOnError;
    bool failed = false;
    QVector<int> deferred;
    auto stopHere = [&](int from, LoadReport::Status status, const QString& why) {
        report.status = status;
        for (int k = from; k < order.size(); ++k) {
            EntryResult& rest = report.results[order.at(k)];
            if (rest.attempts == 0)
                rest.message = why;
        }
    };
    for (int k = 0; k < order.size(); ++k) {
        if (Cancelled()) {
            stopHere(k, LoadReport::Status::Cancelled, QStringLiteral("not written: cancelled"));
            report.statusMessage = QStringLiteral("Cancelled after %1 of %2 entries.").arg(k).arg(order.size());
            break;
        }
        const int i = order.at(k);
        EntryResult& result = report.results[i];
        code = WriteOne(document.entries.at(i), check.toWrite.at(i), cursor, result);
        if (Lost(code)) {
            stopHere(k + 1, LoadReport::Status::CameraLost, QStringLiteral("not written: the camera was lost"));
            report.statusMessage = QStringLiteral("The camera stopped answering at %1 (%2).")
                                       .arg(result.entry.Key(), FeatureIo::ErrorName(code));
            break;
        }
        if (result.IsFailure()) {
            if (stopAtFirst) {
                failed = true;
                stopHere(k + 1, LoadReport::Status::Stopped, QStringLiteral("not written: stopped at the first error"));
                report.statusMessage = QStringLiteral("Stopped at %1: %2.").arg(result.entry.Key(), result.message);
                break;
            }
            if (MayDependOnOthers(code))
                deferred.append(i);
        }
        if (m_Progress)
            m_Progress(k + 1, order.size());
        // The selector round trip ends with the run of entries under it.
        const QString& selector = result.entry.selector;
        if (!selector.isEmpty() &&
            (k + 1 == order.size() || document.entries.at(order.at(k + 1)).selector != selector)) {
            code = cursor.Restore(selector);
            if (Lost(code)) {
                stopHere(k + 1, LoadReport::Status::CameraLost, QStringLiteral("not written: the camera was lost"));
                report.statusMessage =
                    QStringLiteral("The camera stopped answering (%1).").arg(FeatureIo::ErrorName(code));
                break;
            }
        }
    }

    // Entries that may have waited for others, until a round changes nothing.
    while (report.status == LoadReport::Status::Done && !deferred.isEmpty()) {
        QVector<int> still;
        for (int i : deferred) {
            if (Cancelled()) {
                report.status = LoadReport::Status::Cancelled;
                report.statusMessage = QStringLiteral("Cancelled while retrying.");
                break;
            }
            EntryResult& result = report.results[i];
            code = WriteOne(document.entries.at(i), check.toWrite.at(i), cursor, result);
            if (Lost(code)) {
                report.status = LoadReport::Status::CameraLost;
                report.statusMessage = QStringLiteral("The camera stopped answering at %1 (%2).")
                                           .arg(result.entry.Key(), FeatureIo::ErrorName(code));
                break;
            }
            if (result.IsFailure())
                still.append(i);
        }
        if (still.size() == deferred.size())
            break;
        deferred = still;
    }

    if (report.status != LoadReport::Status::CameraLost) {
        code = cursor.RestoreAll();
        if (Lost(code)) {
            report.status = LoadReport::Status::CameraLost;
            report.statusMessage = QStringLiteral("The camera stopped answering (%1).").arg(FeatureIo::ErrorName(code));
        }
    }
    for (const EntryResult& result : report.results)
        failed = failed || result.IsFailure();
    if (report.statusMessage.isEmpty()) {
        report.statusMessage = QStringLiteral("%1 applied, %2 adjusted, %3 refused, %4 not available, %5 skipped.")
                                   .arg(report.Count(Outcome::Applied))
                                   .arg(report.Count(Outcome::Adjusted))
                                   .arg(report.Count(Outcome::Refused))
                                   .arg(report.Count(Outcome::NotAvailable))
                                   .arg(report.Count(Outcome::Skipped));
    }
    if (options.rollbackOnError && failed && report.status != LoadReport::Status::CameraLost)
        Rollback(cursor, report);
    return report;
}

int SettingsLoader::Keep(const SettingsDocument& document, const SettingsCheck& check, SelectorCursor& cursor,
                         LoadReport& report)
{
    report.backup = SettingsDocument();
    report.backup.cameraModel = CameraText(false);
    report.backup.cameraId = CameraText(true);
    report.backup.saved = QDateTime::currentDateTimeUtc();
    report.backup.scope = QStringLiteral("backup");
    QSet<QString> kept;
    for (int i = 0; i < document.entries.size(); ++i) {
        if (!check.usable.at(i))
            continue;
        const SettingsEntry& entry = document.entries.at(i);
        if (kept.contains(entry.Key()))
            continue;
        const FeatureLayout::Item* item = m_Layout.Find(entry.feature);
        SettingsEntry value = entry;
        value.line = 0;
        int code = PkoErrorSuccess;
        if (entry.IsSelected()) {
            code = cursor.Select(entry.selector, entry.selectorEntry);
            if (code == PkoErrorSuccess)
                code = FeatureIo::Read(item->feature, item->type, value.value);
        } else if (m_Layout.IsSelector(entry.feature)) {
            QString home;
            code = cursor.Home(entry.feature, home);
            value.value = QVariant(home);
        } else {
            code = FeatureIo::Read(item->feature, item->type, value.value);
        }
        if (Lost(code))
            return code;
        if (code != PkoErrorSuccess) {
            SettingsProblem note;
            note.file = document.fileName;
            note.line = entry.line;
            note.entry = entry.Key();
            note.message = QStringLiteral("its current value cannot be read (%1), so it is not kept")
                               .arg(FeatureIo::ErrorName(code));
            report.problems.append(note);
            continue;
        }
        kept.insert(entry.Key());
        report.backup.entries.append(value);
    }
    return PkoErrorSuccess;
}

int SettingsLoader::WriteOne(const SettingsEntry& entry, const QVariant& value, SelectorCursor& cursor,
                             EntryResult& result)
{
    ++result.attempts;
    result.written = value;
    result.readBack = QVariant();
    result.message.clear();
    const FeatureLayout::Item* item = m_Layout.Find(entry.feature);
    int code = PkoErrorSuccess;
    if (entry.IsSelected()) {
        code = cursor.Select(entry.selector, entry.selectorEntry);
        if (code != PkoErrorSuccess) {
            result.code = code;
            result.outcome = FailureOutcome(code);
            result.message = QStringLiteral("%1=%2 cannot be selected: %3")
                                 .arg(entry.selector, entry.selectorEntry, FeatureIo::ErrorName(code));
            return code;
        }
    }
    const bool isSelector = m_Layout.IsSelector(entry.feature);
    code = FeatureIo::Write(item->feature, item->type, value);
    if (code != PkoErrorSuccess) {
        result.code = code;
        result.outcome = FailureOutcome(code);
        result.message = FeatureIo::ErrorName(code);
        return code;
    }
    result.code = PkoErrorSuccess;
    code = FeatureIo::Read(item->feature, item->type, result.readBack);
    if (code != PkoErrorSuccess) {
        if (isSelector)
            cursor.Forget(entry.feature);
        result.outcome = Outcome::Applied;
        result.message = QStringLiteral("written, but it cannot be read back (%1)").arg(FeatureIo::ErrorName(code));
        return Lost(code) ? code : PkoErrorSuccess;
    }
    if (isSelector)
        cursor.Written(entry.feature, result.readBack.toString());
    if (SettingsValue::Equal(result.readBack, entry.value)) {
        result.outcome = Outcome::Applied;
    } else {
        result.outcome = Outcome::Adjusted;
        result.message = QStringLiteral("%1 written, the camera holds %2")
                             .arg(SettingsValue::ToText(value), SettingsValue::ToText(result.readBack));
    }
    return PkoErrorSuccess;
}

void SettingsLoader::Rollback(SelectorCursor& cursor, LoadReport& report)
{
    QSet<QString> written;
    for (const EntryResult& result : report.results) {
        if (result.outcome == Outcome::Applied || result.outcome == Outcome::Adjusted)
            written.insert(result.entry.Key());
    }
    report.rolledBack = true;
    report.rollbackComplete = true;
    for (const SettingsEntry& kept : report.backup.entries) {
        if (!written.contains(kept.Key()))
            continue;
        EntryResult result;
        result.entry = kept;
        const int code = WriteOne(kept, kept.value, cursor, result);
        report.rollback.append(result);
        if (result.outcome != Outcome::Applied)
            report.rollbackComplete = false;
        if (Lost(code)) {
            report.status = LoadReport::Status::CameraLost;
            report.statusMessage = QStringLiteral(
                                       "The camera stopped answering while the kept values were written "
                                       "back (%1).")
                                       .arg(FeatureIo::ErrorName(code));
            return;
        }
    }
    if (Lost(cursor.RestoreAll())) {
        report.status = LoadReport::Status::CameraLost;
        report.rollbackComplete = false;
    }
    report.statusMessage += report.rollbackComplete ? QStringLiteral(" Every kept value was written back and verified.")
                                                    : QStringLiteral(" Writing back the kept values failed for some.");
}
