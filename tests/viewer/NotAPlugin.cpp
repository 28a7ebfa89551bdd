// A shared library without the plug-in entry points: the viewer's loader
// must refuse it.

extern "C" int pko_not_a_plugin_answer()
{
    return 42;
}
