// The panel as event filter of the opacity editor: mouse moves held back and delivered as
// the latest one every 50 ms, never overtaken by a press.

#include "PanelFixture.h"

#include <QToolButton>

using namespace paneltest;

namespace {

class PanelEvents : public PanelFixture
{
protected:
    void SetUp() override
    {
        PanelFixture::SetUp();
        if (HasFatalFailure()) {
            return;
        }
        showPanel();
        ASSERT_TRUE(settle());
        // The recorder must see what passes the panel's filter. Filters installed later run
        // earlier, so the panel's filter is installed again after the recorder.
        OXWLUTWorkArea* w = workArea();
        ASSERT_NE(w, nullptr);
        w->removeEventFilter(panel.get());
        w->installEventFilter(&recorder);
        w->installEventFilter(panel.get());
    }

    void TearDown() override
    {
        if (OXWLUTWorkArea* w = workArea()) {
            w->removeEventFilter(&recorder);
        }
        PanelFixture::TearDown();
    }

    // Ten points along the middle of the work area, above the curve.
    std::vector<QPoint> tenPoints() const
    {
        std::vector<QPoint> points;
        for (int i = 0; i < 10; ++i) {
            points.push_back(pointAt((2.0f + float(i)) / float(Cells), 0.95f));
        }
        return points;
    }

    MouseRecorder recorder;
};

} // namespace

TEST_F(PanelEvents, TenMovesWithin50MsReachTheWorkAreaAsTheLastOne)
{
    OXWLUTWorkArea* w = workArea();
    const std::vector<QPoint> points = tenPoints();
    for (const QPoint& p : points) {
        move(w, p);
    }
    // Held back: nothing reached the work area yet.
    EXPECT_EQ(recorder.count(QEvent::MouseMove), 0);
    EXPECT_TRUE(panel->isDelayedEventPending());
    ASSERT_NE(panel->delayedMouseMoveTimer(), nullptr);
    EXPECT_TRUE(panel->delayedMouseMoveTimer()->isActive());
    EXPECT_TRUE(panel->delayedMouseMoveTimer()->isSingleShot());
    EXPECT_EQ(panel->delayedMouseMoveTimer()->interval(), OXWClassificationToolGUI::MouseMoveDelay);

    ASSERT_TRUE(waitUntil([this] { return recorder.count(QEvent::MouseMove) > 0; }));
    QTest::qWait(150);
    ASSERT_EQ(recorder.records.size(), 1u);
    EXPECT_EQ(recorder.records[0].type, QEvent::MouseMove);
    EXPECT_EQ(recorder.records[0].pos, points.back());
    EXPECT_FALSE(panel->isDelayedEventPending());
}

TEST_F(PanelEvents, APressRightAfterTheMovesIsDeliveredAfterTheLastMove)
{
    OXWLUTWorkArea* w = workArea();
    const std::vector<QPoint> points = tenPoints();
    for (const QPoint& p : points) {
        move(w, p);
    }
    const QPoint at = points.back();
    press(w, at, Qt::LeftButton);
    ASSERT_EQ(recorder.records.size(), 2u);
    EXPECT_EQ(recorder.records[0].type, QEvent::MouseMove);
    EXPECT_EQ(recorder.records[0].pos, points.back());
    EXPECT_EQ(recorder.records[1].type, QEvent::MouseButtonPress);
    EXPECT_FALSE(panel->isDelayedEventPending());
    release(w, at);
    QTest::qWait(120);
    EXPECT_EQ(recorder.count(QEvent::MouseMove), 1);
    EXPECT_EQ(recorder.count(QEvent::MouseButtonRelease), 1);
}

TEST_F(PanelEvents, MovesOfADragAreDeliveredBeforeTheRelease)
{
    OXWLUTWorkArea* w = workArea();
    const std::vector<QPoint> points = tenPoints();
    press(w, points.front(), Qt::LeftButton);
    for (const QPoint& p : points) {
        move(w, p);
    }
    release(w, points.back());
    ASSERT_EQ(recorder.records.size(), 3u);
    EXPECT_EQ(recorder.records[0].type, QEvent::MouseButtonPress);
    EXPECT_EQ(recorder.records[1].type, QEvent::MouseMove);
    EXPECT_EQ(recorder.records[1].pos, points.back());
    EXPECT_EQ(recorder.records[2].type, QEvent::MouseButtonRelease);
    QTest::qWait(120);
    EXPECT_EQ(recorder.records.size(), 3u);
}

TEST_F(PanelEvents, MovesFarApartAreEachDelivered)
{
    OXWLUTWorkArea* w = workArea();
    const std::vector<QPoint> points = tenPoints();
    move(w, points[0]);
    ASSERT_TRUE(waitUntil([this] { return recorder.count(QEvent::MouseMove) == 1; }));
    move(w, points[5]);
    ASSERT_TRUE(waitUntil([this] { return recorder.count(QEvent::MouseMove) == 2; }));
    EXPECT_EQ(recorder.records[0].pos, points[0]);
    EXPECT_EQ(recorder.records[1].pos, points[5]);
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
        EXPECT_EQ(panelPaints.paints, 0) << (zoomed ? "zoomed in" : "at zoom 1");
        EXPECT_GE(editorPaints.paints, 1) << (zoomed ? "zoomed in" : "at zoom 1");
    }
    workArea()->removeEventFilter(&editorPaints);
    panel->removeEventFilter(&panelPaints);
}
