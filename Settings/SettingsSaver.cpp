#include "SettingsSaver.h"

#include "FeatureIo.h"
#include "SelectorCursor.h"
#include "SettingsValue.h"

#include <PkoAPI/Sim/SimTypes.h>

#include <cmath>
#include <string>

using namespace ZMT::PkoAPI;

namespace {

// Reads one value worth saving. 1: saved; 0: not settable, not writable now
// or unreadable (with a note); <0: the camera is lost (the SDK's code).
int ReadValue(const FeatureLayout::Item& item, SettingsEntry& entry, QStringList& notes)
{
    if (!SettingsValue::IsSettable(item.type))
        return 0;
    bool writable = false;
    int code = item.feature->IsWritable(writable);
    if (FeatureIo::IsLost(code))
        return code;
    if (code != PkoErrorSuccess || !writable)
        return 0;
    QVariant value;
    code = FeatureIo::Read(item.feature, item.type, value);
    if (FeatureIo::IsLost(code))
        return code;
    if (code != PkoErrorSuccess) {
        notes << QStringLiteral("%1 left out: it cannot be read (%2)").arg(entry.Key(), FeatureIo::ErrorName(code));
        return 0;
    }
    if (value.userType() == QMetaType::Double && !std::isfinite(value.toDouble())) {
        notes << QStringLiteral("%1 left out: it reads as %2").arg(entry.Key(), SettingsValue::ToText(value));
        return 0;
    }
    entry.feature = item.name;
    entry.type = item.type;
    entry.value = value;
    return 1;
}

}  // namespace

QString SettingsSaver::ScopeName(Scope scope)
{
    return scope == Scope::TriggerIo ? QStringLiteral("trigger-io") : QStringLiteral("all");
}

bool SettingsSaver::ScopeFromName(const QString& name, Scope& scope)
{
    if (name == QLatin1String("all")) {
        scope = Scope::All;
        return true;
    }
    if (name == QLatin1String("trigger-io")) {
        scope = Scope::TriggerIo;
        return true;
    }
    return false;
}

const QStringList& SettingsSaver::TriggerIoFeatures()
{
    // Kept as the tab lists them, "UserOutSelector" included; the selectors
    // of these features are added by the naming rule.
    static const QStringList names{
        QStringLiteral("ExposureAuto"),      QStringLiteral("ExposureMode"),    QStringLiteral("LineOutLevels"),
        QStringLiteral("LineOutPolarity"),   QStringLiteral("LineOutSource"),   QStringLiteral("LineMode"),
        QStringLiteral("UserOutputValue"),   QStringLiteral("UserOutSelector"), QStringLiteral("SyncOutLevels"),
        QStringLiteral("LineStatus"),        QStringLiteral("SyncOutPolarity"), QStringLiteral("LineInverter"),
        QStringLiteral("SyncOutSource"),     QStringLiteral("LineSource"),      QStringLiteral("LineSelector"),
        QStringLiteral("LineRouting"),       QStringLiteral("AcquisitionMode"), QStringLiteral("AcquisitionFrameCount"),
        QStringLiteral("TriggerSelector"),   QStringLiteral("TriggerMode"),     QStringLiteral("TriggerSource"),
        QStringLiteral("TriggerActivation"),
    };
    return names;
}

int SettingsSaver::Save(const CameraPtr& camera, const FeatureLayout& layout, Scope scope, SettingsDocument& document,
                        QStringList& notes)
{
    Sim::WriterScope writer("settings");
    SettingsDocument result;
    std::string text;
    if (camera) {
        camera->GetModel(text);
        result.cameraModel = QString::fromStdString(text);
        camera->GetID(text);
        result.cameraId = QString::fromStdString(text);
    }
    result.saved = QDateTime::currentDateTimeUtc();
    result.saved.setTime(QTime(result.saved.time().hour(), result.saved.time().minute(), result.saved.time().second()));
    result.scope = ScopeName(scope);

    auto wanted = [&](const QString& name) { return scope == Scope::All || TriggerIoFeatures().contains(name); };
    SelectorCursor cursor(layout);
    int lost = PkoErrorSuccess;
    for (const FeatureLayout::Group& group : layout.WriteOrder()) {
        const FeatureLayout::Item* item = layout.Find(group.feature);
        QStringList selected;
        for (const QString& name : group.selected) {
            if (wanted(name))
                selected << name;
        }
        if (!wanted(group.feature) && selected.isEmpty())
            continue;
        SettingsEntry own;
        own.feature = item->name;
        const int read = ReadValue(*item, own, notes);
        if (read < 0) {
            lost = read;
            break;
        }
        if (read > 0) {
            result.entries.append(own);
            // Where the selector stands is known now: no second read.
            if (layout.IsSelector(item->name))
                cursor.Written(item->name, own.value.toString());
        }
        if (selected.isEmpty())
            continue;

        // Each entry that can be chosen now, or only the current one when
        // the selector cannot be moved.
        QStringList entries;
        int code = FeatureIo::Entries(item->feature, entries);
        bool movable = false;
        if (code == PkoErrorSuccess)
            code = item->feature->IsWritable(movable);
        if (FeatureIo::IsLost(code)) {
            lost = code;
            break;
        }
        if (!movable) {
            QString current;
            code = cursor.Home(item->name, current);
            if (FeatureIo::IsLost(code)) {
                lost = code;
                break;
            }
            entries = code == PkoErrorSuccess ? QStringList{current} : QStringList();
        }
        for (const QString& selectorEntry : entries) {
            if (movable) {
                bool available = false;
                code = item->feature->IsValueAvailable(selectorEntry.toUtf8().constData(), available);
                if (code == PkoErrorSuccess && !available)
                    continue;
                if (code == PkoErrorSuccess)
                    code = cursor.Select(item->name, selectorEntry);
                if (code != PkoErrorSuccess) {
                    if (FeatureIo::IsLost(code))
                        break;
                    notes << QStringLiteral("%1=%2 left out: it cannot be selected (%3)")
                                 .arg(item->name, selectorEntry, FeatureIo::ErrorName(code));
                    code = PkoErrorSuccess;
                    continue;
                }
            }
            for (const QString& name : selected) {
                SettingsEntry entry;
                entry.feature = name;
                entry.selector = item->name;
                entry.selectorEntry = selectorEntry;
                code = ReadValue(*layout.Find(name), entry, notes);
                if (code < 0)
                    break;
                if (code > 0)
                    result.entries.append(entry);
                code = PkoErrorSuccess;
            }
            if (FeatureIo::IsLost(code))
                break;
        }
        if (FeatureIo::IsLost(code)) {
            lost = code;
            break;
        }
        code = cursor.Restore(item->name);
        if (FeatureIo::IsLost(code)) {
            lost = code;
            break;
        }
    }
    if (lost == PkoErrorSuccess)
        cursor.RestoreAll();
    document = result;
    return lost;
}
