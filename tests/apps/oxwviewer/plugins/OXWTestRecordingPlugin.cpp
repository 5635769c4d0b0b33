// A plug-in for the viewer's tests. It records each call of its entry point and callbacks as
// one line appended to the file named by the environment variable OXW_TEST_PLUGIN_LOG:
//   "<plug-in name> <event> window=<0|1>"
// where window tells whether the host's main window existed at that moment. Built three
// times: as "oxwtestrecording" and "oxwtestsecond", and, with OXW_TEST_PLUGIN_FAIL_INITIALIZE,
// as "oxwtestfailing", whose initialize answers OXM::GenericError.

#include <OXMPluginInfo.h>
#include <OXWMainWindow.h>

#include <cstdio>
#include <cstdlib>

#ifndef OXW_TEST_PLUGIN_NAME
#error "OXW_TEST_PLUGIN_NAME must be defined"
#endif

namespace {

void record(const char* event)
{
    const char* path = std::getenv("OXW_TEST_PLUGIN_LOG");
    if (!path || !*path)
        return;
    if (std::FILE* f = std::fopen(path, "a")) {
        std::fprintf(f, "%s %s window=%d\n", OXW_TEST_PLUGIN_NAME, event,
                     OXWMainWindow::getInstance() ? 1 : 0);
        std::fclose(f);
    }
}

OXMenum initializePlugin(__OXMPlugin* plugin)
{
    record("initialize");
    if (!plugin)
        return OXM::InvalidValue;
#ifdef OXW_TEST_PLUGIN_FAIL_INITIALIZE
    return OXM::GenericError;
#else
    return OXM::NoError;
#endif
}

OXMenum terminatePlugin(__OXMPlugin* plugin)
{
    record("terminate");
    return plugin ? OXM::NoError : OXM::InvalidValue;
}

} // namespace

extern "C" Q_DECL_EXPORT OXMPluginInfo* oxmGetPluginInfo()
{
    static OXMPluginInfo info(OXW_TEST_PLUGIN_NAME);
    record("getinfo");
    info.vendor = "OXW tests";
    info.copyright = "none";
    info.description = "Test plug-in '" OXW_TEST_PLUGIN_NAME "'";
    info.versionMajor = 1;
    info.versionMinor = 2;
    info.versionPatch = 3;
    info.initialize = &initializePlugin;
    info.terminate = &terminatePlugin;
    return &info;
}
