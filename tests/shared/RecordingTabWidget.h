#ifndef RECORDINGTABWIDGET_H
#define RECORDINGTABWIDGET_H

#include "BaseTabPluginWidget.h"

#include <QList>
#include <QStringList>

#include <functional>

// The smallest real tab: watches the given names and records what each
// UpdateFromChangedFeatures call was handed. Frees what the base leaves to
// its subclass, unless a test asks it to leave them (m_FreeOnDestruction).
class RecordingTabWidget : public BaseTabPluginWidget {
public:
    RecordingTabWidget(FeatureVectorPtr features, const QStringList& observed);
    ~RecordingTabWidget() override;

    using BaseTabPluginWidget::m_ChangedFeatures;
    using BaseTabPluginWidget::m_FeatureManager;
    using BaseTabPluginWidget::m_FeatureObserver;
    using BaseTabPluginWidget::m_Features;
    using BaseTabPluginWidget::m_Mutex;
    using BaseTabPluginWidget::m_ObservedFeatures;
    using BaseTabPluginWidget::m_UpdateTimer;

    // A copy of m_ChangedFeatures per call, oldest first.
    QList<QStringList> m_Calls;
    // Per call: whether m_Mutex was held by the caller.
    QList<bool> m_MutexHeld;
    // Run inside each call, after recording.
    std::function<void()> m_DuringUpdate;
    // False: the destructor leaves the timer, mutex, queue and manager alive,
    // so that a test sees what the base destructor alone does to them.
    bool m_FreeOnDestruction = true;

protected:
    void UpdateFromChangedFeatures() override;
};

#endif
