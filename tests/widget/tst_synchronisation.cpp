// The tab's change handling row by row: a queue of changed feature names is
// handed to the real refresh of the "Trigger IO" tab (not shown, so no timer
// interferes) after the simulated camera changed; the test compares what the
// user sees before and after, the signals of the controls and the journal.

#include "ControlSignalSpies.h"
#include "SyncProbeWidget.h"
#include "SyncTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QComboBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

#include <memory>
#include <vector>

using namespace SyncTest;

namespace {

QStringList Sorted(QStringList list)
{
    list.sort();
    return list;
}

// Drops immediate repetitions: "a a b a" becomes "a b a".
QStringList WithoutRepeats(const QStringList& events)
{
    QStringList kept;
    for (const QString& event : events) {
        if (kept.isEmpty() || kept.last() != event)
            kept << event;
    }
    return kept;
}

}  // namespace

class TestSynchronisation : public QObject {
    Q_OBJECT

private slots:
    void shouldRefreshExactlyTheControlsOfTheRowThatFires_data();
    void shouldRefreshExactlyTheControlsOfTheRowThatFires();
    void shouldChangeNothingOnScreenForAQueueHoldingOnlyAcquisitionFrameCount();
    void shouldRefreshModeComboPresetsAndFrameCountWhenAcquisitionModeChanges();
    void shouldRunTheTriggerSourceRowBeforeTheLineModeRowEachWithSignalsBlocked();
    void shouldRefillTheUserOutputSelectorsOnlyForTheNameUserOutSelector();
};

void TestSynchronisation::shouldRefreshExactlyTheControlsOfTheRowThatFires_data()
{
    QTest::addColumn<QString>("model");
    // Camera changes before the tab is built.
    QTest::addColumn<QStringList>("setup");
    // Camera changes after the tab is built; each row has a decoy that it must not show.
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QStringList>("names");
    // Controls whose visible state the refresh changes.
    QTest::addColumn<QStringList>("expected");

    const QString routing = "SIM-LINE-ROUTING";
    const QString syncOut = "SIM-SYNCOUT";
    const QString lineOut = "SIM-LINEOUT";

    QTest::newRow("TriggerSource refills the source and enables SW Trigger")
        << routing << QStringList() << QStringList{"TriggerSource=Software", "TriggerActivation=FallingEdge"}
        << QStringList{"TriggerSource"} << QStringList{"combo_TriggerSource", "pb_SWTrigger"};
    QTest::newRow("TriggerActivation refills the activation")
        << routing << QStringList() << QStringList{"TriggerActivation=FallingEdge", "TriggerSource=Software"}
        << QStringList{"TriggerActivation"} << QStringList{"combo_TriggerActivation"};
    QTest::newRow("TriggerMode refills the mode and the activation")
        << routing << QStringList()
        << QStringList{"TriggerMode=On", "TriggerActivation=FallingEdge", "TriggerSource=Software"}
        << QStringList{"TriggerMode"} << QStringList{"combo_TriggerActivation", "combo_TriggerMode"};
    QTest::newRow("TriggerSelector refills the selector")
        << routing << QStringList() << QStringList{"TriggerSelector=AcquisitionStart", "AcquisitionMode=MultiFrame"}
        << QStringList{"TriggerSelector"} << QStringList{"combo_TriggerSelector"};
    QTest::newRow("AcquisitionFramecount, so spelt, refreshes the frame count")
        << routing << QStringList() << QStringList{"AcquisitionFrameCount=7", "AcquisitionMode=MultiFrame"}
        << QStringList{"AcquisitionFramecount"} << QStringList{"spin_AcquisitionFrameCount"};
    QTest::newRow("AcquisitionFrameCount, the camera's name, refreshes nothing")
        << routing << QStringList() << QStringList{"AcquisitionFrameCount=7", "AcquisitionMode=MultiFrame"}
        << QStringList{"AcquisitionFrameCount"} << QStringList();
    QTest::newRow("AcquisitionMode refreshes the mode and the frame count")
        << routing << QStringList()
        << QStringList{"AcquisitionMode=MultiFrame", "AcquisitionFrameCount=7", "TriggerSource=Software"}
        << QStringList{"AcquisitionMode"} << QStringList{"combo_AcquisitionMode", "spin_AcquisitionFrameCount"};
    QTest::newRow("LineSelector refills the input line selector")
        << routing << QStringList() << QStringList{"LineSelector=Line2", "TriggerSource=Software"}
        << QStringList{"LineSelector"} << QStringList{"combo_InputLineSelector"};
    QTest::newRow("LineRouting refreshes the routing box")
        << routing << QStringList() << QStringList{"LineRouting=Trigger", "TriggerSource=Software"}
        << QStringList{"LineRouting"} << QStringList{"cb_LineRouting"};
    QTest::newRow("ExposureMode refills the exposure mode")
        << routing << QStringList() << QStringList{"ExposureMode=TriggerWidth", "TriggerSource=Software"}
        << QStringList{"ExposureMode"} << QStringList{"combo_ExposureMode"};
    QTest::newRow("ExposureAuto refills the exposure automation")
        << syncOut << QStringList() << QStringList{"ExposureAuto=Continuous", "TriggerSource=Software"}
        << QStringList{"ExposureAuto"} << QStringList{"combo_ExposureAuto"};
    QTest::newRow("ExposureAuto without its combo refreshes nothing")
        << routing << QStringList() << QStringList{"ExposureAuto=Continuous", "TriggerSource=Software"}
        << QStringList{"ExposureAuto"} << QStringList();
    QTest::newRow("LineSource refreshes the source and the status box")
        << routing << QStringList() << QStringList{"LineSource[Line3]=Direct", "TriggerSource=Software"}
        << QStringList{"LineSource"} << QStringList{"cb_OutStatus_1", "combo_OutSource_1"};
    QTest::newRow("SyncOutSource refreshes the source and the status box")
        << syncOut << QStringList() << QStringList{"SyncOutSource[SyncOut1]=GPO", "TriggerSource=Software"}
        << QStringList{"SyncOutSource"} << QStringList{"cb_OutStatus_0", "combo_OutSource_0"};
    QTest::newRow("LineOutSource refreshes the source and the status box")
        << lineOut << QStringList() << QStringList{"LineOutSource[LineOut1]=GPO", "TriggerSource=Software"}
        << QStringList{"LineOutSource"} << QStringList{"cb_OutStatus_0", "combo_OutSource_0"};
    QTest::newRow("LineInverter refreshes the inversion box")
        << routing << QStringList() << QStringList{"LineInverter[Line1]=true", "TriggerSource=Software"}
        << QStringList{"LineInverter"} << QStringList{"cb_OutInvert_0"};
    QTest::newRow("SyncOutPolarity refreshes the inversion box")
        << syncOut << QStringList() << QStringList{"SyncOutPolarity[SyncOut2]=Invert", "TriggerSource=Software"}
        << QStringList{"SyncOutPolarity"} << QStringList{"cb_OutInvert_1"};
    QTest::newRow("LineOutPolarity refreshes the inversion box")
        << lineOut << QStringList() << QStringList{"LineOutPolarity[LineOut2]=Invert", "TriggerSource=Software"}
        << QStringList{"LineOutPolarity"} << QStringList{"cb_OutInvert_1"};
    QTest::newRow("LineStatus refreshes the status and the inversion boxes")
        << routing << QStringList() << QStringList{"LineInverter[Line1]=true", "TriggerSource=Software"}
        << QStringList{"LineStatus"} << QStringList{"cb_OutInvert_0", "cb_OutStatus_0"};
    QTest::newRow("SyncOutLevels refreshes the level boxes")
        << syncOut << QStringList() << QStringList{"SyncOutLevels=4", "TriggerSource=Software"}
        << QStringList{"SyncOutLevels"} << QStringList{"cb_OutStatus_2"};
    QTest::newRow("SyncOutLevels refreshes the LineOut level boxes too")
        << lineOut << QStringList() << QStringList{"LineOutLevels=8", "TriggerSource=Software"}
        << QStringList{"SyncOutLevels"} << QStringList{"cb_OutStatus_3"};
    QTest::newRow("LineOutlevels, so spelt, refreshes the level boxes")
        << lineOut << QStringList() << QStringList{"LineOutLevels=8", "TriggerSource=Software"}
        << QStringList{"LineOutlevels"} << QStringList{"cb_OutStatus_3"};
    QTest::newRow("LineOutLevels, the camera's name, refreshes nothing")
        << lineOut << QStringList() << QStringList{"LineOutLevels=8", "TriggerSource=Software"}
        << QStringList{"LineOutLevels"} << QStringList();
    QTest::newRow("UserOutSelector refills the selectors, which already agree")
        << routing << QStringList{"LineSource[Line3]=UserOutput1"} << QStringList{"TriggerSource=Software"}
        << QStringList{"UserOutSelector"} << QStringList();
    QTest::newRow("UserOutputValue refreshes the user value boxes")
        << routing << QStringList{"LineSource[Line3]=UserOutput1"}
        << QStringList{"UserOutputValue[UserOutput1]=true", "TriggerSource=Software"} << QStringList{"UserOutputValue"}
        << QStringList{"cb_OutUserValue_1"};
    QTest::newRow("LineMode rebuilds the output rows")
        << routing << QStringList() << QStringList{"LineMode[Line2]=Output", "TriggerSource=Software"}
        << QStringList{"LineMode"} << QStringList{"cb_OutInvert_2",
                                                  "cb_OutStatus_2",
                                                  "cb_OutUserValue_2",
                                                  "combo_OutSource_0",
                                                  "combo_OutSource_1",
                                                  "combo_OutSource_2",
                                                  "combo_OutUserSelector_2",
                                                  "gb_Output",
                                                  "l_Out_1",
                                                  "l_Out_2"};
}

void TestSynchronisation::shouldRefreshExactlyTheControlsOfTheRowThatFires()
{
    QFETCH(QString, model);
    QFETCH(QStringList, setup);
    QFETCH(QStringList, changes);
    QFETCH(QStringList, names);
    QFETCH(QStringList, expected);

    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    for (const QString& change : setup)
        QCOMPARE(ChangeFromCamera(camera, change), 0);

    SyncProbeWidget tab(FeaturesOf(camera), nullptr);
    QVERIFY(DeliverNotifications(camera));
    const QMap<QString, QString> before = ControlStates(&tab);

    for (const QString& change : changes)
        QCOMPARE(ChangeFromCamera(camera, change), 0);
    QVERIFY(DeliverNotifications(camera));
    const QStringList selectorsBefore = SelectorValues(camera);
    // Nothing reaches the screen before the queue is handed over.
    QCOMPARE(ChangedControls(before, ControlStates(&tab)), QStringList());

    camera->ClearJournal();
    const ControlSignalSpies spies(&tab);
    tab.RefreshWith(names);

    QCOMPARE(ChangedControls(before, ControlStates(&tab)), Sorted(expected));
    // Every row unblocks what it blocked, and nothing it refreshed spoke.
    QCOMPARE(ControlsWithBlockedSignals(&tab), QStringList());
    QCOMPARE(spies.Emitted(), 0);
    // A refresh only reads: selector round trips end where they began.
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
    QCOMPARE(SelectorValues(camera), selectorsBefore);
}

void TestSynchronisation::shouldChangeNothingOnScreenForAQueueHoldingOnlyAcquisitionFrameCount()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    SyncProbeWidget tab(FeaturesOf(camera), nullptr);
    QVERIFY(DeliverNotifications(camera));
    const QMap<QString, QString> before = ControlStates(&tab);
    QSpinBox* frameCount = tab.findChild<QSpinBox*>("spin_AcquisitionFrameCount");
    QVERIFY(frameCount != nullptr);
    QCOMPARE(frameCount->value(), 1);

    // Plenty the tab could show, the frame count first of all.
    const QStringList changes = {"AcquisitionFrameCount=7",  "AcquisitionMode=MultiFrame",
                                 "TriggerSource=Software",   "TriggerActivation=FallingEdge",
                                 "TriggerMode=On",           "LineRouting=Trigger",
                                 "LineSource[Line3]=Direct", "LineInverter[Line1]=true"};
    for (const QString& change : changes)
        QCOMPARE(ChangeFromCamera(camera, change), 0);
    QVERIFY(DeliverNotifications(camera));
    camera->ClearJournal();

    tab.RefreshWith({"AcquisitionFrameCount"});

    QCOMPARE(ChangedControls(before, ControlStates(&tab)), QStringList());
    QCOMPARE(frameCount->value(), 1);
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());
    QCOMPARE(ControlsWithBlockedSignals(&tab), QStringList());
}

void TestSynchronisation::shouldRefreshModeComboPresetsAndFrameCountWhenAcquisitionModeChanges()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    SyncProbeWidget tab(FeaturesOf(camera), nullptr);
    QVERIFY(DeliverNotifications(camera));
    const QMap<QString, QString> idle = ControlStates(&tab);
    QComboBox* mode = tab.findChild<QComboBox*>("combo_AcquisitionMode");
    QSpinBox* frameCount = tab.findChild<QSpinBox*>("spin_AcquisitionFrameCount");
    QPushButton* edge = tab.findChild<QPushButton*>("pb_Edge");
    QPushButton* level = tab.findChild<QPushButton*>("pb_Level");
    QPushButton* bulk = tab.findChild<QPushButton*>("pb_Bulk");
    QVERIFY(mode != nullptr && frameCount != nullptr && edge != nullptr && level != nullptr && bulk != nullptr);
    QVERIFY(mode->isEnabled() && edge->isEnabled() && level->isEnabled() && bulk->isEnabled());

    // The viewer starts a continuous acquisition: the mode and the frame
    // count are locked while it runs.
    QCOMPARE(ChangeFromCamera(camera, "AcquisitionFrameCount=7"), 0);
    QCOMPARE(WriteFromViewer(camera, "AcquisitionStart", ""), 0);
    QVERIFY(camera->IsAcquiring());
    QVERIFY(DeliverNotifications(camera));
    camera->ClearJournal();

    tab.RefreshWith({"AcquisitionMode"});

    QCOMPARE(ChangedControls(idle, ControlStates(&tab)),
             Sorted({"combo_AcquisitionMode", "l_AcquisitionFrameCount", "pb_Bulk", "pb_Edge", "pb_Level",
                     "spin_AcquisitionFrameCount"}));
    QVERIFY(!mode->isEnabled());
    QCOMPARE(mode->currentText(), QString("Continuous"));
    QVERIFY(!edge->isEnabled());
    QVERIFY(!level->isEnabled());
    QVERIFY(!bulk->isEnabled());
    QVERIFY(!frameCount->isVisibleTo(&tab));
    QCOMPARE(frameCount->value(), 7);
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());

    QCOMPARE(WriteFromViewer(camera, "AcquisitionStop", ""), 0);
    QVERIFY(!camera->IsAcquiring());
    QVERIFY(DeliverNotifications(camera));
    tab.RefreshWith({"AcquisitionMode"});

    // Back as before, with the new frame count shown.
    QCOMPARE(ChangedControls(idle, ControlStates(&tab)), QStringList{"spin_AcquisitionFrameCount"});
    QVERIFY(frameCount->isVisibleTo(&tab));
    QCOMPARE(frameCount->value(), 7);
    QVERIFY(mode->isEnabled() && edge->isEnabled() && level->isEnabled() && bulk->isEnabled());
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());
    QCOMPARE(ControlsWithBlockedSignals(&tab), QStringList());
}

void TestSynchronisation::shouldRunTheTriggerSourceRowBeforeTheLineModeRowEachWithSignalsBlocked()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QStringList events;
    SyncProbeWidget tab(FeaturesOf(camera), nullptr);
    QVERIFY(DeliverNotifications(camera));

    QComboBox* source = tab.findChild<QComboBox*>("combo_TriggerSource");
    QComboBox* mode = tab.findChild<QComboBox*>("combo_TriggerMode");
    QPushButton* swTrigger = tab.findChild<QPushButton*>("pb_SWTrigger");
    QVERIFY(source != nullptr && mode != nullptr && swTrigger != nullptr);
    QCOMPARE(tab.Outputs(), QStringList({"Line1", "Line3"}));
    QCOMPARE(source->currentText(), QString("Line0"));
    QVERIFY(!swTrigger->isEnabled());

    // The trigger source row refills the source and mode combos; the LineMode
    // row deletes the old output rows. Each event notes whether the controls
    // were blocked.
    auto note = [&](const QString& what) {
        events << QString("%1 (blocked %2)").arg(what).arg(source->signalsBlocked() ? "yes" : "no");
    };
    QList<QMetaObject::Connection> connections;
    connections << connect(source->model(), &QAbstractItemModel::rowsRemoved, [&] { note("source refilled"); });
    connections << connect(source->model(), &QAbstractItemModel::rowsInserted, [&] { note("source refilled"); });
    connections << connect(mode->model(), &QAbstractItemModel::rowsRemoved, [&] { note("mode refilled"); });
    connections << connect(mode->model(), &QAbstractItemModel::rowsInserted, [&] { note("mode refilled"); });
    QList<QPointer<QComboBox>> oldRows;
    for (int i = 0; i < tab.Outputs().size(); ++i) {
        QComboBox* row = tab.findChild<QComboBox*>(QString("combo_OutSource_%1").arg(i));
        QVERIFY(row != nullptr);
        QCOMPARE(row->maximumWidth(), 95);
        oldRows << row;
        connections << connect(row, &QObject::destroyed, [&] { note("output row deleted"); });
    }

    QCOMPARE(ChangeFromCamera(camera, "TriggerSource=Software"), 0);
    QCOMPARE(ChangeFromCamera(camera, "LineMode[Line2]=Output"), 0);
    QVERIFY(DeliverNotifications(camera));
    camera->ClearJournal();
    QSignalSpy sourceChanged(source, SIGNAL(currentIndexChanged(QString)));

    tab.RefreshWith({"LineMode", "TriggerSource"});
    for (const QMetaObject::Connection& connection : connections)
        disconnect(connection);

    QCOMPARE(WithoutRepeats(events), QStringList({"source refilled (blocked yes)", "mode refilled (blocked yes)",
                                                  "output row deleted (blocked yes)"}));
    // The trigger source row's work is done ...
    QCOMPARE(source->currentText(), QString("Software"));
    QVERIFY(swTrigger->isEnabled());
    QCOMPARE(sourceChanged.count(), 0);
    // ... and the LineMode row's: new rows, widened after the rebuild.
    for (const QPointer<QComboBox>& row : oldRows)
        QVERIFY(row.isNull());
    QCOMPARE(tab.Outputs(), QStringList({"Line1", "Line2", "Line3"}));
    for (int i = 0; i < 3; ++i) {
        QComboBox* row = tab.findChild<QComboBox*>(QString("combo_OutSource_%1").arg(i));
        QVERIFY(row != nullptr);
        QCOMPARE(row->maximumWidth(), QWIDGETSIZE_MAX);
        QCOMPARE(row->currentText(),
                 QString::fromStdString(camera->ValueText("LineSource", tab.Outputs().at(i).toStdString())));
    }
    QCOMPARE(ControlsWithBlockedSignals(&tab), QStringList());
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
    QCOMPARE(camera->ValueText("LineSelector"), std::string("Line0"));
}

void TestSynchronisation::shouldRefillTheUserOutputSelectorsOnlyForTheNameUserOutSelector()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QCOMPARE(ChangeFromCamera(camera, "LineSource[Line3]=UserOutput1"), 0);
    SyncProbeWidget tab(FeaturesOf(camera), nullptr);
    QVERIFY(DeliverNotifications(camera));
    QCOMPARE(tab.Outputs(), QStringList({"Line1", "Line3"}));

    std::vector<std::unique_ptr<QSignalSpy>> refills;
    QList<QComboBox*> selectors;
    for (int i = 0; i < 2; ++i) {
        QComboBox* selector = tab.findChild<QComboBox*>(QString("combo_OutUserSelector_%1").arg(i));
        QVERIFY(selector != nullptr);
        QCOMPARE(selector->count(), 3);
        selectors << selector;
        refills.emplace_back(new QSignalSpy(selector->model(), SIGNAL(rowsRemoved(QModelIndex, int, int))));
    }
    camera->ClearJournal();

    // The widget's own name for the feature is not the one its table tests.
    tab.RefreshWith({"UserOutputSelector"});
    for (const std::unique_ptr<QSignalSpy>& refill : refills)
        QCOMPARE(refill->count(), 0);

    tab.RefreshWith({"UserOutSelector"});
    for (const std::unique_ptr<QSignalSpy>& refill : refills)
        QCOMPARE(refill->count(), 1);
    QCOMPARE(selectors.at(0)->currentIndex(), -1);
    QCOMPARE(selectors.at(1)->currentText(), QString("UserOutput1"));
    QVERIFY(!selectors.at(0)->isEnabled());
    QVERIFY(!selectors.at(1)->isEnabled());
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());
    QCOMPARE(ControlsWithBlockedSignals(&tab), QStringList());
}

QTEST_MAIN(TestSynchronisation)
#include "tst_synchronisation.moc"
