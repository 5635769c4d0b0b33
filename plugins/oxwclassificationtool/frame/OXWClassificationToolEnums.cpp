#include "OXWClassificationToolEnums.h"

#include <vector>

namespace {
// Registered at load by the plug-in entry.
const OXMRegisteredEnum sDefault3DRendererPreferences("Default3DRendererPreferences", false,
                                                      OXWClassificationToolEnums::Namespace);
} // namespace

const char* const OXWClassificationToolEnums::Names[NameCount] = {
    "Default3DRendererPreferences",
    "PresetClassificationHandler",
    "PresetVolumeRenderHandler",
    "AbsoluteMode",
    "IntervalFloatIndexList",
    "ShadingModel",
    "ShadingCountLimit",
    "SurfaceInverted",
    "SceneCameraList",
    "TulvoRights",
    "Scatter",
    "ScatterHQ",
    "ScatterGradient",
    "XRay",
    "Sum",
    "RenderPluginName",
    "SecondLightShadow",
    "ExportClassificationColor",
    "ImportClassificationColor",
    "OXMDefault3DRendererPreferences",
    "OXWDefault3DRendererPreferencesWidget",
    "OXMPresetClassificationProxyObject",
};

OXMenum OXWClassificationToolEnums::default3DRendererPreferences()
{
    return sDefault3DRendererPreferences;
}

int OXWClassificationToolEnums::removeOwnedRegistrations()
{
    const int count = OXMRegisteredEnum::getEnumCount(Namespace);
    if (count <= 0)
        return 0;
    std::vector<OXMRegisteredEnum*> found(static_cast<std::size_t>(count), nullptr);
    const int n = OXMRegisteredEnum::findEnums(found.data(), count, Namespace);
    int removed = 0;
    for (int i = n - 1; i >= 0; --i) {
        OXMRegisteredEnum* r = found[static_cast<std::size_t>(i)];
        if (r && r->isOwned()) {
            delete r;
            ++removed;
        }
    }
    return removed;
}
