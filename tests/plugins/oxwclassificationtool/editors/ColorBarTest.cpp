// The colour bar: what it shows (the colour table of its columns, the marks and borders in the
// pixmap, zoom, the value texts, the moving highlight border, a disabled bar), editing with the
// mouse (hit test and cursors, handle and segment drags across the three colour channels,
// insert and delete clicks, the user action of every press), and the context menu with the
// operations behind it (enabled items per hit kind, the named colours, the process-wide colour
// clipboard, the colour dialogs with their backup, colour table import and export with the file
// dialog answered through its test seam; the formats themselves are tested with
// OXWLUTColorTableFile). A bar of 256 columns shows a model of 256 cells: column c shows cell c.

#include "../model/ModelTestSupport.h"
#include "OXWLUTColorBar.h"

#include <OXMError.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QFile>
#include <QImage>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>

using namespace modeltest;

namespace {

constexpr int kColours[] = {kRed, kGreen, kBlue};
constexpr int kFrame = 2; // the frame's line width: column 0 is this many pixels in
constexpr int kColumns = 256;

class TestBar : public OXWLUTColorBar
{
public:
    using OXWLUTColorBar::copyIntervalColor;
    using OXWLUTColorBar::deletePoint;
    using OXWLUTColorBar::exportIntervalColor;
    using OXWLUTColorBar::importIntervalColor;
    using OXWLUTColorBar::insertPoint;
    using OXWLUTColorBar::OXWLUTColorBar;
    using OXWLUTColorBar::pasteIntervalColor;
    using OXWLUTColorBar::setCurrentIntervalColor;
    using OXWLUTColorBar::setIntervalColor;
    using OXWLUTColorBar::setIntervalColorWhite;
    using OXWLUTColorBar::setLineColor;
    using OXWLUTColorBar::setLineColorRed;
    using OXWLUTColorBar::setPointColor;
    using OXWLUTColorBar::valueBox;
    using OXWLUTColorBar::valueText;

    void hit(int column) { hitTest(QPoint(column + kFrame, 10)); }
    // The colour of a column, in the table and in the pixmap.
    QColor shown(int column) const
    {
        const Colour& c = colorTable()[std::size_t(column)];
        return QColor(c.r, c.g, c.b);
    }
    QColor pixel(int column, int row) const
    {
        return QColor(pixmap().toImage().pixel(column, row));
    }
};

// Gives all three colour curves of an interval the same reference handles.
void setColourCurves(OXWLUTIntervalInfo& interval, const OXWLUTIntervalInfo::HandleList& h)
{
    for (int channel : kColours) {
        interval.setReferenceHandles(channel, h);
    }
}

// A mouse event at a column of the bar (row 10); a release holds no button.
void sendMouse(QWidget& w, QEvent::Type type, int column, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPoint pos(column + kFrame, 10);
    const bool move = type == QEvent::MouseMove;
    QMouseEvent event(type, pos, w.mapToGlobal(pos), move ? Qt::NoButton : button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : button, modifiers);
    QApplication::sendEvent(&w, &event);
}

void press(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton,
           Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    sendMouse(w, QEvent::MouseButtonPress, column, button, modifiers);
}

void release(QWidget& w, int column, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(w, QEvent::MouseButtonRelease, column, button);
}

void moveTo(QWidget& w, int column, Qt::MouseButton held = Qt::NoButton)
{
    sendMouse(w, QEvent::MouseMove, column, held);
}

// The context menu as a right click at a column opens it: press, then the menu event.
void rightClickMenu(QWidget& w, int column)
{
    press(w, column, Qt::RightButton);
    const QPoint pos(column + kFrame, 10);
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, w.mapToGlobal(pos));
    QApplication::sendEvent(&w, &event);
}

// A bar of 256 columns with a model of 256 cells, an application for user actions, settings
// and files in temporary directories, the lines of the host's error channel, and a colour
// dialog hook that records what it saw and answers `answer` (invalid: cancel).
class ColorBarTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid() && files.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settingsDir.path());
        OXWFileDialog::clearTestAnswers();
        OXWLUTColorBar::clearClipboard();
        OXWLUTColorBar::setColorDialogHook([this](const QColor& initial, QWidget*, const QString&) {
            dialog = {dialog.calls + 1, initial, bar->highlightStart(), bar->highlightEnd()};
            if (whileOpen) {
                whileOpen();
            }
            return answer;
        });
        bar = makeBar(model.get(), "mAmbientLUTColorBar");
        errorHandler =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }

    void TearDown() override
    {
        OXMError::removeHandler(errorHandler);
        bar.reset();
        OXWLUTColorBar::setColorDialogHook({});
        OXWLUTColorBar::clearClipboard();
        OXWFileDialog::clearTestAnswers();
    }

    static std::unique_ptr<TestBar> makeBar(OXWLUTObjectInfo* model, const char* name)
    {
        auto bar = std::make_unique<TestBar>(nullptr, name);
        bar->resize(kColumns + 2 * kFrame, 24);
        bar->show();
        bar->setModel(model);
        bar->updateAll();
        return bar;
    }

    OXWLUTIntervalInfo& interval(int i = 0) { return *model->interval(i); }
    QString path(const QString& name) const { return files.filePath(name); }
    // A menu item by its text (submenus by their title).
    QAction* menuItem(const QString& text) const
    {
        for (QAction* action : bar->contextMenu()->actions()) {
            if (action->text() == text) {
                return action;
            }
        }
        return nullptr;
    }

    struct
    {
        int calls = 0;
        QColor initial;
        float highlightStart = 0.0f;
        float highlightEnd = 0.0f;
    } dialog;
    QColor answer;
    std::function<void()> whileOpen;
    QStringList errors;
    int errorHandler = 0;

    QTemporaryDir settingsDir;
    QTemporaryDir files;
    OXWApplication app;
    std::unique_ptr<OXWLUTObjectInfo> model = makeObject(kColumns);
    std::unique_ptr<TestBar> bar;
};

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

// White with handles on columns 0, 85, 170 and 255.
class ColorBarMenu : public ColorBarTest
{
protected:
    void SetUp() override
    {
        ColorBarTest::SetUp();
        setColourCurves(interval(),
                        {{0.0f, 255.5f}, {1.0f / 3, 255.5f}, {2.0f / 3, 255.5f}, {1.0f, 255.5f}});
        bar->updateAll();
    }

    bool enabled(const char* item) const { return menuItem(item)->isEnabled(); }
    float value(int channel, int k) { return interval().handles(channel)[k].y; }

    // Runs an import or export of the first interval with the file dialog answering a file
    // (none: cancelled).
    void run(void (TestBar::*slot)(), const QString& name, const QString& filter)
    {
        bar->hit(60);
        OXWFileDialog::queueTestAnswer(
            {name.isEmpty() || name.startsWith('/') ? name : path(name), filter});
        (bar.get()->*slot)();
        EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
    }

    bool write(const QString& name, const QByteArray& bytes)
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
};

} // namespace

// Column c shows cell c: a curve black at cell 0 and white at local 0.5 climbs by two per
// column, then stays white; zoomed into the upper half, column c shows cell 128 + c / 2.
TEST_F(ColorBarTest, ColumnsShowTheCurvesAtTheirCells)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 255.0f}});
    bar->updateAll();
    ASSERT_EQ(bar->colorTable().size(), std::size_t(kColumns));
    for (int c = 0; c < kColumns; ++c) {
        const int grey = bar->shown(c).red();
        EXPECT_NEAR(grey, std::min(2 * c, 255), 1) << "column " << c;
        EXPECT_EQ(bar->shown(c), QColor(grey, grey, grey));
    }
    EXPECT_EQ(bar->shown(0), QColor(0, 0, 0));
    EXPECT_EQ(bar->shown(128), QColor(255, 255, 255));
    // The pixmap shows the table (top row, away from marks and borders); painting copies it.
    EXPECT_EQ(bar->pixel(200, 2), QColor(255, 255, 255));
    EXPECT_EQ(bar->pixel(50, 2), bar->shown(50));
    const QImage pixmap = bar->pixmap().toImage();
    EXPECT_EQ(
        bar->grab().toImage().copy(kFrame, kFrame, kColumns, 20).convertToFormat(pixmap.format()),
        pixmap);

    setColourCurves(interval(), {{0.0f, 0.0f}, {1.0f, 255.0f}});
    ASSERT_TRUE(model->setVisibleGreyRange(0.5f, 1.0f));
    bar->updateAll();
    for (int c = 0; c < kColumns; c += 17) {
        EXPECT_NEAR(bar->shown(c).red(), 128 + c / 2, 1.5) << "column " << c;
    }
    EXPECT_NEAR(bar->positionFromColumn(0), 0.5f, 1e-6f);
    EXPECT_EQ(bar->columnFromPosition(0.75f), 128);
    // The current interval's colour is shown at once; every widget of the bar has a name.
    bar->hit(50);
    bar->setCurrentIntervalColor(OXMRGB8(10, 20, 30));
    EXPECT_EQ(bar->pixel(50, 2), QColor(10, 20, 30));
    for (const QWidget* child : bar->findChildren<QWidget*>())
        EXPECT_FALSE(child->objectName().isEmpty()) << child->metaObject()->className();
}

TEST_F(ColorBarTest, ASingleHandleColoursTheWholeInterval)
{
    auto one = makeObject(1);
    one->interval(0)->setReferenceHandles(kRed, {{0.5f, 10.0f}});
    one->interval(0)->setReferenceHandles(kGreen, {{0.5f, 20.0f}});
    one->interval(0)->setReferenceHandles(kBlue, {{0.5f, 30.0f}});
    bar->setModel(one.get());
    bar->updateAll();
    ASSERT_TRUE(bar->isEnabled());
    for (int c = 0; c < kColumns; ++c) {
        EXPECT_EQ(bar->shown(c), QColor(10, 20, 30)) << c;
    }
    bar->setModel(nullptr);
}

// Handle marks (3 x 5 pixels at rows height - 8 .. height - 4) are grey 51 on light colours
// and grey 204 on dark ones; an interval's left border is black on a light colour and white
// on a dark one. Dark is a luminance class of 0 .. 2: grey 95 and below.
TEST_F(ColorBarTest, HandleMarksAndIntervalBordersContrastWithTheColour)
{
    ASSERT_TRUE(model->newInterval(0.5f, true));
    const int border = bar->columnFromPosition(interval(1).from());
    ASSERT_GT(border, 10);
    const std::tuple<int, int, int, int, QColor> cases[] = {
        {255, 0, 51, 204, Qt::white}, {96, 95, 51, 204, Qt::white}, {95, 96, 204, 51, Qt::black}};
    for (const auto& [left, right, leftMark, rightMark, line] : cases) {
        setColourCurves(interval(0), {{0.0f, left + 0.5f}, {1.0f, left + 0.5f}});
        setColourCurves(interval(1), {{0.0f, right + 0.5f}, {1.0f, right + 0.5f}});
        bar->updateAll();
        for (int row = 0; row < 20; ++row) {
            EXPECT_EQ(bar->pixel(border, row), line) << left << " " << row;
        }
        for (int row : {20 - 8, 20 - 4}) {
            EXPECT_EQ(bar->pixel(1, row), QColor(leftMark, leftMark, leftMark)) << left;
        }
        EXPECT_EQ(bar->pixel(1, 20 - 3), QColor(left, left, left)) << left;
        EXPECT_EQ(bar->pixel(border + 1, 20 - 6), QColor(rightMark, rightMark, rightMark));
    }
}

// While a handle is dragged its value is written next to it with the model's decimals, left
// of the handle near the right edge.
TEST_F(ColorBarTest, ValuesShownWhileDraggingGoLeftOfAHandleNearTheRightEdge)
{
    setColourCurves(interval(),
                    {{0.0f, 255.5f}, {0.5f, 255.5f}, {250.5f / 256, 255.5f}, {1.0f, 255.5f}});
    bar->updateAll();
    model->setValueDecimals(2);
    EXPECT_EQ(bar->valueText(interval().globalFromLocal(interval().handles(kRed)[1].x)),
              QStringLiteral("128.00"));
    EXPECT_EQ(bar->valueBox(128, 20).left(), 128);
    EXPECT_EQ(bar->valueBox(250, 20).right(), 249);
    EXPECT_EQ(bar->valueBox(250, 20).top(), -1);

    press(*bar, 250);
    ASSERT_EQ(bar->currentHandle(), 2);
    ASSERT_TRUE(bar->isShowingValues());
    moveTo(*bar, 250, Qt::LeftButton);
    // Black text on white, written left of column 250, nothing right of it.
    const QImage image = bar->pixmap().toImage();
    int ink[2] = {0, 0};
    for (int row = 0; row < 10; ++row) {
        for (int c = 200; c < kColumns; ++c) {
            if (c != 250 && QColor(image.pixel(c, row)).lightness() < 128) {
                ++ink[c > 250 ? 1 : 0];
            }
        }
    }
    EXPECT_GT(ink[0], 0);
    EXPECT_EQ(ink[1], 0);
    release(*bar, 250);
    EXPECT_FALSE(bar->isShowingValues());
}

// Without a model, or disabled by channels of different handle counts, the bar shows its
// background; it stays disabled until enabled from outside.
TEST_F(ColorBarTest, ADisabledBarOrOneWithoutModelShowsItsBackground)
{
    const QColor background = bar->palette().color(bar->backgroundRole());
    ASSERT_TRUE(interval().insertHandle(kGreen, 0.5f, 10.0f));
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(bar->pixel(100, 5), background);
    interval().deleteHandle(kGreen, 1);
    bar->updateAll();
    EXPECT_FALSE(bar->isEnabled());
    bar->setEnabled(true);
    bar->updateAll();
    EXPECT_NE(bar->pixel(100, 5), background);

    bar->setModel(nullptr);
    EXPECT_EQ(bar->pixel(255, 19), background);
    EXPECT_EQ(bar->positionFromColumn(10), 0.0f);
}

// The outline is black with the white dashes of the 8 x 8 stripe pattern (row 0: 0xF0), which
// move one step along the edges per call (the phase is shared by the process); the inside and
// the caller's painter are left as they were.
TEST_F(ColorBarTest, TheHighlightBorderRunsAlongTheEdges)
{
    while (OXWLUTColorBar::highlightPhase() != 0) {
        QImage scratch(8, 8, QImage::Format_RGB32);
        QPainter painter(&scratch);
        OXWLUTColorBar::drawHighlightBorder(&painter, scratch.rect());
    }
    QImage image(16, 8, QImage::Format_RGB32);
    for (const char* top : {"WWWWBBBBWWWWBBB", "BWWWWBBBBWWWWBB"}) {
        image.fill(Qt::red);
        QPainter painter(&image);
        painter.setPen(Qt::green);
        OXWLUTColorBar::drawHighlightBorder(&painter, image.rect());
        EXPECT_EQ(painter.pen().color(), QColor(Qt::green));
        for (int x = 0; x < 15; ++x) { // the corner x = 15 belongs to the right edge
            EXPECT_EQ(QColor(image.pixel(x, 0)), top[x] == 'W' ? Qt::white : Qt::black) << x;
        }
        EXPECT_EQ(QColor(image.pixel(5, 4)), QColor(Qt::red));
    }
}

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

TEST_F(ColorBarMenu, EnabledItemsFollowTheHitKind)
{
    const struct
    {
        int column, hit;
        bool insert, remove, handleColour, segmentColour;
    } cases[] = {{86, OXWLUTColorBar::HitHandle, false, true, true, false},
                 {128, OXWLUTColorBar::HitSegment, true, false, false, true}};
    for (const auto& c : cases) {
        rightClickMenu(*bar, c.column);
        ASSERT_EQ(bar->hitKind(), c.hit);
        EXPECT_EQ(enabled("Insert handle"), c.insert);
        EXPECT_EQ(enabled("Delete handle"), c.remove);
        EXPECT_EQ(enabled("Set handle color"), c.handleColour);
        EXPECT_EQ(enabled("Set color between handles"), c.segmentColour);
        EXPECT_FALSE(enabled("Paste interval color"));
        EXPECT_TRUE(enabled("Copy interval color"));
        bar->contextMenu()->hide();
        release(*bar, c.column, Qt::RightButton);
    }
}

// Each named colour of the handle, segment and interval menus sets the colour its icon shows:
// handles and segments with the added half, the whole interval without it.
TEST_F(ColorBarMenu, NamedColoursSetTheColourTheirIconShows)
{
    const struct
    {
        const char* menu;
        int column;
        std::vector<int> handles;
        float half;
    } cases[] = {{"Set handle color", 86, {1}, 0.5f},
                 {"Set color between handles", 128, {1, 2}, 0.5f},
                 {"Set interval color", 128, {0, 1}, 0.0f}};
    // The bar shows a segment's colour, its neighbours ramp into it.
    bar->hit(128);
    bar->setLineColorRed();
    EXPECT_EQ(bar->shown(128), QColor(255, 0, 0));
    EXPECT_GT(bar->shown(40).green(), bar->shown(80).green());
    for (const auto& c : cases) {
        int named = 0;
        for (QAction* action : menuItem(c.menu)->menu()->actions()) {
            if (action->icon().isNull()) {
                continue;
            }
            ++named;
            const QColor icon(action->icon().pixmap(14, 14).toImage().pixel(7, 7));
            bar->hit(c.column);
            const float x = interval().handles(kRed)[c.handles[0]].x;
            QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
            action->trigger();
            EXPECT_EQ(changed.count(), 1);
            const std::string item = std::string(c.menu) + " " + action->text().toStdString();
            for (int k : c.handles) {
                EXPECT_FLOAT_EQ(value(kRed, k), icon.red() + c.half) << item << " " << k;
                EXPECT_FLOAT_EQ(value(kGreen, k), icon.green() + c.half) << item << " " << k;
                EXPECT_FLOAT_EQ(value(kBlue, k), icon.blue() + c.half) << item << " " << k;
            }
            EXPECT_EQ(interval().handles(kRed)[c.handles[0]].x, x) << item;
        }
        EXPECT_EQ(named, 8) << c.menu;
    }
}

// The clipboard is shared by all bars; a paste stretches the colours over the target.
TEST_F(ColorBarMenu, CopyAndPasteStretchTheColoursOverTheTargetInAnyBar)
{
    auto otherModel = makeObject(kColumns);
    setColourCurves(*otherModel->interval(0), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 0.0f}});
    auto other = makeBar(otherModel.get(), "mDiffuseLUTColorBar");
    other->hit(10);
    other->copyIntervalColor();
    ASSERT_TRUE(model->newInterval(0.75f, false));
    bar->updateAll();
    rightClickMenu(*bar, 230);
    ASSERT_EQ(bar->currentIntervalIndex(), 1);
    EXPECT_TRUE(enabled("Paste interval color"));
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    menuItem("Paste interval color")->trigger();
    bar->contextMenu()->hide();
    EXPECT_EQ(changed.count(), 1);
    ASSERT_EQ(interval(1).handles(kRed).size(), 3u);
    EXPECT_NEAR(interval(1).handles(kRed)[1].x, 0.5f, 0.05f);
    EXPECT_FLOAT_EQ(interval(1).handles(kGreen)[1].y, 255.0f);
}

// --- Colour dialogs ---------------------------------------------------------------------------

// A dialog starts with the colour of what it colours (white for an interval that is not
// uniform), highlights it while it is open, and applies the chosen colour. A double click opens
// the dialog of what it hits.
TEST_F(ColorBarMenu, DialogsStartWithTheColourAndApplyTheAnswer)
{
    bar->hit(86);
    answer = QColor(100, 150, 200);
    bar->setPointColor();
    EXPECT_EQ(dialog.initial, QColor(255, 255, 255));
    EXPECT_FLOAT_EQ(dialog.highlightStart, model->snapDownToCell(85.5f / 256));
    EXPECT_FLOAT_EQ(dialog.highlightEnd, model->snapUpToCell(85.5f / 256));
    EXPECT_FLOAT_EQ(value(kRed, 1), 100.5f);
    EXPECT_FLOAT_EQ(value(kBlue, 1), 200.5f);

    bar->hit(128);
    answer = QColor(0, 0, 0);
    bar->setLineColor();
    EXPECT_EQ(dialog.initial, QColor(178, 203, 228)); // the mean of the handles, truncated
    EXPECT_FLOAT_EQ(value(kGreen, 1), 0.5f);
    EXPECT_FLOAT_EQ(value(kGreen, 2), 0.5f);

    answer = QColor(9, 8, 7);
    bar->setIntervalColor();
    EXPECT_EQ(dialog.initial, QColor(Qt::white));
    EXPECT_FLOAT_EQ(dialog.highlightStart, interval().from());
    EXPECT_FLOAT_EQ(dialog.highlightEnd, interval().to());
    EXPECT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_FLOAT_EQ(value(kRed, 0), 9.0f);
    EXPECT_FLOAT_EQ(value(kBlue, 1), 7.0f);
    EXPECT_EQ(bar->shown(128), QColor(9, 8, 7));
    bar->setIntervalColor();
    EXPECT_EQ(dialog.initial, QColor(9, 8, 7));
    EXPECT_GE(bar->highlightStart(), bar->highlightEnd());

    sendMouse(*bar, QEvent::MouseButtonDblClick, 1);
    EXPECT_EQ(dialog.calls, 5);
    EXPECT_NEAR(dialog.highlightEnd - dialog.highlightStart, model->greyStep(), 1e-6);
    sendMouse(*bar, QEvent::MouseButtonDblClick, 128);
    EXPECT_EQ(dialog.calls, 6);
    EXPECT_FLOAT_EQ(dialog.highlightEnd, interval().to());
}

// Cancelled, the interval gets back what it had when the dialog opened, and the bar reports it.
TEST_F(ColorBarMenu, CancellingRestoresTheIntervalAndStillEmits)
{
    bar->hit(86);
    const OXWLUTIntervalInfo before(interval());
    whileOpen = [this] { interval().setColour(OXMRGB8(1, 2, 3)); };
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->setPointColor();
    EXPECT_EQ(changed.count(), 1);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel), before.handles(channel)) << channel;
        EXPECT_EQ(interval().referenceHandles(channel), before.referenceHandles(channel));
    }
}

// --- Colour table files ----------------------------------------------------------------------

// The export dialog offers both formats and the chosen filter decides the format; import and
// export remember one folder. Every complete table read is reported, also one equal to the
// curves, and shown; a cancelled dialog changes nothing.
TEST_F(ColorBarMenu, ExportAndImportThroughTheFileDialog)
{
    run(&TestBar::exportIntervalColor, "plain", "*.act");
    run(&TestBar::exportIntervalColor, "text", "*.lut");
    run(&TestBar::exportIntervalColor, QString(), "*.lut");
    const OXWFileDialog::Request request = OXWFileDialog::lastRequest();
    EXPECT_TRUE(request.save);
    EXPECT_EQ(request.filters, QStringList({"*.lut", "*.act"}));
    EXPECT_EQ(QDir(files.path()).entryList(QDir::Files), QStringList({"plain.act", "text.lut"}));
    EXPECT_EQ(QFile(path("plain.act")).size(), 768);
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    run(&TestBar::importIntervalColor, QString(), "*.lut");
    EXPECT_FALSE(OXWFileDialog::lastRequest().save);
    EXPECT_STREQ(OXWFileDialog::lastRequest().identity.getName(), request.identity.getName());
    EXPECT_EQ(changed.count(), 0);
    ASSERT_TRUE(write("two.lut", "; Color look up table\n\n0.0 10 20 30\n1.0 110 120 130\n"));
    for (int emitted : {1, 2}) {
        run(&TestBar::importIntervalColor, "two.lut", "*.lut");
        EXPECT_EQ(changed.count(), emitted);
    }
    ASSERT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 130.0f);
    EXPECT_EQ(bar->shown(0), QColor(10, 20, 30));
}

// A refused file changes nothing and says so in one line naming the file and the reason;
// writing over a directory is refused as root too.
TEST_F(ColorBarMenu, RefusalsAreOneLineNamingTheFileAndTheReason)
{
    ASSERT_TRUE(write("short.act", QByteArray(767, '\x40')));
    ASSERT_TRUE(QDir(files.path()).mkdir("folder.lut"));
    const std::tuple<QString, const char*, void (TestBar::*)(), QString> cases[] = {
        {path("short.act"), "*.act", &TestBar::importIntervalColor, "no complete colour table"},
        {path("folder.lut"), "*.lut", &TestBar::exportIntervalColor, "cannot write: "}};
    const OXWLUTIntervalInfo before(interval());
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    for (const auto& [file, filter, slot, reason] : cases) {
        errors.clear();
        run(slot, file, filter);
        ASSERT_EQ(errors.size(), 1) << file.toStdString();
        EXPECT_TRUE(errors[0].startsWith(file + ": " + reason)) << errors[0].toStdString();
    }
    EXPECT_EQ(changed.count(), 0);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel), before.handles(channel));
        EXPECT_EQ(interval().referenceHandles(channel), before.referenceHandles(channel));
    }
}
