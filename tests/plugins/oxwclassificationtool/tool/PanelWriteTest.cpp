// Edits in the panel written back to the host: a handle drag as one undo step, a split of the
// interval list, colours into the resolved channels, the sharing of the diffuse colour table,
// the spin boxes; and an interval turned into a new region or volume.

#include "PanelFixture.h"

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTabWidget>

#include <OXWSpinBox.h>

#include <OXMError.h>
#include <OXMProperty.h>
#include <OXMRegionOfInterest.h>
#include <OXMScenePhantom.h>

#include <cstring>

#include <cmath>

using namespace paneltest;

namespace {

class PanelWrite : public PanelFixture
{
protected:
    void expectHandlesNear(const HandleList& actual, const HandleList& expected, const char* what)
    {
        ASSERT_EQ(actual.size(), expected.size()) << what;
        for (std::size_t k = 0; k < actual.size(); ++k) {
            EXPECT_NEAR(actual[k].x, expected[k].x, 1e-4f) << what << " handle " << k;
            EXPECT_NEAR(actual[k].y, expected[k].y, 1e-6f) << what << " handle " << k;
        }
    }

    // Sets the colour curves of interval i (local x, model colour values).
    void setColours(int i, const HandleList& red, const HandleList& green, const HandleList& blue)
    {
        Info* interval = model()->interval(i);
        ASSERT_NE(interval, nullptr);
        ASSERT_TRUE(interval->setReferenceHandles(Red, red));
        ASSERT_TRUE(interval->setReferenceHandles(Green, green));
        ASSERT_TRUE(interval->setReferenceHandles(Blue, blue));
    }

    void showColourPage(int page)
    {
        // The colour set of the new page is read into a new model.
        widget<QTabWidget>("mColorManipulationTabWidget")->setCurrentIndex(page);
        ASSERT_TRUE(settle());
    }
};

const HandleList DefaultWhite{{float(PanelFixture::First), 1.0f},
                              {float(PanelFixture::Last), 1.0f}};

} // namespace

TEST_F(PanelWrite, AHandleDragIsOneUndoStepWhoseUndoRestoresHostAndModel)
{
    showPanel();
    const HandleList original{{float(First), 0.0f}, {17.0f, 0.5f}, {float(Last), 1.0f}};
    const int reads = panel->objectInfoReadCount();
    ASSERT_TRUE(setArray(channel(OXM::Opacity), OXM::LookupTableHandleList, original));
    ASSERT_TRUE(waitForReread(reads));
    ASSERT_EQ(model()->intervalCount(), 1);
    const HandleList fitted = model()->interval(0)->handles(Opacity);
    ASSERT_EQ(fitted.size(), 3u);
    ASSERT_EQ(app.undoStack()->count(), 0);

    OXWLUTWorkArea* w = workArea();
    const QPoint from = handlePoint(0, 1);
    const QPoint to = pointAt(model()->positionFromGrey(20.0f), 0.8f);
    press(w, from);
    ASSERT_EQ(w->pressAction(), int(OXWLUTWorkArea::PressHandle));
    for (int step = 1; step <= 4; ++step) {
        move(w, from + (to - from) * step / 4);
    }
    release(w, to);
    ASSERT_TRUE(settle());

    // One step, holding the whole drag, named by the panel's action inside the press's.
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change opacity"));
    const HandleList dragged = handleList(channel(OXM::Opacity));
    ASSERT_EQ(dragged.size(), 3u);
    EXPECT_NEAR(dragged[1].x, 20.0f, 1e-3f);
    EXPECT_NEAR(dragged[1].y, 0.8f, 2.0f / float(w->contentsRect().height()));
    expectHandlesNear(dragged, expectedHostHandles(Opacity), "dragged opacity");

    const int readsBeforeUndo = panel->objectInfoReadCount();
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_EQ(handleList(channel(OXM::Opacity)), original);
    // The model follows with the re-read 30 ms later.
    EXPECT_TRUE(panel->updateObjectInfoTimer()->isActive());
    EXPECT_NE(model()->interval(0)->handles(Opacity), fitted);
    ASSERT_TRUE(waitForReread(readsBeforeUndo));
    ASSERT_EQ(model()->intervalCount(), 1);
    EXPECT_EQ(model()->interval(0)->handles(Opacity), fitted);
    EXPECT_EQ(app.undoStack()->redoCount(), 1);

    // A change outside a press is a step of its own; the panel's own write needs no re-read.
    ASSERT_TRUE(model()->interval(0)->setReferenceHandles(Opacity, {{0, 0.1f}, {0.5f, 0.9f}}));
    emit w->objectOpacityChanged();
    expectHandlesNear(handleList(channel(OXM::Opacity)), expectedHostHandles(Opacity), "set");
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change opacity"));
    EXPECT_TRUE(panel->isListening());
    EXPECT_FALSE(panel->updateObjectInfoTimer()->isActive());
}

TEST_F(PanelWrite, ASplitThroughTheContextMenuWritesTheIntervalLists)
{
    showPanel();
    OXWLUTWorkArea* w = workArea();
    // Right click in the middle of cell 6 (grey value 16).
    const QPoint at = pointAt((6.0f + 0.5f) / float(Cells), 0.9f);
    // A right click as X11 delivers it: press, menu request; the menu takes the release.
    press(w, at, Qt::RightButton);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, w->mapToGlobal(at));
    QApplication::sendEvent(w, &event);
    ASSERT_TRUE(w->contextMenu()->isVisible());
    forgetButtons();
    int found = 0;
    for (QAction* action : w->contextMenu()->findChildren<QAction*>()) {
        if (action->text() == QStringLiteral("At right side") && ++found == 1) {
            action->trigger();
        }
    }
    ASSERT_EQ(found, 1);
    w->contextMenu()->hide();
    ASSERT_EQ(model()->intervalCount(), 2);

    // The border between the two intervals, at k + 0.5 in index units, is written as k.
    const float end = model()->greyFromPosition(model()->interval(0)->to());
    const int k = int(std::floor(end));
    ASSERT_NEAR(end, float(k) + 0.5f, 1e-3f);
    EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList),
              std::vector<int>({First - 1, k, Last}));
    EXPECT_EQ(array<OXMenum>(material(), OXM::IntervalModeList),
              std::vector<OXMenum>({OXM::Enabled, OXM::Enabled}));
    EXPECT_EQ(intervalNames(material()),
              std::vector<QByteArray>({model()->interval(0)->name().toLocal8Bit(),
                                       model()->interval(1)->name().toLocal8Bit()}));

    // Opacity and colours of both intervals.
    const OXMenum ids[] = {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    for (int c = 0; c < 4; ++c) {
        expectHandlesNear(handleList(channel(ids[c])), expectedHostHandles(Opacity + c), "split");
        EXPECT_GT(handleList(channel(ids[c])).size(), 2u);
    }
    EXPECT_TRUE(panel->isListening());
    ASSERT_TRUE(settle());
    EXPECT_EQ(model()->intervalCount(), 2);
}

// The colours of the page's set go to the channels it resolves to: the ambient ones, the
// diffuse ones, or the ambient ones again when the diffuse table is shared. Model colours are
// host values times 256 (the host's white reads as 255.5).
class PanelColours : public PanelWrite, public ::testing::WithParamInterface<int>
{
};

TEST_P(PanelColours, GoToTheChannelsThePageResolvesTo)
{
    const bool diffusePage = GetParam() > 0;
    const bool shared = GetParam() == 2;
    const OXMenum ambient[] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    const OXMenum diffuse[] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    for (int c = 0; c < 3 && shared; ++c) {
        ASSERT_TRUE(channel(diffuse[c])->setReference(channel(ambient[c])));
    }
    const HandleList diffuseOwn = handleList(channel(OXM::DiffuseRed));
    showColourPage(diffusePage ? 1 : 0);
    EXPECT_EQ(widget<QCheckBox>("mDiffuseSharedColortableCheckBox")->isChecked(), shared);
    const OXMenum* written = diffusePage && !shared ? diffuse : ambient;
    EXPECT_EQ(panel->redObject(), channel(written[0]));
    EXPECT_EQ(panel->blueObject(), channel(written[2]));
    EXPECT_EQ(panel->intensityObject(),
              channel(diffusePage ? OXM::DiffuseIntensity : OXM::AmbientIntensity));
    for (int c : {Red, Green, Blue}) {
        for (const Handle& h : model()->interval(0)->handles(c)) {
            EXPECT_FLOAT_EQ(h.y, 255.5f) << "channel " << c;
        }
    }
    const int steps = app.undoStack()->count();
    setColours(0, {{0.0f, 0.5f}, {1.0f, 255.5f}}, {{0.0f, 128.0f}, {1.0f, 128.0f}},
               {{0.0f, 64.0f}, {1.0f, 64.0f}});
    emit(diffusePage ? diffuseBar() : ambientBar())->objectColorChanged();
    const float x0 = float(First);
    const float x1 = float(Last);
    EXPECT_EQ(handleList(channel(written[0])),
              HandleList({{x0, 0.001953125f}, {x1, 0.998046875f}}));
    EXPECT_EQ(handleList(channel(written[1])), HandleList({{x0, 0.5f}, {x1, 0.5f}}));
    EXPECT_EQ(handleList(channel(written[2])), HandleList({{x0, 0.25f}, {x1, 0.25f}}));
    OXMenum mode;
    ASSERT_TRUE(channel(written[0])->getValue(OXM::LookupTableHandleMode, mode));
    EXPECT_EQ(mode, OXM::Linear);
    // The other set keeps its own tables.
    EXPECT_EQ(handleList(channel(written == ambient ? OXM::DiffuseRed : OXM::AmbientRed)),
              written == ambient ? diffuseOwn : DefaultWhite);
    EXPECT_EQ(app.undoStack()->count(), steps + 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change color"));
}

INSTANTIATE_TEST_SUITE_P(AmbientDiffuseShared, PanelColours, ::testing::Values(0, 1, 2));

TEST_F(PanelWrite, TheSharedCheckBoxLinksTheDiffuseChannelsToTheAmbientOnes)
{
    showColourPage(1);
    auto* shared = widget<QCheckBox>("mDiffuseSharedColortableCheckBox");
    shared->click();
    const OXMenum diffuse[] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    const OXMenum ambient[] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    for (int c = 0; c < 3; ++c) {
        OXMenum mode;
        ASSERT_TRUE(channel(diffuse[c])->getValue(OXM::MapMode, mode));
        EXPECT_EQ(mode, OXM::Reference);
        EXPECT_EQ(channel(diffuse[c])->getLinkedObject(OXM::Reference), channel(ambient[c]));
    }
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change color settings"));
    // The colour set of the page now resolves to the ambient channels.
    ASSERT_TRUE(settle());
    EXPECT_EQ(panel->redObject(), channel(OXM::AmbientRed));

    // Undo takes the sharing back, and the panel follows.
    ASSERT_TRUE(app.undoStack()->undo());
    ASSERT_TRUE(settle());
    OXMenum mode;
    ASSERT_TRUE(channel(OXM::DiffuseRed)->getValue(OXM::MapMode, mode));
    EXPECT_EQ(mode, OXM::LookupTable);
    EXPECT_FALSE(shared->isChecked());
    EXPECT_EQ(panel->redObject(), channel(OXM::DiffuseRed));
}

// A step of a material or rendering spin box writes its channel's scale (percent boxes as
// fractions) in one undo step named after the box's own undo scope, whatever name the slot
// that writes the value opens inside it; its undo shows the old value in the box again.
TEST_F(PanelWrite, EachSpinBoxStepWritesItsChannelInOneUndoStepOfItsName)
{
    struct Box
    {
        int page;
        const char* name;
        const char* step;
        OXMenum channel; // Unknown: the render plug-in's sampling distance
        double scale;
    };
    const Box boxes[] = {
        {0, "mAmbientIntensitySpinBox", "Set ambient intensity", OXM::AmbientIntensity, 0.01},
        {1, "mDiffuseIntensitySpinBox", "Set diffuse intensity", OXM::DiffuseIntensity, 0.01},
        {2, "mSpecularShininessSpinBox", "Set specular shininess", OXM::Shininess, 1.0},
        {2, "mSpecularIntensitySpinBox", "Set specular intensity", OXM::SpecularIntensity, 0.01},
        {3, "mTransparencySpinBox", "Set transparency", OXM::Transparency, 0.01},
        {0, "mOversamplingSpinBox", "Set oversampling", OXM::Unknown, 0.0},
    };
    for (const Box& b : boxes) {
        SCOPED_TRACE(b.name);
        showColourPage(b.page);
        auto* box = widget<OXWSpinBox>(b.name);
        ASSERT_NE(box, nullptr);
        const double before = box->value();
        const int steps = app.undoStack()->count();
        box->stepUp();
        ASSERT_NE(box->value(), before);
        float scale = -1.0f;
        if (b.channel != OXM::Unknown) {
            ASSERT_TRUE(material()->getLinkedObject(b.channel)->getValue(OXM::Scale, scale));
            EXPECT_NEAR(scale, box->value() * b.scale, 1e-5);
        } else { // oversampling: the inverse distance
            ASSERT_TRUE(volume->getRenderPlugin()->getValue(OXM::SamplingDistance, scale));
            EXPECT_FLOAT_EQ(scale, float(1.0 / box->value()));
        }
        EXPECT_EQ(app.undoStack()->count(), steps + 1);
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(b.step));
        ASSERT_TRUE(app.undoStack()->undo());
        EXPECT_TRUE(waitUntil([box, before] { return box->value() == before; }))
            << box->value() << " instead of " << before;
    }
}

namespace {

class PanelExtraction : public PanelFixture
{
protected:
    static constexpr int Size = 24;

    void SetUp() override
    {
        PanelFixture::SetUp();
        const std::vector<std::uint16_t> samples = OXMScenePhantom::samples16(Size);
        std::vector<std::uint8_t> bytes(samples.size() * sizeof(std::uint16_t));
        std::memcpy(bytes.data(), samples.data(), bytes.size());
        ct = addVolume("CT", bytes, OXM::UInt16, {Size, Size, Size});
        ASSERT_NE(ct, nullptr);
        select({ct});
        ASSERT_TRUE(settle());
        OXMObject* m = ct->getMaterial();
        const std::vector<int> full = array<int>(m, OXM::IntervalIndexList);
        ASSERT_EQ(full.size(), 2u);
        borders = {full.front(), 1000, 2500, full.back()};
        ASSERT_TRUE(setArray(m, OXM::IntervalIndexList, borders));
        ASSERT_TRUE(setArray(m, OXM::IntervalModeList, std::vector<OXMenum>(3, OXM::Enabled)));
        ASSERT_TRUE(
            setArray(m, OXM::IntervalNameList, std::vector<const char*>{"Air", "Tissue", "Bone"}));
        reread();
        ASSERT_EQ(model()->intervalCount(), 3);
        steps = app.undoStack()->count();
    }

    // Voxels of a volume with b0 < g <= b1.
    static long long count(const OXMVolumeRenderObject* v, int b0, int b1)
    {
        const OXMSampleGrid* grid = v->getSampleGrid();
        long long n = 0;
        for (long long i = 0; i < grid->getVoxelCount(); ++i) {
            const double g = grid->getNativeValue(i);
            n += g > b0 && g <= b1 ? 1 : 0;
        }
        return n;
    }

    void run(const char* slot, int index)
    {
        ASSERT_TRUE(
            QMetaObject::invokeMethod(panel.get(), slot, Qt::DirectConnection, Q_ARG(int, index)));
    }
    std::vector<OXMObjectLink> volumes() const
    {
        return sample.scene->getLinks(OXM::VolumeRenderObjectList);
    }
    // One new step of that name, whose undo selects the source again.
    void expectOneStepThatUndoesTo(const char* name, OXMObject* source)
    {
        ASSERT_EQ(app.undoStack()->count(), steps + 1);
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(name));
        ASSERT_TRUE(app.undoStack()->undo());
        EXPECT_EQ(panel->selectedObject(), source);
        ASSERT_TRUE(settle());
    }

    std::vector<int> borders;
    OXMVolumeRenderObject* ct = nullptr;
    int steps = 0;
};

// A region of each interval holds its voxels; a volume of each (the first and last are named
// after their source) holds its voxels too and is placed beside its source in a copy of its
// placement, centred on the new box, transform locked. Each is selected, in one step whose
// undo selects the source again.
TEST_F(PanelExtraction, ARegionOrVolumeOfEachIntervalHoldsItsVoxelsAndIsSelected)
{
    OXMObject* placement = OXMObjectPath::fromObject(ct).getAuxLink(-1);
    ASSERT_NE(placement, nullptr);
    placement->getProperty(OXM::TransformMatrix)->lock();
    const std::size_t before = volumes().size();
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        run("createSegmentFromGreyvalueIntervalSlot", i);
        const std::vector<OXMObjectLink> regions = ct->getLinks(OXM::RegionOfInterestList);
        ASSERT_EQ(regions.size(), 1u);
        auto* roi = dynamic_cast<OXMRegionOfInterest*>(regions[0].getLink());
        ASSERT_NE(roi, nullptr);
        EXPECT_EQ(roi->getMaskVoxelCount(), count(ct, borders[i], borders[i + 1]));
        EXPECT_NE(roi->getMaterial(), nullptr); // initialised after it was placed
        EXPECT_EQ(panel->selectedObject(), roi);
        expectOneStepThatUndoesTo("create ROI from gray value interval", ct);
        EXPECT_TRUE(ct->getLinks(OXM::RegionOfInterestList).empty());

        run("extractGreyvalueIntervalSlot", i);
        ASSERT_EQ(volumes().size(), before + 1);
        const OXMObjectLink placed = volumes().back();
        auto* v = dynamic_cast<OXMVolumeRenderObject*>(placed.getLink());
        ASSERT_NE(v, nullptr);
        EXPECT_EQ(count(v, borders[i], borders[i + 1]), count(ct, borders[i], borders[i + 1]));
        const char* name = "";
        v->getValue(OXM::Name, name);
        EXPECT_STREQ(name, i == 0 ? "Air of CT" : i == 1 ? "Tissue of CT" : "Bone of CT");
        EXPECT_EQ(panel->selectedObject(), v);
        OXMObject* copy = placed.getAuxLink();
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, placement);
        OXMVector3<float> origin;
        ASSERT_TRUE(copy->getValue(OXM::Origin, origin));
        const auto box = v->getBoundingBox();
        EXPECT_EQ(origin, (box.first + box.second) / 2.0f);
        EXPECT_TRUE(copy->getProperty(OXM::TransformMatrix)->isLocked());
        expectOneStepThatUndoesTo("extract gray value interval", ct);
        EXPECT_EQ(volumes().size(), before);
    }
}

// From a region, the volume holds the region's voxels of the interval and sits beside the
// volume; the names of region and volume follow the interval's, each only when it has one.
TEST_F(PanelExtraction, AVolumeFromARegionIsNamedAfterBothAndPlacedBesideTheVolume)
{
    run("createSegmentFromGreyvalueIntervalSlot", 2);
    auto* roi = dynamic_cast<OXMRegionOfInterest*>(panel->selectedObject());
    ASSERT_NE(roi, nullptr);
    ASSERT_TRUE(settle());
    ASSERT_TRUE(roi->setValue<const char*>(OXM::Name, "Skull"));
    const std::size_t before = volumes().size();
    for (const char* volumeName : {"CT", ""}) {
        ASSERT_TRUE(ct->setValue(OXM::Name, volumeName));
        steps = app.undoStack()->count();
        run("extractGreyvalueIntervalSlot", 0); // the region's one interval, "Interval 1"
        ASSERT_EQ(volumes().size(), before + 1);
        auto* v = dynamic_cast<OXMVolumeRenderObject*>(volumes().back().getLink());
        ASSERT_NE(v, nullptr);
        const char* name = "";
        v->getValue(OXM::Name, name);
        EXPECT_STREQ(name, *volumeName ? "Interval 1 of Skull of CT" : "Interval 1 of Skull");
        EXPECT_EQ(count(v, borders[2], borders[3]), count(ct, borders[2], borders[3]));
        EXPECT_TRUE(roi->getLinks(OXM::VolumeRenderObjectList).empty());
        expectOneStepThatUndoesTo("extract gray value interval", roi);
    }
}

// An index past the last interval, or before the first, and a scene manager that is not one
// change nothing and leave no step; the wrong manager is reported.
TEST_F(PanelExtraction, RefusalsChangeNothing)
{
    std::vector<OXMError::Message> errors;
    const int handler =
        OXMError::addHandler([&errors](const OXMError::Message& m) { errors.push_back(m); });
    const std::size_t before = volumes().size();
    for (const char* slot :
         {"createSegmentFromGreyvalueIntervalSlot", "extractGreyvalueIntervalSlot"}) {
        run(slot, 3);
        run(slot, -1);
    }
    EXPECT_TRUE(errors.empty());
    ASSERT_TRUE(app.setValue(OXM::SceneManager, OXMObjectLink(sample.scene)));
    run("createSegmentFromGreyvalueIntervalSlot", 1);
    run("extractGreyvalueIntervalSlot", 1);
    OXMError::removeHandler(handler);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].getCode(), OXM::InvalidOperation);
    EXPECT_EQ(volumes().size(), before);
    EXPECT_TRUE(ct->getLinks(OXM::RegionOfInterestList).empty());
    EXPECT_EQ(app.undoStack()->count(), steps) << app.undoStack()->undoName().toStdString();
    EXPECT_EQ(panel->selectedObject(), ct);
}

} // namespace
