// The GenICam backend over real GigE Vision on loopback: a fake camera
// process per test, software-triggered frames, and a camera that dies while
// it is open.

#include "FakeGvCamera.h"

#include <PkoAPI/PkoAPI.h>

#include <QElapsedTimer>
#include <QTest>

#include <signal.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

using namespace ZMT::PkoAPI;

namespace {

std::string TextOf(const FeaturePtr& feature)
{
    unsigned int length = 0;
    if (feature->GetValue(nullptr, length) != PkoErrorSuccess)
        return std::string("<unreadable>");
    std::string text(length, '\0');
    if (length > 0 && feature->GetValue(text.data(), length) != PkoErrorSuccess)
        return std::string("<unreadable>");
    return text;
}

class NullObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr&) override {}
};

// Joins a thread when the test leaves, also on a failed check.
class Joiner {
public:
    explicit Joiner(std::thread& thread) : m_Thread(thread) {}
    ~Joiner()
    {
        if (m_Thread.joinable())
            m_Thread.join();
    }
    Joiner(const Joiner&) = delete;
    Joiner& operator=(const Joiner&) = delete;

private:
    std::thread& m_Thread;
};

}  // namespace

class tst_ArvBackendGv : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FakeGvCamera> m_Fake;
    CameraPtr m_Camera;

    FeaturePtr Feature(const char* name)
    {
        FeaturePtr feature;
        if (m_Camera->GetFeatureByName(name, feature) != PkoErrorSuccess)
            return FeaturePtr();
        return feature;
    }

private slots:
    void init()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (package aravis-tools)");
        m_Fake = std::make_unique<FakeGvCamera>(QString(), QStringLiteral("BKGV"));
        QVERIFY2(m_Fake->Start(), qPrintable(m_Fake->ErrorString()));
        const std::string id = "ARV:Aravis-Fake-" + m_Fake->Serial().toStdString();
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(id.c_str(), m_Camera), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        // The camera on the other end is the one this test started.
        QCOMPARE(TextOf(Feature("DeviceID")), m_Fake->Serial().toStdString());
    }

    void cleanup()
    {
        if (m_Camera)
            QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        m_Camera = CameraPtr();
        m_Fake.reset();
    }

    void shouldDeliverExactlyOneFramePerSoftwareTrigger()
    {
        QCOMPARE(Feature("TriggerSelector")->SetValue("FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Feature("TriggerMode")->SetValue("On"), int(PkoErrorSuccess));
        QCOMPARE(Feature("TriggerSource")->SetValue("Software"), int(PkoErrorSuccess));
        QCOMPARE(Feature("Width")->SetValue(256LL), int(PkoErrorSuccess));
        QCOMPARE(Feature("Height")->SetValue(128LL), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QTest::qWait(300);
        QCOMPARE(m_Camera->FramesDelivered(), 0ULL);
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorNotFound));

        const FeaturePtr trigger = Feature("TriggerSoftware");
        for (unsigned long long press = 1; press <= 3; ++press) {
            QCOMPARE(trigger->RunCommand(), int(PkoErrorSuccess));
            QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), press, 3000);
            // The camera latches one trigger at 25 Hz: wait it out before the next.
            QTest::qWait(150);
            QCOMPARE(m_Camera->FramesDelivered(), press);
        }
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorSuccess));
        QCOMPARE(frame.id, 3ULL);
        QCOMPARE(frame.width, 256u);
        QCOMPARE(frame.height, 128u);
        QCOMPARE(frame.mono8.size(), std::size_t(256 * 128));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
    }

    void shouldFailFastAndReportTheLossOfAKilledCamera()
    {
        const IFeatureObserverPtr observer(new NullObserver);
        const FeaturePtr width = Feature("Width");
        QCOMPARE(width->RegisterObserver(observer), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsConnectionLost());

        // Killed by pid behind the fixture's back: the fixture keeps the
        // machine-wide loopback lock, so no other camera can take the port
        // and answer in the dead camera's place.
        QElapsedTimer sinceKill;
        QCOMPARE(::kill(m_Fake->Pid(), SIGKILL), 0);
        sinceKill.start();
        // The first call waits out Aravis's transfer retries, no more.
        long long value = 0;
        QCOMPARE(width->GetValue(value), int(PkoErrorConnectionLost));
        QVERIFY2(sinceKill.elapsed() < 8000, qPrintable(QString::number(sinceKill.elapsed())));
        QVERIFY(m_Camera->IsConnectionLost());

        // From now on everything fails at once.
        QElapsedTimer burst;
        burst.start();
        for (int i = 0; i < 20; ++i) {
            QCOMPARE(width->GetValue(value), int(PkoErrorConnectionLost));
            QCOMPARE(width->SetValue(64LL), int(PkoErrorConnectionLost));
            bool writable = true;
            QCOMPARE(width->IsWritable(writable), int(PkoErrorConnectionLost));
            QCOMPARE(Feature("TriggerMode"), FeaturePtr());
            QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorConnectionLost));
            std::vector<FeaturePtr> features;
            QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorConnectionLost));
        }
        QVERIFY2(burst.elapsed() < 500, qPrintable(QString::number(burst.elapsed())));
        QVERIFY(m_Camera->IsOpen());
        QCOMPARE(width->RegisterObserver(IFeatureObserverPtr(new NullObserver)), int(PkoErrorConnectionLost));
        // A client can still clean up its observers.
        QCOMPARE(width->UnregisterObserver(observer), int(PkoErrorSuccess));

        QElapsedTimer closing;
        closing.start();
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY2(closing.elapsed() < 1000, qPrintable(QString::number(closing.elapsed())));
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(width->GetValue(value), int(PkoErrorBadHandle));
        m_Camera = CameraPtr();
    }

    void shouldNotMakeOtherThreadsWaitForACallStuckOnAKilledCamera()
    {
        const FeaturePtr width = Feature("Width");
        const FeaturePtr height = Feature("Height");
        // A background thread reads until the camera stops answering.
        std::atomic<int> backgroundResult{PkoErrorSuccess};
        std::thread background([&]() {
            long long value = 0;
            int result = PkoErrorSuccess;
            while (result == PkoErrorSuccess)
                result = width->GetValue(value);
            backgroundResult = result;
        });
        Joiner joiner(background);
        QTest::qWait(100);
        QCOMPARE(backgroundResult.load(), int(PkoErrorSuccess));

        QCOMPARE(::kill(m_Fake->Pid(), SIGKILL), 0);
        // By now the background thread is inside a call that waits for the
        // dead camera.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        for (int i = 0; i < 3; ++i) {
            QElapsedTimer call;
            call.start();
            long long value = 0;
            const int result = height->GetValue(value);
            QVERIFY2(result == PkoErrorTimeout || result == PkoErrorConnectionLost,
                     qPrintable(QString::number(result)));
            QVERIFY2(call.elapsed() < 1000, qPrintable(QString::number(call.elapsed())));
        }

        background.join();
        QCOMPARE(backgroundResult.load(), int(PkoErrorConnectionLost));
        QVERIFY(m_Camera->IsConnectionLost());
        for (int i = 0; i < 5; ++i) {
            long long value = 0;
            QCOMPARE(height->GetValue(value), int(PkoErrorConnectionLost));
            QCOMPARE(width->SetValue(64LL), int(PkoErrorConnectionLost));
            QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorConnectionLost));
        }
    }

    void shouldNoticeTheLossOfAnIdleCameraByItself()
    {
        // No call and no observer: only the link's own heartbeat can tell.
        QCOMPARE(::kill(m_Fake->Pid(), SIGKILL), 0);
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->IsConnectionLost(), 15000);
        QElapsedTimer call;
        call.start();
        QCOMPARE(Feature("Width"), FeaturePtr());
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorConnectionLost));
        QVERIFY2(call.elapsed() < 200, qPrintable(QString::number(call.elapsed())));
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendGv)
#include "tst_arvbackend_gv.moc"
