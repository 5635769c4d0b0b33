// The classification preset handler with the tool panel on the viewer's objects: the built-in
// presets on both phantoms, re-read by the panel and drawn by the views; a saved preset applied
// by another handler reproduces the material exactly; the modified mark; an apply is one undo
// step.

#include "../tool/PanelFixture.h"

#include <OXWClassificationTable.h>
#include <OXWPresetComboBox.h>

#include <OXMHistogram.h>
#include <OXMObjectRefPtr.h>
#include <OXMPropertyValue.h>
#include <OXMRegisteredEnum.h>

#include <QCheckBox>
#include <QFile>

#include <memory>
#include <tuple>

using namespace paneltest;

namespace {

const OXMenum ShadingModel = OXMRegisteredEnum("ShadingModel", false, "oxwclassificationtool");
const OXMenum ShadingCount = OXMRegisteredEnum("ShadingCountLimit", false, "oxwclassificationtool");

// Everything a preset holds of a volume: interval lists (the borders when asked for), the 16
// channels' preset properties, the render plug-in's class and settings, the volume's render
// settings.
class Snapshot
{
public:
    explicit Snapshot(OXMVolumeRenderObject* volume, bool withBorders = true)
    {
        OXMObject* material = volume->getMaterial();
        for (OXMenum id : {OXM::IntervalModeList, OXM::IntervalNameList})
            take(material, id);
        if (withBorders)
            take(material, OXM::IntervalIndexList);
        for (OXMenum channel : OXWPresetClassificationHandler::channelTable()) {
            for (OXMenum id : {OXM::MapMode, OXM::Reference, OXM::LookupTableHandleList,
                               OXM::LookupTableHandleMode, OXM::Scale, OXM::Bias})
                take(material->getLinkedObject(channel), id);
        }
        OXMObject* plugin = volume->getRenderPlugin();
        pluginClass = plugin->getMetaClass()->getClassName();
        for (OXMenum id : {ShadingModel, OXMenum(OXM::SamplingDistance)})
            take(plugin, id);
        for (OXMenum id : {OXMenum(OXM::GradientNormalization), ShadingCount})
            take(volume, id);
    }
    bool operator==(const Snapshot& o) const
    {
        if (pluginClass != o.pluginClass || values.size() != o.values.size())
            return false;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!values[i]->equals(*o.values[i]))
                return false;
        }
        return true;
    }
    std::string pluginClass;

private:
    void take(const OXMObject* object, OXMenum id)
    {
        values.push_back(object->getProperty(id)->saveValue());
    }
    std::vector<std::unique_ptr<OXMPropertyValue>> values;
};

std::pair<int, int> binRange(OXMVolumeRenderObject* volume)
{
    int first = 0, last = -1;
    OXMObject* result = volume->getHistogram()->getLinkedObject(OXM::Result);
    OXMValueArrayPropertyIF<float>::getInterface(result->getProperty(OXM::Histogram))
        ->getArrayIndexRange(first, last);
    return {first, last};
}

class PresetHandler : public PanelFixture
{
protected:
    OXWPresetComboBox* box() const { return widget<OXWPresetComboBox>("oXWPresetComboBox1"); }
    // Picks a preset in the panel's box and waits for the panel's re-read.
    void pick(const QString& name, OXMenum type)
    {
        box()->refresh();
        ASSERT_TRUE(box()->applyPreset(name, type)) << name.toStdString();
        ASSERT_TRUE(settle());
    }
    void selectAndSettle(OXMVolumeRenderObject* v)
    {
        const int reads = panel->objectInfoReadCount();
        select({v});
        ASSERT_TRUE(waitForReread(reads));
        ASSERT_TRUE(settle());
    }
    // A distinctive classification and rendering of the test volume.
    void shapeVolume()
    {
        OXMSampleMaterial* m = material();
        ASSERT_TRUE(setArray(m, OXM::IntervalIndexList, std::vector<int>{9, 14, 20, 25}));
        ASSERT_TRUE(setArray(m, OXM::IntervalModeList,
                             std::vector<OXMenum>{OXM::Enabled, OXM::Disabled, OXM::Enabled}));
        ASSERT_TRUE(
            setArray(m, OXM::IntervalNameList, std::vector<const char*>{"Air", "Soft", "Bone"}));
        ASSERT_TRUE(channel(OXM::Opacity)->setCurve({{10, 0}, {12.5f, 0.3f}, {21, 0.9f}, {25, 1}}));
        ASSERT_TRUE(channel(OXM::AmbientGreen)->setCurve({{10, 0.1f}, {25, 0.7f}}));
        ASSERT_TRUE(channel(OXM::DiffuseRed)->setReference(channel(OXM::AmbientRed)));
        ASSERT_TRUE(channel(OXM::SpecularIntensity)->setConstant(0.33f));
        OXMObject* plugin = volume->getRenderPlugin();
        ASSERT_TRUE(plugin->setValue(
            ShadingModel, OXMenum(OXMRegisteredEnum("ScatterHQ", false, "oxwclassificationtool"))));
        ASSERT_TRUE(plugin->setValue(OXM::SamplingDistance, 0.25f));
        ASSERT_TRUE(volume->setValue(OXM::GradientNormalization, OXM::True));
        ASSERT_TRUE(volume->setValue(ShadingCount, 3));
    }
};

} // namespace

class BuiltInPreset : public PresetHandler,
                      public ::testing::WithParamInterface<std::tuple<int, int>>
{
};

TEST_P(BuiltInPreset, OnBothPhantomsIsReReadByThePanelAndDrawnByTheViews)
{
    const int preset = std::get<1>(GetParam());
    OXMVolumeRenderObject* phantom =
        std::get<0>(GetParam()) == 8 ? sample.volume8 : sample.volume16;
    selectAndSettle(phantom);
    const QString name = OXWPresetClassificationHandler::defaultPresetNames()[preset];
    const int steps = app.undoStack()->count();
    pick(name, OXM::DefaultPreset);
    EXPECT_EQ(app.undoStack()->count(), steps + 1);
    EXPECT_EQ(box()->currentText(), name);

    const auto [r0, r1] = binRange(phantom);
    const bool components = preset == 2;
    std::vector<int> borders;
    phantom->getMaterial()->getArray(OXM::IntervalIndexList, borders);
    EXPECT_EQ(borders, (components ? std::vector<int>{r0, r0, r1} : std::vector<int>{r0, r1}));
    ASSERT_EQ(model()->intervalCount(), components ? 2 : 1);
    EXPECT_EQ(model()->interval(0)->isEnabled(), !components) << "the background is off";
    EXPECT_TRUE(model()->interval(model()->intervalCount() - 1)->isEnabled())
        << "what a built-in preset shows is enabled in the editor";
    EXPECT_EQ(std::string(phantom->getRenderPlugin()->getMetaClass()->getClassName()),
              preset == 3 ? "OXMRaytracing::Isosurface::RenderPlugin"
                          : "OXMRaytracing::Volume::RenderPlugin");

    OXWClassificationTable view;
    ASSERT_EQ(view.build(phantom), OXWClassificationTable::Status::Ok);
    const int top = qAlpha(view.entryForBin(r1));
    const int low = qAlpha(view.entryForBin(r0 + 1));
    EXPECT_EQ(preset == 1 ? low > top : (preset == 2 ? low == top : low < top), true)
        << "a ramp up, down for the inverse, a step for the components";
    EXPECT_EQ(qAlpha(view.entryForBin(r0)), 0) << "bin r0 lies below the first interval";
}

INSTANTIATE_TEST_SUITE_P(Phantoms, BuiltInPreset,
                         ::testing::Combine(::testing::Values(8, 16),
                                            ::testing::Values(0, 1, 2, 3)));

TEST_F(PresetHandler, ASavedPresetAppliedByAnotherHandlerReproducesTheMaterialExactly)
{
    shapeVolume();
    const Snapshot saved(volume, false);
    presets->setAbsolutePreset(true);
    ASSERT_TRUE(presets->saveTargetAsPreset("Mine", OXM::UserPreset));

    // The viewer quits and starts again: another handler over the same folder.
    presets = std::make_unique<OXWPresetClassificationHandler>(nullptr);
    presets->store().setDirectory(files.filePath(QStringLiteral("presets")));
    select({});
    selectAndSettle(volume);
    pick("Isosurface Transparent", OXM::DefaultPreset);
    ASSERT_FALSE(Snapshot(volume, false) == saved);
    pick("Mine", OXM::UserPreset);
    EXPECT_TRUE(Snapshot(volume, false) == saved);
    // The inner borders stay; the first one, below the first bin, is cut onto it.
    EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList), (std::vector<int>{10, 14, 20, 25}));
    EXPECT_EQ(channel(OXM::DiffuseRed)->getLinkedObject(OXM::Reference), channel(OXM::AmbientRed))
        << "the reference is to the material's own channel";
    EXPECT_TRUE(presets->isAbsolutePreset());

    // Relative onto the range it was saved from: the same.
    presets->setAbsolutePreset(false);
    const Snapshot relative(volume);
    ASSERT_TRUE(presets->saveTargetAsPreset("Mine relative", OXM::UserPreset));
    pick("Mine", OXM::UserPreset);
    EXPECT_TRUE(presets->isAbsolutePreset());
    pick("Mine relative", OXM::UserPreset);
    EXPECT_TRUE(Snapshot(volume) == relative);
    EXPECT_FALSE(presets->isAbsolutePreset()) << "applying sets the flag to the preset's mode";
}

TEST_F(PresetHandler, AnEditAfterApplyingMarksThePresetModifiedAndUndoTakesTheApplyBackInOneStep)
{
    ASSERT_TRUE(settle());
    const Snapshot before(volume);
    pick("Inverse Ramp", OXM::DefaultPreset);
    EXPECT_FALSE(presets->isCurrentPresetModified());
    EXPECT_EQ(box()->currentText(), QStringLiteral("Inverse Ramp"));

    ASSERT_TRUE(model()->interval(0)->setReferenceHandles(Opacity, {{0, 0.1f}, {1, 0.2f}}));
    emit workArea()->objectOpacityChanged();
    EXPECT_TRUE(presets->isCurrentPresetModified());
    EXPECT_EQ(box()->currentText(), QStringLiteral("Inverse Ramp (modified)"));

    ASSERT_TRUE(app.undoStack()->undo()); // the edit
    ASSERT_TRUE(app.undoStack()->undo()); // the apply, whole
    EXPECT_TRUE(Snapshot(volume) == before);
    EXPECT_EQ(app.undoStack()->count(), 0);
}
