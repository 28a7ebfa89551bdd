// The trigger input controls of the "Trigger IO" tab: what each control
// writes to the camera when a user changes it, the "SW Trigger" button, the
// frame count spin box and the lock while the camera streams.

#include "WidgetTestSupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHash>
#include <QLabel>
#include <QPair>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

using ZMT::PkoAPI::Sim::SimCameraPtr;
typedef WidgetTestSupport::CameraParts CameraParts;

namespace {

QString W(const QString& feature, const QString& value)
{
    return TestSupport::WriteLine(feature, value);
}

// The controls that streaming locks, by object name.
const char* const kLockedWhileStreaming[] = {"combo_TriggerSelector",   "combo_TriggerSource",
                                             "combo_TriggerActivation", "combo_TriggerMode",
                                             "combo_AcquisitionMode",   "spin_AcquisitionFrameCount"};

// Enabled and hidden state of every widget of the tab.
typedef QHash<QWidget*, QPair<bool, bool>> WidgetStates;

WidgetStates StatesOf(QWidget* tab)
{
    WidgetStates states;
    for (QWidget* widget : tab->findChildren<QWidget*>())
        states.insert(widget, qMakePair(widget->isEnabled(), widget->isHidden()));
    states.insert(tab, qMakePair(tab->isEnabled(), tab->isHidden()));
    return states;
}

}  // namespace

class TestTriggerInput : public QObject {
    Q_OBJECT

private slots:
    void shouldLockTheInputControlsAndShowTheHintWhileStreaming_data();
    void shouldLockTheInputControlsAndShowTheHintWhileStreaming();
    void shouldChangeNothingOnStreamingWithoutOutputLevels_data();
    void shouldChangeNothingOnStreamingWithoutOutputLevels();
    void shouldLeaveAShownHintAloneWithoutOutputLevels();
    void shouldWriteTheEntryChosenInEachCombo_data();
    void shouldWriteTheEntryChosenInEachCombo();
    void shouldEnableSWTriggerOnlyWhileTheSourceIsSoftware();
    void shouldEnableSWTriggerForSourcesContainingSoftwareSignal_data();
    void shouldEnableSWTriggerForSourcesContainingSoftwareSignal();
    void shouldRunTriggerSoftwareWhenSWTriggerIsClicked();
    void shouldSwitchTheTriggerModeOverToTheNewSelectorOnALineRoutingCamera();
    void shouldKeepTheTriggerModeWhenTheSelectorChangesWithoutTheLineSelectorRow_data();
    void shouldKeepTheTriggerModeWhenTheSelectorChangesWithoutTheLineSelectorRow();
    void shouldOnlyWriteTheSelectorWhileTheTriggerModeIsOff();
    void shouldMoveTheRoutingToTheNewInputLine();
    void shouldOnlyWriteTheLineSelectorWhileRoutingIsUnchecked();
    void shouldLeaveOutputLinesOutOfTheInputLineSelector();
    void shouldTruncateAFractionalFrameCountRangeForTheSpinBox();
    void shouldHideTheFrameCountWhenItIsNotWritable();
    void shouldWriteTheFrameCountSteppedInTheSpinBox();
};

void TestTriggerInput::shouldLockTheInputControlsAndShowTheHintWhileStreaming_data()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("SyncOutLevels") << "SIM-SYNCOUT";
    QTest::newRow("LineOutLevels") << "SIM-LINEOUT";
}

void TestTriggerInput::shouldLockTheInputControlsAndShowTheHintWhileStreaming()
{
    QFETCH(QString, model);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    // "SW Trigger" enabled first, to see that streaming leaves it alone.
    QTest::keyClick(support.Find<QComboBox>("combo_TriggerSource"), Qt::Key_End);
    QCOMPARE(support.Find<QComboBox>("combo_TriggerSource")->currentText(), QString("Software"));
    support.Refresh();
    QPushButton* swTrigger = support.Find<QPushButton>("pb_SWTrigger");
    QVERIFY(swTrigger->isEnabled());

    QLabel* hint = support.Find<QLabel>("l_notAcquireHint");
    QComboBox* exposureAuto = support.Find<QComboBox>("combo_ExposureAuto");
    QComboBox* exposureMode = support.Find<QComboBox>("combo_ExposureMode");
    QVERIFY(exposureAuto != nullptr || exposureMode != nullptr);
    QList<QWidget*> presets = {support.Find<QPushButton>("pb_Edge"), support.Find<QPushButton>("pb_Level"),
                               support.Find<QPushButton>("pb_Bulk")};
    QVERIFY(hint->isHidden());
    for (QWidget* preset : presets)
        QVERIFY(preset->isEnabled());
    support.ClearJournal();

    support.TabWidget()->camIsStreaming(true);
    for (const char* name : kLockedWhileStreaming)
        QVERIFY2(!support.Find<QWidget>(name)->isEnabled(), name);
    if (exposureAuto != nullptr)
        QVERIFY(!exposureAuto->isEnabled());
    // Only the listed controls lock; the exposure mode is not among them.
    if (exposureMode != nullptr)
        QVERIFY(exposureMode->isEnabled());
    for (QWidget* preset : presets)
        QVERIFY2(!preset->isEnabled(), qPrintable(preset->objectName()));
    QVERIFY(swTrigger->isEnabled());
    QVERIFY(!hint->isHidden());
    QVERIFY(hint->isVisible());
    QCOMPARE(hint->text(), QString("Full Input configuration only if camera is not acquiring!"));

    support.TabWidget()->camIsStreaming(false);
    for (const char* name : kLockedWhileStreaming)
        QVERIFY2(support.Find<QWidget>(name)->isEnabled(), name);
    if (exposureAuto != nullptr)
        QVERIFY(exposureAuto->isEnabled());
    for (QWidget* preset : presets)
        QVERIFY2(preset->isEnabled(), qPrintable(preset->objectName()));
    QVERIFY(swTrigger->isEnabled());
    QVERIFY(hint->isHidden());

    // Locking is the tab's business: nothing is written to the camera.
    QCOMPARE(support.Writes(), QStringList());
}

void TestTriggerInput::shouldChangeNothingOnStreamingWithoutOutputLevels_data()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("line routing") << "SIM-LINE-ROUTING";
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC";
}

void TestTriggerInput::shouldChangeNothingOnStreamingWithoutOutputLevels()
{
    QFETCH(QString, model);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    QVERIFY(support.Find<QLabel>("l_notAcquireHint")->isHidden());
    const WidgetStates before = StatesOf(support.TabWidget());
    support.ClearJournal();

    support.TabWidget()->camIsStreaming(true);
    QVERIFY(StatesOf(support.TabWidget()) == before);
    QVERIFY(support.Find<QLabel>("l_notAcquireHint")->isHidden());
    QVERIFY(support.Find<QWidget>("combo_TriggerSource")->isEnabled());

    support.TabWidget()->camIsStreaming(false);
    QVERIFY(StatesOf(support.TabWidget()) == before);
    QCOMPARE(support.Writes(), QStringList());
}

void TestTriggerInput::shouldLeaveAShownHintAloneWithoutOutputLevels()
{
    // A read-only exposure mode shows the hint from the start.
    CameraParts parts;
    parts.exposureModes = {"Timed", "TriggerWidth"};
    parts.exposureModeReadOnly = true;
    std::string error;
    SimCameraPtr camera = WidgetTestSupport::Build("read-only exposure mode", parts, error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport support(camera);
    QLabel* hint = support.Find<QLabel>("l_notAcquireHint");
    QVERIFY(!hint->isHidden());
    const WidgetStates before = StatesOf(support.TabWidget());

    // Not even the hint follows the streaming state on this camera.
    support.TabWidget()->camIsStreaming(false);
    QVERIFY(!hint->isHidden());
    QVERIFY(StatesOf(support.TabWidget()) == before);
    support.TabWidget()->camIsStreaming(true);
    QVERIFY(StatesOf(support.TabWidget()) == before);
}

void TestTriggerInput::shouldWriteTheEntryChosenInEachCombo_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("combo");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("feature");
    QTest::newRow("source") << "SIM-LINE-SFNC"
                            << "combo_TriggerSource"
                            << "Line2"
                            << "TriggerSource";
    QTest::newRow("activation") << "SIM-LINE-SFNC"
                                << "combo_TriggerActivation"
                                << "LevelLow"
                                << "TriggerActivation";
    QTest::newRow("trigger mode") << "SIM-LINE-SFNC"
                                  << "combo_TriggerMode"
                                  << "On"
                                  << "TriggerMode";
    QTest::newRow("selector") << "SIM-LINE-SFNC"
                              << "combo_TriggerSelector"
                              << "AcquisitionStart"
                              << "TriggerSelector";
    QTest::newRow("acquisition mode") << "SIM-LINE-SFNC"
                                      << "combo_AcquisitionMode"
                                      << "MultiFrame"
                                      << "AcquisitionMode";
    QTest::newRow("exposure mode") << "SIM-LINE-SFNC"
                                   << "combo_ExposureMode"
                                   << "TriggerWidth"
                                   << "ExposureMode";
    QTest::newRow("exposure auto") << "SIM-SYNCOUT"
                                   << "combo_ExposureAuto"
                                   << "other"
                                   << "ExposureAuto";
    QTest::newRow("source on a sync out camera") << "SIM-SYNCOUT"
                                                 << "combo_TriggerSource"
                                                 << "FixedRate"
                                                 << "TriggerSource";
}

void TestTriggerInput::shouldWriteTheEntryChosenInEachCombo()
{
    QFETCH(QString, model);
    QFETCH(QString, combo);
    QFETCH(QString, entry);
    QFETCH(QString, feature);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    QComboBox* box = support.Find<QComboBox>(combo);
    QVERIFY(box != nullptr);
    QVERIFY(box->currentText() != entry);
    support.ClearJournal();

    QVERIFY(TestSupport::ChooseWithMouse(box, entry));

    QCOMPARE(support.Writes(), QStringList{W(feature, entry)});
    QCOMPARE(support.CameraValue(feature.toStdString()), entry);
}

void TestTriggerInput::shouldEnableSWTriggerOnlyWhileTheSourceIsSoftware()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-SFNC"));
    QVERIFY(support.Show());
    QComboBox* source = support.Find<QComboBox>("combo_TriggerSource");
    QPushButton* swTrigger = support.Find<QPushButton>("pb_SWTrigger");
    QCOMPARE(source->currentText(), QString("Line0"));
    QVERIFY(!swTrigger->isEnabled());

    QVERIFY(TestSupport::ChooseWithMouse(source, "Software"));
    support.Refresh();
    QVERIFY(swTrigger->isEnabled());

    QTest::keyClick(source, Qt::Key_Up);
    QCOMPARE(source->currentText(), QString("Line3"));
    support.Refresh();
    QVERIFY(!swTrigger->isEnabled());
}

void TestTriggerInput::shouldEnableSWTriggerForSourcesContainingSoftwareSignal_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("Software") << "Software" << true;
    QTest::newRow("SoftwareSignal1") << "SoftwareSignal1" << true;
    QTest::newRow("UserSoftwareSignal") << "UserSoftwareSignal" << true;
    QTest::newRow("software in lower case") << "software" << false;
    QTest::newRow("Software with a suffix") << "Software2" << false;
    QTest::newRow("softwaresignal in lower case") << "softwaresignal1" << false;
    QTest::newRow("Line1") << "Line1" << false;
}

void TestTriggerInput::shouldEnableSWTriggerForSourcesContainingSoftwareSignal()
{
    QFETCH(QString, source);
    QFETCH(bool, enabled);
    const std::vector<std::string> sources{"Line1",    "Software",  "SoftwareSignal1", "UserSoftwareSignal",
                                           "software", "Software2", "softwaresignal1"};

    // As the camera reports it when the tab is built.
    CameraParts parts;
    parts.sources = sources;
    parts.source = source.toStdString();
    std::string error;
    SimCameraPtr camera = WidgetTestSupport::Build("software sources", parts, error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport built(camera);
    QCOMPARE(built.Find<QComboBox>("combo_TriggerSource")->currentText(), source);
    QCOMPARE(built.Find<QPushButton>("pb_SWTrigger")->isEnabled(), enabled);

    // As a user chooses it later, coming from a source of the other kind.
    parts.source = enabled ? "Line1" : "Software";
    camera = WidgetTestSupport::Build("software sources", parts, error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport chosen(camera);
    QVERIFY(chosen.Show());
    QCOMPARE(chosen.Find<QPushButton>("pb_SWTrigger")->isEnabled(), !enabled);
    QVERIFY(TestSupport::ChooseWithMouse(chosen.Find<QComboBox>("combo_TriggerSource"), source));
    chosen.Refresh();
    QCOMPARE(chosen.Find<QPushButton>("pb_SWTrigger")->isEnabled(), enabled);
}

void TestTriggerInput::shouldRunTriggerSoftwareWhenSWTriggerIsClicked()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-SFNC"));
    QVERIFY(support.Show());
    QVERIFY(TestSupport::ChooseWithMouse(support.Find<QComboBox>("combo_TriggerSource"), "Software"));
    support.Refresh();
    QPushButton* swTrigger = support.Find<QPushButton>("pb_SWTrigger");
    QVERIFY(swTrigger->isEnabled());
    QCOMPARE(swTrigger->text(), QString("SW Trigger"));
    const unsigned long long before = support.Camera()->SoftwareTriggers();
    support.ClearJournal();

    QTest::mouseClick(swTrigger, Qt::LeftButton);
    QCOMPARE(support.Camera()->SoftwareTriggers(), before + 1);
    QTest::mouseClick(swTrigger, Qt::LeftButton);
    QCOMPARE(support.Camera()->SoftwareTriggers(), before + 2);
    QCOMPARE(support.Writes(), (QStringList{W("TriggerSoftware", "(execute)"), W("TriggerSoftware", "(execute)")}));
}

void TestTriggerInput::shouldSwitchTheTriggerModeOverToTheNewSelectorOnALineRoutingCamera()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    QComboBox* mode = support.Find<QComboBox>("combo_TriggerMode");
    QComboBox* selector = support.Find<QComboBox>("combo_TriggerSelector");
    QCOMPARE(selector->currentText(), QString("FrameStart"));
    QTest::keyClick(mode, Qt::Key_Down);
    QCOMPARE(mode->currentText(), QString("On"));
    QCOMPARE(support.CameraValue("TriggerMode", "FrameStart"), QString("On"));
    support.ClearJournal();

    QVERIFY(TestSupport::ChooseWithMouse(selector, "AcquisitionStart"));

    // The old selector is switched off, the new one on.
    const QStringList expected = {W("TriggerMode", "Off"), W("TriggerSelector", "AcquisitionStart"),
                                  W("TriggerMode", "On")};
    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QCOMPARE(mode->currentText(), QString("On"));
    QCOMPARE(support.CameraValue("TriggerMode", "FrameStart"), QString("Off"));
    QCOMPARE(support.CameraValue("TriggerMode", "AcquisitionStart"), QString("On"));
    QCOMPARE(support.CameraValue("TriggerSelector"), QString("AcquisitionStart"));
}

void TestTriggerInput::shouldKeepTheTriggerModeWhenTheSelectorChangesWithoutTheLineSelectorRow_data()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC";
    QTest::newRow("sync out") << "SIM-SYNCOUT";
}

void TestTriggerInput::shouldKeepTheTriggerModeWhenTheSelectorChangesWithoutTheLineSelectorRow()
{
    QFETCH(QString, model);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));
    QVERIFY(support.Show());
    QVERIFY(support.Find<QComboBox>("combo_InputLineSelector") == nullptr);
    QComboBox* mode = support.Find<QComboBox>("combo_TriggerMode");
    QTest::keyClick(mode, Qt::Key_Down);
    QCOMPARE(mode->currentText(), QString("On"));
    support.ClearJournal();

    QVERIFY(TestSupport::ChooseWithMouse(support.Find<QComboBox>("combo_TriggerSelector"), "AcquisitionStart"));

    QCOMPARE(support.Writes(), QStringList{W("TriggerSelector", "AcquisitionStart")});
    QCOMPARE(support.CameraValue("TriggerMode", "FrameStart"), QString("On"));
    QCOMPARE(support.CameraValue("TriggerMode", "AcquisitionStart"), QString("Off"));
}

void TestTriggerInput::shouldOnlyWriteTheSelectorWhileTheTriggerModeIsOff()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    QCOMPARE(support.Find<QComboBox>("combo_TriggerMode")->currentText(), QString("Off"));
    support.ClearJournal();

    QVERIFY(TestSupport::ChooseWithMouse(support.Find<QComboBox>("combo_TriggerSelector"), "ExposureStart"));

    QCOMPARE(support.Writes(), QStringList{W("TriggerSelector", "ExposureStart")});
}

void TestTriggerInput::shouldMoveTheRoutingToTheNewInputLine()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    QCheckBox* routing = support.Find<QCheckBox>("cb_LineRouting");
    QComboBox* line = support.Find<QComboBox>("combo_InputLineSelector");
    QCOMPARE(line->currentText(), QString("Line0"));
    QVERIFY(!routing->isChecked());
    support.ClearJournal();

    TestSupport::ClickCheckBox(routing, TestSupport::CheckBoxSpot::Indicator);
    QVERIFY(routing->isChecked());
    QCOMPARE(support.Writes(), QStringList{W("LineRouting", "Trigger")});
    support.ClearJournal();

    QTest::keyClick(line, Qt::Key_Down);
    QCOMPARE(line->currentText(), QString("Line2"));

    // Off for the old line, the new line selected, routed again.
    const QStringList expected = {W("LineRouting", "Off"), W("LineSelector", "Line2"), W("LineRouting", "Trigger")};
    const QStringList writes = support.Writes();
    QVERIFY2(writes == expected, qPrintable(WidgetTestSupport::Difference(writes, expected)));
    QVERIFY(routing->isChecked());
    QCOMPARE(support.CameraValue("LineRouting", "Line0"), QString("Off"));
    QCOMPARE(support.CameraValue("LineRouting", "Line2"), QString("Trigger"));
}

void TestTriggerInput::shouldOnlyWriteTheLineSelectorWhileRoutingIsUnchecked()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QVERIFY(support.Show());
    QComboBox* line = support.Find<QComboBox>("combo_InputLineSelector");
    QVERIFY(!support.Find<QCheckBox>("cb_LineRouting")->isChecked());
    support.ClearJournal();

    QVERIFY(TestSupport::ChooseWithMouse(line, "Line2"));

    QCOMPARE(support.Writes(), QStringList{W("LineSelector", "Line2")});
    QVERIFY(!support.Find<QCheckBox>("cb_LineRouting")->isChecked());
}

void TestTriggerInput::shouldLeaveOutputLinesOutOfTheInputLineSelector()
{
    // Line1 and Line3 of this model are outputs.
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    QComboBox* line = support.Find<QComboBox>("combo_InputLineSelector");
    QCOMPARE(TestSupport::ItemTexts(line), (QStringList{"Line0", "Line2"}));
    QCOMPARE(line->currentText(), QString("Line0"));
    QCOMPARE(support.Find<QLabel>("l_InputLineSelector")->text(), QString("Line Sel.:"));
    QCOMPARE(support.Find<QLabel>("l_LineRouting")->text(), QString("Rout.:"));
}

void TestTriggerInput::shouldTruncateAFractionalFrameCountRangeForTheSpinBox()
{
    // 1.5 to 53 in steps of 2.5, at 6.5: the top of the grid is 51.5.
    ZMT::PkoAPI::Sim::CameraBuilder builder("fractional frame count", "fractional frame count");
    builder.AddEnumeration("TriggerSelector", {"FrameStart"}, "FrameStart");
    builder.AddEnumeration("TriggerMode", {"Off", "On"}, "Off");
    builder.AddEnumeration("AcquisitionMode", {"Continuous", "MultiFrame"}, "Continuous");
    builder.AddFloat("AcquisitionFrameCount", 6.5, 1.5, 53.0, 2.5);
    builder.AddEnumeration("LineSelector", {"Line0"}, "Line0");
    SimCameraPtr camera = builder.Build();
    QVERIFY2(camera, builder.Error().c_str());
    WidgetTestSupport support(camera);

    QSpinBox* count = support.Find<QSpinBox>("spin_AcquisitionFrameCount");
    QVERIFY(count != nullptr);
    QCOMPARE(count->minimum(), 1);
    QCOMPARE(count->maximum(), 51);
    QCOMPARE(count->singleStep(), 2);
    QCOMPARE(count->value(), 6);
    QVERIFY(!count->isHidden());
    QVERIFY(!support.Find<QLabel>("l_AcquisitionFrameCount")->isHidden());
}

void TestTriggerInput::shouldHideTheFrameCountWhenItIsNotWritable()
{
    CameraParts parts;
    parts.frameCountReadOnly = true;
    std::string error;
    SimCameraPtr camera = WidgetTestSupport::Build("read-only frame count", parts, error);
    QVERIFY2(camera, error.c_str());
    WidgetTestSupport readOnly(camera);
    QVERIFY(readOnly.Find<QSpinBox>("spin_AcquisitionFrameCount")->isHidden());
    QVERIFY(readOnly.Find<QLabel>("l_AcquisitionFrameCount")->isHidden());

    WidgetTestSupport writable(WidgetTestSupport::Model("SIM-LINE-SFNC"));
    QVERIFY(!writable.Find<QSpinBox>("spin_AcquisitionFrameCount")->isHidden());
    QLabel* label = writable.Find<QLabel>("l_AcquisitionFrameCount");
    QVERIFY(!label->isHidden());
    QCOMPARE(label->text(), QString("FrameCount:"));
}

void TestTriggerInput::shouldWriteTheFrameCountSteppedInTheSpinBox()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-SFNC"));
    QVERIFY(support.Show());
    QSpinBox* count = support.Find<QSpinBox>("spin_AcquisitionFrameCount");
    QCOMPARE(count->value(), 1);
    support.ClearJournal();

    QTest::keyClick(count, Qt::Key_Up);
    QTest::keyClick(count, Qt::Key_Up);

    QCOMPARE(support.Writes(), (QStringList{W("AcquisitionFrameCount", "2"), W("AcquisitionFrameCount", "3")}));
    QCOMPARE(support.CameraValue("AcquisitionFrameCount"), QString("3"));
}

QTEST_MAIN(TestTriggerInput)
#include "tst_triggerinput.moc"
