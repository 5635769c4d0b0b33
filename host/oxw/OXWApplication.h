#pragma once

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMSingleValueOP.h>
#include <OXMValueArrayOP.h>

#include <QIcon>
#include <QString>

#include <vector>

class OXWUndoStack;

// The application object of the viewer. Its object part carries the scene tree's selection
// (OXM::RegionOfInterestSelectionList and OXM::RenderObjectSelectionList, arrays of
// OXMObjectPath) and the links OXM::Scene and OXM::SceneManager; writes send the usual change
// messages. It registers itself as OXMSingleton<OXWApplication> for its lifetime and owns the
// undo stack, which it installs as the framework's undo recorder (OXMObject::setUndoRecorder)
// while a user action is open; outside user actions no recorder of ours is installed, so
// writes there (view state) cost no more than without undo.
//
// Every change the user makes is wrapped in a named user action: all property and link
// changes between the outermost userActionBegin and its userActionEnd form one undo step.
// Nested actions join it. The step's name:
// - an action opened with StepName::FromThisAction names the step it belongs to, wherever it is
//   nested and whatever actions the code it runs opens (a widget's own undo scope, such as a
//   spin box's "Set transparency" around the slot that writes the value); the first such
//   action of a step wins;
// - otherwise the step is named after the innermost action that was open when the step's first
//   change was made (a press that opens a general action and the slot inside it that writes
//   "Change opacity" give the step "Change opacity"); a step whose changes are all made
//   directly in the outermost action carries its name.
// An action that changed nothing leaves no step. Undo and redo refuse while an action is open.
// Changes made outside user actions are not recorded. A text given to the outermost
// userActionEnd renames the step; the texts given when nested actions end are ignored.
//
// The application switches auto-delete off (C++ code owns it).
class OXWApplication : public OXMObject
{
public:
    OXWApplication();
    ~OXWApplication() override;

    // How a user action takes part in naming its undo step (see above).
    enum class StepName
    {
        FromFirstChange,
        FromThisAction
    };

    // Opens a named user action and returns its id (> 0).
    int userActionBegin(const QString& name, StepName naming = StepName::FromFirstChange);
    // Closes the action with that id (and any still open inside it). The text, when not null,
    // replaces the step's name.
    void userActionEnd(int id, const QString& text = QString());
    bool isUserActionOpen() const;

    // Opens a user action on the application instance for its lifetime; does nothing when
    // there is no application.
    class UserActionScope
    {
    public:
        explicit UserActionScope(const QString& name, StepName naming = StepName::FromFirstChange);
        ~UserActionScope();
        UserActionScope(const UserActionScope&) = delete;
        UserActionScope& operator=(const UserActionScope&) = delete;

    private:
        int mId = 0;
    };

    OXWUndoStack* undoStack() const;

    // Expands path variables: "${USER_DOCUMENTS}" becomes the user's documents folder.
    static QString parsePath(const QString& path);
    // The small icon of the given name (the set name is accepted for compatibility); a null
    // icon for an unknown name.
    static QIcon getMiniIconSet(const char* name, const char* set = nullptr);

private:
    // Tells the undo stack the name its open step takes at its first change.
    void updateStepActionName();

    OXWUndoStack* mUndoStack;
    OXMUndoRecorder* mPreviousRecorder = nullptr;
    // Ids of the open user actions, outermost first.
    std::vector<int> mOpenActions;
    // Their names, in the same order.
    std::vector<QString> mOpenActionNames;
    int mNextActionId = 1;
    // Whether the outermost open action opened the undo stack's step (it cannot while undo
    // or redo runs).
    bool mStepOwned = false;
    // The name of the first StepName::FromThisAction action of the open step; null when none.
    QString mStepName;

    OXMValueArrayOP<OXMObjectPath> mRegionOfInterestSelectionList;
    OXMValueArrayOP<OXMObjectPath> mRenderObjectSelectionList;
    OXMSingleValueOP<OXMObjectLink> mScene;
    OXMSingleValueOP<OXMObjectLink> mSceneManager;
};
