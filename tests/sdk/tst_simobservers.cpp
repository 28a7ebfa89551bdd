#include "RecordingObserver.h"
#include "SdkTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

using namespace ZMT::PkoAPI;
using namespace ZMT::PkoAPI::Sim;

namespace {

const int kTimeoutMs = 5000;

// Polls cheaply until condition holds or the time is up; true when it held.
template <class Condition>
bool WaitUntil(Condition condition, int timeoutMs = kTimeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

SimCameraPtr OpenObservedCamera()
{
    CameraBuilder b("OBS", "Observed");
    b.AddEnumeration("Sel", {"A", "B"}, "A").Selects({"P", "Q"});
    b.AddInteger("P", 0, 0, 100);
    b.AddInteger("Q", 0, 0, 100);
    b.AddInteger("Source", 0, 0, 100).Notifies({"Dependant"});
    b.AddInteger("Dependant", 0, 0, 100);
    b.AddInteger("Value", 0, 0, 1000000);
    b.AddInteger("Fixed", 1, 0, 10).ReadOnly();
    return OpenBuilt(b);
}

}  // namespace

class TestSimObservers : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;
    RecordingObserver* m_Recorder = nullptr;  // owned by m_Observer
    IFeatureObserverPtr m_Observer;

    FeaturePtr F(const char* name) { return FeatureOf(m_Camera, name); }
    bool Flush() { return m_Camera->WaitForNotifications(kTimeoutMs); }

private slots:
    void init()
    {
        m_Camera = OpenObservedCamera();
        QVERIFY(m_Camera);
        m_Recorder = new RecordingObserver;
        m_Observer = IFeatureObserverPtr(m_Recorder);
    }

    void cleanup()
    {
        m_Recorder->SetHook(RecordingObserver::Hook());
        m_Camera.reset();
        m_Observer.reset();
        m_Recorder = nullptr;
    }

    void shouldNotifyOnAnSdkThreadForEveryWriteEvenOfAnEqualValue()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(5LL), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(5LL), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(6LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        const auto calls = m_Recorder->Calls();
        QCOMPARE(int(calls.size()), 3);
        for (const auto& call : calls) {
            QCOMPARE(call.feature, std::string("Value"));
            QVERIFY(call.thread != std::this_thread::get_id());
        }
    }

    void shouldNotNotifyForARefusedWrite()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Fixed")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(-1LL), int(PkoErrorInvalidValue));
        QCOMPARE(F("Fixed")->SetValue(2LL), int(PkoErrorInvalidAccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 0);
    }

    void shouldRefuseANullObserver()
    {
        QCOMPARE(F("Value")->RegisterObserver(IFeatureObserverPtr()), int(PkoErrorBadParameter));
        QCOMPARE(F("Value")->UnregisterObserver(IFeatureObserverPtr()), int(PkoErrorBadParameter));
    }

    void shouldRefuseASecondRegistrationAndCallOnlyOnce()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorAlreadyRegistered));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 1);
        QCOMPARE(F("Value")->UnregisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->UnregisterObserver(m_Observer), int(PkoErrorNotRegistered));
        QCOMPARE(F("Value")->SetValue(2LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 1);
    }

    void shouldRegisterOneObserverOnManyFeaturesIndependently()
    {
        QCOMPARE(F("P")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Q")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("P")->UnregisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Q")->SetValue(3LL), int(PkoErrorSuccess));
        QCOMPARE(F("P")->SetValue(3LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->CountFor("Q"), 1);
        QCOMPARE(m_Recorder->CountFor("P"), 0);
    }

    void shouldCallEveryObserverOfAFeature()
    {
        auto* second = new RecordingObserver;
        IFeatureObserverPtr secondPtr(second);
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->RegisterObserver(secondPtr), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(9LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 1);
        QCOMPARE(second->Count(), 1);
    }

    void shouldNotifyTheSelectedFeaturesWhenTheSelectorChanges()
    {
        for (const char* name : {"Sel", "P", "Q", "Source"})
            QCOMPARE(F(name)->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Sel")->SetValue("B"), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->CountFor("Sel"), 1);
        QCOMPARE(m_Recorder->CountFor("P"), 1);
        QCOMPARE(m_Recorder->CountFor("Q"), 1);
        QCOMPARE(m_Recorder->CountFor("Source"), 0);
        QCOMPARE(m_Recorder->Calls().front().feature, std::string("Sel"));
    }

    void shouldNotifyTheDependantsAFeatureNames()
    {
        QCOMPARE(F("Dependant")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Source")->SetValue(4LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->CountFor("Dependant"), 1);
    }

    void shouldDeliverCameraSideChangesFromTheSdkThread()
    {
        QCOMPARE(F("Fixed")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ChangeFromCamera("Fixed", "3"), int(PkoErrorSuccess));
        QVERIFY(Flush());
        const auto calls = m_Recorder->Calls();
        QCOMPARE(int(calls.size()), 1);
        QVERIFY(calls[0].thread != std::this_thread::get_id());
        QCOMPARE(m_Camera->Journal().back().writer, std::string("camera"));
    }

    void shouldPassTheFeatureItselfAndLetTheCallbackReadIt()
    {
        FeaturePtr value = F("Value");
        std::atomic<long long> seen{-1};
        std::atomic<bool> same{false};
        m_Recorder->SetHook([&](const FeaturePtr& feature) {
            same = feature == value;
            long long v = -1;
            feature->GetValue(v);
            seen = v;
        });
        QCOMPARE(value->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(value->SetValue(77LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QVERIFY(same);
        QCOMPARE(seen.load(), 77LL);
    }

    void shouldNeverCallAnObserverAfterUnregisterReturns()
    {
        FeaturePtr value = F("Value");
        std::atomic<bool> stop{false};
        std::thread writer([&] {
            long long v = 0;
            while (!stop) {
                value->SetValue(v++ % 1000);
                m_Camera->WaitForNotifications(kTimeoutMs);
            }
        });
        std::atomic<int> late{0};
        int rounds = 0;
        for (; rounds < 150; ++rounds) {
            auto unregistered = std::make_shared<std::atomic<bool>>(false);
            auto* recorder = new RecordingObserver;
            IFeatureObserverPtr observer(recorder);
            recorder->SetHook([unregistered, &late](const FeaturePtr&) {
                // Stay in the callback a little, so that unregistering meets it.
                volatile int work = 0;
                for (int i = 0; i < 2000; ++i)
                    work = work + i;
                if (*unregistered)
                    ++late;
            });
            if (value->RegisterObserver(observer) != PkoErrorSuccess)
                break;
            if (!WaitUntil([&] { return recorder->Count() > 0; }))
                break;
            if (value->UnregisterObserver(observer) != PkoErrorSuccess)
                break;
            *unregistered = true;
        }
        stop = true;
        writer.join();
        QVERIFY(Flush());
        QCOMPARE(rounds, 150);
        QCOMPARE(late.load(), 0);
    }

    void shouldWaitForACallbackInProgressBeforeUnregisterReturns()
    {
        std::atomic<bool> entered{false};
        std::atomic<bool> release{false};
        m_Recorder->SetHook([&](const FeaturePtr&) {
            entered = true;
            WaitUntil([&] { return release.load(); });
        });
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(WaitUntil([&] { return entered.load(); }));
        std::atomic<bool> returned{false};
        std::atomic<int> result{1};
        std::thread unregister([&] {
            result = F("Value")->UnregisterObserver(m_Observer);
            returned = true;
        });
        // Unregistering must block while the callback runs.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        QVERIFY(!returned);
        release = true;
        unregister.join();
        QCOMPARE(result.load(), int(PkoErrorSuccess));
    }

    void shouldNotTellAnObserverOfAChangeMadeBeforeItRegistered()
    {
        // Hold the notification thread in a callback for "P", so that the
        // change of "Value" below is still queued when the observer registers.
        std::atomic<bool> entered{false};
        std::atomic<bool> release{false};
        RecordingObserver* gate = new RecordingObserver;
        const IFeatureObserverPtr gateOwner(gate);
        gate->SetHook([&](const FeaturePtr&) {
            entered = true;
            WaitUntil([&] { return release.load(); });
        });
        QCOMPARE(F("P")->RegisterObserver(gateOwner), int(PkoErrorSuccess));
        QCOMPARE(F("P")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(WaitUntil([&] { return entered.load(); }));

        QCOMPARE(F("Value")->SetValue(5LL), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        release = true;
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->CountFor("Value"), 0);

        // A change made while it is registered still reaches it.
        QCOMPARE(F("Value")->SetValue(6LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->CountFor("Value"), 1);
        gate->SetHook(RecordingObserver::Hook());
    }

    void shouldLetAnObserverUnregisterItselfInsideItsCallback()
    {
        FeaturePtr value = F("Value");
        std::atomic<int> result{1};
        IFeatureObserverPtr self = m_Observer;
        m_Recorder->SetHook([&result, value, self](const FeaturePtr&) { result = value->UnregisterObserver(self); });
        QCOMPARE(value->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(value->SetValue(1LL), int(PkoErrorSuccess));
        QCOMPARE(value->SetValue(2LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(result.load(), int(PkoErrorSuccess));
        QCOMPARE(m_Recorder->Count(), 1);
    }

    void shouldKeepARegisteredObserverAliveAfterTheClientLetsGo()
    {
        std::atomic<bool> destroyed{false};
        auto* recorder = new RecordingObserver(&destroyed);
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("Value")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(observer.use_count(), 2L);
        observer.reset();
        QVERIFY(!destroyed);
        QCOMPARE(F("Value")->SetValue(3LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(recorder->Count(), 1);
        // Closing lets go of every observer: the last reference goes with it.
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY(destroyed);
    }

    void shouldReleaseTheObserverWhenUnregistered()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(m_Observer.use_count(), 2L);
        QCOMPARE(F("Value")->UnregisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(m_Observer.use_count(), 1L);
    }

    void shouldKeepDeliveringAfterAnObserverThrows()
    {
        auto* thrower = new RecordingObserver;
        IFeatureObserverPtr throwerPtr(thrower);
        thrower->SetHook([](const FeaturePtr&) { throw std::runtime_error("observer failed"); });
        QCOMPARE(F("Value")->RegisterObserver(throwerPtr), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(2LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(thrower->Count(), 2);
        QCOMPARE(m_Recorder->Count(), 2);
    }

    void shouldLetGoOfObserversWhenTheCameraCloses()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        FeaturePtr value = F("Value");
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(m_Observer.use_count(), 1L);
        QCOMPARE(value->UnregisterObserver(m_Observer), int(PkoErrorBadHandle));
        QCOMPARE(value->RegisterObserver(m_Observer), int(PkoErrorBadHandle));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(value->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(value->SetValue(8LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 1);
    }

    void shouldCloseTheCameraFromInsideACallbackWithoutDeadlock()
    {
        SimCamera* camera = m_Camera.get();
        std::atomic<int> result{1};
        m_Recorder->SetHook([camera, &result](const FeaturePtr&) { result = camera->Close(); });
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(WaitUntil([&] { return !m_Camera->IsOpen(); }));
        QVERIFY(WaitUntil([&] { return result.load() == PkoErrorSuccess; }));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(2LL), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->WaitForNotifications(kTimeoutMs), true);
    }

    void shouldCutFeaturesOffWhenTheCameraIsDestroyedDuringACallback()
    {
        std::atomic<bool> entered{false};
        std::atomic<int> lastResult{1};
        m_Recorder->SetHook([&](const FeaturePtr& feature) {
            entered = true;
            WaitUntil([&] {
                long long v = 0;
                lastResult = feature->GetValue(v);
                return lastResult.load() == PkoErrorBadHandle;
            });
        });
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(WaitUntil([&] { return entered.load(); }));
        m_Camera.reset();  // waits for the callback, which ends once cut off
        QCOMPARE(lastResult.load(), int(PkoErrorBadHandle));
    }

    void shouldRefuseObserverOperationsWithAnInjectedFault()
    {
        m_Camera->InjectFault("Value", Operation::RegisterObserver, PkoErrorOther);
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorOther));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 0);
        m_Camera->ClearFaults();
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        m_Camera->InjectFault("Value", Operation::UnregisterObserver, PkoErrorTimeout);
        QCOMPARE(F("Value")->UnregisterObserver(m_Observer), int(PkoErrorTimeout));
        QCOMPARE(F("Value")->SetValue(2LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 1);
    }

    void shouldDeliverEverythingQueuedBeforeReportingIdle()
    {
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        for (long long i = 0; i < 200; ++i)
            QCOMPARE(F("Value")->SetValue(i), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(m_Recorder->Count(), 200);
    }

    void shouldRefuseToWaitForNotificationsFromTheNotificationThread()
    {
        std::atomic<int> waited{-1};
        SimCamera* camera = m_Camera.get();
        m_Recorder->SetHook(
            [camera, &waited](const FeaturePtr&) { waited = camera->WaitForNotifications(kTimeoutMs); });
        QCOMPARE(F("Value")->RegisterObserver(m_Observer), int(PkoErrorSuccess));
        QCOMPARE(F("Value")->SetValue(1LL), int(PkoErrorSuccess));
        QVERIFY(Flush());
        QCOMPARE(waited.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSimObservers)
#include "tst_simobservers.moc"
