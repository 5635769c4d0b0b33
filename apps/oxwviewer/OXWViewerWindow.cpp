#include "OXWViewerWindow.h"

#include "OXWLogPane.h"
#include "OXWPluginLoader.h"

#include <OXMSingleton.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <QAction>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QUrl>

namespace {

// Menu texts treat '&' as a mnemonic marker; a step name shows it literally.
QString menuText(const QString& text)
{
    QString t = text;
    return t.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

OXWViewerWindow::OXWViewerWindow(OXWApplication* app, QWidget* parent) : OXWMainWindow(parent)
{
    setObjectName(QStringLiteral("OXWViewerWindow"));
    setWindowTitle(tr("OXW Viewer"));

    if (!app)
        app = OXMSingleton<OXWApplication>::getInstance();
    if (app)
        mUndoStack = app->undoStack();

    auto* empty = new QLabel(tr("No volume loaded"), this);
    empty->setObjectName(QStringLiteral("mEmptyState"));
    empty->setAlignment(Qt::AlignCenter);
    empty->setEnabled(false);
    setCentralWidget(empty);
    mEmptyState = empty;

    mLogPane = new OXWLogPane;
    createTool(mLogPane, OXWDockWindow::Horizontal);

    createMenus();
    if (mUndoStack)
        connect(mUndoStack.data(), &OXWUndoStack::changed, this,
                &OXWViewerWindow::updateUndoActions);
    updateUndoActions();

    statusBar()->showMessage(tr("Ready"));
    setAcceptDrops(true);
}

namespace {
QStringList localFiles(const QMimeData* data)
{
    QStringList paths;
    for (const QUrl& url : data ? data->urls() : QList<QUrl>())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    return paths;
}
} // namespace

void OXWViewerWindow::closeEvent(QCloseEvent* event)
{
    if (mCloseGuard && !mCloseGuard()) {
        event->ignore();
        return;
    }
    OXWMainWindow::closeEvent(event);
}

void OXWViewerWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void OXWViewerWindow::dropEvent(QDropEvent* event)
{
    const QStringList paths = localFiles(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    emit filesDropped(paths);
}

OXWViewerWindow::~OXWViewerWindow() = default;

void OXWViewerWindow::createMenus()
{
    mFileMenu = menuBar()->addMenu(tr("&File"));
    mFileMenu->setObjectName(QStringLiteral("mFileMenu"));
    mQuitAction = mFileMenu->addAction(tr("&Quit"));
    mQuitAction->setObjectName(QStringLiteral("mQuitAction"));
    mQuitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    mQuitAction->setMenuRole(QAction::QuitRole);
    connect(mQuitAction, &QAction::triggered, this, &QWidget::close);

    mEditMenu = menuBar()->addMenu(tr("&Edit"));
    mEditMenu->setObjectName(QStringLiteral("mEditMenu"));
    mUndoAction = mEditMenu->addAction(tr("Undo"));
    mUndoAction->setObjectName(QStringLiteral("mUndoAction"));
    mUndoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    connect(mUndoAction, &QAction::triggered, this, &OXWViewerWindow::undo);
    mRedoAction = mEditMenu->addAction(tr("Redo"));
    mRedoAction->setObjectName(QStringLiteral("mRedoAction"));
    mRedoAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    connect(mRedoAction, &QAction::triggered, this, &OXWViewerWindow::redo);

    mViewMenu = menuBar()->addMenu(tr("&View"));
    mViewMenu->setObjectName(QStringLiteral("mViewMenu"));

    mHelpMenu = menuBar()->addMenu(tr("&Help"));
    mHelpMenu->setObjectName(QStringLiteral("mHelpMenu"));
    mAboutPluginsAction = mHelpMenu->addAction(tr("About &plug-ins..."));
    mAboutPluginsAction->setObjectName(QStringLiteral("mAboutPluginsAction"));
    connect(mAboutPluginsAction, &QAction::triggered, this, &OXWViewerWindow::showAboutPlugins);
}

void OXWViewerWindow::attachPluginLoader(OXWPluginLoader* loader)
{
    if (mLoader)
        disconnect(mLoader.data(), nullptr, mLogPane, nullptr);
    mLoader = loader;
    if (loader)
        connect(loader, &OXWPluginLoader::message, mLogPane, &OXWLogPane::appendMessage);
}

QString OXWViewerWindow::aboutPluginsText() const
{
    if (!mLoader || (mLoader->pluginCount() == 0 && mLoader->problems().isEmpty()))
        return tr("No plug-ins are loaded.");
    return mLoader->summary();
}

void OXWViewerWindow::updateUndoActions()
{
    const QString undoText = mUndoStack ? mUndoStack->undoText() : QString();
    const QString redoText = mUndoStack ? mUndoStack->redoText() : QString();
    mUndoAction->setText(undoText.isEmpty() ? tr("Undo") : menuText(undoText));
    mUndoAction->setEnabled(!undoText.isEmpty());
    mRedoAction->setText(redoText.isEmpty() ? tr("Redo") : menuText(redoText));
    mRedoAction->setEnabled(!redoText.isEmpty());
}

void OXWViewerWindow::undo()
{
    if (mUndoStack && !mUndoStack->undo())
        statusBar()->showMessage(tr("Nothing to undo now"), 3000);
    updateUndoActions();
}

void OXWViewerWindow::redo()
{
    if (mUndoStack && !mUndoStack->redo())
        statusBar()->showMessage(tr("Nothing to redo now"), 3000);
    updateUndoActions();
}

void OXWViewerWindow::showAboutPlugins()
{
    auto* box = new QMessageBox(QMessageBox::Information, tr("About plug-ins"), aboutPluginsText(),
                                QMessageBox::Close, this);
    box->setObjectName(QStringLiteral("mAboutPluginsBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}
