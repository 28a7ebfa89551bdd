// PelkoViewer: opens a camera of the SDK and shows it with the tab extension
// plug-ins found in plugins/ beside the program (build folder) or in the
// viewer's folder under the library folder (installed).

#include "CameraListDialog.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "ScreenshotJob.h"
#include "ViewerLog.h"

#include <PkoAPI/Sim/SimCamera.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QLibraryInfo>
#include <QLocale>
#include <QStringList>
#include <QTabWidget>
#include <QTimer>
#include <QTranslator>

#include <cstring>
#include <initializer_list>
#include <iostream>

namespace {

bool HasArgument(int argc, char** argv, const char* name)
{
    for (int i = 1; i < argc; ++i) {
        const std::size_t length = std::strlen(name);
        // "--name" or "--name=value"
        if (std::strncmp(argv[i], name, length) == 0 && (argv[i][length] == '\0' || argv[i][length] == '=')) {
            return true;
        }
    }
    return false;
}

bool HasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

// The folder that holds plugins/: beside the program in the build folder,
// otherwise the installed viewer's folder, found from the program's own
// folder so that an unpacked package works wherever it lies. The plug-ins
// look for their translations in "plugins/" of the working folder, so the
// viewer works from here.
QString HomeFolder()
{
    const QDir programFolder(QCoreApplication::applicationDirPath());
    if (programFolder.exists(QStringLiteral("plugins"))) {
        return programFolder.absolutePath();
    }
    const QDir installed(QDir::cleanPath(programFolder.absoluteFilePath(QStringLiteral(PKO_HOME_FROM_BINDIR))));
    if (installed.exists(QStringLiteral("plugins"))) {
        return installed.absolutePath();
    }
    // Neither: the loader reports the missing plugins/ beside the program.
    return programFolder.absolutePath();
}

// What is wrong with the options given, "" when nothing: a value that is
// empty or given twice would otherwise be taken silently (and an empty
// screenshot path leaves a viewer without display running for ever).
QString OptionProblem(const QCommandLineParser& parser, std::initializer_list<const QCommandLineOption*> withValues,
                      const QCommandLineOption& screenshot)
{
    for (const QCommandLineOption* option : withValues) {
        const QString name = QStringLiteral("--") + option->names().first();
        const QStringList values = parser.values(*option);
        if (values.size() > 1) {
            return QStringLiteral("%1 given %2 times (%3); give it once")
                .arg(name)
                .arg(values.size())
                .arg(values.join(QStringLiteral(", ")));
        }
        if (values.size() == 1 && values.first().trimmed().isEmpty()) {
            return QStringLiteral("%1 needs a value, got an empty one").arg(name);
        }
    }
    if (parser.isSet(screenshot)) {
        const QString suffix = QFileInfo(parser.value(screenshot)).suffix().toLower();
        if (!QImageWriter::supportedImageFormats().contains(suffix.toLatin1())) {
            return QStringLiteral("--screenshot %1: \"%2\" is no picture format this viewer can write (use .png)")
                .arg(parser.value(screenshot), suffix);
        }
    }
    return QString();
}

// A pulse train for --sim-pulses: LINE:PERIOD_MS:HIGH_MS.
struct PulseTrain {
    QString line;
    double periodMs = 0.0;
    double highMs = 0.0;
};

// "" when text is a pulse train (then it is in train), otherwise what is wrong.
QString ParsePulses(const QString& text, PulseTrain& train)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != 3 || parts.at(0).trimmed().isEmpty()) {
        return QStringLiteral("--sim-pulses %1: expected LINE:PERIOD_MS:HIGH_MS, e.g. Line0:200:50").arg(text);
    }
    bool periodOk = false;
    bool highOk = false;
    train.line = parts.at(0).trimmed();
    train.periodMs = parts.at(1).toDouble(&periodOk);
    train.highMs = parts.at(2).toDouble(&highOk);
    if (!periodOk || !highOk || !(train.highMs > 0.0) || !(train.periodMs > train.highMs) || train.periodMs > 1e7) {
        return QStringLiteral("--sim-pulses %1: needs 0 < HIGH_MS < PERIOD_MS (milliseconds, at most 10000000)")
            .arg(text);
    }
    return QString();
}

// "" when text is a delay in milliseconds from 0 to 600000, otherwise what is wrong.
QString ParseDelay(const QString& text, int& delayMs)
{
    bool ok = false;
    delayMs = text.toInt(&ok);
    if (!ok || delayMs < 0 || delayMs > 600000) {
        return QStringLiteral("--screenshot-after %1: expected milliseconds from 0 to 600000").arg(text);
    }
    return QString();
}

int ListCameras(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList lines = CameraListDialog::CameraLines();
    for (const QString& line : lines) {
        std::cout << line.toLocal8Bit().constData() << "\n";
    }
    return lines.isEmpty() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv)
{
    // Decided before any application object exists: listing needs no GUI,
    // and a screenshot needs no display.
    if (HasArgument(argc, argv, "--list-cameras")) {
        return ListCameras(argc, argv);
    }
    if (!HasDisplay()) {
        if (!HasArgument(argc, argv, "--screenshot")) {
            std::cerr << "PelkoViewer: no display. Start it under xvfb-run, or give --screenshot FILE to render "
                         "the window without a display.\n";
            return 2;
        }
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }

    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("PelkoViewer"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Camera viewer with tab extension plug-ins."));
    parser.addHelpOption();
    const QCommandLineOption cameraOption(QStringLiteral("camera"),
                                          QStringLiteral("Open the camera with this ID (default: the first one)."),
                                          QStringLiteral("ID"));
    const QCommandLineOption listOption(QStringLiteral("list-cameras"),
                                        QStringLiteral("Print the IDs and names of the cameras and exit."));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"), QStringLiteral("Save a picture of the window once it has settled, then exit."),
        QStringLiteral("FILE"));
    const QCommandLineOption printTabsOption(QStringLiteral("print-tabs"),
                                             QStringLiteral("Print the tab titles once the window has settled."));
    const QCommandLineOption startOption(QStringLiteral("start-acquisition"),
                                         QStringLiteral("Start the camera's acquisition once it is open."));
    const QCommandLineOption loadOption(QStringLiteral("load-settings"),
                                        QStringLiteral("Load a settings file into the camera once it is open."),
                                        QStringLiteral("FILE"));
    const QCommandLineOption tabOption(QStringLiteral("tab"), QStringLiteral("Show the tab with this title at start."),
                                       QStringLiteral("NAME"));
    const QCommandLineOption pulsesOption(
        QStringLiteral("sim-pulses"),
        QStringLiteral("Start a pulse train on an input of a simulated camera (e.g. Line0:200:50)."),
        QStringLiteral("LINE:PERIOD_MS:HIGH_MS"));
    const QCommandLineOption afterOption(QStringLiteral("screenshot-after"),
                                         QStringLiteral("Wait this long before the screenshot settles."),
                                         QStringLiteral("MS"));
    parser.addOptions({cameraOption, listOption, screenshotOption, printTabsOption, startOption, loadOption, tabOption,
                       pulsesOption, afterOption});
    parser.process(app);
    QString problem =
        OptionProblem(parser, {&cameraOption, &screenshotOption, &loadOption, &tabOption, &pulsesOption, &afterOption},
                      screenshotOption);
    PulseTrain pulses;
    if (problem.isEmpty() && parser.isSet(pulsesOption)) {
        problem = ParsePulses(parser.value(pulsesOption), pulses);
    }
    int screenshotDelayMs = 0;
    if (problem.isEmpty() && parser.isSet(afterOption)) {
        problem = ParseDelay(parser.value(afterOption), screenshotDelayMs);
    }
    if (!problem.isEmpty()) {
        std::cerr << "PelkoViewer: " << problem.toLocal8Bit().constData() << "\n";
        return 2;
    }

    // Every path the user gave is relative to where we were started: resolve
    // them all before we move.
    const QString screenshotPath =
        parser.isSet(screenshotOption) ? QFileInfo(parser.value(screenshotOption)).absoluteFilePath() : QString();
    const QString settingsPath =
        parser.isSet(loadOption) ? QFileInfo(parser.value(loadOption)).absoluteFilePath() : QString();
    QDir::setCurrent(HomeFolder());

    // The viewer's own texts, and Qt's (dialog buttons), in the user's
    // language where a translation exists; English otherwise.
    QTranslator qtTranslator;
    if (qtTranslator.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::location(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(&qtTranslator);
    }
    QTranslator viewerTranslator;
    if (viewerTranslator.load(QLocale(), QStringLiteral("pelkoviewer"), QStringLiteral("_"), QDir::currentPath())) {
        QCoreApplication::installTranslator(&viewerTranslator);
    }

    ViewerLog log;
    PluginLoader plugins(log);
    plugins.LoadDirectory(QStringLiteral("plugins"));

    MainWindow window(plugins, log);
    QString cameraId = parser.value(cameraOption);
    if (cameraId.isEmpty()) {
        const QStringList ids = CameraListDialog::CameraIds();
        if (ids.isEmpty()) {
            log.Problem(QStringLiteral("The SDK lists no camera"));
        } else {
            cameraId = ids.first();
        }
    }
    if (!cameraId.isEmpty() && !window.OpenCameraById(cameraId) && parser.isSet(cameraOption)) {
        return 2;
    }
    if (parser.isSet(startOption) && window.Camera() && !window.IsStreaming()) {
        window.ToggleAcquisition();
    }
    if (parser.isSet(pulsesOption) && window.Camera()) {
        const ZMT::PkoAPI::Sim::SimCameraPtr simulated =
            ZMT::PkoAPI::dynamic_pointer_cast<ZMT::PkoAPI::Sim::SimCamera>(window.Camera());
        const int result = simulated
                               ? simulated->StartPulses(pulses.line.toStdString(), pulses.periodMs, pulses.highMs, 0)
                               : ZMT::PkoAPI::PkoErrorWrongType;
        if (result != ZMT::PkoAPI::PkoErrorSuccess) {
            std::cerr << "PelkoViewer: --sim-pulses " << parser.value(pulsesOption).toLocal8Bit().constData() << ": "
                      << (simulated ? "the camera has no input of that name" : "the camera is not simulated")
                      << " (error " << result << ")\n";
            return 2;
        }
    }
    if (parser.isSet(tabOption)) {
        QTabWidget* tabs = window.Tabs();
        int found = -1;
        for (int i = 0; tabs != nullptr && i < tabs->count(); ++i) {
            if (tabs->tabText(i) == parser.value(tabOption)) {
                found = i;
            }
        }
        if (found < 0) {
            QStringList titles;
            for (int i = 0; tabs != nullptr && i < tabs->count(); ++i) {
                titles << tabs->tabText(i);
            }
            std::cerr << "PelkoViewer: --tab " << parser.value(tabOption).toLocal8Bit().constData()
                      << ": no such tab (the tabs are: " << titles.join(QStringLiteral(", ")).toLocal8Bit().constData()
                      << ")\n";
            return 2;
        }
        tabs->setCurrentIndex(found);
    }
    window.show();
    if (!settingsPath.isEmpty() && window.Camera()) {
        window.LoadSettings(settingsPath);
    }

    ScreenshotJob screenshot(window, screenshotPath, parser.isSet(printTabsOption));
    if (!screenshotPath.isEmpty() || parser.isSet(printTabsOption)) {
        // Time for a history to build up (the monitor's strip) before the picture.
        QTimer::singleShot(screenshotDelayMs, &screenshot, [&screenshot]() { screenshot.Start(); });
    }
    return app.exec();
}
