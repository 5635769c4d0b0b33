// The context menu and the operations behind it: enabled items per hit kind, the named colours,
// the process-wide colour clipboard, the colour dialogs with their backup, and colour table
// import and export (the file dialog answered through its test seam; the formats themselves
// are tested with OXWLUTColorTableFile).

#include "ColorBarTestSupport.h"

#include <QFile>

#include <sys/stat.h>
#include <tuple>

using namespace colorbartest;

namespace {

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
    auto otherModel = makeModel();
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

// The export dialog offers both formats; the chosen filter decides the format, and its
// extension is appended unless exactly present. Import and export remember one folder.
TEST_F(ColorBarMenu, TheChosenFilterDecidesFormatAndExtension)
{
    run(&TestBar::exportIntervalColor, "plain", "*.act");
    run(&TestBar::exportIntervalColor, "upper.ACT", "*.act");
    run(&TestBar::exportIntervalColor, "mixed.Act", "*.act");
    run(&TestBar::exportIntervalColor, "text", "*.lut");
    run(&TestBar::exportIntervalColor, QString(), "*.lut");
    const OXWFileDialog::Request request = OXWFileDialog::lastRequest();
    EXPECT_TRUE(request.save);
    EXPECT_EQ(request.filters, QStringList({"*.lut", "*.act"}));
    EXPECT_EQ(QDir(files.path()).entryList(QDir::Files),
              QStringList({"mixed.Act.act", "plain.act", "text.lut", "upper.ACT"}));
    for (const char* name : {"plain.act", "upper.ACT", "mixed.Act.act"}) {
        QFile palette(path(name));
        EXPECT_EQ(palette.size(), 768) << name;
    }
    run(&TestBar::importIntervalColor, QString(), "*.lut");
    EXPECT_FALSE(OXWFileDialog::lastRequest().save);
    EXPECT_STREQ(OXWFileDialog::lastRequest().identity.getName(), request.identity.getName());
}

// Every complete table read is reported, also one equal to the curves; the bar shows it.
TEST_F(ColorBarMenu, AnImportEmitsAfterEveryTableRead)
{
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    run(&TestBar::importIntervalColor, QString(), "*.lut");
    EXPECT_EQ(changed.count(), 0);
    ASSERT_TRUE(write("two.lut", "; Color look up table\n\n0.0 10 20 30\n1.0 110 120 130\n"));
    run(&TestBar::importIntervalColor, "two.lut", "*.lut");
    EXPECT_EQ(changed.count(), 1);
    ASSERT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[0].y, 10.0f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 130.0f);
    EXPECT_EQ(bar->shown(0), QColor(10, 20, 30));
    run(&TestBar::importIntervalColor, "two.lut", "*.lut");
    EXPECT_EQ(changed.count(), 2);
}

// A refused file changes nothing and says so in one line naming the file and the reason. A
// pipe is refused at once (it would block the import until ctest's timeout); as root too, so
// is writing over a directory.
TEST_F(ColorBarMenu, RefusalsAreOneLineNamingTheFileAndTheReason)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.lut")).constData(), 0600), 0);
    ASSERT_TRUE(write("short.act", QByteArray(767, '\x40')));
    ASSERT_TRUE(QDir(files.path()).mkdir("folder.lut"));
    const std::tuple<QString, const char*, void (TestBar::*)(), QString> cases[] = {
        {path("pipe.lut"), "*.lut", &TestBar::importIntervalColor, "not a regular file"},
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
