// The simulated cameras' signals: line levels, triggers that make frames,
// missed triggers, counters, outputs that follow the sensor, cables within
// a camera and between two, the bounded journal and the coalesced
// notifications. Every test runs on the manual clock: exact, and no sleeps.

#include "RecordingObserver.h"
#include "SdkTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

using namespace ZMT::PkoAPI;
using namespace ZMT::PkoAPI::Sim;

namespace {

const int kTimeoutMs = 5000;

bool LevelOf(const SimCameraPtr& camera, const std::string& line)
{
    bool high = false;
    if (camera->LineLevel(line, high) != PkoErrorSuccess)
        qFatal("no line %s", line.c_str());
    return high;
}

long long CounterOf(const SimCameraPtr& camera, const std::string& counter)
{
    const QString text = QString::fromStdString(camera->ValueText("CounterValue", counter));
    bool ok = false;
    const long long value = text.toLongLong(&ok);
    return ok ? value : -1;
}

}  // namespace

class TestSimSignals : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;

    FeaturePtr F(const char* name) { return FeatureOf(m_Camera, name); }
    int Set(const char* name, const char* value) { return F(name)->SetValue(value); }
    void Open(const char* model)
    {
        m_Camera = OpenModel(model);
        QVERIFY(m_Camera);
        m_Camera->UseManualClock();
    }
    // A frame trigger on a line of the SFNC model, exposure 1 ms.
    void TriggerOnLine(const char* line, const char* activation)
    {
        QCOMPARE(Set("TriggerSelector", "FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSource", line), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerActivation", activation), int(PkoErrorSuccess));
        QCOMPARE(F("ExposureTime")->SetValue(1000.0), int(PkoErrorSuccess));
    }
    Frame Latest()
    {
        Frame frame;
        [&] { QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorSuccess)); }();
        return frame;
    }

private slots:
    void cleanup() { m_Camera.reset(); }

    void shouldMakeOneFramePerRisingEdge()
    {
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "RisingEdge");
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 20.0, 5.0, 10), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(300.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 10ULL);
        QCOMPARE(CounterOf(m_Camera, "Counter0"), 10LL);  // frame triggers
        QCOMPARE(CounterOf(m_Camera, "Counter1"), 0LL);   // missed
        QCOMPARE(CounterOf(m_Camera, "Counter2"), 10LL);  // frames
        const Frame frame = Latest();
        QCOMPARE(frame.trigger, std::string("Line0"));
        QCOMPARE(frame.exposureUs, 1000.0);
        // The tenth pulse starts 180 ms after the first, at the camera's time 0 + start.
        QVERIFY(frame.timestampNs > 0);
    }

    void shouldCountFallingEdgesForAFallingEdgeTrigger()
    {
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "FallingEdge");
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 20.0, 5.0, 3), int(PkoErrorSuccess));
        // The first pulse has risen but not fallen: no frame yet.
        QCOMPARE(m_Camera->AdvanceClock(4.0), int(PkoErrorSuccess));
        QCOMPARE(CounterOf(m_Camera, "Counter0"), 0LL);
        QCOMPARE(m_Camera->AdvanceClock(1.0), int(PkoErrorSuccess));
        QCOMPARE(CounterOf(m_Camera, "Counter0"), 1LL);
        const long long fallen = m_Camera->ClockNs();
        QCOMPARE(m_Camera->AdvanceClock(100.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 3ULL);
        QCOMPARE(Latest().timestampNs, fallen + 40000000LL);
    }

    void shouldExposeAsLongAsTheTriggerPulseInTriggerWidthMode_data()
    {
        QTest::addColumn<double>("pulseMs");
        QTest::newRow("3 ms") << 3.0;
        QTest::newRow("7 ms") << 7.0;
    }

    void shouldExposeAsLongAsTheTriggerPulseInTriggerWidthMode()
    {
        QFETCH(double, pulseMs);
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "LevelHigh");
        QCOMPARE(Set("ExposureMode", "TriggerWidth"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 50.0, pulseMs, 1), int(PkoErrorSuccess));
        QVERIFY(LevelOf(m_Camera, "Line1"));  // Line1 shows ExposureActive
        QCOMPARE(m_Camera->AdvanceClock(100.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 1ULL);
        QCOMPARE(Latest().exposureUs, pulseMs * 1000.0);
    }

    void shouldMissAndCountATriggerDuringReadout()
    {
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "RisingEdge");
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->DriveInput("Line0", false), int(PkoErrorSuccess));
        // 1 ms exposure, then 3 ms readout: at 2 ms the sensor reads out.
        QCOMPARE(m_Camera->AdvanceClock(2.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus", "ExposureActive"), std::string("false"));
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(50.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 1ULL);
        QCOMPARE(CounterOf(m_Camera, "Counter0"), 2LL);
        QCOMPARE(CounterOf(m_Camera, "Counter1"), 1LL);
    }

    void shouldShowTheSensorStateInTheAcquisitionStatus()
    {
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "RisingEdge");
        QCOMPARE(Set("AcquisitionStatusSelector", "FrameTriggerWait"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus"), std::string("false"));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus"), std::string("true"));
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus"), std::string("false"));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus", "ExposureActive"), std::string("true"));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus", "AcquisitionActive"), std::string("true"));
        QCOMPARE(m_Camera->AdvanceClock(10.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus"), std::string("true"));
    }

    void shouldDriveAnExposureOutputExactlyDuringTheExposure_data()
    {
        QTest::addColumn<bool>("inverted");
        QTest::newRow("normal") << false;
        QTest::newRow("inverted") << true;
    }

    void shouldDriveAnExposureOutputExactlyDuringTheExposure()
    {
        QFETCH(bool, inverted);
        Open("SIM-LINE-ROUTING");
        QCOMPARE(Set("LineSelector", "Line1"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("LineSource")), std::string("ExposureActive"));
        QCOMPARE(F("LineInverter")->SetValue(inverted), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSelector", "FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSource", "Software"), int(PkoErrorSuccess));
        QCOMPARE(F("ExposureTime")->SetValue(2000.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(LevelOf(m_Camera, "Line1"), inverted);
        QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QCOMPARE(LevelOf(m_Camera, "Line1"), !inverted);
        QCOMPARE(m_Camera->AdvanceClock(1.999), int(PkoErrorSuccess));
        QCOMPARE(LevelOf(m_Camera, "Line1"), !inverted);
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line1"), std::string(!inverted ? "true" : "false"));
        QCOMPARE(m_Camera->AdvanceClock(0.001), int(PkoErrorSuccess));
        QCOMPARE(LevelOf(m_Camera, "Line1"), inverted);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);  // still reading out
        QCOMPARE(m_Camera->AdvanceClock(2.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 1ULL);
        QCOMPARE(Latest().trigger, std::string("Software"));
    }

    void shouldCarryAnOutputToAnInputOverACable()
    {
        Open("SIM-LINE-SFNC");
        QCOMPARE(Set("LineSelector", "Line3"), int(PkoErrorSuccess));
        QCOMPARE(Set("LineSource", "UserOutput1"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Wire("Line3", "Line2"), int(PkoErrorSuccess));
        TriggerOnLine("Line2", "RisingEdge");
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(Set("UserOutputSelector", "UserOutput1"), int(PkoErrorSuccess));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(F("UserOutputValue")->SetValue(true), int(PkoErrorSuccess));
            QVERIFY(LevelOf(m_Camera, "Line2"));
            QCOMPARE(F("UserOutputValue")->SetValue(false), int(PkoErrorSuccess));
            QCOMPARE(m_Camera->AdvanceClock(10.0), int(PkoErrorSuccess));
        }
        QCOMPARE(m_Camera->FramesDelivered(), 3ULL);
        QCOMPARE(m_Camera->Unwire("Line3", "Line2"), int(PkoErrorSuccess));
        QCOMPARE(F("UserOutputValue")->SetValue(true), int(PkoErrorSuccess));
        QVERIFY(!LevelOf(m_Camera, "Line2"));
        QCOMPARE(m_Camera->Unwire("Line3", "Line2"), int(PkoErrorNotFound));
    }

    void shouldShowInputLevelsInTheMaskOfItsFamily_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("mask");
        QTest::newRow("sync out") << "SIM-SYNCOUT"
                                  << "SyncIn2"
                                  << "SyncInLevels";
        QTest::newRow("line out") << "SIM-LINEOUT"
                                  << "LineIn2"
                                  << "LineInLevels";
    }

    void shouldShowInputLevelsInTheMaskOfItsFamily()
    {
        QFETCH(QString, model);
        QFETCH(QString, input);
        QFETCH(QString, mask);
        Open(model.toLatin1().constData());
        QCOMPARE(m_Camera->DriveInput(input.toStdString(), true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText(mask.toStdString()), std::string("2"));
        QCOMPARE(m_Camera->DriveInput(input.toStdString(), false), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText(mask.toStdString()), std::string("0"));
    }

    void shouldShowEveryLineInLineStatusAll()
    {
        Open("SIM-LINE-SFNC");
        // Line1 (ExposureActive) and Line3 (Off) are outputs and low.
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatusAll"), std::string("1"));
        QCOMPARE(m_Camera->DriveInput("Line2", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatusAll"), std::string("5"));
        QCOMPARE(Set("LineSelector", "Line0"), int(PkoErrorSuccess));
        QCOMPARE(F("LineInverter")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatusAll"), std::string("4"));
    }

    void shouldGiveTheSlaveOneFramePerMasterFrame()
    {
        Open("SIM-LINE-SFNC");
        SimCameraPtr master = m_Camera;
        SimCameraPtr slave = OpenModel("SIM-LINE-SFNC");
        QVERIFY(slave);
        slave->UseManualClock();
        // The master free-runs at 50 fps; its Line1 shows ExposureActive.
        QCOMPARE(FeatureOf(master, "AcquisitionFrameRate")->SetValue(50.0), int(PkoErrorSuccess));
        m_Camera = slave;
        TriggerOnLine("Line0", "RisingEdge");
        m_Camera = master;
        // The slave's clock stopped after the master's: the master catches
        // up first, so that each edge reaches the slave at its own time.
        QCOMPARE(master->AdvanceClock(100.0), int(PkoErrorSuccess));
        QVERIFY(master->ClockNs() > slave->ClockNs());
        QCOMPARE(Wire(master, "Line1", slave, "Line0"), int(PkoErrorSuccess));
        QCOMPARE(slave->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(master->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(master->AdvanceClock(1000.0), int(PkoErrorSuccess));
        QCOMPARE(slave->AdvanceClock(20.0), int(PkoErrorSuccess));
        QVERIFY(master->FramesDelivered() >= 49);
        QCOMPARE(slave->FramesDelivered(), master->FramesDelivered() + 1);  // its last one is still exposing
        QCOMPARE(Unwire(master, "Line1", slave, "Line0"), int(PkoErrorSuccess));
        const unsigned long long frames = slave->FramesDelivered();
        QCOMPARE(master->AdvanceClock(200.0), int(PkoErrorSuccess));
        QCOMPARE(slave->AdvanceClock(200.0), int(PkoErrorSuccess));
        QCOMPARE(slave->FramesDelivered(), frames);
    }

    void shouldRefuseBadLineCallsAndChangeNothing()
    {
        Open("SIM-LINE-SFNC");
        m_Camera->ClearJournal();
        const std::string before = m_Camera->ValueText("LineStatusAll");
        QCOMPARE(m_Camera->DriveInput("Line9", true), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->DriveInput("Line1", true), int(PkoErrorInvalidAccess));  // an output
        QCOMPARE(m_Camera->StartPulses("Line1", 10.0, 5.0, 1), int(PkoErrorInvalidAccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 10.0, 10.0, 1), int(PkoErrorBadParameter));
        QCOMPARE(m_Camera->StartPulses("Line0", 10.0, 0.0, 1), int(PkoErrorBadParameter));
        QCOMPARE(m_Camera->StartPulses("Line0", 10.0, 5.0, -1), int(PkoErrorBadParameter));
        QCOMPARE(m_Camera->StopPulses("Nope"), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->Wire("Line0", "Line2"), int(PkoErrorInvalidAccess));  // input to input
        QCOMPARE(m_Camera->Wire("Line1", "Line3"), int(PkoErrorInvalidAccess));  // output to output
        QCOMPARE(m_Camera->Wire("Line1", "Line7"), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->Unwire("Line1", "Line0"), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->AdvanceClock(-1.0), int(PkoErrorBadParameter));
        QCOMPARE(Wire(m_Camera, "Line1", SimCameraPtr(), "Line0"), int(PkoErrorBadParameter));
        QCOMPARE(m_Camera->AdvanceClock(100.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatusAll"), before);
        QVERIFY(m_Camera->Journal().empty());

        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorDeviceNotOpen));
        QCOMPARE(m_Camera->AdvanceClock(1.0), int(PkoErrorDeviceNotOpen));
        bool high = false;
        QCOMPARE(m_Camera->LineLevel("Line0", high), int(PkoErrorDeviceNotOpen));
    }

    void shouldRefuseToAdvanceTheRealClock()
    {
        SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
        QVERIFY(camera);
        QCOMPARE(camera->AdvanceClock(1.0), int(PkoErrorInvalidAccess));
    }

    void shouldNotifyAFastPulseTrainWithinTheBound()
    {
        Open("SIM-LINE-ROUTING");
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("LineStatusAll")->RegisterObserver(observer), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        recorder->Clear();
        // 100 kHz for one second: 200,000 level changes of Line0.
        QCOMPARE(m_Camera->StartPulses("Line0", 0.01, 0.004, 0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(1000.0), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        const int notified = recorder->CountFor("LineStatusAll");
        QVERIFY2(notified >= 90 && notified <= 101, qPrintable(QString::number(notified)));
        QCOMPARE(m_Camera->StopPulses("Line0"), int(PkoErrorSuccess));
        QVERIFY(m_Camera->Journal().size() < 100);  // level changes are not journaled
        // Every edge was played: one millisecond of it, journaled.
        QCOMPARE(m_Camera->DriveInput("Line0", false), int(PkoErrorSuccess));
        m_Camera->ClearJournal();
        m_Camera->JournalLevelChanges(true);
        QCOMPARE(m_Camera->StartPulses("Line0", 0.01, 0.004, 0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(1.0), int(PkoErrorSuccess));
        QCOMPARE(int(m_Camera->Journal().size()), 201);  // the first rise at 0 and 100 pulses after it
    }

    void shouldNotifyEverySlowLevelChange()
    {
        Open("SIM-LINE-ROUTING");
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("LineStatus")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 50.0, 25.0, 4), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(500.0), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QCOMPARE(recorder->CountFor("LineStatus"), 8);
    }

    void shouldJournalLevelChangesOnlyWhenAsked()
    {
        Open("SIM-LINE-SFNC");
        m_Camera->ClearJournal();
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QVERIFY(m_Camera->Journal().empty());
        m_Camera->JournalLevelChanges(true);
        QCOMPARE(m_Camera->DriveInput("Line0", false), int(PkoErrorSuccess));
        const auto journal = m_Camera->Journal();
        QCOMPARE(int(journal.size()), 1);
        QCOMPARE(journal[0].feature, std::string("Line0"));
        QCOMPARE(journal[0].value, std::string("false"));
        QCOMPARE(journal[0].writer, std::string("line"));
    }

    void shouldKeepTheJournalBoundedAndSayWhatItDropped()
    {
        Open("SIM-LINE-SFNC");
        m_Camera->ClearJournal();
        m_Camera->SetJournalCapacity(10);
        for (long long i = 0; i < 25; ++i)
            QCOMPARE(F("AcquisitionFrameCount")->SetValue(i + 1), int(PkoErrorSuccess));
        const auto journal = m_Camera->Journal();
        QCOMPARE(int(journal.size()), 10);
        QCOMPARE(journal.front().value, std::string("16"));
        QCOMPARE(journal.back().value, std::string("25"));
        QCOMPARE(m_Camera->JournalDropped(), 15ULL);
        m_Camera->ClearJournal();
        QCOMPARE(m_Camera->JournalDropped(), 0ULL);
    }

    void shouldZeroTheSelectedCounterOnReset()
    {
        Open("SIM-LINE-SFNC");
        TriggerOnLine("Line0", "RisingEdge");
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartPulses("Line0", 20.0, 5.0, 2), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(100.0), int(PkoErrorSuccess));
        QCOMPARE(Set("CounterSelector", "Counter2"), int(PkoErrorSuccess));
        QCOMPARE(F("CounterReset")->RunCommand(), int(PkoErrorSuccess));
        QCOMPARE(CounterOf(m_Camera, "Counter2"), 0LL);
        QCOMPARE(CounterOf(m_Camera, "Counter0"), 2LL);
    }

    void shouldWaitForTheAcquisitionTriggerBeforeABurst()
    {
        Open("SIM-LINE-SFNC");
        QCOMPARE(Set("TriggerSelector", "AcquisitionStart"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSource", "Line0"), int(PkoErrorSuccess));
        QCOMPARE(Set("AcquisitionMode", "MultiFrame"), int(PkoErrorSuccess));
        QCOMPARE(F("AcquisitionFrameCount")->SetValue(4LL), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(500.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus", "AcquisitionTriggerWait"), std::string("true"));
        QCOMPARE(m_Camera->DriveInput("Line0", true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->AdvanceClock(1000.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->FramesDelivered(), 4ULL);
        QVERIFY(!m_Camera->IsAcquiring());
    }
};

QTEST_GUILESS_MAIN(TestSimSignals)
#include "tst_simsignals.moc"
