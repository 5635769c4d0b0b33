#include "OXWPresetDefaultHandler.h"

#include <OXMError.h>
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
    // A background write that failed took its names away again.
    mStore.setWriteEndedCallback([this](bool stored) {
        if (!stored)
            announceStoreChange();
    });
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

OXMObjectPtr OXWPresetDefaultHandler::recordFromTransferFunction(const OXWTransferFunction&) const
{
    return OXMObjectPtr();
}

bool OXWPresetDefaultHandler::targetTransferFunction(OXWTransferFunction&) const
{
    return false;
}

QString OXWPresetDefaultHandler::importName(const QString& name) const
{
    QString valid;
    for (const QChar c : name)
        valid += OXWPresetStore::checkName(QString(c)).isEmpty() ? c : QLatin1Char(' ');
    valid = valid.simplified().left(OXWPresetStore::MaxNameLength - 12);
    if (valid.isEmpty())
        valid = tr("Imported preset");
    return checkPresetName(valid).isEmpty() ? valid : tr("%1 (imported)").arg(valid);
}

bool OXWPresetDefaultHandler::makeRecords(const std::vector<OXWTransferFunction>& presets,
                                          std::vector<OXMObjectPtr>& records) const
{
    for (const OXWTransferFunction& preset : presets) {
        records.push_back(preset.isUsable() ? recordFromTransferFunction(preset) : OXMObjectPtr());
        if (!records.back())
            return result(
                false,
                tr("The preset \"%1\" can't be imported as a %2 preset.").arg(preset.name, mName));
    }
    return true;
}

bool OXWPresetDefaultHandler::storeRecords(std::vector<OXMObjectPtr> records,
                                           const QStringList& names)
{
    QString error;
    for (const QString& name : names) {
        if (error.isEmpty())
            error = checkPresetName(name);
    }
    const bool handedOver =
        error.isEmpty() && mStore.saveInBackground(names, std::move(records), error);
    if (handedOver)
        announceStoreChange(); // the names are listed while they are written
    return result(handedOver, error);
}

bool OXWPresetDefaultHandler::importTransferFunctions(
    const std::vector<OXWTransferFunction>& presets, const QStringList& names,
    const QString& fileName)
{
    std::vector<OXMObjectPtr> records;
    if (names.size() != int(presets.size()))
        return result(false, tr("Every imported preset needs a name."));
    if (!makeRecords(presets, records) || !storeRecords(std::move(records), names))
        return false;
    for (const OXWTransferFunction& preset : presets) {
        const QString line = OXWTransferFunctionFile::leftOutMessage(preset, fileName);
        if (!line.isEmpty())
            OXMError::emitError(this, OXM::InvalidValue, line);
    }
    return true;
}

bool OXWPresetDefaultHandler::exportTransferFunction(const QString& name, const QString& fileName,
                                                     OXWTransferFunctionFile::Format format) const
{
    OXWTransferFunction preset;
    QString error;
    if (!targetTransferFunction(preset))
        return result(false, tr("There is no %1 to export.").arg(mName));
    preset.name = name;
    return result(OXWTransferFunctionFile::write(fileName, format, {preset}, error), error);
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
