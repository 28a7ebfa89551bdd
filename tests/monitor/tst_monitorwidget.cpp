// The "I/O Monitor" tab on the simulated cameras of every I/O generation,
// on the manual clock so that every level and frame is where the test put it.

#include "FeatureManager.h"
#include "IOMonitorWidget.h"
#include "MonitorTabPlugin.h"
#include "SignalHistory.h"
#include "SimTestSupport.h"

#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using TestSupport::SimCameraPtr;

namespace {

struct Rig {
    SimCameraPtr camera;
    TestSupport::FeatureList features;
    std::unique_ptr<QWidget> page;
    IOMonitorWidget* widget = nullptr;
};

void MakeRig(Rig& rig, const QString& model)
{
    rig.camera = TestSupport::OpenModel(model);
    QVERIFY(rig.camera);
    rig.camera->UseManualClock();
    rig.features = TestSupport::FeaturesOf(rig.camera);
    rig.page.reset(new QWidget);
    rig.widget = new IOMonitorWidget(rig.features, rig.page.get());
    const SimCameraPtr camera = rig.camera;
    rig.widget->SetClock([camera]() { return static_cast<double>(camera->ClockNs()) / 1e6; });
}

bool Lit(IOMonitorWidget* widget, int row)
{
    QLabel* lamp = widget->findChild<QLabel*>(QString("lamp_%1").arg(row));
    return lamp != nullptr && lamp->property("lit").toBool();
}

int RowOf(IOMonitorWidget* widget, const QString& line)
{
    for (int i = 0; i < widget->Probe().Lines().size(); ++i) {
        if (widget->Probe().Lines().at(i).name == line)
            return i;
    }
    return -1;
}

}  // namespace

class TestMonitorWidget : public QObject {
    Q_OBJECT

private slots:
    void shouldLightTheLampOfADrivenInputWithinOnePoll_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("input");
        QTest::newRow("line routing") << "SIM-LINE-ROUTING"
                                      << "Line0";
        QTest::newRow("line sfnc") << "SIM-LINE-SFNC"
                                   << "Line0";
        QTest::newRow("sync out") << "SIM-SYNCOUT"
                                  << "SyncIn1";
        QTest::newRow("line out") << "SIM-LINEOUT"
                                  << "LineIn2";
    }
    void shouldLightTheLampOfADrivenInputWithinOnePoll()
    {
        QFETCH(QString, model);
        QFETCH(QString, input);
        Rig rig;
        MakeRig(rig, model);
        const int row = RowOf(rig.widget, input);
        QVERIFY2(row >= 0, qPrintable(input));
        QCOMPARE(rig.camera->DriveInput(input.toStdString(), true), 0);
        rig.widget->Poll();
        QVERIFY(Lit(rig.widget, row));
        QCOMPARE(rig.camera->DriveInput(input.toStdString(), false), 0);
        rig.widget->Poll();
        QVERIFY(!Lit(rig.widget, row));
    }

    void shouldShowEveryLineWithItsSetup_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("source");
        QTest::newRow("line sfnc") << "SIM-LINE-SFNC" << QStringList{"Line0", "Line1", "Line2", "Line3"} << "Line1"
                                   << "ExposureActive";
        QTest::newRow("sync out") << "SIM-SYNCOUT"
                                  << QStringList{"SyncIn1", "SyncIn2", "SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"}
                                  << "SyncOut2"
                                  << "Acquiring";
        QTest::newRow("line out") << "SIM-LINEOUT"
                                  << QStringList{"LineIn1", "LineIn2", "LineOut1", "LineOut2", "LineOut3", "LineOut4"}
                                  << "LineOut2"
                                  << "FrameTriggerReady";
    }
    void shouldShowEveryLineWithItsSetup()
    {
        QFETCH(QString, model);
        QFETCH(QStringList, lines);
        QFETCH(QString, output);
        QFETCH(QString, source);
        Rig rig;
        MakeRig(rig, model);
        QStringList shown;
        for (const MonitorLine& line : rig.widget->Probe().Lines())
            shown << line.name;
        QCOMPARE(shown, lines);
        const int row = RowOf(rig.widget, output);
        QCOMPARE(rig.widget->findChild<QLabel*>(QString("l_Source_%1").arg(row))->text(), source);
        QVERIFY(rig.widget->Probe().Lines().at(row).output);
    }

    void shouldHoldOneRisingEdgePerSlowPulseAndAMarkPerFrame()
    {
        Rig rig;
        MakeRig(rig, "SIM-LINE-SFNC");
        FeatureManager manager(rig.features);
        manager.SetStringValue("TriggerSelector", "FrameStart");
        manager.SetStringValue("TriggerMode", "On");
        manager.SetStringValue("TriggerSource", "Line0");
        manager.SetStringValue("TriggerActivation", "RisingEdge");
        manager.SetValue("ExposureTime", 1000.0);
        QVERIFY(!manager.RunCommand("AcquisitionStart"));
        rig.widget->Poll();

        const int pulses = 7;
        QCOMPARE(rig.camera->StartPulses("Line0", 200.0, 100.0, pulses), 0);
        for (int step = 0; step < 80; ++step) {
            QCOMPARE(rig.camera->AdvanceClock(25.0), 0);
            rig.widget->Poll();
        }
        QCOMPARE(rig.widget->History().RisingEdges(RowOf(rig.widget, "Line0")), pulses);
        // The counters are read four times a second; one more read after the last frame.
        QCOMPARE(rig.camera->AdvanceClock(300.0), 0);
        rig.widget->Poll();
        const QString frames = QString::fromStdString(rig.camera->ValueText("CounterValue", "Counter2"));
        QCOMPARE(frames, QString::number(pulses));
        QCOMPARE(rig.widget->History().MarkCount(SignalHistory::MarkKind::Frame), pulses);
        QCOMPARE(rig.widget->findChild<QLabel*>("value_Frames")->text(), frames);
        QCOMPARE(rig.widget->findChild<QLabel*>("value_FrameTriggers")->text(),
                 QString::fromStdString(rig.camera->ValueText("CounterValue", "Counter0")));
        QCOMPARE(rig.widget->findChild<QLabel*>("value_MissedTriggers")->text(),
                 QString::fromStdString(rig.camera->ValueText("CounterValue", "Counter1")));
    }

    void shouldRestoreTheSelectorsItMoves()
    {
        Rig rig;
        MakeRig(rig, "SIM-SYNCOUT");
        FeatureManager manager(rig.features);
        manager.SetStringValue("SyncOutSelector", "SyncOut3");
        manager.SetStringValue("CounterSelector", "Counter1");
        rig.widget->Poll();
        QCOMPARE(manager.GetStringValue("SyncOutSelector"), QString("SyncOut3"));
        QCOMPARE(manager.GetStringValue("CounterSelector"), QString("Counter1"));
    }

    void shouldRefuseACameraWithoutLineStatus()
    {
        const SimCameraPtr camera = TestSupport::OpenModel("SIM-NO-TRIGGER");
        MonitorTabPlugin plugin;
        QWidget page;
        QCOMPARE(plugin.CreateTabWidget(TestSupport::FeaturesOf(camera), &page), 4);
        QVERIFY(page.layout() == nullptr);
        QVERIFY(page.findChild<IOMonitorWidget*>() == nullptr);
    }

    void shouldNameTheTab()
    {
        const SimCameraPtr camera = TestSupport::OpenModel("SIM-LINEOUT");
        MonitorTabPlugin plugin;
        QWidget page;
        QCOMPARE(plugin.CreateTabWidget(TestSupport::FeaturesOf(camera), &page), 0);
        QCOMPARE(page.accessibleName(), QString("I/O Monitor"));
    }

    void shouldPollOnlyWhileShown()
    {
        Rig rig;
        MakeRig(rig, "SIM-LINE-ROUTING");
        QVERIFY(!rig.widget->IsPolling());
        rig.page->show();
        QVERIFY(QTest::qWaitForWindowExposed(rig.page.get()));
        QVERIFY(rig.widget->IsPolling());
        QCOMPARE(rig.widget->PollIntervalMs(), 50);
        rig.widget->findChild<QSpinBox*>("spin_PollRate")->setValue(100);
        QCOMPARE(rig.widget->PollIntervalMs(), 10);
        rig.page->hide();
        QVERIFY(!rig.widget->IsPolling());
    }

    void shouldResetTheCameraCounters()
    {
        Rig rig;
        MakeRig(rig, "SIM-LINE-SFNC");
        QVERIFY(rig.camera->ChangeFromCamera("CounterValue", "5", "Counter2") == 0);
        rig.widget->Poll();
        QCOMPARE(rig.widget->findChild<QLabel*>("value_Frames")->text(), QString("5"));
        QTest::mouseClick(rig.widget->findChild<QPushButton*>("pb_ResetCounters"), Qt::LeftButton);
        QCOMPARE(QString::fromStdString(rig.camera->ValueText("CounterValue", "Counter2")), QString("0"));
        QCOMPARE(rig.widget->findChild<QLabel*>("value_Frames")->text(), QString("0"));
    }
};

QTEST_MAIN(TestMonitorWidget)
#include "tst_monitorwidget.moc"
