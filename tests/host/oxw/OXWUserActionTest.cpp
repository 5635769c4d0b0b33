// User actions and their undo steps: nesting, naming, what a step holds and restores (bit for
// bit, with one message per property), the stack's limits and clean state; randomly nested
// edits of every kind undone and redone step by step; the placement of new objects as a step.

#include "OXWApplication.h"
#include "OXWRoiAndVolumeExtractor.h"
#include "OXWSceneManager.h"
#include "OXWUndoStack.h"

#include <OXMIOC.h>
#include <OXMObjectIOCPtr.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMPropertyValue.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMScene.h>
#include <OXMScenePhantom.h>
#include <OXMSingleValueOP.h>
#include <OXMSingleton.h>
#include <OXMValueArrayOP.h>
#include <OXMVector2.h>
#include <OXMVolumeRenderObject.h>
#include <OXMVolumeTransform.h>

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

namespace {

// An object with the kinds of properties user actions change: scalars, arrays and a link.
class OXWTestItem : public OXMObject
{
public:
    explicit OXWTestItem(bool autoDelete = false)
    {
        setAutoDelete(autoDelete);
        addProperty(OXM::Opacity, &opacity);
        addProperty(OXM::Shininess, &shininess);
        addProperty(OXM::LookupTable, &table);
        addProperty(OXM::LookupTableHandleList, &handles);
        addProperty(OXM::Reference, &reference);
    }
    OXMSingleValueOP<float> opacity{1.0f};
    OXMSingleValueOP<int> shininess{0};
    OXMValueArrayOP<float> table;
    OXMValueArrayOP<OXMVector2<float>> handles;
    OXMSingleValueOP<OXMObjectLink> reference;
};

// Counts the change messages it receives, per property.
struct OXWChangeCounter : OXMIOC
{
    void iocCallback(Message& m) override
    {
        if (m.getType() == OXM::PropertyChanged)
            ++counts[m.getPropertyID().toInt()];
    }
    int count(OXMenum id) { return counts[id.toInt()]; }
    std::map<int, int> counts;
};

// The saved values of every property of the objects, in order.
using OXWSnapshot = std::vector<std::unique_ptr<OXMPropertyValue>>;

OXWSnapshot snapshotOf(const std::vector<OXMObject*>& objects)
{
    OXWSnapshot s;
    for (const OXMObject* object : objects) {
        for (int i = 0; i < object->getPropertyCount(); ++i)
            s.push_back(object->getPropertyAt(i)->saveValue());
    }
    return s;
}

// Bit-identical comparison: floats by their bits, the rest by value.
bool identical(const OXMPropertyValue& a, const OXMPropertyValue& b)
{
    if (const float* fa = a.get<float>()) {
        const float* fb = b.get<float>();
        return fb && std::memcmp(fa, fb, sizeof(float)) == 0;
    }
    if (const auto* va = a.get<std::vector<float>>()) {
        const auto* vb = b.get<std::vector<float>>();
        return vb && va->size() == vb->size() &&
               (va->empty() ||
                std::memcmp(va->data(), vb->data(), va->size() * sizeof(float)) == 0);
    }
    return a.equals(b);
}

::testing::AssertionResult sameState(const OXWSnapshot& expected, const OXWSnapshot& actual)
{
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure() << "different number of properties";
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!identical(*expected[i], *actual[i]))
            return ::testing::AssertionFailure() << "property value " << i << " differs";
    }
    return ::testing::AssertionSuccess();
}

class OXWUserAction : public ::testing::Test
{
protected:
    // One outermost action named name that sets the item's shininess.
    void step(int shininess, const QString& name = QStringLiteral("Step"))
    {
        OXWApplication::UserActionScope scope(name);
        item.shininess.setValue(shininess);
    }

    OXWApplication app;
    OXWUndoStack& stack = *app.undoStack();
    OXWTestItem item;
};

// Random edits of every kind on the items: scalars (some -0), whole arrays, ranges inside an
// array or growing it, links to the targets (with an auxiliary one or not), to nothing or to
// new objects that only links (and undo steps) keep alive; a few repeated values make writes
// that change nothing.
struct RandomEditor
{
    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }
    float value()
    {
        const int k = pick(8);
        return k == 0   ? 0.5f
               : k == 1 ? -0.0f
                        : std::uniform_real_distribution<float>(-100, 100)(random);
    }
    std::vector<float> values(int n)
    {
        std::vector<float> v(static_cast<std::size_t>(n));
        for (float& f : v)
            f = value();
        return v;
    }
    void edit(OXWTestItem (&items)[6], OXWTestItem (&targets)[4])
    {
        OXWTestItem& item = items[pick(6)];
        const int kind = pick(5);
        if (kind == 0) {
            item.opacity.setValue(value());
        } else if (kind == 1) {
            item.shininess.setValue(pick(5));
        } else if (kind == 2) {
            const std::vector<float> v = values(pick(20));
            item.table.initArray(0, int(v.size()) - 1, v.data());
        } else if (kind == 3) {
            const int first = pick(item.table.getArraySize() + 1);
            const std::vector<float> v = values(1 + pick(6));
            item.table.setArrayItems(first, first + int(v.size()) - 1, v.data());
        } else {
            const int choice = pick(7);
            item.reference.setValue(choice < 4    ? OXMObjectLink(&targets[choice])
                                    : choice == 4 ? OXMObjectLink()
                                    : choice == 5
                                        ? OXMObjectLink(new OXWTestItem(true))
                                        : OXMObjectLink(&targets[pick(4)], &targets[pick(4)]));
        }
    }
    std::mt19937 random;
};

class OXWUndoRandom : public ::testing::TestWithParam<unsigned>
{
};

} // namespace

// 1000 edits in randomly nested actions (some closed from further out, some renamed), and
// view changes outside them: undoing and redoing step by step gives back every state bit for
// bit, with one change message for each property that differs and none for the others.
TEST_P(OXWUndoRandom, UndoingAndRedoingEverythingRestoresEveryValue)
{
    OXWTestItem targets[4];
    OXWTestItem items[6];
    OXWTestItem view; // changed outside actions only
    std::vector<OXMObject*> edited;
    for (OXWTestItem& item : items)
        edited.push_back(&item);
    OXWChangeCounter counters[6];
    std::vector<OXMObjectIOCPtr> listening;
    for (int i = 0; i < 6; ++i)
        listening.emplace_back(&items[i], &counters[i]);
    const auto restored = [&](const OXWSnapshot& from, const OXWSnapshot& to) {
        const OXWSnapshot now = snapshotOf(edited);
        for (int i = 0, at = 0; i < 6; ++i) {
            for (int p = 0; p < items[i].getPropertyCount(); ++p, ++at) {
                const int messages = counters[i].count(items[i].getPropertyAt(p)->getID());
                if (messages != (identical(*from[std::size_t(at)], *to[std::size_t(at)]) ? 0 : 1))
                    return ::testing::AssertionFailure() << messages << " messages of " << at;
            }
            counters[i].counts.clear();
        }
        return sameState(to, now);
    };
    OXWApplication app;
    OXWUndoStack& stack = *app.undoStack();
    stack.setStepLimit(1 << 20);
    RandomEditor editor{std::mt19937(GetParam())};
    std::vector<OXWSnapshot> states; // [k]: after k stored steps
    states.push_back(snapshotOf(edited));
    std::vector<int> open;
    int edits = 0;
    while (edits < 1000 || !open.empty()) {
        const int r = editor.pick(10);
        if (edits < 1000 && (r < 2 && open.size() < 4)) {
            open.push_back(app.userActionBegin(QString("Action %1").arg(edits)));
        } else if (!open.empty() && (r < 4 || edits >= 1000)) {
            // Close the innermost or, now and then, one further out (closing those inside).
            const std::size_t at =
                editor.pick(4) == 0 ? std::size_t(editor.pick(int(open.size()))) : open.size() - 1;
            const int before = stack.count();
            app.userActionEnd(open[at], editor.pick(3) == 0 ? QString("Renamed") : QString());
            open.resize(at);
            if (open.empty()) {
                EXPECT_LE(stack.count(), before + 1);
                if (stack.count() == before + 1)
                    states.push_back(snapshotOf(edited));
                else
                    EXPECT_TRUE(sameState(states.back(), snapshotOf(edited)));
            }
        } else if (open.empty()) {
            view.opacity.setValue(editor.value()); // not recorded
            EXPECT_EQ(stack.openEntryCount(), 0);
        } else {
            editor.edit(items, targets);
            ++edits;
        }
    }
    ASSERT_EQ(std::size_t(stack.count()) + 1, states.size());
    // Random nesting groups the edits into many steps of several edits each.
    EXPECT_GT(stack.count(), 50);
    EXPECT_LT(stack.count(), 1000);
    const float viewOpacity = view.opacity.getValue();
    for (OXWChangeCounter& counter : counters)
        counter.counts.clear();
    for (std::size_t k = states.size() - 1; k > 0; --k) {
        ASSERT_TRUE(stack.undo());
        ASSERT_TRUE(restored(states[k], states[k - 1])) << "after undoing step " << k;
    }
    EXPECT_FALSE(stack.undo());
    EXPECT_EQ(view.opacity.getValue(), viewOpacity);
    for (std::size_t k = 1; k < states.size(); ++k) {
        ASSERT_TRUE(stack.redo());
        ASSERT_TRUE(restored(states[k - 1], states[k])) << "after redoing step " << k;
    }
    EXPECT_FALSE(stack.canRedo());
    while (stack.undo()) {
    }
    EXPECT_TRUE(sameState(states.front(), snapshotOf(edited)));
    while (stack.redo()) {
    }
    EXPECT_TRUE(sameState(states.back(), snapshotOf(edited)));
    stack.clear();
}

INSTANTIATE_TEST_SUITE_P(Seeds, OXWUndoRandom, ::testing::Values(1u, 42u, 20240611u));

// The undo recorder is installed while a user action is open, and only then; an application
// that goes with an action open takes it and its registration along.
TEST(OXWUserActionLifetime, TheRecorderIsInstalledOnlyWhileAnActionIsOpen)
{
    {
        OXWApplication app;
        EXPECT_EQ(OXMSingleton<OXWApplication>::getInstance(), &app);
        EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
        const int outer = app.userActionBegin("Outer");
        const int inner = app.userActionBegin("Inner");
        EXPECT_GT(outer, 0);
        EXPECT_NE(inner, outer);
        app.userActionEnd(inner);
        EXPECT_EQ(OXMObject::getUndoRecorder(), app.undoStack());
        EXPECT_TRUE(app.undoStack()->isStepOpen());
        app.userActionEnd(outer);
        EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
        EXPECT_FALSE(app.undoStack()->isStepOpen());
        app.userActionBegin("Left open");
    }
    EXPECT_EQ(OXMSingleton<OXWApplication>::getInstance(), nullptr);
    EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
    OXWApplication::UserActionScope scope("Nothing"); // without an application: nothing
}

// A step is named after the action that made its first change, unless an action names its
// step (a widget's own undo scope): outermost, nested in a press's general action, or after
// another action made the first change. The outermost end's text renames the step and closes
// the actions left open inside; an unknown id changes nothing.
TEST_F(OXWUserAction, AStepIsNamedByItsNamingActionElseByItsFirstChange)
{
    const auto first = OXWApplication::StepName::FromFirstChange;
    const auto own = OXWApplication::StepName::FromThisAction;
    const std::tuple<OXWApplication::StepName, OXWApplication::StepName, const char*> cases[] = {
        {first, first, "Inner"}, {own, first, "Outer"}, {first, own, "Inner"}, {own, own, "Outer"}};
    int value = 0;
    for (const auto& [outerNaming, innerNaming, expected] : cases) {
        const int outer = app.userActionBegin("Outer", outerNaming);
        {
            OXWApplication::UserActionScope inner("Inner", innerNaming);
            item.opacity.setValue(float(++value) / 8);
        }
        step(value, "Later");
        app.userActionEnd(outer);
        EXPECT_EQ(stack.undoName(), QString(expected)) << value;
    }
    step(0, "Change opacity"); // the name does not outlive its step
    EXPECT_EQ(stack.undoName(), QString("Change opacity"));
    const int outer = app.userActionBegin("Outer");
    app.userActionBegin("Left open");
    item.shininess.setValue(3);
    app.userActionEnd(outer, "Renamed");
    EXPECT_FALSE(app.isUserActionOpen());
    EXPECT_EQ(stack.undoText(), QString("Undo Renamed"));
    app.userActionEnd(12345);
    EXPECT_EQ(stack.count(), 6);
}

// A step holds an object it removed until it can no longer be restored; the entries of an
// object that died are skipped, and one that dies while the action is open leaves nothing.
TEST_F(OXWUserAction, AStepHoldsWhatItRemovedAndSkipsWhatDied)
{
    auto* child = new OXWTestItem(true); // owned by the links that name it
    OXMObjectWeakPtr watch(child);
    item.reference.setValue(OXMObjectLink(child));
    auto doomed = std::make_unique<OXWTestItem>();
    {
        OXWApplication::UserActionScope scope("Remove");
        item.reference.setValue(OXMObjectLink());
        item.shininess.setValue(5);
        doomed->shininess.setValue(6);
    }
    doomed.reset();
    {
        OXWApplication::UserActionScope scope("Short life");
        OXWTestItem temporary;
        temporary.shininess.setValue(9);
    }
    EXPECT_EQ(stack.count(), 1);
    ASSERT_TRUE(watch); // the step holds it
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(item.reference.getValue().getLink(), watch.get());
    EXPECT_EQ(item.shininess.getValue(), 0);
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(item.shininess.getValue(), 5);
    stack.clear();
    EXPECT_FALSE(watch);
}

// Writes outside actions, empty actions and changes that end where they started leave no
// step and no signal; an empty action keeps the redo list.
TEST_F(OXWUserAction, OnlyActionsThatChangeSomethingLeaveAStep)
{
    QSignalSpy spy(&stack, &OXWUndoStack::changed);
    item.opacity.setValue(0.7f); // e.g. view state
    app.userActionEnd(app.userActionBegin("Nothing"));
    {
        OXWApplication::UserActionScope scope("Back and forth");
        item.opacity.setValue(0.3f);
        item.opacity.setValue(0.7f);
        item.opacity.setValue(0.7f);
    }
    EXPECT_FALSE(stack.canUndo());
    EXPECT_EQ(spy.count(), 0);

    step(2);
    item.opacity.setValue(0.9f);
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.entryCount(), 1);
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(item.shininess.getValue(), 0);
    EXPECT_EQ(item.opacity.getValue(), 0.9f);
    app.userActionEnd(app.userActionBegin("Empty"));
    EXPECT_TRUE(stack.canRedo());
}

TEST_F(OXWUserAction, ADragOfManyWritesToOnePropertyCostsOneEntry)
{
    std::vector<OXMVector2<float>> handles(100);
    const auto start = item.handles.getStoredArray();
    const int id = app.userActionBegin("Move handles");
    for (int move = 0; move < 1000; ++move) {
        for (std::size_t i = 0; i < handles.size(); ++i)
            handles[i] = {float(i), float(move) * 0.001f};
        item.handles.initArray(0, int(handles.size()) - 1, handles.data());
        item.opacity.setValue(float(move) / 1000.0f);
        EXPECT_LE(stack.openEntryCount(), 2);
    }
    app.userActionEnd(id);
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.entryCount(), 2);
    ASSERT_TRUE(stack.undo());
    EXPECT_TRUE(item.handles.getStoredArray() == start);
    EXPECT_EQ(item.opacity.getValue(), 1.0f);
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(item.handles.getStoredArray().back().y, float(999) * 0.001f);
}

// Undo and redo are refused while an action is open; a new step clears the redo list; the
// step limit drops the oldest steps.
TEST_F(OXWUserAction, TheStackRefusesWhileOpenClearsRedoAndKeepsItsLimit)
{
    QSignalSpy spy(&stack, &OXWUndoStack::changed);
    EXPECT_EQ(stack.stepLimit(), OXWUndoStack::DefaultStepLimit);
    stack.setStepLimit(3);
    for (int i = 1; i <= 5; ++i)
        step(i, QString("Step %1").arg(i));
    EXPECT_EQ(spy.count(), 5);
    EXPECT_EQ(stack.count(), 3);
    int open = app.userActionBegin("Open");
    item.shininess.setValue(6);
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.undo());
    EXPECT_EQ(item.shininess.getValue(), 6);
    app.userActionEnd(open);
    ASSERT_TRUE(stack.undo());
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(stack.redoCount(), 2);
    EXPECT_EQ(stack.redoText(), QString("Redo Step 5"));
    open = app.userActionBegin("Open");
    EXPECT_FALSE(stack.redo());
    app.userActionEnd(open);
    step(9, "Other");
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(stack.count(), 2);
    EXPECT_EQ(spy.count(), 9);
    while (stack.undo()) {
    }
    EXPECT_EQ(item.shininess.getValue(), 3);
    stack.clear();
    EXPECT_EQ(stack.count() + stack.redoCount(), 0);
}

// The saved state: a step away from it, undo back to it, redo away again, a new step in
// place of an undone one (the saved state can no longer be reached).
TEST_F(OXWUserAction, TheCleanStateFollowsUndoAndRedoBackToTheSavedStep)
{
    EXPECT_TRUE(stack.isClean());
    step(1);
    EXPECT_FALSE(stack.isClean());
    stack.setClean();
    step(2);
    EXPECT_FALSE(stack.isClean());
    const struct
    {
        bool undo;
        bool clean;
    } moves[] = {{true, true}, {true, false}, {false, true}, {true, false}};
    for (const auto& m : moves) {
        ASSERT_TRUE(m.undo ? stack.undo() : stack.redo());
        EXPECT_EQ(stack.isClean(), m.clean);
    }
    step(3);
    EXPECT_FALSE(stack.isClean());
    ASSERT_TRUE(stack.undo());
    EXPECT_FALSE(stack.isClean()) << "the saved step was replaced by another";
}

// The scene manager places new objects and selects them through the application's selection.

namespace {

std::vector<OXMObjectPath> selection(const OXWApplication& app, OXMenum list)
{
    return OXMObject::arrayOf<OXMObjectPath>(&app, list);
}

class OXWSceneManagerTest : public ::testing::Test
{
protected:
    OXWSceneManagerTest()
    {
        manager->setScene(scene);
        auto* grid = OXMScenePhantom::createGrid16(size);
        volume = OXMVolumeRenderObject::create(grid, "CT");
        OXMObjectLink link(volume, new OXMVolumeTransform);
        link.setPropertyID(OXM::VolumeRenderObjectList);
        manager->addAndSelectObject(link, OXMObjectPath());
        volumePath = OXWSceneManager::getSelection();
    }

    int size = 24;
    OXWApplication app;
    OXMObjectPtr sceneHold{new OXMScene};
    OXMScene* scene = static_cast<OXMScene*>(sceneHold.get());
    OXMObjectPtr managerHold{new OXWSceneManager};
    OXWSceneManager* manager = static_cast<OXWSceneManager*>(managerHold.get());
    OXMVolumeRenderObject* volume = nullptr;
    OXMObjectPath volumePath;
};

} // namespace

// Inside a user action the insertion and the selection are one step: its undo takes the new
// region out and selects the volume again, its redo brings both back.
TEST_F(OXWSceneManagerTest, UndoOfAPlacementRemovesTheObjectAndRestoresTheSelection)
{
    OXMObject* roi = nullptr;
    {
        OXWApplication::UserActionScope action(QStringLiteral("Add region"));
        roi = OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(volumePath, OXM::Gray,
                                                                       OXMInterval(1500, 2500));
        ASSERT_NE(roi, nullptr);
        OXMObjectLink link(roi);
        link.setPropertyID(OXM::RegionOfInterestList);
        ASSERT_TRUE(manager->addAndSelectObject(link, volumePath));
    }
    const OXMObjectPath roiPath = OXWSceneManager::getSelection();
    EXPECT_EQ(roiPath.getLink(-1), roi);
    EXPECT_EQ(roiPath.getPathDepth(), 3);
    EXPECT_TRUE(selection(app, OXM::RenderObjectSelectionList).empty());
    EXPECT_GT(static_cast<OXMRegionOfInterest*>(roi)->getMaskVoxelCount(), 0);

    ASSERT_EQ(app.undoStack()->count(), 1);
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_TRUE(volume->getLinks(OXM::RegionOfInterestList).empty());
    EXPECT_EQ(OXWSceneManager::getSelection(), volumePath);
    ASSERT_TRUE(app.undoStack()->redo());
    EXPECT_EQ(OXWSceneManager::getSelection(), roiPath);
    EXPECT_EQ(static_cast<OXMRegionOfInterest*>(roi)->getVolume(), volume);
}
