#ifndef HELLOTABPLUGIN_H
#define HELLOTABPLUGIN_H

#include <TabExtensionInterface.h>

// The plug-in object the viewer gets from qt_plugin_instance(): it puts a
// HelloTabWidget into every tab page the viewer hands it.
class HelloTabPlugin : public TabExtensionInterface {
    Q_OBJECT
    Q_INTERFACES(TabExtensionInterface)

public:
    // Returns 0, or 4 when the camera has no exposure time (no tab then).
    int CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                        QWidget* tabPage) override;
    void ReservedOperation() override {}
    bool ConnectStreamingSignal(QObject* sender, const char* signal) override;

public slots:
    // The exposure time reads the same whether the camera streams or not.
    void OnCamIsStreaming(bool) {}
};

#endif
