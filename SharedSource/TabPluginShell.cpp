#include "TabPluginShell.h"

// It says "debug=true" whatever the build type; that is kept so on purpose,
// since it is what the host's loader compares against.
static const char s_VerificationData[] __attribute__((section(".qtplugin"), used)) =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
    "version=4.8.4\n"
    "debug=true\n"
    "buildkey=ZMT_Qt4.8.4 i386 linux g++-4 full-config";

const char* TabPluginShell::VerificationData()
{
    return s_VerificationData;
}
