// The GenICam backend's register cache and polling on our descriptions over
// GigE Vision on loopback: values the camera changes by itself are seen and
// notified within two polling periods, writes re-read what depends on them,
// configuration is read once, and a description without caching
// information gets no cache.

#include "InProcessGvCamera.h"

#include "FakeGvCamera.h"
#include "TransactionLog.h"

#include <PkoAPI/PkoAPI.h>

#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <string>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

// The backend's polling period for nodes without a PollingTime.
const int kPollPeriodMs = 200;

FeaturePtr FeatureOf(const CameraPtr& camera, const QString& name)
{
    FeaturePtr feature;
    if (camera->GetFeatureByName(name.toLatin1().constData(), feature) != PkoErrorSuccess)
        return FeaturePtr();
    return feature;
}

// The value as text: entry names, "true"/"false", decimal integers;
// "<failed N>" when it cannot be read.
QString ValueOf(const FeaturePtr& feature)
{
    if (!feature)
        return QStringLiteral("<missing>");
    PkoFeatureDataType type = PkoFeatureDataUnknown;
    feature->GetDataType(type);
    int result = PkoErrorWrongType;
    QString text;
    if (type == PkoFeatureDataInt) {
        long long value = 0;
        result = feature->GetValue(value);
        text = QString::number(value);
    } else if (type == PkoFeatureDataBool) {
        bool value = false;
        result = feature->GetValue(value);
        text = value ? QStringLiteral("true") : QStringLiteral("false");
    } else if (type == PkoFeatureDataEnum) {
        char value[64] = {0};
        unsigned int length = sizeof(value);
        result = feature->GetValue(value, length);
        text = QString::fromLatin1(value);
    }
    return result == PkoErrorSuccess ? text : QStringLiteral("<failed %1>").arg(result);
}

int Write(const CameraPtr& camera, const QString& name, const QString& value)
{
    const FeaturePtr feature = FeatureOf(camera, name);
    if (!feature)
        return PkoErrorNotFound;
    PkoFeatureDataType type = PkoFeatureDataUnknown;
    feature->GetDataType(type);
    if (type == PkoFeatureDataInt)
        return feature->SetValue(value.toLongLong());
    if (type == PkoFeatureDataBool)
        return feature->SetValue(value == QLatin1String("true"));
    return feature->SetValue(value.toLatin1().constData());
}

bool Writable(const CameraPtr& camera, const QString& name)
{
    bool writable = false;
    const FeaturePtr feature = FeatureOf(camera, name);
    return feature && feature->IsWritable(writable) == PkoErrorSuccess && writable;
}

bool Available(const CameraPtr& camera, const QString& name, const char* entry)
{
    bool available = false;
    const FeaturePtr feature = FeatureOf(camera, name);
    return feature && feature->IsValueAvailable(entry, available) == PkoErrorSuccess && available;
}

class CountingObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr&) override
    {
        QMutexLocker lock(&m_Mutex);
        ++m_Count;
    }
    int Count() const
    {
        QMutexLocker lock(&m_Mutex);
        return m_Count;
    }

private:
    mutable QMutex m_Mutex;
    int m_Count = 0;
};

// Sets PKO_GENICAM_CACHE for the camera opened while it lives, then puts
// back what was there.
class CacheSetting {
public:
    explicit CacheSetting(const QByteArray& value)
        : m_Had(qEnvironmentVariableIsSet("PKO_GENICAM_CACHE")), m_Old(qgetenv("PKO_GENICAM_CACHE"))
    {
        if (value.isNull())
            qunsetenv("PKO_GENICAM_CACHE");
        else
            qputenv("PKO_GENICAM_CACHE", value);
    }
    ~CacheSetting()
    {
        if (m_Had)
            qputenv("PKO_GENICAM_CACHE", m_Old);
        else
            qunsetenv("PKO_GENICAM_CACHE");
    }
    CacheSetting(const CacheSetting&) = delete;
    CacheSetting& operator=(const CacheSetting&) = delete;

private:
    const bool m_Had;
    const QByteArray m_Old;
};

// A fake camera process that logs its transactions, opened through the SDK.
struct CountedCamera {
    explicit CountedCamera(const QString& file) : fake(file.isEmpty() ? QString() : file, QStringLiteral("CACH"))
    {
        fake.SetEnvironment(QStringLiteral("ARV_DEBUG"), QStringLiteral("device:2"));
    }
    ~CountedCamera()
    {
        if (camera)
            camera->Close();
    }
    // Starts and opens; the reason on failure.
    QString Open()
    {
        if (!fake.Start())
            return fake.ErrorString();
        const std::string id = "ARV:Aravis-Fake-" + fake.Serial().toStdString();
        if (PkoSystem::GetInstance().GetCameraByID(id.c_str(), camera) != PkoErrorSuccess || !camera)
            return QStringLiteral("the SDK does not know ") + QString::fromStdString(id);
        const int opened = camera->Open();
        return opened == PkoErrorSuccess ? QString() : QStringLiteral("Open failed with %1").arg(opened);
    }
    TransactionLog Log() const { return TransactionLog(fake.Log()); }

    FakeGvCamera fake;
    CameraPtr camera;
};

}  // namespace

class tst_ArvBackendCache : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<InProcessGvCamera> m_Fake;
    CameraPtr m_Camera;

    // Starts the in-process camera with the description (a path) and opens it.
    void OpenInProcess(const QString& path)
    {
        m_Fake = std::make_unique<InProcessGvCamera>(path);
        QString error;
        QVERIFY2(m_Fake->Start(error), qPrintable(error));
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(InProcessGvCamera::Id(), m_Camera), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
    }

private slots:
    void init()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
    }

    void cleanup()
    {
        if (m_Camera)
            m_Camera->Close();
        m_Camera = CameraPtr();
        m_Fake.reset();
    }

    void shouldSeeAndNotifyWhatTheCameraChangesByItselfWithinTwoPollingPeriods_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("selector");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("feature");
        QTest::addColumn<quint32>("address");
        QTest::addColumn<quint32>("value");
        QTest::addColumn<QString>("expected");

        // Inputs Line0 and Line2 high; the outputs do not show stored levels.
        QTest::newRow("all line levels, generation 1")
            << FakeGvCamera::Gen1Line << QString() << QString() << "LineStatusAll" << 0x4160u << 0x5u << "5";
        QTest::newRow("one line's status, generation 1") << FakeGvCamera::Gen1Line << "LineSelector"
                                                         << "Line2"
                                                         << "LineStatus" << 0x4160u << 0x4u << "true";
        QTest::newRow("input levels, generation 2")
            << FakeGvCamera::Gen2SyncOut << QString() << QString() << "SyncInLevels" << 0x4010u << 0x2u << "2";
        QTest::newRow("input levels, generation 3")
            << FakeGvCamera::Gen3LineOut << QString() << QString() << "LineInLevels" << 0x4010u << 0x3u << "3";
        // 64 bits per counter, big-endian: the low word comes second.
        QTest::newRow("a counter, generation 1 without routing") << FakeGvCamera::Gen1Sfnc << "CounterSelector"
                                                                 << "Counter1"
                                                                 << "CounterValue" << 0x442cu << 0x7u << "7";
        QTest::newRow("acquisition status, generation 2") << FakeGvCamera::Gen2SyncOut << "AcquisitionStatusSelector"
                                                          << "FrameTriggerWait"
                                                          << "AcquisitionStatus" << 0x4468u << 0x1u << "true";
        QTest::newRow("acquisition status, generation 3") << FakeGvCamera::Gen3LineOut << "AcquisitionStatusSelector"
                                                          << "ExposureActive"
                                                          << "AcquisitionStatus" << 0x446cu << 0x1u << "true";
    }

    void shouldSeeAndNotifyWhatTheCameraChangesByItselfWithinTwoPollingPeriods()
    {
        QFETCH(QString, description);
        QFETCH(QString, selector);
        QFETCH(QString, entry);
        QFETCH(QString, feature);
        QFETCH(quint32, address);
        QFETCH(quint32, value);
        QFETCH(QString, expected);

        OpenInProcess(FakeGvCamera::GenicamFile(description));
        if (!selector.isEmpty())
            QCOMPARE(Write(m_Camera, selector, entry), int(PkoErrorSuccess));
        const FeaturePtr watched = FeatureOf(m_Camera, feature);
        QVERIFY(watched);
        const QString before = ValueOf(watched);
        QVERIFY2(before != expected, qPrintable(feature + " already reads " + expected));
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        QCOMPARE(watched->RegisterObserver(observer), int(PkoErrorSuccess));
        // Long enough for the poller to have seen the value before the change.
        QTest::qWait(2 * kPollPeriodMs + 50);
        QCOMPARE(raw->Count(), 0);

        QElapsedTimer sinceChange;
        sinceChange.start();
        m_Fake->WriteRegister(address, value);
        QTRY_VERIFY_WITH_TIMEOUT(raw->Count() > 0, 2000);
        QVERIFY2(sinceChange.elapsed() <= 2 * kPollPeriodMs, qPrintable(QString::number(sinceChange.elapsed())));
        QCOMPARE(ValueOf(watched), expected);
        // Once per change, not once per poll.
        QTest::qWait(3 * kPollPeriodMs);
        QCOMPARE(raw->Count(), 1);
        QCOMPARE(watched->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldReReadSelectedValuesAfterTheSelectorChanges()
    {
        OpenInProcess(FakeGvCamera::GenicamFile(FakeGvCamera::Gen1Line));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineMode")), QString("Input"));
        QCOMPARE(Write(m_Camera, "LineSelector", "Line1"), int(PkoErrorSuccess));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineMode")), QString("Output"));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineSource")), QString("ExposureActive"));

        QCOMPARE(Write(m_Camera, "LineSelector", "Line2"), int(PkoErrorSuccess));
        QCOMPARE(Write(m_Camera, "LineInverter", "true"), int(PkoErrorSuccess));
        const FeaturePtr inverter = FeatureOf(m_Camera, "LineInverter");
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        QCOMPARE(inverter->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(Write(m_Camera, "LineSelector", "Line3"), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->Count(), 1, 1000);
        QCOMPARE(ValueOf(inverter), QString("false"));
        QCOMPARE(Write(m_Camera, "LineSelector", "Line2"), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->Count(), 2, 1000);
        QCOMPARE(ValueOf(inverter), QString("true"));

        // The user outputs are read per entry and again, as one word, by the
        // lines that follow them.
        QCOMPARE(Write(m_Camera, "LineSelector", "Line1"), int(PkoErrorSuccess));
        QCOMPARE(Write(m_Camera, "LineSource", "UserOutput2"), int(PkoErrorSuccess));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineStatus")), QString("false"));
        QCOMPARE(Write(m_Camera, "UserOutputSelector", "UserOutput2"), int(PkoErrorSuccess));
        QCOMPARE(Write(m_Camera, "UserOutputValue", "true"), int(PkoErrorSuccess));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineStatus")), QString("true"));
        // Line1 follows the user output, inverted Line2 reads its low input high.
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "LineStatusAll")), QString("6"));
        QCOMPARE(Write(m_Camera, "UserOutputSelector", "UserOutput1"), int(PkoErrorSuccess));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "UserOutputValue")), QString("false"));
        QCOMPARE(inverter->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldReReadAvailabilityAfterTheFeatureItDependsOn()
    {
        OpenInProcess(FakeGvCamera::GenicamFile(FakeGvCamera::Gen1Line));
        QVERIFY(Writable(m_Camera, "ExposureTime"));
        const FeaturePtr exposure = FeatureOf(m_Camera, "ExposureTime");
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        QCOMPARE(exposure->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(Write(m_Camera, "ExposureAuto", "Continuous"), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->Count(), 1, 1000);
        QVERIFY(!Writable(m_Camera, "ExposureTime"));
        QCOMPARE(Write(m_Camera, "ExposureAuto", "Off"), int(PkoErrorSuccess));
        QVERIFY(Writable(m_Camera, "ExposureTime"));
        QCOMPARE(exposure->UnregisterObserver(observer), int(PkoErrorSuccess));

        QCOMPARE(Write(m_Camera, "LineSelector", "Line2"), int(PkoErrorSuccess));
        QVERIFY(!Writable(m_Camera, "LineSource"));
        QCOMPARE(Write(m_Camera, "LineMode", "Output"), int(PkoErrorSuccess));
        QVERIFY(Writable(m_Camera, "LineSource"));
        QVERIFY(!Writable(m_Camera, "LineStatus"));
        QCOMPARE(Write(m_Camera, "LineSource", "Direct"), int(PkoErrorSuccess));
        QVERIFY(Writable(m_Camera, "LineStatus"));

        QVERIFY(Available(m_Camera, "TriggerSelector", "FrameStart"));
        QVERIFY(!Available(m_Camera, "TriggerSelector", "ExposureActive"));
        QCOMPARE(Write(m_Camera, "ExposureMode", "TriggerWidth"), int(PkoErrorSuccess));
        QVERIFY(!Available(m_Camera, "TriggerSelector", "FrameStart"));
        QVERIFY(Available(m_Camera, "TriggerSelector", "ExposureActive"));
    }

    void shouldResetACounterAndReadItAgain()
    {
        OpenInProcess(FakeGvCamera::GenicamFile(FakeGvCamera::Gen2SyncOut));
        const FeaturePtr counter = FeatureOf(m_Camera, "CounterValue");
        m_Fake->WriteRegister(0x4424, 12);
        QCOMPARE(ValueOf(counter), QString("12"));
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        QCOMPARE(counter->RegisterObserver(observer), int(PkoErrorSuccess));
        // The fake camera keeps no counters: the reset only reaches its
        // register, and the value is read again after it.
        QCOMPARE(FeatureOf(m_Camera, "CounterReset")->RunCommand(), int(PkoErrorSuccess));
        QTRY_COMPARE_WITH_TIMEOUT(raw->Count(), 1, 1000);
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "CounterEventSource")), QString("FrameTrigger"));
        QCOMPARE(Write(m_Camera, "CounterSelector", "Counter2"), int(PkoErrorSuccess));
        QCOMPARE(ValueOf(FeatureOf(m_Camera, "CounterEventSource")), QString("FrameEnd"));
        QCOMPARE(ValueOf(counter), QString("0"));
        QCOMPARE(counter->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldSeeEveryChangeOfADescriptionWithoutCachingInformation()
    {
        // Our first description without its marks.
        QFile marked(FakeGvCamera::GenicamFile(FakeGvCamera::Gen1Line));
        QVERIFY(marked.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(marked.readAll());
        text.remove(
            QRegularExpression(QStringLiteral("\\s*<(Cachable|IsVolatile|pInvalidator|PollingTime)>[^<]*</\\1>")));
        QVERIFY(!text.contains(QLatin1String("Cachable")));
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QFile unmarked(dir.filePath(QStringLiteral("unmarked.xml")));
        QVERIFY(unmarked.open(QIODevice::WriteOnly));
        QVERIFY(unmarked.write(text.toUtf8()) > 0);
        unmarked.close();

        OpenInProcess(unmarked.fileName());
        const FeaturePtr width = FeatureOf(m_Camera, "Width");
        const QString before = ValueOf(width);
        m_Fake->WriteRegister(0x100, 320);
        QCOMPARE(ValueOf(width), QString("320"));
        QVERIFY(before != "320");

        // Every observed feature is polled.
        auto* raw = new CountingObserver;
        const IFeatureObserverPtr observer(raw);
        QCOMPARE(width->RegisterObserver(observer), int(PkoErrorSuccess));
        QTest::qWait(2 * kPollPeriodMs + 50);
        m_Fake->WriteRegister(0x100, 256);
        QTRY_COMPARE_WITH_TIMEOUT(raw->Count(), 1, 2 * kPollPeriodMs + 100);
        QCOMPARE(ValueOf(width), QString("256"));
        QCOMPARE(width->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldReadConfigurationOnceAndEveryTimeWithTheCacheOff_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<QByteArray>("setting");
        QTest::addColumn<bool>("cached");

        QTest::newRow("generation 1") << FakeGvCamera::Gen1Line << QByteArray() << true;
        QTest::newRow("generation 2") << FakeGvCamera::Gen2SyncOut << QByteArray("on") << true;
        QTest::newRow("generation 3, cache off") << FakeGvCamera::Gen3LineOut << QByteArray("off") << false;
        QTest::newRow("stock description") << QString() << QByteArray() << false;
    }

    void shouldReadConfigurationOnceAndEveryTimeWithTheCacheOff()
    {
        QFETCH(QString, description);
        QFETCH(QByteArray, setting);
        QFETCH(bool, cached);

        const CacheSetting cache(setting);
        CountedCamera counted(description.isEmpty() ? QString() : FakeGvCamera::GenicamFile(description));
        const QString error = counted.Open();
        QVERIFY2(error.isEmpty(), qPrintable(error));
        const FeaturePtr width = FeatureOf(counted.camera, "Width");
        const FeaturePtr mode = FeatureOf(counted.camera, "TriggerMode");
        QVector<int> costs;
        for (int round = 0; round < 3; ++round) {
            const int before = counted.Log().Count();
            QCOMPARE(ValueOf(width).isEmpty(), false);
            bool writable = false;
            QCOMPARE(mode->IsWritable(writable), int(PkoErrorSuccess));
            QCOMPARE(ValueOf(mode).isEmpty(), false);
            costs << counted.Log().Since(before).CountBesidesHeartbeat();
        }
        QVERIFY2(costs[0] > 0, qPrintable(QString::number(costs[0])));
        if (cached)
            QCOMPARE(costs, (QVector<int>{costs[0], 0, 0}));
        else
            QCOMPARE(costs, (QVector<int>{costs[0], costs[0], costs[0]}));
    }

    void shouldPollOnlyWhatCanChangeByItself_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<QStringList>("observed");
        QTest::addColumn<int>("registers");

        QTest::newRow("configuration only")
            << FakeGvCamera::Gen1Line << QStringList{"Width", "TriggerMode", "LineMode", "LineSource"} << 0;
        // LineStatus and LineStatusAll read one register of levels.
        QTest::newRow("line status") << FakeGvCamera::Gen1Line << QStringList{"LineMode", "LineStatus", "LineStatusAll"}
                                     << 1;
        // The output levels read the input levels too, and the acquisition
        // state, which only writes change.
        QTest::newRow("level masks") << FakeGvCamera::Gen2SyncOut
                                     << QStringList{"SyncOutSource", "SyncInLevels", "SyncOutLevels"} << 1;
    }

    void shouldPollOnlyWhatCanChangeByItself()
    {
        QFETCH(QString, description);
        QFETCH(QStringList, observed);
        QFETCH(int, registers);

        CountedCamera counted(FakeGvCamera::GenicamFile(description));
        const QString error = counted.Open();
        QVERIFY2(error.isEmpty(), qPrintable(error));
        std::vector<FeaturePtr> features;
        const IFeatureObserverPtr observer(new CountingObserver);
        for (const QString& name : observed) {
            features.push_back(FeatureOf(counted.camera, name));
            QVERIFY2(features.back(), qPrintable(name));
            QCOMPARE(features.back()->RegisterObserver(observer), int(PkoErrorSuccess));
        }
        QTest::qWait(kPollPeriodMs);
        const int before = counted.Log().Count();
        QTest::qWait(10 * kPollPeriodMs);
        const int polled = counted.Log().Since(before).CountBesidesHeartbeat();
        // One read per register and period, give or take the period in which
        // the count started.
        QVERIFY2(polled <= registers * 11 && polled >= registers * 8, qPrintable(QString::number(polled)));
        for (const FeaturePtr& feature : features)
            QCOMPARE(feature->UnregisterObserver(observer), int(PkoErrorSuccess));
    }

    void shouldPollAtTheDescribedPollingTime()
    {
        // The second generation with a polling time on its volatile registers.
        QFile marked(FakeGvCamera::GenicamFile(FakeGvCamera::Gen2SyncOut));
        QVERIFY(marked.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(marked.readAll());
        text.replace(QLatin1String("<IsVolatile>Yes</IsVolatile>"),
                     QLatin1String("<IsVolatile>Yes</IsVolatile><PollingTime>600</PollingTime>"));
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        QFile slow(dir.filePath(QStringLiteral("slow.xml")));
        QVERIFY(slow.open(QIODevice::WriteOnly));
        QVERIFY(slow.write(text.toUtf8()) > 0);
        slow.close();

        CountedCamera counted(slow.fileName());
        const QString error = counted.Open();
        QVERIFY2(error.isEmpty(), qPrintable(error));
        const FeaturePtr levels = FeatureOf(counted.camera, "SyncInLevels");
        const IFeatureObserverPtr observer(new CountingObserver);
        QCOMPARE(levels->RegisterObserver(observer), int(PkoErrorSuccess));
        QTest::qWait(kPollPeriodMs);
        const int before = counted.Log().Count();
        QTest::qWait(3000);
        const int polled = counted.Log().Since(before).CountBesidesHeartbeat();
        // Five reads in three seconds, give or take the one in progress.
        QVERIFY2(polled >= 4 && polled <= 6, qPrintable(QString::number(polled)));
        QCOMPARE(levels->UnregisterObserver(observer), int(PkoErrorSuccess));
    }
};

QTEST_GUILESS_MAIN(tst_ArvBackendCache)
#include "tst_arvbackend_cache.moc"
