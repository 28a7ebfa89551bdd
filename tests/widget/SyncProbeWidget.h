#ifndef SYNCPROBEWIDGET_H
#define SYNCPROBEWIDGET_H

#include "IOTriggerWidget.h"
#include "PluginFeatureObserver.h"

#include <QList>
#include <QMutexLocker>
#include <QStringList>
#include <QTimer>

#include <functional>

// The real "Trigger IO" tab, with a window on its change handling: every
// hand-over of the change queue is recorded before the tab's own refresh
// runs, and a test may hand over names of its own. The refresh itself is
// IOTriggerWidget's, unchanged.
class SyncProbeWidget : public IOTriggerWidget {
public:
    // Throws as IOTriggerWidget does.
    SyncProbeWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features, QWidget* parent)
        : IOTriggerWidget(features, parent)
    {}

    // Hands exactly names to the refresh the way the base's tick does: under
    // the mutex, the queue emptied afterwards. Whatever was queued before is
    // dropped. Cannot fail.
    void RefreshWith(const QStringList& names)
    {
        QMutexLocker locker(m_Mutex);
        *m_ChangedFeatures = names;
        UpdateFromChangedFeatures();
        m_ChangedFeatures->clear();
    }

    // The names queued now and not yet handed over. Cannot fail.
    QStringList QueuedNames() const
    {
        QMutexLocker locker(m_Mutex);
        return *m_ChangedFeatures;
    }

    // Whether the base's one-second timer runs. Cannot fail.
    bool IsTimerRunning() const { return m_UpdateTimer->isActive(); }

    // The tab's observer, through which the SDK reports changes; null only if
    // the base holds something else.
    PluginFeatureObserver* Observer() const { return dynamic_cast<PluginFeatureObserver*>(m_FeatureObserver.get()); }

    // Copies of the queue, one per hand-over, oldest first. Cannot fail.
    const QList<QStringList>& HandOvers() const { return m_HandOvers; }
    void ForgetHandOvers() { m_HandOvers.clear(); }

    // Run around each hand-over (before and after the tab's refresh) with the
    // queue handed over; empty functions are skipped. A hook must not throw.
    void SetRefreshHooks(const std::function<void(const QStringList&)>& before,
                         const std::function<void(const QStringList&)>& after)
    {
        m_BeforeRefresh = before;
        m_AfterRefresh = after;
    }

protected:
    void UpdateFromChangedFeatures() override
    {
        const QStringList names = *m_ChangedFeatures;
        m_HandOvers.append(names);
        if (m_BeforeRefresh)
            m_BeforeRefresh(names);
        IOTriggerWidget::UpdateFromChangedFeatures();
        if (m_AfterRefresh)
            m_AfterRefresh(names);
    }

private:
    QList<QStringList> m_HandOvers;
    std::function<void(const QStringList&)> m_BeforeRefresh;
    std::function<void(const QStringList&)> m_AfterRefresh;
};

#endif
