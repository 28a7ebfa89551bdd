#include "RecordingObserver.h"
#include "SdkTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

#include <thread>

using namespace ZMT::PkoAPI;
using namespace ZMT::PkoAPI::Sim;

namespace {

const int kTimeoutMs = 5000;

}  // namespace

class TestSimAcquisition : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;

    FeaturePtr F(const char* name) { return FeatureOf(m_Camera, name); }
    int Set(const char* name, const char* value) { return F(name)->SetValue(value); }
    // Software-triggered frames for the frame start trigger.
    void UseSoftwareTrigger()
    {
        QCOMPARE(Set("TriggerSelector", "FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSource", "Software"), int(PkoErrorSuccess));
    }

private slots:
    void init()
    {
        m_Camera = OpenModel("SIM-LINE-SFNC");
        QVERIFY(m_Camera);
    }

    void cleanup() { m_Camera.reset(); }

    void shouldDeliverFramesWhileFreeRunning()
    {
        QCOMPARE(F("AcquisitionFrameRate")->SetValue(160.0), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsAcquiring());
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QVERIFY(m_Camera->IsAcquiring());
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() >= 3, TestSupport::Scaled(kTimeoutMs));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsAcquiring());
    }

    void shouldDeliverOneFramePerSoftwareTrigger()
    {
        UseSoftwareTrigger();
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        for (int i = 0; i < 5; ++i)
            QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), 5ULL, TestSupport::Scaled(kTimeoutMs));
        QCOMPARE(m_Camera->SoftwareTriggers(), 5ULL);
        QVERIFY(m_Camera->IsAcquiring());
    }

    void shouldCountSoftwareTriggersThatDeliverNoFrame()
    {
        QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        UseSoftwareTrigger();
        QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->SoftwareTriggers(), 2ULL);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        QCOMPARE(m_Camera->Journal().back().value, std::string("(execute)"));
    }

    void shouldEndAMultiFrameAcquisitionByItselfAndNotify()
    {
        UseSoftwareTrigger();
        QCOMPARE(Set("AcquisitionMode", "MultiFrame"), int(PkoErrorSuccess));
        QCOMPARE(F("AcquisitionFrameCount")->SetValue(3LL), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("AcquisitionStatus")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(F("TriggerMode")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QCOMPARE(recorder->CountFor("AcquisitionStatus"), 1);
        QCOMPARE(recorder->CountFor("TriggerMode"), 1);
        recorder->Clear();

        for (int i = 0; i < 2; ++i)
            QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), 2ULL, TestSupport::Scaled(kTimeoutMs));
        QVERIFY(m_Camera->IsAcquiring());
        QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(!m_Camera->IsAcquiring(), TestSupport::Scaled(kTimeoutMs));
        QCOMPARE(m_Camera->FramesDelivered(), 3ULL);
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        const auto calls = recorder->Calls();
        QCOMPARE(recorder->CountFor("AcquisitionStatus"), 1);
        QCOMPARE(recorder->CountFor("TriggerMode"), 1);
        for (const auto& call : calls)
            QVERIFY(call.thread != std::this_thread::get_id());
        QCOMPARE(m_Camera->ValueText("AcquisitionStatus"), std::string("false"));
        QVERIFY(IsWritable(F("TriggerMode")));
        // The stop was the camera's own: no command was written.
        QCOMPARE(m_Camera->Journal().back().feature, std::string("TriggerSoftware"));
    }

    void shouldEndASingleFrameAcquisitionAfterOneFrame()
    {
        QCOMPARE(F("AcquisitionFrameRate")->SetValue(160.0), int(PkoErrorSuccess));
        QCOMPARE(Set("AcquisitionMode", "SingleFrame"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(!m_Camera->IsAcquiring(), TestSupport::Scaled(kTimeoutMs));
        QCOMPARE(m_Camera->FramesDelivered(), 1ULL);
    }

    void shouldRestartAndCountFramesOfTheNewAcquisition()
    {
        UseSoftwareTrigger();
        QCOMPARE(Set("AcquisitionMode", "MultiFrame"), int(PkoErrorSuccess));
        QCOMPARE(F("AcquisitionFrameCount")->SetValue(2LL), int(PkoErrorSuccess));
        for (int round = 1; round <= 2; ++round) {
            QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
            QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
            QCOMPARE(F("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
            QTRY_VERIFY_WITH_TIMEOUT(!m_Camera->IsAcquiring(), TestSupport::Scaled(kTimeoutMs));
            QCOMPARE(m_Camera->FramesDelivered(), 2ULL * round);
        }
    }

    void shouldTakeStartAndStopAsWritesOfTheCommands()
    {
        m_Camera->ClearJournal();
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
        const auto journal = m_Camera->Journal();
        QCOMPARE(int(journal.size()), 3);
        QCOMPARE(journal[0].feature, std::string("AcquisitionStart"));
        QCOMPARE(journal[0].value, std::string("(execute)"));
        QCOMPARE(journal[2].feature, std::string("AcquisitionStop"));
        QVERIFY(!m_Camera->IsAcquiring());
        QCOMPARE(F("AcquisitionStart")->RunCommand(), int(PkoErrorSuccess));
        QVERIFY(m_Camera->IsAcquiring());
    }

    void shouldPassAnInjectedFaultOfTheStartCommandOn()
    {
        m_Camera->InjectFault("AcquisitionStart", Operation::RunCommand, PkoErrorTimeout);
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorTimeout));
        QVERIFY(!m_Camera->IsAcquiring());
    }

    void shouldRefuseAcquisitionOfAClosedCamera()
    {
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorDeviceNotOpen));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorDeviceNotOpen));
        QVERIFY(!m_Camera->IsAcquiring());
    }

    void shouldRefuseAcquisitionWithoutAStartCommand()
    {
        CameraBuilder b("BARE", "Bare");
        b.AddInteger("Value", 0, 0, 1);
        SimCameraPtr camera = OpenBuilt(b);
        QVERIFY(camera);
        QCOMPARE(camera->StartAcquisition(), int(PkoErrorNotFound));
        QCOMPARE(camera->StopAcquisition(), int(PkoErrorNotFound));
    }

    void shouldStopAcquiringWhenClosedAndStartFreshWhenReopened()
    {
        QCOMPARE(F("AcquisitionFrameRate")->SetValue(160.0), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() >= 1, TestSupport::Scaled(kTimeoutMs));
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsAcquiring());
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsAcquiring());
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
    }

    void shouldFreeRunACameraWithoutTrigger()
    {
        SimCameraPtr camera = OpenModel("SIM-NO-TRIGGER");
        QVERIFY(camera);
        QCOMPARE(FeatureOf(camera, "AcquisitionFrameRate")->SetValue(120.0), int(PkoErrorSuccess));
        QCOMPARE(camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(camera->FramesDelivered() >= 2, TestSupport::Scaled(kTimeoutMs));
    }

    void shouldFreeRunOnAFreeRunningTriggerSource()
    {
        SimCameraPtr camera = OpenModel("SIM-SYNCOUT");
        QVERIFY(camera);
        QCOMPARE(FeatureOf(camera, "AcquisitionFrameRate")->SetValue(90.0), int(PkoErrorSuccess));
        QCOMPARE(FeatureOf(camera, "TriggerMode")->SetValue("On"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(FeatureOf(camera, "TriggerSource")), std::string("Freerun"));
        QCOMPARE(camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(camera->FramesDelivered() >= 2, TestSupport::Scaled(kTimeoutMs));
    }

    void shouldEndCleanlyWhenDestroyedWhileAcquiringWithObservers()
    {
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("AcquisitionFrameRate")->SetValue(160.0), int(PkoErrorSuccess));
        QCOMPARE(F("AcquisitionStatus")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->FramesDelivered() >= 1, TestSupport::Scaled(kTimeoutMs));
        FeaturePtr kept = F("AcquisitionStatus");
        m_Camera.reset();
        bool status = true;
        QCOMPARE(kept->GetValue(status), int(PkoErrorBadHandle));
        QCOMPARE(observer.use_count(), 1L);
    }
};

QTEST_GUILESS_MAIN(TestSimAcquisition)
#include "tst_simacquisition.moc"
