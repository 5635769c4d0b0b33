#include "OXWPresetDefaultHandler.h"

#include <OXMJsonPropertyCodec.h>
#include <OXMMetaClass.h>
#include <OXMProperty.h>
#include <OXMRegisteredEnum.h>

#include <QCoreApplication>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWPresetDefaultHandler", text);
}

} // namespace

OXWPresetDefaultHandler::OXWPresetDefaultHandler(OXMenum id, const QString& name)
    : OXWPresetHandler(id), mName(name), mStore(OXMJsonPropertyCodec::enumName(id))
{
}

const OXMMetaClass* OXWPresetDefaultHandler::metaClass()
{
    // No factory, like its base: handlers are made by their owners.
    static auto* meta = new OXMMetaClass("OXWPresetDefaultHandler", sizeof(OXWPresetDefaultHandler),
                                         OXWPresetHandler::metaClass(), nullptr, "oxw");
    return meta;
}

const OXMMetaClass* OXWPresetDefaultHandler::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWPresetDefaultHandler::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXWPresetDefaultHandler");
    return index == 0 ? id->getValue() : OXWPresetHandler::getObjectID(index - 1);
}

bool OXWPresetDefaultHandler::getPresetList(QStringList& list, OXMenum type) const
{
    list.clear();
    if (type == OXM::UserPreset) {
        for (const OXWPresetStore::Entry& entry : mStore.list())
            list << entry.name;
    }
    return type == OXM::UserPreset || type == OXM::DefaultPreset;
}

QString OXWPresetDefaultHandler::presetCategoryText() const
{
    return mName;
}

bool OXWPresetDefaultHandler::deletePreset(const QString& name, OXMenum type)
{
    QString error;
    if (type != OXM::UserPreset)
        return result(false, tr("The built-in preset \"%1\" can't be removed.").arg(name));
    const bool ok = mStore.remove(name, error);
    if (ok && getCurrentPreset() == name)
        setCurrentPreset(QString());
    if (ok)
        announceStoreChange();
    return result(ok, error);
}

OXMObjectPtr OXWPresetDefaultHandler::loadPreset(const QString& name, OXMenum type, int) const
{
    OXMObjectSerializer::Document document;
    QString error;
    if (type != OXM::UserPreset) {
        result(false, tr("Only user presets are stored."));
        return OXMObjectPtr();
    }
    result(mStore.load(name, document, error), error);
    return document.root;
}

bool OXWPresetDefaultHandler::savePreset(OXMObject* record, const QString& name, OXMenum type)
{
    QString error = checkPresetName(name);
    if (!record || type != OXM::UserPreset)
        error = tr("Only user presets are stored.");
    const bool ok = error.isEmpty() && mStore.save(name, *record, error);
    if (ok)
        announceStoreChange();
    return result(ok, error);
}

bool OXWPresetDefaultHandler::copyProperties(OXMObject* destination, const OXMObject* source)
{
    if (!destination || !source)
        return false;
    bool ok = true;
    for (int i = 0; i < source->getPropertyCount(); ++i) {
        const OXMenum id = source->getPropertyAt(i)->getID();
        if (destination->getProperty(id))
            ok = destination->copyProperty(source, id) && ok;
    }
    return ok;
}

QString OXWPresetDefaultHandler::checkPresetName(const QString& name) const
{
    QStringList builtIn;
    getPresetList(builtIn, OXM::DefaultPreset);
    if (builtIn.contains(name))
        return tr("\"%1\" is the name of a built-in preset; please choose another one.").arg(name);
    return OXWPresetStore::checkName(name);
}

bool OXWPresetDefaultHandler::hasUserPreset(const QString& name) const
{
    return mStore.contains(name);
}

bool OXWPresetDefaultHandler::readPresetFile(const QString& fileName, QString& name) const
{
    OXMObjectSerializer::Document document;
    QString error;
    return result(mStore.readFile(fileName, document, name, error), error);
}

bool OXWPresetDefaultHandler::importPreset(const QString& fileName, QString& name)
{
    QString error;
    if (!readPresetFile(fileName, name))
        return false;
    error = checkPresetName(name);
    const bool ok = error.isEmpty() && mStore.importFile(fileName, name, error);
    if (ok)
        announceStoreChange();
    return result(ok, error);
}

bool OXWPresetDefaultHandler::exportPreset(const QString& name, const QString& fileName) const
{
    QString error;
    return result(mStore.exportFile(name, fileName, error), error);
}

bool OXWPresetDefaultHandler::result(bool ok, const QString& error) const
{
    mLastError = ok ? QString() : error;
    return ok;
}

void OXWPresetDefaultHandler::announceStoreChange()
{
    sendMessage(OXM::PropertyChanged, OXM::UserPreset);
}
