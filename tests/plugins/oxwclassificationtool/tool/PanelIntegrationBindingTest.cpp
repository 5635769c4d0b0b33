// The panel's binding to the selection of the scene tree: what it takes up at construction,
// release on an unusable selection, zoom and scroll of the opacity editor, enabling by the
// user's rights and by the data type.

#include "PanelFixture.h"

#include <QCheckBox>
#include <QScrollBar>
#include <QToolButton>

#include <cmath>

using namespace paneltest;

namespace {

class PanelBinding : public PanelFixture
{
protected:
    void threeIntervalsOnTheHost()
    {
        const int reads = panel->objectInfoReadCount();
        ASSERT_TRUE(setArray<int>(material(), OXM::IntervalIndexList, {9, 13, 18, 25}));
        ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList,
                                      {OXM::Enabled, OXM::Disabled, OXM::Enabled}));
        ASSERT_TRUE(setArray<const char*>(material(), OXM::IntervalNameList, {"a", "b", "c"}));
        ASSERT_TRUE(waitForReread(reads));
        ASSERT_EQ(model()->intervalCount(), 3);
    }

    QToolButton* plus() const { return widget<QToolButton>("mWorkAreaZoomPlusButton"); }
    QToolButton* minus() const { return widget<QToolButton>("mWorkAreaZoomMinusButton"); }
    QScrollBar* scrollBar() const { return widget<QScrollBar>("mWorkAreaScrollbar"); }

    // The right end of the visible grey range for the panel's zoom when it starts at `from`:
    // from + 1 / zoom, widened by the model to the next cell boundary.
    float visibleTo(float from) const
    {
        return std::ceil((from + 1.0f / panel->zoom()) * float(Cells)) / float(Cells);
    }
};

// The panel built before the scene: it hears the application's scene link.
class PanelBeforeScene : public PanelFixture
{
protected:
    PanelBeforeScene() { mSceneBeforePanel = false; }
};

} // namespace

TEST_F(PanelBinding, TakesUpTheSelectedVolumeAtConstruction)
{
    EXPECT_EQ(panel->selectedObject(), volume);
    EXPECT_EQ(panel->materialObject(), material());
    EXPECT_EQ(panel->opacityObject(), channel(OXM::Opacity));
    EXPECT_EQ(panel->redObject(), channel(OXM::AmbientRed));
    EXPECT_EQ(panel->intensityObject(), channel(OXM::AmbientIntensity));
    EXPECT_TRUE(panel->isListening());
    const OXWLUTObjectInfo* m = model();
    ASSERT_NE(m, nullptr);
    EXPECT_FLOAT_EQ(m->greyMin(), First - 0.5f);
    EXPECT_FLOAT_EQ(m->greyMax(), Last + 0.5f);
    ASSERT_EQ(m->intervalCount(), 1);
    EXPECT_EQ(m->interval(0)->name(), QStringLiteral("Interval 1"));
    EXPECT_EQ(workArea()->objectInfo(), m);
    EXPECT_EQ(workArea()->histogramObject(), volume->getHistogram());
}

// Two objects or none: the panel lets go without writing anything, and shows the default
// classification until the volume is selected again.
TEST_F(PanelBinding, AnUnusableSelectionReleasesThePanelAndResetsTheModel)
{
    threeIntervalsOnTheHost();
    for (const std::vector<OXMObject*>& selection :
         {std::vector<OXMObject*>{volume, sample.volume8}, std::vector<OXMObject*>{}}) {
        SCOPED_TRACE(selection.size());
        select(selection);
        EXPECT_EQ(panel->selectedObject(), nullptr);
        EXPECT_EQ(panel->materialObject(), nullptr);
        EXPECT_EQ(panel->opacityObject(), nullptr);
        EXPECT_TRUE(panel->selectionPath().isEmpty());
        ASSERT_NE(model(), nullptr);
        ASSERT_EQ(model()->intervalCount(), 1);
        EXPECT_FLOAT_EQ(model()->interval(0)->from(), 0.0f);
        EXPECT_FLOAT_EQ(model()->interval(0)->to(), 1.0f);
        EXPECT_EQ(workArea()->histogramObject(), nullptr);
        EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList),
                  std::vector<int>({9, 13, 18, 25}));

        select({volume});
        EXPECT_EQ(panel->selectedObject(), volume);
        ASSERT_NE(model(), nullptr);
        EXPECT_EQ(model()->intervalCount(), 3);
    }
}

TEST_F(PanelBinding, ZoomGoesUpInStepsOfTheSquareRootOfTwoTo128AndBackTo1)
{
    showPanel();
    panel->repaint();
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FALSE(minus()->isEnabled());

    float expected = 1.0f;
    int steps = 0;
    while (plus()->isEnabled() && steps < 20) {
        plus()->click();
        panel->repaint();
        expected *= OXWClassificationToolGUI::ZoomStep;
        ++steps;
        EXPECT_NEAR(panel->zoom(), expected, expected * 1e-5f) << "step " << steps;
        EXPECT_TRUE(minus()->isEnabled()) << "step " << steps;
    }
    EXPECT_NEAR(OXWClassificationToolGUI::ZoomStep, 1.41421f, 1e-5f);
    EXPECT_EQ(steps, 14);
    EXPECT_NEAR(panel->zoom(), 128.0f, 1e-3f);
    // The model shows 1/128 of the axis, widened to whole cells: one of the 16.
    EXPECT_FLOAT_EQ(model()->visibleGreyFrom(), 0.0f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), visibleTo(0.0f));

    steps = 0;
    while (minus()->isEnabled() && steps < 20) {
        minus()->click();
        panel->repaint();
        ++steps;
        EXPECT_TRUE(plus()->isEnabled()) << "step " << steps;
    }
    EXPECT_EQ(steps, 14);
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), 1.0f);
}

TEST_F(PanelBinding, TheScrollBarFollowsTheZoom)
{
    showPanel();
    QScrollBar* bar = scrollBar();
    panel->repaint();
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(bar->maximum(), 0);

    plus()->click();
    plus()->click();
    panel->repaint();
    EXPECT_TRUE(bar->isEnabled());
    EXPECT_EQ(bar->maximum(), 50);
    EXPECT_EQ(bar->pageStep(), 50);

    // Scrolling moves the visible part of the axis (widened to whole cells) and writes the
    // centres of its first and last cell as view state (no undo).
    bar->setValue(25);
    EXPECT_FLOAT_EQ(panel->scroll(), 25.0f);
    EXPECT_FLOAT_EQ(model()->visibleGreyFrom(), 0.25f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), visibleTo(0.25f));
    std::pair<float, float> range;
    ASSERT_TRUE(material()->getValue(OXM::VisibleOpacityIndexRange, range));
    const float halfCell = 0.5f / float(Cells);
    EXPECT_FLOAT_EQ(range.first, model()->greyFromPosition(0.25f + halfCell));
    EXPECT_FLOAT_EQ(range.second, model()->greyFromPosition(visibleTo(0.25f) - halfCell));
    EXPECT_EQ(app.undoStack()->count(), 0);

    minus()->click();
    minus()->click();
    panel->repaint();
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(bar->maximum(), 0);
    EXPECT_EQ(bar->pageStep(), 100);
}

TEST_F(PanelBinding, AnotherObjectResetsZoomAndScrollTheSamePathKeepsThem)
{
    ASSERT_TRUE(settle());
    plus()->click();
    plus()->click();
    scrollBar()->setValue(25);
    ASSERT_TRUE(settle());
    const float zoom = panel->zoom();
    const float scroll = panel->scroll();
    ASSERT_GT(zoom, 1.5f);
    ASSERT_FLOAT_EQ(scroll, 25.0f);
    const std::pair<float, float> visible(model()->visibleGreyFrom(), model()->visibleGreyTo());

    // A selection message naming the bound path again.
    app.sendMessage(OXM::PropertyChanged, OXM::RenderObjectSelectionList);
    EXPECT_EQ(panel->selectedObject(), volume);
    EXPECT_FLOAT_EQ(panel->zoom(), zoom);
    EXPECT_FLOAT_EQ(panel->scroll(), scroll);
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(panel->zoom(), zoom);
    EXPECT_FLOAT_EQ(panel->scroll(), scroll);

    using Range = std::pair<float, float>;
    const auto storedRange = [](OXMVolumeRenderObject* v) {
        Range range(-1.0f, -1.0f);
        v->getMaterial()->getValue(OXM::VisibleOpacityIndexRange, range);
        return range;
    };
    const Range stored = storedRange(volume);
    const Range stored16 = storedRange(sample.volume16);
    select({sample.volume16});
    EXPECT_EQ(panel->selectedObject(), sample.volume16);
    EXPECT_EQ(panel->selectionPath(), OXMObjectPath::fromObject(sample.volume16));
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FLOAT_EQ(panel->scroll(), 0.0f);
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FLOAT_EQ(panel->scroll(), 0.0f);

    // Selecting writes nothing: each material keeps its stored view, and the re-read after
    // the reset shows the view stored with the object selected again.
    select({volume});
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    ASSERT_TRUE(settle());
    EXPECT_EQ(storedRange(volume), stored);
    EXPECT_EQ(storedRange(sample.volume16), stored16);
    EXPECT_EQ(std::make_pair(model()->visibleGreyFrom(), model()->visibleGreyTo()), visible);
    EXPECT_FLOAT_EQ(panel->scroll(), scroll);
}

TEST_F(PanelBinding, WithoutTheRightToEditThePanelIsDisabledAfterARepaint)
{
    showPanel();
    OXMTulvoRights* rights = sample.scene->getRights();
    ASSERT_NE(rights, nullptr);
    EXPECT_EQ(panel->rightsObject(), rights);
    EXPECT_TRUE(waitUntil([this] { return panel->isEnabled(); }));

    ASSERT_TRUE(rights->setAllowClassificationEdit(false));
    EXPECT_TRUE(waitUntil([this] { return !panel->isEnabled(); }));
    EXPECT_FALSE(workArea()->isEnabled());

    ASSERT_TRUE(rights->setAllowClassificationEdit(true));
    EXPECT_TRUE(waitUntil([this] { return panel->isEnabled(); }));
    EXPECT_TRUE(workArea()->isEnabled());
}

TEST_F(PanelBeforeScene, FollowsTheSceneLinkToTheRights)
{
    showPanel();
    EXPECT_EQ(panel->selectedObject(), nullptr);
    OXMTulvoRights* rights = sample.scene->getRights();
    ASSERT_NE(rights, nullptr);
    EXPECT_EQ(panel->rightsObject(), rights);

    select({volume});
    EXPECT_EQ(panel->selectedObject(), volume);
    ASSERT_TRUE(rights->setAllowClassificationEdit(false));
    EXPECT_TRUE(waitUntil([this] { return !panel->isEnabled(); }));
    ASSERT_TRUE(rights->setAllowClassificationEdit(true));
    EXPECT_TRUE(waitUntil([this] { return panel->isEnabled(); }));
}

TEST_F(PanelBinding, RgbDataDisablesColourEditingButNotOpacityEditing)
{
    showPanel();
    const std::vector<QWidget*> colourWidgets = {
        ambientBar(), diffuseBar(), widget<QWidget>("mSpecularColorWidget"),
        widget<QCheckBox>("mDiffuseSharedColortableCheckBox")};
    const auto colourEditing = [&colourWidgets](bool enabled) {
        for (QWidget* w : colourWidgets) {
            EXPECT_EQ(w->isEnabled(), enabled) << w->objectName().toStdString();
        }
    };
    panel->repaint();
    colourEditing(true);

    // Red, green and blue bytes per voxel; the opacity reads the first channel.
    std::vector<std::uint8_t> rgb;
    for (int g = First; g <= Last; ++g) {
        rgb.insert(rgb.end(), {std::uint8_t(g), std::uint8_t(255 - g), std::uint8_t(7)});
    }
    OXMVolumeRenderObject* colour =
        addVolume("Colour", rgb, OXM::Rgb8, OXMVector3<int>(Cells, 1, 1));
    ASSERT_NE(colour, nullptr);
    select({colour});
    ASSERT_TRUE(settle());
    panel->repaint();
    colourEditing(false);
    EXPECT_TRUE(workArea()->isEnabled());

    // Opacity editing writes the opacity channel of the colour volume's material.
    ASSERT_TRUE(model()->interval(0)->setReferenceHandles(Opacity, {{0.0f, 0.25f}, {1.0f, 0.75f}}));
    emit workArea()->objectOpacityChanged();
    EXPECT_EQ(handleList(colour->getMaterial()->getChannel(OXM::Opacity)),
              HandleList({{float(First), 0.25f}, {float(Last), 0.75f}}));
    EXPECT_EQ(app.undoStack()->count(), 1);

    select({volume});
    ASSERT_TRUE(settle());
    panel->repaint();
    colourEditing(true);
}
