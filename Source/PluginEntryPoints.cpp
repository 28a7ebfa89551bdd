// The two entry points a Qt 4 style host resolves in a plug-in library.

#include "TabExtensionPlugin.h"
#include "TabPluginShell.h"

// Returns the NUL-terminated verification record; cannot fail.
extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data()
{
    return TabPluginShell::VerificationData();
}

// Returns the one TabExtensionPlugin; see TabPluginShell::PluginObject.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
{
    return TabPluginShell::PluginObject<TabExtensionPlugin>();
}
