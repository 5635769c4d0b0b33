// The work area, driven through the widget's events and read from its off-screen buffer: what
// the mouse is over, drags, user actions, name editing, zoom, the context menu, and the
// pictures (message screens, histogram, borders, axis titles, the isosurface marker, labels).
// Points are contents pixels of a 160 x 100 view of 16 cells unless a test says otherwise:
// cell c spans x = 10 c .. 10 c + 9, opacity h lies on row 99 - 100 h.

#include "WorkAreaFixture.h"

#include <OXMAction.h>
#include <OXWOverrideCursor.h>

#include <QFontMetrics>
#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

using workarea_test::WorkAreaFixture;
using Hover = OXWLUTWorkArea::HoverMode;
using Press = OXWLUTWorkArea::PressAction;
using Curve = std::vector<std::pair<int, float>>;

namespace {

constexpr int Opacity = OXWLUTIntervalInfo::OpacityChannel;

// The cell under handle k of interval i (handles sit on cell centres), and its height.
float handleCell(const WorkAreaFixture& f, int i, int k)
{
    const OXWLUTIntervalInfo* interval = f.interval(i);
    const float x = interval->globalFromLocal(interval->handles(Opacity)[std::size_t(k)].x);
    return x / f.model->greyStep() - 0.5f;
}

float handleY(const WorkAreaFixture& f, int i, int k)
{
    return f.interval(i)->handles(Opacity)[std::size_t(k)].y;
}

bool sameCursor(const QCursor& a, const QCursor& b)
{
    return a.shape() == b.shape() && a.hotSpot() == b.hotSpot() &&
           a.pixmap().toImage() == b.pixmap().toImage();
}

// Two intervals [0, 0.5] and [0.5, 1]: the border is at pixel 80.
void splitInHalves(WorkAreaFixture& f)
{
    ASSERT_TRUE(f.model->newInterval(0.5f, false));
    f.workArea->updateAll();
}

// Opens the context menu at a contents pixel and triggers one of its items.
void runMenuItem(WorkAreaFixture& f, int px, int py, const QString& item)
{
    f.contextMenu(f.widgetPoint(px, py));
    ASSERT_TRUE(f.workArea->contextMenu()->isVisible());
    ASSERT_NE(f.item(item), nullptr) << item.toStdString();
    f.item(item)->trigger();
    f.workArea->contextMenu()->hide();
}

// The bounding box of the pixels in the area (all of the image by default) that pass the test.
QRect boxWhere(const QImage& image, const std::function<bool(QRgb)>& test, QRect area = QRect())
{
    area = area.isNull() ? image.rect() : area & image.rect();
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            box |= test(image.pixel(x, y)) ? QRect(x, y, 1, 1) : QRect();
        }
    }
    return box;
}

QRect boxOf(const QImage& image, QRgb colour, const QRect& area = QRect())
{
    return boxWhere(
        image, [colour](QRgb c) { return c == colour; }, area);
}

// Where the widget, drawing text in the font centred into the rectangle, puts its full-strength
// pixels.
QRect textBox(const WorkAreaFixture& f, const QFont& font, const QRect& rect, const QString& text)
{
    QImage probe(f.workArea->buffer().size(), QImage::Format_RGB32);
    probe.fill(Qt::white);
    QPainter painter(&probe);
    painter.setFont(font);
    painter.setPen(Qt::red);
    painter.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap, text);
    painter.end();
    return boxOf(probe, qRgb(255, 0, 0));
}

} // namespace

// What the mouse is over, and the cursor that says what a press there would do: handles move
// in both directions when their neighbours are at least 2.5 cells apart, else only
// vertically; level segments move vertically, segments between movable handles sideways;
// borders within two pixels, the zones for a new interval two to five pixels away (not on a
// narrow interval).
TEST(WorkAreaHover, ModesAndCursors)
{
    const QCursor expandRight = OXWOverrideCursor::getCursor(OXM::ExpandRightCursor);
    const QCursor expandLeft = OXWOverrideCursor::getCursor(OXM::ExpandLeftCursor);
    const std::pair<Curve, std::vector<float>> layouts[] = {
        {{{0, 0}, {8, 0.5f}, {9, 0.7f}, {15, 1}}, {}},
        {{{0, 0}, {7, 0.5f}, {8, 0.2f}, {9, 0.9f}, {15, 1}}, {}},
        {{{0, 0}, {5, 0.5f}, {10, 0.5f}, {15, 1}}, {}},
        {{{0, 0}, {5, 0}, {10, 1}, {15, 1}}, {}},
        {{}, {}},
        {{}, {0.5f}},
        {{}, {0.5f, 0.5625f}}}; // [8/16, 9/16] is one cell wide
    // layout, x, y, hover, the handle on handles and segments (else the interval), cursor
    const std::tuple<int, int, int, int, int, QCursor> probes[] = {
        {0, 88, 46, Hover::HoverHandle, 1, Qt::SizeAllCursor},
        {0, 5, 97, Hover::HoverHandle, 0, Qt::SizeVerCursor},
        {0, 153, 2, Hover::HoverHandle, 3, Qt::SizeVerCursor},
        {1, 85, 79, Hover::HoverHandle, 2, Qt::SizeVerCursor},
        {2, 80, 49, Hover::HoverSegment, 1, Qt::SizeAllCursor},
        {2, 34, 69, Hover::HoverSegment, 0, Qt::SizeVerCursor},
        {3, 80, 49, Hover::HoverSegment, 1, Qt::SizeHorCursor},
        {4, 80, 49, Hover::HoverSegment, 0, Qt::ArrowCursor},
        {4, 80, 5, Hover::HoverName, 0, Qt::IBeamCursor},
        {5, 81, 50, Hover::HoverLeftBorder, 1, Qt::SizeHorCursor},
        {5, 80, 50, Hover::HoverRightBorder, 0, Qt::SizeHorCursor},
        {5, 83, 30, Hover::HoverNewLeft, 1, expandRight},
        {5, 76, 70, Hover::HoverNewRight, 0, expandLeft},
        {5, 86, 30, Hover::HoverInside, 1, Qt::ArrowCursor},
        {5, 1, 50, Hover::HoverNewLeft, 0, expandRight},
        {5, 158, 50, Hover::HoverNewRight, 1, expandLeft},
        {6, 84, 60, Hover::HoverInside, 1, Qt::ArrowCursor}};
    std::unique_ptr<WorkAreaFixture> f;
    int shown = -1;
    for (const auto& [layout, x, y, hover, current, cursor] : probes) {
        if (layout != shown) {
            f = std::make_unique<WorkAreaFixture>();
            for (float border : layouts[layout].second) {
                ASSERT_TRUE(f->model->newInterval(border, false));
            }
            if (!layouts[layout].first.empty()) {
                f->setOpacityCurve(0, layouts[layout].first);
            }
            f->workArea->updateAll();
            shown = layout;
        }
        f->move(f->widgetPoint(x, y));
        const bool onCurve = hover == Hover::HoverHandle || hover == Hover::HoverSegment;
        EXPECT_EQ(f->workArea->hoverMode(), hover) << x << ", " << y;
        EXPECT_EQ(onCurve ? f->workArea->currentHandle() : f->workArea->currentIndex(), current)
            << x << ", " << y;
        EXPECT_TRUE(sameCursor(f->workArea->cursor(), cursor)) << x << ", " << y;
    }
}

// --- drags

// A handle follows the mouse relative to the press, a cell away from its neighbours; Shift
// locks the axis that moved more. A segment moves both its handles. One signal per move that
// changes something.
TEST(WorkAreaDrag, HandlesAndSegmentsFollowTheMouse)
{
    const Curve peak = {{0, 0}, {8, 0.5f}, {15, 1}};
    const Curve level = {{0, 0}, {5, 0.5f}, {10, 0.5f}, {15, 1}};
    // curve, grab x, move, Shift, press, then handle 1 (cell, height) and handle 2 (cell, height)
    const std::tuple<const Curve*, int, QPoint, bool, int, float, float, float, float> cases[] = {
        {&peak, 2, {20, -10}, false, Press::PressHandle, 10, 0.6f, 15, 1},
        {&peak, 0, {20, -10}, true, Press::PressHandle, 10, 0.5f, 15, 1},
        {&peak, 0, {5, -30}, true, Press::PressHandle, 8, 0.8f, 15, 1},
        {&peak, 0, {200, -10}, false, Press::PressHandle, 14, 0.6f, 15, 1},
        {&level, 25, {10, -10}, false, Press::PressSegment, 6, 0.6f, 11, 0.6f}};
    for (const auto& [curve, grab, by, shift, press, cell1, height1, cell2, height2] : cases) {
        WorkAreaFixture f;
        f.setOpacityCurve(0, *curve);
        const Qt::KeyboardModifiers modifiers = shift ? Qt::ShiftModifier : Qt::NoModifier;
        QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
        const QPoint start = f.handlePoint(0, 1) + QPoint(grab, 0);
        f.press(start, Qt::LeftButton, modifiers);
        EXPECT_EQ(f.workArea->pressAction(), press);
        for (int i = 0; i < 2; ++i) {
            f.move(start + by, modifiers);
            EXPECT_EQ(opacity.count(), 1) << by.x();
        }
        EXPECT_FLOAT_EQ(handleCell(f, 0, 1), cell1) << by.x();
        EXPECT_NEAR(handleY(f, 0, 1), height1, 1e-5f) << by.x();
        EXPECT_FLOAT_EQ(handleCell(f, 0, 2), cell2) << by.x();
        EXPECT_NEAR(handleY(f, 0, 2), height2, 1e-5f) << by.x();
        f.release(start + by);
    }
}

// A border stops at the left border of the interval it empties, which goes at the release.
TEST(WorkAreaDrag, ABorderDragEmptiesAnIntervalThatIsRemovedAtRelease)
{
    WorkAreaFixture f;
    ASSERT_TRUE(f.model->newInterval(0.25f, false)); // [0, .25] [.25, 1]
    ASSERT_TRUE(f.model->newInterval(0.5f, false));  // [0, .25] [.25, .5] [.5, 1]
    f.workArea->updateAll();
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    f.move(f.widgetPoint(81, 50));
    f.press(f.widgetPoint(81, 50));
    EXPECT_EQ(f.workArea->pressAction(), Press::PressBorder);
    for (int px : {70, 60, 50, 40, 20, 10}) {
        f.move(f.widgetPoint(px, 50));
        EXPECT_EQ(info.count(), (80 - std::max(px, 40)) / 10) << px;
    }
    EXPECT_FLOAT_EQ(f.interval(1)->to(), f.interval(1)->from());
    f.release(f.widgetPoint(10, 50));
    EXPECT_EQ(info.count(), 5);
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(1)->from(), 0.25f);
    EXPECT_EQ(f.workArea->currentInterval(), nullptr);
    EXPECT_EQ(f.workArea->currentIndex(), -1);
}

// A rubber band drawn from the zone at either edge of an interval splits it where it is
// released, never outside the grey-value axis; the new border is then under the mouse.
TEST(WorkAreaDrag, ARubberBandCreatesAnIntervalOnItsSide)
{
    const std::tuple<int, int, int, int, int, float, int, int> cases[] = {
        {157, 200, 100, Press::PressNewRight, 160, 0.625f, 0, Hover::HoverRightBorder},
        {3, -20, 60, Press::PressNewLeft, 0, 0.375f, 1, Hover::HoverLeftBorder}};
    for (const auto& [start, beyond, end, press, band, border, current, hover] : cases) {
        WorkAreaFixture f;
        QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
        f.move(f.widgetPoint(start, 50));
        f.press(f.widgetPoint(start, 50));
        EXPECT_EQ(f.workArea->pressAction(), press);
        f.move(f.widgetPoint(beyond, 50));
        EXPECT_EQ(f.workArea->rubberBandX(), band);
        f.move(f.widgetPoint(end, 50));
        EXPECT_EQ(f.model->intervalCount(), 1);
        f.release(f.widgetPoint(end, 50));
        ASSERT_EQ(f.model->intervalCount(), 2);
        EXPECT_FLOAT_EQ(f.interval(1)->from(), border);
        EXPECT_EQ(info.count(), 1);
        EXPECT_EQ(f.workArea->currentIndex(), current);
        EXPECT_EQ(f.workArea->hoverMode(), hover);
        EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    }
}

// The middle button, Alt and Ctrl+Shift with the left button insert a handle where the curve
// has none, and delete the handle they are on; end handles are refused. The middle button
// drags the new handle at once.
TEST(WorkAreaDrag, InsertAndDeleteGestures)
{
    const std::tuple<Qt::MouseButton, Qt::KeyboardModifiers, int, int> gestures[] = {
        {Qt::MiddleButton, Qt::NoModifier, 10, 3},
        {Qt::LeftButton, Qt::AltModifier, 8, 2},
        {Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier, 8, 2}};
    for (const auto& [button, modifiers, cell, emitted] : gestures) {
        WorkAreaFixture f;
        QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
        // Just below the line of the interval's name, whose box answers HoverName.
        const QPoint at = f.widgetPoint(80, QFontMetrics(f.workArea->font()).height() + 4);
        f.move(at);
        ASSERT_EQ(f.workArea->hoverMode(), Hover::HoverInside);
        f.press(at, button, modifiers);
        ASSERT_EQ(f.interval(0)->handles(Opacity).size(), 3u);
        EXPECT_FLOAT_EQ(handleCell(f, 0, 1), 8);
        EXPECT_NEAR(handleY(f, 0, 1), f.workArea->heightFromPixel(at.y() - 2), 1e-5f);
        f.move(at + QPoint(20, 0), modifiers);
        EXPECT_FLOAT_EQ(handleCell(f, 0, 1), cell) << int(modifiers);
        f.release(at + QPoint(20, 0), modifiers);
        f.click(f.handlePoint(0, 1), button, modifiers);
        f.click(f.handlePoint(0, 0) + QPoint(0, -2), button, modifiers);
        EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 2u);
        EXPECT_EQ(opacity.count(), emitted) << int(modifiers);
    }
}

// The opacity axis zooms by a drag (up in, down out: the widget is 104 pixels high, 52 pixels
// up is a factor of 1.5) and by the menu.
TEST(WorkAreaDrag, Zoom)
{
    WorkAreaFixture f;
    QSignalSpy zoom(f.workArea, &OXWLUTWorkArea::verticalZoomChanged);
    const QPoint start = f.widgetPoint(120, 90);
    f.press(start);
    EXPECT_EQ(f.workArea->pressAction(), Press::PressZoom);
    for (float factor : {1.5f, 1.0f}) {
        f.move(start - QPoint(0, factor == 1.5f ? 52 : 0));
        EXPECT_NEAR(f.model->verticalZoom(), factor, 1e-6f);
        EXPECT_NEAR(f.model->visibleOpacityTo(), 1.0f / factor, 1e-6f);
    }
    f.release(start);
    const std::tuple<const char*, float, float> items[] = {
        {"Zoom in", 0.5f, 2.0f}, {"Zoom reset", 1.0f, 1.0f}, {"Zoom in", 0.5f, 2.0f}};
    for (const auto& [item, to, factor] : items) {
        ASSERT_NE(f.item(QString::fromLatin1(item)), nullptr) << item;
        f.item(QString::fromLatin1(item))->trigger();
        EXPECT_FLOAT_EQ(f.model->visibleOpacityTo(), to) << item;
        EXPECT_FLOAT_EQ(f.model->verticalZoom(), factor) << item;
    }
    f.item(QStringLiteral("Zoom out"))->trigger();
    EXPECT_FLOAT_EQ(f.model->verticalZoom(), 1.0f);
    EXPECT_EQ(zoom.count(), 6);
}

// --- user actions

// One user action per press, which the panel (the widget's event filter) sees first: a nested
// action closed by the test leaves the widget's open. The context menu takes the release
// away, so the widget closes the action itself; a press whose release never came is closed by
// the next press.
TEST(WorkAreaUserAction, EveryPressOpensAndEveryReleaseClosesOneAction)
{
    WorkAreaFixture f;
    EXPECT_EQ(f.workArea->objectName(), QStringLiteral("mLUTWorkArea"));
    f.setOpacityCurve(0, {{0, 0.0f}, {8, 0.5f}, {15, 1.0f}});
    const std::tuple<QPoint, Qt::MouseButton, Qt::KeyboardModifiers> cases[] = {
        {f.handlePoint(0, 1), Qt::LeftButton, Qt::NoModifier},       // handle drag
        {f.widgetPoint(120, 90), Qt::LeftButton, Qt::NoModifier},    // zoom drag
        {f.widgetPoint(157, 50), Qt::LeftButton, Qt::NoModifier},    // rubber band
        {f.widgetPoint(40, 20), Qt::MiddleButton, Qt::NoModifier},   // insert
        {f.widgetPoint(100, 80), Qt::RightButton, Qt::NoModifier},   // menu click
        {f.widgetPoint(80, 5), Qt::LeftButton, Qt::NoModifier},      // name
        {f.widgetPoint(30, 80), Qt::LeftButton, Qt::ShiftModifier}}; // with an edit open
    f.panel->seen.clear();
    for (const auto& [pos, button, modifiers] : cases) {
        f.move(pos);
        f.press(pos, button, modifiers);
        EXPECT_TRUE(f.application.isUserActionOpen());
        f.application.userActionEnd(f.application.userActionBegin(QStringLiteral("probe")));
        EXPECT_TRUE(f.application.isUserActionOpen());
        f.move(pos + QPoint(5, -5), modifiers);
        f.release(pos + QPoint(5, -5), modifiers);
        EXPECT_FALSE(f.application.isUserActionOpen());
    }
    EXPECT_EQ(f.panel->seen[QEvent::MouseButtonPress], 7);
    EXPECT_EQ(f.panel->seen[QEvent::MouseButtonRelease], 7);
    f.contextMenu(f.widgetPoint(100, 80));
    ASSERT_TRUE(f.workArea->contextMenu()->isVisible());
    EXPECT_FALSE(f.application.isUserActionOpen());
    f.workArea->contextMenu()->hide();
    f.press(f.widgetPoint(100, 80));
    f.press(f.widgetPoint(100, 80));
    f.release(f.widgetPoint(100, 80));
    EXPECT_FALSE(f.application.isUserActionOpen());
}

// --- name editing

// A click on the name opens an editor over the interval's columns through its right border
// (the next interval's left border); Return, the focus leaving and a press elsewhere commit
// the text, empty text keeps the name, another model closes the editor.
TEST(WorkAreaName, TheEditorCommitsWhenItIsLeft)
{
    WorkAreaFixture f;
    splitInHalves(f);
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    QLineEdit* edit = nullptr;
    auto open = [&] {
        f.click(f.widgetPoint(40, 5));
        edit = f.workArea->nameEdit();
        ASSERT_TRUE(edit && edit->isVisible());
        EXPECT_EQ(edit->geometry(), QRect(2, 2, 81, 18));
    };
    QFocusEvent focusOut(QEvent::FocusOut, Qt::MouseFocusReason);
    const std::pair<const char*, std::function<void()>> endings[] = {
        {"Bone", [&] { QTest::keyClick(edit, Qt::Key_Return); }},
        {"Fat", [&] { QApplication::sendEvent(edit, &focusOut); }},
        {"Air", [&] { f.click(f.widgetPoint(120, 90)); }},
        {"", [&] { QTest::keyClick(edit, Qt::Key_Return); }}};
    for (const auto& [text, end] : endings) {
        open();
        edit->clear();
        QTest::keyClicks(edit, QString::fromLatin1(text));
        end();
        EXPECT_FALSE(edit->isVisible()) << text;
        EXPECT_EQ(f.workArea->focusProxy(), nullptr) << text;
    }
    EXPECT_EQ(f.interval(0)->name(), QStringLiteral("Air"));
    EXPECT_EQ(info.count(), 3);
    open();
    f.workArea->setObjectInfo(nullptr);
    EXPECT_FALSE(edit->isVisible());
    EXPECT_EQ(f.workArea->focusProxy(), nullptr);
}

// --- context menu

// Which items are enabled depends on the place (on a handle, with neighbours); without a
// current interval there is no menu.
TEST(WorkAreaMenu, ItemsFollowThePlace)
{
    const std::tuple<bool, int, int, bool, bool, bool, bool, bool> cases[] = {
        {false, 100, 80, true, false, false, false, false},
        {true, 45, 49, false, true, true, false, true},
        {true, 120, 90, true, false, true, true, false}};
    for (const auto& [split, x, y, insert, deleteHandle, deleteInterval, expandLeft, expandRight] :
         cases) {
        WorkAreaFixture f;
        if (split) {
            splitInHalves(f);
        }
        f.setOpacityCurve(0, {{0, 0.0f}, {4, 0.5f}, {7, 1.0f}});
        f.contextMenu(f.widgetPoint(x, y));
        ASSERT_TRUE(f.workArea->contextMenu()->isVisible()) << x;
        EXPECT_EQ(f.item(QStringLiteral("Insert handle"))->isEnabled(), insert) << x;
        EXPECT_EQ(f.item(QStringLiteral("Delete handle"))->isEnabled(), deleteHandle) << x;
        EXPECT_EQ(f.item(QStringLiteral("Delete interval"))->isEnabled(), deleteInterval) << x;
        EXPECT_EQ(f.item(QStringLiteral("Expand left neighbor"))->isEnabled(), expandLeft) << x;
        EXPECT_EQ(f.item(QStringLiteral("Expand right neighbor"))->isEnabled(), expandRight);
        EXPECT_FALSE(f.item(QStringLiteral("Paste opacity curve"))->isEnabled()) << x;
        f.workArea->contextMenu()->hide();
    }
    WorkAreaFixture f;
    f.workArea->setObjectInfo(nullptr);
    f.contextMenu(f.widgetPoint(100, 80));
    EXPECT_FALSE(f.workArea->contextMenu()->isVisible());
}

// The commands of the menu change the model and report it once each.
TEST(WorkAreaMenu, Commands)
{
    WorkAreaFixture f;
    QSignalSpy info(f.workArea, &OXWLUTWorkArea::objectInfoChanged);
    QSignalSpy opacity(f.workArea, &OXWLUTWorkArea::objectOpacityChanged);
    runMenuItem(f, 60, 80, QStringLiteral("At right side"));
    ASSERT_EQ(f.model->intervalCount(), 2);
    EXPECT_FLOAT_EQ(f.interval(1)->from(), 0.375f);
    const std::pair<const char*, float> resets[] = {
        {"Full opaque", 1.0f}, {"Full transparent", 0.0f}, {"Default", 1.0f}};
    for (const auto& [item, last] : resets) {
        runMenuItem(f, 20, 80, QString::fromLatin1(item));
        EXPECT_FLOAT_EQ(handleY(f, 0, 1), last) << item;
    }
    EXPECT_FLOAT_EQ(handleY(f, 0, 0), 0.0f);
    // Copy and paste stretch the curve over the target.
    f.setOpacityCurve(0, {{0, 0.2f}, {3, 0.6f}, {5, 0.3f}});
    runMenuItem(f, 20, 90, QStringLiteral("Copy opacity curve"));
    EXPECT_EQ(f.workArea->opacityClipboard().size(), 3u);
    runMenuItem(f, 120, 90, QStringLiteral("Paste opacity curve"));
    EXPECT_TRUE(f.item(QStringLiteral("Paste opacity curve"))->isEnabled());
    ASSERT_EQ(f.interval(1)->handles(Opacity).size(), 3u);
    for (int k = 0; k < 3; ++k) {
        EXPECT_FLOAT_EQ(handleY(f, 1, k), handleY(f, 0, k));
    }
    runMenuItem(f, 35, 39, QStringLiteral("Delete handle"));
    EXPECT_EQ(f.interval(0)->handles(Opacity).size(), 2u);
    runMenuItem(f, 20, 80, QStringLiteral("Disable interval"));
    EXPECT_FALSE(f.interval(0)->isEnabled());
    runMenuItem(f, 20, 80, QStringLiteral("Enable interval"));
    EXPECT_TRUE(f.interval(0)->isEnabled());
    runMenuItem(f, 120, 90, QStringLiteral("Expand left neighbor"));
    EXPECT_EQ(f.model->intervalCount(), 1);
    EXPECT_EQ(f.workArea->currentInterval(), nullptr);
    EXPECT_EQ(info.count(), 8);
    EXPECT_EQ(opacity.count(), 1);
}

// --- pictures

// Without something to edit the widget says why: a red bold headline half a line above the
// middle, an explanation below it in the text colour, on the background.
TEST(WorkAreaRender, MessageScreens)
{
    const QString noRights = QStringLiteral("Rendering settings cannot be changed.");
    const QString noSettings = QStringLiteral("ROI contains no render settings.");
    const std::tuple<bool, bool, bool, bool, QString> cases[] = {
        {false, false, false, true, QStringLiteral("No volume or ROI selected.")},
        {false, true, false, true, noSettings},
        {true, true, false, true, noRights},
        {true, false, false, true, noRights},
        {true, true, true, false, noRights}};
    for (const auto& [denied, renderObject, model, enabled, headline] : cases) {
        WorkAreaFixture f(16, 400, 100);
        f.rights.setAllowClassificationEdit(!denied);
        f.workArea->setRights(&f.rights);
        f.workArea->setRenderObject(renderObject ? &f.renderObject : nullptr);
        f.workArea->setObjectInfo(model ? f.model.get() : nullptr);
        f.workArea->setEnabled(enabled);
        f.workArea->updateAll();
        const QImage image = f.image();
        QFont bold = f.workArea->font();
        bold.setWeight(75);
        const int half = QFontMetrics(f.workArea->font()).height() / 2;
        EXPECT_EQ(boxOf(image, qRgb(255, 0, 0)),
                  textBox(f, bold, QRect(QPoint(0, -half), image.size()), headline))
            << headline.toStdString();
        const QRgb text = f.workArea->palette().color(QPalette::WindowText).rgb();
        EXPECT_FALSE(boxOf(image, text, QRect(0, 50, 400, 50)).isNull());
        EXPECT_EQ(image.pixel(1, 1), f.workArea->palette().color(QPalette::Window).rgb());
    }
}

// Equal bins: the bars fill half the height (twice the mean is the full height). A disabled
// interval is greyed and says so on the line below its name.
TEST(WorkAreaRender, HistogramBarsAndDisabledIntervals)
{
    WorkAreaFixture f;
    f.setOpacityCurve(0, {{0, 1.0f}, {15, 1.0f}}); // the curve above the view
    const QImage enabled = f.image();
    f.interval(0)->setEnabled(false);
    f.workArea->updateAll();
    const QImage image = f.image();
    EXPECT_EQ(enabled.pixel(40, 30), qRgb(255, 255, 255));
    EXPECT_EQ(enabled.pixel(40, 90), qRgb(204, 204, 204));
    EXPECT_EQ(image.pixel(40, 30), qRgb(204, 204, 204));
    EXPECT_EQ(image.pixel(40, 90), qRgb(163, 163, 163));
    QFont nameFont = f.workArea->font();
    nameFont.setPointSize(9);
    const QFontMetrics metrics(nameFont);
    const QRect secondLine(20, metrics.height(), 120, metrics.height());
    const QRect label = boxWhere(
        image, [](QRgb c) { return c != qRgb(204, 204, 204); }, secondLine);
    EXPECT_NEAR(label.width(), metrics.boundingRect(QStringLiteral("(disabled)")).width(), 3);
    EXPECT_NEAR(label.center().x(), 80, 3);
    EXPECT_TRUE(boxWhere(
                    enabled, [](QRgb c) { return c != qRgb(255, 255, 255); }, secondLine)
                    .isNull());
    // The bars scale with the zoom and can be hidden; without a histogram object nothing is
    // drawn, the last picture stays.
    f.interval(0)->setEnabled(true);
    f.model->setVerticalZoom(2.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image().pixel(40, 40), qRgb(204, 204, 204));
    QMetaObject::invokeMethod(f.workArea, "histogramDisable");
    EXPECT_EQ(f.image().pixel(40, 90), qRgb(255, 255, 255));
    f.workArea->setHistogramObject(nullptr);
    const QImage before = f.image();
    f.model->setVerticalZoom(1.0f);
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
}

// Blue lines mark the left borders of the intervals. The axis titles: the vertical one rotated
// along the left edge, below the names; the horizontal one at the bottom, ending ten pixels
// from the right.
TEST(WorkAreaRender, BordersAndAxisTitles)
{
    WorkAreaFixture f;
    splitInHalves(f);
    const QImage image = f.image();
    EXPECT_EQ(boxOf(image, qRgb(0, 0, 255), QRect(0, 20, 1, 75)), QRect(0, 20, 1, 75));
    EXPECT_EQ(boxOf(image, qRgb(0, 0, 255), QRect(1, 20, 159, 75)), QRect(80, 20, 1, 75));
    auto dark = [](QRgb c) { return qGray(c) < 180; };
    const QRect vertical = boxWhere(image, dark, QRect(1, 14, 10, 36));
    EXPECT_GT(vertical.height(), 3 * vertical.width());
    const QRect horizontal = boxWhere(image, dark, QRect(80, 85, 80, 15));
    EXPECT_GT(horizontal.width(), 3 * horizontal.height());
    EXPECT_NEAR(horizontal.right(), 150, 3);
}

// The isosurface marker is a full-height line, light red while inactive, red while active,
// clamped into the axis. Active, it wins over a segment within a pixel, a handle wins over it,
// and a drag moves it within the axis.
TEST(WorkAreaRender, TheIsosurfaceMarker)
{
    WorkAreaFixture f;
    f.model->setIsosurface(0.25f);
    f.workArea->updateAll();
    EXPECT_TRUE(boxOf(f.image(), qRgb(255, 160, 160)).isNull());
    const std::tuple<bool, float, int, QRgb> cases[] = {{false, 0.25f, 40, qRgb(255, 160, 160)},
                                                        {true, -3.0f, 0, qRgb(255, 0, 0)},
                                                        {true, 0.5f, 80, qRgb(255, 0, 0)}};
    for (const auto& [active, position, column, colour] : cases) {
        f.model->setIsosurface(position);
        f.workArea->setIsosurfaceShown(true);
        f.workArea->setIsosurfaceActive(active);
        f.workArea->updateAll();
        const QRect line(column, 20, 1, 75);
        EXPECT_EQ(boxOf(f.image(), colour, line), line) << active << " " << position;
    }
    const std::tuple<bool, int, int> probes[] = {{false, 81, Hover::HoverSegment},
                                                 {true, 82, Hover::HoverSegment},
                                                 {true, 81, Hover::HoverIsosurface}};
    for (const auto& [active, x, hover] : probes) {
        f.workArea->setIsosurfaceActive(active);
        f.move(f.widgetPoint(x, 49));
        EXPECT_EQ(f.workArea->hoverMode(), hover) << active << " " << x;
    }
    EXPECT_EQ(f.workArea->cursor().shape(), Qt::SizeHorCursor);
    QSignalSpy iso(f.workArea, &OXWLUTWorkArea::isosurfaceChanged);
    f.press(f.widgetPoint(80, 49));
    EXPECT_EQ(f.workArea->pressAction(), OXWLUTWorkArea::PressIsosurface);
    f.move(f.widgetPoint(120, 49));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 0.75f);
    f.move(f.widgetPoint(400, 49));
    EXPECT_FLOAT_EQ(f.model->isosurface(), 1.0f);
    EXPECT_EQ(iso.count(), 2);
    f.release(f.widgetPoint(400, 49));
    f.model->setIsosurface(15.5f / 16);
    f.move(f.handlePoint(0, 1) + QPoint(0, 2));
    EXPECT_EQ(f.workArea->hoverMode(), OXWLUTWorkArea::HoverHandle);
}

// While the histogram is calculated the widget says so and polls; an aborted calculation only
// restarts the poll.
TEST(WorkAreaRender, CalculationInProgressAndAborted)
{
    WorkAreaFixture f;
    auto* timer =
        f.workArea->findChild<QTimer*>(QStringLiteral("OXWHistogramToolBaseGUI::mUpdateTimer"));
    ASSERT_NE(timer, nullptr);
    OXMObject histogram;
    histogram.setAutoDelete(false);
    QImage during;
    OXMenum outcome = OXM::NoError;
    histogram.addAction(new OXMAction(OXM::Calculate, [&](OXMObject&, void*, OXMTaskInfo&) {
        f.workArea->updateAll();
        during = f.image();
        return outcome;
    }));
    f.workArea->setHistogramObject(&histogram);
    for (OXMenum result : {OXM::NoError, OXM::Abort}) {
        timer->stop();
        outcome = result;
        EXPECT_EQ(histogram.execute(OXM::Calculate), result == OXM::NoError);
        EXPECT_TRUE(timer->isActive());
    }
    EXPECT_EQ(during.pixel(1, 1), f.workArea->palette().color(QPalette::Window).rgb());
    EXPECT_EQ(boxOf(during, f.workArea->palette().color(QPalette::WindowText).rgb()),
              textBox(f, f.workArea->font(), QRect(QPoint(), during.size()),
                      QStringLiteral("calculation in progress...")));
    const QImage before = f.image();
    f.workArea->updateAll();
    EXPECT_EQ(f.image(), before);
    f.workArea->setHistogramObject(nullptr);
}

// While the mouse is on a handle or drags, black labels tell the values: the grey value and
// opacity of the handles above them; the grey values on both sides of a rubber band or a
// border, at half height; the visible grey range at the edges and the zoom in the middle.
TEST(WorkAreaRender, LabelsWhileHoveringAndDragging)
{
    const QRect left(0, 30, 20, 40);
    const QRect right(140, 30, 20, 40);
    const QRect beforeX(70, 30, 30, 40); // x = 100 for the band, the border after the drag
    const QRect afterX(101, 30, 30, 40);
    const std::tuple<const char*, std::vector<std::pair<int, float>>, bool, QPoint, QPoint,
                     std::vector<QRect>>
        cases[] = {
            {"handle", {{0, 0}, {8, 0.5f}, {15, 1}}, false, {}, {85, 49}, {{55, 25, 60, 24}}},
            {"segment",
             {{0, 0}, {4, 0.5f}, {11, 0.5f}, {15, 1}},
             false,
             {80, 49},
             {80, 59},
             {{10, 30, 70, 25}, {80, 30, 75, 25}}},
            {"rubber band", {}, false, {157, 50}, {100, 50}, {beforeX, afterX}},
            {"border", {}, true, {81, 50}, {101, 50}, {left, beforeX, afterX, right}},
            {"zoom", {}, false, {120, 90}, {120, 38}, {left, {50, 30, 60, 40}, right}}};
    auto ink = [](QRgb c) { return qRed(c) < 60 && qGreen(c) < 60 && qBlue(c) < 60; };
    for (const auto& [what, curve, split, pressAt, moveTo, labels] : cases) {
        WorkAreaFixture f;
        if (!curve.empty()) {
            f.setOpacityCurve(0, curve);
        }
        if (split) {
            splitInHalves(f);
        }
        EXPECT_TRUE(boxWhere(f.image(), ink).isNull()) << what;
        if (!pressAt.isNull()) {
            f.move(f.widgetPoint(pressAt.x(), pressAt.y()));
            f.press(f.widgetPoint(pressAt.x(), pressAt.y()));
        }
        f.move(f.widgetPoint(moveTo.x(), moveTo.y()));
        QRect all;
        for (const QRect& label : labels) {
            EXPECT_FALSE(boxWhere(f.image(), ink, label).isNull()) << what << " " << label.x();
            all |= label;
        }
        EXPECT_TRUE(all.contains(boxWhere(f.image(), ink))) << what;
    }
}
