// The viewer on a GenICam camera that stops answering: a fake GigE Vision
// camera on 127.0.0.1, killed while the window shows it.

#include "FakeGvCamera.h"
#include "LiveImageView.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "TestTime.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>

#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QtTest>

#include <signal.h>

#include <iostream>
#include <memory>
#include <sstream>

namespace {

// Sends std::cerr to a buffer while it lives.
class CerrCapture {
public:
    CerrCapture() : m_Old(std::cerr.rdbuf(m_Buffer.rdbuf())) {}
    ~CerrCapture() { std::cerr.rdbuf(m_Old); }
    CerrCapture(const CerrCapture&) = delete;
    CerrCapture& operator=(const CerrCapture&) = delete;
    QString Text() const { return QString::fromStdString(m_Buffer.str()); }

private:
    std::ostringstream m_Buffer;
    std::streambuf* m_Old;
};

}  // namespace

class LostCameraTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void shouldReportALostCameraWithoutFreezing();

private:
    std::unique_ptr<ViewerLog> m_Log;
    std::unique_ptr<PluginLoader> m_Plugins;
};

void LostCameraTest::initTestCase()
{
    if (!FakeGvCamera::BinaryAvailable()) {
        QSKIP("arv-fake-gv-camera-0.8 is not installed (package aravis-tools)");
    }
    m_Log.reset(new ViewerLog);
    m_Plugins.reset(new PluginLoader(*m_Log));
    QCOMPARE(m_Plugins->LoadDirectory(QStringLiteral("plugins")), 2);  // Trigger IO and I/O Monitor
}

void LostCameraTest::cleanupTestCase()
{
    m_Plugins.reset();
    m_Log.reset();
}

void LostCameraTest::shouldReportALostCameraWithoutFreezing()
{
    FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(FakeGvCamera::Gen1Line)), QStringLiteral("VWLS"));
    // Within the test's time limit, also when another program holds the loopback camera.
    QVERIFY2(fake.Start(10000, 60000), qPrintable(fake.ErrorString()));
    const QString id = QStringLiteral("ARV:Aravis-Fake-") + fake.Serial();

    MainWindow window(*m_Plugins, *m_Log);
    QVERIFY2(window.OpenCameraById(id), qPrintable(m_Log->Problems().join(QLatin1Char('\n'))));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(!window.IsCameraLost());
    // The live image runs on the GenICam camera too.
    window.ToggleAcquisition();
    QVERIFY(window.IsStreaming());
    QTRY_VERIFY_WITH_TIMEOUT(window.LiveView()->ShownFrameId() >= 2, TestSupport::Scaled(10000));

    // Killed by pid behind the fixture's back, which keeps the loopback lock
    // so that no other camera answers in its place.
    CerrCapture cerr;
    QCOMPARE(::kill(fake.Pid(), SIGKILL), 0);
    // The event loop keeps turning while the loss is found out.
    QElapsedTimer sinceTick;
    sinceTick.start();
    qint64 longestGap = 0;
    QTimer ticker;
    ticker.setInterval(20);
    connect(&ticker, &QTimer::timeout, [&]() { longestGap = qMax(longestGap, sinceTick.restart()); });
    ticker.start();
    QTRY_VERIFY_WITH_TIMEOUT(window.IsCameraLost(), TestSupport::Scaled(20000));
    ticker.stop();
    // Qt's message handler may be silenced by the plug-in.
    std::cout << "longest pause of the event loop: " << longestGap << " ms" << std::endl;
    QVERIFY2(longestGap < TestSupport::Scaled(1500), qPrintable(QString::number(longestGap)));

    const QString expected = QStringLiteral("Camera %1 was lost").arg(id);
    QCOMPARE(window.statusBar()->currentMessage(), expected);
    QCOMPARE(m_Log->Problems().count(expected), 1);
    QVERIFY(m_Log->History().last().endsWith(expected));
    QVERIFY2(cerr.Text().contains(expected), qPrintable(cerr.Text()));
    QVERIFY(window.findChild<QLabel*>(QStringLiteral("stateLabel"))->text().contains(QStringLiteral("Lost")));
    QVERIFY(!window.findChild<QPushButton*>(QStringLiteral("acquisitionButton"))->isEnabled());
    QVERIFY(!window.LiveView()->IsPolling());
    QVERIFY(!window.IsStreaming());

    // Reported once, and the window can let go of the camera at once.
    QTest::qWait(600);
    QCOMPARE(m_Log->Problems().count(expected), 1);
    QElapsedTimer closing;
    closing.start();
    window.CloseCamera();
    QVERIFY2(closing.elapsed() < TestSupport::Scaled(2000), qPrintable(QString::number(closing.elapsed())));
    QVERIFY(!window.Camera());
    QVERIFY(!window.IsCameraLost());
}

QTEST_MAIN(LostCameraTest)
#include "tst_viewer_lostcamera.moc"
