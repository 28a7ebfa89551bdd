#ifndef TABEXTENSIONPLUGIN_H
#define TABEXTENSIONPLUGIN_H

#include "TabExtensionInterface.h"

// The plug-in object the host gets from qt_plugin_instance(). It makes one
// "Trigger IO" widget per call of CreateTabWidget and relays the host's
// streaming state to every widget it made.
class TabExtensionPlugin : public TabExtensionInterface {
    Q_OBJECT
    Q_INTERFACES(TabExtensionInterface)

public:
    explicit TabExtensionPlugin(QObject* parent = nullptr);

    // Puts a new IOTriggerWidget into tabPage (which must not be null) under a
    // QVBoxLayout and returns 0. When the widget refuses to exist (the camera
    // lacks trigger features) returns the refusal's error code, 4, and leaves
    // the page untouched, without layout. Exceptions other than
    // TabExtensionException reach the caller unchanged.
    int CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                        QWidget* tabPage) override;
    // Has no effect; it cannot fail.
    void ReservedOperation() override;
    // Connects signal (SIGNAL() text, one bool argument) of sender to
    // OnCamIsStreaming(bool). Returns false, and changes nothing, when Qt
    // refuses the connection (no such signal, null sender).
    bool ConnectStreamingSignal(QObject* sender, const char* signal) override;

signals:
    // Reaches camIsStreaming(bool) of every widget this plug-in made.
    void camStreaming(bool isStreaming);

public slots:
    // Emits camStreaming(isStreaming); keeps no copy of the state. Cannot fail.
    void OnCamIsStreaming(bool isStreaming);
};

#endif
