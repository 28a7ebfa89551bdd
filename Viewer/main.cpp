// PelkoViewer: opens a camera of the SDK and shows it with the tab extension
// plug-ins found in plugins/ beside the program.

#include "CameraListDialog.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "ScreenshotJob.h"
#include "ViewerLog.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QStringList>
#include <QTranslator>

#include <cstring>
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
    parser.addOptions({cameraOption, listOption, screenshotOption, printTabsOption, startOption, loadOption});
    parser.process(app);

    // Relative to where the user started us, before we move.
    const QString screenshotPath =
        parser.isSet(screenshotOption) ? QFileInfo(parser.value(screenshotOption)).absoluteFilePath() : QString();
    const QString settingsPath =
        parser.isSet(loadOption) ? QFileInfo(parser.value(loadOption)).absoluteFilePath() : QString();
    // plugins/ and the translations are found beside the program however it
    // was started.
    QDir::setCurrent(QCoreApplication::applicationDirPath());

    // The viewer's own texts, and Qt's (dialog buttons), in the user's
    // language where a translation exists; English otherwise.
    QTranslator qtTranslator;
    if (qtTranslator.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::location(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(&qtTranslator);
    }
    QTranslator viewerTranslator;
    if (viewerTranslator.load(QLocale(), QStringLiteral("pelkoviewer"), QStringLiteral("_"),
                              QCoreApplication::applicationDirPath())) {
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
    window.show();
    if (!settingsPath.isEmpty() && window.Camera()) {
        window.LoadSettings(settingsPath);
    }

    ScreenshotJob screenshot(window, screenshotPath, parser.isSet(printTabsOption));
    if (!screenshotPath.isEmpty() || parser.isSet(printTabsOption)) {
        screenshot.Start();
    }
    return app.exec();
}
