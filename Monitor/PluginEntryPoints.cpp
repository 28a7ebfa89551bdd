// The two entry points a Qt 4 style host resolves in a plug-in library.

#include "MonitorTabPlugin.h"

#include <QPointer>
#include <QtGlobal>

// The host's loader compares this record word for word. It says "debug=true"
// whatever the build type; that is kept so on purpose. It lives in a section
// of its own so that the record can be found in the file, too.
static const char s_VerificationData[] __attribute__((section(".qtplugin"), used)) =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
    "version=4.8.4\n"
    "debug=true\n"
    "buildkey=ZMT_Qt4.8.4 i386 linux g++-4 full-config";

// Returns the NUL-terminated verification record; cannot fail.
extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data()
{
    return s_VerificationData;
}

// Returns the one plug-in object, making a new one (without parent) on the
// first call and whenever the previous one has been deleted. The host owns it;
// nothing here deletes it. Throws std::bad_alloc only when memory runs out.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance()
{
    static QPointer<QObject> s_Instance;
    if (s_Instance.isNull()) {
        s_Instance = new MonitorTabPlugin;
    }
    return s_Instance.data();
}
