// The plug-in's entry point: the record the host reads through oxmGetPluginInfo, start-up
// (the preset handler, then the tool panel docked in the main window) and shut-down (the
// panel, the handler, then every object of the plug-in's classes that is left).

#include "OXWClassificationToolEnums.h"

#include <OXMClass.h>
#include <OXMClassManager.h>
#include <OXMMetaClass.h>
#include <OXMPluginInfo.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWClassificationToolGUI.h>
#include <OXWDockWindow.h>
#include <OXWMainWindow.h>
#include <OXWPresetClassificationHandler.h>

#include <QPointer>

#include <memory>
#include <new>

namespace {

// Deleted at unload when shut-down did not run.
std::unique_ptr<OXWPresetClassificationHandler> presetHandler;
// The panel is the main window's tool; the pointer reads null once anyone has destroyed it.
QPointer<QWidget> toolPanel;

bool hostIsUp()
{
    return OXMSingleton<OXWApplication>::getInstance() && OXWMainWindow::getInstance();
}

OXMenum startUp(__OXMPlugin* plugin)
{
    if (!plugin)
        return OXM::InvalidValue;
    if (!hostIsUp())
        return OXM::MissingAFObject;
    if (!presetHandler) {
        presetHandler = std::make_unique<OXWPresetClassificationHandler>(nullptr);
        presetHandler->setScope(OXM::Global);
        presetHandler->setAutoDelete(false);
    }
    auto* panel = new (std::nothrow) OXWClassificationToolGUI(nullptr, "VolumeRenderingTool");
    if (!panel)
        return OXM::OutOfMemory;
    toolPanel = panel;
    OXWMainWindow::getInstance()->createTool(panel, OXWDockWindow::Vertical);
    return OXM::NoError;
}

// Destroys the objects of the plug-in's classes, the oldest first, each pass looking again
// (destroying one may destroy others). The passes are bounded by the objects there were.
void destroyRemainingObjects()
{
    OXMClassManager::SearchPattern pattern;
    pattern.moduleName = OXWClassificationToolEnums::Namespace;
    pattern.includeDerived = true;
    const int bound = 2 * OXMClassManager::getObjectCount(pattern) + 1;
    for (int pass = 0; pass < bound && OXMClassManager::getObjectCount(pattern) > 0; ++pass) {
        OXMClass* first = nullptr;
        if (OXMClassManager::findObjects(&first, 1, pattern) < 1 || !first)
            break;
        OXMMetaClass::destruct(first, true);
    }
}

OXMenum shutDown(__OXMPlugin* plugin)
{
    if (!plugin)
        return OXM::InvalidValue;
    OXMenum result = OXM::MissingAFObject;
    if (hostIsUp()) {
        if (toolPanel)
            OXWMainWindow::getInstance()->destructTool(toolPanel);
        delete toolPanel.data();
        presetHandler.reset();
        result = OXM::NoError;
    }
    destroyRemainingObjects();
    return result;
}

} // namespace

extern "C" Q_DECL_EXPORT OXMPluginInfo* oxmGetPluginInfo()
{
    static OXMPluginInfo info(OXWClassificationToolEnums::Namespace);
    info.vendor = "OXW";
    info.copyright = "Copyright the OXW developers";
    info.description = "OXM Plug-in 'oxwclassificationtool'";
    info.versionMajor = 1;
    info.versionMinor = 0;
    info.versionPatch = 0;
    info.hostVersionMajor = 4;
    info.hostVersionMinor = 0;
    info.initialize = startUp;
    info.terminate = shutDown;
    return &info;
}
