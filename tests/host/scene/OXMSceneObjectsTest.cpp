// The scene's objects: what a grid, a volume, its material and its renderer derive from the voxels,
// and how they are linked, copied and created by class name.

#include "OXMCamera.h"
#include "OXMMetaClass.h"
#include "OXMObjectIOCPtr.h"
#include "OXMObjectPtr.h"
#include "OXMObjectRefPtr.h"
#include "OXMRegisteredEnum.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMScene.h"
#include "OXMSceneNames.h"
#include "OXMTulvoRights.h"
#include "OXMVector2.h"
#include "OXMVolumeRenderObject.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// 10 x 8 x 6 voxels of 100 .. 149, spaced 0.5 x 0.5 x 2.
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
    return OXMObject::arrayOf<T>(o, id);
}

} // namespace

TEST(OXMSceneObjects, AGridHoldsItsVoxelsAndRefusesMismatchedBuffers)
{
    OXMObjectPtr hold(rampGrid());
    auto* grid = static_cast<OXMSampleGrid*>(hold.get());
    EXPECT_EQ(grid->getVoxelCount(), 480);
    OXMTypeInfo type;
    ASSERT_TRUE(grid->getValue(OXM::SampleDataType, type));
    EXPECT_EQ(type.getID(), OXM::UInt16);
    EXPECT_EQ(grid->getNativeValue(51), 101.0);
    const int version = grid->getDataVersion();
    EXPECT_FALSE(grid->setData({2, 2, 2}, OXM::UInt16, std::vector<std::uint8_t>(15)));
    EXPECT_EQ(grid->getDataVersion(), version);
    // Dimensions and type change only with the buffer.
    EXPECT_FALSE(grid->setValue(OXMSceneNames::dimensions(), OXMVector3<int>(1, 1, 1)));
    EXPECT_EQ(grid->getDimensions(), OXMVector3<int>(10, 8, 6));
    int first = 0, last = 0;
    ASSERT_TRUE(grid->getIndexRange(OXM::Gray, first, last));
    EXPECT_EQ(std::make_pair(first, last), std::make_pair(100, 149));
}

// A new volume's box follows the spacing; its material classifies the data's range with one enabled
// interval and an opacity ramp over it; its histogram reads the grey values.
TEST(OXMSceneObjects, ANewVolumeIsClassifiedOverItsDataRange)
{
    OXMObjectPtr hold(OXMVolumeRenderObject::create(rampGrid(), "CT"));
    auto* v = static_cast<OXMVolumeRenderObject*>(hold.get());
    EXPECT_TRUE(v->isRoleActive(OXM::VolumeRenderObject));
    EXPECT_FALSE(v->isRoleActive(OXM::RegionOfInterest));
    const auto box = v->getBoundingBox();
    EXPECT_EQ(box.first, OXMVector3<float>(-0.25f, -0.25f, -1.0f));
    EXPECT_EQ(box.second, OXMVector3<float>(4.75f, 3.75f, 11.0f));

    const OXMSampleMaterial* material = v->getMaterial();
    ASSERT_NE(material, nullptr);
    EXPECT_EQ(array<int>(material, OXM::IntervalIndexList), (std::vector<int>{99, 149}));
    EXPECT_EQ(array<OXMenum>(material, OXM::IntervalModeList),
              (std::vector<OXMenum>{OXM::Enabled}));
    std::pair<float, float> range;
    ASSERT_TRUE(material->getValue(OXM::VisibleOpacityIndexRange, range));
    EXPECT_EQ(range, (std::pair<float, float>(100.0f, 149.0f)));
    EXPECT_EQ(
        array<OXMVector2<float>>(material->getChannel(OXM::Opacity), OXM::LookupTableHandleList),
        (std::vector<OXMVector2<float>>{{100.0f, 0.0f}, {149.0f, 1.0f}}));
    for (OXMenum id : OXMSampleMaterial::channelIDs()) {
        ASSERT_NE(material->getChannel(id), nullptr) << id;
        EXPECT_EQ(material->getChannel(id)->getParentLink().getOwner(), material) << id;
    }

    const auto histograms = array<OXMObjectLink>(v, OXM::HistogramList);
    ASSERT_EQ(histograms.size(), 1u);
    OXMObject* channel = OXMObject::linkedObject(histograms[0].getLink(), OXM::SampleTransferSpec);
    OXMenum input;
    ASSERT_TRUE(channel && channel->getValue(OXM::InputChannel, input));
    EXPECT_EQ(input, OXM::Gray);
    const OXMObjectLink parent = histograms[0].getLink()->getParentLink();
    EXPECT_EQ(parent.getOwner(), v);
    EXPECT_EQ(parent.getPropertyID(), OXM::HistogramList);
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

// Each renderer carries the settings of its class and no more: the camera ray tracer keeps its
// shading and sampling distance in the camera's settings, the others on themselves.
TEST(OXMSceneObjects, RenderPluginsAreCreatedByClassNameWithTheirOwnSettings)
{
    OXMSceneNames::registerSceneClasses();
    const std::pair<const char*, bool> renderers[] = {
        {"OXMRaytracing::Isosurface::RenderPlugin", true}, {"OXMOxm2RenderPlugin", false}};
    for (const auto& [name, shaded] : renderers) {
        OXMObjectRefPtr p(name);
        ASSERT_TRUE(p) << name;
        EXPECT_TRUE(p->prepareRoles());
        EXPECT_STREQ(p->getMetaClass()->getClassName(), name);
        EXPECT_TRUE(p->isOfType("OXMRenderPlugin")) << name;
        EXPECT_TRUE(p->isOfType(OXMRegisteredEnum(name))) << name;
        EXPECT_FALSE(p->isOfType(OXMRegisteredEnum("OXMScene"))) << name;
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
    // The camera ray tracer's settings are the scene camera's engine.
    OXMObjectPtr scene(new OXMScene);
    const auto engines = OXMObject::arrayOf<OXMObjectLink>(
        static_cast<OXMScene*>(scene.get())->getCamera(), OXM::RaytracingEngineList);
    ASSERT_EQ(engines.size(), 1u);
    EXPECT_TRUE(engines[0].linkIsOfType("OXMOxm2RenderSettings"));
    EXPECT_FALSE(engines[0].linkIsOfType("OXMScene"));
}

// Found the way the classification tool finds it: the link named in the tool's namespace.
TEST(OXMSceneObjects, TheSceneLinksTheRightsOfTheOpenFileAndTheirChangesAreHeard)
{
    OXMObjectPtr hold(new OXMScene);
    auto* scene = static_cast<OXMScene*>(hold.get());
    auto* rights = dynamic_cast<OXMTulvoRights*>(
        scene->getLinkedObject(OXMRegisteredEnum("TulvoRights", false, "oxwclassificationtool")));
    ASSERT_NE(rights, nullptr);
    EXPECT_EQ(rights, scene->getRights());
    EXPECT_TRUE(rights->getAllowClassificationEdit());
    struct Counter : OXMIOC
    {
        int changes = 0;
        void iocCallback(Message& message) override
        {
            changes += message.getType() == OXM::PropertyChanged ? 1 : 0;
        }
    } counter;
    OXMObjectIOCPtr listening(rights, &counter);
    EXPECT_TRUE(rights->setAllowClassificationEdit(false));
    EXPECT_FALSE(rights->getAllowClassificationEdit());
    EXPECT_EQ(counter.changes, 1);
}
