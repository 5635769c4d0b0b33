// The 3D view on small synthetic volumes, compared pixel by pixel: what the classification and
// the render method show, and how the view follows the scene.

#include "OXWVolumeView.h"
#include "OXWViewsTestSupport.h"
#include "OXWVolumePipeline.h"

#include <OXMCamera.h>
#include <OXMRegionOfInterest.h>
#include <OXMScene.h>
#include <OXMSceneNames.h>
#include <OXMVolumeTransform.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <vtkVolume.h>

#include "OXWVolumePlacement.h"
#include <gtest/gtest.h>

#include <QSignalSpy>

#include <cmath>
#include <functional>
#include <memory>

using namespace oxwviewtest;

namespace {

using Handles = std::vector<OXMVector2<float>>;
const Handles One = {{100.0f, 1.0f}, {200.0f, 1.0f}};
const Handles Zero = {{100.0f, 0.0f}, {200.0f, 0.0f}};
using Voxels = std::function<std::uint16_t(double x, double y, double z)>;

constexpr int Size = 32;

// Distance of a voxel from the centre of the volume, in voxels.
double radius(double x, double y, double z)
{
    const double c = (Size - 1) / 2.0;
    return std::sqrt((x - c) * (x - c) + (y - c) * (y - c) + (z - c) * (z - c));
}

// A cube of grey value 100 with a ball of 200 in its middle.
std::uint16_t ballInCube(double x, double y, double z)
{
    return radius(x, y, z) < Size / 4.0 ? 200 : 100;
}

// The voxels of the volume, x fastest.
template <typename T>
std::vector<T> voxels(const Voxels& value)
{
    std::vector<T> v;
    for (int z = 0; z < Size; ++z)
        for (int y = 0; y < Size; ++y)
            for (int x = 0; x < Size; ++x)
                v.push_back(T(value(x, y, z)));
    return v;
}

bool reddish(QRgb p)
{
    return qRed(p) > 40 && 2 * qRed(p) > 3 * std::max(qGreen(p), qBlue(p));
}

bool greenish(QRgb p)
{
    return qGreen(p) > 40 && 2 * qGreen(p) > 3 * std::max(qRed(p), qBlue(p));
}

class VolumeView : public ::testing::Test
{
protected:
    void show(const Voxels& value)
    {
        auto* grid = new OXMSampleGrid;
        ASSERT_TRUE(
            grid->setSamples({Size, Size, Size}, OXM::UInt16, voxels<std::uint16_t>(value)));
        volume = OXMVolumeRenderObject::create(grid, "Test");
        ASSERT_TRUE(scene->addVolume(volume));
        ASSERT_TRUE(volume->getHistogram()->execute(OXM::Calculate));
        view.resize(160, 160);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        view.setObject(volume);
        ASSERT_TRUE(view.isShowing()) << view.getEmptyText().toStdString();
    }

    // A region of the ball's voxels with its own material.
    OXMSampleMaterial* addBallRegion()
    {
        auto* roi = new OXMRegionOfInterest;
        EXPECT_TRUE(roi->setMask(voxels<std::uint8_t>(
            [](double x, double y, double z) { return ballInCube(x, y, z) == 200; })));
        EXPECT_TRUE(volume->appendLink(OXM::RegionOfInterestList, OXMObjectLink(roi)));
        EXPECT_TRUE(roi->execute(OXM::Init));
        EXPECT_TRUE(roi->getHistogram()->execute(OXM::Calculate));
        return roi->getMaterial();
    }

    OXMSampleMaterial* material() const { return volume->getMaterial(); }
    // The ball opaque, the cube around it transparent.
    void opaqueBall(OXMSampleMaterial* m = nullptr)
    {
        curve(OXM::Opacity, {{100.0f, 0.0f}, {150.0f, 0.0f}, {151.0f, 1.0f}, {200.0f, 1.0f}}, m);
    }
    void scale(OXMenum channel, float value)
    {
        ASSERT_TRUE(material()->getChannel(channel)->setValue(OXM::Scale, value));
    }
    void curve(OXMenum channel, const Handles& handles, OXMSampleMaterial* m = nullptr)
    {
        ASSERT_TRUE((m ? m : material())->getChannel(channel)->setCurve(handles));
    }
    // Ambient and diffuse colour alike.
    void colour(const Handles& red, const Handles& green, const Handles& blue,
                OXMSampleMaterial* m = nullptr)
    {
        for (OXMenum c : {OXM::AmbientRed, OXM::DiffuseRed})
            curve(c, red, m);
        for (OXMenum c : {OXM::AmbientGreen, OXM::DiffuseGreen})
            curve(c, green, m);
        for (OXMenum c : {OXM::AmbientBlue, OXM::DiffuseBlue})
            curve(c, blue, m);
    }
    QImage frame()
    {
        QCoreApplication::processEvents();
        view.updateNow();
        return view.grabImage();
    }
    // The picture with the volume hidden: the background alone.
    QImage background()
    {
        view.pipeline().volume()->SetVisibility(0);
        const QImage image = view.grabImage();
        view.pipeline().volume()->SetVisibility(1);
        return image;
    }
    static int count(const QImage& image, const std::function<bool(QRgb)>& test)
    {
        int n = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                n += test(image.pixel(x, y)) ? 1 : 0;
        return n;
    }
    // Unlit rendering: the colours as the classification gives them, whatever the normals.
    void unlit()
    {
        ASSERT_TRUE(volume->getRenderPlugin()->setValue(OXMSceneNames::shadingModel(),
                                                        OXMSceneNames::scatterHQ()));
    }

    OXWApplication app;
    OXMObjectPtr sceneHold{new OXMScene};
    OXMScene* scene = static_cast<OXMScene*>(sceneHold.get());
    OXMVolumeRenderObject* volume = nullptr;
    OXWVolumeView view;
};

} // namespace

// A fully transparent classification shows the background alone; the ball alone classified,
// red in ambient and diffuse light, shows red; disabling its interval takes it away.
TEST_F(VolumeView, TheClassificationDecidesWhatShows)
{
    show(ballInCube);
    ASSERT_TRUE(setArray<int>(material(), OXM::IntervalIndexList, {99, 150, 200}));
    ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList, {OXM::Enabled, OXM::Enabled}));
    colour(One, Zero, Zero);
    curve(OXM::Opacity, Zero);
    EXPECT_EQ(frame(), background());
    opaqueBall();
    EXPECT_GT(count(frame(), reddish), 160 * 160 / 20);
    ASSERT_TRUE(
        setArray<OXMenum>(material(), OXM::IntervalModeList, {OXM::Enabled, OXM::Disabled}));
    EXPECT_EQ(frame(), background());
    // The volume classifies the ball green; a region over the ball classifies it red: the ball
    // shows red only, drawn with the region's classification instead of the volume's.
    ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList, {OXM::Enabled, OXM::Enabled}));
    unlit();
    colour(Zero, One, Zero);
    EXPECT_GT(count(frame(), greenish), 160 * 160 / 20);
    OXMSampleMaterial* region = addBallRegion();
    curve(OXM::Opacity, One, region);
    colour(One, Zero, Zero, region);
    const QImage both = frame();
    ASSERT_EQ(view.getRegionCount(), 1);
    EXPECT_EQ(count(both, greenish), 0);
    EXPECT_GT(count(both, reddish), 160 * 160 / 20);
}

// Lit by the material: a red ambient colour shows red, weighted by the intensities; a red
// highlight shows red on a white surface; a red ambient and a blue diffuse colour show red at
// the ball's rim, which the light grazes, on the GPU ray caster, which lights the two apart,
// while the CPU ray caster lights their weighted mean (purple) alike everywhere.
TEST_F(VolumeView, TheMaterialsColoursShowWhereTheirLightFalls)
{
    show(ballInCube);
    opaqueBall();
    scale(OXM::AmbientIntensity, 0.6f);
    scale(OXM::DiffuseIntensity, 0.4f);
    EXPECT_EQ(count(frame(), reddish), 0);
    curve(OXM::AmbientGreen, Zero);
    curve(OXM::AmbientBlue, Zero);
    EXPECT_GT(count(frame(), reddish), 160 * 160 / 40);

    scale(OXM::AmbientIntensity, 0.0f);
    scale(OXM::DiffuseIntensity, 0.3f);
    scale(OXM::SpecularIntensity, 1.0f);
    EXPECT_EQ(count(frame(), reddish), 0);
    scale(OXM::SpecularGreen, 0.0f);
    scale(OXM::SpecularBlue, 0.0f);
    EXPECT_GT(count(frame(), reddish), 20);

    for (OXMenum c : {OXM::DiffuseRed, OXM::DiffuseGreen})
        curve(c, Zero);
    curve(OXM::AmbientRed, One);
    curve(OXM::DiffuseBlue, One);
    scale(OXM::SpecularIntensity, 0.0f);
    scale(OXM::AmbientIntensity, 0.5f);
    scale(OXM::DiffuseIntensity, 0.5f);
    for (bool hardware : {false, true}) {
        view.pipeline().useHardware(hardware);
        EXPECT_EQ(count(frame(), reddish) > 20, hardware);
    }
}

// Writes in one event-loop turn render once; inside a user action at interactive quality,
// refined once the action is over. Its undo restores the picture exactly.
TEST_F(VolumeView, ABurstOfWritesRendersOnceIsRefinedUndoesAndTheCameraIsFollowed)
{
    show(ballInCube);
    const QImage before = frame();
    QSignalSpy frames(&view, &OXWVolumeView::rendered);
    const int action = app.userActionBegin(QStringLiteral("Change opacity"));
    for (int i = 1; i <= 10; ++i)
        curve(OXM::Opacity, {{100.0f, 0.0f}, {150.0f, 0.08f * i}, {200.0f, float(i) / 10.0f}});
    EXPECT_TRUE(view.isUpdatePending());
    ASSERT_TRUE(waitFor([&] { return frames.count() >= 1; }));
    QCoreApplication::processEvents();
    ASSERT_EQ(frames.count(), 1);
    EXPECT_TRUE(frames.at(0).at(0).toBool()); // interactive
    EXPECT_TRUE(view.pipeline().isInteractive());
    app.userActionEnd(action);
    ASSERT_TRUE(waitFor([&] { return frames.count() == 2; }, 3000));
    EXPECT_FALSE(frames.at(1).at(0).toBool());
    EXPECT_FALSE(view.pipeline().isInteractive());
    EXPECT_NE(frame(), before);
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_EQ(frame(), before);
    // The view placed a camera around the volume, and follows it when it changes elsewhere.
    OXMObject* camera = scene->getCamera();
    OXMVector3<float> position, focal;
    ASSERT_TRUE(camera->getValue(OXMSceneNames::cameraPosition(), position));
    ASSERT_TRUE(camera->getValue(OXMSceneNames::cameraFocalPoint(), focal));
    EXPECT_FALSE(position == focal);
    ASSERT_TRUE(
        camera->setValue(OXMSceneNames::cameraPosition(),
                         OXMVector3<float>(position.x, position.y, position.z * 2.0f + 100.0f)));
    ASSERT_TRUE(waitFor([&] { return !view.grabImage().isNull() && view.grabImage() != before; }));
}

// The placement moves the volume: its origin far aside takes it out of the picture; turned a
// quarter about z, the reset camera shows the same front as without the turn.
TEST_F(VolumeView, ThePlacementMovesAndTurnsTheVolume)
{
    show([](double x, double, double z) { return std::uint16_t(x < 8 && z > 20 ? 200 : 100); });
    unlit();
    curve(OXM::Opacity, {{100.0f, 0.05f}, {200.0f, 1.0f}});
    const QImage front = frame();
    OXMObject* placement = OXWVolumePlacement::findTransform(volume);
    ASSERT_NE(placement, nullptr);
    ASSERT_TRUE(placement->setValue(OXM::Origin, OXMVector3<float>(1000.0f, 0.0f, 0.0f)));
    EXPECT_EQ(frame(), background());
    ASSERT_TRUE(placement->setValue(
        OXM::TransformMatrix, std::vector<float>{0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    view.resetCamera();
    const QImage turned = frame();
    int differing = 0;
    for (int y = 0; y < front.height(); ++y)
        for (int x = 0; x < front.width(); ++x)
            differing += std::abs(qGray(front.pixel(x, y)) - qGray(turned.pixel(x, y))) > 8;
    EXPECT_LT(differing, 160 * 160 / 100);
}

// 16-bit data with a slab of one grey value v beside a column of a top value: a spike of the
// opacity one grey value wide at v shows the slab, one at v ± 1 does not (only the edge by the
// top voxels, whose interpolation passes through it, remains). Exact on the GPU ray caster (its
// own lookup); on the CPU ray caster only while the data span less than 32 768 grey values: its
// table holds every second one beyond, and its entry for v holds v - 1 as well.
class SpikeOneGreyValueWide : public VolumeView,
                              public ::testing::WithParamInterface<std::pair<int, int>>
{
protected:
    int slab(bool hardware, int spike)
    {
        view.pipeline().useHardware(hardware);
        curve(OXM::Opacity,
              {{float(spike - 1), 0.0f}, {float(spike), 1.0f}, {float(spike + 1), 0.0f}});
        return count(frame(), [](QRgb p) { return qGray(p) > 100; });
    }
};

TEST_P(SpikeOneGreyValueWide, ShowsExactlyOnTheGpuPathAndOnTheCpuPathInNarrowData)
{
    const int top = GetParam().first, v = GetParam().second;
    show([top, v](double x, double, double) {
        return std::uint16_t(x == 0 ? top : (x >= 12 && x < 20 ? v : 0));
    });
    unlit();
    const int shown = slab(true, v);
    EXPECT_TRUE(view.pipeline().isExactOnHardware());
    EXPECT_GT(shown, 160 * 160 / 20);
    EXPECT_LT(slab(true, v + 1), shown / 10);
    EXPECT_LT(slab(true, v - 1), shown / 10);
    EXPECT_EQ(slab(false, v) > shown / 2, top < 32768);
}

INSTANTIATE_TEST_SUITE_P(Values, SpikeOneGreyValueWide,
                         ::testing::Values(std::pair(30000, 20001), std::pair(65535, 32768)));
