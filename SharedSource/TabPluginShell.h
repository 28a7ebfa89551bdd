#ifndef TABPLUGINSHELL_H
#define TABPLUGINSHELL_H

// What every tab plug-in library repeats around its own plug-in class and
// widget: the verification record and the one plug-in object behind the two
// entry points, and the placing of a new widget on the host's page. A
// library's entry points then read
//
//   extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data()
//   { return TabPluginShell::VerificationData(); }
//   extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
//   { return TabPluginShell::PluginObject<MyPlugin>(); }

#include "TabExtensionException.h"

#include <PkoAPI/Feature.h>

#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QVBoxLayout>
#include <QVector>
#include <QWidget>

namespace TabPluginShell {

// The NUL-terminated record the host's loader compares word for word, kept
// in a section of its own (".qtplugin") so that it can be found in the file,
// too. Cannot fail.
const char* VerificationData();

// The library's one plug-in object: made (without parent) on the first call
// and whenever the previous one has been deleted. The host owns it; nothing
// here deletes it. Throws std::bad_alloc only when memory runs out.
template <class Plugin>
QObject* PluginObject()
{
    static QPointer<QObject> s_Instance;
    if (s_Instance.isNull()) {
        s_Instance = new Plugin;
    }
    return s_Instance.data();
}

// Puts a new Widget made from features into tabPage (not null) under a
// QVBoxLayout, connects plugin's camStreaming(bool) to the widget's
// camIsStreaming(bool) and returns 0. When the widget refuses to exist it
// returns the refusal's error code and leaves the page untouched, without
// layout. Exceptions other than TabExtensionException reach the caller.
template <class Widget>
int PlaceTabWidget(QObject* plugin,
                   const QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>>& features,
                   QWidget* tabPage)
{
    try {
        // The page owns the widget; a refusing constructor frees its own
        // memory while the exception unwinds.
        Widget* widget = new Widget(features, tabPage);
        QObject::connect(plugin, SIGNAL(camStreaming(bool)), widget, SLOT(camIsStreaming(bool)));
        QVBoxLayout* layout = new QVBoxLayout(tabPage);
        layout->addWidget(widget, 0);
        return 0;
    } catch (TabExtensionException& refusal) {
        return refusal.m_ErrorCode;
    }
}

}  // namespace TabPluginShell

#endif
