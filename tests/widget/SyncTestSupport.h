#ifndef SYNCTESTSUPPORT_H
#define SYNCTESTSUPPORT_H

// Helpers of the synchronisation tests of the "Trigger IO" tab: simulated
// cameras, changes made by the camera or by the viewer on a thread of its
// own, the camera's journal as text and the visible state of every control.

#include "SimTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMap>
#include <QPushButton>
#include <QSet>
#include <QSharedPointer>
#include <QSpinBox>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace SyncTest {

using TestSupport::ChangeFromCamera;
using TestSupport::DeliverNotifications;
using TestSupport::FeatureList;
using TestSupport::FeaturePtr;
using TestSupport::FeaturesOf;
using TestSupport::IsSelector;
using TestSupport::JournalEntry;
using TestSupport::OpenModel;
using TestSupport::SimCameraPtr;

// Runs work on a thread of its own that writes as the viewer would, and
// waits for it to end. Throws std::system_error when no thread can start.
inline void RunAsViewer(const std::function<void()>& work)
{
    std::thread viewer([&work] {
        ZMT::PkoAPI::Sim::WriterScope scope("viewer");
        work();
    });
    viewer.join();
}

// Writes valueText through the SDK in the form that fits the feature's type
// (a command is executed, valueText ignored). Returns the SDK's code;
// PkoErrorNotFound for a feature the camera does not have,
// PkoErrorInvalidValue for a number that does not parse.
inline int WriteThroughSdk(const SimCameraPtr& camera, const std::string& name, const std::string& valueText)
{
    FeaturePtr feature;
    const int found = camera->GetFeatureByName(name.c_str(), feature);
    if (found != ZMT::PkoAPI::PkoErrorSuccess)
        return found;
    ZMT::PkoAPI::PkoFeatureDataType type = ZMT::PkoAPI::PkoFeatureDataUnknown;
    const int typed = feature->GetDataType(type);
    if (typed != ZMT::PkoAPI::PkoErrorSuccess)
        return typed;
    switch (type) {
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            bool parsed = false;
            const long long value = QString::fromStdString(valueText).toLongLong(&parsed);
            return parsed ? feature->SetValue(value) : static_cast<int>(ZMT::PkoAPI::PkoErrorInvalidValue);
        }
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            bool parsed = false;
            const double value = QString::fromStdString(valueText).toDouble(&parsed);
            return parsed ? feature->SetValue(value) : static_cast<int>(ZMT::PkoAPI::PkoErrorInvalidValue);
        }
        case ZMT::PkoAPI::PkoFeatureDataBool:
            return feature->SetValue(valueText == "true");
        case ZMT::PkoAPI::PkoFeatureDataCommand:
            return feature->RunCommand();
        default:
            return feature->SetValue(valueText.c_str());
    }
}

// WriteThroughSdk from the viewer's thread; its code.
inline int WriteFromViewer(const SimCameraPtr& camera, const std::string& name, const std::string& valueText)
{
    int result = ZMT::PkoAPI::PkoErrorInternal;
    RunAsViewer([&] { result = WriteThroughSdk(camera, name, valueText); });
    return result;
}

// "Feature=value" of each write of that writer, oldest first (refused ones
// too). Cannot fail.
inline QStringList WritesBy(const std::vector<JournalEntry>& journal, const std::string& writer)
{
    return TestSupport::JournalText(journal, TestSupport::JournalStyle::Plain, writer);
}

// The tab's writes of anything but a selector: what a refresh must never
// make. Cannot fail.
inline QStringList NonSelectorWritesOfTheTab(const std::vector<JournalEntry>& journal)
{
    QStringList writes;
    for (const QString& write : WritesBy(journal, "client")) {
        if (!IsSelector(write.section('=', 0, 0)))
            writes << write;
    }
    return writes;
}

// Current values of the selectors the camera has, "Feature=value"; the
// ones it lacks are left out.
inline QStringList SelectorValues(const SimCameraPtr& camera)
{
    QStringList values;
    for (const QString& selector : TestSupport::SelectorNames()) {
        const std::string value = camera->ValueText(selector.toStdString());
        if (!value.empty())
            values << selector + "=" + QString::fromStdString(value);
    }
    return values;
}

// What the user sees of one control, as text; root is the tab whose
// showing would show it. Cannot fail.
inline QString DescribeControl(const QWidget* control, const QWidget* root)
{
    QString state = QString("enabled=%1 shown=%2").arg(control->isEnabled()).arg(control->isVisibleTo(root));
    if (const QComboBox* combo = qobject_cast<const QComboBox*>(control)) {
        state += QString(" items=%1 current=%2 maxWidth=%3")
                     .arg(TestSupport::ItemTexts(combo).join('|'))
                     .arg(combo->currentIndex())
                     .arg(combo->maximumWidth());
    } else if (const QSpinBox* spin = qobject_cast<const QSpinBox*>(control)) {
        state += QString(" range=%1..%2 step=%3 value=%4")
                     .arg(spin->minimum())
                     .arg(spin->maximum())
                     .arg(spin->singleStep())
                     .arg(spin->value());
    } else if (const QCheckBox* box = qobject_cast<const QCheckBox*>(control)) {
        state += QString(" check=%1").arg(static_cast<int>(box->checkState()));
    } else if (const QAbstractButton* button = qobject_cast<const QAbstractButton*>(control)) {
        state += QString(" text=%1").arg(button->text());
    } else if (const QLabel* label = qobject_cast<const QLabel*>(control)) {
        state += QString(" text=%1").arg(label->text());
    } else if (const QGroupBox* group = qobject_cast<const QGroupBox*>(control)) {
        state += QString(" height=%1..%2").arg(group->minimumHeight()).arg(group->maximumHeight());
    }
    return state;
}

// Every named widget of the tab with what the user sees of it; Qt's own
// helpers ("qt_...") are left out. Cannot fail.
inline QMap<QString, QString> ControlStates(const QWidget* tab)
{
    QMap<QString, QString> states;
    for (const QWidget* control : tab->findChildren<QWidget*>()) {
        const QString name = control->objectName();
        if (name.isEmpty() || name.startsWith("qt_"))
            continue;
        states.insert(name, DescribeControl(control, tab));
    }
    return states;
}

// Names of the controls whose state differs, appeared or disappeared,
// sorted. Cannot fail.
inline QStringList ChangedControls(const QMap<QString, QString>& before, const QMap<QString, QString>& after)
{
    QSet<QString> names;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        names.insert(it.key());
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        names.insert(it.key());
    QStringList changed;
    for (const QString& name : names) {
        if (!before.contains(name) || !after.contains(name) || before.value(name) != after.value(name))
            changed << name;
    }
    changed.sort();
    return changed;
}

// Object names of the controls whose signals are blocked right now, sorted
// (empty: all live). Cannot fail.
inline QStringList ControlsWithBlockedSignals(const QWidget* tab)
{
    QStringList blocked;
    for (QWidget* control : tab->findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<QComboBox*>(control) != nullptr ||
                               qobject_cast<QAbstractButton*>(control) != nullptr ||
                               qobject_cast<QSpinBox*>(control) != nullptr;
        if (isControl && control->signalsBlocked())
            blocked << control->objectName();
    }
    blocked.sort();
    return blocked;
}

}  // namespace SyncTest

#endif
