// The "Trigger IO" tab following its camera with everything real: the tab is
// shown in a page, the base's one-second timer ticks, the simulated camera
// notifies on its own thread, and changes come from the viewer (a thread of
// its own), from the camera itself or from the user.

#include "SyncProbeWidget.h"
#include "SyncTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QThread>
#include <QtTest>

#include <mutex>
#include <string>
#include <vector>

using namespace SyncTest;

namespace {

// The watched names that the "SIM-LINE-ROUTING" camera has, in its order.
const QStringList kWatchedOnLineRouting = {
    "AcquisitionMode",   "AcquisitionFrameCount", "TriggerSelector", "TriggerMode",  "TriggerSource",
    "TriggerActivation", "ExposureMode",          "ExposureAuto",    "LineSelector", "LineMode",
    "LineSource",        "LineInverter",          "LineStatus",      "LineRouting",  "UserOutputValue"};

QStringList Sorted(QStringList list)
{
    list.sort();
    return list;
}

// Waits for the next tick of the tab's timer; false when none came in time.
bool WaitForNextTick(const SyncProbeWidget& tab, int timeoutMs = 3000)
{
    const int seen = tab.HandOvers().size();
    return QTest::qWaitFor([&] { return tab.HandOvers().size() > seen; }, timeoutMs);
}

// Waits, tick by tick, for a tick that hands over nothing: the tab has
// caught up with the camera and nothing is under way. The show and the
// first tick hand over everything, so this is normally the second tick.
bool WaitForQuietTick(const SyncProbeWidget& tab)
{
    for (int tick = 0; tick < 4; ++tick) {
        if (!WaitForNextTick(tab))
            return false;
        if (tab.HandOvers().last().isEmpty())
            return true;
    }
    return false;
}

// Shows the page that holds the tab and waits for the tab to catch up with
// the camera; false when the page never appeared or the tab never settled.
bool ShowAndSettle(QWidget& page, const SyncProbeWidget& tab)
{
    page.show();
    return QTest::qWaitForWindowExposed(&page) && WaitForQuietTick(tab);
}

// How many hand-overs held name, and how often the name was in the fullest one.
int HandOversHolding(const SyncProbeWidget& tab, const QString& name, int* mostInOne = nullptr)
{
    int holding = 0;
    int most = 0;
    for (const QStringList& names : tab.HandOvers()) {
        if (names.contains(name))
            ++holding;
        most = qMax(most, static_cast<int>(names.count(name)));
    }
    if (mostInOne != nullptr)
        *mostInOne = most;
    return holding;
}

}  // namespace

class TestEndToEnd : public QObject {
    Q_OBJECT

private slots:
    void shouldShowAChangeMadeByTheViewerWithinOneAndAHalfSeconds();
    void shouldRefreshOnceForAThousandChangesBetweenTwoTicks();
    void shouldHandOverNothingWhileHiddenAndEveryWatchedNameWhenShownAgain();
    void shouldRebuildWorkingOutputRowsWhenTheViewerSwitchesALineToOutput();
    void shouldShowAnInputLevelChangedByTheCameraWithoutWritingBack();
    void shouldHandAnInputLineToggledByTheCameraToTheTabWithoutWritingBack();
    void shouldFollowAMultiFrameAcquisitionThatEndsByItself();
    void shouldCarryTheUsersTriggerSourceChoiceThroughTheWholeChain();
};

void TestEndToEnd::shouldShowAChangeMadeByTheViewerWithinOneAndAHalfSeconds()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* source = tab->findChild<QComboBox*>("combo_TriggerSource");
    QPushButton* swTrigger = tab->findChild<QPushButton*>("pb_SWTrigger");
    QVERIFY(source != nullptr && swTrigger != nullptr);
    QVERIFY(ShowAndSettle(page, *tab));
    QCOMPARE(source->currentText(), QString("Line0"));
    QVERIFY(!swTrigger->isEnabled());
    camera->ClearJournal();

    QCOMPARE(WriteFromViewer(camera, "TriggerSource", "Software"), 0);

    QTRY_COMPARE_WITH_TIMEOUT(source->currentText(), QString("Software"), TestSupport::Scaled(1500));
    QVERIFY(swTrigger->isEnabled());
    // The refresh wrote nothing back, neither at that tick nor at the next.
    QVERIFY(WaitForNextTick(*tab));
    QCOMPARE(WritesBy(camera->Journal(), "viewer"), QStringList({"TriggerSource=Software"}));
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());
    QCOMPARE(camera->ValueText("TriggerSource"), std::string("Software"));
}

void TestEndToEnd::shouldRefreshOnceForAThousandChangesBetweenTwoTicks()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* activation = tab->findChild<QComboBox*>("combo_TriggerActivation");
    QVERIFY(activation != nullptr);
    QVERIFY(ShowAndSettle(page, *tab));
    QCOMPARE(activation->currentText(), QString("RisingEdge"));
    QSignalSpy refills(activation->model(), SIGNAL(rowsRemoved(QModelIndex, int, int)));
    tab->ForgetHandOvers();
    camera->ClearJournal();

    // No tick can come while this thread waits: all 1,000 changes fall
    // between two ticks. The last one leaves "FallingEdge".
    const char* const values[] = {"RisingEdge", "FallingEdge"};
    int refused = 0;
    RunAsViewer([&] {
        for (int i = 0; i < 1000; ++i) {
            if (WriteThroughSdk(camera, "TriggerActivation", values[i % 2]) != 0)
                ++refused;
        }
    });
    QCOMPARE(refused, 0);
    QVERIFY(camera->WaitForNotifications(3000));

    QTRY_COMPARE_WITH_TIMEOUT(HandOversHolding(*tab, "TriggerActivation"), 1, TestSupport::Scaled(3000));
    QVERIFY(WaitForNextTick(*tab));

    int mostInOne = 0;
    QCOMPARE(HandOversHolding(*tab, "TriggerActivation", &mostInOne), 1);
    QCOMPARE(mostInOne, 1);
    QCOMPARE(refills.count(), 1);
    QCOMPARE(activation->currentText(), QString("FallingEdge"));
    QCOMPARE(WritesBy(camera->Journal(), "viewer").size(), 1000);
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
}

void TestEndToEnd::shouldHandOverNothingWhileHiddenAndEveryWatchedNameWhenShownAgain()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* source = tab->findChild<QComboBox*>("combo_TriggerSource");
    QVERIFY(source != nullptr);

    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    // The show itself hands over every watched name the camera has.
    QCOMPARE(tab->HandOvers().size(), 1);
    QCOMPARE(Sorted(tab->HandOvers().first()), Sorted(kWatchedOnLineRouting));
    QVERIFY(WaitForQuietTick(*tab));

    // The output rows are rebuilt at every show and tick ("LineMode" is queued).
    QCheckBox* invert = tab->findChild<QCheckBox*>("cb_OutInvert_0");
    QVERIFY(invert != nullptr);
    page.hide();
    QVERIFY(!tab->IsTimerRunning());
    QCOMPARE(tab->QueuedNames(), QStringList());
    const int handedOver = tab->HandOvers().size();

    QCOMPARE(ChangeFromCamera(camera, "TriggerSource=Software"), 0);
    QCOMPARE(ChangeFromCamera(camera, "LineInverter[Line1]=true"), 0);
    QVERIFY(DeliverNotifications(camera));
    QCOMPARE(tab->QueuedNames(), QStringList());
    // Longer than a tick: still nothing handed over, nothing shown.
    QTest::qWait(1500);
    QCOMPARE(tab->HandOvers().size(), handedOver);
    QCOMPARE(source->currentText(), QString("Line0"));
    QVERIFY(!invert->isChecked());

    page.show();
    QCOMPARE(tab->HandOvers().size(), handedOver + 1);
    QCOMPARE(tab->HandOvers().last().size(), kWatchedOnLineRouting.size());
    QCOMPARE(Sorted(tab->HandOvers().last()), Sorted(kWatchedOnLineRouting));
    QVERIFY(tab->IsTimerRunning());
    // Shown at once, before any tick.
    QCOMPARE(source->currentText(), QString("Software"));
    invert = tab->findChild<QCheckBox*>("cb_OutInvert_0");
    QVERIFY(invert != nullptr);
    QVERIFY(invert->isChecked());

    // The first tick hands the same names over again.
    QVERIFY(WaitForNextTick(*tab));
    QCOMPARE(Sorted(tab->HandOvers().at(handedOver + 1)), Sorted(kWatchedOnLineRouting));
}

void TestEndToEnd::shouldRebuildWorkingOutputRowsWhenTheViewerSwitchesALineToOutput()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QVERIFY(ShowAndSettle(page, *tab));
    QCOMPARE(tab->Outputs(), QStringList({"Line1", "Line3"}));
    QVERIFY(tab->findChild<QCheckBox*>("cb_OutInvert_2") == nullptr);

    // The viewer's Features tab turns Line2 into an output.
    int result = -1;
    RunAsViewer([&] {
        result = WriteThroughSdk(camera, "LineSelector", "Line2");
        if (result == 0)
            result = WriteThroughSdk(camera, "LineMode", "Output");
        if (result == 0)
            result = WriteThroughSdk(camera, "LineSelector", "Line0");
    });
    QCOMPARE(result, 0);

    QTRY_COMPARE_WITH_TIMEOUT(tab->Outputs(), QStringList({"Line1", "Line2", "Line3"}), TestSupport::Scaled(3000));
    QVERIFY(WaitForQuietTick(*tab));
    for (int i = 0; i < 3; ++i) {
        QLabel* label = tab->findChild<QLabel*>(QString("l_Out_%1").arg(i));
        QComboBox* rowSource = tab->findChild<QComboBox*>(QString("combo_OutSource_%1").arg(i));
        QVERIFY(label != nullptr && rowSource != nullptr);
        QCOMPARE(label->text(), tab->Outputs().at(i) + ": ");
        QCOMPARE(rowSource->maximumWidth(), QWIDGETSIZE_MAX);
    }

    // A click on the new row's inversion box writes the inversion of every
    // row through the selector, Line2's inverted, then re-reads the states.
    QCheckBox* invert = tab->findChild<QCheckBox*>("cb_OutInvert_1");
    QVERIFY(invert != nullptr);
    QTRY_VERIFY(invert->isVisible());
    QVERIFY(!invert->isChecked());
    camera->ClearJournal();
    QTest::mouseClick(invert, Qt::LeftButton);
    QVERIFY(invert->isChecked());
    QCOMPARE(WritesBy(camera->Journal(), "client"),
             QStringList({"LineSelector=Line1", "LineInverter=false", "LineSelector=Line2", "LineInverter=true",
                          "LineSelector=Line3", "LineInverter=false", "LineSelector=Line0", "LineSelector=Line1",
                          "LineSelector=Line2", "LineSelector=Line3", "LineSelector=Line0"}));
    QCOMPARE(camera->ValueText("LineInverter", "Line2"), std::string("true"));
    QCOMPARE(camera->ValueText("LineInverter", "Line1"), std::string("false"));
    QCOMPARE(camera->ValueText("LineInverter", "Line3"), std::string("false"));

    // The ticks after it show the camera as it is and write nothing more.
    camera->ClearJournal();
    QVERIFY(WaitForNextTick(*tab));
    QVERIFY(WaitForNextTick(*tab));
    invert = tab->findChild<QCheckBox*>("cb_OutInvert_1");
    QVERIFY(invert != nullptr);
    QVERIFY(invert->isChecked());
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
}

void TestEndToEnd::shouldShowAnInputLevelChangedByTheCameraWithoutWritingBack()
{
    SimCameraPtr camera = OpenModel("SIM-SYNCOUT");
    QVERIFY(camera);
    // The first output follows the first input.
    QCOMPARE(ChangeFromCamera(camera, "SyncOutSource[SyncOut1]=SyncIn1"), 0);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* rowSource = tab->findChild<QComboBox*>("combo_OutSource_0");
    QCheckBox* status = tab->findChild<QCheckBox*>("cb_OutStatus_0");
    QVERIFY(rowSource != nullptr && status != nullptr);
    QVERIFY(ShowAndSettle(page, *tab));
    QCOMPARE(rowSource->currentText(), QString("SyncIn1"));
    QVERIFY(!status->isChecked());
    camera->ClearJournal();

    // A signal arrives at the input.
    QCOMPARE(ChangeFromCamera(camera, "SyncInLevels=1"), 0);

    QTRY_VERIFY_WITH_TIMEOUT(status->isChecked(), TestSupport::Scaled(3000));
    QVERIFY(!status->isEnabled());
    QVERIFY(WaitForNextTick(*tab));
    QCOMPARE(WritesBy(camera->Journal(), "camera"), QStringList({"SyncInLevels=1"}));
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList());
}

void TestEndToEnd::shouldHandAnInputLineToggledByTheCameraToTheTabWithoutWritingBack()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QVERIFY(ShowAndSettle(page, *tab));
    tab->ForgetHandOvers();
    camera->ClearJournal();

    QCOMPARE(ChangeFromCamera(camera, "LineStatus[Line0]=true"), 0);

    QTRY_COMPARE_WITH_TIMEOUT(HandOversHolding(*tab, "LineStatus"), 1, TestSupport::Scaled(3000));
    QVERIFY(WaitForNextTick(*tab));
    // The status refresh reads the outputs through the selector and puts it
    // back; the input's level stays the camera's.
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
    QCOMPARE(camera->ValueText("LineSelector"), std::string("Line0"));
    QCOMPARE(camera->ValueText("LineStatus", "Line0"), std::string("true"));
    for (int i = 0; i < tab->Outputs().size(); ++i) {
        QCheckBox* status = tab->findChild<QCheckBox*>(QString("cb_OutStatus_%1").arg(i));
        QVERIFY(status != nullptr);
        QCOMPARE(status->isChecked(), camera->ValueText("LineStatus", tab->Outputs().at(i).toStdString()) == "true");
    }
}

void TestEndToEnd::shouldFollowAMultiFrameAcquisitionThatEndsByItself()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* mode = tab->findChild<QComboBox*>("combo_AcquisitionMode");
    QSpinBox* frameCount = tab->findChild<QSpinBox*>("spin_AcquisitionFrameCount");
    QPushButton* edge = tab->findChild<QPushButton*>("pb_Edge");
    QPushButton* bulk = tab->findChild<QPushButton*>("pb_Bulk");
    QVERIFY(mode != nullptr && frameCount != nullptr && edge != nullptr && bulk != nullptr);
    QVERIFY(ShowAndSettle(page, *tab));
    camera->ClearJournal();

    // Twenty frames at ten frames a second: two seconds of acquisition.
    int result = -1;
    RunAsViewer([&] {
        const char* const writes[][2] = {{"AcquisitionMode", "MultiFrame"},
                                         {"AcquisitionFrameRate", "10"},
                                         {"AcquisitionFrameCount", "20"},
                                         {"AcquisitionStart", ""}};
        for (const auto& write : writes) {
            result = WriteThroughSdk(camera, write[0], write[1]);
            if (result != 0)
                return;
        }
    });
    QCOMPARE(result, 0);

    // Locked while it runs ...
    QTRY_VERIFY_WITH_TIMEOUT(!mode->isEnabled(), TestSupport::Scaled(3000));
    QVERIFY(!edge->isEnabled());
    QVERIFY(!bulk->isEnabled());
    QVERIFY(!frameCount->isVisible());
    // ... and free again once the camera has stopped by itself.
    QTRY_VERIFY_WITH_TIMEOUT(mode->isEnabled(), TestSupport::Scaled(3000));
    QVERIFY(!camera->IsAcquiring());
    QCOMPARE(mode->currentText(), QString("MultiFrame"));
    QVERIFY(edge->isEnabled());
    QVERIFY(bulk->isEnabled());
    QVERIFY(frameCount->isVisible());
    QCOMPARE(frameCount->value(), 20);
    QCOMPARE(WritesBy(camera->Journal(), "viewer"),
             QStringList({"AcquisitionMode=MultiFrame", "AcquisitionFrameRate=10", "AcquisitionFrameCount=20",
                          "AcquisitionStart=(execute)"}));
    QCOMPARE(NonSelectorWritesOfTheTab(camera->Journal()), QStringList());
}

void TestEndToEnd::shouldCarryTheUsersTriggerSourceChoiceThroughTheWholeChain()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    QCOMPARE(ChangeFromCamera(camera, "TriggerSource=Software"), 0);
    QWidget page;
    SyncProbeWidget* tab = new SyncProbeWidget(FeaturesOf(camera), &page);
    QComboBox* source = tab->findChild<QComboBox*>("combo_TriggerSource");
    QPushButton* swTrigger = tab->findChild<QPushButton*>("pb_SWTrigger");
    QVERIFY(source != nullptr && swTrigger != nullptr);
    QVERIFY(tab->Observer() != nullptr);
    QVERIFY(ShowAndSettle(page, *tab));
    QCOMPARE(source->currentText(), QString("Software"));
    QVERIFY(swTrigger->isEnabled());

    // What the SDK reports to the tab's observer, and whether any report
    // came on the GUI thread.
    std::mutex reportsLock;
    QStringList reports;
    bool reportedOnGuiThread = false;
    QObject context;
    connect(
        tab->Observer(), &PluginFeatureObserver::setChangedFeature, &context,
        [&](const QString& name, const QString& value) {
            std::lock_guard<std::mutex> guard(reportsLock);
            reports << name + "=" + value;
            if (QThread::currentThread() == QCoreApplication::instance()->thread())
                reportedOnGuiThread = true;
        },
        Qt::DirectConnection);
    // The refresh that handles "TriggerSource": the queue it got and the
    // "SW Trigger" button around it.
    QStringList refreshedWith;
    bool swTriggerBefore = false;
    bool swTriggerAfter = true;
    tab->SetRefreshHooks(
        [&](const QStringList& names) {
            if (names.contains("TriggerSource")) {
                refreshedWith = names;
                swTriggerBefore = swTrigger->isEnabled();
            }
        },
        [&](const QStringList& names) {
            if (names.contains("TriggerSource"))
                swTriggerAfter = swTrigger->isEnabled();
        });
    QSignalSpy refills(source->model(), SIGNAL(rowsRemoved(QModelIndex, int, int)));
    camera->ClearJournal();

    // 1. The user opens the source combo and picks "Line1".
    source->showPopup();
    QAbstractItemView* list = source->view();
    QTRY_VERIFY(list->isVisible());
    QTest::keyClick(list, Qt::Key_Home);
    const int line1 = source->findText("Line1");
    QVERIFY(line1 > 0);
    for (int i = 0; i < line1; ++i)
        QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(source->currentText(), QString("Line1"));

    // 2. The slot writes "TriggerSource" through the layer, once, accepted.
    std::vector<JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(1));
    QCOMPARE(journal.front().feature, std::string("TriggerSource"));
    QCOMPARE(journal.front().value, std::string("Line1"));
    QCOMPARE(journal.front().writer, std::string("client"));
    QCOMPARE(journal.front().result, 0);
    QCOMPARE(camera->ValueText("TriggerSource"), std::string("Line1"));
    // The slot re-reads nothing: the button still shows the old source.
    QVERIFY(swTrigger->isEnabled());

    // 3. The camera reports the change on its own thread.
    QVERIFY(camera->WaitForNotifications(3000));
    {
        std::lock_guard<std::mutex> guard(reportsLock);
        QCOMPARE(reports, QStringList({"TriggerSource=Line1"}));
        QVERIFY(!reportedOnGuiThread);
    }

    // 4. The report, queued to the GUI thread, puts the name in the queue.
    QCoreApplication::sendPostedEvents(tab, QEvent::MetaCall);
    QCOMPARE(tab->QueuedNames(), QStringList({"TriggerSource"}));
    QVERIFY(refreshedWith.isEmpty());

    // 5. The next tick refills the source combo with "Line1" current and
    //    turns "SW Trigger" off.
    QTRY_VERIFY_WITH_TIMEOUT(!refreshedWith.isEmpty(), TestSupport::Scaled(3000));
    QCOMPARE(refreshedWith, QStringList({"TriggerSource"}));
    QVERIFY(swTriggerBefore);
    QVERIFY(!swTriggerAfter);
    QCOMPARE(refills.count(), 1);
    QCOMPARE(source->currentText(), QString("Line1"));
    QVERIFY(!swTrigger->isEnabled());

    // 6. Nothing is written back, then or later.
    QVERIFY(WaitForNextTick(*tab));
    QCOMPARE(WritesBy(camera->Journal(), "client"), QStringList({"TriggerSource=Line1"}));
    QCOMPARE(camera->Journal().size(), std::size_t(1));
    QCOMPARE(camera->ValueText("TriggerSource"), std::string("Line1"));
}

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
