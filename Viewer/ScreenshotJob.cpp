#include "ScreenshotJob.h"

#include "MainWindow.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QTimer>

#include <iostream>

namespace {
const int kTickMs = 1000;
const int kTicksToSettle = 2;
}  // namespace

ScreenshotJob::ScreenshotJob(MainWindow& window, const QString& path, bool printTabs, QObject* parent)
    : QObject(parent), m_Window(window), m_Path(path), m_PrintTabs(printTabs), m_Ticks(0)
{}

void ScreenshotJob::Start()
{
    QTimer::singleShot(kTickMs, this, SLOT(OnTick()));
}

void ScreenshotJob::OnTick()
{
    if (++m_Ticks < kTicksToSettle) {
        QTimer::singleShot(kTickMs, this, SLOT(OnTick()));
        return;
    }
    if (m_PrintTabs) {
        for (const QString& title : m_Window.TabTitles()) {
            std::cout << "tab: " << title.toUtf8().constData() << "\n";
        }
        std::cout.flush();
    }
    if (m_Path.isEmpty()) {
        return;
    }
    const QPixmap picture = m_Window.grab();
    if (picture.isNull() || !picture.save(m_Path, "PNG")) {
        std::cerr << "PelkoViewer: could not write the screenshot " << m_Path.toLocal8Bit().constData() << std::endl;
        QCoreApplication::exit(1);
        return;
    }
    std::cout << "screenshot: " << m_Path.toLocal8Bit().constData() << std::endl;
    QCoreApplication::exit(0);
}
