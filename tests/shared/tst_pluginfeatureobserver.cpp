#include "ChangeRecorder.h"
#include "PluginFeatureObserver.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace Pko = ZMT::PkoAPI;
namespace Sim = ZMT::PkoAPI::Sim;

namespace {

const int kFault = Pko::PkoErrorOther;

Sim::SimCameraPtr BuildCamera()
{
    Sim::CameraBuilder builder("TEST-OBS", "Observer test camera");
    builder.AddInteger("Negative", -5, -100, 100);
    builder.AddInteger("Largest", std::numeric_limits<long long>::max(), 0, std::numeric_limits<long long>::max());
    builder.AddFloat("Tenth", 0.1, 0.0, 1.0);
    builder.AddFloat("Hundred", 1e8, 0.0, 1e9);
    builder.AddFloat("Fifteen", 15000.0, 0.0, 1e6);
    builder.AddFloat("Half", 0.5, 0.0, 1.0);
    builder.AddFloat("Million", 1234567.0, 0.0, 1e7);
    builder.AddBoolean("Yes", true);
    builder.AddBoolean("No", false);
    builder.AddCommand("Go");
    builder.AddRaw("Data", "xyz");
    builder.AddEnumeration("Mode", {"Off", "On"}, "On");
    builder.AddString("Text", "abc def");
    builder.AddString("Empty", "");
    builder.AddOfType("Unknown", 0);
    builder.AddOfType("Future", 8);
    Sim::SimCameraPtr camera = builder.Build();
    if (camera && camera->Open() != Pko::PkoErrorSuccess)
        return Sim::SimCameraPtr();
    return camera;
}

Pko::FeaturePtr Find(const Sim::SimCameraPtr& camera, const QString& name)
{
    Pko::FeaturePtr feature;
    camera->GetFeatureByName(name.toLatin1().constData(), feature);
    return feature;
}

}  // namespace

class TestPluginFeatureObserver : public QObject {
    Q_OBJECT

private slots:
    void shouldEmitTheNameAndTheValueAsText_data();
    void shouldEmitTheNameAndTheValueAsText();
    void shouldUseFixedTextsForCommandAndRawWhateverTheirState();
    void shouldNotEmitForANullFeature();
    void shouldNotEmitWhenTheNameCannotBeRead();
    void shouldNotEmitWhenTheDataTypeCannotBeRead();
    void shouldEmitAnEmptyValueWhenTheValueCannotBeRead_data();
    void shouldEmitAnEmptyValueWhenTheValueCannotBeRead();
    void shouldBeAParentlessQObjectFirstWithOneSignal();
    void shouldBeDeletedWithTheLastSdkReference();
    void shouldQueueTenCallsFromAnotherThreadIntoTheGuiThread();
    void shouldDeliverSdkNotificationsIntoTheGuiThread();
};

void TestPluginFeatureObserver::shouldEmitTheNameAndTheValueAsText_data()
{
    QTest::addColumn<QString>("feature");
    QTest::addColumn<QString>("text");

    QTest::newRow("negative integer") << "Negative"
                                      << "-5";
    QTest::newRow("largest integer") << "Largest"
                                     << "9223372036854775807";
    QTest::newRow("float 0.1") << "Tenth"
                               << "0.1";
    QTest::newRow("float 1e8") << "Hundred"
                               << "1e+08";
    QTest::newRow("float 15000") << "Fifteen"
                                 << "15000";
    QTest::newRow("float 0.5") << "Half"
                               << "0.5";
    QTest::newRow("float 1234567") << "Million"
                                   << "1.23457e+06";
    QTest::newRow("boolean true") << "Yes"
                                  << "true";
    QTest::newRow("boolean false") << "No"
                                   << "false";
    QTest::newRow("command") << "Go"
                             << "[COMMAND]";
    QTest::newRow("raw") << "Data"
                         << "Click here to open";
    QTest::newRow("enumeration") << "Mode"
                                 << "On";
    QTest::newRow("string") << "Text"
                            << "abc def";
    QTest::newRow("empty string") << "Empty"
                                  << "";
    QTest::newRow("unknown type") << "Unknown"
                                  << "";
    QTest::newRow("type 8") << "Future"
                            << "";
}

void TestPluginFeatureObserver::shouldEmitTheNameAndTheValueAsText()
{
    QFETCH(QString, feature);
    QFETCH(QString, text);
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    const Pko::FeaturePtr target = Find(camera, feature);
    QVERIFY(target);

    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(target);

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), feature);
    QCOMPARE(spy.at(0).at(1).toString(), text);
}

void TestPluginFeatureObserver::shouldUseFixedTextsForCommandAndRawWhateverTheirState()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    camera->InjectFault("Go", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Data", Sim::Operation::GetValue, kFault);
    QCOMPARE(Find(camera, "Go")->RunCommand(), int(Pko::PkoErrorSuccess));

    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(Find(camera, "Go"));
    observer.FeatureChanged(Find(camera, "Data"));

    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(1).toString(), QString("[COMMAND]"));
    QCOMPARE(spy.at(1).at(1).toString(), QString("Click here to open"));
}

void TestPluginFeatureObserver::shouldNotEmitForANullFeature()
{
    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(Pko::FeaturePtr());
    QCOMPARE(spy.count(), 0);
}

void TestPluginFeatureObserver::shouldNotEmitWhenTheNameCannotBeRead()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    camera->InjectFault("Negative", Sim::Operation::GetName, kFault);

    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(Find(camera, "Negative"));
    QCOMPARE(spy.count(), 0);

    // The same feature is announced again once its name reads.
    camera->ClearFaults();
    observer.FeatureChanged(Find(camera, "Negative"));
    QCOMPARE(spy.count(), 1);
}

void TestPluginFeatureObserver::shouldNotEmitWhenTheDataTypeCannotBeRead()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    camera->InjectFault("Mode", Sim::Operation::GetDataType, kFault);

    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(Find(camera, "Mode"));
    QCOMPARE(spy.count(), 0);
}

void TestPluginFeatureObserver::shouldEmitAnEmptyValueWhenTheValueCannotBeRead_data()
{
    QTest::addColumn<QString>("feature");
    QTest::newRow("integer") << "Negative";
    QTest::newRow("float") << "Tenth";
    QTest::newRow("boolean") << "Yes";
    QTest::newRow("enumeration") << "Mode";
    QTest::newRow("string") << "Text";
}

void TestPluginFeatureObserver::shouldEmitAnEmptyValueWhenTheValueCannotBeRead()
{
    QFETCH(QString, feature);
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    camera->InjectFault(feature.toStdString(), Sim::Operation::GetValue, kFault);

    PluginFeatureObserver observer;
    QSignalSpy spy(&observer, SIGNAL(setChangedFeature(const QString&, const QString&)));
    observer.FeatureChanged(Find(camera, feature));

    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), feature);
    QCOMPARE(spy.at(0).at(1).toString(), QString(""));
}

void TestPluginFeatureObserver::shouldBeAParentlessQObjectFirstWithOneSignal()
{
    PluginFeatureObserver observer;
    QVERIFY(observer.parent() == nullptr);
    QVERIFY(observer.thread() == QThread::currentThread());
    // QObject is the first base: both views start at the same address.
    QVERIFY(static_cast<void*>(static_cast<QObject*>(&observer)) == static_cast<void*>(&observer));
    QVERIFY(dynamic_cast<Pko::IFeatureObserver*>(&observer) != nullptr);

    const QMetaObject* meta = observer.metaObject();
    QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
    const QMetaMethod signal = meta->method(meta->methodOffset());
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(QString::fromLatin1(signal.methodSignature()), QString("setChangedFeature(QString,QString)"));
}

void TestPluginFeatureObserver::shouldBeDeletedWithTheLastSdkReference()
{
    Pko::shared_ptr<PluginFeatureObserver> observer(new PluginFeatureObserver());
    QPointer<PluginFeatureObserver> watch(observer.get());
    Pko::IFeatureObserverPtr held = observer;
    observer.reset();
    QVERIFY(!watch.isNull());
    held.reset();
    QVERIFY(watch.isNull());
}

void TestPluginFeatureObserver::shouldQueueTenCallsFromAnotherThreadIntoTheGuiThread()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    const Pko::FeaturePtr feature = Find(camera, "Negative");
    QVERIFY(feature);

    Pko::shared_ptr<PluginFeatureObserver> observer(new PluginFeatureObserver());
    ChangeRecorder recorder;
    QVERIFY(QObject::connect(observer.get(), SIGNAL(setChangedFeature(const QString&, const QString&)), &recorder,
                             SLOT(OnChanged(const QString&, const QString&))));

    Pko::IFeatureObserverPtr sdkView = observer;
    std::thread caller([sdkView, feature]() {
        for (int i = 0; i < 10; ++i)
            sdkView->FeatureChanged(feature);
    });
    caller.join();

    // Nothing runs before the GUI thread's event loop does: the calls are queued.
    QCOMPARE(recorder.m_Changes.size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(recorder.m_Changes.size(), 10, TestSupport::Scaled(3000));
    QCoreApplication::processEvents();
    QCOMPARE(recorder.m_Changes.size(), 10);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(recorder.m_Changes.at(i).first, QString("Negative"));
        QCOMPARE(recorder.m_Changes.at(i).second, QString("-5"));
        QVERIFY(recorder.m_Threads.at(i) == QThread::currentThread());
    }
}

void TestPluginFeatureObserver::shouldDeliverSdkNotificationsIntoTheGuiThread()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    const Pko::FeaturePtr feature = Find(camera, "Negative");
    QVERIFY(feature);

    Pko::shared_ptr<PluginFeatureObserver> observer(new PluginFeatureObserver());
    ChangeRecorder recorder;
    QVERIFY(QObject::connect(observer.get(), SIGNAL(setChangedFeature(const QString&, const QString&)), &recorder,
                             SLOT(OnChanged(const QString&, const QString&))));
    QThread* const gui = QThread::currentThread();
    std::atomic<int> offGuiEmissions{0};
    QObject::connect(observer.get(), &PluginFeatureObserver::setChangedFeature, [&](const QString&, const QString&) {
        if (QThread::currentThread() != gui)
            ++offGuiEmissions;
    });

    const Pko::IFeatureObserverPtr sdkView = observer;
    QCOMPARE(feature->RegisterObserver(sdkView), int(Pko::PkoErrorSuccess));
    for (long long value = 1; value <= 10; ++value)
        QCOMPARE(feature->SetValue(value), int(Pko::PkoErrorSuccess));
    QVERIFY(camera->WaitForNotifications(3000));

    QCOMPARE(recorder.m_Changes.size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(recorder.m_Changes.size(), 10, TestSupport::Scaled(3000));
    QCOMPARE(offGuiEmissions.load(), 10);
    QCOMPARE(recorder.m_Changes.last(), qMakePair(QString("Negative"), QString("10")));
    for (QThread* thread : recorder.m_Threads)
        QVERIFY(thread == gui);

    QCOMPARE(camera->ChangeFromCamera("Negative", "-7"), int(Pko::PkoErrorSuccess));
    QVERIFY(camera->WaitForNotifications(3000));
    QTRY_COMPARE_WITH_TIMEOUT(recorder.m_Changes.size(), 11, TestSupport::Scaled(3000));
    QCOMPARE(recorder.m_Changes.last(), qMakePair(QString("Negative"), QString("-7")));

    QCOMPARE(feature->UnregisterObserver(sdkView), int(Pko::PkoErrorSuccess));
    QCOMPARE(feature->SetValue(3LL), int(Pko::PkoErrorSuccess));
    QVERIFY(camera->WaitForNotifications(3000));
    QCoreApplication::processEvents();
    QCOMPARE(recorder.m_Changes.size(), 11);
}

QTEST_GUILESS_MAIN(TestPluginFeatureObserver)
#include "tst_pluginfeatureobserver.moc"
