#include "ViewerLog.h"

#include <QTime>

#include <iostream>

ViewerLog::ViewerLog(QObject* parent) : QObject(parent) {}

void ViewerLog::Info(const QString& message)
{
    m_History.append(Format(Level::Info, message));
    emit messageLogged(Level::Info, message);
}

void ViewerLog::Problem(const QString& message)
{
    m_History.append(Format(Level::Problem, message));
    m_Problems.append(message);
    std::cerr << "PelkoViewer: " << message.toLocal8Bit().constData() << std::endl;
    emit messageLogged(Level::Problem, message);
}

QString ViewerLog::Format(Level level, const QString& message)
{
    const QString stamp = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    return stamp + (level == Level::Problem ? QStringLiteral("  problem: ") : QStringLiteral("  ")) + message;
}
