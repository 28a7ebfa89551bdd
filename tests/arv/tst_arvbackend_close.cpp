// Closing a GenICam camera that stopped answering: a fake camera process on
// loopback is paused (SIGSTOP) while the device thread waits for it, and
// Close must return while it is still paused, whether the camera then answers
// again (SIGCONT) or dies (SIGKILL).

// Before any Qt header: GLib's headers use the name "signals".
#include <arv.h>

#include "FakeGvCamera.h"
#include "SimTestSupport.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>

#include <QFile>
#include <QTest>

#include <signal.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

using namespace ZMT::PkoAPI;

namespace {

// Counts the calls it gets once the test says the camera is closed.
class CountingObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr&) override
    {
        if (closed.load())
            ++afterClose;
    }
    std::atomic<bool> closed{false};
    std::atomic<int> afterClose{0};
};

// Ends a paused camera's pause with signal, once: when the test asks, or by
// itself after afterMs. A Close that waited for the camera would return only
// after that, which the test sees in Ended(); the fallback keeps such a Close
// from waiting out Aravis's retries and passing anyway.
class PauseEnd {
public:
    PauseEnd(pid_t pid, int signal, int afterMs) : m_Pid(pid), m_Signal(signal)
    {
        m_Thread = std::thread([this, afterMs] {
            std::unique_lock<std::mutex> lock(m_Mutex);
            if (!m_Wake.wait_for(lock, std::chrono::milliseconds(afterMs), [this] { return m_Ended; }))
                EndLocked();
        });
    }
    ~PauseEnd()
    {
        End();
        m_Thread.join();
    }
    PauseEnd(const PauseEnd&) = delete;
    PauseEnd& operator=(const PauseEnd&) = delete;

    void End()
    {
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            EndLocked();
        }
        m_Wake.notify_all();
    }
    bool Ended()
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        return m_Ended;
    }

private:
    void EndLocked()
    {
        if (m_Ended)
            return;
        m_Ended = true;
        ::kill(m_Pid, m_Signal);
    }

    const pid_t m_Pid;
    const int m_Signal;
    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    bool m_Ended = false;
    std::thread m_Thread;
};

// The state letter of process pid in /proc ('T' once stopped), or '?'.
char ProcessState(pid_t pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return '?';
    // "pid (name) state ...": the name may hold anything but the last ')'.
    const QByteArray line = stat.readAll();
    const int end = line.lastIndexOf(')');
    return end >= 0 && end + 2 < line.size() ? line.at(end + 2) : '?';
}

// Aravis's in-process fake camera, the camera the user switches to.
const char* const kOtherCameraId = "ARV:Fake_1";
// Long enough for a Close that does not wait, well short of the seconds
// Aravis tries a camera that does not answer.
const int kPauseMs = 1000;

}  // namespace

class tst_ArvBackendClose : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FakeGvCamera> m_Fake;
    CameraPtr m_Camera;

    FeaturePtr Feature(const char* name) { return TestSupport::FeatureNamed(m_Camera, name); }

private slots:
    void initTestCase()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (package aravis-tools)");
        arv_enable_interface("Fake");
    }

    void init()
    {
        // Our marked description: Width is cached and not polled, so the
        // only call to reach the paused camera is the test's own.
        m_Fake = std::make_unique<FakeGvCamera>(FakeGvCamera::GenicamFile(QString::fromLatin1(FakeGvCamera::Gen1Line)),
                                                QStringLiteral("BKCL"));
        QVERIFY2(m_Fake->Start(), qPrintable(m_Fake->ErrorString()));
        const std::string id = "ARV:Aravis-Fake-" + m_Fake->Serial().toStdString();
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(id.c_str(), m_Camera), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
    }

    void cleanup()
    {
        if (m_Camera)
            QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        m_Camera = CameraPtr();
        m_Fake.reset();
    }

    void shouldCloseWhileACallWaitsForAPausedCamera_data()
    {
        QTest::addColumn<int>("endOfPause");
        QTest::newRow("camera answers again") << int(SIGCONT);
        QTest::newRow("camera dies") << int(SIGKILL);
    }

    void shouldCloseWhileACallWaitsForAPausedCamera()
    {
        QFETCH(int, endOfPause);
        const FeaturePtr width = Feature("Width");
        QVERIFY(width);
        long long before = 0;
        QCOMPARE(width->GetValue(before), int(PkoErrorSuccess));
        const long long other = before == 256 ? 320 : 256;
        auto* observer = new CountingObserver;
        const IFeatureObserverPtr registered(observer);
        QCOMPARE(width->RegisterObserver(registered), int(PkoErrorSuccess));

        QCOMPARE(::kill(m_Fake->Pid(), SIGSTOP), 0);
        // A signal takes effect a moment after kill returns.
        QTRY_COMPARE_WITH_TIMEOUT(ProcessState(m_Fake->Pid()), 'T', TestSupport::Scaled(5000));
        // The device thread takes the write at once and waits for the camera;
        // the caller gives up.
        QCOMPARE(width->SetValue(other), int(PkoErrorTimeout));

        PauseEnd pause(m_Fake->Pid(), endOfPause, TestSupport::Scaled(kPauseMs));
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        const bool pauseEndedFirst = pause.Ended();
        observer->closed = true;
        QVERIFY2(!pauseEndedFirst, "Close waited for the camera");

        // Closed at once, the write still waiting for the camera.
        QVERIFY(!m_Camera->IsOpen());
        QVERIFY(!m_Camera->IsConnectionLost());
        long long value = 0;
        QCOMPARE(width->GetValue(value), int(PkoErrorBadHandle));
        QCOMPARE(width->SetValue(other), int(PkoErrorBadHandle));
        bool writable = false;
        QCOMPARE(width->IsWritable(writable), int(PkoErrorBadHandle));
        QCOMPARE(width->RegisterObserver(IFeatureObserverPtr(new CountingObserver)), int(PkoErrorBadHandle));
        std::vector<FeaturePtr> features;
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorDeviceNotOpen));
        FeaturePtr found;
        QCOMPARE(m_Camera->GetFeatureByName("Width", found), int(PkoErrorDeviceNotOpen));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorDeviceNotOpen));
        Frame frame;
        QCOMPARE(m_Camera->GetLatestFrame(frame), int(PkoErrorDeviceNotOpen));
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));

        pause.End();
        // Open waits for the last session to finish in the background.
        if (endOfPause == SIGCONT) {
            QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
            // The write whose caller gave up reached the camera when it
            // answered again, and nobody heard of it.
            long long after = 0;
            QCOMPARE(Feature("Width")->GetValue(after), int(PkoErrorSuccess));
            QCOMPARE(after, other);
        } else {
            QCOMPARE(m_Camera->Open(), int(PkoErrorTimeout));
            QVERIFY(!m_Camera->IsOpen());
        }
        QCOMPARE(observer->afterClose.load(), 0);
        QCOMPARE(width->GetValue(value), int(PkoErrorBadHandle));
    }

    void shouldOpenAnotherCameraRightAfterATimeoutWithoutWaitingForTheLostOne()
    {
        CameraPtr otherCamera;
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(kOtherCameraId, otherCamera), int(PkoErrorSuccess));
        const FeaturePtr height = Feature("Height");
        QVERIFY(height);

        QCOMPARE(::kill(m_Fake->Pid(), SIGSTOP), 0);
        // A signal takes effect a moment after kill returns.
        QTRY_COMPARE_WITH_TIMEOUT(ProcessState(m_Fake->Pid()), 'T', TestSupport::Scaled(5000));
        long long value = 0;
        QCOMPARE(height->GetValue(value), int(PkoErrorTimeout));

        // The user picks another camera.
        PauseEnd pause(m_Fake->Pid(), SIGKILL, TestSupport::Scaled(kPauseMs));
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(otherCamera->Open(), int(PkoErrorSuccess));
        FeaturePtr otherWidth;
        QCOMPARE(otherCamera->GetFeatureByName("Width", otherWidth), int(PkoErrorSuccess));
        QCOMPARE(otherWidth->GetValue(value), int(PkoErrorSuccess));
        QVERIFY2(!pause.Ended(), "switching cameras waited for the lost one");

        pause.End();
        QCOMPARE(otherCamera->Close(), int(PkoErrorSuccess));
        QCOMPARE(height->GetValue(value), int(PkoErrorBadHandle));
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendClose)
#include "tst_arvbackend_close.moc"
