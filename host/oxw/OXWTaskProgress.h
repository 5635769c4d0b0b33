#pragma once

#include <OXMenum.h>

class OXMObject;
class QProgressBar;
class QToolButton;

// Routes the progress of running actions to the main window's status bar.
//
// beginStatusBarCallback installs a progress handler (OXMTaskInfo::setProgressHandler) and
// puts a progress bar (0..1000) with a "Cancel" button into the status bar of
// OXWMainWindow::getInstance(); endStatusBarCallback removes both and restores the previous
// handler. The calls nest: only the outermost pair installs and removes. Without a main window
// the calls still nest and the progress is still tracked, nothing is shown.
//
// While an action reports progress the handler also lets Qt process pending events (at most
// every 50 ms, the first report at once) so the bar repaints and the Cancel button can be
// clicked; input to every other widget is held back meanwhile, so the user cannot start other
// work from inside the running action. Cancel asks the reporting task to stop
// (OXMTaskInfo::requestAbort) at its next report, and every later task reporting before the
// outermost end as well.
class OXWTaskProgress
{
public:
    static void beginStatusBarCallback();
    static void endStatusBarCallback();
    static int callbackDepth();

    // Whether the result of the object's action is available: the action exists, is not
    // running, its last run (or none) ended with OXM::NoError, and its check reports that it
    // need not run (false) or answers OXM::NoError. False for a null object or a missing
    // action. Runs nothing.
    static bool statusBarCallback(OXMObject* object, OXMenum action, void* parameters);

    // Whether Cancel was pressed since the outermost begin.
    static bool isCancelRequested();
    // The last progress reported (0..1) since the outermost begin.
    static float lastProgress();
    // The widgets in the status bar while a callback is active (null otherwise).
    static QProgressBar* progressBar();
    static QToolButton* cancelButton();
};
