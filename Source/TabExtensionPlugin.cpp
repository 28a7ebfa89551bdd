#include "TabExtensionPlugin.h"

#include "IOTriggerWidget.h"
#include "TabExtensionException.h"

#include <QVBoxLayout>

TabExtensionPlugin::TabExtensionPlugin(QObject* parent)
{
    setParent(parent);
}

int TabExtensionPlugin::CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                        QWidget* tabPage)
{
    try {
        // The page owns the widget; a refusing constructor frees its own memory
        // while the exception unwinds.
        IOTriggerWidget* widget = new IOTriggerWidget(features, tabPage);
        connect(this, SIGNAL(camStreaming(bool)), widget, SLOT(camIsStreaming(bool)));
        QVBoxLayout* layout = new QVBoxLayout(tabPage);
        layout->addWidget(widget, 0);
        return 0;
    } catch (TabExtensionException& refusal) {
        return refusal.m_ErrorCode;
    }
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
