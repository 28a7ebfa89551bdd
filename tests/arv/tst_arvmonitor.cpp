// The "I/O Monitor" tab on the GenICam backend over GigE Vision on loopback:
// the fake camera runs in this process, and the test changes its line level
// and counter registers behind the backend's back, as the camera's signals
// and events would. The lamps and the counters follow at the next polls.

#include "InProcessGvCamera.h"

#include "FakeGvCamera.h"
#include "IOMonitorWidget.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>

#include <QLabel>
#include <QSharedPointer>
#include <QVBoxLayout>
#include <QVector>
#include <QtTest>

#include <exception>
#include <memory>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

// Room for the GigE round trips and a busy machine beyond the polls the
// tab waits for.
const int kSlackMs = 400;
// The counters are read four times a second.
const int kCounterPeriodMs = 250;

// Counter registers: 64 bits each from 0x4420, big-endian, so the low word
// is the second; Counter0 counts frame triggers, Counter1 missed ones and
// Counter2 frames.
const quint32 kFrameTriggersLow = 0x4424;
const quint32 kMissedTriggersLow = 0x442c;
const quint32 kFramesLow = 0x4434;

// "Line0=1 Line1=0 ...": every lamp, in the tab's order.
QString Lamps(const QWidget* widget)
{
    QStringList lamps;
    for (int i = 0;; ++i) {
        const QLabel* name = widget->findChild<QLabel*>(QString("l_Line_%1").arg(i));
        const QLabel* lamp = widget->findChild<QLabel*>(QString("lamp_%1").arg(i));
        if (name == nullptr || lamp == nullptr)
            break;
        lamps << name->text() + "=" + (lamp->property("lit").toBool() ? "1" : "0");
    }
    return lamps.join(' ');
}

QString Counter(const QWidget* widget, const char* name)
{
    const QLabel* value = widget->findChild<QLabel*>(name);
    return value != nullptr ? value->text() : QStringLiteral("<no %1>").arg(name);
}

}  // namespace

class tst_ArvMonitor : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<InProcessGvCamera> m_Fake;
    CameraPtr m_Camera;
    std::unique_ptr<QWidget> m_Page;
    IOMonitorWidget* m_Widget = nullptr;

    // Starts the in-process camera with the description, opens it, has
    // output of the family outputs ("SyncOut": SyncOutSelector,
    // SyncOutSource) follow source unless outputs is empty, and shows the
    // monitor on it in a page as the viewer hands it out.
    void OpenAndShow(const QString& description, const QString& outputs = QString(), const QString& output = QString(),
                     const QString& source = QString())
    {
        m_Fake = std::make_unique<InProcessGvCamera>(FakeGvCamera::GenicamFile(description));
        QString error;
        QVERIFY2(m_Fake->Start(error), qPrintable(error));
        QCOMPARE(PkoSystem::GetInstance().GetCameraByID(InProcessGvCamera::Id(), m_Camera), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        if (!outputs.isEmpty()) {
            FeaturePtr selector;
            FeaturePtr follows;
            QCOMPARE(m_Camera->GetFeatureByName((outputs + "Selector").toLatin1().constData(), selector),
                     int(PkoErrorSuccess));
            QCOMPARE(m_Camera->GetFeatureByName((outputs + "Source").toLatin1().constData(), follows),
                     int(PkoErrorSuccess));
            QCOMPARE(selector->SetValue(output.toLatin1().constData()), int(PkoErrorSuccess));
            QCOMPARE(follows->SetValue(source.toLatin1().constData()), int(PkoErrorSuccess));
        }
        std::vector<FeaturePtr> features;
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorSuccess));
        QSharedPointer<QVector<FeaturePtr>> list(new QVector<FeaturePtr>(features.begin(), features.end()));
        m_Page = std::make_unique<QWidget>();
        try {
            m_Widget = new IOMonitorWidget(list, m_Page.get());
        } catch (const std::exception& failure) {
            QFAIL(qPrintable(QString("the monitor's constructor threw: ") + failure.what()));
        }
        QVBoxLayout* layout = new QVBoxLayout(m_Page.get());
        layout->addWidget(m_Widget);
        m_Page->resize(900, 760);
        m_Page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_Page.get()));
        QVERIFY(m_Widget->IsPolling());
    }

    // A poll or two, and the slack.
    int LevelWait() const { return TestSupport::Scaled(2 * m_Widget->PollIntervalMs() + kSlackMs); }
    int CounterWait() const
    {
        return TestSupport::Scaled(kCounterPeriodMs + 2 * m_Widget->PollIntervalMs() + kSlackMs);
    }

private slots:
    void init()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
    }

    void cleanup()
    {
        m_Page.reset();
        m_Widget = nullptr;
        if (m_Camera)
            m_Camera->Close();
        m_Camera = CameraPtr();
        m_Fake.reset();
    }

    void shouldFollowLevelRegistersChangedBehindTheBackendsBack_data()
    {
        QTest::addColumn<QString>("description");
        // An output made to follow an input through the SDK first, so that
        // the outputs' mask changes with the input too ("" for none).
        QTest::addColumn<QString>("outputs");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("source");
        QTest::addColumn<quint32>("inputs");
        QTest::addColumn<quint32>("value");
        QTest::addColumn<QString>("idle");
        QTest::addColumn<QString>("changed");

        // Line1 and Line3 are outputs, neither driven while the camera idles.
        QTest::newRow("generation 1, LineStatusAll") << FakeGvCamera::Gen1Line << QString() << QString() << QString()
                                                     << 0x4160u << 0x5u << "Line0=0 Line1=0 Line2=0 Line3=0"
                                                     << "Line0=1 Line1=0 Line2=1 Line3=0";
        QTest::newRow("generation 2, two masks")
            << FakeGvCamera::Gen2SyncOut << "SyncOut"
            << "SyncOut3"
            << "SyncIn2" << 0x4010u << 0x2u << "SyncIn1=0 SyncIn2=0 SyncOut1=0 SyncOut2=0 SyncOut3=0 SyncOut4=0"
            << "SyncIn1=0 SyncIn2=1 SyncOut1=0 SyncOut2=0 SyncOut3=1 SyncOut4=0";
        QTest::newRow("generation 3, two masks")
            << FakeGvCamera::Gen3LineOut << "LineOut"
            << "LineOut4"
            << "LineIn1" << 0x4010u << 0x1u << "LineIn1=0 LineIn2=0 LineOut1=0 LineOut2=0 LineOut3=0 LineOut4=0"
            << "LineIn1=1 LineIn2=0 LineOut1=0 LineOut2=0 LineOut3=0 LineOut4=1";
    }

    void shouldFollowLevelRegistersChangedBehindTheBackendsBack()
    {
        QFETCH(QString, description);
        QFETCH(QString, outputs);
        QFETCH(QString, output);
        QFETCH(QString, source);
        QFETCH(quint32, inputs);
        QFETCH(quint32, value);
        QFETCH(QString, idle);
        QFETCH(QString, changed);

        OpenAndShow(description, outputs, output, source);
        QTRY_COMPARE_WITH_TIMEOUT(Lamps(m_Widget), idle, LevelWait());

        m_Fake->WriteRegister(inputs, value);
        QTRY_COMPARE_WITH_TIMEOUT(Lamps(m_Widget), changed, LevelWait());

        // And back.
        m_Fake->WriteRegister(inputs, 0);
        QTRY_COMPARE_WITH_TIMEOUT(Lamps(m_Widget), idle, LevelWait());
    }

    void shouldFollowCounterRegistersChangedBehindTheBackendsBack_data()
    {
        QTest::addColumn<QString>("description");
        QTest::newRow("generation 1") << QString(FakeGvCamera::Gen1Line);
        QTest::newRow("generation 2") << QString(FakeGvCamera::Gen2SyncOut);
        QTest::newRow("generation 3") << QString(FakeGvCamera::Gen3LineOut);
    }

    void shouldFollowCounterRegistersChangedBehindTheBackendsBack()
    {
        QFETCH(QString, description);

        OpenAndShow(description);
        QTRY_COMPARE_WITH_TIMEOUT(Counter(m_Widget, "value_Frames"), QString("0"), CounterWait());
        QCOMPARE(Counter(m_Widget, "value_FrameTriggers"), QString("0"));
        QCOMPARE(Counter(m_Widget, "value_MissedTriggers"), QString("0"));

        m_Fake->WriteRegister(kFrameTriggersLow, 14);
        m_Fake->WriteRegister(kMissedTriggersLow, 2);
        m_Fake->WriteRegister(kFramesLow, 12);
        QTRY_COMPARE_WITH_TIMEOUT(Counter(m_Widget, "value_Frames"), QString("12"), CounterWait());
        QTRY_COMPARE_WITH_TIMEOUT(Counter(m_Widget, "value_FrameTriggers"), QString("14"), CounterWait());
        QTRY_COMPARE_WITH_TIMEOUT(Counter(m_Widget, "value_MissedTriggers"), QString("2"), CounterWait());

        m_Fake->WriteRegister(kFramesLow, 13);
        QTRY_COMPARE_WITH_TIMEOUT(Counter(m_Widget, "value_Frames"), QString("13"), CounterWait());
        // The frames counted since the first read each leave a mark.
        QCOMPARE(m_Widget->History().MarkCount(SignalHistory::MarkKind::Frame), 13);
    }
};

QTEST_MAIN(tst_ArvMonitor)
#include "tst_arvmonitor.moc"
