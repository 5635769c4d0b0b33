#include "OXWTaskProgress.h"

#include "OXWMainWindow.h"

#include <OXMAction.h>
#include <OXMObject.h>
#include <OXMTaskInfo.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QHBoxLayout>
#include <QPointer>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolButton>

namespace {
// Holds back user input that is not meant for the Cancel button while the handler lets events
// through.
class InputGate : public QObject
{
public:
    QPointer<QToolButton> allowed;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::Wheel:
        case QEvent::ShortcutOverride:
            return !(allowed && watched == allowed.data());
        default:
            return false;
        }
    }
};

struct State
{
    int depth = 0;
    OXMTaskInfo::ProgressHandler previous;
    QPointer<QWidget> panel;
    QPointer<QProgressBar> bar;
    QPointer<QToolButton> cancel;
    bool cancelRequested = false;
    float progress = 0.0f;
    QElapsedTimer sinceEvents;
    bool inHandler = false;
};

State& state()
{
    static State s;
    return s;
}

void processEventsGated()
{
    State& s = state();
    if (!QCoreApplication::instance())
        return;
    if (s.sinceEvents.isValid() && s.sinceEvents.elapsed() < 50)
        return;
    InputGate gate;
    gate.allowed = s.cancel;
    qApp->installEventFilter(&gate);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    qApp->removeEventFilter(&gate);
    s.sinceEvents.start();
}

void handleProgress(const OXMTaskInfo& task, float progress)
{
    State& s = state();
    s.progress = progress;
    if (s.bar)
        s.bar->setValue(int(progress * 1000.0f + 0.5f));
    if (!s.inHandler) {
        s.inHandler = true;
        processEventsGated();
        s.inHandler = false;
    }
    // The task object belongs to a running action (OXMAction keeps it non-const); the
    // handler only sees it as const.
    if (s.cancelRequested)
        const_cast<OXMTaskInfo&>(task).requestAbort();
}
} // namespace

void OXWTaskProgress::beginStatusBarCallback()
{
    State& s = state();
    if (s.depth++ > 0)
        return;
    s.cancelRequested = false;
    s.progress = 0.0f;
    s.sinceEvents.invalidate();
    s.previous = OXMTaskInfo::setProgressHandler(&handleProgress);
    OXWMainWindow* window = OXWMainWindow::getInstance();
    if (!window)
        return;
    auto* panel = new QWidget;
    panel->setObjectName(QStringLiteral("OXWTaskProgressPanel"));
    auto* layout = new QHBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    auto* bar = new QProgressBar(panel);
    bar->setObjectName(QStringLiteral("OXWTaskProgressBar"));
    bar->setRange(0, 1000);
    bar->setValue(0);
    bar->setMaximumWidth(200);
    auto* cancel = new QToolButton(panel);
    cancel->setObjectName(QStringLiteral("OXWTaskProgressCancel"));
    cancel->setText(QApplication::translate("OXWTaskProgress", "Cancel"));
    QObject::connect(cancel, &QToolButton::clicked, [] { state().cancelRequested = true; });
    layout->addWidget(bar);
    layout->addWidget(cancel);
    window->statusBar()->addPermanentWidget(panel);
    panel->show();
    s.panel = panel;
    s.bar = bar;
    s.cancel = cancel;
}

void OXWTaskProgress::endStatusBarCallback()
{
    State& s = state();
    if (s.depth == 0)
        return;
    if (--s.depth > 0)
        return;
    OXMTaskInfo::setProgressHandler(std::move(s.previous));
    s.previous = nullptr;
    if (s.panel) {
        if (OXWMainWindow* window = OXWMainWindow::getInstance())
            window->statusBar()->removeWidget(s.panel);
        delete s.panel.data();
    }
}

int OXWTaskProgress::callbackDepth()
{
    return state().depth;
}

bool OXWTaskProgress::statusBarCallback(OXMObject* object, OXMenum action, void* parameters)
{
    if (!object)
        return false;
    OXMAction* a = object->getAction(action);
    if (!a || a->isRunning() || a->getErrorCode() != OXM::NoError)
        return false;
    OXMenum code(-1);
    const bool mustRun = object->checkExecute(action, parameters, &code);
    return !mustRun || code == OXM::NoError;
}

bool OXWTaskProgress::isCancelRequested()
{
    return state().cancelRequested;
}

float OXWTaskProgress::lastProgress()
{
    return state().progress;
}

QProgressBar* OXWTaskProgress::progressBar()
{
    return state().bar;
}

QToolButton* OXWTaskProgress::cancelButton()
{
    return state().cancel;
}
