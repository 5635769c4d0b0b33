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

struct Fixture
{
    OXMObjectPtr hold{phantom16(Size)};
    OXMVolumeRenderObject* volume = static_cast<OXMVolumeRenderObject*>(hold.get());
    OXMSampleMaterial* material = volume->getMaterial();
    const std::uint16_t* samples = volume->getSampleGrid()->getSamples<std::uint16_t>();
    int first = 0;
    int last = 0;

    Fixture() { volume->getSampleGrid()->getIndexRange(OXM::Gray, first, last); }

    // A region of the voxels above 800 with its default classification.
    OXMRegionOfInterest* addRegion()
    {
        const long long voxels = (long long)Size * Size * Size;
        std::vector<std::uint8_t> mask(std::size_t(voxels), 0);
        for (long long i = 0; i < voxels; ++i)
            mask[std::size_t(i)] = samples[i] > 800 ? 1 : 0;
        auto* roi = new OXMRegionOfInterest;
        EXPECT_TRUE(roi->setMask(mask));
        EXPECT_TRUE(volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
        EXPECT_TRUE(roi->execute(OXM::Init));
        EXPECT_TRUE(roi->getHistogram()->execute(OXM::Calculate));
        return roi;
    }
    // Pixels of the axial slice lit outside and inside the region.
    std::pair<long long, long long> litAxial(const QImage& axial) const
    {
        long long outside = 0, inside = 0;
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                ((this->axial(x, y) <= 800) ? outside : inside) +=
                    (axial.pixel(x, y) & 0x00ffffffu) != 0 ? 1 : 0;
        return {outside, inside};
    }

    // The voxel shown at pixel (x, y) of axial slice z.
    std::uint16_t axial(int x, int y, int z = Size / 2) const
    {
        return samples[z * Size * Size + y * Size + x];
    }
};

} // namespace

TEST(OXWSliceView, EmptyStateWithoutObject)
{
    OXWSliceView view;
    view.resize(300, 120);
    EXPECT_FALSE(view.hasSlices());
    EXPECT_EQ(view.getEmptyText(), QStringLiteral("No volume selected"));
    view.setObject(nullptr);
    EXPECT_FALSE(view.hasSlices());
    EXPECT_EQ(view.getEmptyText(), QStringLiteral("No volume selected"));
    EXPECT_TRUE(view.getSliceImage(OXWSliceView::Axial).isNull());
    EXPECT_EQ(view.getRenderedImage().size(), QSize(300, 120));
}

TEST(OXWSliceView, ShowsThePhantomWithTheDefaultMaterial)
{
    Fixture f;
    OXWSliceView view;
    view.resize(600, 240);
    view.setObject(f.volume);
    ASSERT_TRUE(view.hasSlices());
    EXPECT_EQ(view.getRecomputeCount(), 1);
    for (auto plane : {OXWSliceView::Axial, OXWSliceView::Coronal, OXWSliceView::Sagittal}) {
        const QImage slice = view.getSliceImage(plane);
        EXPECT_EQ(slice.size(), QSize(Size, Size));
        EXPECT_GT(nonBlack(slice), Size * Size / 4) << plane;
    }
    // Pixel = table entry of the voxel (premultiplied colour over black).
    const QImage axial = view.getSliceImage(OXWSliceView::Axial);
    for (int y = 0; y < Size; y += 5)
        for (int x = 0; x < Size; x += 3)
            EXPECT_EQ(axial.pixel(x, y) & 0x00ffffffu,
                      view.getClassification().entryForBin(f.axial(x, y)) & 0x00ffffffu);
    const QImage rendered = view.getRenderedImage();
    EXPECT_EQ(rendered.size(), QSize(600, 240));
    EXPECT_GT(nonBlack(rendered), 1000);

    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    EXPECT_GT(nonBlack(view.grab().toImage()), 1000);
}

TEST(OXWSliceView, BurstOfOpacityWritesRecomputesOnce)
{
    Fixture f;
    OXWSliceView view;
    view.setObject(f.volume);
    settle(view);
    const int before = view.getRecomputeCount();
    QSignalSpy recomputed(&view, &OXWSliceView::recomputed);

    OXMObject* opacity = link(f.material, OXM::Opacity);
    for (int i = 0; i < 10; ++i) {
        const float top = 0.1f * float(i + 1);
        ASSERT_TRUE(setArray<OXMVector2<float>>(opacity, OXM::LookupTableHandleList,
                                                {{float(f.first), 0.0f}, {float(f.last), top}}));
    }
    EXPECT_TRUE(view.isRecomputePending());
    EXPECT_EQ(view.getRecomputeCount(), before); // nothing yet: coalesced
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), before + 1);
    EXPECT_EQ(recomputed.count(), 1);
    // The last curve is shown: opacity 1 at the last bin.
    EXPECT_EQ(qAlpha(view.getClassification().entryForBin(f.last)), 255);
}

TEST(OXWSliceView, DisabledIntervalDarkensItsVoxels)
{
    Fixture f;
    OXWSliceView view;
    view.setObject(f.volume);
    // A bone voxel of the axial slice, bright with the default ramp.
    int bx = -1, by = -1;
    for (int y = 0; y < Size && bx < 0; ++y)
        for (int x = 0; x < Size; ++x)
            if (f.axial(x, y) > 1500) {
                bx = x;
                by = y;
                break;
            }
    ASSERT_GE(bx, 0);
    // And a soft-tissue voxel below the border.
    int tx = -1, ty = -1;
    for (int y = 0; y < Size && tx < 0; ++y)
        for (int x = 0; x < Size; ++x)
            if (f.axial(x, y) > 800 && f.axial(x, y) <= 1500) {
                tx = x;
                ty = y;
                break;
            }
    ASSERT_GE(tx, 0);
    const QImage before = view.getSliceImage(OXWSliceView::Axial);
    EXPECT_NE(before.pixel(bx, by) & 0x00ffffffu, 0u);
    EXPECT_NE(before.pixel(tx, ty) & 0x00ffffffu, 0u);

    // Two intervals: up to 1500 and above; the upper one off. Borders first, then modes, as a
    // tool writes them: one recompute.
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(setArray<int>(f.material, OXM::IntervalIndexList, {f.first - 1, 1500, f.last}));
    ASSERT_TRUE(
        setArray<OXMenum>(f.material, OXM::IntervalModeList, {OXM::Enabled, OXM::Disabled}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    const QImage after = view.getSliceImage(OXWSliceView::Axial);
    EXPECT_EQ(after.pixel(bx, by), qRgb(0, 0, 0));
    EXPECT_EQ(after.pixel(tx, ty), before.pixel(tx, ty));
    EXPECT_LT(nonBlack(after), nonBlack(before));
}

TEST(OXWSliceView, FollowsChannelsAndAReplacedMaterial)
{
    Fixture f;
    OXWSliceView view;
    view.setObject(f.volume);
    const QImage white = view.getSliceImage(OXWSliceView::Axial);

    // Diffuse red shares the ambient red table; a change of the ambient channel shows.
    auto* ambientRed = f.material->getChannel(OXM::AmbientRed);
    ASSERT_TRUE(f.material->getChannel(OXM::DiffuseRed)->setReference(ambientRed));
    settle(view);
    ASSERT_TRUE(ambientRed->setCurve({{float(f.first), 0.0f}, {float(f.last), 0.0f}}));
    settle(view);
    const QImage cyan = view.getSliceImage(OXWSliceView::Axial);
    bool anyRed = false;
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            anyRed = anyRed || qRed(cyan.pixel(x, y)) != 0;
    EXPECT_FALSE(anyRed);
    EXPECT_EQ(nonBlack(cyan), nonBlack(white));

    // A new material whose only interval is off: all black, and its channels are followed.
    OXMObjectPtr oldMaterial(f.material); // kept alive to write to its channels below
    auto* replacement = new OXMSampleMaterial;
    ASSERT_TRUE(replacement->setDefaultClassification(f.first, f.last));
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Disabled}));
    ASSERT_TRUE(f.volume->setLinkedObject(OXM::ApplicationSampleMaterial, replacement));
    settle(view);
    EXPECT_EQ(nonBlack(view.getSliceImage(OXWSliceView::Axial)), 0);
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(setArray<OXMenum>(replacement, OXM::IntervalModeList, {OXM::Enabled}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    EXPECT_EQ(view.getSliceImage(OXWSliceView::Axial), white);
    // The old material's channels are no longer followed.
    ASSERT_TRUE(ambientRed->setCurve({{float(f.first), 1.0f}, {float(f.last), 1.0f}}));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
}

TEST(OXWSliceView, ClearsWhenTheObjectDies)
{
    auto f = std::make_unique<Fixture>();
    OXWSliceView view;
    view.setObject(f->volume);
    ASSERT_TRUE(view.hasSlices());
    f.reset(); // the volume, its material and grid go
    settle(view);
    EXPECT_FALSE(view.hasSlices());
    EXPECT_EQ(view.getObject(), nullptr);
    EXPECT_EQ(view.getEmptyText(), QStringLiteral("No volume selected"));
}

TEST(OXWSliceView, RegionShowsOnlyItsVoxelsWithItsClassification)
{
    Fixture f;
    const long long voxels = (long long)Size * Size * Size;
    OXMRegionOfInterest* roi = f.addRegion();

    OXWSliceView view;
    view.setObject(roi);
    ASSERT_TRUE(view.hasSlices());
    const std::pair<long long, long long> lit = f.litAxial(view.getSliceImage(OXWSliceView::Axial));
    EXPECT_EQ(lit.first, 0);
    EXPECT_GT(lit.second, 0);
    // A change of the region's mask shows.
    const int count = view.getRecomputeCount();
    ASSERT_TRUE(roi->setMask(std::vector<std::uint8_t>(std::size_t(voxels), 0)));
    settle(view);
    EXPECT_EQ(view.getRecomputeCount(), count + 1);
    EXPECT_EQ(nonBlack(view.getSliceImage(OXWSliceView::Axial)), 0);
}

// The volume's classification transparent: its slices show the region's voxels alone.
TEST(OXWSliceView, AVolumeShowsItsRegionsVoxelsWithTheirClassification)
{
    Fixture f;
    f.addRegion();
    ASSERT_TRUE(f.material->getChannel(OXM::Opacity)->setCurve({{0.0f, 0.0f}, {1.0f, 0.0f}}));
    OXWSliceView view;
    view.setObject(f.volume);
    const std::pair<long long, long long> lit = f.litAxial(view.getSliceImage(OXWSliceView::Axial));
    EXPECT_EQ(lit.first, 0);
    EXPECT_GT(lit.second, 0);
}

// The wheel over a third of the view moves through that plane's slices; a right drag sets
// window and level of the display, a double click resets them.
TEST(OXWSliceView, TheWheelMovesThroughSlicesAndARightDragSetsWindowAndLevel)
{
    Fixture f;
    OXWSliceView view;
    view.resize(600, 240);
    view.setObject(f.volume);
    const auto wheel = [&view](int x, int notches, Qt::KeyboardModifiers modifiers) {
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
    const QImage axial = view.getSliceImage(OXWSliceView::Axial);
    EXPECT_EQ(axial.pixel(7, 9) & 0x00ffffffu,
              view.getClassification().entryForBin(f.axial(7, 9, 0)) & 0x00ffffffu);

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
