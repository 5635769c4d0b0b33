#include "OXMHistogram.h"
#include "OXMHistogramResult.h"
#include "OXMMetaClass.h"
#include "OXMObjectPath.h"
#include "OXMObjectPtr.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMScene.h"
#include "OXMScenePhantom.h"
#include "OXMVolumeRenderObject.h"
#include "OXMVolumeTransform.h"
#include "OXWRoiAndVolumeExtractor.h"
#include "OXWSceneManager.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

struct Fixture
{
    OXMObjectPtr sceneHold{new OXMScene};
    OXMObjectPtr managerHold{new OXWSceneManager};
    OXMScene* scene = static_cast<OXMScene*>(sceneHold.get());
    OXWSceneManager* manager = static_cast<OXWSceneManager*>(managerHold.get());
    OXMVolumeRenderObject* volume = nullptr;
    std::vector<std::uint16_t> samples;
    OXMObjectPath volumePath;

    explicit Fixture(int size = 24)
    {
        manager->setScene(scene);
        samples = OXMScenePhantom::samples16(size);
        auto* grid = new OXMSampleGrid;
        grid->setSamples({size, size, size}, OXM::UInt16, samples);
        volume = OXMVolumeRenderObject::create(grid, "CT");
        OXMObjectLink link(volume, new OXMVolumeTransform);
        link.setPropertyID(OXM::VolumeRenderObjectList);
        manager->addAndSelectObject(link, OXMObjectPath());
        volumePath = manager->getSelection();
    }
    long long count(int b0, int b1, const std::vector<std::uint8_t>* mask = nullptr) const
    {
        long long n = 0;
        for (std::size_t i = 0; i < samples.size(); ++i)
            if ((!mask || (*mask)[i]) && samples[i] > b0 && samples[i] <= b1)
                ++n;
        return n;
    }
};

} // namespace

TEST(OXWRoiAndVolumeExtractor, RoiHoldsTheVoxelsOfTheInterval)
{
    Fixture f;
    const OXMInterval bone(1500, 2500);
    auto* roi =
        OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(f.volumePath, OXM::Gray, bone);
    ASSERT_NE(roi, nullptr);
    const long long expected = f.count(1500, 2500);
    EXPECT_GT(expected, 0);
    EXPECT_EQ(roi->getMaskVoxelCount(), expected);

    // As the tool does: into the selected volume's region list, selected, then Init.
    OXMObjectLink link(roi);
    link.setPropertyID(OXM::RegionOfInterestList);
    ASSERT_TRUE(f.manager->addAndSelectObject(link, f.volumePath));
    ASSERT_TRUE(roi->execute(OXM::Init));
    EXPECT_TRUE(roi->isRoleActive(OXM::RegionOfInterest));
    EXPECT_EQ(roi->getVolume(), f.volume);
    const OXMObjectPath selected = f.manager->getSelection();
    EXPECT_EQ(selected.getLink(-1), roi);
    EXPECT_EQ(selected.getPathDepth(), 3);
    EXPECT_EQ(selected.getPathElement(-1).getPropertyID(), OXM::RegionOfInterestList);

    // Its histogram counts exactly those voxels.
    OXMHistogram* h = roi->getHistogram();
    ASSERT_NE(h, nullptr);
    ASSERT_TRUE(h->execute(OXM::Calculate));
    double total = 0.0;
    for (float c : h->getResult()->getCounts())
        total += c;
    EXPECT_EQ((long long)total, expected);
    EXPECT_GT(h->getResult()->getFirstIndex(), 1500);

    // A region of the region: only voxels inside both.
    auto* inner = OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(selected, OXM::Gray,
                                                                           OXMInterval(1800, 5000));
    ASSERT_NE(inner, nullptr);
    OXMObjectPtr innerHold(inner);
    EXPECT_EQ(inner->getMaskVoxelCount(), f.count(1800, 2500));
}

TEST(OXWRoiAndVolumeExtractor, VolumeIsCroppedToTheVoxelsOfTheInterval)
{
    Fixture f(32);
    const OXMInterval insert(3000, 4000);
    auto* v = OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
        f.volumePath, OXM::Gray, insert);
    ASSERT_NE(v, nullptr);
    OXMObjectPtr hold(v);
    OXMSampleGrid* grid = v->getSampleGrid();
    ASSERT_NE(grid, nullptr);
    const OXMVector3<int> d = grid->getDimensions();
    EXPECT_LT(d.x, 32);
    EXPECT_LT(d.y, 32);
    EXPECT_LT(d.z, 32);
    long long inside = 0;
    for (long long i = 0; i < grid->getVoxelCount(); ++i) {
        const double g = grid->getNativeValue(i);
        if (g > 3000 && g <= 4000)
            ++inside;
        else
            EXPECT_EQ(g, 3000.0);
    }
    EXPECT_EQ(inside, f.count(3000, 4000));
    // Every face of the box touches a voxel of the interval.
    const auto box = v->getBoundingBox();
    EXPECT_LT(box.first.x, box.second.x);
    EXPECT_NE(v->getMaterial(), nullptr);
    EXPECT_NE(v->getRenderPlugin(), nullptr);

    // Placed beside the source.
    OXMObjectPath parent = f.volumePath;
    ASSERT_TRUE(parent.truncate(0, -2));
    OXMObjectLink link(v, new OXMVolumeTransform);
    link.setPropertyID(OXM::VolumeRenderObjectList);
    ASSERT_TRUE(f.manager->addAndSelectObject(link, parent));
    EXPECT_EQ(v->getParentLink().getOwner(), f.scene);

    // Nothing in the interval: no volume.
    EXPECT_EQ(OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
                  f.volumePath, OXM::Gray, OXMInterval(60000, 65000)),
              nullptr);
    EXPECT_EQ(OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(OXMObjectPath(), OXM::Gray,
                                                                       insert),
              nullptr);
}

TEST(OXWRoiAndVolumeExtractor, TransformOfTheSourceIsCopiedAsTheToolDoes)
{
    Fixture f;
    OXMObject* aux = f.volumePath.getAuxLink(-1);
    ASSERT_NE(aux, nullptr);
    aux->getProperty(OXM::TransformMatrix)->lock();
    auto* v = OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
        f.volumePath, OXM::Gray, OXMInterval(1500, 2500));
    ASSERT_NE(v, nullptr);
    OXMObjectPtr hold(v);
    auto* copy = dynamic_cast<OXMObject*>(OXMMetaClass::clone(aux));
    ASSERT_NE(copy, nullptr);
    OXMObjectPtr copyHold(copy);
    EXPECT_TRUE(copy->prepareRoles());
    std::pair<OXMVector3<float>, OXMVector3<float>> box;
    ASSERT_TRUE(v->getValue(OXM::BoundingBox, box));
    EXPECT_TRUE(copy->setValue(OXM::Origin, (box.first + box.second) / 2.0f));
    copy->getProperty(OXM::TransformMatrix)->lock();
    OXMObjectPath parent = f.volumePath;
    ASSERT_TRUE(parent.truncate(0, -2));
    OXMObjectLink link(v, copy);
    link.setPropertyID(OXM::VolumeRenderObjectList);
    ASSERT_TRUE(f.manager->addAndSelectObject(link, parent));
    EXPECT_EQ(f.manager->getSelection().getAuxLink(-1), copy);
    EXPECT_EQ(f.scene->getLinks(OXM::VolumeRenderObjectList).size(), 2u);
}
