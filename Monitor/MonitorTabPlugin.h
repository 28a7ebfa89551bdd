#ifndef MONITORTABPLUGIN_H
#define MONITORTABPLUGIN_H

#include "TabExtensionInterface.h"

// The plug-in object of the "I/O Monitor" tab: one IOMonitorWidget per call
// of CreateTabWidget, and the host's streaming state relayed to each.
class MonitorTabPlugin : public TabExtensionInterface {
    Q_OBJECT
    Q_INTERFACES(TabExtensionInterface)

public:
    explicit MonitorTabPlugin(QObject* parent = nullptr);

    // Puts a new IOMonitorWidget into tabPage under a QVBoxLayout and returns
    // 0; returns the refusal's code (4: no line status) and leaves the page
    // empty when the camera has nothing to monitor.
    int CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                        QWidget* tabPage) override;
    void ReservedOperation() override;
    bool ConnectStreamingSignal(QObject* sender, const char* signal) override;

signals:
    void camStreaming(bool isStreaming);

public slots:
    void OnCamIsStreaming(bool isStreaming);
};

#endif
