// Editing with the mouse: hit test and cursors, handle and segment drags across the three
// colour channels, insert and delete clicks, and the user action of every press.

#include "ColorBarTestSupport.h"

#include <tuple>

using namespace colorbartest;

namespace {

// Handles on columns 0, 64, 128 and 255, the green curve different from red and blue.
class ColorBarEdit : public ColorBarTest
{
protected:
    void SetUp() override
    {
        ColorBarTest::SetUp();
        setColourCurves(interval(),
                        {{0.0f, 0.0f}, {0.25f, 100.0f}, {0.5f, 200.0f}, {1.0f, 255.0f}});
        interval().setReferenceHandles(kGreen,
                                       {{0.0f, 0.0f}, {0.25f, 50.0f}, {0.5f, 60.0f}, {1.0f, 0.0f}});
        bar->updateAll();
    }

    int columnOfHandle(int k)
    {
        return bar->columnFromPosition(interval().globalFromLocal(interval().handles(kRed)[k].x));
    }
};

} // namespace

// Handles are hit within 4 columns; the end handles and the segments that touch them cannot
// move, which the cursor shows. A resize forgets what was hit.
TEST_F(ColorBarEdit, TheCursorShowsWhatTheMouseWouldMove)
{
    const std::tuple<int, int, int, Qt::CursorShape> cases[] = {
        {66, OXWLUTColorBar::HitHandle, 1, Qt::SizeHorCursor},
        {3, OXWLUTColorBar::HitHandle, 0, Qt::ArrowCursor},
        {252, OXWLUTColorBar::HitHandle, 3, Qt::ArrowCursor},
        {30, OXWLUTColorBar::HitSegment, 0, Qt::ArrowCursor},
        {96, OXWLUTColorBar::HitSegment, 1, Qt::SizeHorCursor},
        {200, OXWLUTColorBar::HitSegment, 2, Qt::ArrowCursor}};
    for (const auto& [column, hit, handle, cursor] : cases) {
        moveTo(*bar, column);
        EXPECT_EQ(bar->hitKind(), hit) << column;
        EXPECT_EQ(bar->currentHandle(), handle) << column;
        EXPECT_EQ(bar->cursor().shape(), cursor) << column;
    }
    bar->resize(2 * kColumns + 2 * kFrame, 24);
    EXPECT_EQ(bar->colorTable().size(), std::size_t(2 * kColumns));
    EXPECT_EQ(bar->hitKind(), OXWLUTColorBar::HitNone);
    EXPECT_EQ(bar->currentIntervalIndex(), -1);
    EXPECT_EQ(bar->currentHandle(), -1);
}

// A drag moves a handle, or both handles of a segment, in all three channels, each keeping its
// value; an end handle does not move. One signal per move that changes something.
TEST_F(ColorBarEdit, DragsMoveHandlesInAllChannelsWithTheirOwnValues)
{
    // press, move to, drag mode, then the columns of handles 1 and 2
    const std::tuple<int, int, int, int, int> cases[] = {
        {65, 87, OXWLUTColorBar::DragHandle, 86, 128},
        {96, 106, OXWLUTColorBar::DragSegment, 96, 138},
        {1, 30, OXWLUTColorBar::DragNone, 96, 138}};
    int emitted = 0;
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    for (const auto& [from, to, mode, column1, column2] : cases) {
        press(*bar, from);
        EXPECT_EQ(bar->dragMode(), mode) << from;
        moveTo(*bar, to, Qt::LeftButton);
        moveTo(*bar, to, Qt::LeftButton);
        emitted += mode == OXWLUTColorBar::DragNone ? 0 : 1;
        EXPECT_EQ(changed.count(), emitted) << from;
        release(*bar, to);
        EXPECT_EQ(columnOfHandle(1), column1) << from;
        EXPECT_EQ(columnOfHandle(2), column2) << from;
    }
    const float red[] = {0.0f, 100.0f, 200.0f, 255.0f};
    const float green[] = {0.0f, 50.0f, 60.0f, 0.0f};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(interval().handles(kGreen)[k].x, interval().handles(kRed)[k].x);
        EXPECT_EQ(interval().handles(kBlue)[k].x, interval().handles(kRed)[k].x);
        EXPECT_FLOAT_EQ(interval().handles(kRed)[k].y, red[k]);
        EXPECT_FLOAT_EQ(interval().handles(kGreen)[k].y, green[k]);
    }
}

// A middle click on a segment inserts a handle with the colour shown there, which leaves the
// picture as it was, and drags it at once.
TEST_F(ColorBarEdit, MiddleClickInsertsTheColourUnderTheMouseAndDragsAtOnce)
{
    const QColor shown = bar->shown(32);
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 32, Qt::MiddleButton);
    ASSERT_EQ(interval().handles(kRed).size(), 5u);
    EXPECT_EQ(columnOfHandle(1), 32);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, shown.red() + 0.5f);
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[1].y, shown.green() + 0.5f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, shown.blue() + 0.5f);
    EXPECT_EQ(bar->shown(32), shown);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(bar->dragMode(), OXWLUTColorBar::DragHandle);
    moveTo(*bar, 40, Qt::MiddleButton);
    EXPECT_EQ(columnOfHandle(1), 40);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, shown.red() + 0.5f);
    EXPECT_EQ(changed.count(), 2);
    release(*bar, 40, Qt::MiddleButton);
}

// The middle button, Alt and Ctrl+Shift with the left button insert a handle on a segment and
// delete one that is hit; the end handles are refused.
TEST_F(ColorBarEdit, InsertAndDeleteGesturesAddAndRemoveAHandleInAllChannels)
{
    const std::pair<Qt::MouseButton, Qt::KeyboardModifiers> gestures[] = {
        {Qt::MiddleButton, Qt::NoModifier},
        {Qt::LeftButton, Qt::AltModifier},
        {Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier}};
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    int emitted = 0;
    for (const auto& [button, modifiers] : gestures) {
        for (std::size_t count : {5u, 4u}) {
            press(*bar, 96, button, modifiers);
            release(*bar, 96, button);
            for (int channel : kColours) {
                EXPECT_EQ(interval().handles(channel).size(), count) << channel;
            }
            EXPECT_EQ(changed.count(), ++emitted);
        }
        press(*bar, 0, button, modifiers);
        release(*bar, 0, button);
        EXPECT_EQ(interval().handles(kRed).size(), 4u);
        EXPECT_EQ(changed.count(), emitted);
    }
}

// A drag is one user action, from the press to the release. The context menu takes the release
// away, so the bar closes the action itself. Without a model the mouse edits nothing.
TEST_F(ColorBarEdit, EveryPressOpensAndEveryReleaseClosesOneUserAction)
{
    press(*bar, 65);
    EXPECT_GT(bar->userAction(), 0);
    moveTo(*bar, 70, Qt::LeftButton);
    moveTo(*bar, 80, Qt::LeftButton);
    EXPECT_TRUE(app.isUserActionOpen());
    release(*bar, 80);
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_EQ(bar->userAction(), -1);
    rightClickMenu(*bar, 60);
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_TRUE(bar->contextMenu()->isVisible());
    bar->contextMenu()->hide();
    release(*bar, 60, Qt::RightButton);
    EXPECT_FALSE(app.isUserActionOpen());

    bar->setModel(nullptr);
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    press(*bar, 64, Qt::MiddleButton);
    EXPECT_TRUE(app.isUserActionOpen());
    moveTo(*bar, 80, Qt::MiddleButton);
    release(*bar, 80, Qt::MiddleButton);
    EXPECT_FALSE(app.isUserActionOpen());
    sendMouse(*bar, QEvent::MouseButtonDblClick, 80);
    EXPECT_EQ(changed.count() + dialog.calls, 0);
}
