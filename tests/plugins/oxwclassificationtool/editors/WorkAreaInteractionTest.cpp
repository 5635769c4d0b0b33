// Mouse, menu, name editing and zoom of the work area, driven through the widget's events.

#include "WorkAreaFixture.h"

#include <OXWOverrideCursor.h>

#include <QBitmap>
#include <QFontMetrics>
#include <QLineEdit>
#include <QSignalSpy>

#include <gtest/gtest.h>

using workarea_test::WorkAreaFixture;

namespace {

constexpr int Opacity = OXWLUTIntervalInfo::OpacityChannel;

float cellCentre(const WorkAreaFixture& f, int cell)
{
    return (float(cell) + 0.5f) * f.model->greyStep();
}

// Global x of handle k of interval i.
float handleX(const WorkAreaFixture& f, int i, int k)
{
    const OXWLUTIntervalInfo* interval = f.interval(i);
    return interval->globalFromLocal(interval->handles(Opacity)[std::size_t(k)].x);
}

float handleY(const WorkAreaFixture& f, int i, int k)
{
    return f.interval(i)->handles(Opacity)[std::size_t(k)].y;
}

bool sameCursorImage(const QCursor& a, const QCursor& b)
{
    return a.shape() == Qt::BitmapCursor && b.shape() == Qt::BitmapCursor &&
           a.hotSpot() == b.hotSpot() && a.pixmap().toImage() == b.pixmap().toImage() &&
           a.bitmap(Qt::ReturnByValue).toImage() == b.bitmap(Qt::ReturnByValue).toImage();
}

// Two intervals [0, 0.5] and [0.5, 1] on 16 cells.
void splitInHalves(WorkAreaFixture& f)
{
    ASSERT_TRUE(f.model->newInterval(0.5f, false));
    ASSERT_EQ(f.model->intervalCount(), 2);
    ASSERT_FLOAT_EQ(f.interval(1)->from(), 0.5f);
    f.workArea->updateAll();
}

} // namespace

TEST(WorkAreaSetup, PanelIsTheEventFilterAndSeesEventsFirst)
{
    WorkAreaFixture f;
    EXPECT_EQ(f.workArea->objectName(), QStringLiteral("mLUTWorkArea"));
    EXPECT_EQ(f.workArea->contentsRect(), QRect(2, 2, 160, 100));
    EXPECT_EQ(f.workArea->buffer().size(), QSize(160, 100));
    EXPECT_TRUE(f.exposed);
    EXPECT_TRUE(f.workArea->hasMouseTracking());
    f.move(f.widgetPoint(100, 80));
    f.press(f.widgetPoint(100, 80));
    f.release(f.widgetPoint(100, 80));
    EXPECT_EQ(f.panel->mouseMoves, 1);
    EXPECT_EQ(f.panel->mousePresses, 1);
    EXPECT_EQ(f.panel->mouseReleases, 1);
}

TEST(WorkAreaMapping, PixelsAndPositions)
{
    WorkAreaFixture f;
    OXWLUTWorkArea* w = f.workArea;
    EXPECT_EQ(w->pixelFromPosition(0.5f), 80);
    EXPECT_FLOAT_EQ(w->positionFromPixel(80), 0.5f);
    EXPECT_EQ(w->pixelFromHeight(0.0f), 99);
    EXPECT_EQ(w->pixelFromHeight(0.5f), 49);
    EXPECT_FLOAT_EQ(w->heightFromPixel(99), 0.0f);
    EXPECT_FLOAT_EQ(w->heightFromPixel(49), 0.5f);
    f.model->setVisibleOpacityRange(0.0f, 0.5f);
    EXPECT_EQ(w->pixelFromHeight(0.25f), 49);
    w->setObjectInfo(nullptr);
    EXPECT_EQ(w->pixelFromPosition(0.5f), 0);
    EXPECT_FLOAT_EQ(w->heightFromPixel(10), 0.0f);
}

// --- hover modes and cursors

TEST(WorkAreaHover, HandlesShowSizeAllWhenMovableElseSizeVer)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {9, 0.7f}, {15, 1.0f}});
    f.move(f.handlePoint(0, 1) + QPoint(3, -3));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    EXPECT_EQ(f.workArea->currentHandle(), 1);
    // Its neighbours are cells 0 and 9: only 9 cells apart on the left, 1 on the right, but
    // the rule is the distance between the two neighbours (>= 2.5 cells).
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeAllCursor);
    f.move(f.handlePoint(0, 0) + QPoint(0, -2));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeVerCursor);
    f.move(f.handlePoint(0, 3) + QPoint(-2, 3));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeVerCursor);

    // Neighbours less than three cells apart: not movable.
    f.setOpacityCurve(0, {{0, 0.0f}, {7, 0.5f}, {8, 0.2f}, {9, 0.9f}, {15, 1.0f}});
    f.move(f.handlePoint(0, 2));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    EXPECT_EQ(f.workArea->currentHandle(), 2);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeVerCursor);
}

TEST(WorkAreaHover, SegmentCursorsFollowLevelAndMovable)
{
    WorkAreaFixture f;
    // Segment 1 level and movable.
    f.setOpacityCurve(0, {{0, 0.0f}, {5, 0.5f}, {10, 0.5f}, {15, 1.0f}});
    f.move(f.pointAt(0.5f, 0.5f));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverSegment);
    EXPECT_EQ(f.workArea->currentHandle(), 1);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeAllCursor);
    // Segment 0 is level (rises by half the range) but touches the first handle.
    f.move(f.pointAt(cellCentre(f, 3) - 0.001f, 0.3f) + QPoint(0, 0));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverSegment);
    EXPECT_EQ(f.workArea->currentHandle(), 0);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeVerCursor);

    // Segment 1 rises by the full range: not level, but movable.
    f.setOpacityCurve(0, {{0, 0.0f}, {5, 0.0f}, {10, 1.0f}, {15, 1.0f}});
    f.move(f.pointAt(0.5f, 0.5f));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverSegment);
    EXPECT_EQ(f.workArea->currentHandle(), 1);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);

    // The default ramp: neither level nor movable.
    f.setOpacityCurve(0, {{0, 0.0f}, {15, 1.0f}});
    f.move(f.pointAt(0.5f, 0.5f));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverSegment);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::ArrowCursor);
}

TEST(WorkAreaHover, BordersWithinTwoPixelsAndNewIntervalZones)
{
    WorkAreaFixture f;
    splitInHalves(f);
    // Border at pixel 80; interval 1 starts there.
    f.move(f.widgetPoint(81, 50));
    EXPECT_EQ(f.workArea->currentIndex(), 1);
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverLeftBorder);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    f.move(f.widgetPoint(80, 50));
    EXPECT_EQ(f.workArea->currentIndex(), 0);
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverRightBorder);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    // 2 to 5 pixels: the zones for a new interval.
    f.move(f.widgetPoint(83, 30));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewLeft);
    EXPECT_TRUE(sameCursorImage(f.workArea->cursor(),
                                OXWOverrideCursor::getCursor(OXM::ExpandRightCursor)));
    f.move(f.widgetPoint(76, 70));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewRight);
    EXPECT_TRUE(
        sameCursorImage(f.workArea->cursor(), OXWOverrideCursor::getCursor(OXM::ExpandLeftCursor)));
    // 6 pixels away: nothing.
    f.move(f.widgetPoint(86, 30));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverInside);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::ArrowCursor);
    // The first interval has no left neighbour: near the view's edge it is the zone.
    f.move(f.widgetPoint(1, 50));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewLeft);
    f.move(f.widgetPoint(158, 50));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewRight);
}

TEST(WorkAreaHover, NarrowIntervalHasNoNewIntervalZone)
{
    WorkAreaFixture f;
    // Intervals [0, 8/16], [8/16, 9/16] (one cell, 10 pixels) and [9/16, 1].
    ASSERT_TRUE(f.model->newInterval(0.5f, false));
    ASSERT_TRUE(f.model->newInterval(0.5625f, false));
    ASSERT_EQ(f.model->intervalCount(), 3);
    ASSERT_FALSE(f.interval(1)->isWide());
    f.workArea->updateAll();
    f.move(f.widgetPoint(84, 60));
    EXPECT_EQ(f.workArea->currentIndex(), 1);
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverInside);
}

TEST(WorkAreaHover, NameAndIsosurfacePriority)
{
    WorkAreaFixture f;
    f.move(f.widgetPoint(80, 5));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverName);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::IBeamCursor);

    // The marker on the ramp: it wins over the segment.
    f.model->setIsosurface(0.5f);
    f.workArea->setIsosurfaceShown(true);
    f.move(f.pointAt(0.5f, 0.5f));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverSegment);
    f.workArea->setIsosurfaceActive(true);
    f.move(f.pointAt(0.5f, 0.5f) + QPoint(1, 0));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverIsosurface);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    f.move(f.pointAt(0.5f, 0.5f) + QPoint(2, 0));
    EXPECT_NE(f.workArea->hoverMode(), OXWLUTWorkArea::HoverIsosurface);

    // A handle wins over the marker.
    f.model->setIsosurface(cellCentre(f, 15));
    f.move(f.handlePoint(0, 1) + QPoint(0, 2));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
}

// --- drags

TEST(WorkAreaDrag, HandleFollowsTheMouseRelativeToThePress)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
    const QPoint start = f.handlePoint(0, 1) + QPoint(2, 1);
    f.press(start);
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressHandle);
    f.move(start + QPoint(20, -10));
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 10));
    EXPECT_NEAR(handleY(f, 0, 1), 0.6f, 1e-5f);
    EXPECT_EQ(opacity.count(), 1);
    // The same position again changes nothing and says nothing.
    f.move(start + QPoint(20, -10));
    EXPECT_EQ(opacity.count(), 1);
    f.release(start + QPoint(20, -10));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressNone);
}

TEST(WorkAreaDrag, ShiftLocksTheDominantAxis)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    const QPoint start = f.handlePoint(0, 1);
    f.press(start, Qt::LeftButton, Qt::ShiftModifier);
    f.move(start + QPoint(20, -10), Qt::ShiftModifier);
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 10));
    EXPECT_FLOAT_EQ(handleY(f, 0, 1), 0.5f);
    f.move(start + QPoint(5, -30), Qt::ShiftModifier);
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 8));
    EXPECT_NEAR(handleY(f, 0, 1), 0.8f, 1e-5f);
    // Without Shift both axes follow; the handle stays a cell away from its neighbour.
    f.move(start + QPoint(200, -10));
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 14));
    EXPECT_NEAR(handleY(f, 0, 1), 0.6f, 1e-5f);
    f.release(start + QPoint(200, -10));
}

TEST(WorkAreaDrag, SegmentMovesBothHandles)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {5, 0.5f}, {10, 0.5f}, {15, 1.0f}});
    QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
    const QPoint start = f.pointAt(0.5f, 0.5f);
    f.press(start);
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressSegment);
    f.move(start + QPoint(10, -10));
    EXPECT_EQ(opacity.count(), 1);
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 6));
    EXPECT_FLOAT_EQ(handleX(f, 0, 2), cellCentre(f, 11));
    EXPECT_NEAR(handleY(f, 0, 1), 0.6f, 1e-5f);
    EXPECT_NEAR(handleY(f, 0, 2), 0.6f, 1e-5f);
    f.release(start + QPoint(10, -10));
}

TEST(WorkAreaDrag, BorderDragEmptiesAnIntervalThatIsRemovedAtRelease)
{
    WorkAreaFixture f;
    ASSERT_TRUE(f.model->newInterval(0.25f, false)); // [0, .25] [.25, 1]
    ASSERT_TRUE(f.model->newInterval(0.5f, false));  // [0, .25] [.25, .5] [.5, 1]
    ASSERT_EQ(f.model->intervalCount(), 3);
    f.workArea->updateAll();
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);

    const QPoint start = f.widgetPoint(81, 50);
    f.move(start);
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverLeftBorder);
    ASSERT_EQ(f.workArea->currentIndex(), 2);
    f.press(start);
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressBorder);
    int steps = 0;
    for (int px : {70, 60, 50, 40, 20, 10}) {
        f.move(f.widgetPoint(px, 50));
        if (px >= 40) {
            ++steps;
        }
        EXPECT_EQ(info.count(), steps) << px;
    }
    EXPECT_EQ(steps, 4);
    EXPECT_FLOAT_EQ(f.interval(2)->from(), 0.25f);
    EXPECT_FLOAT_EQ(f.interval(1)->to() - f.interval(1)->from(), 0.0f);
    EXPECT_EQ(f.model->intervalCount(), 3);
    f.release(f.widgetPoint(10, 50));
    EXPECT_EQ(info.count(), steps + 1);
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(0)->to(), 0.25f);
    EXPECT_FLOAT_EQ(f.interval(1)->from(), 0.25f);
    EXPECT_EQ(f.workArea->currentInterval(), nullptr);
    EXPECT_EQ(f.workArea->currentIndex(), -1);
}

TEST(WorkAreaDrag, BorderDragRefitsFromTheCurvesAtThePress)
{
    WorkAreaFixture f;
    splitInHalves(f);
    // A segment drag leaves the reference handles behind; the border drag commits first.
    f.setOpacityCurve(1, {{8, 0.0f}, {10, 0.5f}, {13, 0.5f}, {15, 1.0f}});
    const QPoint seg = f.pointAt(cellCentre(f, 11) + 0.5f / 16.0f, 0.5f);
    f.press(seg);
    ASSERT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressSegment);
    f.move(seg + QPoint(0, -10));
    f.release(seg + QPoint(0, -10));
    ASSERT_NEAR(handleY(f, 1, 1), 0.6f, 1e-5f);

    f.move(f.widgetPoint(81, 50));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverLeftBorder);
    f.press(f.widgetPoint(81, 50));
    f.move(f.widgetPoint(71, 50));
    f.move(f.widgetPoint(81, 50));
    f.release(f.widgetPoint(81, 50));
    EXPECT_NEAR(handleY(f, 1, 1), 0.6f, 1e-5f);
    EXPECT_NEAR(handleY(f, 1, 2), 0.6f, 1e-5f);
}

TEST(WorkAreaDrag, RubberBandFromTheRightCreatesAnIntervalAtTheRight)
{
    WorkAreaFixture f;
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.move(f.widgetPoint(157, 50));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewRight);
    f.press(f.widgetPoint(157, 50));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressNewRight);
    EXPECT_EQ(f.workArea->rubberBandX(), 157);
    f.move(f.widgetPoint(100, 50));
    EXPECT_EQ(f.workArea->rubberBandX(), 100);
    EXPECT_EQ(f.model->intervalCount(), 1);
    f.release(f.widgetPoint(100, 50));
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(0)->to(), 0.625f);
    EXPECT_FLOAT_EQ(f.interval(1)->from(), 0.625f);
    EXPECT_EQ(info.count(), 1);
    EXPECT_EQ(f.workArea->currentIndex(), 0);
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverRightBorder);
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
}

TEST(WorkAreaDrag, RubberBandFromTheLeftCreatesAnIntervalAtTheLeft)
{
    WorkAreaFixture f;
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.move(f.widgetPoint(3, 50));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverNewLeft);
    f.press(f.widgetPoint(3, 50));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressNewLeft);
    // The band never leaves the grey-value axis.
    f.move(f.widgetPoint(-20, 50));
    EXPECT_EQ(f.workArea->rubberBandX(), 0);
    f.move(f.widgetPoint(60, 50));
    f.release(f.widgetPoint(60, 50));
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(0)->to(), 0.375f);
    EXPECT_EQ(info.count(), 1);
    EXPECT_EQ(f.workArea->currentIndex(), 1);
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverLeftBorder);
}

TEST(WorkAreaDrag, MiddleClickInsertsAHandleAndDragsIt)
{
    WorkAreaFixture f;
    QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
    // Just below the line of the interval's name, whose box answers HoverName.
    const int row = QFontMetrics(f.workArea->font()).height() + 4;
    const QPoint start = f.widgetPoint(80, row);
    f.move(start);
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverInside);
    f.press(start, Qt::MiddleButton);
    ASSERT_EQ(f.interval(0)->handles(Opacity).size(), 3u);
    EXPECT_EQ(opacity.count(), 1);
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressHandle);
    EXPECT_EQ(f.workArea->currentHandle(), 1);
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 8));
    EXPECT_NEAR(handleY(f, 0, 1), f.workArea->heightFromPixel(row), 1e-5f);
    f.move(start + QPoint(20, 0));
    EXPECT_FLOAT_EQ(handleX(f, 0, 1), cellCentre(f, 10));
    EXPECT_EQ(opacity.count(), 2);
    f.release(start + QPoint(20, 0));

    // A middle click on the handle deletes it; on an end handle it does nothing.
    f.move(f.handlePoint(0, 1));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    f.press(f.handlePoint(0, 1), Qt::MiddleButton);
    f.release(f.handlePoint(0, 1));
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 2u);
    EXPECT_EQ(opacity.count(), 3);
    f.move(f.handlePoint(0, 0) + QPoint(0, -2));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
    f.press(f.handlePoint(0, 0) + QPoint(0, -2), Qt::MiddleButton);
    f.release(f.handlePoint(0, 0) + QPoint(0, -2));
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 2u);
    EXPECT_EQ(opacity.count(), 3);
}

TEST(WorkAreaDrag, AltAndCtrlShiftClicksInsertLikeTheMiddleButton)
{
    WorkAreaFixture f;
    f.press(f.widgetPoint(60, 20), Qt::LeftButton, Qt::AltModifier);
    f.release(f.widgetPoint(60, 20));
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 3u);
    f.press(f.widgetPoint(110, 80), Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier);
    f.release(f.widgetPoint(110, 80));
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 4u);
}

TEST(WorkAreaDrag, IsosurfaceDragMovesTheMarker)
{
    WorkAreaFixture f;
    f.model->setIsosurface(0.25f);
    f.workArea->setIsosurfaceShown(true);
    f.workArea->setIsosurfaceActive(true);
    QSignalSpy iso(f.workArea, &OXWLUTWorkArea::isosurfaceChanged);
    f.move(f.widgetPoint(40, 80));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverIsosurface);
    f.press(f.widgetPoint(40, 80));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressIsosurface);
    f.move(f.widgetPoint(120, 80));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 0.75f);
    f.move(f.widgetPoint(400, 80));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 1.0f);
    EXPECT_EQ(iso.count(), 2);
    f.release(f.widgetPoint(400, 80));
}

// --- user actions

TEST(WorkAreaUserAction, EveryPressOpensAndEveryReleaseClosesOneAction)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    struct Case
    {
        QPoint pos;
        Qt::MouseButton button;
        Qt::KeyboardModifiers modifiers;
    };
    const std::vector<Case> cases = {
        {f.handlePoint(0, 1), Qt::LeftButton, Qt::NoModifier},      // handle drag
        {f.widgetPoint(120, 90), Qt::LeftButton, Qt::NoModifier},   // zoom drag
        {f.widgetPoint(157, 50), Qt::LeftButton, Qt::NoModifier},   // rubber band
        {f.widgetPoint(40, 20), Qt::MiddleButton, Qt::NoModifier},  // insert
        {f.widgetPoint(100, 80), Qt::RightButton, Qt::NoModifier},  // menu click
        {f.widgetPoint(80, 5), Qt::LeftButton, Qt::NoModifier},     // name
        {f.widgetPoint(30, 80), Qt::LeftButton, Qt::ShiftModifier}, // with an edit open
    };
    for (const Case& c : cases) {
        f.move(c.pos);
        ASSERT_FALSE(f.application.isUserActionOpen());
        f.press(c.pos, c.button, c.modifiers);
        EXPECT_TRUE(f.application.isUserActionOpen());
        // One action: a nested one closed by the test leaves the widget's open.
        const int nested = f.application.userActionBegin(QStringLiteral("probe"));
        f.application.userActionEnd(nested);
        EXPECT_TRUE(f.application.isUserActionOpen());
        f.move(c.pos + QPoint(5, -5), c.modifiers);
        f.release(c.pos + QPoint(5, -5), c.modifiers);
        EXPECT_FALSE(f.application.isUserActionOpen());
    }
}

TEST(WorkAreaUserAction, TheContextMenuClosesThePressAction)
{
    WorkAreaFixture f;
    f.contextMenu(f.widgetPoint(100, 80));
    ASSERT_TRUE(f.workArea->contextMenu()->isVisible());
    EXPECT_FALSE(f.application.isUserActionOpen());
    f.workArea->contextMenu()->hide();
    // A press whose release never came: the next press closes it before opening its own.
    f.press(f.widgetPoint(100, 80));
    f.press(f.widgetPoint(100, 80));
    f.release(f.widgetPoint(100, 80));
    EXPECT_FALSE(f.application.isUserActionOpen());
}

// --- name editing

TEST(WorkAreaName, ReturnCommitsTheTypedName)
{
    WorkAreaFixture f;
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.move(f.widgetPoint(80, 5));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverName);
    f.press(f.widgetPoint(80, 5));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressName);
    f.release(f.widgetPoint(80, 5));
    QLineEdit* edit = f.workArea->nameEdit();
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(edit->isVisible());
    EXPECT_EQ(edit->text(), QStringLiteral("Interval 1"));
    EXPECT_EQ(edit->geometry(), QRect(2, 2, 160, 18));
    EXPECT_EQ(f.workArea->focusProxy(), edit);
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Interval 1"));
    edit->clear();
    QTest::keyClicks(edit, QStringLiteral("Bone"));
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_FALSE(edit->isVisible());
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Bone"));
    EXPECT_EQ(info.count(), 1);
    EXPECT_EQ(f.workArea->focusProxy(), nullptr);
}

// The editor covers the interval's columns from its left border through its right border,
// which is the next interval's left border.
TEST(WorkAreaName, EditorSpansTheIntervalThroughItsRightBorder)
{
    WorkAreaFixture f;
    f.model->newInterval(0.5f, true); // borders at pixels 0 and 80 of 160
    f.workArea->updateAll();
    f.press(f.widgetPoint(40, 5));
    f.release(f.widgetPoint(40, 5));
    ASSERT_TRUE(f.workArea->nameEdit() && f.workArea->nameEdit()->isVisible());
    const int border = f.workArea->pixelFromPosition(f.interval(0)->to());
    EXPECT_EQ(f.workArea->nameEdit()->geometry(), QRect(2, 2, border + 1, 18));
}

TEST(WorkAreaName, FocusLossCommitsAndEmptyTextKeepsTheName)
{
    WorkAreaFixture f;
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.press(f.widgetPoint(80, 5));
    f.release(f.widgetPoint(80, 5));
    QLineEdit* edit = f.workArea->nameEdit();
    ASSERT_NE(edit, nullptr);
    ASSERT_TRUE(edit->isVisible());
    edit->setText(QStringLiteral("Fat"));
    QFocusEvent out(QEvent::FocusOut, Qt::MouseFocusReason);
    QApplication::sendEvent(edit, &out);
    EXPECT_FALSE(edit->isVisible());
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Fat"));
    EXPECT_EQ(info.count(), 1);

    // Empty text: the name stays, nothing is reported.
    f.move(f.widgetPoint(80, 5));
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverName);
    f.press(f.widgetPoint(80, 5));
    f.release(f.widgetPoint(80, 5));
    ASSERT_TRUE(edit->isVisible());
    edit->clear();
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_FALSE(edit->isVisible());
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Fat"));
    EXPECT_EQ(info.count(), 1);
}

TEST(WorkAreaName, APressElsewhereFinishesTheEdit)
{
    WorkAreaFixture f;
    f.press(f.widgetPoint(80, 5));
    f.release(f.widgetPoint(80, 5));
    QLineEdit* edit = f.workArea->nameEdit();
    ASSERT_NE(edit, nullptr);
    edit->setText(QStringLiteral("Air"));
    f.press(f.widgetPoint(120, 90));
    f.release(f.widgetPoint(120, 90));
    EXPECT_FALSE(edit->isVisible());
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Air"));
}

// --- context menu

TEST(WorkAreaMenu, ItemsAwayFromAHandleWithOneInterval)
{
    WorkAreaFixture f;
    f.contextMenu(f.widgetPoint(100, 80));
    QMenu* menu = f.workArea->contextMenu();
    ASSERT_TRUE(menu->isVisible());
    EXPECT_TRUE(f.item(QStringLiteral("Insert handle"))->isEnabled());
    EXPECT_FALSE(f.item(QStringLiteral("Delete handle"))->isEnabled());
    EXPECT_FALSE(f.item(QStringLiteral("Paste opacity curve"))->isEnabled());
    EXPECT_FALSE(f.item(QStringLiteral("Delete interval"))->isEnabled());
    EXPECT_TRUE(f.item(QStringLiteral("New interval"))->isEnabled());
    EXPECT_NE(f.item(QStringLiteral("Disable interval")), nullptr);
    EXPECT_NE(f.item(QStringLiteral("Zoom in")), nullptr);
    EXPECT_NE(f.item(QStringLiteral("Save (*.csv)")), nullptr);
    menu->hide();
}

TEST(WorkAreaMenu, OnAHandleAndAfterACopy)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    f.contextMenu(f.handlePoint(0, 1));
    QMenu* menu = f.workArea->contextMenu();
    ASSERT_TRUE(menu->isVisible());
    EXPECT_FALSE(f.item(QStringLiteral("Insert handle"))->isEnabled());
    EXPECT_TRUE(f.item(QStringLiteral("Delete handle"))->isEnabled());
    f.item(QStringLiteral("Copy opacity curve"))->trigger();
    menu->hide();
    EXPECT_EQ(f.workArea->opacityClipboard().size(), 3u);

    f.contextMenu(f.widgetPoint(100, 80));
    ASSERT_TRUE(menu->isVisible());
    EXPECT_TRUE(f.item(QStringLiteral("Paste opacity curve"))->isEnabled());
    menu->hide();
    // Delete the handle through the menu.
    f.contextMenu(f.handlePoint(0, 1));
    QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
    f.item(QStringLiteral("Delete handle"))->trigger();
    menu->hide();
    EXPECT_EQ(opacity.count(), 1);
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 2u);
}

TEST(WorkAreaMenu, DeleteIntervalItemsFollowThePlace)
{
    WorkAreaFixture f;
    splitInHalves(f);
    QMenu* menu = f.workArea->contextMenu();
    f.contextMenu(f.widgetPoint(40, 80));
    ASSERT_TRUE(menu->isVisible());
    EXPECT_TRUE(f.item(QStringLiteral("Delete interval"))->isEnabled());
    EXPECT_FALSE(f.item(QStringLiteral("Expand left neighbor"))->isEnabled());
    EXPECT_TRUE(f.item(QStringLiteral("Expand right neighbor"))->isEnabled());
    menu->hide();
    f.contextMenu(f.widgetPoint(120, 90));
    ASSERT_TRUE(menu->isVisible());
    EXPECT_TRUE(f.item(QStringLiteral("Expand left neighbor"))->isEnabled());
    EXPECT_FALSE(f.item(QStringLiteral("Expand right neighbor"))->isEnabled());
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.item(QStringLiteral("Expand left neighbor"))->trigger();
    menu->hide();
    EXPECT_EQ(info.count(), 1);
    EXPECT_EQ(f.model->intervalCount(), 1);
    EXPECT_EQ(f.workArea->currentInterval(), nullptr);
}

TEST(WorkAreaMenu, DisableAndEnableInterval)
{
    WorkAreaFixture f;
    QMenu* menu = f.workArea->contextMenu();
    f.contextMenu(f.widgetPoint(100, 80));
    QAction* toggle = f.item(QStringLiteral("Disable interval"));
    ASSERT_NE(toggle, nullptr);
    toggle->trigger();
    menu->hide();
    EXPECT_FALSE(f.interval(0)->isEnabled());
    f.contextMenu(f.widgetPoint(100, 80));
    EXPECT_EQ(toggle->text(), QStringLiteral("Enable interval"));
    toggle->trigger();
    menu->hide();
    EXPECT_TRUE(f.interval(0)->isEnabled());
}

TEST(WorkAreaMenu, NoMenuWithoutACurrentInterval)
{
    WorkAreaFixture f;
    f.workArea->setObjectInfo(nullptr);
    f.contextMenu(f.widgetPoint(100, 80));
    EXPECT_FALSE(f.workArea->contextMenu()->isVisible());
}

TEST(WorkAreaMenu, NewIntervalAndResetCommands)
{
    WorkAreaFixture f;
    QMenu* menu = f.workArea->contextMenu();
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.contextMenu(f.widgetPoint(60, 80));
    f.item(QStringLiteral("At right side"))->trigger();
    menu->hide();
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(1)->from(), 0.375f);
    f.contextMenu(f.widgetPoint(20, 80));
    f.item(QStringLiteral("Full opaque"))->trigger();
    menu->hide();
    EXPECT_FLOAT_EQ(handleY(f, 0, 0), 1.0f);
    EXPECT_FLOAT_EQ(handleY(f, 0, 1), 1.0f);
    f.contextMenu(f.widgetPoint(20, 80));
    f.item(QStringLiteral("Full transparent"))->trigger();
    menu->hide();
    EXPECT_FLOAT_EQ(handleY(f, 0, 0), 0.0f);
    EXPECT_FLOAT_EQ(handleY(f, 0, 1), 0.0f);
    f.contextMenu(f.widgetPoint(20, 80));
    f.item(QStringLiteral("Default"))->trigger();
    menu->hide();
    EXPECT_FLOAT_EQ(handleY(f, 0, 1), 1.0f);
    EXPECT_EQ(info.count(), 4);
}

TEST(WorkAreaMenu, PasteStretchesTheCopiedCurve)
{
    WorkAreaFixture f;
    splitInHalves(f);
    f.setOpacityCurve(0, {{0, 0.2f}, {4, 0.9f}, {7, 0.3f}});
    QMenu* menu = f.workArea->contextMenu();
    f.contextMenu(f.widgetPoint(40, 90));
    f.item(QStringLiteral("Copy opacity curve"))->trigger();
    menu->hide();
    f.contextMenu(f.widgetPoint(120, 90));
    f.item(QStringLiteral("Paste opacity curve"))->trigger();
    menu->hide();
    ASSERT_EQ(f.interval(1)->handles(Opacity).size(), 3u);
    EXPECT_FLOAT_EQ(handleY(f, 1, 0), 0.2f);
    EXPECT_FLOAT_EQ(handleY(f, 1, 1), 0.9f);
    EXPECT_FLOAT_EQ(handleY(f, 1, 2), 0.3f);
}

TEST(WorkAreaMenu, HistogramItemTogglesItsText)
{
    WorkAreaFixture f;
    QMenu* menu = f.workArea->contextMenu();
    QAction* toggle = f.item(QStringLiteral("Disable histogram"));
    ASSERT_NE(toggle, nullptr);
    toggle->trigger();
    EXPECT_FALSE(f.workArea->isHistogramVisible());
    EXPECT_EQ(toggle->text(), QStringLiteral("Enable histogram"));
    toggle->trigger();
    EXPECT_TRUE(f.workArea->isHistogramVisible());
    EXPECT_EQ(toggle->text(), QStringLiteral("Disable histogram"));
    QSignalSpy save(f.workArea, &OXWLUTWorkArea::histogramSaveActivated);
    f.item(QStringLiteral("Save (*.csv)"))->trigger();
    EXPECT_EQ(save.count(), 1);
    menu->hide();
}

// --- zoom

TEST(WorkAreaZoom, InOutAndReset)
{
    WorkAreaFixture f;
    QSignalSpy zoom(f.workArea, &OXWLUTWorkArea::verticalZoomChanged);
    QMenu* menu = f.workArea->contextMenu();
    f.item(QStringLiteral("Zoom in"))->trigger();
    f.item(QStringLiteral("Zoom in"))->trigger();
    EXPECT_FLOAT_EQ(f.model->visibleOpacityFrom(), 0.0f);
    EXPECT_FLOAT_EQ(f.model->visibleOpacityTo(), 0.25f);
    EXPECT_FLOAT_EQ(f.model->verticalZoom(), 4.0f);
    f.item(QStringLiteral("Zoom reset"))->trigger();
    EXPECT_FLOAT_EQ(f.model->visibleOpacityTo(), 1.0f);
    EXPECT_FLOAT_EQ(f.model->verticalZoom(), 1.0f);
    f.model->setVisibleOpacityRange(0.5f, 1.0f);
    f.model->setVerticalZoom(2.0f);
    f.item(QStringLiteral("Zoom out"))->trigger();
    EXPECT_FLOAT_EQ(f.model->visibleOpacityFrom(), 0.0f);
    EXPECT_FLOAT_EQ(f.model->visibleOpacityTo(), 1.0f);
    EXPECT_FLOAT_EQ(f.model->verticalZoom(), 1.0f);
    EXPECT_EQ(zoom.count(), 4);
    menu->hide();
}

TEST(WorkAreaZoom, DragUpZoomsInDragDownZoomsOut)
{
    WorkAreaFixture f;
    QSignalSpy zoom(f.workArea, &OXWLUTWorkArea::verticalZoomChanged);
    const QPoint start = f.widgetPoint(120, 90);
    f.move(start);
    ASSERT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverInside);
    f.press(start);
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressZoom);
    // The widget is 104 pixels high: 52 pixels up is r = 0.5.
    f.move(start + QPoint(0, -52));
    EXPECT_FLOAT_EQ(f.model->verticalZoom(), 1.5f);
    EXPECT_NEAR(f.model->visibleOpacityTo(), 1.0f / 1.5f, 1e-6f);
    f.move(start);
    EXPECT_NEAR(f.model->verticalZoom(), 1.0f, 1e-6f);
    EXPECT_NEAR(f.model->visibleOpacityTo(), 1.0f, 1e-6f);
    EXPECT_EQ(zoom.count(), 2);
    f.release(start);
}
