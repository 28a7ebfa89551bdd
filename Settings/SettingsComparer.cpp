#include "SettingsComparer.h"

#include "FeatureIo.h"
#include "SelectorCursor.h"
#include "SettingsChecker.h"
#include "SettingsValue.h"

#include <PkoAPI/Sim/SimTypes.h>

#include <string>

using namespace ZMT::PkoAPI;

QString SettingsDifference::KindName(Kind kind)
{
    switch (kind) {
        case Kind::Different:
            return QStringLiteral("different");
        case Kind::Missing:
            return QStringLiteral("missing");
        case Kind::Unreadable:
            break;
    }
    return QStringLiteral("unreadable");
}

int SettingsComparer::Compare(const CameraPtr& camera, const FeatureLayout& layout, const SettingsDocument& file,
                              QVector<SettingsDifference>& differences, int& equal, QVector<SettingsProblem>& notes)
{
    Sim::WriterScope writer("settings");
    differences.clear();
    equal = 0;
    SettingsDocument document = file;
    std::string model;
    if (camera)
        camera->GetModel(model);
    const SettingsCheck check = SettingsChecker::Check(document, layout, QString::fromStdString(model));
    for (const SettingsProblem& problem : check.problems) {
        if (!problem.IsError())
            notes.append(problem);
    }
    if (check.cameraLost)
        return PkoErrorConnectionLost;
    SelectorCursor cursor(layout);
    int lost = PkoErrorSuccess;
    for (int i = 0; i < document.entries.size(); ++i) {
        const SettingsEntry& entry = document.entries.at(i);
        SettingsDifference difference;
        difference.entry = entry;
        if (!check.usable.at(i)) {
            difference.kind = SettingsDifference::Kind::Missing;
            difference.message = check.reasons.at(i);
            differences.append(difference);
            continue;
        }
        const FeatureLayout::Item* item = layout.Find(entry.feature);
        QVariant value;
        int code = PkoErrorSuccess;
        if (entry.IsSelected()) {
            code = cursor.Select(entry.selector, entry.selectorEntry);
            if (code == PkoErrorSuccess)
                code = FeatureIo::Read(item->feature, item->type, value);
        } else if (layout.IsSelector(entry.feature)) {
            // Where the selector stands for everyone else, not where the
            // comparison moved it.
            QString home;
            code = cursor.Home(entry.feature, home);
            value = QVariant(home);
        } else {
            code = FeatureIo::Read(item->feature, item->type, value);
        }
        if (FeatureIo::IsLost(code)) {
            lost = code;
            break;
        }
        if (code != PkoErrorSuccess) {
            difference.kind = SettingsDifference::Kind::Unreadable;
            difference.message = QStringLiteral("cannot be read: %1").arg(FeatureIo::ErrorName(code));
            differences.append(difference);
            continue;
        }
        if (SettingsValue::Equal(value, entry.value)) {
            ++equal;
            continue;
        }
        difference.cameraValue = value;
        differences.append(difference);
    }
    if (lost == PkoErrorSuccess) {
        const int code = cursor.RestoreAll();
        if (FeatureIo::IsLost(code))
            lost = code;
    }
    return lost;
}
