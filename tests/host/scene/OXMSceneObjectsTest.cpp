#include "OXMCamera.h"
#include "OXMClassManager.h"
#include "OXMMetaClass.h"
#include "OXMObjectIOCPtr.h"
#include "OXMObjectPath.h"
#include "OXMObjectPtr.h"
#include "OXMObjectRefPtr.h"
#include "OXMOxm2RenderSettings.h"
#include "OXMRegisteredEnum.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMScene.h"
#include "OXMSceneNames.h"
#include "OXMTulvoRights.h"
#include "OXMVector2.h"
#include "OXMVolumeRenderObject.h"
#include "OXMVolumeTransform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

OXMSampleGrid* rampGrid()
{
    std::vector<std::uint16_t> v(10 * 8 * 6);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = std::uint16_t(100 + i % 50);
    auto* grid = new OXMSampleGrid;
    grid->setSamples({10, 8, 6}, OXM::UInt16, v);
    grid->setSpacing({0.5f, 0.5f, 2.0f});
    return grid;
}

template <typename T>
std::vector<T> array(const OXMObject* o, OXMenum id)
{
    auto* a = OXMValueArrayPropertyIF<T>::getInterface(o->getProperty(id));
    return a ? a->getArray() : std::vector<T>();
}

} // namespace

TEST(OXMSceneObjects, GridHoldsVoxelsAndRefusesMismatchedBuffers)
{
    OXMObjectPtr hold(rampGrid());
    auto* grid = static_cast<OXMSampleGrid*>(hold.get());
    EXPECT_EQ(grid->getVoxelCount(), 480);
    EXPECT_EQ(grid->getDimensions(), OXMVector3<int>(10, 8, 6));
    OXMTypeInfo type;
    ASSERT_TRUE(grid->getValue(OXM::SampleDataType, type));
    EXPECT_EQ(type.getID(), OXM::UInt16);
    EXPECT_EQ(grid->getNativeValue(51), 101.0);
    const int version = grid->getDataVersion();
    EXPECT_FALSE(grid->setData({2, 2, 2}, OXM::UInt16, std::vector<std::uint8_t>(15)));
    EXPECT_EQ(grid->getDataVersion(), version);
    // Dimensions and type change only with the buffer.
    EXPECT_FALSE(grid->setValue(OXMSceneNames::dimensions(), OXMVector3<int>(1, 1, 1)));
    int first = 0, last = 0;
    ASSERT_TRUE(grid->getIndexRange(OXM::Gray, first, last));
    EXPECT_EQ(first, 100);
    EXPECT_EQ(last, 149);
}

TEST(OXMSceneObjects, VolumeCarriesTheClassificationProperties)
{
    OXMObjectPtr hold(OXMVolumeRenderObject::create(rampGrid(), "CT"));
    auto* v = static_cast<OXMVolumeRenderObject*>(hold.get());
    EXPECT_TRUE(v->isRoleActive(OXM::VolumeRenderObject));
    EXPECT_FALSE(v->isRoleActive(OXM::RegionOfInterest));
    const char* name = nullptr;
    ASSERT_TRUE(v->getValue(OXM::Name, name));
    EXPECT_STREQ(name, "CT");
    for (OXMenum id :
         {OXM::SampleGrid, OXM::ApplicationSampleMaterial, OXM::HistogramList, OXM::RenderPlugin,
          OXM::RegionOfInterestList, OXM::VolumeComponentList, OXM::VolumeComponentMode,
          OXM::GradientNormalization, OXM::BoundingBox, OXM::ScenePath,
          OXMSceneNames::shadingCountLimit(), OXMSceneNames::surfaceInverted()})
        EXPECT_NE(v->getProperty(id), nullptr) << id;
    const auto box = v->getBoundingBox();
    EXPECT_EQ(box.first, OXMVector3<float>(-0.25f, -0.25f, -1.0f));
    EXPECT_EQ(box.second, OXMVector3<float>(4.75f, 3.75f, 11.0f));

    // The render plug-in is a volume ray tracer with Phong shading.
    OXMObject* plugin = v->getRenderPlugin();
    ASSERT_NE(plugin, nullptr);
    EXPECT_STREQ(plugin->getMetaClass()->getClassName(), "OXMRaytracing::Volume::RenderPlugin");
    EXPECT_TRUE(plugin->isOfType(OXMRegisteredEnum("OXMRaytracing::Volume::RenderPlugin")));
    OXMenum shading;
    ASSERT_TRUE(plugin->getValue(
        OXMRegisteredEnum("ShadingModel", false, "oxwclassificationtool").getValue(), shading));
    EXPECT_EQ(shading, OXM::Phong);
    float distance = 0.0f;
    EXPECT_TRUE(plugin->getValue(OXM::SamplingDistance, distance));

    // The histogram's channel reads the grey values, like the material's opacity channel.
    auto histograms = array<OXMObjectLink>(v, OXM::HistogramList);
    ASSERT_EQ(histograms.size(), 1u);
    OXMObjectLink channelLink;
    ASSERT_TRUE(histograms[0].getLink()->getValue(OXM::SampleTransferSpec, channelLink));
    OXMenum channel;
    ASSERT_TRUE(channelLink.getLink()->getValue(OXM::InputChannel, channel));
    EXPECT_EQ(channel, OXM::Gray);
    OXMObjectLink parent = histograms[0].getLink()->getParentLink();
    EXPECT_EQ(parent.getOwner(), v);
    EXPECT_EQ(parent.getPropertyID(), OXM::HistogramList);
}

TEST(OXMSceneObjects, DefaultMaterialIsOneEnabledIntervalWithARamp)
{
    OXMObjectPtr hold(OXMVolumeRenderObject::create(rampGrid()));
    auto* v = static_cast<OXMVolumeRenderObject*>(hold.get());
    OXMObjectLink m;
    ASSERT_TRUE(v->getValue(OXM::ApplicationSampleMaterial, m));
    OXMObject* material = m.getLink();
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(array<int>(material, OXM::IntervalIndexList), (std::vector<int>{99, 149}));
    EXPECT_EQ(array<OXMenum>(material, OXM::IntervalModeList),
              (std::vector<OXMenum>{OXM::Enabled}));
    const auto names = array<const char*>(material, OXM::IntervalNameList);
    ASSERT_EQ(names.size(), 1u);
    EXPECT_STREQ(names[0], "Interval 1");
    EXPECT_EQ(array<float>(material, OXM::IsosurfaceValueList).size(), 1u);
    std::pair<float, float> range;
    ASSERT_TRUE(material->getValue(OXM::VisibleOpacityIndexRange, range));
    EXPECT_EQ(range, (std::pair<float, float>(100.0f, 149.0f)));
    ASSERT_TRUE(material->getValue(OXM::VisibleOpacityValueRange, range));
    EXPECT_EQ(range, (std::pair<float, float>(0.0f, 1.0f)));

    auto channel = [&](OXMenum id) {
        OXMObjectLink l;
        material->getValue(id, l);
        return l.getLink();
    };
    for (OXMenum id : OXMSampleMaterial::channelIDs()) {
        OXMObject* c = channel(id);
        ASSERT_NE(c, nullptr) << id;
        EXPECT_TRUE(c->isOfType("OXMSampleTransferSpec"));
        for (OXMenum p : {OXM::MapMode, OXM::Reference, OXM::LookupTableHandleList,
                          OXM::LookupTableHandleMode, OXM::Scale, OXM::Bias, OXM::InputChannel})
            EXPECT_NE(c->getProperty(p), nullptr);
    }
    OXMenum mode;
    ASSERT_TRUE(channel(OXM::Opacity)->getValue(OXM::MapMode, mode));
    EXPECT_EQ(mode, OXM::LookupTable);
    EXPECT_EQ(array<OXMVector2<float>>(channel(OXM::Opacity), OXM::LookupTableHandleList),
              (std::vector<OXMVector2<float>>{{100.0f, 0.0f}, {149.0f, 1.0f}}));
    for (OXMenum id : {OXM::AmbientRed, OXM::DiffuseGreen, OXM::SpecularBlue, OXM::EmissionRed})
        EXPECT_EQ(array<OXMVector2<float>>(channel(id), OXM::LookupTableHandleList),
                  (std::vector<OXMVector2<float>>{{100.0f, 1.0f}, {149.0f, 1.0f}}));
    const struct
    {
        OXMenum id;
        float value;
    } constants[] = {{OXM::AmbientIntensity, 0.2f},
                     {OXM::DiffuseIntensity, 0.7f},
                     {OXM::SpecularIntensity, 0.1f},
                     {OXM::Shininess, 10.0f},
                     {OXM::Transparency, 1.0f}};
    for (const auto& c : constants) {
        float scale = -1.0f;
        ASSERT_TRUE(channel(c.id)->getValue(OXM::Scale, scale));
        EXPECT_FLOAT_EQ(scale, c.value);
        ASSERT_TRUE(channel(c.id)->getValue(OXM::MapMode, mode));
        EXPECT_EQ(mode, OXM::Constant);
    }
}

TEST(OXMSceneObjects, ChannelsResolveReferencesAndMaterialCopiesRedirectThem)
{
    OXMObjectPtr hold(new OXMSampleMaterial);
    auto* m = static_cast<OXMSampleMaterial*>(hold.get());
    m->setDefaultClassification(0, 255);
    ASSERT_TRUE(m->getChannel(OXM::DiffuseRed)->setReference(m->getChannel(OXM::AmbientRed)));
    EXPECT_EQ(m->getChannel(OXM::DiffuseRed)->resolve(), m->getChannel(OXM::AmbientRed));
    m->getChannel(OXM::AmbientRed)->setCurve({{0.0f, 0.0f}, {255.0f, 1.0f}});
    EXPECT_FLOAT_EQ(m->getChannel(OXM::DiffuseRed)->evaluate(127.5f), 0.5f);
    EXPECT_FLOAT_EQ(m->getChannel(OXM::AmbientIntensity)->evaluate(3.0f), 0.2f);

    OXMObjectPtr copyHold(dynamic_cast<OXMObject*>(OXMMetaClass::clone(m)));
    auto* copy = dynamic_cast<OXMSampleMaterial*>(copyHold.get());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->getChannel(OXM::AmbientRed), m->getChannel(OXM::AmbientRed));
    EXPECT_EQ(copy->getChannel(OXM::DiffuseRed)->resolve(), copy->getChannel(OXM::AmbientRed));
    EXPECT_EQ(array<int>(copy, OXM::IntervalIndexList), (std::vector<int>{-1, 255}));
    EXPECT_EQ(copy->getChannel(OXM::Opacity)->getParentLink().getOwner(), copy);
}

// Each renderer carries the settings of its class and no more: the camera ray tracer keeps
// its shading and sampling distance in the camera's settings, the others on themselves.
TEST(OXMSceneObjects, RenderPluginsAreCreatedByClassNameWithTheirOwnSettings)
{
    OXMSceneNames::registerSceneClasses();
    const std::pair<const char*, bool> renderers[] = {
        {"OXMRaytracing::Isosurface::RenderPlugin", true},
        {"OXMRaytracing::Volume::RenderPlugin", true},
        {"OXMDDTexture3DRenderPlugin", true},
        {"OXMDDTextureDefault3DRendererPlugin", true},
        {"OXMOxm2RenderPlugin", false}};
    for (const auto& [name, shaded] : renderers) {
        OXMObjectRefPtr p(name);
        ASSERT_TRUE(p) << name;
        EXPECT_TRUE(p->prepareRoles());
        EXPECT_STREQ(p->getMetaClass()->getClassName(), name);
        EXPECT_TRUE(p->isOfType("OXMRenderPlugin")) << name;
        EXPECT_EQ(p->getProperty(OXMSceneNames::shadingModel()) != nullptr, shaded) << name;
        EXPECT_EQ(p->setValue(OXM::SamplingDistance, 0.25f), shaded) << name;
        OXMObjectRefPtr other(name);
        EXPECT_EQ(other->copyProperty(p.get(), OXM::SamplingDistance), shaded) << name;
        float d = 0.0f;
        other->getValue(OXM::SamplingDistance, d);
        EXPECT_EQ(d, shaded ? 0.25f : 0.0f) << name;
    }
    EXPECT_EQ(OXMSceneNames::shadingModel(),
              OXMenum::find("ShadingModel", "oxwclassificationtool"));
}

TEST(OXMSceneObjects, SceneCameraHoldsOxm2RenderSettings)
{
    OXMObjectPtr hold(new OXMScene);
    OXMObject* scene = hold.get();
    const auto cameras = array<OXMObjectLink>(
        scene, OXMRegisteredEnum("SceneCameraList", false, "oxwclassificationtool"));
    ASSERT_EQ(cameras.size(), 1u);
    const auto engines = array<OXMObjectLink>(cameras[0].getLink(), OXM::RaytracingEngineList);
    ASSERT_EQ(engines.size(), 1u);
    EXPECT_TRUE(engines[0].linkIsOfType("OXMOxm2RenderSettings"));
    OXMObject* settings = engines[0].getLink();
    EXPECT_TRUE(settings->setValue(OXM::RenderingMode, OXM::Maximum));
    EXPECT_TRUE(settings->setValue(OXM::SamplingDistance, 0.5f));
    EXPECT_TRUE(settings->setValue(OXMSceneNames::shadingCountLimit(), 1));
    EXPECT_TRUE(settings->setValue(OXMSceneNames::surfaceInverted(), OXM::True));
}

TEST(OXMSceneObjects, SceneLinksTheRightsOfTheOpenFileAndTheirChangesAreHeard)
{
    OXMObjectPtr hold(new OXMScene);
    auto* scene = static_cast<OXMScene*>(hold.get());
    // Found the way the classification tool finds it: the link named in the tool's namespace.
    OXMObjectLink link;
    ASSERT_TRUE(
        scene->getValue(OXMRegisteredEnum("TulvoRights", false, "oxwclassificationtool"), link));
    auto* rights = dynamic_cast<OXMTulvoRights*>(link.getLink());
    ASSERT_NE(rights, nullptr);
    EXPECT_EQ(rights, scene->getRights());
    EXPECT_TRUE(rights->getAllowClassificationEdit());

    struct Counter : OXMIOC
    {
        int changes = 0;
        void iocCallback(Message& message) override
        {
            if (message.getType() == OXM::PropertyChanged)
                ++changes;
        }
    } counter;
    OXMObjectIOCPtr listening(rights, &counter);
    EXPECT_TRUE(rights->setAllowClassificationEdit(false));
    EXPECT_FALSE(rights->getAllowClassificationEdit());
    EXPECT_EQ(counter.changes, 1);
}
