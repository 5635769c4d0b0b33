// Edits in the editors written back to the host: a handle drag as one undo step, a split of
// the interval list, colours into the resolved channels, and the sharing of the diffuse
// colour table.

#include "PanelFixture.h"

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTabWidget>

#include <OXWSpinBox.h>

#include <cmath>

using namespace paneltest;

namespace {

class PanelWrite : public PanelFixture
{
protected:
    // The menu item with the given text, searched through the submenus; null if none.
    static QAction* findItem(QMenu* menu, const QString& text)
    {
        for (QAction* action : menu->actions()) {
            if (action->text() == text) {
                return action;
            }
            if (QMenu* sub = action->menu()) {
                if (QAction* found = findItem(sub, text)) {
                    return found;
                }
            }
        }
        return nullptr;
    }

    // A right click on the work area as X11 delivers it: press, context menu request, and the
    // release, which the menu takes when it popped up.
    void contextMenu(const QPoint& pos)
    {
        OXWLUTWorkArea* w = workArea();
        press(w, pos, Qt::RightButton);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, w->mapToGlobal(pos));
        QApplication::sendEvent(w, &event);
        if (w->contextMenu()->isVisible()) {
            forgetButtons();
        } else {
            release(w, pos);
        }
    }

    void expectHandlesNear(const HandleList& actual, const HandleList& expected, const char* what)
    {
        ASSERT_EQ(actual.size(), expected.size()) << what;
        for (std::size_t k = 0; k < actual.size(); ++k) {
            EXPECT_NEAR(actual[k].x, expected[k].x, 1e-4f) << what << " handle " << k;
            EXPECT_NEAR(actual[k].y, expected[k].y, 1e-6f) << what << " handle " << k;
        }
    }

    // Sets the colour curves of interval i (local x, model colour values).
    void setColours(int i, const HandleList& red, const HandleList& green, const HandleList& blue)
    {
        Info* interval = model()->interval(i);
        ASSERT_NE(interval, nullptr);
        ASSERT_TRUE(interval->setReferenceHandles(Red, red));
        ASSERT_TRUE(interval->setReferenceHandles(Green, green));
        ASSERT_TRUE(interval->setReferenceHandles(Blue, blue));
    }

    void showColourPage(int page)
    {
        auto* tabs = widget<QTabWidget>("mColorManipulationTabWidget");
        ASSERT_NE(tabs, nullptr);
        tabs->setCurrentIndex(page);
        // The colour set of the new page is read into a new model.
        ASSERT_TRUE(settle());
    }
};

const HandleList DefaultWhite{{float(PanelFixture::First), 1.0f},
                              {float(PanelFixture::Last), 1.0f}};

} // namespace

TEST_F(PanelWrite, AHandleDragIsOneUndoStepWhoseUndoRestoresHostAndModel)
{
    showPanel();
    const HandleList original{{float(First), 0.0f}, {17.0f, 0.5f}, {float(Last), 1.0f}};
    const int reads = panel->objectInfoReadCount();
    ASSERT_TRUE(setArray(channel(OXM::Opacity), OXM::LookupTableHandleList, original));
    ASSERT_TRUE(waitForReread(reads));
    ASSERT_EQ(model()->intervalCount(), 1);
    const HandleList fitted = model()->interval(0)->handles(Opacity);
    ASSERT_EQ(fitted.size(), 3u);
    ASSERT_EQ(app.undoStack()->count(), 0);

    OXWLUTWorkArea* w = workArea();
    const QPoint from = handlePoint(0, 1);
    const QPoint to = pointAt(model()->positionFromGrey(20.0f), 0.8f);
    press(w, from);
    ASSERT_EQ(w->pressAction(), int(OXWLUTWorkArea::PressHandle));
    for (int step = 1; step <= 4; ++step) {
        move(w, from + (to - from) * step / 4);
    }
    release(w, to);
    ASSERT_TRUE(settle());

    // One step, holding the whole drag.
    EXPECT_EQ(app.undoStack()->count(), 1);
    // The work area's press opens the outermost user action; the panel's "Change opacity"
    // inside it makes the change and names the step.
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change opacity"));
    const HandleList dragged = handleList(channel(OXM::Opacity));
    ASSERT_EQ(dragged.size(), 3u);
    EXPECT_NEAR(dragged[1].x, 20.0f, 1e-3f);
    EXPECT_NEAR(dragged[1].y, 0.8f, 2.0f / float(w->contentsRect().height()));
    expectHandlesNear(dragged, expectedHostHandles(Opacity), "dragged opacity");

    const int readsBeforeUndo = panel->objectInfoReadCount();
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_EQ(handleList(channel(OXM::Opacity)), original);
    // The model follows with the re-read 30 ms later.
    EXPECT_TRUE(panel->updateObjectInfoTimer()->isActive());
    EXPECT_NE(model()->interval(0)->handles(Opacity), fitted);
    ASSERT_TRUE(waitForReread(readsBeforeUndo));
    ASSERT_EQ(model()->intervalCount(), 1);
    EXPECT_EQ(model()->interval(0)->handles(Opacity), fitted);
    EXPECT_EQ(w->objectInfo(), model());
    EXPECT_EQ(app.undoStack()->count(), 0);
    EXPECT_EQ(app.undoStack()->redoCount(), 1);
}

TEST_F(PanelWrite, AnOpacityChangeOutsideAPressIsTheStepChangeOpacity)
{
    ASSERT_TRUE(settle());
    Info* interval = model()->interval(0);
    ASSERT_TRUE(interval->setReferenceHandles(Opacity, {{0.0f, 0.1f}, {0.5f, 0.9f}, {1.0f, 0.2f}}));
    emit workArea()->objectOpacityChanged();
    expectHandlesNear(handleList(channel(OXM::Opacity)), expectedHostHandles(Opacity), "opacity");
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change opacity"));
    EXPECT_TRUE(panel->isListening());
    // The panel's own write schedules no re-read.
    EXPECT_FALSE(panel->updateObjectInfoTimer()->isActive());
}

TEST_F(PanelWrite, ASplitThroughTheContextMenuWritesTheIntervalLists)
{
    showPanel();
    OXWLUTWorkArea* w = workArea();
    // Right click in the middle of cell 6 (grey value 16).
    const QPoint at = pointAt((6.0f + 0.5f) / float(Cells), 0.9f);
    contextMenu(at);
    ASSERT_TRUE(w->contextMenu()->isVisible());
    QAction* right = findItem(w->contextMenu(), QStringLiteral("At right side"));
    ASSERT_NE(right, nullptr);
    right->trigger();
    w->contextMenu()->hide();
    ASSERT_EQ(model()->intervalCount(), 2);

    // The border between the two intervals, at k + 0.5 in index units, is written as k.
    const float end = model()->greyFromPosition(model()->interval(0)->to());
    const int k = int(std::floor(end));
    ASSERT_NEAR(end, float(k) + 0.5f, 1e-3f);
    EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList),
              std::vector<int>({First - 1, k, Last}));
    EXPECT_EQ(array<OXMenum>(material(), OXM::IntervalModeList),
              std::vector<OXMenum>({OXM::Enabled, OXM::Enabled}));
    const std::vector<QByteArray> names = intervalNames(material());
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], model()->interval(0)->name().toLocal8Bit());
    EXPECT_EQ(names[1], model()->interval(1)->name().toLocal8Bit());

    // Opacity and colours of both intervals.
    expectHandlesNear(handleList(channel(OXM::Opacity)), expectedHostHandles(Opacity), "opacity");
    expectHandlesNear(handleList(channel(OXM::AmbientRed)), expectedHostHandles(Red), "red");
    expectHandlesNear(handleList(channel(OXM::AmbientGreen)), expectedHostHandles(Green), "green");
    expectHandlesNear(handleList(channel(OXM::AmbientBlue)), expectedHostHandles(Blue), "blue");
    EXPECT_GT(handleList(channel(OXM::Opacity)).size(), 2u);
    EXPECT_GT(handleList(channel(OXM::AmbientRed)).size(), 2u);
    EXPECT_TRUE(panel->isListening());
    ASSERT_TRUE(settle());
    EXPECT_EQ(model()->intervalCount(), 2);
}

// Model colours are host values times 256 (the host's white reads as 255.5).
TEST_F(PanelWrite, ColoursGoToTheAmbientChannelsOnTheAmbientPage)
{
    ASSERT_TRUE(settle());
    for (int c : {Red, Green, Blue}) {
        for (const Handle& h : model()->interval(0)->handles(c)) {
            EXPECT_FLOAT_EQ(h.y, 255.5f) << "channel " << c;
        }
    }
    setColours(0, {{0.0f, 255.5f}, {1.0f, 0.5f}}, {{0.0f, 128.0f}, {1.0f, 128.0f}},
               {{0.0f, 64.0f}, {1.0f, 64.0f}});
    emit ambientBar()->objectColorChanged();

    const float x0 = float(First);
    const float x1 = float(Last);
    EXPECT_EQ(handleList(channel(OXM::AmbientRed)),
              HandleList({{x0, 0.998046875f}, {x1, 0.001953125f}}));
    EXPECT_EQ(handleList(channel(OXM::AmbientGreen)), HandleList({{x0, 0.5f}, {x1, 0.5f}}));
    EXPECT_EQ(handleList(channel(OXM::AmbientBlue)), HandleList({{x0, 0.25f}, {x1, 0.25f}}));
    OXMenum mode;
    ASSERT_TRUE(channel(OXM::AmbientRed)->getValue(OXM::LookupTableHandleMode, mode));
    EXPECT_EQ(mode, OXM::Linear);
    // The diffuse colours keep their own tables.
    EXPECT_EQ(handleList(channel(OXM::DiffuseRed)), DefaultWhite);
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change color"));
}

TEST_F(PanelWrite, WithSharedDiffuseColoursTheDiffusePageWritesTheAmbientChannels)
{
    ASSERT_TRUE(channel(OXM::DiffuseRed)->setReference(channel(OXM::AmbientRed)));
    ASSERT_TRUE(channel(OXM::DiffuseGreen)->setReference(channel(OXM::AmbientGreen)));
    ASSERT_TRUE(channel(OXM::DiffuseBlue)->setReference(channel(OXM::AmbientBlue)));
    const HandleList diffuseOwn = handleList(channel(OXM::DiffuseRed));

    showColourPage(1);
    auto* shared = widget<QCheckBox>("mDiffuseSharedColortableCheckBox");
    ASSERT_NE(shared, nullptr);
    EXPECT_TRUE(shared->isChecked());
    EXPECT_EQ(panel->redObject(), channel(OXM::AmbientRed));
    EXPECT_EQ(panel->greenObject(), channel(OXM::AmbientGreen));
    EXPECT_EQ(panel->blueObject(), channel(OXM::AmbientBlue));
    EXPECT_EQ(panel->intensityObject(), channel(OXM::DiffuseIntensity));

    setColours(0, {{0.0f, 0.5f}, {1.0f, 255.5f}}, {{0.0f, 32.0f}, {1.0f, 32.0f}},
               {{0.0f, 192.0f}, {1.0f, 192.0f}});
    emit diffuseBar()->objectColorChanged();
    const float x0 = float(First);
    const float x1 = float(Last);
    EXPECT_EQ(handleList(channel(OXM::AmbientRed)),
              HandleList({{x0, 0.001953125f}, {x1, 0.998046875f}}));
    EXPECT_EQ(handleList(channel(OXM::AmbientGreen)), HandleList({{x0, 0.125f}, {x1, 0.125f}}));
    EXPECT_EQ(handleList(channel(OXM::AmbientBlue)), HandleList({{x0, 0.75f}, {x1, 0.75f}}));
    EXPECT_EQ(handleList(channel(OXM::DiffuseRed)), diffuseOwn);
    OXMenum mode;
    ASSERT_TRUE(channel(OXM::DiffuseRed)->getValue(OXM::MapMode, mode));
    EXPECT_EQ(mode, OXM::Reference);
}

TEST_F(PanelWrite, WithoutSharingTheDiffusePageWritesTheDiffuseChannels)
{
    showColourPage(1);
    auto* shared = widget<QCheckBox>("mDiffuseSharedColortableCheckBox");
    ASSERT_NE(shared, nullptr);
    EXPECT_FALSE(shared->isChecked());
    EXPECT_EQ(panel->redObject(), channel(OXM::DiffuseRed));

    setColours(0, {{0.0f, 0.5f}, {1.0f, 0.5f}}, {{0.0f, 0.5f}, {1.0f, 0.5f}},
               {{0.0f, 0.5f}, {1.0f, 0.5f}});
    emit diffuseBar()->objectColorChanged();
    const HandleList black{{float(First), 0.001953125f}, {float(Last), 0.001953125f}};
    EXPECT_EQ(handleList(channel(OXM::DiffuseRed)), black);
    EXPECT_EQ(handleList(channel(OXM::DiffuseGreen)), black);
    EXPECT_EQ(handleList(channel(OXM::DiffuseBlue)), black);
    EXPECT_EQ(handleList(channel(OXM::AmbientRed)), DefaultWhite);
}

TEST_F(PanelWrite, TheSharedCheckBoxLinksTheDiffuseChannelsToTheAmbientOnes)
{
    showColourPage(1);
    auto* shared = widget<QCheckBox>("mDiffuseSharedColortableCheckBox");
    ASSERT_NE(shared, nullptr);
    shared->click();
    const OXMenum diffuse[] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    const OXMenum ambient[] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    for (int c = 0; c < 3; ++c) {
        OXMenum mode;
        ASSERT_TRUE(channel(diffuse[c])->getValue(OXM::MapMode, mode));
        EXPECT_EQ(mode, OXM::Reference);
        EXPECT_EQ(channel(diffuse[c])->getLinkedObject(OXM::Reference), channel(ambient[c]));
    }
    EXPECT_EQ(app.undoStack()->count(), 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Change color settings"));
    // The colour set of the page now resolves to the ambient channels.
    ASSERT_TRUE(settle());
    EXPECT_EQ(panel->redObject(), channel(OXM::AmbientRed));

    // Undo takes the sharing back, and the panel follows.
    ASSERT_TRUE(app.undoStack()->undo());
    ASSERT_TRUE(settle());
    OXMenum mode;
    ASSERT_TRUE(channel(OXM::DiffuseRed)->getValue(OXM::MapMode, mode));
    EXPECT_EQ(mode, OXM::LookupTable);
    EXPECT_FALSE(shared->isChecked());
    EXPECT_EQ(panel->redObject(), channel(OXM::DiffuseRed));
}

// A step of a material or rendering spin box writes its channel's scale (percent boxes as
// fractions) in one undo step named after the box's own undo scope, whatever name the slot
// that writes the value opens inside it; its undo shows the old value in the box again.
TEST_F(PanelWrite, EachSpinBoxStepWritesItsChannelInOneUndoStepOfItsName)
{
    struct Box
    {
        int page;
        const char* name;
        const char* step;
        OXMenum channel; // Unknown: the render plug-in's sampling distance
        double scale;
    };
    const Box boxes[] = {
        {0, "mAmbientIntensitySpinBox", "Set ambient intensity", OXM::AmbientIntensity, 0.01},
        {1, "mDiffuseIntensitySpinBox", "Set diffuse intensity", OXM::DiffuseIntensity, 0.01},
        {2, "mSpecularShininessSpinBox", "Set specular shininess", OXM::Shininess, 1.0},
        {2, "mSpecularIntensitySpinBox", "Set specular intensity", OXM::SpecularIntensity, 0.01},
        {3, "mTransparencySpinBox", "Set transparency", OXM::Transparency, 0.01},
        {0, "mOversamplingSpinBox", "Set oversampling", OXM::Unknown, 0.0},
    };
    for (const Box& b : boxes) {
        SCOPED_TRACE(b.name);
        showColourPage(b.page);
        auto* box = widget<OXWSpinBox>(b.name);
        ASSERT_NE(box, nullptr);
        const double before = box->value();
        const int steps = app.undoStack()->count();
        box->stepUp();
        ASSERT_NE(box->value(), before);
        if (b.channel != OXM::Unknown) {
            float scale = -1.0f;
            ASSERT_TRUE(material()->getLinkedObject(b.channel)->getValue(OXM::Scale, scale));
            EXPECT_NEAR(scale, box->value() * b.scale, 1e-5);
        }
        EXPECT_EQ(app.undoStack()->count(), steps + 1);
        EXPECT_EQ(app.undoStack()->undoName(), QString::fromLatin1(b.step));
        ASSERT_TRUE(app.undoStack()->undo());
        EXPECT_TRUE(waitUntil([box, before] { return box->value() == before; }))
            << box->value() << " instead of " << before;
    }
}
