// The real PelkoViewer program: camera list, screenshots under Xvfb in
// English and German, the offscreen fall-back without display, and errors.

#include "TestTime.h"

#include <PkoAPI/Sim/CameraBuilder.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <string>

namespace {

const QSize kWindowSize(1280, 900);

struct Run {
    int exitCode = -1;
    QString output;
    QString errors;
};

// The environment of the test without anything that picks a display,
// platform or language.
QProcessEnvironment CleanEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG", "LC_ALL", "LC_MESSAGES", "LC_NUMERIC", "LANGUAGE"}) {
        environment.remove(QString::fromLatin1(name));
    }
    return environment;
}

Run Start(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Run run;
    if (!process.waitForStarted(10000) || !process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished(5000);
        run.errors = QStringLiteral("did not start or finish: ") + process.errorString();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.output = QString::fromUtf8(process.readAllStandardOutput());
    run.errors = QString::fromUtf8(process.readAllStandardError());
    return run;
}

// Distinct colours in a grid of samples: a blank picture has one.
int SampledColours(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 7) {
        for (int x = 0; x < image.width(); x += 7) {
            colours.insert(image.pixel(x, y));
        }
    }
    return colours.size();
}

}  // namespace

class ViewerBinaryTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void shouldListTheIdsOfTheSimulatedCameras();
    void shouldSaveAScreenshotUnderXvfbInTheUsersLanguage_data();
    void shouldSaveAScreenshotUnderXvfbInTheUsersLanguage();
    void shouldFallBackToOffscreenWithoutDisplay();
    void shouldDropTheTabOfACameraWithoutTriggerFeatures();
    void shouldShowTheMovingPictureOfACameraStartedFromTheCommandLine();
    void shouldExitWithAnErrorForAnUnknownCamera();
    void shouldRefuseAnOptionThatIsEmptyTwiceOrNoPictureFormat_data();
    void shouldRefuseAnOptionThatIsEmptyTwiceOrNoPictureFormat();
    void shouldExitWithAnErrorSoonForAGenicamCameraThatDoesNotAnswer();

private:
    QString m_Viewer;
    std::unique_ptr<QTemporaryDir> m_Folder;
};

void ViewerBinaryTest::shouldRefuseAnOptionThatIsEmptyTwiceOrNoPictureFormat_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("empty screenshot") << QStringList{"--screenshot", ""} << "--screenshot needs a value";
    QTest::newRow("empty camera") << QStringList{"--camera", "", "--screenshot", "x.png"} << "--camera needs a value";
    QTest::newRow("camera twice") << QStringList{"--camera",    "SIM-LINE-SFNC", "--camera",
                                                 "SIM-SYNCOUT", "--screenshot",  "x.png"}
                                  << "--camera given 2 times (SIM-LINE-SFNC, SIM-SYNCOUT)";
    QTest::newRow("unknown picture format")
        << QStringList{"--screenshot", "shot.notanimageformat"} << "\"notanimageformat\" is no picture format";
}

void ViewerBinaryTest::shouldRefuseAnOptionThatIsEmptyTwiceOrNoPictureFormat()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    // No display: a viewer that took the option would run for ever or write a file.
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QProcess process;
    process.setProcessEnvironment(CleanEnvironment());
    process.setWorkingDirectory(folder.path());
    process.start(m_Viewer, arguments);
    QVERIFY(process.waitForStarted(10000));
    const bool finished = process.waitForFinished(TestSupport::Scaled(20000));
    if (!finished) {
        process.kill();
        process.waitForFinished(5000);
    }
    QVERIFY2(finished, "the viewer did not end");
    QCOMPARE(process.exitCode(), 2);
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(errors.contains(message), qPrintable(errors));
    QVERIFY(QDir(folder.path()).entryList(QDir::Files).isEmpty());
}

void ViewerBinaryTest::initTestCase()
{
    m_Viewer = QStringLiteral(PKO_VIEWER_FILE);
    QVERIFY(QFileInfo(m_Viewer).isExecutable());
    m_Folder.reset(new QTemporaryDir);
    QVERIFY(m_Folder->isValid());
}

void ViewerBinaryTest::shouldListTheIdsOfTheSimulatedCameras()
{
    const Run run = Start(m_Viewer, {QStringLiteral("--list-cameras")}, CleanEnvironment());
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = run.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const std::vector<std::string> models = ZMT::PkoAPI::Sim::ModelIds();
    QVERIFY(lines.size() >= int(models.size()));
    for (std::size_t i = 0; i < models.size(); ++i) {
        QCOMPARE(lines.at(int(i)).section(QLatin1Char('\t'), 0, 0).toStdString(), models[i]);
    }
}

void ViewerBinaryTest::shouldSaveAScreenshotUnderXvfbInTheUsersLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("monitor");
    QTest::newRow("English") << QStringLiteral("C.UTF-8") << QStringLiteral("Trigger IO")
                             << QStringLiteral("I/O Monitor");
    QTest::newRow("German") << QStringLiteral("de_DE.UTF-8") << QStringLiteral("Trigger-E/A")
                            << QStringLiteral("E/A-Monitor");
}

void ViewerBinaryTest::shouldSaveAScreenshotUnderXvfbInTheUsersLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QString, title);
    QFETCH(QString, monitor);
    const QString xvfbRun = QStandardPaths::findExecutable(QStringLiteral("xvfb-run"));
    if (xvfbRun.isEmpty()) {
        QSKIP("xvfb-run is not installed");
    }
    const QString picture = m_Folder->filePath(QStringLiteral("xvfb-%1.png").arg(QTest::currentDataTag()));
    QProcessEnvironment environment = CleanEnvironment();
    environment.insert(QStringLiteral("LANG"), locale);
    environment.insert(QStringLiteral("LC_ALL"), locale);
    // xcb on purpose: the picture must come from a real X server.
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    // A bare X server has no session bus and no GPU: without these, libdbus's
    // autolaunch and Mesa's GLX keep memory that the sanitizer build reports.
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent"));
    environment.insert(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("none"));
    const Run run = Start(xvfbRun,
                          {QStringLiteral("-a"), QStringLiteral("-s"), QStringLiteral("-screen 0 1280x1024x24"),
                           m_Viewer, QStringLiteral("--screenshot"), picture, QStringLiteral("--print-tabs")},
                          environment);
    QVERIFY2(run.exitCode == 0, qPrintable(run.errors));
    QVERIFY2(run.output.contains(QStringLiteral("tab: %1\ntab: %2\ntab: Features\n").arg(title, monitor)),
             qPrintable(run.output));
    QVERIFY2(run.output.contains(QStringLiteral("screenshot: ") + picture), qPrintable(run.output));
    const QImage image(picture);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), kWindowSize);
    QVERIFY(SampledColours(image) > 20);
}

void ViewerBinaryTest::shouldFallBackToOffscreenWithoutDisplay()
{
    const QString picture = m_Folder->filePath(QStringLiteral("offscreen.png"));
    const Run run =
        Start(m_Viewer, {QStringLiteral("--screenshot"), picture, QStringLiteral("--print-tabs")}, CleanEnvironment());
    QVERIFY2(run.exitCode == 0, qPrintable(run.errors));
    QVERIFY2(run.output.contains(QStringLiteral("tab: Trigger IO\ntab: I/O Monitor\ntab: Features\n")),
             qPrintable(run.output));
    const QImage image(picture);
    QCOMPARE(image.size(), kWindowSize);
    QVERIFY(SampledColours(image) > 20);
}

void ViewerBinaryTest::shouldDropTheTabOfACameraWithoutTriggerFeatures()
{
    const QString picture = m_Folder->filePath(QStringLiteral("notrigger.png"));
    const Run run = Start(m_Viewer,
                          {QStringLiteral("--camera"), QStringLiteral("SIM-NO-TRIGGER"), QStringLiteral("--screenshot"),
                           picture, QStringLiteral("--print-tabs")},
                          CleanEnvironment());
    QVERIFY2(run.exitCode == 0, qPrintable(run.errors));
    QVERIFY2(run.output.startsWith(QStringLiteral("tab: Features\nscreenshot: ")), qPrintable(run.output));
    QVERIFY2(run.errors.contains(QStringLiteral(
                 "PelkoViewer: Camera SIM-NO-TRIGGER does not support the tabextensiontriggerio tab; tab removed")),
             qPrintable(run.errors));
}

void ViewerBinaryTest::shouldShowTheMovingPictureOfACameraStartedFromTheCommandLine()
{
    const QString picture = m_Folder->filePath(QStringLiteral("acquiring.png"));
    const Run run = Start(m_Viewer,
                          {QStringLiteral("--camera"), QStringLiteral("SIM-LINE-ROUTING"),
                           QStringLiteral("--screenshot"), picture, QStringLiteral("--start-acquisition")},
                          CleanEnvironment());
    QVERIFY2(run.exitCode == 0, qPrintable(run.errors));
    const QImage image(picture);
    QCOMPARE(image.size(), kWindowSize);
    // The middle of the live image right of the tabs: the camera's grey ramp.
    const QImage live = image.copy(QRect(1000, 300, 250, 200));
    QVERIFY2(SampledColours(live) > 40, qPrintable(QString::number(SampledColours(live))));
}

void ViewerBinaryTest::shouldExitWithAnErrorForAnUnknownCamera()
{
    const Run run = Start(m_Viewer,
                          {QStringLiteral("--camera"), QStringLiteral("NO-SUCH-CAMERA"), QStringLiteral("--screenshot"),
                           m_Folder->filePath(QStringLiteral("never.png"))},
                          CleanEnvironment());
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.contains(QStringLiteral("PelkoViewer: No camera with ID NO-SUCH-CAMERA")),
             qPrintable(run.errors));
    QVERIFY(!QFile::exists(m_Folder->filePath(QStringLiteral("never.png"))));
}

void ViewerBinaryTest::shouldExitWithAnErrorSoonForAGenicamCameraThatDoesNotAnswer()
{
    // A loopback address no camera listens on: nothing answers there.
    QElapsedTimer timer;
    timer.start();
    const Run run = Start(m_Viewer,
                          {QStringLiteral("--camera"), QStringLiteral("ARV:127.0.0.9"), QStringLiteral("--screenshot"),
                           m_Folder->filePath(QStringLiteral("never-arv.png"))},
                          CleanEnvironment());
    QVERIFY2(timer.elapsed() < TestSupport::Scaled(20000), qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.errors.contains(QStringLiteral("PelkoViewer: No camera with ID ARV:127.0.0.9")),
             qPrintable(run.errors));
    QVERIFY(!QFile::exists(m_Folder->filePath(QStringLiteral("never-arv.png"))));
}

QTEST_MAIN(ViewerBinaryTest)
#include "tst_viewer_binary.moc"
