// The frame API on the simulated cameras, which every viewer shows without
// any camera attached: a moving grey test pattern at the camera's size.

#include "SimTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QTest>

#include <string>

using namespace ZMT::PkoAPI;

class tst_ArvBackendFrames : public QObject {
    Q_OBJECT

private:
    Sim::SimCameraPtr m_Camera;

    FeaturePtr Feature(const char* name) { return TestSupport::FeatureNamed(m_Camera, name); }

private slots:
    void init()
    {
        m_Camera = Sim::CreateModel("SIM-LINE-SFNC");
        QVERIFY(m_Camera);
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
    }

    void cleanup()
    {
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        m_Camera = Sim::SimCameraPtr();
    }

    void shouldHaveNoFrameBeforeTheFirstAndNoneWhenClosed()
    {
        Frame frame;
        frame.width = 7;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorNotFound));
        QCOMPARE(frame.width, 7u);
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorDeviceNotOpen));
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
    }

    void shouldMakeOneMovingFramePerSoftwareTriggerAtTheCamerasSize()
    {
        QCOMPARE(Feature("Width")->SetValue(64LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("Height")->SetValue(48LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("TriggerSelector")->SetValue("FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Feature("TriggerMode")->SetValue("On"), int(PkoErrorSuccess));
        QCOMPARE(Feature("TriggerSource")->SetValue("Software"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));

        QCOMPARE(Feature("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), 1ULL, TestSupport::Scaled(2000));
        Frame first;
        QCOMPARE(m_Camera->GetLatestFrame(first), int(PkoErrorSuccess));
        QCOMPARE(first.id, 1ULL);
        QCOMPARE(first.width, 64u);
        QCOMPARE(first.height, 48u);
        QCOMPARE(first.mono8.size(), std::size_t(64 * 48));

        QCOMPARE(Feature("TriggerSoftware")->RunCommand(), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), 2ULL, TestSupport::Scaled(2000));
        Frame second;
        QCOMPARE(m_Camera->GetLatestFrame(second), int(PkoErrorSuccess));
        QCOMPARE(second.id, 2ULL);
        QVERIFY(second.mono8 != first.mono8);
        // The same frame asked for twice is the same picture.
        Frame again;
        QCOMPARE(m_Camera->GetLatestFrame(again), int(PkoErrorSuccess));
        QCOMPARE(again.id, 2ULL);
        QVERIFY(again.mono8 == second.mono8);
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
    }

    void shouldKeepTheSizeAFrameWasTakenAt()
    {
        QCOMPARE(Feature("Width")->SetValue(32LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("Height")->SetValue(16LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("AcquisitionMode")->SetValue("SingleFrame"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTRY_VERIFY_WITH_TIMEOUT(!m_Camera->IsAcquiring(), TestSupport::Scaled(3000));
        QCOMPARE(Feature("Width")->SetValue(128LL), int(PkoErrorSuccess));
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorSuccess));
        QCOMPARE(frame.width, 32u);
        QCOMPARE(frame.height, 16u);
        QCOMPARE(frame.id, 1ULL);
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendFrames)
#include "tst_arvbackend_frames.moc"
