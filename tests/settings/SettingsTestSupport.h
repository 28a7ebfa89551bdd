#ifndef SETTINGSTESTSUPPORT_H
#define SETTINGSTESTSUPPORT_H

// What the settings suites do alike on any camera: give every saved value
// another one, and read back what a camera holds for a file's entries.
// Header-only.

#include "FeatureIo.h"
#include "FeatureLayout.h"
#include "SelectorCursor.h"
#include "SettingsDocument.h"
#include "SettingsValue.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QStringList>

namespace SettingsTest {

using namespace ZMT::PkoAPI;

// A value of item's type other than value that the feature takes now
// (another available entry, the other boolean, another point of the grid,
// another text); invalid when there is none.
inline QVariant OtherValue(const FeatureLayout::Item& item, const QVariant& value)
{
    switch (item.type) {
        case PkoFeatureDataBool:
            return QVariant(!value.toBool());
        case PkoFeatureDataString:
            return QVariant(value.toString() + QStringLiteral("-changed"));
        case PkoFeatureDataEnum: {
            QStringList entries;
            FeatureIo::Entries(item.feature, entries);
            for (const QString& entry : entries) {
                bool available = false;
                if (entry != value.toString() &&
                    item.feature->IsValueAvailable(entry.toUtf8().constData(), available) == PkoErrorSuccess &&
                    available) {
                    return QVariant(entry);
                }
            }
            return QVariant();
        }
        case PkoFeatureDataInt:
        case PkoFeatureDataFloat: {
            QVariant minimum;
            QVariant maximum;
            QVariant increment;
            if (FeatureIo::Range(item.feature, item.type, minimum, maximum, increment) != PkoErrorSuccess)
                return QVariant();
            if (item.type == PkoFeatureDataInt) {
                const qlonglong step = qMax<qlonglong>(1, increment.toLongLong());
                const qlonglong other = value.toLongLong() - step >= minimum.toLongLong() ? value.toLongLong() - step
                                                                                          : value.toLongLong() + step;
                return other <= maximum.toLongLong() ? QVariant(other) : QVariant();
            }
            const double step = increment.toDouble() > 0.0 ? increment.toDouble() : 1.0;
            const double other =
                value.toDouble() - step >= minimum.toDouble() ? value.toDouble() - step : value.toDouble() + step;
            return other <= maximum.toDouble() ? QVariant(FeatureIo::Snap(QVariant(other), minimum, increment))
                                               : QVariant();
        }
        default:
            return QVariant();
    }
}

// Writes another value to every entry of document, as far as the camera
// takes it (a change may make a later one impossible); the selectors are
// put back. Returns the keys changed.
inline QStringList ChangeEverything(const CameraPtr& camera, const FeatureLayout& layout,
                                    const SettingsDocument& document)
{
    Q_UNUSED(camera);
    Sim::WriterScope writer("test");
    SelectorCursor cursor(layout);
    QStringList changed;
    for (const SettingsEntry& entry : document.entries) {
        const FeatureLayout::Item* item = layout.Find(entry.feature);
        if (item == nullptr)
            continue;
        if (entry.IsSelected() && cursor.Select(entry.selector, entry.selectorEntry) != PkoErrorSuccess)
            continue;
        QVariant current;
        if (FeatureIo::Read(item->feature, item->type, current) != PkoErrorSuccess)
            continue;
        const QVariant other = OtherValue(*item, current);
        if (!other.isValid() || FeatureIo::Write(item->feature, item->type, other) != PkoErrorSuccess)
            continue;
        if (layout.IsSelector(entry.feature))
            cursor.Written(entry.feature, other.toString());
        changed << entry.Key();
    }
    cursor.RestoreAll();
    return changed;
}

// What a simulated camera holds for each entry of document, as
// "key=value" in the journal's text; the file's own text beside it when
// it differs.
inline QStringList Mismatches(const Sim::SimCameraPtr& camera, const SettingsDocument& document)
{
    QStringList mismatches;
    for (const SettingsEntry& entry : document.entries) {
        const QString held =
            QString::fromStdString(camera->ValueText(entry.feature.toStdString(), entry.selectorEntry.toStdString()));
        const QString wanted = SettingsValue::ToText(entry.value);
        if (held != wanted)
            mismatches << QStringLiteral("%1: camera %2, file %3").arg(entry.Key(), held, wanted);
    }
    return mismatches;
}

// Every value the camera holds for the entries of document, by key.
inline QStringList Snapshot(const Sim::SimCameraPtr& camera, const SettingsDocument& document)
{
    QStringList values;
    for (const SettingsEntry& entry : document.entries) {
        values << entry.Key() + "=" +
                      QString::fromStdString(
                          camera->ValueText(entry.feature.toStdString(), entry.selectorEntry.toStdString()));
    }
    return values;
}

inline QStringList JournalLines(const Sim::SimCameraPtr& camera)
{
    QStringList lines;
    for (const Sim::JournalEntry& entry : camera->Journal()) {
        lines << QStringLiteral("%1=%2 by %3 -> %4")
                     .arg(QString::fromStdString(entry.feature), QString::fromStdString(entry.value),
                          QString::fromStdString(entry.writer))
                     .arg(entry.result);
    }
    return lines;
}

}  // namespace SettingsTest

#endif  // SETTINGSTESTSUPPORT_H
