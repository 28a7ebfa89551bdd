// The wiring self-test on every simulated model with lines: what it finds
// for cables made with Wire, and that every output is back as it was after
// the test, a failed write and a cancel; then the panel as a user drives it.

#include "FeatureManager.h"
#include "MonitorToolsTestSupport.h"
#include "TestTime.h"
#include "WiringSelfTest.h"
#include "WiringSelfTestPanel.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

using TestSupport::FeaturesOf;
using TestSupport::OpenModel;
using TestSupport::SimCameraPtr;
using ZMT::PkoAPI::Sim::Operation;

namespace {

// Runs the test to its end; false when it does not end within a bound far
// beyond its steps.
bool RunToEnd(WiringSelfTest& test)
{
    for (int i = 0; i < 1000; ++i) {
        if (!test.Step())
            return true;
    }
    return false;
}

// Steps until the findings of count outputs are in (or the test ends).
void StepUntilFindings(WiringSelfTest& test, int count)
{
    for (int i = 0; i < 1000 && test.IsRunning() && test.Findings().size() < count; ++i)
        test.Step();
}

// The camera set up as the row says: cables and camera-side changes
// "Feature[entry]=value".
void SetUp(const SimCameraPtr& camera, const QStringList& wires, const QStringList& changes)
{
    camera->UseManualClock();
    for (const QString& wire : wires)
        QCOMPARE(camera->Wire(wire.section('>', 0, 0).toStdString(), wire.section('>', 1, 1).toStdString()), 0);
    for (const QString& change : changes)
        QCOMPARE(TestSupport::ChangeFromCamera(camera, change), 0);
}

// Every selector's last write in the journal put back the entry it had.
void VerifySelectorsRestored(const SimCameraPtr& camera, const QStringList& before)
{
    QMap<QString, QString> last;
    for (const auto& entry : camera->Journal()) {
        const QString feature = QString::fromStdString(entry.feature);
        if (feature.endsWith("Selector") && entry.result == 0)
            last[feature] = QString::fromStdString(entry.value);
    }
    for (auto it = last.cbegin(); it != last.cend(); ++it)
        QVERIFY2(before.contains(it.key() + "=" + it.value()), qPrintable(it.key() + "=" + it.value()));
}

}  // namespace

class WiringSelfTestTest : public QObject {
    Q_OBJECT

private slots:
    void shouldFindTheWiringAndRestoreEveryOutput_data();
    void shouldFindTheWiringAndRestoreEveryOutput();
    void shouldRestoreWhenAWriteFailsHalfWay_data();
    void shouldRestoreWhenAWriteFailsHalfWay();
    void shouldKeepWhatItCouldNotRestoreUntilTheFaultIsGone_data();
    void shouldKeepWhatItCouldNotRestoreUntilTheFaultIsGone();
    void shouldRestoreWhenCancelled_data();
    void shouldRestoreWhenCancelled();
    void shouldRefuseWhileTheCameraAcquires_data();
    void shouldRefuseWhileTheCameraAcquires();
    void shouldStopWhenTheCameraStartsStreaming();
    void shouldAskFirstAndShowTheWiringInTheTable();
    void shouldWriteNothingWhenTheUserDeclines();
    void shouldNotOfferTheTestWhileStreaming();
    void shouldRestoreWhenCancelledFromThePanel();

private:
    void AddGenerations();
};

void WiringSelfTestTest::AddGenerations()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("sourceFeature");
    QTest::addColumn<QString>("valueFeature");
    QTest::addColumn<int>("userOutputIndex");  // an output driven by a user output from the start
    QTest::addColumn<QStringList>("wires");
    QTest::newRow("lines") << "SIM-LINE-ROUTING"
                           << "LineSource"
                           << "UserOutputValue" << 0 << QStringList({"Line1>Line0"});
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "SyncOutSource"
                              << "SyncOutLevels" << 2 << QStringList({"SyncOut2>SyncIn1"});
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOutSource"
                              << "LineOutLevels" << 2 << QStringList({"LineOut3>LineIn2"});
}

void WiringSelfTestTest::shouldFindTheWiringAndRestoreEveryOutput_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("wires");
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("lines") << "SIM-LINE-ROUTING" << QStringList({"Line1>Line0"})
                           << QStringList({"LineInverter[Line3]=true", "UserOutputValue[UserOutput1]=true"})
                           << QStringList({"Line1 → Line0", "Line3 → (nothing)"});
    QTest::newRow("lines, inverting input")
        << "SIM-LINE-ROUTING" << QStringList({"Line3>Line2"})
        << QStringList({"LineInverter[Line2]=true", "LineSource[Line1]=UserOutput0"})
        << QStringList({"Line1 → (nothing)", "Line3 → Line2 (inverted)"});
    QTest::newRow("lines, two cables") << "SIM-LINE-SFNC" << QStringList({"Line1>Line2", "Line3>Line0"})
                                       << QStringList({"LineSource[Line3]=UserOutput0"})
                                       << QStringList({"Line1 → Line2", "Line3 → Line0"});
    QTest::newRow("lines, unwired") << "SIM-LINE-SFNC" << QStringList() << QStringList()
                                    << QStringList({"Line1 → (nothing)", "Line3 → (nothing)"});
    QTest::newRow("sync out") << "SIM-SYNCOUT" << QStringList({"SyncOut2>SyncIn1"})
                              << QStringList({"SyncOutPolarity[SyncOut3]=Invert", "SyncOutLevels=8"})
                              << QStringList({"SyncOut1 → (nothing)", "SyncOut2 → SyncIn1", "SyncOut3 → (nothing)",
                                              "SyncOut4 → (nothing)"});
    QTest::newRow("line out") << "SIM-LINEOUT" << QStringList({"LineOut3>LineIn2", "LineOut1>LineIn1"})
                              << QStringList({"LineOutPolarity[LineOut1]=Invert"})
                              << QStringList({"LineOut1 → LineIn1", "LineOut2 → (nothing)", "LineOut3 → LineIn2",
                                              "LineOut4 → (nothing)"});
}

void WiringSelfTestTest::shouldFindTheWiringAndRestoreEveryOutput()
{
    QFETCH(QString, model);
    QFETCH(QStringList, wires);
    QFETCH(QStringList, changes);
    QFETCH(QStringList, expected);
    const SimCameraPtr camera = OpenModel(model);
    SetUp(camera, wires, changes);
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    camera->ClearJournal();
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTest test(&manager);

    QVERIFY2(test.Start(), qPrintable(test.ErrorText()));
    QVERIFY(RunToEnd(test));

    QCOMPARE(test.CurrentState(), WiringSelfTest::State::Finished);
    QCOMPARE(test.ResultTexts().join(" | "), expected.join(" | "));
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    QVERIFY(test.Unrestored().isEmpty());
    VerifySelectorsRestored(camera, before);
    for (const auto& entry : camera->Journal())
        QCOMPARE(entry.result, 0);
}

void WiringSelfTestTest::shouldRestoreWhenAWriteFailsHalfWay_data()
{
    AddGenerations();
}

void WiringSelfTestTest::shouldRestoreWhenAWriteFailsHalfWay()
{
    QFETCH(QString, model);
    QFETCH(QString, sourceFeature);
    QFETCH(QStringList, wires);
    const SimCameraPtr camera = OpenModel(model);
    SetUp(camera, wires, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTest test(&manager);
    QVERIFY(test.Start());
    StepUntilFindings(test, 1);
    QVERIFY(test.IsRunning());

    // The next output's switch to its user output is refused.
    camera->InjectFault(sourceFeature.toStdString(), Operation::SetValue, ZMT::PkoAPI::PkoErrorOther);
    QVERIFY(RunToEnd(test));

    QCOMPARE(test.CurrentState(), WiringSelfTest::State::Failed);
    QVERIFY(test.ErrorText().contains(sourceFeature));
    QCOMPARE(test.ResultTexts().size(), 1);
    QVERIFY(test.Unrestored().isEmpty());
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    VerifySelectorsRestored(camera, before);
    const QStringList refused =
        TestSupport::JournalText(camera->Journal(), TestSupport::JournalStyle::Attributed).filter(" refused ");
    QCOMPARE(refused.size(), 1);
    QVERIFY(refused.first().startsWith(sourceFeature + "="));
}

void WiringSelfTestTest::shouldKeepWhatItCouldNotRestoreUntilTheFaultIsGone_data()
{
    AddGenerations();
}

void WiringSelfTestTest::shouldKeepWhatItCouldNotRestoreUntilTheFaultIsGone()
{
    QFETCH(QString, model);
    QFETCH(QString, valueFeature);
    QFETCH(int, userOutputIndex);
    QFETCH(QStringList, wires);
    const SimCameraPtr camera = OpenModel(model);
    SetUp(camera, wires, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTest test(&manager);
    QVERIFY(test.Start());
    StepUntilFindings(test, userOutputIndex);
    // Prepared, then the user output high once.
    QVERIFY(test.Step());
    QVERIFY(test.Step());

    camera->InjectFault(valueFeature.toStdString(), Operation::SetValue, ZMT::PkoAPI::PkoErrorOther);
    QVERIFY(RunToEnd(test));
    QCOMPARE(test.CurrentState(), WiringSelfTest::State::Failed);
    // The user output's value could not go back; the rest did.
    QCOMPARE(test.Unrestored().size(), 1);
    QVERIFY(!test.RetryRestore());

    camera->ClearFaults();
    QVERIFY(test.RetryRestore());
    QVERIFY(test.Unrestored().isEmpty());
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    VerifySelectorsRestored(camera, before);
}

void WiringSelfTestTest::shouldRestoreWhenCancelled_data()
{
    AddGenerations();
}

void WiringSelfTestTest::shouldRestoreWhenCancelled()
{
    QFETCH(QString, model);
    QFETCH(QStringList, wires);
    const SimCameraPtr camera = OpenModel(model);
    SetUp(camera, wires, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTest test(&manager);
    QVERIFY(test.Start());
    // In the middle of toggling the first output.
    for (int i = 0; i < 3; ++i)
        QVERIFY(test.Step());
    QVERIFY(MonitorToolsTest::IoSnapshot(camera) != before);

    test.Cancel();

    QCOMPARE(test.CurrentState(), WiringSelfTest::State::Cancelled);
    QVERIFY(!test.Step());
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    VerifySelectorsRestored(camera, before);
}

void WiringSelfTestTest::shouldRefuseWhileTheCameraAcquires_data()
{
    AddGenerations();
}

void WiringSelfTestTest::shouldRefuseWhileTheCameraAcquires()
{
    QFETCH(QString, model);
    const SimCameraPtr camera = OpenModel(model);
    camera->UseManualClock();
    FeatureManager manager(FeaturesOf(camera));
    QVERIFY(!manager.RunCommand("AcquisitionStart"));
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    camera->ClearJournal();
    WiringSelfTest test(&manager);

    // The camera says it acquires, though nobody told the test.
    QVERIFY(!test.Start());
    QVERIFY(test.ErrorText().contains("acquires"));
    QVERIFY(!test.Step());
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    for (const auto& entry : camera->Journal())
        QVERIFY2(QString::fromStdString(entry.feature).endsWith("Selector"), entry.feature.c_str());
}

void WiringSelfTestTest::shouldStopWhenTheCameraStartsStreaming()
{
    const SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    SetUp(camera, {"Line1>Line0"}, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTest test(&manager);
    test.SetAcquiring(true);
    QVERIFY(!test.Start());
    test.SetAcquiring(false);
    QVERIFY(test.Start());
    QVERIFY(test.Step());
    QVERIFY(test.Step());

    test.SetAcquiring(true);

    QCOMPARE(test.CurrentState(), WiringSelfTest::State::Cancelled);
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
}

void WiringSelfTestTest::shouldAskFirstAndShowTheWiringInTheTable()
{
    const SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    SetUp(camera, {"Line1>Line0"}, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTestPanel panel(&manager, nullptr);
    panel.show();
    QPushButton* button = panel.findChild<QPushButton*>("pb_TestWiring");
    QVERIFY(button != nullptr);
    QCOMPARE(button->text(), QString("Test wiring…"));

    QTest::mouseClick(button, Qt::LeftButton);
    QMessageBox* confirmation = panel.findChild<QMessageBox*>("msg_ConfirmWiringTest");
    QVERIFY(confirmation != nullptr);
    QVERIFY(!panel.Test()->IsRunning());
    confirmation->button(QMessageBox::Yes)->click();

    QTableWidget* table = panel.findChild<QTableWidget*>("tw_WiringResult");
    QVERIFY(table != nullptr);
    QTRY_VERIFY_WITH_TIMEOUT(!panel.Test()->IsRunning(), TestSupport::Scaled(10000));
    QCOMPARE(panel.Test()->CurrentState(), WiringSelfTest::State::Finished);
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(table->item(0, 0)->text(), QString("Line1 → Line0"));
    QCOMPARE(table->item(1, 0)->text(), QString("Line3 → (nothing)"));
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
}

void WiringSelfTestTest::shouldWriteNothingWhenTheUserDeclines()
{
    const SimCameraPtr camera = OpenModel("SIM-SYNCOUT");
    camera->ClearJournal();
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTestPanel panel(&manager, nullptr);
    panel.show();
    QTest::mouseClick(panel.findChild<QPushButton*>("pb_TestWiring"), Qt::LeftButton);
    QMessageBox* confirmation = panel.findChild<QMessageBox*>("msg_ConfirmWiringTest");
    QVERIFY(confirmation != nullptr);
    confirmation->button(QMessageBox::Cancel)->click();
    QCoreApplication::processEvents();

    QVERIFY(!panel.Test()->IsRunning());
    QCOMPARE(panel.Test()->CurrentState(), WiringSelfTest::State::Idle);
    QCOMPARE(TestSupport::JournalText(camera->Journal()), QStringList());
}

void WiringSelfTestTest::shouldNotOfferTheTestWhileStreaming()
{
    const SimCameraPtr camera = OpenModel("SIM-LINEOUT");
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTestPanel panel(&manager, nullptr);
    panel.show();
    QPushButton* button = panel.findChild<QPushButton*>("pb_TestWiring");
    QVERIFY(button->isEnabled());

    QLabel* status = panel.findChild<QLabel*>("l_WiringStatus");
    QVERIFY(status != nullptr);
    QCOMPARE(status->text(), QString());

    panel.SetStreaming(true);
    QVERIFY(!button->isEnabled());
    QCOMPARE(status->text(), QString("The camera acquires: stop the acquisition before testing the wiring."));
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(panel.findChild<QMessageBox*>("msg_ConfirmWiringTest") == nullptr);

    panel.SetStreaming(false);
    QVERIFY(button->isEnabled());
    QCOMPARE(status->text(), QString());
}

void WiringSelfTestTest::shouldRestoreWhenCancelledFromThePanel()
{
    const SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    SetUp(camera, {"Line3>Line0"}, QStringList());
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    FeatureManager manager(FeaturesOf(camera));
    WiringSelfTestPanel panel(&manager, nullptr);
    panel.show();
    QTest::mouseClick(panel.findChild<QPushButton*>("pb_TestWiring"), Qt::LeftButton);
    panel.findChild<QMessageBox*>("msg_ConfirmWiringTest")->button(QMessageBox::Yes)->click();
    QVERIFY(panel.Test()->IsRunning());
    QPushButton* cancel = panel.findChild<QPushButton*>("pb_CancelWiringTest");
    QVERIFY(cancel->isEnabled());
    // The first step comes from the timer; the panel takes the click meanwhile.
    QTRY_VERIFY_WITH_TIMEOUT(panel.Test()->StepsDone() > 0, TestSupport::Scaled(5000));

    QTest::mouseClick(cancel, Qt::LeftButton);

    QCOMPARE(panel.Test()->CurrentState(), WiringSelfTest::State::Cancelled);
    QVERIFY(!cancel->isEnabled());
    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
}

QTEST_MAIN(WiringSelfTestTest)
#include "tst_wiringselftest.moc"
