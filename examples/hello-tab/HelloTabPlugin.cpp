#include "HelloTabPlugin.h"

#include "HelloTabWidget.h"

#include <TabExtensionException.h>

#include <QPointer>
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
    return "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
           "version=4.8.4\n"
           "debug=true\n"
           "buildkey=ZMT_Qt4.8.4 i386 linux g++-4 full-config";
}

// The one plug-in object; the viewer owns it.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
{
    static QPointer<QObject> s_Instance;
    if (s_Instance.isNull()) {
        s_Instance = new HelloTabPlugin;
    }
    return s_Instance.data();
}
