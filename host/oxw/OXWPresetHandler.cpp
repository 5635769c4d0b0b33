#include "OXWPresetHandler.h"

#include <OXMMetaClass.h>
#include <OXMNoUndoScope.h>
#include <OXMRegisteredEnum.h>

#include <algorithm>
#include <vector>

namespace {

// The live handlers in the order of their registration.
std::vector<OXWPresetHandler*>& registry()
{
    static std::vector<OXWPresetHandler*> handlers;
    return handlers;
}

} // namespace

OXWPresetHandler::OXWPresetHandler(OXMenum id) : mHandlerID(id)
{
    setAutoDelete(false);
    addProperty(OXM::Preset, &mPreset);
    addProperty(OXM::PresetModified, &mPresetModified);
    if (mHandlerID.isValid()) {
        registry().push_back(this);
    }
}

OXWPresetHandler::~OXWPresetHandler()
{
    std::vector<OXWPresetHandler*>& handlers = registry();
    handlers.erase(std::remove(handlers.begin(), handlers.end(), this), handlers.end());
}

const OXMMetaClass* OXWPresetHandler::metaClass()
{
    // No factory: a handler needs its identifier and is created by its owner, not by name.
    static auto* meta = new OXMMetaClass("OXWPresetHandler", sizeof(OXWPresetHandler),
                                         OXMObject::metaClass(), nullptr, "oxw");
    return meta;
}

const OXMMetaClass* OXWPresetHandler::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWPresetHandler::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXWPresetHandler");
    return index == 0 ? id->getValue() : OXMObject::getObjectID(index - 1);
}

OXWPresetHandler* OXWPresetHandler::getPresetHandler(OXMenum id)
{
    if (!id.isValid()) {
        return nullptr;
    }
    const std::vector<OXWPresetHandler*>& handlers = registry();
    const auto found = std::find_if(handlers.rbegin(), handlers.rend(),
                                    [id](OXWPresetHandler* h) { return h->mHandlerID == id; });
    return found == handlers.rend() ? nullptr : *found;
}

bool OXWPresetHandler::setTargetObject(OXMObject* target)
{
    mTarget = target;
    return true;
}

bool OXWPresetHandler::setHistogramObject(OXMObject* histogram)
{
    mHistogram = histogram;
    return true;
}

bool OXWPresetHandler::getPresetList(QStringList& list, OXMenum) const
{
    list.clear();
    return false;
}

QPixmap OXWPresetHandler::getPresetPixmap(const QString&, OXMenum)
{
    return QPixmap();
}

QString OXWPresetHandler::presetCategoryText() const
{
    return QString();
}

bool OXWPresetHandler::applyPresetToTarget(const QString&, OXMenum)
{
    return false;
}

bool OXWPresetHandler::saveTargetAsPreset(const QString&, OXMenum)
{
    return false;
}

bool OXWPresetHandler::deletePreset(const QString&, OXMenum)
{
    return false;
}

bool OXWPresetHandler::loadState(const QString& name, OXMenum type)
{
    QStringList names;
    return getPresetList(names, type) && names.contains(name) && setCurrentPreset(name);
}

bool OXWPresetHandler::saveState()
{
    const QString name = getCurrentPreset();
    QStringList names;
    return !name.isEmpty() && getPresetList(names, OXM::UserPreset) && names.contains(name) &&
           saveTargetAsPreset(name, OXM::UserPreset) && setCurrentPreset(name);
}

QWidget* OXWPresetHandler::createSaveDialogExtension()
{
    return nullptr;
}

QString OXWPresetHandler::getCurrentPreset() const
{
    const QString name = QString::fromUtf8(mPreset.getValue());
    return name == QLatin1String(UnknownPreset) ? QString() : name;
}

bool OXWPresetHandler::setCurrentPreset(const QString& name)
{
    const OXMNoUndoScope bookkeeping;
    const QByteArray value = name.isEmpty() ? QByteArray(UnknownPreset) : name.toUtf8();
    const bool ok = mPreset.setValue(value.constData());
    return mPresetModified.setValue(OXM::False) && ok;
}

bool OXWPresetHandler::isCurrentPresetModified() const
{
    return mPresetModified.getValue() == OXM::True;
}

bool OXWPresetHandler::setCurrentPresetModified(bool modified)
{
    const OXMNoUndoScope bookkeeping;
    return mPresetModified.setValue(modified ? OXM::True : OXM::False);
}
