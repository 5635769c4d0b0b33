// A shared library without the plug-in entry point: the viewer must refuse it.

#include <QtGlobal>

extern "C" Q_DECL_EXPORT int oxwTestNotAPluginAnswer()
{
    return 42;
}
