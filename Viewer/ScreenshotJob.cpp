#include "ScreenshotJob.h"

#include "MainWindow.h"

#include <QCoreApplication>
#include <QDialog>
#include <QPainter>
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
    QPixmap picture = m_Window.grab();
    // A dialog the window shows (the report of a settings load) is a window
    // of its own: drawn over the middle of the window, as a user sees it.
    for (QDialog* dialog : m_Window.findChildren<QDialog*>()) {
        if (!dialog->isVisible() || picture.isNull()) {
            continue;
        }
        const QPixmap shown = dialog->grab();
        QPainter painter(&picture);
        painter.drawPixmap((picture.width() - shown.width()) / 2, (picture.height() - shown.height()) / 2, shown);
    }
    if (picture.isNull() || !picture.save(m_Path, "PNG")) {
        std::cerr << "PelkoViewer: could not write the screenshot " << m_Path.toLocal8Bit().constData() << std::endl;
        QCoreApplication::exit(1);
        return;
    }
    std::cout << "screenshot: " << m_Path.toLocal8Bit().constData() << std::endl;
    QCoreApplication::exit(0);
}
