#include "HelloTabPlugin.h"

#include "HelloTabWidget.h"

#include <TabExtensionException.h>
#include <TabPluginShell.h>

#include <QVBoxLayout>

int HelloTabPlugin::CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                    QWidget* tabPage)
{
    try {
        // The page owns the widget; a refusing widget frees itself as the
        // exception unwinds and leaves the page empty.
        HelloTabWidget* widget = new HelloTabWidget(features, tabPage);
        QVBoxLayout* layout = new QVBoxLayout(tabPage);
        layout->addWidget(widget);
        return 0;
    } catch (TabExtensionException& refusal) {
        return refusal.m_ErrorCode;
    }
}

bool HelloTabPlugin::ConnectStreamingSignal(QObject* sender, const char* signal)
{
    return connect(sender, signal, this, SLOT(OnCamIsStreaming(bool)));
}

// The viewer loads a library only when this record matches its own, word for word.
extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data()
{
    return TabPluginShell::VerificationData();
}

// The one plug-in object; the viewer owns it.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
{
    return TabPluginShell::PluginObject<HelloTabPlugin>();
}
