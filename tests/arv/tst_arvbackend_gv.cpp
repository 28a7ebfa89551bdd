// The GenICam backend over real GigE Vision on loopback: a fake camera
// process per test, software-triggered frames, and a camera that dies while
// it is open.

#include "FakeGvCamera.h"
#include "SimTestSupport.h"
#include "TestTime.h"

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

    FeaturePtr Feature(const char* name) { return TestSupport::FeatureNamed(m_Camera, name); }

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
            QTRY_COMPARE_WITH_TIMEOUT(m_Camera->FramesDelivered(), press, TestSupport::Scaled(3000));
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
        QCOMPARE(::kill(m_Fake->Pid(), SIGKILL), 0);
        // Gives the kernel time to take the process down.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        // The first call to reach the dead camera waits out Aravis's transfer
        // retries on the device thread; its caller does not.
        QElapsedTimer firstCall;
        firstCall.start();
        long long value = 7;
        QCOMPARE(width->GetValue(value), int(PkoErrorTimeout));
        QVERIFY2(firstCall.elapsed() < TestSupport::Scaled(1000), qPrintable(QString::number(firstCall.elapsed())));
        QCOMPARE(value, 7LL);
        // While that call is stuck, the others fail at once.
        QElapsedTimer stuck;
        stuck.start();
        QCOMPARE(width->SetValue(64LL), int(PkoErrorTimeout));
        QVERIFY2(stuck.elapsed() < TestSupport::Scaled(100), qPrintable(QString::number(stuck.elapsed())));
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->IsConnectionLost(), TestSupport::Scaled(8000));

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
        QVERIFY2(burst.elapsed() < TestSupport::Scaled(500), qPrintable(QString::number(burst.elapsed())));
        QVERIFY(m_Camera->IsOpen());
        QCOMPARE(width->RegisterObserver(IFeatureObserverPtr(new NullObserver)), int(PkoErrorConnectionLost));
        // A client can still clean up its observers.
        QCOMPARE(width->UnregisterObserver(observer), int(PkoErrorSuccess));

        QElapsedTimer closing;
        closing.start();
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY2(closing.elapsed() < TestSupport::Scaled(1000), qPrintable(QString::number(closing.elapsed())));
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(width->GetValue(value), int(PkoErrorBadHandle));
        m_Camera = CameraPtr();
    }

    void shouldNotHoldACallerWhoseOwnCallIsTheFirstToReachADeadCamera()
    {
        // Nothing observed and no acquisition: no thread of the backend
        // touches the camera, so the call below is the first to meet it dead.
        const FeaturePtr height = Feature("Height");
        QCOMPARE(::kill(m_Fake->Pid(), SIGKILL), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        QVERIFY(!m_Camera->IsConnectionLost());

        QElapsedTimer call;
        call.start();
        long long value = 7;
        QCOMPARE(height->GetValue(value), int(PkoErrorTimeout));
        QVERIFY2(call.elapsed() < TestSupport::Scaled(1000), qPrintable(QString::number(call.elapsed())));
        QCOMPARE(value, 7LL);
        // The call goes on without its caller until Aravis gives up on the
        // camera, which is then known to be lost.
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->IsConnectionLost(), TestSupport::Scaled(8000));
        QCOMPARE(height->GetValue(value), int(PkoErrorConnectionLost));
        QCOMPARE(value, 7LL);
    }

    void shouldDropAQueuedCallWhoseCallerGaveUpAndWorkAgainWhenTheCameraAnswers()
    {
        const FeaturePtr width = Feature("Width");
        const FeaturePtr height = Feature("Height");
        long long before = 0;
        QCOMPARE(height->GetValue(before), int(PkoErrorSuccess));
        const long long other = before == 128 ? 256 : 128;

        // A camera that stops answering for a second, well within Aravis's
        // retries, and then answers again.
        QCOMPARE(::kill(m_Fake->Pid(), SIGSTOP), 0);
        QElapsedTimer paused;
        paused.start();
        std::atomic<int> backgroundResult{PkoErrorSuccess};
        std::thread background([&]() {
            long long value = 0;
            backgroundResult = width->GetValue(value);
        });
        Joiner joiner(background);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        // Queued behind the stuck read: given up before it ever started.
        QCOMPARE(height->SetValue(other), int(PkoErrorTimeout));
        std::this_thread::sleep_for(std::chrono::milliseconds(1000) - std::chrono::milliseconds(paused.elapsed()));
        QCOMPARE(::kill(m_Fake->Pid(), SIGCONT), 0);
        background.join();
        QCOMPARE(backgroundResult.load(), int(PkoErrorTimeout));

        // Once the stuck read is answered, calls work again, and the write
        // whose caller gave up never reached the camera.
        long long after = 0;
        QTRY_COMPARE_WITH_TIMEOUT(height->GetValue(after), int(PkoErrorSuccess), TestSupport::Scaled(8000));
        QCOMPARE(after, before);
        QVERIFY(!m_Camera->IsConnectionLost());
        QCOMPARE(height->SetValue(other), int(PkoErrorSuccess));
        QCOMPARE(height->GetValue(after), int(PkoErrorSuccess));
        QCOMPARE(after, other);
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
            QVERIFY2(call.elapsed() < TestSupport::Scaled(1000), qPrintable(QString::number(call.elapsed())));
        }

        // The background thread gave up on its own call the same way.
        background.join();
        QCOMPARE(backgroundResult.load(), int(PkoErrorTimeout));
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->IsConnectionLost(), TestSupport::Scaled(8000));
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
        QTRY_VERIFY_WITH_TIMEOUT(m_Camera->IsConnectionLost(), TestSupport::Scaled(15000));
        QElapsedTimer call;
        call.start();
        QCOMPARE(Feature("Width"), FeaturePtr());
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorConnectionLost));
        QVERIFY2(call.elapsed() < TestSupport::Scaled(200), qPrintable(QString::number(call.elapsed())));
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendGv)
#include "tst_arvbackend_gv.moc"
