#include "MonitorTabPlugin.h"

#include "IOMonitorWidget.h"
#include "TabPluginShell.h"

MonitorTabPlugin::MonitorTabPlugin(QObject* parent)
{
    setParent(parent);
}

int MonitorTabPlugin::CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                      QWidget* tabPage)
{
    return TabPluginShell::PlaceTabWidget<IOMonitorWidget>(this, features, tabPage);
}

void MonitorTabPlugin::ReservedOperation() {}

bool MonitorTabPlugin::ConnectStreamingSignal(QObject* sender, const char* signal)
{
    return connect(sender, signal, this, SLOT(OnCamIsStreaming(bool)));
}

void MonitorTabPlugin::OnCamIsStreaming(bool isStreaming)
{
    emit camStreaming(isStreaming);
}
