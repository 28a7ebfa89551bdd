#ifndef VIEWERLOG_H
#define VIEWERLOG_H

#include <QObject>
#include <QString>
#include <QStringList>

// The viewer's own message channel. A tab plug-in may silence Qt's message
// handler for the whole process, so problems are written to std::cerr
// directly and handed to the window (log panel, status bar) by signal.
class ViewerLog : public QObject {
    Q_OBJECT

public:
    enum class Level { Info, Problem };

    explicit ViewerLog(QObject* parent = nullptr);

    // Records an informational line (log panel only). Cannot fail.
    void Info(const QString& message);
    // Records a problem: log panel, status bar and std::cerr. Cannot fail.
    void Problem(const QString& message);

    // Every line so far, oldest first, as Format made them.
    QStringList History() const { return m_History; }
    // "HH:mm:ss  message", with "problem: " before the message of a problem.
    static QString Format(Level level, const QString& message);
    // The problems so far, oldest first, without prefix.
    QStringList Problems() const { return m_Problems; }

signals:
    void messageLogged(ViewerLog::Level level, const QString& message);

private:
    QStringList m_History;
    QStringList m_Problems;
};

#endif
