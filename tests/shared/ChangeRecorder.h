#ifndef CHANGERECORDER_H
#define CHANGERECORDER_H

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QThread>

// Receives setChangedFeature in the thread it lives in and remembers each
// call with the thread that ran the slot.
class ChangeRecorder : public QObject {
    Q_OBJECT
public:
    ChangeRecorder() = default;

    QList<QPair<QString, QString>> m_Changes;
    QList<QThread*> m_Threads;

public slots:
    void OnChanged(const QString& name, const QString& value);
};

#endif
