#ifndef BASETABPLUGINWIDGET_H
#define BASETABPLUGINWIDGET_H

#include "FeatureManager.h"

#include <PkoAPI/PkoAPI.h>

#include <QMutex>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <vector>

class QComboBox;
class QHideEvent;
class QShowEvent;
class QTranslator;

// Base of every tab widget a tab plug-in creates. Watches the features named
// in m_ObservedFeatures, collects the names the camera reports as changed and,
// once a second while shown, hands them to the subclass through
// UpdateFromChangedFeatures() with m_Mutex held.
//
// Construction installs a Qt message handler that drops every message, for
// the whole process and for good.
//
// The destructor unregisters the observers and releases the observer and the
// feature list, but leaves m_UpdateTimer, m_Mutex, m_ChangedFeatures and
// m_FeatureManager alone: a subclass that wants them freed deletes them.
class BaseTabPluginWidget : public QWidget {
    Q_OBJECT
public:
    // Never fails; a null or empty feature list gives a tab that watches nothing.
    BaseTabPluginWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                        QWidget* parent);
    ~BaseTabPluginWidget() override;

    // A new translator without parent; the caller owns and installs it. Tries
    // "plugins/<baseName>_<locale>" then "plugins/<baseName>_<language>"; when
    // neither loads, the translator is returned empty.
    QTranslator* LoadTranslator(const QString& baseName);

    // Refills combo with the feature's available entries, selects the current
    // one (index -1 when it is not among them) and enables the combo exactly
    // when the feature is writable. Returns that writability; false and no
    // change for a null combo. A missing feature leaves an empty, disabled combo.
    bool FillComboFromFeature(const QString& featureName, QComboBox* combo, bool withToolTips);

    // Registers the observer on every watched feature of the list; with
    // queueAll each feature registered is queued as changed. A failure on one
    // feature is logged and the walk goes on. Returns the last registration's
    // SDK code (0 also when none was attempted), -3 for an empty feature list.
    int RegisterObservers(bool queueAll);
    // Unregisters the observer from every watched feature; failures are logged
    // and skipped. Returns the last SDK code as above, -3 for an empty list.
    int UnregisterObservers();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

    // Brings the subclass's controls up to date for the names in
    // m_ChangedFeatures. Always called with m_Mutex held: must not lock it.
    virtual void UpdateFromChangedFeatures() = 0;

signals:
    void resetFPS();

protected slots:
    void updateTimer();

private slots:
    void OnFeatureChanged(const QString& name, const QString& value);

protected:
    FeatureManager* m_FeatureManager;
    QStringList* m_ChangedFeatures;
    QStringList m_ObservedFeatures;
    QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> m_Features;
    QTimer* m_UpdateTimer;
    QMutex* m_Mutex;
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::IFeatureObserver> m_FeatureObserver;

private:
    // Copies the feature list into features; false, after logging the -3
    // message, when there is nothing to copy.
    bool BuildFeatureVector(std::vector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>& features);
};

#endif
