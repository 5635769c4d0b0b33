#include "OXWUndoTestObjects.h"

#include <OXMObjectIOCPtr.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace {

std::uint32_t bits(float f)
{
    std::uint32_t b;
    std::memcpy(&b, &f, sizeof b);
    return b;
}

std::vector<float> tableOf(const OXWTestItem& item)
{
    return item.table.getStoredArray();
}

class OXWUserAction : public ::testing::Test
{
protected:
    OXWApplication app;
    OXWUndoStack& stack = *app.undoStack();
};

} // namespace

TEST_F(OXWUserAction, RegistersAsSingletonAndInstallsTheUndoStack)
{
    EXPECT_EQ(OXMSingleton<OXWApplication>::getInstance(), &app);
    ASSERT_NE(app.undoStack(), nullptr);
    // Installed while a user action is open, and only then.
    EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
    const int outer = app.userActionBegin("Outer");
    EXPECT_EQ(OXMObject::getUndoRecorder(), app.undoStack());
    const int inner = app.userActionBegin("Inner");
    app.userActionEnd(inner);
    EXPECT_EQ(OXMObject::getUndoRecorder(), app.undoStack());
    EXPECT_TRUE(app.undoStack()->isStepOpen());
    app.userActionEnd(outer);
    EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
    EXPECT_FALSE(app.undoStack()->isStepOpen());
}

TEST(OXWUserActionLifetime, UnregistersAndUninstallsWhenDestroyed)
{
    {
        OXWApplication app;
        EXPECT_EQ(OXMSingleton<OXWApplication>::getInstance(), &app);
        app.userActionBegin("Left open");
    }
    EXPECT_EQ(OXMSingleton<OXWApplication>::getInstance(), nullptr);
    EXPECT_EQ(OXMObject::getUndoRecorder(), nullptr);
    // A scope without an application does nothing.
    OXWApplication::UserActionScope scope("Nothing");
}

TEST_F(OXWUserAction, NestedActionsFormOneStep)
{
    OXWTestItem item;
    const int outer = app.userActionBegin("Change opacity");
    EXPECT_GT(outer, 0);
    EXPECT_TRUE(app.isUserActionOpen());
    item.opacity.setValue(0.5f);
    {
        OXWApplication::UserActionScope inner("Inner scope");
        item.shininess.setValue(7);
        const int innermost = app.userActionBegin("Innermost");
        EXPECT_NE(innermost, outer);
        item.opacity.setValue(0.25f);
        app.userActionEnd(innermost, "Ignored name");
    }
    EXPECT_TRUE(app.isUserActionOpen());
    EXPECT_EQ(stack.count(), 0);
    app.userActionEnd(outer);
    EXPECT_FALSE(app.isUserActionOpen());
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.entryCount(), 2);
    EXPECT_EQ(stack.undoText(), QString("Undo Change opacity"));

    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(item.opacity.getValue(), 1.0f);
    EXPECT_EQ(item.shininess.getValue(), 0);
    EXPECT_EQ(stack.redoText(), QString("Redo Change opacity"));
    EXPECT_EQ(stack.undoText(), QString());
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(item.opacity.getValue(), 0.25f);
    EXPECT_EQ(item.shininess.getValue(), 7);
}

TEST_F(OXWUserAction, AStepIsNamedAfterTheActionThatMadeItsFirstChange)
{
    // A press opens a general action; the slot inside it makes the change and names it.
    OXWTestItem item;
    const int press = app.userActionBegin("Change color");
    {
        OXWApplication::UserActionScope write("Change opacity");
        item.opacity.setValue(0.5f);
    }
    {
        OXWApplication::UserActionScope later("Change shininess");
        item.shininess.setValue(3);
    }
    app.userActionEnd(press);
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.undoName(), QString("Change opacity"));

    // A text given to the outermost end still renames the step.
    const int renamed = app.userActionBegin("Outer");
    {
        OXWApplication::UserActionScope write("Inner");
        item.opacity.setValue(0.75f);
    }
    app.userActionEnd(renamed, "Chosen");
    EXPECT_EQ(stack.undoName(), QString("Chosen"));
}

// A widget's own undo scope names its step whatever the slots it runs open: outermost, nested
// in a press's general action, or after another action made the first change.
TEST_F(OXWUserAction, AnActionThatNamesItsStepWinsOverTheFirstChange)
{
    using Naming = OXWApplication::StepName;
    struct Case
    {
        const char* outer;
        Naming outerNaming;
        const char* inner;
        Naming innerNaming;
        const char* expected;
    };
    const Case cases[] = {
        {"Set transparency", Naming::FromThisAction, "Change transparency", Naming::FromFirstChange,
         "Set transparency"},
        {"Change color", Naming::FromFirstChange, "Set oversampling", Naming::FromThisAction,
         "Set oversampling"},
        {"Set ambient intensity", Naming::FromThisAction, "Set diffuse intensity",
         Naming::FromThisAction, "Set ambient intensity"},
    };
    OXWTestItem item;
    float value = 0.0f;
    for (const Case& c : cases) {
        const int outer = app.userActionBegin(c.outer, c.outerNaming);
        {
            OXWApplication::UserActionScope inner(c.inner, c.innerNaming);
            item.opacity.setValue(value += 0.125f);
        }
        item.shininess.setValue(int(value * 8));
        app.userActionEnd(outer);
        EXPECT_EQ(stack.undoName(), QString(c.expected)) << c.outer << " / " << c.inner;
    }
    // The name does not outlive its step.
    {
        OXWApplication::UserActionScope plain("Change opacity");
        item.opacity.setValue(0.0f);
    }
    EXPECT_EQ(stack.undoName(), QString("Change opacity"));
}

TEST_F(OXWUserAction, EndingTheOutermostClosesTheActionsStillOpenInside)
{
    OXWTestItem item;
    const int outer = app.userActionBegin("Outer");
    app.userActionBegin("Left open");
    item.shininess.setValue(3);
    app.userActionEnd(outer, "Renamed");
    EXPECT_FALSE(app.isUserActionOpen());
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.undoText(), QString("Undo Renamed"));
    // An unknown id changes nothing.
    app.userActionEnd(12345);
    EXPECT_EQ(stack.count(), 1);
}

TEST_F(OXWUserAction, UndoAndRedoOfAScalarRestoreBitIdenticalValuesAndSendMessages)
{
    OXWTestItem item;
    item.opacity.setValue(-0.0f);
    OXWChangeCounter counter;
    OXMObjectIOCPtr listen(&item, &counter);
    const float target = 0.1f + 0.2f;
    {
        OXWApplication::UserActionScope scope("Change opacity");
        item.opacity.setValue(target);
    }
    EXPECT_EQ(counter.count(OXM::Opacity), 1);
    counter.reset();
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(bits(item.opacity.getValue()), bits(-0.0f));
    EXPECT_EQ(counter.count(OXM::Opacity), 1);
    EXPECT_EQ(counter.total, 1);
    counter.reset();
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(bits(item.opacity.getValue()), bits(target));
    EXPECT_EQ(counter.count(OXM::Opacity), 1);
    EXPECT_EQ(counter.total, 1);
}

TEST_F(OXWUserAction, UndoAndRedoOfArraysRestoreBitIdenticalValuesAndSendMessages)
{
    OXWTestItem item;
    const float start[] = {0.1f, -0.0f, 3.5f};
    item.table.initArray(0, 2, start);
    const std::vector<float> before = tableOf(item);
    OXWChangeCounter counter;
    OXMObjectIOCPtr listen(&item, &counter);
    {
        OXWApplication::UserActionScope scope("Edit table");
        const float tail[] = {7.0f, 8.0f, 9.0f};
        item.table.setArrayItems(2, 4, tail);
        const float head[] = {1.0f / 3.0f};
        item.table.setArrayItems(0, 0, head);
        const OXMVector2<float> handles[] = {{0.f, 0.f}, {0.5f, 1.f}};
        item.handles.initArray(0, 1, handles);
    }
    const std::vector<float> after = tableOf(item);
    ASSERT_EQ(after.size(), 5u);
    EXPECT_EQ(stack.entryCount(), 2);
    counter.reset();
    ASSERT_TRUE(stack.undo());
    ASSERT_EQ(tableOf(item).size(), before.size());
    EXPECT_EQ(std::memcmp(tableOf(item).data(), before.data(), before.size() * sizeof(float)), 0);
    EXPECT_EQ(item.handles.getArraySize(), 0);
    EXPECT_EQ(counter.count(OXM::LookupTable), 1);
    EXPECT_EQ(counter.count(OXM::LookupTableHandleList), 1);
    counter.reset();
    ASSERT_TRUE(stack.redo());
    ASSERT_EQ(tableOf(item).size(), after.size());
    EXPECT_EQ(std::memcmp(tableOf(item).data(), after.data(), after.size() * sizeof(float)), 0);
    EXPECT_EQ(item.handles.getArraySize(), 2);
    EXPECT_EQ(counter.total, 2);
}

TEST_F(OXWUserAction, UndoAndRedoOfLinksRestoreTheSameObjects)
{
    OXWTestItem holder;
    OXWTestItem first;
    OXWTestItem second;
    holder.reference.setValue(OXMObjectLink(&first));
    OXWChangeCounter counter;
    OXMObjectIOCPtr listen(&holder, &counter);
    {
        OXWApplication::UserActionScope scope("Relink");
        holder.reference.setValue(OXMObjectLink(&second, &first));
    }
    counter.reset();
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(holder.reference.getValue().getLink(), &first);
    EXPECT_EQ(holder.reference.getValue().getAuxLink(), nullptr);
    EXPECT_EQ(counter.count(OXM::Reference), 1);
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(holder.reference.getValue().getLink(), &second);
    EXPECT_EQ(holder.reference.getValue().getAuxLink(), &first);
    EXPECT_EQ(counter.count(OXM::Reference), 2);
    stack.clear();
}

TEST_F(OXWUserAction, AStepKeepsARemovedObjectAliveUntilItCanNoLongerBeRestored)
{
    OXWTestItem holder;
    auto* child = new OXWTestItem(true); // owned by the links that name it
    OXMObjectWeakPtr watch(child);
    holder.reference.setValue(OXMObjectLink(child));
    {
        OXWApplication::UserActionScope scope("Remove");
        holder.reference.setValue(OXMObjectLink());
    }
    ASSERT_TRUE(watch); // the step holds it
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(holder.reference.getValue().getLink(), watch.get());
    ASSERT_TRUE(stack.redo());
    EXPECT_TRUE(watch);
    stack.clear();
    EXPECT_FALSE(watch);
}

TEST_F(OXWUserAction, AnActionThatChangesNothingLeavesNoStep)
{
    OXWTestItem item;
    QSignalSpy spy(&stack, &OXWUndoStack::changed);
    const int id = app.userActionBegin("Nothing");
    app.userActionEnd(id);
    EXPECT_EQ(stack.count(), 0);
    {
        // Changes that end where they started leave nothing either.
        OXWApplication::UserActionScope scope("Back and forth");
        item.opacity.setValue(0.3f);
        item.opacity.setValue(1.0f);
        item.opacity.setValue(1.0f);
    }
    EXPECT_EQ(stack.count(), 0);
    EXPECT_FALSE(stack.canUndo());
    EXPECT_EQ(spy.count(), 0);

    // An empty action keeps the redo list.
    {
        OXWApplication::UserActionScope scope("Change");
        item.shininess.setValue(4);
    }
    ASSERT_TRUE(stack.undo());
    {
        OXWApplication::UserActionScope scope("Empty");
    }
    EXPECT_TRUE(stack.canRedo());
}

TEST_F(OXWUserAction, ChangesOutsideActionsAreNotRecorded)
{
    OXWTestItem item;
    item.opacity.setValue(0.7f); // e.g. view state
    EXPECT_EQ(stack.count(), 0);
    {
        OXWApplication::UserActionScope scope("Shininess");
        item.shininess.setValue(2);
    }
    item.opacity.setValue(0.9f);
    ASSERT_EQ(stack.count(), 1);
    EXPECT_EQ(stack.entryCount(), 1);
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(item.shininess.getValue(), 0);
    EXPECT_EQ(item.opacity.getValue(), 0.9f);
}

TEST_F(OXWUserAction, ADragOfManyWritesToOnePropertyCostsOneEntry)
{
    OXWTestItem item;
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

TEST_F(OXWUserAction, UndoAndRedoAreRefusedWhileAnActionIsOpen)
{
    OXWTestItem item;
    {
        OXWApplication::UserActionScope scope("First");
        item.shininess.setValue(1);
    }
    const int id = app.userActionBegin("Second");
    item.shininess.setValue(2);
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.undo());
    EXPECT_EQ(item.shininess.getValue(), 2);
    app.userActionEnd(id);
    EXPECT_EQ(stack.count(), 2);
    ASSERT_TRUE(stack.undo());
    const int id2 = app.userActionBegin("Third");
    EXPECT_FALSE(stack.redo());
    app.userActionEnd(id2);
    EXPECT_TRUE(stack.redo());
}

TEST_F(OXWUserAction, ANewStepClearsTheRedoList)
{
    OXWTestItem item;
    QSignalSpy spy(&stack, &OXWUndoStack::changed);
    for (int i = 1; i <= 3; ++i) {
        OXWApplication::UserActionScope scope(QString("Step %1").arg(i));
        item.shininess.setValue(i);
    }
    EXPECT_EQ(spy.count(), 3);
    ASSERT_TRUE(stack.undo());
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(stack.redoCount(), 2);
    EXPECT_EQ(stack.redoText(), QString("Redo Step 2"));
    {
        OXWApplication::UserActionScope scope("Other");
        item.opacity.setValue(0.0f);
    }
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(stack.count(), 2);
    EXPECT_EQ(spy.count(), 6);
}

// The saved state: a step away from it, undo back to it, redo away again, a new step in
// place of an undone one (the saved state can no longer be reached).
TEST_F(OXWUserAction, TheCleanStateFollowsUndoAndRedoBackToTheSavedStep)
{
    OXWTestItem item;
    EXPECT_TRUE(stack.isClean());
    const auto step = [&](int value) {
        OXWApplication::UserActionScope scope("Step");
        item.shininess.setValue(value);
    };
    step(1);
    EXPECT_FALSE(stack.isClean());
    stack.setClean();
    step(2);
    EXPECT_FALSE(stack.isClean());
    ASSERT_TRUE(stack.undo());
    EXPECT_TRUE(stack.isClean());
    ASSERT_TRUE(stack.undo());
    EXPECT_FALSE(stack.isClean());
    ASSERT_TRUE(stack.redo());
    EXPECT_TRUE(stack.isClean());
    ASSERT_TRUE(stack.undo());
    step(3);
    EXPECT_FALSE(stack.isClean());
    ASSERT_TRUE(stack.undo());
    EXPECT_FALSE(stack.isClean()) << "the saved step was replaced by another";
}

TEST_F(OXWUserAction, TheStepLimitDropsTheOldestSteps)
{
    OXWTestItem item;
    EXPECT_EQ(stack.stepLimit(), OXWUndoStack::DefaultStepLimit);
    stack.setStepLimit(3);
    for (int i = 1; i <= 5; ++i) {
        OXWApplication::UserActionScope scope(QString("Step %1").arg(i));
        item.shininess.setValue(i);
    }
    EXPECT_EQ(stack.count(), 3);
    while (stack.undo()) {
    }
    EXPECT_EQ(item.shininess.getValue(), 2);
    stack.clear();
    EXPECT_EQ(stack.count(), 0);
    EXPECT_EQ(stack.redoCount(), 0);
}

TEST_F(OXWUserAction, EntriesOfAnObjectThatDiedAreSkipped)
{
    OXWTestItem survivor;
    auto doomed = std::make_unique<OXWTestItem>();
    {
        OXWApplication::UserActionScope scope("Both");
        survivor.shininess.setValue(5);
        doomed->shininess.setValue(6);
    }
    doomed.reset();
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(survivor.shininess.getValue(), 0);
    ASSERT_TRUE(stack.redo());
    EXPECT_EQ(survivor.shininess.getValue(), 5);

    // An object that dies while the action is open leaves nothing behind.
    {
        OXWApplication::UserActionScope scope("Short life");
        OXWTestItem temporary;
        temporary.shininess.setValue(9);
    }
    EXPECT_EQ(stack.count(), 1);
}

TEST_F(OXWUserAction, TheApplicationCarriesTheSelectionAndSceneProperties)
{
    OXWChangeCounter counter;
    OXMObjectIOCPtr listen(&app, &counter);
    auto* rois = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        app.getProperty(OXM::RegionOfInterestSelectionList));
    auto* renders = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        app.getProperty(OXM::RenderObjectSelectionList));
    auto* scene =
        OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(app.getProperty(OXM::Scene));
    auto* manager =
        OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(app.getProperty(OXM::SceneManager));
    ASSERT_NE(rois, nullptr);
    ASSERT_NE(renders, nullptr);
    ASSERT_NE(scene, nullptr);
    ASSERT_NE(manager, nullptr);

    OXWTestItem sceneObject;
    OXWTestItem roi;
    const OXMObjectPath path(
        std::vector<OXMObjectLink>{OXMObjectLink(&sceneObject), OXMObjectLink(&roi)});
    {
        OXWApplication::UserActionScope scope("Select");
        EXPECT_TRUE(rois->initArray(0, 0, &path));
        EXPECT_TRUE(renders->initArray(0, 0, &path));
        EXPECT_TRUE(scene->setValue(OXMObjectLink(&sceneObject)));
        EXPECT_TRUE(manager->setValue(OXMObjectLink(&roi)));
    }
    EXPECT_EQ(counter.count(OXM::RegionOfInterestSelectionList), 1);
    EXPECT_EQ(counter.count(OXM::RenderObjectSelectionList), 1);
    EXPECT_EQ(counter.count(OXM::Scene), 1);
    EXPECT_EQ(counter.count(OXM::SceneManager), 1);
    ASSERT_TRUE(stack.undo());
    EXPECT_EQ(rois->getArraySize(), 0);
    EXPECT_EQ(renders->getArraySize(), 0);
    EXPECT_EQ(scene->getValue().getLink(), nullptr);
    EXPECT_EQ(manager->getValue().getLink(), nullptr);
    EXPECT_EQ(counter.total, 8);
    stack.clear();
}

TEST(OXWApplicationStatic, ParsePathExpandsTheDocumentsFolder)
{
    const QString docs = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    ASSERT_TRUE(QDir().mkpath(docs));
    EXPECT_EQ(OXWApplication::parsePath("${USER_DOCUMENTS}/presets"), docs + "/presets");
    // Without a documents folder the home folder, never a path that is not there (the tests'
    // home is a temporary folder of their own).
    ASSERT_TRUE(docs.startsWith(QDir::tempPath())) << docs.toStdString();
    ASSERT_TRUE(QDir(docs).removeRecursively());
    EXPECT_EQ(OXWApplication::parsePath("${USER_DOCUMENTS}"), QDir::homePath());
    EXPECT_EQ(OXWApplication::parsePath("/tmp/${OTHER}/x"), QString("/tmp/${OTHER}/x"));
    EXPECT_EQ(OXWApplication::parsePath(""), QString(""));
    EXPECT_EQ(OXWApplication::parsePath("plain"), QString("plain"));
}

TEST(OXWApplicationStatic, MiniIconsExistForOurNamesOnly)
{
    for (const char* name :
         {"object_calibrate", "object_uncalibrate", "view_zoom_in", "view_zoom_out"}) {
        const QIcon icon = OXWApplication::getMiniIconSet(name);
        EXPECT_FALSE(icon.isNull()) << name;
        EXPECT_FALSE(icon.pixmap(16, 16).isNull()) << name;
        EXPECT_FALSE(OXWApplication::getMiniIconSet(name, "small").isNull()) << name;
    }
    EXPECT_TRUE(OXWApplication::getMiniIconSet("unknown_icon").isNull());
    EXPECT_TRUE(OXWApplication::getMiniIconSet("").isNull());
    EXPECT_TRUE(OXWApplication::getMiniIconSet(nullptr).isNull());
    EXPECT_TRUE(OXWApplication::getMiniIconSet("../icons/view_zoom_in").isNull());
}
