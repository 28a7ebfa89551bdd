#ifndef PLUGINFEATUREOBSERVER_H
#define PLUGINFEATUREOBSERVER_H

#include <PkoAPI/PkoAPI.h>

#include <QObject>
#include <QString>

// Turns the SDK's change callbacks into a Qt signal carrying the feature's
// name and its value as text. One object serves every watched feature of a
// tab. It must live in the GUI thread and have no parent: the SDK's
// shared_ptr owns it, and the signal reaches GUI-thread receivers queued.
class PluginFeatureObserver : public QObject, public ZMT::PkoAPI::IFeatureObserver {
    Q_OBJECT
public:
    PluginFeatureObserver();

    // Called by the SDK on its own threads. Reads the feature's name, type and
    // value and emits setChangedFeature. Emits nothing for a null feature or
    // when the name or data type cannot be read; emits an empty value text
    // when only the value cannot be read. Never throws.
    void FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature) override;

signals:
    void setChangedFeature(const QString& featureName, const QString& sValue);
};

#endif
