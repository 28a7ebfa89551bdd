#include "MonitorTabPlugin.h"

#include "IOMonitorWidget.h"
#include "TabExtensionException.h"

#include <QVBoxLayout>

MonitorTabPlugin::MonitorTabPlugin(QObject* parent)
{
    setParent(parent);
}

int MonitorTabPlugin::CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                      QWidget* tabPage)
{
    try {
        IOMonitorWidget* widget = new IOMonitorWidget(features, tabPage);
        connect(this, SIGNAL(camStreaming(bool)), widget, SLOT(camIsStreaming(bool)));
        QVBoxLayout* layout = new QVBoxLayout(tabPage);
        layout->addWidget(widget, 0);
        return 0;
    } catch (TabExtensionException& refusal) {
        return refusal.m_ErrorCode;
    }
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
