// Editing with the mouse: hit test and cursors, handle and segment drags across the three
// colour channels, insert and delete clicks, and the user action of every press.

#include "ColorBarTestSupport.h"

using namespace colorbartest;

namespace {

// Column of handle k of an interval's red curve.
int columnOfHandle(const OXWLUTColorBar& bar, const OXWLUTIntervalInfo& interval, int k)
{
    return bar.columnFromPosition(interval.globalFromLocal(interval.handles(kRed)[k].x));
}

class ColorBarEdit : public ColorBarTest
{
protected:
    void SetUp() override
    {
        ColorBarTest::SetUp();
        // Black to white over the first half, then white: handles on columns 0, 128, 255.
        setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 255.0f}});
        bar->updateAll();
    }
};

} // namespace

TEST_F(ColorBarEdit, CursorsShowWhichHandlesMayMove)
{
    ASSERT_EQ(columnOfHandle(*bar, interval(), 1), 128);
    moveTo(*bar, 130);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    EXPECT_EQ(bar->currentHandle(), 1);
    EXPECT_EQ(bar->cursor().shape(), Qt::SizeHorCursor);

    // The first and last handle are fixed: within 4 columns they are hit, with the arrow.
    moveTo(*bar, 3);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    EXPECT_EQ(bar->currentHandle(), 0);
    EXPECT_EQ(bar->cursor().shape(), Qt::ArrowCursor);
    moveTo(*bar, 252);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    EXPECT_EQ(bar->currentHandle(), 2);
    EXPECT_EQ(bar->cursor().shape(), Qt::ArrowCursor);

    // Between handles: the segment; one touching an end handle cannot move.
    moveTo(*bar, 60);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitSegment);
    EXPECT_EQ(bar->currentHandle(), 0);
    EXPECT_EQ(bar->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(ColorBarEdit, AMovableSegmentShowsTheResizeCursorAndDrags)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {0.25f, 100.0f}, {0.5f, 200.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    moveTo(*bar, 96);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitSegment);
    ASSERT_EQ(bar->currentHandle(), 1);
    EXPECT_EQ(bar->cursor().shape(), Qt::SizeHorCursor);

    press(*bar, 96);
    EXPECT_EQ(bar->dragMode(), OXWLUTColorBar::DragSegment);
    moveTo(*bar, 106, Qt::LeftButton);
    EXPECT_EQ(columnOfHandle(*bar, interval(), 1), 74);
    EXPECT_EQ(columnOfHandle(*bar, interval(), 2), 138);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel)[1].x, interval().handles(kRed)[1].x);
        EXPECT_EQ(interval().handles(channel)[2].x, interval().handles(kRed)[2].x);
    }
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, 100.0f);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[2].y, 200.0f);
    EXPECT_EQ(changed.count(), 1);
    release(*bar, 106);
    EXPECT_EQ(bar->dragMode(), OXWLUTColorBar::DragNone);
}

TEST_F(ColorBarEdit, ALeftDragMovesTheHandleInAllThreeChannels)
{
    interval().setReferenceHandles(kGreen, {{0.0f, 0.0f}, {0.5f, 50.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 129);
    ASSERT_EQ(bar->dragMode(), OXWLUTColorBar::DragHandle);
    moveTo(*bar, 151, Qt::LeftButton);
    EXPECT_EQ(columnOfHandle(*bar, interval(), 1), 150);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel)[1].x, interval().handles(kRed)[1].x) << channel;
    }
    // Each channel keeps its own value.
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, 255.0f);
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[1].y, 50.0f);
    EXPECT_EQ(changed.count(), 1);
    // A move that changes nothing emits nothing.
    moveTo(*bar, 151, Qt::LeftButton);
    EXPECT_EQ(changed.count(), 1);
    release(*bar, 151);
}

TEST_F(ColorBarEdit, AFixedHandleDoesNotDrag)
{
    press(*bar, 1);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    EXPECT_EQ(bar->dragMode(), OXWLUTColorBar::DragNone);
    const HandleList before = interval().handles(kRed);
    moveTo(*bar, 30, Qt::LeftButton);
    EXPECT_EQ(interval().handles(kRed), before);
    release(*bar, 30);
}

TEST_F(ColorBarEdit, MiddleClickInsertsTheColourUnderTheMouseAndDragsAtOnce)
{
    const std::vector<OXWLUTColorBar::Colour> tableBefore = bar->colorTable();
    const auto shown = tableBefore[64];
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 64, Qt::MiddleButton);
    ASSERT_EQ(interval().handles(kRed).size(), 4u);
    EXPECT_EQ(columnOfHandle(*bar, interval(), 1), 64);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, shown.r + 0.5f);
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[1].y, shown.g + 0.5f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, shown.b + 0.5f);
    EXPECT_EQ(changed.count(), 1);
    // The picture does not change.
    for (int c = 0; c < kColumns; ++c) {
        EXPECT_NEAR(bar->colorTable()[c].r, tableBefore[c].r, 1) << "column " << c;
    }
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    EXPECT_EQ(bar->currentHandle(), 1);
    EXPECT_EQ(bar->dragMode(), OXWLUTColorBar::DragHandle);

    moveTo(*bar, 80, Qt::MiddleButton);
    EXPECT_EQ(columnOfHandle(*bar, interval(), 1), 80);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, shown.r + 0.5f);
    EXPECT_EQ(changed.count(), 2);
    release(*bar, 80, Qt::MiddleButton);
}

TEST_F(ColorBarEdit, MiddleClickOnAHandleDeletesIt)
{
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 127, Qt::MiddleButton);
    release(*bar, 127, Qt::MiddleButton);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel).size(), 2u) << channel;
    }
    EXPECT_EQ(changed.count(), 1);
    // The end handles are refused: nothing changes and nothing is emitted.
    press(*bar, 0, Qt::MiddleButton);
    release(*bar, 0, Qt::MiddleButton);
    EXPECT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(ColorBarEdit, AltAndCtrlShiftClicksInsertAndDeleteLikeTheMiddleButton)
{
    press(*bar, 64, Qt::LeftButton, Qt::AltModifier);
    release(*bar, 64);
    ASSERT_EQ(interval().handles(kRed).size(), 4u);
    press(*bar, 192, Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier);
    release(*bar, 192);
    ASSERT_EQ(interval().handles(kRed).size(), 5u);
    press(*bar, 64, Qt::LeftButton, Qt::AltModifier);
    release(*bar, 64);
    EXPECT_EQ(interval().handles(kRed).size(), 4u);
}

TEST_F(ColorBarEdit, EveryPressOpensAndEveryReleaseClosesOneUserAction)
{
    EXPECT_FALSE(app.isUserActionOpen());
    press(*bar, 129);
    EXPECT_TRUE(app.isUserActionOpen());
    EXPECT_GT(bar->userAction(), 0);
    moveTo(*bar, 140, Qt::LeftButton);
    moveTo(*bar, 150, Qt::LeftButton);
    EXPECT_TRUE(app.isUserActionOpen());
    release(*bar, 150);
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_EQ(bar->userAction(), -1);

    // The action is named "Change color": an outer action sees it join its step.
    const int outer = app.userActionBegin(QStringLiteral("Outer"));
    press(*bar, 10, Qt::MiddleButton);
    release(*bar, 10, Qt::MiddleButton);
    EXPECT_TRUE(app.isUserActionOpen());
    app.userActionEnd(outer);
    EXPECT_FALSE(app.isUserActionOpen());

    // Also without a model.
    bar->setModel(nullptr);
    press(*bar, 10);
    EXPECT_TRUE(app.isUserActionOpen());
    release(*bar, 10);
    EXPECT_FALSE(app.isUserActionOpen());
}

TEST_F(ColorBarEdit, TheContextMenuClosesThePressesUserAction)
{
    rightClickMenu(*bar, 60);
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_TRUE(bar->contextMenu()->isVisible());
    EXPECT_FALSE(bar->isShowingValues());
    bar->contextMenu()->hide();
    // A release that follows later closes nothing more.
    release(*bar, 60, Qt::RightButton);
    EXPECT_FALSE(app.isUserActionOpen());
}

TEST_F(ColorBarEdit, WithoutAModelMouseEditingIsIgnored)
{
    bar->setModel(nullptr);
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 64, Qt::MiddleButton);
    moveTo(*bar, 80, Qt::MiddleButton);
    release(*bar, 80, Qt::MiddleButton);
    doubleClick(*bar, 80);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(dialog.calls, 0);
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitNone);
    bar->setModel(model.get());
}

TEST_F(ColorBarEdit, AResizeClearsTheHitState)
{
    moveTo(*bar, 128);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    bar->resize(2 * kColumns + 2 * kFrame, 24);
    EXPECT_EQ(bar->colorTable().size(), std::size_t(2 * kColumns));
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitNone);
    EXPECT_EQ(bar->currentIntervalIndex(), -1);
    EXPECT_EQ(bar->currentHandle(), -1);
}
