// The names of the plug-in's vocabulary that its components use exist as soon as the library
// is loaded, before any of its code runs, and are withdrawn when it is unloaded. This program
// links none of the plug-in's code: every registration it sees comes from the library.

#include <OXMRegisteredEnum.h>
#include <OXWApplication.h>

#include <QLibrary>
#include <QStringList>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

const char* const Ns = "oxwclassificationtool";

std::set<std::string> liveNames()
{
    const int count = OXMRegisteredEnum::getEnumCount(Ns);
    std::vector<OXMRegisteredEnum*> found(std::size_t(count > 0 ? count : 0), nullptr);
    const int n = OXMRegisteredEnum::findEnums(found.data(), count, Ns);
    std::set<std::string> names;
    for (int i = 0; i < n; ++i) {
        names.insert(found[std::size_t(i)]->getName());
    }
    return names;
}

TEST(ClassificationToolNames, RegisteredAtLoadAndWithdrawnAtUnload)
{
    // Every name of the vocabulary but the three object identifiers, which are registered
    // when first asked for.
    std::set<std::string> used;
    for (const QString& name :
         QStringLiteral("Default3DRendererPreferences PresetClassificationHandler "
                        "PresetVolumeRenderHandler AbsoluteMode IntervalFloatIndexList "
                        "ShadingModel ShadingCountLimit SurfaceInverted SceneCameraList "
                        "TulvoRights Scatter ScatterHQ ScatterGradient XRay Sum RenderPluginName "
                        "SecondLightShadow ExportClassificationColor ImportClassificationColor")
             .split(QLatin1Char(' '))) {
        used.insert(name.toStdString());
    }
    ASSERT_TRUE(liveNames().empty());
    // The plug-in is loaded into a running application, whose libraries are already there.
    OXWApplication application;

    QLibrary library(QString::fromUtf8(OXW_CLASSIFICATION_TOOL_LIBRARY));
    ASSERT_TRUE(library.load()) << library.errorString().toStdString();
    const std::set<std::string> loaded = liveNames();
    EXPECT_EQ(loaded, used);
    ASSERT_TRUE(library.unload()) << library.errorString().toStdString();
    for (const std::string& name : liveNames()) {
        ADD_FAILURE() << name << " is still registered";
    }
}

} // namespace
