#include "OXWApplication.h"

#include "OXWUndoStack.h"

#include <OXMSingleton.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QtGlobal>

#include <algorithm>
#include <limits>

OXWApplication::OXWApplication() : mUndoStack(new OXWUndoStack)
{
    setAutoDelete(false);
    addProperty(OXM::RegionOfInterestSelectionList, &mRegionOfInterestSelectionList);
    addProperty(OXM::RenderObjectSelectionList, &mRenderObjectSelectionList);
    addProperty(OXM::Scene, &mScene);
    addProperty(OXM::SceneManager, &mSceneManager);
    OXMSingleton<OXWApplication>::setInstance(this);
}

OXWApplication::~OXWApplication()
{
    OXMSingleton<OXWApplication>::clearInstance(this);
    if (!mOpenActions.empty())
        userActionEnd(mOpenActions.front());
    // The steps go while the application's properties still exist: the stack only holds weak
    // pointers to changed objects, and references to linked objects that it releases here.
    delete mUndoStack;
    mUndoStack = nullptr;
}

int OXWApplication::userActionBegin(const QString& name, StepName naming)
{
    const int id = mNextActionId;
    mNextActionId = id == std::numeric_limits<int>::max() ? 1 : id + 1;
    if (mOpenActions.empty()) {
        mStepOwned = mUndoStack->beginStep(name);
        // The recorder is installed only while the step is open: outside user actions the
        // write path does not even build the values a recorder would receive.
        if (mStepOwned)
            mPreviousRecorder = OXMObject::setUndoRecorder(mUndoStack);
    }
    if (naming == StepName::FromThisAction && mStepName.isNull() && !name.isEmpty())
        mStepName = name;
    mOpenActions.push_back(id);
    mOpenActionNames.push_back(name);
    updateStepActionName();
    return id;
}

void OXWApplication::userActionEnd(int id, const QString& text)
{
    auto it = std::find(mOpenActions.begin(), mOpenActions.end(), id);
    if (it == mOpenActions.end()) {
        qWarning("OXWApplication::userActionEnd: no open user action %d", id);
        return;
    }
    const bool outermost = it == mOpenActions.begin();
    mOpenActionNames.resize(std::size_t(it - mOpenActions.begin()));
    mOpenActions.erase(it, mOpenActions.end());
    if (!outermost) {
        updateStepActionName();
        return;
    }
    const QString stepName = text.isNull() ? mStepName : text;
    mStepName = QString();
    mUndoStack->setActionName(QString());
    if (mStepOwned) {
        mStepOwned = false;
        if (OXMObject::getUndoRecorder() == mUndoStack)
            OXMObject::setUndoRecorder(mPreviousRecorder);
        mPreviousRecorder = nullptr;
        mUndoStack->endStep(stepName);
    }
}

void OXWApplication::updateStepActionName()
{
    if (!mStepName.isNull())
        mUndoStack->setActionName(mStepName);
    else
        mUndoStack->setActionName(mOpenActionNames.empty() ? QString() : mOpenActionNames.back());
}

bool OXWApplication::isUserActionOpen() const
{
    return !mOpenActions.empty();
}

OXWApplication::UserActionScope::UserActionScope(const QString& name, StepName naming)
{
    if (OXWApplication* app = OXMSingleton<OXWApplication>::getInstance())
        mId = app->userActionBegin(name, naming);
}

OXWApplication::UserActionScope::~UserActionScope()
{
    if (mId == 0)
        return;
    if (OXWApplication* app = OXMSingleton<OXWApplication>::getInstance())
        app->userActionEnd(mId);
}

OXWUndoStack* OXWApplication::undoStack() const
{
    return mUndoStack;
}

QString OXWApplication::parsePath(const QString& path)
{
    static const QString documents = QStringLiteral("${USER_DOCUMENTS}");
    if (!path.contains(documents))
        return path;
    // A folder that is there: a file dialog given a missing one would take its last part for
    // a file name to fill in.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (!QFileInfo(folder).isDir())
        folder = QDir::homePath();
    QString result = path;
    result.replace(documents, folder);
    return result;
}

QIcon OXWApplication::getMiniIconSet(const char* name, const char* set)
{
    Q_UNUSED(set);
    if (!name || !*name)
        return QIcon();
    // Only plain names: letters, digits and underscores.
    for (const char* c = name; *c; ++c) {
        const bool plain = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') ||
                           (*c >= '0' && *c <= '9') || *c == '_';
        if (!plain)
            return QIcon();
    }
    const QString file = QStringLiteral(":/oxw/icons/%1.svg").arg(QString::fromLatin1(name));
    if (!QFile::exists(file))
        return QIcon();
    return QIcon(file);
}
