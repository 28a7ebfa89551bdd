#ifndef SCREENSHOTJOB_H
#define SCREENSHOTJOB_H

#include <QObject>
#include <QString>

class MainWindow;

// Waits until the shown window has settled (two ticks of one second, so that
// the tabs' own one-second refresh has run), then prints the tab titles and
// saves a picture of the window, as asked.
class ScreenshotJob : public QObject {
    Q_OBJECT

public:
    // path: PNG to write ("" for none); printTabs: write "tab: <title>" lines
    // to stdout. window must outlive the job.
    ScreenshotJob(MainWindow& window, const QString& path, bool printTabs, QObject* parent = nullptr);

    // Starts waiting. When a path was given, the application quits afterwards
    // with exit code 0, or 1 when the picture could not be written (the
    // reason goes to std::cerr).
    void Start();

private slots:
    void OnTick();

private:
    MainWindow& m_Window;
    QString m_Path;
    bool m_PrintTabs;
    int m_Ticks;
};

#endif
