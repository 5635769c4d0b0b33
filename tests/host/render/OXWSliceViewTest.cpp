#include "OXWSliceView.h"
#include "OXWViewsTestSupport.h"

#include <OXMRegionOfInterest.h>

#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QWheelEvent>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

using namespace oxwviewtest;

namespace {

constexpr int Size = 32;

long long nonBlack(const QImage& image)
{
    long long n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if ((image.pixel(x, y) & 0x00ffffffu) != 0)
                ++n;
    return n;
}

// Waits for the pending recompute and a little longer, so that a second one would show.
void settle(OXWSliceView& view)
{
    ASSERT_TRUE(waitFor([&] { return !view.isRecomputePending(); }));
    QTest::qWait(3 * OXWSliceView::RecomputeDelay);
}

class SliceView : public ::testing::Test
{
protected:
    SliceView()
    {
        volume->getSampleGrid()->getIndexRange(OXM::Gray, first, last);
        view.resize(600, 240);
        view.setObject(volume);
    }

    // A region of the voxels above 800 with its default classification.
    OXMRegionOfInterest* addRegion()
    {
        std::vector<std::uint8_t> mask(std::size_t(Size) * Size * Size, 0);
        for (std::size_t i = 0; i < mask.size(); ++i)
            mask[i] = samples[i] > 800 ? 1 : 0;
        auto* roi = new OXMRegionOfInterest;
        EXPECT_TRUE(roi->setMask(mask));
        EXPECT_TRUE(volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
        EXPECT_TRUE(roi->execute(OXM::Init));
        EXPECT_TRUE(roi->getHistogram()->execute(OXM::Calculate));
        return roi;
    }
    // The voxel shown at pixel (x, y) of axial slice z.
    std::uint16_t axial(int x, int y, int z = Size / 2) const
    {
        return samples[z * Size * Size + y * Size + x];
    }
    // Pixels of the axial slice lit where the voxel is at most, and above, the value.
    std::pair<long long, long long> litAxial(int value)
    {
        const QImage image = view.getSliceImage(OXWSliceView::Axial);
        long long below = 0, above = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                (axial(x, y) <= value ? below : above) += (image.pixel(x, y) & 0xffffffu) != 0;
        return {below, above};
    }
    QImage axialImage() const { return view.getSliceImage(OXWSliceView::Axial); }

    std::unique_ptr<OXMObjectPtr> hold = std::make_unique<OXMObjectPtr>(phantom16(Size));
    OXMVolumeRenderObject* volume = static_cast<OXMVolumeRenderObject*>(hold->get());
    OXMSampleMaterial* material = volume->getMaterial();
    const std::uint16_t* samples = volume->getSampleGrid()->getSamples<std::uint16_t>();
    int first = 0;
    int last = 0;
    OXWSliceView view;
};

} // namespace

// Without an object the view says so; with the phantom each plane shows its slice, each
// pixel the table entry of its voxel (premultiplied colour over black); when the object dies
// the view clears.
TEST_F(SliceView, ShowsThePhantomWithTheDefaultMaterialUntilItDies)
{
    OXWSliceView empty;
    empty.resize(300, 120);
    EXPECT_FALSE(empty.hasSlices());
    EXPECT_EQ(empty.getEmptyText(), QStringLiteral("No volume selected"));
    EXPECT_TRUE(empty.getSliceImage(OXWSliceView::Axial).isNull());
    EXPECT_EQ(empty.getRenderedImage().size(), QSize(300, 120));

    ASSERT_TRUE(view.hasSlices());
    EXPECT_EQ(view.getRecomputeCount(), 1);
    for (auto plane : {OXWSliceView::Axial, OXWSliceView::Coronal, OXWSliceView::Sagittal}) {
        const QImage slice = view.getSliceImage(plane);
        EXPECT_EQ(slice.size(), QSize(Size, Size));
        EXPECT_GT(nonBlack(slice), Size * Size / 4) << plane;
    }
    const QImage image = axialImage();
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            ASSERT_EQ(image.pixel(x, y) & 0xffffffu,
                      view.getClassification().entryForBin(axial(x, y)) & 0xffffffu);
    EXPECT_EQ(view.getRenderedImage().size(), QSize(600, 240));
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    EXPECT_GT(nonBlack(view.grab().toImage()), 1000);

    hold.reset(); // the volume, its material and grid go
    settle(view);
    EXPECT_FALSE(view.hasSlices());
    EXPECT_EQ(view.getObject(), nullptr);
    EXPECT_EQ(view.getEmptyText(), QStringLiteral("No volume selected"));
}

TEST_F(SliceView, ABurstOfOpacityWritesRecomputesOnce)
{
    settle(view);
    const int before = view.getRecomputeCount();
    QSignalSpy recomputed(&view, &OXWSliceView::recomputed);
    OXMObject* opacity = link(material, OXM::Opacity);
    for (int i = 0; i < 10; ++i) {
        const float top = 0.1f * float(i + 1);
        ASSERT_TRUE(setArray<OXMVector2<float>>(opacity, OXM::LookupTableHandleList,
                                                {{float(first), 0.0f}, {float(last), top}}));
    }
    EXPECT_TRUE(view.isRecomputePending());
    EXPECT_EQ(view.getRecomputeCount(), before); // nothing yet: coalesced
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), before + 1);
    EXPECT_EQ(recomputed.count(), 1);
    EXPECT_EQ(qAlpha(view.getClassification().entryForBin(last)), 255); // the last curve
}

// A new material whose only interval is off shows all black, and its intervals are followed;
// the old material's channels no longer are.
TEST_F(SliceView, FollowsAReplacedMaterial)
{
    const QImage white = axialImage();
    OXMObjectPtr oldMaterial(material); // kept alive to write to its channels below
    auto* replacement = new OXMSampleMaterial;
    ASSERT_TRUE(replacement->setDefaultClassification(first, last));
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Disabled}));
    ASSERT_TRUE(volume->setLinkedObject(OXM::ApplicationSampleMaterial, replacement));
    settle(view);
    EXPECT_EQ(nonBlack(axialImage()), 0);
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Enabled}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    EXPECT_EQ(axialImage(), white);
    ASSERT_TRUE(material->getChannel(OXM::AmbientRed)
                    ->setCurve({{float(first), 0.5f}, {float(last), 0.5f}}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
}

// A region shows only its voxels, with its classification, and follows its mask; the volume,
// its own classification transparent, shows the region's voxels alone.
TEST_F(SliceView, RegionsShowOnlyTheirVoxelsWithTheirClassification)
{
    OXMRegionOfInterest* roi = addRegion();
    ASSERT_TRUE(material->getChannel(OXM::Opacity)->setCurve({{0.0f, 0.0f}, {1.0f, 0.0f}}));
    settle(view);
    for (OXMObject* shown : {static_cast<OXMObject*>(volume), static_cast<OXMObject*>(roi)}) {
        view.setObject(shown);
        ASSERT_TRUE(view.hasSlices());
        EXPECT_EQ(litAxial(800).first, 0);
        EXPECT_GT(litAxial(800).second, 0);
    }
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(roi->setMask(std::vector<std::uint8_t>(std::size_t(Size) * Size * Size, 0)));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    EXPECT_EQ(nonBlack(axialImage()), 0);
}

// The wheel over a third of the view moves through that plane's slices; a right drag sets
// window and level of the display, a double click resets them.
TEST_F(SliceView, TheWheelMovesThroughSlicesAndARightDragSetsWindowAndLevel)
{
    const auto wheel = [this](int x, int notches, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(QPointF(x, 120), view.mapToGlobal(QPoint(x, 120)), QPoint(),
                          QPoint(0, 120 * notches), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(&view, &event);
    };
    struct Step
    {
        int x, notches;
        Qt::KeyboardModifiers modifiers;
        OXWSliceView::Plane plane;
        int index;
    };
    for (const Step& s : {Step{50, 3, Qt::NoModifier, OXWSliceView::Axial, Size / 2 + 3},
                          Step{50, -1, Qt::ShiftModifier, OXWSliceView::Axial, Size / 2 - 7},
                          Step{50, -100, Qt::NoModifier, OXWSliceView::Axial, 0},
                          Step{550, 100, Qt::NoModifier, OXWSliceView::Sagittal, Size - 1}}) {
        wheel(s.x, s.notches, s.modifiers);
        EXPECT_EQ(view.sliceIndex(s.plane), s.index) << s.x << " " << s.notches;
    }
    const QImage bottom = axialImage();
    EXPECT_EQ(bottom.pixel(7, 9) & 0x00ffffffu,
              view.getClassification().entryForBin(axial(7, 9, 0)) & 0x00ffffffu);
    // Window 0.5 at level 0.25 shows the colours 0 .. 0.5 over the whole range.
    const QImage before = view.getRenderedImage();
    QTest::mousePress(&view, Qt::RightButton, Qt::NoModifier, QPoint(600, 120));
    QMouseEvent drag(QEvent::MouseMove, QPoint(0, 180), Qt::RightButton, Qt::RightButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&view, &drag);
    EXPECT_NEAR(view.window(), 0.5, 1e-9);
    EXPECT_NEAR(view.level(), 0.25, 1e-9);
    EXPECT_NE(view.getRenderedImage(), before);
    QTest::mouseDClick(&view, Qt::LeftButton, Qt::NoModifier, QPoint(300, 120));
    EXPECT_EQ(view.getRenderedImage(), before);
}
