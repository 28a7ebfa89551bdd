#include "TabExtensionPlugin.h"

#include "IOTriggerWidget.h"
#include "TabPluginShell.h"

TabExtensionPlugin::TabExtensionPlugin(QObject* parent)
{
    setParent(parent);
}

int TabExtensionPlugin::CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                        QWidget* tabPage)
{
    return TabPluginShell::PlaceTabWidget<IOTriggerWidget>(this, features, tabPage);
}

void TabExtensionPlugin::ReservedOperation() {}

bool TabExtensionPlugin::ConnectStreamingSignal(QObject* sender, const char* signal)
{
    return connect(sender, signal, this, SLOT(OnCamIsStreaming(bool)));
}

void TabExtensionPlugin::OnCamIsStreaming(bool isStreaming)
{
    emit camStreaming(isStreaming);
}
