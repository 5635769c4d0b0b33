#include "OXWDocumentController.h"

#include <OXMError.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMScene.h>
#include <OXMTaskInfo.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWSceneDocument.h>
#include <OXWSceneManager.h>
#include <OXWTaskProgress.h>
#include <OXWUndoStack.h>

#include <QAction>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

namespace {

QStringList documentFilters()
{
    return {QObject::tr("Scene documents (*.%1)").arg(QLatin1String(OXWSceneDocument::Suffix)),
            QObject::tr("All files (*)")};
}

} // namespace

OXWDocumentController::OXWDocumentController(OXWApplication* application, QMainWindow* window)
    : QObject(window), mApplication(application), mWindow(window)
{
    if (mApplication)
        connect(mApplication->undoStack(), &OXWUndoStack::changed, this,
                &OXWDocumentController::updateTitle);
    updateTitle();
}

void OXWDocumentController::addActions(QMenu* menu, QAction* before)
{
    QAction* open = new QAction(tr("Open scene..."), menu);
    open->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    connect(open, &QAction::triggered, this, &OXWDocumentController::openWithDialog);
    QAction* save = new QAction(tr("&Save scene"), menu);
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, &OXWDocumentController::save);
    QAction* saveAs = new QAction(tr("Save scene &as..."), menu);
    saveAs->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(saveAs, &QAction::triggered, this, &OXWDocumentController::saveAs);
    menu->insertActions(before, {open, save, saveAs});
    menu->insertSeparator(before);
}

bool OXWDocumentController::isModified() const
{
    return mApplication && !mApplication->undoStack()->isClean();
}

bool OXWDocumentController::mayDiscardChanges()
{
    if (!isModified())
        return true;
    const QMessageBox::StandardButton answer = QMessageBox::question(
        mWindow, tr("Unsaved changes"),
        tr("The scene has changes that are not saved. Save them first?"),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return save();
    return answer == QMessageBox::Discard;
}

void OXWDocumentController::openWithDialog()
{
    if (!mayDiscardChanges())
        return;
    const QString start = OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"));
    const QString path = OXWFileDialog::getOpenFileName(OXM::Scene, start, documentFilters(),
                                                        mWindow, nullptr, tr("Open scene"));
    if (!path.isEmpty())
        open(path);
}

bool OXWDocumentController::open(const QString& path)
{
    OXMTaskInfo task;
    QString error;
    OXWTaskProgress::beginStatusBarCallback();
    const OXMObjectPtr scene = OXWSceneDocument::read(
        path, error, &task, [this](const QString& missing) { return locate(missing); });
    OXWTaskProgress::endStatusBarCallback();
    if (!scene.get()) {
        if (!error.isEmpty())
            report(tr("Open scene"), error);
        return false;
    }
    if (!install(scene.get())) {
        report(tr("Open scene"),
               tr("%1 cannot be opened: the viewer takes no new scene").arg(path));
        return false;
    }
    mPath = QFileInfo(path).absoluteFilePath();
    mApplication->undoStack()->clear();
    mApplication->undoStack()->setClean();
    updateTitle();
    return true;
}

bool OXWDocumentController::install(OXMObject* scene)
{
    OXMObjectLink managerLink;
    if (!mApplication || !mApplication->getValue(OXM::SceneManager, managerLink))
        return false;
    auto* manager = dynamic_cast<OXWSceneManager*>(managerLink.getLink());
    // Nothing selected while the scene changes, so that no view holds on to the old one.
    const std::vector<OXMObjectPath> none;
    mApplication->setArray(OXM::RegionOfInterestSelectionList, none);
    mApplication->setArray(OXM::RenderObjectSelectionList, none);
    if (!mApplication->setValue(OXM::Scene, OXMObjectLink(scene)) ||
        (manager && !manager->setScene(scene)))
        return false;
    std::vector<OXMObjectLink> volumes;
    scene->getArray(OXM::VolumeRenderObjectList, volumes);
    OXMObjectPath first;
    if (!volumes.empty() && volumes.front().getLink() &&
        volumes.front().getLink()->getValue(OXM::ScenePath, first) && manager)
        manager->select(first);
    return true;
}

bool OXWDocumentController::save()
{
    return mPath.isEmpty() ? saveAs() : saveTo(mPath);
}

bool OXWDocumentController::saveAs()
{
    const QString start =
        mPath.isEmpty() ? OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}")) : mPath;
    const QString path = OXWFileDialog::getSaveFileName(OXM::Scene, start, documentFilters(),
                                                        mWindow, nullptr, tr("Save scene as"));
    return !path.isEmpty() && saveTo(path);
}

bool OXWDocumentController::saveTo(const QString& path)
{
    OXMObjectLink link;
    const auto* scene = mApplication && mApplication->getValue(OXM::Scene, link)
                            ? dynamic_cast<const OXMScene*>(link.getLink())
                            : nullptr;
    QString error;
    if (!scene) {
        report(tr("Save scene"), tr("Could not write %1: there is no scene").arg(path));
        return false;
    }
    if (!OXWSceneDocument::save(*scene, path, error)) {
        report(tr("Save scene"), error);
        return false;
    }
    mPath = QFileInfo(path).absoluteFilePath();
    mApplication->undoStack()->setClean();
    updateTitle();
    return true;
}

QString OXWDocumentController::locate(const QString& missing)
{
    // The volume may have been a file or a folder (a DICOM series, numbered TIFF slices).
    QMessageBox box(QMessageBox::Question, tr("Open scene"),
                    tr("The volume %1 of the scene is missing. Find it?").arg(missing),
                    QMessageBox::NoButton, mWindow);
    QPushButton* file = box.addButton(tr("Find file..."), QMessageBox::AcceptRole);
    QPushButton* folder = box.addButton(tr("Find folder..."), QMessageBox::AcceptRole);
    box.addButton(QMessageBox::Cancel);
    box.exec();
    const QString start = QFileInfo(missing).absolutePath();
    const QString title = tr("Where is %1?").arg(QFileInfo(missing).fileName());
    if (box.clickedButton() == file)
        return OXWFileDialog::getOpenFileName(OXM::VolumeRenderObject, start, {tr("All files (*)")},
                                              mWindow, nullptr, title);
    if (box.clickedButton() == folder)
        return QFileDialog::getExistingDirectory(mWindow, title, start);
    return QString();
}

void OXWDocumentController::report(const QString& title, const QString& message)
{
    OXMError::emitError(nullptr, OXM::InvalidValue, message);
    QMessageBox::warning(mWindow, title, message);
}

void OXWDocumentController::updateTitle()
{
    if (!mWindow)
        return;
    const QString name = mPath.isEmpty() ? tr("Untitled") : QFileInfo(mPath).completeBaseName();
    mWindow->setWindowTitle(tr("%1[*] — OXW Viewer").arg(name));
    mWindow->setWindowModified(isModified());
}
