// The context menu and the colour operations behind it: enabled items per hit kind, the
// process-wide colour clipboard, handle, segment and interval colours, and the colour dialogs
// with their backup.

#include "ColorBarTestSupport.h"

using namespace colorbartest;

namespace {

class ColorBarMenu : public ColorBarTest
{
protected:
    void SetUp() override
    {
        ColorBarTest::SetUp();
        // White with handles on columns 0, 85, 170, 255.
        setColourCurves(interval(),
                        {{0.0f, 255.5f}, {1.0f / 3, 255.5f}, {2.0f / 3, 255.5f}, {1.0f, 255.5f}});
        bar->updateAll();
    }

    void expectEnabled(bool insert, bool remove, bool handleColour, bool segmentColour)
    {
        EXPECT_EQ(menuItem(*bar, "Insert handle")->isEnabled(), insert);
        EXPECT_EQ(menuItem(*bar, "Delete handle")->isEnabled(), remove);
        EXPECT_EQ(menuItem(*bar, "Set handle color")->isEnabled(), handleColour);
        EXPECT_EQ(menuItem(*bar, "Set color between handles")->isEnabled(), segmentColour);
        EXPECT_TRUE(menuItem(*bar, "Set interval color")->isEnabled());
        EXPECT_TRUE(menuItem(*bar, "Copy interval color")->isEnabled());
        EXPECT_TRUE(menuItem(*bar, "Import interval color...")->isEnabled());
        EXPECT_TRUE(menuItem(*bar, "Export interval color...")->isEnabled());
    }

    void closeMenu(int column)
    {
        bar->contextMenu()->hide();
        release(*bar, column, Qt::RightButton);
    }
};

} // namespace

TEST_F(ColorBarMenu, HasTheItemsInOrder)
{
    QStringList texts;
    for (QAction* action : bar->contextMenu()->actions()) {
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
    }
    EXPECT_EQ(texts, QStringList({"Insert handle", "Delete handle", "-", "Set handle color",
                                  "Set color between handles", "Set interval color", "-",
                                  "Copy interval color", "Paste interval color", "-",
                                  "Import interval color...", "Export interval color...", "-"}));
    QMenu* submenu = menuItem(*bar, "Set interval color")->menu();
    ASSERT_NE(submenu, nullptr);
    QStringList items;
    for (QAction* action : submenu->actions()) {
        items << (action->isSeparator() ? QStringLiteral("-") : action->text());
        if (!action->isSeparator() && action->text() != "Custom color...") {
            EXPECT_EQ(action->icon().availableSizes().value(0), QSize(14, 14));
        }
    }
    EXPECT_EQ(items, QStringList({"Custom color...", "-", "white", "black", "red", "green", "blue",
                                  "cyan", "magenta", "yellow"}));
    // The icons show the named colours.
    const QImage red = submenu->actions()[4]->icon().pixmap(14, 14).toImage();
    EXPECT_EQ(QColor(red.pixel(7, 7)), QColor(Qt::red));
}

TEST_F(ColorBarMenu, EnabledItemsFollowTheHitKind)
{
    rightClickMenu(*bar, 86);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitHandle);
    expectEnabled(false, true, true, false);
    closeMenu(86);

    rightClickMenu(*bar, 128);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitSegment);
    expectEnabled(true, false, false, true);
    closeMenu(128);
}

TEST_F(ColorBarMenu, PasteIsEnabledOnlyAfterACopyInAnyBar)
{
    rightClickMenu(*bar, 128);
    EXPECT_FALSE(menuItem(*bar, "Paste interval color")->isEnabled());
    closeMenu(128);

    auto otherModel = makeModel();
    TestBar other(nullptr, "mDiffuseLUTColorBar");
    other.resize(kColumns + 2 * kFrame, 24);
    other.show();
    other.setModel(otherModel.get());
    other.updateAll();
    other.hitTest(QPoint(xOf(40), 10));
    other.copyIntervalColor();
    EXPECT_EQ(OXWLUTColorBar::clipboard(kRed).size(), 2u);

    rightClickMenu(*bar, 128);
    EXPECT_TRUE(menuItem(*bar, "Paste interval color")->isEnabled());
    closeMenu(128);
}

TEST_F(ColorBarMenu, CopyAndPasteStretchTheColoursOverTheTarget)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 0.0f}});
    bar->hitTest(QPoint(xOf(10), 10));
    bar->copyIntervalColor();

    ASSERT_TRUE(model->newInterval(0.75f, false));
    setColourCurves(interval(1), {{0.0f, 7.0f}, {1.0f, 7.0f}});
    bar->updateAll();
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->hitTest(QPoint(xOf(230), 10));
    ASSERT_EQ(bar->currentIntervalIndex(), 1);
    bar->pasteIntervalColor();
    EXPECT_EQ(changed.count(), 1);
    ASSERT_EQ(interval(1).handles(kRed).size(), 3u);
    EXPECT_NEAR(interval(1).handles(kRed)[1].x, 0.5f, 0.05f);
    EXPECT_FLOAT_EQ(interval(1).handles(kGreen)[1].y, 255.0f);
}

TEST_F(ColorBarMenu, ASegmentColourGivesBothHandlesTheColour)
{
    rightClickMenu(*bar, 128);
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitSegment);
    ASSERT_EQ(bar->currentHandle(), 1);
    closeMenu(128);
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->setLineColorRed();
    EXPECT_EQ(changed.count(), 1);
    const float expected[3] = {255.5f, 0.5f, 0.5f};
    for (int c = 0; c < 3; ++c) {
        const HandleList& curve = interval().handles(kColours[c]);
        ASSERT_EQ(curve.size(), 4u);
        EXPECT_FLOAT_EQ(curve[1].y, expected[c]);
        EXPECT_FLOAT_EQ(curve[2].y, expected[c]);
        EXPECT_FLOAT_EQ(curve[0].y, 255.5f);
        EXPECT_FLOAT_EQ(curve[3].y, 255.5f);
    }
    // The neighbouring segments ramp to red; the segment is flat red.
    const auto& table = bar->colorTable();
    EXPECT_EQ(table[128].r, 255);
    EXPECT_EQ(table[128].g, 0);
    EXPECT_GT(table[40].g, table[80].g);
}

TEST_F(ColorBarMenu, AHandleColourKeepsThePosition)
{
    bar->hitTest(QPoint(xOf(86), 10));
    ASSERT_EQ(bar->currentHandle(), 1);
    const float x = interval().handles(kRed)[1].x;
    bar->setCurrentPointColor(OXMRGB8(1, 2, 3));
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, 1.5f);
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[1].y, 2.5f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 3.5f);
    EXPECT_EQ(interval().handles(kBlue)[1].x, x);
}

TEST_F(ColorBarMenu, NamedIntervalColoursEmitWithoutTheAddedHalf)
{
    bar->hitTest(QPoint(xOf(86), 10));
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->setIntervalColorWhite();
    EXPECT_EQ(changed.count(), 1);
    for (int channel : kColours) {
        ASSERT_EQ(interval().handles(channel).size(), 2u);
        EXPECT_FLOAT_EQ(interval().handles(channel)[0].y, 255.0f);
    }
}

TEST_F(ColorBarMenu, OperationsWithoutACurrentIntervalDoNothing)
{
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->insertPoint();
    bar->deletePoint();
    bar->setIntervalColorWhite();
    bar->setLineColorRed();
    bar->setIntervalColor();
    bar->pasteIntervalColor();
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(dialog.calls, 0);
}

TEST_F(ColorBarMenu, TheIntervalDialogStartsWhiteForARampAndWithTheColourOfAUniformInterval)
{
    setColourCurves(interval(), {{0.0f, 0.0f}, {1.0f, 255.0f}});
    bar->hitTest(QPoint(xOf(128), 10));
    bar->setIntervalColor();
    ASSERT_EQ(dialog.calls, 1);
    EXPECT_EQ(dialog.initial, QColor(Qt::white));
    EXPECT_EQ(dialog.name, QStringLiteral("Interval color"));
    EXPECT_EQ(dialog.parent, bar.get());
    // While open, the interval is highlighted.
    EXPECT_FLOAT_EQ(dialog.highlightStart, interval().from());
    EXPECT_FLOAT_EQ(dialog.highlightEnd, interval().to());

    interval().setColour(OXMRGB8(10, 20, 30));
    bar->setIntervalColor();
    EXPECT_EQ(dialog.initial, QColor(10, 20, 30));
    // Afterwards nothing is highlighted.
    EXPECT_GE(bar->highlightStart(), bar->highlightEnd());
}

TEST_F(ColorBarMenu, CancellingRestoresTheIntervalAndStillEmits)
{
    bar->hitTest(QPoint(xOf(86), 10));
    const OXWLUTIntervalInfo before(interval());
    dialog.answer = QColor();
    dialog.whileOpen = [this] { interval().setColour(OXMRGB8(1, 2, 3)); };
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    bar->setPointColor();
    EXPECT_EQ(dialog.calls, 1);
    EXPECT_EQ(changed.count(), 1);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel), before.handles(channel)) << channel;
        EXPECT_EQ(interval().referenceHandles(channel), before.referenceHandles(channel));
    }
}

TEST_F(ColorBarMenu, AcceptedDialogsApplyTheColour)
{
    bar->hitTest(QPoint(xOf(86), 10));
    dialog.answer = QColor(100, 150, 200);
    bar->setPointColor();
    EXPECT_EQ(dialog.initial, QColor(255, 255, 255));
    // The handle's cell is highlighted.
    EXPECT_FLOAT_EQ(dialog.highlightStart, model->snapDownToCell(85.5f / 256));
    EXPECT_FLOAT_EQ(dialog.highlightEnd, model->snapUpToCell(85.5f / 256));
    EXPECT_FLOAT_EQ(interval().handles(kRed)[1].y, 100.5f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 200.5f);

    bar->hitTest(QPoint(xOf(128), 10));
    ASSERT_EQ(bar->hitKind(), OXWLUTColorBar::HitSegment);
    dialog.answer = QColor(0, 0, 0);
    bar->setLineColor();
    // Initial: the mean of the two handles, truncated.
    EXPECT_EQ(dialog.initial, QColor(178, 203, 228));
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[1].y, 0.5f);
    EXPECT_FLOAT_EQ(interval().handles(kGreen)[2].y, 0.5f);

    dialog.answer = QColor(9, 8, 7);
    bar->setIntervalColor();
    EXPECT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[0].y, 9.0f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 7.0f);
}

TEST_F(ColorBarMenu, DoubleClicksOpenTheDialogOfTheHitKind)
{
    dialog.answer = QColor(); // cancel
    doubleClick(*bar, 86);
    EXPECT_EQ(dialog.calls, 1);
    EXPECT_NEAR(dialog.highlightEnd - dialog.highlightStart, model->greyStep(), 1e-6);
    doubleClick(*bar, 128);
    EXPECT_EQ(dialog.calls, 2);
    EXPECT_FLOAT_EQ(dialog.highlightStart, model->snapDownToCell(85.5f / 256));
}

TEST_F(ColorBarMenu, TheHighlightRunsWhileADialogIsOpen)
{
    bar->hitTest(QPoint(xOf(128), 10));
    int phaseBefore = -1;
    int phaseAfter = -1;
    dialog.whileOpen = [&] {
        phaseBefore = OXWLUTColorBar::highlightPhase();
        QTest::qWait(350);
        phaseAfter = OXWLUTColorBar::highlightPhase();
    };
    bar->setIntervalColor();
    EXPECT_NE(phaseBefore, phaseAfter);
    // The timer is gone with the dialog.
    EXPECT_TRUE(bar->findChildren<QTimer*>().isEmpty());
}
