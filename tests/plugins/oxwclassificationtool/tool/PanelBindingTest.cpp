// The panel's binding to the scene tree's selection (take-up, release, zoom and scroll, RGB
// data), its filter of the opacity editor's mouse moves, and the rendering
// controls on the bound volume.

#include "PanelFixture.h"

#include <OXMObjectLink.h>
#include <OXWRenderMethodTable.h>

#include <QCheckBox>
#include <QComboBox>
#include <QScrollBar>
#include <QToolButton>

#include <cmath>

using namespace paneltest;

namespace {

class PanelBinding : public PanelFixture
{
protected:
    QToolButton* plus() const { return widget<QToolButton>("mWorkAreaZoomPlusButton"); }
    QToolButton* minus() const { return widget<QToolButton>("mWorkAreaZoomMinusButton"); }
    QScrollBar* scrollBar() const { return widget<QScrollBar>("mWorkAreaScrollbar"); }
    // The right end of the visible range when it starts at `from`, widened to a cell boundary.
    float visibleTo(float from) const
    {
        return std::ceil((from + 1.0f / panel->zoom()) * float(Cells)) / float(Cells);
    }
    // Clicks a zoom button n times, repainting after each click.
    void zoom(QToolButton* button, int n)
    {
        for (int i = 0; i < n; ++i) {
            button->click();
            panel->repaint();
        }
    }
};

} // namespace

// The panel takes up the volume selected at construction. Two objects or none: the panel lets
// go without writing anything, and shows the default classification until the volume is
// selected again.
TEST_F(PanelBinding, TakesUpTheSelectedVolumeAndReleasesItOnAnUnusableSelection)
{
    EXPECT_EQ(panel->materialObject(), material());
    EXPECT_EQ(panel->opacityObject(), channel(OXM::Opacity));
    EXPECT_EQ(panel->redObject(), channel(OXM::AmbientRed));
    EXPECT_EQ(panel->intensityObject(), channel(OXM::AmbientIntensity));
    EXPECT_TRUE(panel->isListening());
    EXPECT_FLOAT_EQ(model()->greyMin(), First - 0.5f);
    EXPECT_FLOAT_EQ(model()->greyMax(), Last + 0.5f);
    EXPECT_EQ(workArea()->objectInfo(), model());
    EXPECT_EQ(workArea()->histogramObject(), volume->getHistogram());

    const int reads = panel->objectInfoReadCount();
    ASSERT_TRUE(setArray<int>(material(), OXM::IntervalIndexList, {9, 13, 18, 25}));
    ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList,
                                  {OXM::Enabled, OXM::Disabled, OXM::Enabled}));
    ASSERT_TRUE(setArray<const char*>(material(), OXM::IntervalNameList, {"a", "b", "c"}));
    ASSERT_TRUE(waitForReread(reads));
    for (const std::vector<OXMObject*>& selection :
         {std::vector<OXMObject*>{volume, sample.volume8}, std::vector<OXMObject*>{}}) {
        SCOPED_TRACE(selection.size());
        select(selection);
        EXPECT_EQ(panel->selectedObject(), nullptr);
        EXPECT_EQ(panel->opacityObject(), nullptr);
        EXPECT_TRUE(panel->selectionPath().isEmpty());
        ASSERT_EQ(model()->intervalCount(), 1);
        EXPECT_FLOAT_EQ(model()->interval(0)->from(), 0.0f);
        EXPECT_FLOAT_EQ(model()->interval(0)->to(), 1.0f);
        EXPECT_EQ(workArea()->histogramObject(), nullptr);
        EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList),
                  std::vector<int>({9, 13, 18, 25}));
        select({volume});
        EXPECT_EQ(panel->selectedObject(), volume);
        EXPECT_EQ(model()->intervalCount(), 3);
    }
}

// Zoom goes up in steps of the square root of two to 128 and back to 1; the scroll bar opens
// with it, and scrolling writes the centres of the first and last visible cell as view state.
TEST_F(PanelBinding, ZoomStepsTo128AndBackAndTheScrollBarFollows)
{
    showPanel();
    panel->repaint();
    EXPECT_FALSE(minus()->isEnabled());
    EXPECT_FALSE(scrollBar()->isEnabled());
    zoom(plus(), 2);
    EXPECT_TRUE(scrollBar()->isEnabled());
    EXPECT_EQ(scrollBar()->maximum(), 50);
    EXPECT_EQ(scrollBar()->pageStep(), 50);
    scrollBar()->setValue(25);
    EXPECT_FLOAT_EQ(panel->scroll(), 25.0f);
    EXPECT_FLOAT_EQ(model()->visibleGreyFrom(), 0.25f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), visibleTo(0.25f));
    std::pair<float, float> range;
    ASSERT_TRUE(material()->getValue(OXM::VisibleOpacityIndexRange, range));
    const float halfCell = 0.5f / float(Cells);
    EXPECT_FLOAT_EQ(range.first, model()->greyFromPosition(0.25f + halfCell));
    EXPECT_FLOAT_EQ(range.second, model()->greyFromPosition(visibleTo(0.25f) - halfCell));
    EXPECT_EQ(app.undoStack()->count(), 0);
    scrollBar()->setValue(0);

    int steps = 2;
    for (; plus()->isEnabled() && steps < 20; ++steps) {
        zoom(plus(), 1);
        EXPECT_TRUE(minus()->isEnabled());
    }
    EXPECT_EQ(steps, 14);
    EXPECT_NEAR(panel->zoom(), 128.0f, 1e-3f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), visibleTo(0.0f)); // one of the 16 cells
    for (steps = 0; minus()->isEnabled() && steps < 20; ++steps) {
        zoom(minus(), 1);
        EXPECT_TRUE(plus()->isEnabled());
    }
    EXPECT_EQ(steps, 14);
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FLOAT_EQ(model()->visibleGreyTo(), 1.0f);
    EXPECT_FALSE(scrollBar()->isEnabled());
    EXPECT_EQ(scrollBar()->pageStep(), 100);
}

TEST_F(PanelBinding, AnotherObjectResetsZoomAndScrollTheSamePathKeepsThem)
{
    ASSERT_TRUE(settle());
    zoom(plus(), 2);
    scrollBar()->setValue(25);
    ASSERT_TRUE(settle());
    const float zoomed = panel->zoom();
    const std::pair<float, float> visible(model()->visibleGreyFrom(), model()->visibleGreyTo());
    app.sendMessage(OXM::PropertyChanged, OXM::RenderObjectSelectionList);
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(panel->zoom(), zoomed);
    EXPECT_FLOAT_EQ(panel->scroll(), 25.0f);

    using Range = std::pair<float, float>;
    const auto storedRange = [](OXMVolumeRenderObject* v) {
        Range range(-1.0f, -1.0f);
        v->getMaterial()->getValue(OXM::VisibleOpacityIndexRange, range);
        return range;
    };
    const Range stored = storedRange(volume);
    const Range stored16 = storedRange(sample.volume16);
    select({sample.volume16});
    EXPECT_EQ(panel->selectionPath(), OXMObjectPath::fromObject(sample.volume16));
    ASSERT_TRUE(settle());
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    EXPECT_FLOAT_EQ(panel->scroll(), 0.0f);
    // Selecting writes nothing: the re-read shows the view stored with the volume.
    select({volume});
    EXPECT_FLOAT_EQ(panel->zoom(), 1.0f);
    ASSERT_TRUE(settle());
    EXPECT_EQ(storedRange(volume), stored);
    EXPECT_EQ(storedRange(sample.volume16), stored16);
    EXPECT_EQ(std::make_pair(model()->visibleGreyFrom(), model()->visibleGreyTo()), visible);
    EXPECT_FLOAT_EQ(panel->scroll(), 25.0f);
}

TEST_F(PanelBinding, RgbDataDisablesColourEditingButNotOpacityEditing)
{
    showPanel();
    const auto colourEditing = [this](bool enabled) {
        panel->repaint();
        for (QWidget* w : {(QWidget*)ambientBar(), (QWidget*)diffuseBar(),
                           widget<QWidget>("mSpecularColorWidget"),
                           widget<QWidget>("mDiffuseSharedColortableCheckBox")}) {
            EXPECT_EQ(w->isEnabled(), enabled) << w->objectName().toStdString();
        }
        EXPECT_TRUE(workArea()->isEnabled());
    };
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
    colourEditing(false);
    ASSERT_TRUE(model()->interval(0)->setReferenceHandles(Opacity, {{0.0f, 0.25f}, {1.0f, 0.75f}}));
    emit workArea()->objectOpacityChanged();
    EXPECT_EQ(handleList(colour->getMaterial()->getChannel(OXM::Opacity)),
              HandleList({{float(First), 0.25f}, {float(Last), 0.75f}}));
    select({volume});
    ASSERT_TRUE(settle());
    colourEditing(true);
}

namespace {

// The panel as event filter of the opacity editor: mouse moves held back and delivered as the
// latest one every 50 ms, never overtaken by a press or a release.
class PanelEvents : public PanelFixture
{
protected:
    struct Record
    {
        QEvent::Type type;
        QPoint pos;
        bool operator==(const Record& o) const { return type == o.type && pos == o.pos; }
    };
    // Records the mouse events that pass the panel's filter.
    struct Recorder : QObject
    {
        std::vector<Record> records;
        bool eventFilter(QObject*, QEvent* event) override
        {
            const QEvent::Type t = event->type();
            if (t == QEvent::MouseMove || t == QEvent::MouseButtonPress ||
                t == QEvent::MouseButtonRelease) {
                records.push_back({t, static_cast<QMouseEvent*>(event)->pos()});
            }
            return false;
        }
    } recorder;

    void SetUp() override
    {
        PanelFixture::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        showPanel();
        ASSERT_TRUE(settle());
        // Filters installed later run earlier: the panel's goes in again after the recorder.
        workArea()->removeEventFilter(panel.get());
        workArea()->installEventFilter(&recorder);
        workArea()->installEventFilter(panel.get());
        for (int i = 0; i < 10; ++i) {
            points.push_back(pointAt((2.0f + float(i)) / float(Cells), 0.95f));
        }
    }
    void TearDown() override
    {
        if (workArea()) {
            workArea()->removeEventFilter(&recorder);
        }
        PanelFixture::TearDown();
    }
    void moveAll()
    {
        for (const QPoint& p : points) {
            move(workArea(), p);
        }
    }

    std::vector<QPoint> points;
};

} // namespace

TEST_F(PanelEvents, TenMovesWithin50MsReachTheWorkAreaAsTheLastOneBeforeAPressOrRelease)
{
    moveAll();
    EXPECT_TRUE(recorder.records.empty());
    EXPECT_TRUE(panel->isDelayedEventPending());
    EXPECT_EQ(panel->delayedMouseMoveTimer()->interval(), OXWClassificationToolGUI::MouseMoveDelay);
    ASSERT_TRUE(waitUntil([this] { return !recorder.records.empty(); }));
    QTest::qWait(150);
    EXPECT_EQ(recorder.records, std::vector<Record>({{QEvent::MouseMove, points.back()}}));
    EXPECT_FALSE(panel->isDelayedEventPending());
    // Moves far apart in time are each delivered.
    move(workArea(), points[0]);
    ASSERT_TRUE(waitUntil([this] { return recorder.records.size() == 2; }));
    EXPECT_EQ(recorder.records[1].pos, points[0]);

    // A press right after moves comes after the last of them.
    recorder.records.clear();
    moveAll();
    press(workArea(), points.back());
    EXPECT_EQ(recorder.records, std::vector<Record>({{QEvent::MouseMove, points.back()},
                                                     {QEvent::MouseButtonPress, points.back()}}));
    EXPECT_FALSE(panel->isDelayedEventPending());
    // The moves of a drag come before the release.
    moveAll();
    release(workArea(), points.back());
    QTest::qWait(120);
    EXPECT_EQ(recorder.records, std::vector<Record>({{QEvent::MouseMove, points.back()},
                                                     {QEvent::MouseButtonPress, points.back()},
                                                     {QEvent::MouseMove, points.back()},
                                                     {QEvent::MouseButtonRelease, points.back()}}));
}

// An edit repaints the editors, not the whole panel with its boxes, tabs and spin boxes (a
// drag step writes the opacity each time the mouse moves). At zoom 1 and zoomed in.
TEST_F(PanelEvents, AnOpacityEditRepaintsTheEditorsOnly)
{
    struct PaintCounter : QObject
    {
        int paints = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            paints += event->type() == QEvent::Paint;
            return false;
        }
    } panelPaints, editorPaints;
    panel->installEventFilter(&panelPaints);
    workArea()->installEventFilter(&editorPaints);
    for (bool zoomed : {false, true}) {
        if (zoomed) {
            panel->mWorkAreaZoomPlusButton->click();
        }
        QTest::qWait(100);
        panelPaints.paints = editorPaints.paints = 0;
        panel->updateOpacity();
        QTest::qWait(100);
        EXPECT_EQ(panelPaints.paints, 0) << zoomed;
        EXPECT_GE(editorPaints.paints, 1) << zoomed;
    }
    workArea()->removeEventFilter(&editorPaints);
    panel->removeEventFilter(&panelPaints);
}

namespace {

// The rendering controls: the combo box shows the renderer and shading of the bound volume,
// choosing an entry rewrites the render plug-in link and the shading model as one undo step.
class PanelRendering : public PanelFixture
{
protected:
    QComboBox* methods() const { return widget<QComboBox>("mRenderMethodComboBox"); }
    OXMObject* plugin() const
    {
        OXMObjectLink link;
        return volume->getValue(OXM::RenderPlugin, link) ? link.getLink() : nullptr;
    }
    void choose(const QString& text)
    {
        const int row = methods()->findText(text);
        ASSERT_GE(row, 0) << text.toStdString();
        methods()->setCurrentIndex(row);
        ASSERT_TRUE(
            QMetaObject::invokeMethod(panel.get(), "renderMethodSlot", Qt::DirectConnection));
    }
    static OXMenum tool(const char* name) { return OXMenum::find(name, "oxwclassificationtool"); }
    OXMenum shadingOf(OXMObject* object) const
    {
        OXMenum value;
        object->getValue(tool("ShadingModel"), value);
        return value;
    }
};

} // namespace

// Each renderer object carries only the settings of its class, so the re-read finds the
// shading where the row put it: every row reads back as itself.
TEST_F(PanelRendering, EveryMethodReadsBackAsTheRowChosen)
{
    EXPECT_EQ(methods()->currentText(), QStringLiteral("Volume renderer (Phong)"));
    ASSERT_EQ(methods()->count(), 10);
    for (int i = 0; i < methods()->count(); ++i) {
        const QString text = methods()->itemText(i);
        choose(text);
        reread();
        EXPECT_EQ(methods()->currentText(), text);
    }
}

// Another shading of the same renderer keeps the renderer object and is the step "Change
// shading model"; its undo comes back as a change message and refills the combo box, for a
// renderer with its own shading and for the camera ray tracer's settings.
TEST_F(PanelRendering, AnotherShadingKeepsTheRendererAndItsUndoShowsInTheComboBox)
{
    OXMObject* before = plugin();
    choose(QStringLiteral("Volume renderer (Scatter HQ)"));
    EXPECT_EQ(plugin(), before);
    EXPECT_EQ(shadingOf(before), tool("ScatterHQ"));
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change shading model"));
    for (const auto& [from, to] :
         {std::pair<const char*, const char*>{"Volume renderer (Phong)",
                                              "Volume renderer (Scatter HQ)"},
          std::pair<const char*, const char*>{"X-Ray", "Maximum Projection"}}) {
        choose(QString::fromLatin1(from));
        choose(QString::fromLatin1(to));
        ASSERT_TRUE(settle());
        const int reads = panel->objectInfoReadCount();
        ASSERT_TRUE(app.undoStack()->undo());
        ASSERT_TRUE(waitForReread(reads)) << to;
        EXPECT_EQ(methods()->currentText(), QString::fromLatin1(from));
    }
}

TEST_F(PanelRendering, AnotherRendererIsCreatedWithTheOldShadingAndDistance)
{
    OXMObject* before = plugin();
    ASSERT_TRUE(before->setValue(OXM::SamplingDistance, 0.25f));
    choose(QStringLiteral("Isosurface renderer"));
    OXMObject* after = plugin();
    ASSERT_NE(after, nullptr);
    EXPECT_NE(after, before);
    EXPECT_TRUE(after->isOfType("OXMRaytracing::Isosurface::RenderPlugin"));
    float distance = 0.0f;
    ASSERT_TRUE(after->getValue(OXM::SamplingDistance, distance));
    EXPECT_FLOAT_EQ(distance, 0.25f);
    EXPECT_EQ(shadingOf(after), OXM::Phong);
    EXPECT_EQ(panel->renderMethodTable()->mRenderPlugin.get(), after);

    // The change message re-reads the controls: the isosurface renderer's check boxes open up
    // and the work area shows the iso value.
    EXPECT_FALSE(workArea()->isIsosurfaceShown());
    ASSERT_TRUE(waitForReread(panel->objectInfoReadCount()));
    EXPECT_EQ(methods()->currentText(), QStringLiteral("Isosurface renderer"));
    EXPECT_TRUE(widget<QCheckBox>("mSurfaceInvertedCheckBox")->isEnabled());
    EXPECT_TRUE(workArea()->isIsosurfaceShown());

    // Its settings, the gradient normalization and the calibration (open for calibrated
    // isosurfaces) live on the volume.
    const struct
    {
        const char* button;
        OXMenum id;
        const char* step;
    } switches[] = {
        {"mSurfaceInvertedCheckBox", tool("SurfaceInverted"), "Swap inner/outer areas"},
        {"mHiddenSurfaceRemovalCheckBox", tool("ShadingCountLimit"), "Remove inner surfaces"},
        {"mGradientNormalizationCheckBox", OXM::GradientNormalization, "Normalize gradients"},
        {"mWorkAreaUseCalibrationButton", OXM::VolumeComponentMode, "Use calibration"},
    };
    for (const auto& s : switches) {
        auto* button = widget<QAbstractButton>(s.button);
        if (button->isEnabled()) {
            button->click();
        } else {
            button->setChecked(true);
        }
        int limit = 0;
        OXMenum value;
        EXPECT_TRUE(s.id == tool("ShadingCountLimit")
                        ? volume->getValue(s.id, limit) && limit == 1
                        : volume->getValue(s.id, value) && value == OXM::True)
            << s.button;
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(s.step));
    }
    for (std::size_t i = 0; i <= std::size(switches); ++i) {
        app.undoStack()->undo();
    }
    EXPECT_EQ(plugin(), before);
}
