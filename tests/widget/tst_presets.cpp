// The "Edge", "Level" and "Bulk" presets of the "Trigger IO" tab. A preset
// only selects entries in the trigger input controls; the controls' own
// slots write. Each expected list below is worked out step by step from the
// preset's steps for the camera's entries and state, with these rules:
// selecting an entry writes nothing when it is already current or missing;
// the selector's slot wraps its write in Mode "Off"/"On" when the camera has
// the line selector row and the mode combo shows "On"; re-reading the live
// selector combo empties it (its slot gets "", which the camera refuses) and
// makes the first entry current, then the camera's entry if that differs.

#include "WidgetTestSupport.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QMetaProperty>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

using ZMT::PkoAPI::Sim::SimCameraPtr;
typedef WidgetTestSupport::CameraParts CameraParts;

namespace {

QString W(const QString& feature, const QString& value)
{
    return TestSupport::WriteLine(feature, value);
}

// A write the camera refuses because the entry does not exist.
QString Refused(const QString& feature, const QString& value)
{
    return TestSupport::RefusedLine(feature, value, ZMT::PkoAPI::PkoErrorInvalidValue);
}

// The debug line of a failed observer (un)registration.
QString ObserverMessage(const QString& operation, int errorCode)
{
    return QString("Could not %1 feature observer. Error code:  %2 \n").arg(operation).arg(errorCode);
}

// The ready-made models, or one of the cameras made to measure here.
SimCameraPtr CameraFor(const QString& name, std::string& error)
{
    if (name.startsWith("SIM-"))
        return WidgetTestSupport::Model(name.toStdString());

    CameraParts parts;
    if (name == "routing with entries missing") {
        // No ExposureStart/ExposureActive, InputLines, FallingEdge,
        // LowLevel or Continuous.
        parts.selectors = {"FrameStart", "AcquisitionStart"};
        parts.sources = {"Line0", "Line1", "Software"};
        parts.activations = {"RisingEdge", "AnyEdge"};
        parts.acquisitionModes = {"SingleFrame", "MultiFrame"};
        parts.exposureModes = {"Timed", "TriggerWidth"};
        parts.lines = {{"Line0", "Input"}, {"Line1", "Output"}};
        parts.routing = true;
    } else if (name == "sync out with entries missing") {
        // No FrameStart, Line1, FallingEdge or LevelLow.
        parts.selectors = {"AcquisitionStart"};
        parts.sources = {"Freerun", "Software"};
        parts.activations = {"RisingEdge", "LevelHigh"};
        parts.acquisitionModes = {"Continuous", "MultiFrame"};
        parts.exposureAutos = {"Off", "other"};
        parts.lines.clear();
        parts.integers = {"SyncOutLevels"};
    } else if (name == "no input line") {
        parts.sources = {"Line0", "Line1", "Software"};
        parts.source = "Software";
        parts.exposureModes = {"Timed", "TriggerWidth"};
        parts.lines = {{"Line0", "Output"}, {"Line1", "Output"}};
    } else if (name == "no exposure combo") {
        // Neither "other" nor "Timed": no exposure combo, no branch.
        parts.exposureAutos = {"Off", "Continuous"};
        parts.exposureModes = {"TriggerWidth"};
    } else if (name == "read-only acquisition mode") {
        parts.exposureModes = {"Timed", "TriggerWidth"};
        parts.acquisitionModeReadOnly = true;
    } else {
        error = "no camera named " + name.toStdString();
        return SimCameraPtr();
    }
    return WidgetTestSupport::Build(name.toStdString(), parts, error);
}

QPushButton* PresetButton(WidgetTestSupport& support, const QString& preset)
{
    return support.Find<QPushButton>("pb_" + preset);
}

// Clicks the preset's button as a user does; false when it cannot be clicked.
bool ClickPreset(WidgetTestSupport& support, const QString& preset)
{
    QPushButton* button = PresetButton(support, preset);
    if (button == nullptr || !button->isEnabled())
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

bool AllPresetsEnabled(WidgetTestSupport& support)
{
    return PresetButton(support, "Edge")->isEnabled() && PresetButton(support, "Level")->isEnabled() &&
           PresetButton(support, "Bulk")->isEnabled();
}

// What a preset logs when unregistering and then registering a watched
// feature's observer fail with these codes; nothing when the preset leaves
// the observers alone.
QStringList ObserverFailures(bool touchesObservers, int unregisterError, int registerError)
{
    if (!touchesObservers)
        return QStringList();
    return QStringList{ObserverMessage("unregister", unregisterError), ObserverMessage("register", registerError)};
}

}  // namespace

class TestPresets : public QObject {
    Q_OBJECT

private slots:
    void shouldWriteThePresetsStepsInOrder_data();
    void shouldWriteThePresetsStepsInOrder();

    void shouldRunTheEdgeSequenceFirstWhenBulkStartsFromTriggerWidth();
    void shouldNeverChangeTheActivationInBulkOnASyncOutCamera();
    void shouldSkipTheStepsWhoseEntriesTheCameraLacks_data();
    void shouldSkipTheStepsWhoseEntriesTheCameraLacks();
    void shouldChangeNoSourceWhenNoLineIsAnInput();
    void shouldOnlyToggleThePresetButtonsWithoutAnExposureCombo_data();
    void shouldOnlyToggleThePresetButtonsWithoutAnExposureCombo();
    void shouldUnregisterTheObserversAroundEdgeAndBulkButNotLevel_data();
    void shouldUnregisterTheObserversAroundEdgeAndBulkButNotLevel();
    void shouldRegisterTheObserversTwiceAfterANestedEdge();
    void shouldEnableThePresetButtonsAgainAfterEachPreset_data();
    void shouldEnableThePresetButtonsAgainAfterEachPreset();
    void shouldLeaveThePresetButtonsDisabledWhileTheAcquisitionModeIsLocked();
    void shouldKeepTheEventLoopRunningDuringTheWait();
    void shouldSwitchTheAcquisitionTriggerOffWhenARefreshInBulksWaitShowsItOn();
};

void TestPresets::shouldWriteThePresetsStepsInOrder_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("preset");
    // What the user chose with the mouse before, "combo box=text".
    QTest::addColumn<QStringList>("choices");
    QTest::addColumn<QStringList>("expected");
    // What the camera holds afterwards, "Feature[selector entry]=value".
    QTest::addColumn<QStringList>("held");
    // What controls show afterwards in their user property (a spin box's
    // value, a combo box's text), "object name=text".
    QTest::addColumn<QStringList>("shown");

    // Branch 1: exposure mode and line selector row.
    const QStringList edgeOnLineRouting = {
        // 1  Exp. mode "Timed": current.
        // 2  UpdateTriggerSelector: FrameStart is available, so no write of
        //    its own; the refill of the selector combo empties it, then
        //    makes FrameStart current (mode shows "Off": no Off/On).
        Refused("TriggerSelector", ""),
        W("TriggerSelector", "FrameStart"),
        // 3  Selector "ExposureStart".
        W("TriggerSelector", "ExposureStart"),
        // 4  wait. 5 Mode "Off": current. 6 Selector "ExposureStart": current.
        // 7  Source "InputLines".
        W("TriggerSource", "InputLines"),
        // 8  Activation "FallingEdge".
        W("TriggerActivation", "FallingEdge"),
        // 9  Line "Line0": current.
        // 10 Routing box checked (it was not).
        W("LineRouting", "Trigger"),
        // 11 Acq. mode "Continuous": current.
        // 12 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on a line routing camera")
        << "SIM-LINE-ROUTING"
        << "Edge" << QStringList() << edgeOnLineRouting
        << QStringList{"TriggerMode[ExposureStart]=On", "TriggerSource[ExposureStart]=InputLines",
                       "LineRouting[Line0]=Trigger"}
        << QStringList();

    const QStringList levelOnLineRouting = {
        // 1  Source "InputLines".
        W("TriggerSource", "InputLines"),
        // 2  Mode "On", before anything else.
        W("TriggerMode", "On"),
        // 3  Exp. mode "TriggerWidth": the camera now offers only the
        //    selector ExposureActive and moves to it by itself.
        W("ExposureMode", "TriggerWidth"),
        // 4  UpdateTriggerSelector: ExposureActive is current and available,
        //    so no write of its own. The refill empties the combo while the
        //    mode shows "On": Off, "", On ...
        W("TriggerMode", "Off"), Refused("TriggerSelector", ""), W("TriggerMode", "On"),
        //    ... then makes its only entry current: Off, ExposureActive, On.
        W("TriggerMode", "Off"), W("TriggerSelector", "ExposureActive"), W("TriggerMode", "On"),
        // 5  Selector "ExposureActive": current.
        // 6  Source "InputLines": current (step 1).
        // 7  Activation "LowLevel".
        W("TriggerActivation", "LowLevel"),
        // 8  Routing box checked.
        W("LineRouting", "Trigger"),
        // 9  Line "Line0": current. 10 Acq. mode "Continuous": current.
    };
    QTest::newRow("Level on a line routing camera")
        << "SIM-LINE-ROUTING"
        << "Level" << QStringList() << levelOnLineRouting
        << QStringList{"TriggerSelector=ExposureActive", "TriggerMode[ExposureActive]=On",
                       "TriggerActivation[ExposureActive]=LowLevel"}
        << QStringList();

    const QStringList bulkOnLineRouting = {
        // 0  Exp. mode shows "Timed": no Edge first.
        // 1  Exp. mode "Timed": current.
        // 2  UpdateTriggerSelector: the refill writes "" and FrameStart.
        Refused("TriggerSelector", ""),
        W("TriggerSelector", "FrameStart"),
        // 3  Selector "ExposureStart".
        W("TriggerSelector", "ExposureStart"),
        // 4  wait. 5 Mode "Off": current.
        // 6  Source "InputLines".
        W("TriggerSource", "InputLines"),
        // 7  Activation "FallinEdge": no such entry.
        // 8  Selector "AcquisitionStart" (mode shows "Off").
        W("TriggerSelector", "AcquisitionStart"),
        // 9  Routing box checked.
        W("LineRouting", "Trigger"),
        // 10 Line "Line0": current.
        // 11 Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 12 Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 13 Routing box: checked already.
        // 14 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Bulk on a line routing camera")
        << "SIM-LINE-ROUTING"
        << "Bulk" << QStringList() << bulkOnLineRouting << QStringList{"TriggerMode[AcquisitionStart]=On"}
        << QStringList{"spin_AcquisitionFrameCount=10"};

    // Branch 2: exposure auto.
    const QStringList edgeOnSyncOut = {
        // 1  Every selector: FrameStart is current, mode "Off" current;
        //    AcquisitionStart (no line selector row: the mode is left
        //    alone), mode "Off" current.
        W("TriggerSelector", "AcquisitionStart"),
        // 2  Selector "FrameStart".
        W("TriggerSelector", "FrameStart"),
        // 3  Activation "FallingEdge".
        W("TriggerActivation", "FallingEdge"),
        // 4  Source "Line1".
        W("TriggerSource", "Line1"),
        // 5  Acq. mode "Continuous": current. 6 Exp. auto "Off": current.
        // 7  pump. 8 Source "Line1": current.
        // 9  Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on a sync out camera")
        << "SIM-SYNCOUT"
        << "Edge" << QStringList() << edgeOnSyncOut << QStringList{"TriggerMode[FrameStart]=On"} << QStringList();

    const QStringList levelOnSyncOut = {
        // 1  Every selector: only AcquisitionStart is not current.
        W("TriggerSelector", "AcquisitionStart"),
        // 2  Selector "FrameStart".
        W("TriggerSelector", "FrameStart"),
        // 3  Source "Line1".
        W("TriggerSource", "Line1"),
        // 4  Acq. mode "Continuous": current.
        // 5  Exp. auto "other".
        W("ExposureAuto", "other"),
        // 6  pump. 7 Source "Line1": current.
        // 8  Activation "LevelLow".
        W("TriggerActivation", "LevelLow"),
        // 9  Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Level on a sync out camera")
        << "SIM-SYNCOUT"
        << "Level" << QStringList() << levelOnSyncOut << QStringList{"ExposureAuto=other"} << QStringList();

    const QStringList bulkOnSyncOut = {
        // 1  Every selector: only AcquisitionStart is not current.
        W("TriggerSelector", "AcquisitionStart"),
        // 2  Selector "AcquisitionStart": current (the walk ended there).
        // 3  Source "Line1".
        W("TriggerSource", "Line1"),
        // 4  Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 5  Exp. auto "Off": current.
        // 6  Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 7  pump. 8 Source "Line1": current. 9 Activation "FallinEdge": none.
        // 10 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Bulk on a sync out camera")
        << "SIM-SYNCOUT"
        << "Bulk" << QStringList() << bulkOnSyncOut << QStringList{"TriggerMode[AcquisitionStart]=On"}
        << QStringList{"spin_AcquisitionFrameCount=10"};

    // Branch 3: exposure mode, no line selector row.
    const QStringList edgeOnSfnc = {
        // 1  Exp. mode "Timed": current.
        // 2  Selector "AcquisitionStart".
        W("TriggerSelector", "AcquisitionStart"),
        // 3  pump. 4 Mode "Off": current.
        // 5  Selector "FrameStart".
        W("TriggerSelector", "FrameStart"),
        // 6  pump. 7 Mode "Off": current.
        // 8  First input line: every line selected in turn to read its mode,
        //    then the line selected before; Line0 is the first input and
        //    the source shows it already.
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line2"),
        W("LineSelector", "Line3"),
        W("LineSelector", "Line0"),
        // 9  Activation "FallingEdge".
        W("TriggerActivation", "FallingEdge"),
        // 10 Acq. mode "Continuous": current.
        // 11 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on an SFNC camera")
        << "SIM-LINE-SFNC"
        << "Edge" << QStringList() << edgeOnSfnc << QStringList{"TriggerMode[FrameStart]=On"} << QStringList();

    const QStringList levelOnSfnc = {
        // 1  Exp. mode "TriggerWidth".
        W("ExposureMode", "TriggerWidth"),
        // 2  Selector "AcquisitionStart".
        W("TriggerSelector", "AcquisitionStart"),
        // 3  pump. 4 Mode "Off": current.
        // 5  Selector "FrameStart".
        W("TriggerSelector", "FrameStart"),
        // 6  pump. 7 Mode "Off": current.
        // 8  First input line (Line0, shown already).
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line2"),
        W("LineSelector", "Line3"),
        W("LineSelector", "Line0"),
        // 9  Activation "FallingEdge", not a level.
        W("TriggerActivation", "FallingEdge"),
        // 10 Acq. mode "Continuous": current.
        // 11 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Level on an SFNC camera")
        << "SIM-LINE-SFNC"
        << "Level" << QStringList() << levelOnSfnc << QStringList{"ExposureMode=TriggerWidth"} << QStringList();

    const QStringList bulkOnSfnc = {
        // 1  Exp. mode "Timed": current. 2 Selector "FrameStart": current.
        // 3  pump. 4 Mode "Off": current.
        // 5  Selector "AcquisitionStart".
        W("TriggerSelector", "AcquisitionStart"),
        // 6  wait. 7 Mode "Off": current.
        // 8  First input line (Line0, shown already).
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line2"),
        W("LineSelector", "Line3"),
        W("LineSelector", "Line0"),
        // 9  Activation "FallingEdge", spelt right in this branch.
        W("TriggerActivation", "FallingEdge"),
        // 10 Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 11 Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 12 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Bulk on an SFNC camera")
        << "SIM-LINE-SFNC"
        << "Bulk" << QStringList() << bulkOnSfnc << QStringList{"TriggerMode[AcquisitionStart]=On"}
        << QStringList{"spin_AcquisitionFrameCount=10"};

    // The frame trigger on: branch 3 switches it off before it moves to the
    // acquisition trigger.
    QStringList bulkWithFrameTriggerOnSfnc = bulkOnSfnc;
    bulkWithFrameTriggerOnSfnc.prepend(W("TriggerMode", "Off"));
    QTest::newRow("Bulk on an SFNC camera with the frame trigger on")
        << "SIM-LINE-SFNC"
        << "Bulk" << QStringList{"combo_TriggerMode=On"} << bulkWithFrameTriggerOnSfnc
        << QStringList{"TriggerMode[FrameStart]=Off", "TriggerMode[AcquisitionStart]=On"}
        << QStringList{"spin_AcquisitionFrameCount=10"};

    // Only branch 1 turns a level set-up into an edge one first.
    const QStringList bulkAfterTriggerWidthOnSfnc = {
        // 1  Exp. mode "Timed".
        W("ExposureMode", "Timed"),
        // 2  Selector "FrameStart": current. 3 pump. 4 Mode "Off": current.
        // 5  Selector "AcquisitionStart".
        W("TriggerSelector", "AcquisitionStart"),
        // 6  wait. 7 Mode "Off": current. 8 First input line Line0: current.
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line2"),
        W("LineSelector", "Line3"),
        W("LineSelector", "Line0"),
        // 9  Activation. 10 Acq. mode. 11 Frame count. 12 Mode "On".
        W("TriggerActivation", "FallingEdge"),
        W("AcquisitionMode", "MultiFrame"),
        W("AcquisitionFrameCount", "10"),
        W("TriggerMode", "On"),
    };
    QTest::newRow("Bulk on an SFNC camera set to TriggerWidth, without Edge first")
        << "SIM-LINE-SFNC"
        << "Bulk" << QStringList{"combo_ExposureMode=TriggerWidth"} << bulkAfterTriggerWidthOnSfnc << QStringList()
        << QStringList();

    // The user triggers by software, trigger mode on.
    const QStringList edgeAfterSoftwareOnSfnc = {
        // 1  Exp. mode "Timed": current.
        // 2  Selector "AcquisitionStart": the mode is left alone here.
        W("TriggerSelector", "AcquisitionStart"),
        // 3  pump. 4 Mode "Off".
        W("TriggerMode", "Off"),
        // 5  Selector "FrameStart".
        W("TriggerSelector", "FrameStart"),
        // 6  pump. 7 Mode "Off": current.
        // 8  First input line: Line0, which replaces "Software".
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line2"),
        W("LineSelector", "Line3"),
        W("LineSelector", "Line0"),
        W("TriggerSource", "Line0"),
        // 9  Activation "FallingEdge". 10 Acq. mode: current.
        W("TriggerActivation", "FallingEdge"),
        // 11 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on an SFNC camera triggered by software, choosing the first input line")
        << "SIM-LINE-SFNC"
        << "Edge" << QStringList{"combo_TriggerSource=Software", "combo_TriggerMode=On"} << edgeAfterSoftwareOnSfnc
        << QStringList{"TriggerSource[FrameStart]=Line0", "TriggerMode[AcquisitionStart]=Off"} << QStringList();
}

void TestPresets::shouldWriteThePresetsStepsInOrder()
{
    QFETCH(QString, model);
    QFETCH(QString, preset);
    QFETCH(QStringList, choices);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, held);
    QFETCH(QStringList, shown);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    for (const QString& choice : choices) {
        QComboBox* combo = support.Find<QComboBox>(choice.section('=', 0, 0));
        QVERIFY2(combo, qPrintable(choice));
        QVERIFY2(TestSupport::ChooseWithMouse(combo, choice.section('=', 1)), qPrintable(choice));
    }
    support.ClearJournal();

    QVERIFY(ClickPreset(support, preset));

    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    for (const QString& value : held)
        QCOMPARE(TestSupport::HeldValue(support.Camera(), value), value);
    for (const QString& value : shown) {
        QWidget* control = support.Find<QWidget>(value.section('=', 0, 0));
        QVERIFY2(control, qPrintable(value));
        QCOMPARE(control->metaObject()->userProperty().read(control).toString(), value.section('=', 1));
    }
    QVERIFY(AllPresetsEnabled(support));
}

void TestPresets::shouldRunTheEdgeSequenceFirstWhenBulkStartsFromTriggerWidth()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    // The user has chosen a pulse-width exposure; the camera moved its
    // selector to ExposureActive.
    QVERIFY(TestSupport::ChooseWithMouse(support.Find<QComboBox>("combo_ExposureMode"), "TriggerWidth"));
    QCOMPARE(support.CameraValue("TriggerSelector"), QString("ExposureActive"));
    support.ClearJournal();

    QElapsedTimer clock;
    clock.start();
    QVERIFY(ClickPreset(support, "Bulk"));
    // Two 200 ms waits: Edge's and Bulk's own.
    QVERIFY(clock.elapsed() >= 400);

    const QStringList expected = {
        // 0  Exp. mode shows "TriggerWidth": the whole Edge preset first.
        // E1 Exp. mode "Timed"; the camera moves its selector to FrameStart.
        W("ExposureMode", "Timed"),
        // E2 UpdateTriggerSelector: the refill writes "" and FrameStart.
        Refused("TriggerSelector", ""),
        W("TriggerSelector", "FrameStart"),
        // E3 Selector "ExposureStart".
        W("TriggerSelector", "ExposureStart"),
        // E4 wait. E5 Mode "Off": current. E6 Selector: current.
        // E7 Source "InputLines". E8 Activation "FallingEdge".
        W("TriggerSource", "InputLines"),
        W("TriggerActivation", "FallingEdge"),
        // E9 Line "Line0": current. E10 Routing box checked.
        W("LineRouting", "Trigger"),
        // E11 Acq. mode: current. E12 Mode "On".
        W("TriggerMode", "On"),
        // Bulk 1 Exp. mode "Timed": current.
        // 2  UpdateTriggerSelector: ExposureStart is current and available.
        //    The refill runs with the mode showing "On": emptied (Off, "", On),
        W("TriggerMode", "Off"),
        Refused("TriggerSelector", ""),
        W("TriggerMode", "On"),
        //    FrameStart first (Off, FrameStart, On),
        W("TriggerMode", "Off"),
        W("TriggerSelector", "FrameStart"),
        W("TriggerMode", "On"),
        //    then back on the camera's ExposureStart (Off, ExposureStart, On).
        W("TriggerMode", "Off"),
        W("TriggerSelector", "ExposureStart"),
        W("TriggerMode", "On"),
        // 3  Selector "ExposureStart": current. 4 wait.
        // 5  Mode "Off".
        W("TriggerMode", "Off"),
        // 6  Source "InputLines": current. 7 "FallinEdge": none, so the
        //    activation stays "FallingEdge" from Edge.
        // 8  Selector "AcquisitionStart" (mode shows "Off").
        W("TriggerSelector", "AcquisitionStart"),
        // 9  Routing box: checked already. 10 Line "Line0": current.
        // 11 Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 12 Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 13 Routing box: checked already.
        // 14 Mode "On".
        W("TriggerMode", "On"),
    };
    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QCOMPARE(support.Find<QComboBox>("combo_TriggerActivation")->currentText(), QString("FallingEdge"));
    QVERIFY(AllPresetsEnabled(support));
}

void TestPresets::shouldNeverChangeTheActivationInBulkOnASyncOutCamera()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-SYNCOUT"));
    QVERIFY(support.Show());
    QVERIFY(ClickPreset(support, "Edge"));
    QComboBox* activation = support.Find<QComboBox>("combo_TriggerActivation");
    QCOMPARE(activation->currentText(), QString("FallingEdge"));
    support.ClearJournal();

    QVERIFY(ClickPreset(support, "Bulk"));

    const QStringList expected = {
        // 1  Every selector: FrameStart current, then Mode "Off" (Edge left
        //    it "On"); AcquisitionStart, Mode "Off" current.
        W("TriggerMode", "Off"),
        W("TriggerSelector", "AcquisitionStart"),
        // 2  Selector "AcquisitionStart": current.
        // 3  Source "Line1": current (Edge chose it).
        // 4  Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 5  Exp. auto "Off": current.
        // 6  Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 7  pump. 8 Source: current. 9 Activation "FallinEdge": none.
        // 10 Mode "On".
        W("TriggerMode", "On"),
    };
    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QCOMPARE(activation->currentText(), QString("FallingEdge"));
    QCOMPARE(support.CameraValue("TriggerActivation", "FrameStart"), QString("FallingEdge"));
    QCOMPARE(support.CameraValue("TriggerActivation", "AcquisitionStart"), QString("RisingEdge"));
}

void TestPresets::shouldSkipTheStepsWhoseEntriesTheCameraLacks_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QString>("preset");
    // The combo boxes that decide the preset's branch.
    QTest::addColumn<QStringList>("controls");
    QTest::addColumn<QStringList>("expected");

    // The camera lacks ExposureStart, ExposureActive, InputLines,
    // FallingEdge, LowLevel and Continuous; its line selector row offers
    // Line0 only (Line1 is an output).
    const QString routing = "routing with entries missing";
    const QStringList routingControls{"combo_InputLineSelector", "combo_ExposureMode"};
    const QStringList edgeOnRouting = {
        // 1 current. 2 UpdateTriggerSelector refill.
        Refused("TriggerSelector", ""),
        W("TriggerSelector", "FrameStart"),
        // 3 missing. 4 wait. 5 current. 6, 7, 8 missing. 9 current.
        // 10 Routing box checked.
        W("LineRouting", "Trigger"),
        // 11 missing. 12 Mode "On".
        W("TriggerMode", "On"),
    };
    const QStringList levelOnRouting = {
        // 1 missing. 2 Mode "On".
        W("TriggerMode", "On"),
        // 3 Exp. mode "TriggerWidth" (no rule on the selector here).
        W("ExposureMode", "TriggerWidth"),
        // 4 UpdateTriggerSelector refill with the mode showing "On": emptied,
        W("TriggerMode", "Off"), Refused("TriggerSelector", ""), W("TriggerMode", "On"),
        //   then FrameStart current.
        W("TriggerMode", "Off"), W("TriggerSelector", "FrameStart"), W("TriggerMode", "On"),
        // 5, 6, 7 missing. 8 Routing box checked.
        W("LineRouting", "Trigger"),
        // 9 current. 10 missing.
    };
    const QStringList bulkOnRouting = {
        // 0 no Edge. 1 current. 2 UpdateTriggerSelector refill.
        Refused("TriggerSelector", ""),
        W("TriggerSelector", "FrameStart"),
        // 3 missing. 4 wait. 5 current. 6, 7 missing.
        // 8 Selector "AcquisitionStart".
        W("TriggerSelector", "AcquisitionStart"),
        // 9 Routing box checked. 10 current.
        W("LineRouting", "Trigger"),
        // 11 Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 12 Acq. mode "MultiFrame" (the camera starts in SingleFrame).
        W("AcquisitionMode", "MultiFrame"),
        // 13 checked already. 14 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on a line routing camera") << routing << "Edge" << routingControls << edgeOnRouting;
    QTest::newRow("Level on a line routing camera") << routing << "Level" << routingControls << levelOnRouting;
    QTest::newRow("Bulk on a line routing camera") << routing << "Bulk" << routingControls << bulkOnRouting;

    // The camera has one selector, AcquisitionStart, and lacks FrameStart,
    // Line1, FallingEdge and LevelLow.
    const QString syncOut = "sync out with entries missing";
    const QStringList syncOutControls{"combo_ExposureAuto"};
    const QStringList edgeOnSyncOut = {
        // 1 every selector: current. 2, 3, 4 missing. 5, 6 current.
        // 8 missing. 9 Mode "On".
        W("TriggerMode", "On"),
    };
    const QStringList levelOnSyncOut = {
        // 1 current. 2, 3 missing. 4 current. 5 Exp. auto "other".
        W("ExposureAuto", "other"),
        // 7, 8 missing. 9 Mode "On".
        W("TriggerMode", "On"),
    };
    const QStringList bulkOnSyncOut = {
        // 1, 2 current. 3 missing. 4 Acq. mode "MultiFrame".
        W("AcquisitionMode", "MultiFrame"),
        // 5 current. 6 Frame count 10.
        W("AcquisitionFrameCount", "10"),
        // 8, 9 missing. 10 Mode "On".
        W("TriggerMode", "On"),
    };
    QTest::newRow("Edge on a sync out camera") << syncOut << "Edge" << syncOutControls << edgeOnSyncOut;
    QTest::newRow("Level on a sync out camera") << syncOut << "Level" << syncOutControls << levelOnSyncOut;
    QTest::newRow("Bulk on a sync out camera") << syncOut << "Bulk" << syncOutControls << bulkOnSyncOut;
}

void TestPresets::shouldSkipTheStepsWhoseEntriesTheCameraLacks()
{
    QFETCH(QString, camera);
    QFETCH(QString, preset);
    QFETCH(QStringList, controls);
    QFETCH(QStringList, expected);
    std::string error;
    SimCameraPtr simCamera = CameraFor(camera, error);
    QVERIFY2(simCamera, error.c_str());
    WidgetTestSupport support(simCamera);
    QVERIFY(support.Show());
    for (const QString& control : controls)
        QVERIFY2(support.Find<QComboBox>(control) != nullptr, qPrintable(control));
    support.ClearJournal();

    QVERIFY(ClickPreset(support, preset));

    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QVERIFY(AllPresetsEnabled(support));
}

void TestPresets::shouldChangeNoSourceWhenNoLineIsAnInput()
{
    std::string error;
    SimCameraPtr camera = CameraFor("no input line", error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport support(camera);
    QVERIFY(support.Show());
    QComboBox* source = support.Find<QComboBox>("combo_TriggerSource");
    QCOMPARE(source->currentText(), QString("Software"));
    support.ClearJournal();

    QVERIFY(ClickPreset(support, "Edge"));

    const QStringList expected = {
        // 1 current. 2 Selector "AcquisitionStart". 3 pump. 4 current.
        W("TriggerSelector", "AcquisitionStart"),
        // 5 Selector "FrameStart". 6 pump. 7 current.
        W("TriggerSelector", "FrameStart"),
        // 8 First input line: both lines are outputs, so "" and no source.
        W("LineSelector", "Line0"),
        W("LineSelector", "Line1"),
        W("LineSelector", "Line0"),
        // 9 Activation "FallingEdge". 10 current. 11 Mode "On".
        W("TriggerActivation", "FallingEdge"),
        W("TriggerMode", "On"),
    };
    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QCOMPARE(source->currentText(), QString("Software"));
    QCOMPARE(support.CameraValue("TriggerSource", "FrameStart"), QString("Software"));
}

void TestPresets::shouldOnlyToggleThePresetButtonsWithoutAnExposureCombo_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<bool>("touchesObservers");
    QTest::newRow("Edge") << "Edge" << true;
    QTest::newRow("Level") << "Level" << false;
    QTest::newRow("Bulk") << "Bulk" << true;
}

void TestPresets::shouldOnlyToggleThePresetButtonsWithoutAnExposureCombo()
{
    QFETCH(QString, preset);
    QFETCH(bool, touchesObservers);
    std::string error;
    SimCameraPtr camera = CameraFor("no exposure combo", error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport support(camera);
    QVERIFY(support.Show());
    QVERIFY(support.Find<QComboBox>("combo_ExposureAuto") == nullptr);
    QVERIFY(support.Find<QComboBox>("combo_ExposureMode") == nullptr);
    // Unregistering and registering show as failures of one watched feature.
    support.Camera()->InjectFault("TriggerMode", ZMT::PkoAPI::Sim::Operation::UnregisterObserver,
                                  ZMT::PkoAPI::PkoErrorOther);
    support.Camera()->InjectFault("TriggerMode", ZMT::PkoAPI::Sim::Operation::RegisterObserver,
                                  ZMT::PkoAPI::PkoErrorTimeout);
    const QList<QWidget*> buttons = {PresetButton(support, "Edge"), PresetButton(support, "Level"),
                                     PresetButton(support, "Bulk")};
    WidgetTestSupport::EnabledChanges changes(buttons);
    TestSupport::MessageCapture messages;
    support.ClearJournal();

    QVERIFY(ClickPreset(support, preset));

    QCOMPARE(support.Writes(), QStringList());
    for (QWidget* button : buttons)
        QCOMPARE(changes.Of(button), (QStringList{"disabled", "enabled"}));
    QCOMPARE(messages.MessagesWith("feature observer"),
             ObserverFailures(touchesObservers, ZMT::PkoAPI::PkoErrorOther, ZMT::PkoAPI::PkoErrorTimeout));
}

void TestPresets::shouldUnregisterTheObserversAroundEdgeAndBulkButNotLevel_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("preset");
    QTest::addColumn<bool>("touchesObservers");
    QTest::newRow("Edge, branch 1") << "SIM-LINE-ROUTING"
                                    << "Edge" << true;
    QTest::newRow("Level, branch 1") << "SIM-LINE-ROUTING"
                                     << "Level" << false;
    QTest::newRow("Bulk, branch 1") << "SIM-LINE-ROUTING"
                                    << "Bulk" << true;
    QTest::newRow("Edge, branch 2") << "SIM-SYNCOUT"
                                    << "Edge" << true;
    QTest::newRow("Level, branch 2") << "SIM-SYNCOUT"
                                     << "Level" << false;
    QTest::newRow("Bulk, branch 2") << "SIM-SYNCOUT"
                                    << "Bulk" << true;
    QTest::newRow("Edge, branch 3") << "SIM-LINE-SFNC"
                                    << "Edge" << true;
    QTest::newRow("Level, branch 3") << "SIM-LINE-SFNC"
                                     << "Level" << false;
    QTest::newRow("Bulk, branch 3") << "SIM-LINE-SFNC"
                                    << "Bulk" << true;
}

void TestPresets::shouldUnregisterTheObserversAroundEdgeAndBulkButNotLevel()
{
    QFETCH(QString, model);
    QFETCH(QString, preset);
    QFETCH(bool, touchesObservers);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    support.Camera()->InjectFault("TriggerActivation", ZMT::PkoAPI::Sim::Operation::UnregisterObserver,
                                  ZMT::PkoAPI::PkoErrorOther);
    support.Camera()->InjectFault("TriggerActivation", ZMT::PkoAPI::Sim::Operation::RegisterObserver,
                                  ZMT::PkoAPI::PkoErrorTimeout);
    TestSupport::MessageCapture messages;

    QVERIFY(ClickPreset(support, preset));

    QCOMPARE(messages.MessagesWith("feature observer"),
             ObserverFailures(touchesObservers, ZMT::PkoAPI::PkoErrorOther, ZMT::PkoAPI::PkoErrorTimeout));
}

void TestPresets::shouldRegisterTheObserversTwiceAfterANestedEdge()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    QVERIFY(TestSupport::ChooseWithMouse(support.Find<QComboBox>("combo_ExposureMode"), "TriggerWidth"));
    int watched = 0;
    for (const QString& name : WidgetTestSupport::FeatureNamesOf(support.Camera()))
        watched += WidgetTestSupport::WatchedFeatureNames().contains(name) ? 1 : 0;
    QVERIFY(watched > 0);
    TestSupport::MessageCapture messages;

    QVERIFY(ClickPreset(support, "Bulk"));

    // Bulk unregisters, so the nested Edge finds nothing to unregister;
    // Edge registers again, so Bulk's own registration at its end finds
    // every watched feature registered already.
    QStringList expected;
    for (int i = 0; i < watched; ++i)
        expected << ObserverMessage("unregister", ZMT::PkoAPI::PkoErrorNotRegistered);
    for (int i = 0; i < watched; ++i)
        expected << ObserverMessage("register", ZMT::PkoAPI::PkoErrorAlreadyRegistered);
    QCOMPARE(messages.MessagesWith("feature observer"), expected);

    // Still registered: a change from the camera is queued for the refresh.
    support.TabWidget()->ClearChangedFeatures();
    QCOMPARE(support.Camera()->ChangeFromCamera("AcquisitionMode", "SingleFrame"), 0);
    QVERIFY(support.Camera()->WaitForNotifications(5000));
    QCoreApplication::processEvents();
    QVERIFY(support.TabWidget()->ChangedFeatures().contains("AcquisitionMode"));
}

void TestPresets::shouldEnableThePresetButtonsAgainAfterEachPreset_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("preset");
    for (const char* model : {"SIM-LINE-ROUTING", "SIM-SYNCOUT", "SIM-LINE-SFNC", "SIM-LINEOUT"}) {
        for (const char* preset : {"Edge", "Level", "Bulk"})
            QTest::addRow("%s %s", preset, model) << model << preset;
    }
}

void TestPresets::shouldEnableThePresetButtonsAgainAfterEachPreset()
{
    QFETCH(QString, model);
    QFETCH(QString, preset);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    const QList<QWidget*> buttons = {PresetButton(support, "Edge"), PresetButton(support, "Level"),
                                     PresetButton(support, "Bulk")};
    WidgetTestSupport::EnabledChanges changes(buttons);

    QVERIFY(ClickPreset(support, preset));

    // Disabled while the preset runs, enabled again at its end.
    for (QWidget* button : buttons)
        QCOMPARE(changes.Of(button), (QStringList{"disabled", "enabled"}));
    QVERIFY(AllPresetsEnabled(support));
}

void TestPresets::shouldLeaveThePresetButtonsDisabledWhileTheAcquisitionModeIsLocked()
{
    std::string error;
    SimCameraPtr camera = CameraFor("read-only acquisition mode", error);
    QVERIFY2(camera, error.c_str());
    // Not shown: showing re-reads the acquisition mode and disables the
    // buttons before they could be clicked.
    WidgetTestSupport support(camera);
    QVERIFY(!support.Find<QComboBox>("combo_AcquisitionMode")->isEnabled());
    // The tab starts in the not-streaming state, buttons enabled.
    QVERIFY(AllPresetsEnabled(support));
    const QList<QWidget*> buttons = {PresetButton(support, "Edge"), PresetButton(support, "Level"),
                                     PresetButton(support, "Bulk")};
    WidgetTestSupport::EnabledChanges changes(buttons);

    QVERIFY(ClickPreset(support, "Edge"));

    for (QWidget* button : buttons) {
        QCOMPARE(changes.Of(button), QStringList{"disabled"});
        QVERIFY(!button->isEnabled());
    }
}

void TestPresets::shouldKeepTheEventLoopRunningDuringTheWait()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    support.ClearJournal();
    int writesWhenEventsRan = -1;
    QTimer::singleShot(0, [&] { writesWhenEventsRan = support.Writes().size(); });

    QElapsedTimer clock;
    clock.start();
    PresetButton(support, "Edge")->click();

    // Events first run in step 4, the 200 ms wait, after the three
    // selector writes of steps 2 and 3.
    QCOMPARE(writesWhenEventsRan, 3);
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(support.Writes().size(), 7);
}

void TestPresets::shouldSwitchTheAcquisitionTriggerOffWhenARefreshInBulksWaitShowsItOn()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-SFNC"));
    QVERIFY(support.Show());
    support.TabWidget()->StopRefreshTimer();
    // The acquisition trigger is switched on behind the tab's back; the
    // tab hears of it but has not refreshed yet when Bulk starts.
    QCOMPARE(support.Camera()->ChangeFromCamera("TriggerSelector", "AcquisitionStart"), 0);
    QCOMPARE(support.Camera()->ChangeFromCamera("TriggerMode", "On"), 0);
    QCOMPARE(support.Camera()->ChangeFromCamera("TriggerSelector", "FrameStart"), 0);
    QVERIFY(support.Camera()->WaitForNotifications(5000));
    support.ClearJournal();

    // The refresh comes in the wait after Bulk moved the selector to the
    // acquisition trigger, the moment the wait is there for.
    const QString movedToAcquisitionStart = W("TriggerSelector", "AcquisitionStart");
    bool refreshed = false;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        if (!refreshed && support.Writes().contains(movedToAcquisitionStart)) {
            refreshed = true;
            support.Refresh();
        }
    });
    tick.start(5);
    QVERIFY(ClickPreset(support, "Bulk"));
    QVERIFY(refreshed);

    const QStringList writes = support.Writes();
    const int moved = writes.indexOf(movedToAcquisitionStart);
    const int off = writes.indexOf(W("TriggerMode", "Off"), moved);
    QVERIFY2(off > moved, qPrintable(writes.join('\n')));
    QVERIFY2(off < writes.indexOf(W("TriggerActivation", "FallingEdge"), moved), qPrintable(writes.join('\n')));
    QCOMPARE(writes.last(), W("TriggerMode", "On"));
    QCOMPARE(TestSupport::HeldValue(support.Camera(), "TriggerMode[AcquisitionStart]=On"),
             QString("TriggerMode[AcquisitionStart]=On"));
}

QTEST_MAIN(TestPresets)
#include "tst_presets.moc"
