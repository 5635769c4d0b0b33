// The plug-in's entry point: the record the host reads through oxmGetPluginInfo, start-up
// (the preset handler, the tool panel docked in the main window, the "Default 3D rendering"
// preference with its page in two places of the preference tree) and shut-down (the
// preference, the panel, the handler, then every object of the plug-in's classes that is left
// and the registrations handed to the plug-in).

#include "OXWClassificationToolEnums.h"

#include <OXMClass.h>
#include <OXMClassManager.h>
#include <OXMMetaClass.h>
#include <OXMObjectRefPtr.h>
#include <OXMPluginInfo.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWClassificationToolGUI.h>
#include <OXWDockWindow.h>
#include <OXWMainWindow.h>
#include <OXWObjectEditor.h>
#include <OXWPreferenceManager.h>
#include <OXWPresetClassificationHandler.h>

#include <QApplication>
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

OXWPreferenceManager* preferenceManager()
{
    return OXMSingleton<OXWPreferenceManager>::getInstance();
}

// The "Default 3D rendering" page, once among the advanced settings and once as a group of
// the general settings.
void mapPreferencePage(OXWPreferenceManager* manager)
{
    const char* const path = "Preferences/Default3DRendererPreferences";
    const char* const page = "OXWDefault3DRendererPreferencesWidget";
    manager->addEnumMapping(OXWObjectEditor::EnumMapping(
        path,
        QApplication::translate("AdvancedPreferenceTree",
                                "Advanced settings|99|Advanced settings/Default 3D rendering|0|"
                                "Define rendering settings for imported data"),
        page, QString(), 2));
    manager->addEnumMapping(OXWObjectEditor::EnumMapping(
        path,
        QApplication::translate("PreferenceTree",
                                "General|10|General settings/General|0|General settings"),
        page, QApplication::translate("PreferenceTree", "Rendering settings for imported data|3"),
        2));
}

// The preference object, registered with the preference manager (which keeps it).
OXMenum registerPreference()
{
    OXMObjectRefPtr preferences("OXMDefault3DRendererPreferences", OXM::Global);
    if (!preferences)
        return OXM::OutOfMemory;
    preferences->prepareRoles();
    OXWPreferenceManager* manager = preferenceManager();
    if (!manager ||
        !manager->addPreference(OXWClassificationToolEnums::default3DRendererPreferences(),
                                preferences.get()))
        return OXM::OutOfMemory;
    mapPreferencePage(manager);
    return OXM::NoError;
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
    return registerPreference();
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

// The plug-in's own objects, in the reverse order of start-up.
OXMenum tearDown()
{
    if (!hostIsUp())
        return OXM::MissingAFObject;
    OXWPreferenceManager* manager = preferenceManager();
    if (!manager ||
        !manager->removePreference(OXWClassificationToolEnums::default3DRendererPreferences()))
        return OXM::GenericError;
    if (toolPanel)
        OXWMainWindow::getInstance()->destructTool(toolPanel);
    delete toolPanel.data();
    presetHandler.reset();
    return OXM::NoError;
}

OXMenum shutDown(__OXMPlugin* plugin)
{
    if (!plugin)
        return OXM::InvalidValue;
    OXMenum result = tearDown();
    destroyRemainingObjects();
    OXWClassificationToolEnums::removeOwnedRegistrations();
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
