#include "OXWVolumeOpener.h"

#include "OXWImportRenderer.h"

#include <OXMError.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMScene.h>
#include <OXMSingleton.h>
#include <OXMTaskInfo.h>
#include <OXMVolumeRenderObject.h>
#include <OXMVolumeTransform.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWSceneManager.h>
#include <OXWTaskProgress.h>
#include <OXWVolumeFile.h>

#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QVariant>

namespace {

const QString RecentKey = QStringLiteral("viewer/recentFiles");

OXWSceneManager* sceneManager()
{
    OXWApplication* app = OXMSingleton<OXWApplication>::getInstance();
    OXMObjectLink link;
    if (!app || !app->getValue(OXM::SceneManager, link))
        return nullptr;
    return dynamic_cast<OXWSceneManager*>(link.getLink());
}

// Puts the volume, with the renderer chosen for imported data, at the top of the scene with its
// orientation, and selects it.
bool place(OXMVolumeRenderObject* volume, const std::vector<float>& orientation)
{
    OXWSceneManager* manager = sceneManager();
    if (!manager)
        return false;
    OXWImportRenderer::apply(volume, dynamic_cast<OXMScene*>(manager->getScene()));
    auto* placement = new OXMVolumeTransform;
    OXMObjectPtr hold(placement);
    placement->keepInPlace(*volume);
    if (orientation.size() == 16)
        placement->setValue(OXM::TransformMatrix, orientation);
    OXMObjectLink link(volume, placement);
    link.setPropertyID(OXM::VolumeRenderObjectList);
    return manager->addAndSelectObject(link, OXMObjectPath());
}

} // namespace

OXWVolumeOpener::OXWVolumeOpener(QWidget* parent) : QObject(parent), mParent(parent) {}

QStringList OXWVolumeOpener::recentFiles()
{
    return QSettings().value(RecentKey).toStringList();
}

void OXWVolumeOpener::setRecentMenu(QMenu* menu)
{
    mRecentMenu = menu;
    fillRecentMenu();
}

void OXWVolumeOpener::fillRecentMenu()
{
    if (!mRecentMenu)
        return;
    mRecentMenu->clear();
    const QStringList files = recentFiles();
    for (const QString& path : files) {
        QAction* action = mRecentMenu->addAction(QFileInfo(path).fileName());
        action->setToolTip(path);
        connect(action, &QAction::triggered, this, [this, path] { open({path}); });
    }
    mRecentMenu->setEnabled(!files.isEmpty());
}

void OXWVolumeOpener::remember(const QString& path)
{
    QStringList files = recentFiles();
    const QString absolute = QFileInfo(path).absoluteFilePath();
    files.removeAll(absolute);
    files.prepend(absolute);
    QSettings().setValue(RecentKey, QVariant(files.mid(0, MaximumRecent)));
    fillRecentMenu();
}

void OXWVolumeOpener::openWithDialog()
{
    const QString start = OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"));
    const QString path =
        OXWFileDialog::getOpenFileName(OXM::VolumeRenderObject, start, OXWVolumeFile::nameFilters(),
                                       mParent, nullptr, tr("Open volume"));
    if (!path.isEmpty())
        open({path});
}

bool OXWVolumeOpener::open(const QStringList& paths)
{
    bool ok = true;
    for (const QString& path : paths)
        ok = openOne(path) && ok;
    return ok;
}

bool OXWVolumeOpener::openOne(const QString& path)
{
    OXMTaskInfo task;
    QString series;
    for (;;) {
        OXWTaskProgress::beginStatusBarCallback();
        OXWVolumeFile::Result r = OXWVolumeFile::read(path, &task, series);
        OXWTaskProgress::endStatusBarCallback();
        if (r.cancelled)
            return false;
        if (!r.series.empty() && series.isEmpty()) {
            QStringList descriptions, uids;
            for (const OXWVolumeFile::Series& s : r.series) {
                descriptions << tr("%1 (%2 files)")
                                    .arg(s.description.isEmpty() ? s.uid : s.description)
                                    .arg(s.files);
                uids << s.uid;
            }
            series = chooseSeries(path, descriptions, uids);
            if (series.isEmpty())
                return false;
            continue;
        }
        OXMObjectPtr hold(r.volume);
        bool placed = false;
        {
            // One undo step: undo takes the volume out of the scene again.
            OXWApplication::UserActionScope action(tr("Open volume"));
            placed = r.volume && place(r.volume, r.transform);
        }
        if (!placed) {
            const QString message =
                r.error.isEmpty() ? tr("%1: the volume cannot be placed in the scene").arg(path)
                                  : r.error;
            OXMError::emitError(nullptr, OXM::InvalidValue, message);
            emit error(message);
            if (mInteractive)
                QMessageBox::warning(mParent, tr("Open volume"), message);
            return false;
        }
        remember(path);
        return true;
    }
}

QString OXWVolumeOpener::chooseSeries(const QString& path, const QStringList& descriptions,
                                      const QStringList& uids)
{
    if (!mInteractive)
        return uids.front(); // batch use: the first series
    bool ok = false;
    const QString chosen = QInputDialog::getItem(
        mParent, tr("Open volume"),
        tr("%1 holds several series. Which one?").arg(QFileInfo(path).fileName()), descriptions, 0,
        false, &ok);
    return ok ? uids.value(descriptions.indexOf(chosen)) : QString();
}
