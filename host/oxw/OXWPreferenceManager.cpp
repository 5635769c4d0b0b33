#include "OXWPreferenceManager.h"

#include <OXMError.h>
#include <OXMMetaClass.h>
#include <OXMObject.h>
#include <OXMObjectSerializer.h>
#include <OXMProperty.h>
#include <OXMSingleton.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>
#include <cstring>

namespace {

constexpr const char* StoredKind = "preference";
// A preference file is a few properties; anything larger is not one of ours.
constexpr qint64 MaxStoredSize = 1024 * 1024;

bool readFile(const QString& fileName, QByteArray& bytes, QString& error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return false;
    }
    if (file.size() > MaxStoredSize) {
        error = QStringLiteral("the file is larger than %1 bytes").arg(MaxStoredSize);
        return false;
    }
    bytes = file.readAll();
    return true;
}

// Copies every property of the stored object into the registered one through the normal
// write path, so that each property's own checks apply.
void copyProperties(const OXMObject& stored, OXMObject& target)
{
    for (int i = 0; i < stored.getPropertyCount(); ++i) {
        if (const OXMProperty* property = stored.getPropertyAt(i))
            target.copyProperty(&stored, property->getID());
    }
}

} // namespace

OXWPreferenceManager::OXWPreferenceManager() = default;

OXWPreferenceManager::~OXWPreferenceManager()
{
    // Also makes this library the home of the registration, which plug-ins then share.
    OXMSingleton<OXWPreferenceManager>::clearInstance(this);
}

QString OXWPreferenceManager::storageFile(OXMenum id) const
{
    if (mDirectory.isEmpty() || !id.isValid())
        return QString();
    return QDir(mDirectory)
        .filePath(QStringLiteral("%1.%2.json")
                      .arg(QString::fromUtf8(id.getNamespace()), QString::fromUtf8(id.getName())));
}

bool OXWPreferenceManager::addPreference(OXMenum id, OXMObject* object)
{
    if (!id.isValid() || !object || getPreference(id))
        return false;
    Preference preference;
    preference.id = id;
    preference.object = object;
    readStored(preference);
    preference.watch = std::make_unique<OXMObjectIOCPtr>(object, this);
    mPreferences.push_back(std::move(preference));
    return true;
}

bool OXWPreferenceManager::removePreference(OXMenum id)
{
    auto it = std::find_if(mPreferences.begin(), mPreferences.end(),
                           [id](const Preference& p) { return p.id == id; });
    if (it == mPreferences.end())
        return false;
    mPreferences.erase(it);
    mMappings.erase(std::remove_if(mMappings.begin(), mMappings.end(),
                                   [id](const OXWObjectEditor::EnumMapping& m) {
                                       return m.path.size() > 1 && m.path[1] == id;
                                   }),
                    mMappings.end());
    return true;
}

OXMObject* OXWPreferenceManager::getPreference(OXMenum id) const
{
    for (const Preference& p : mPreferences) {
        if (p.id == id)
            return p.object.get();
    }
    return nullptr;
}

OXMObject* OXWPreferenceManager::findPreference(const char* name) const
{
    for (const Preference& p : mPreferences) {
        if (name && std::strcmp(p.id.getName(), name) == 0)
            return p.object.get();
    }
    return nullptr;
}

bool OXWPreferenceManager::addEnumMapping(const OXWObjectEditor::EnumMapping& mapping)
{
    if (!mapping.isValid() || mapping.path.size() != 2 || mapping.path[0] != OXM::Preferences)
        return false;
    mMappings.push_back(mapping);
    return true;
}

OXMObject* OXWPreferenceManager::editedObject(const OXWObjectEditor::EnumMapping& mapping) const
{
    return mapping.path.size() == 2 ? getPreference(mapping.path[1]) : nullptr;
}

void OXWPreferenceManager::iocCallback(Message& message)
{
    if (mApplyingStored || message.getType() != OXM::PropertyChanged)
        return;
    for (const Preference& p : mPreferences) {
        if (p.object.get() == message.getInitialSender())
            writeStored(p);
    }
}

void OXWPreferenceManager::readStored(const Preference& preference)
{
    const QString fileName = storageFile(preference.id);
    if (fileName.isEmpty() || !QFile::exists(fileName))
        return;
    QByteArray bytes;
    QString error;
    OXMObjectSerializer::Document document;
    if (readFile(fileName, bytes, error) && OXMObjectSerializer::read(bytes, document, &error)) {
        const OXMMetaClass* stored = document.root ? document.root->getMetaClass() : nullptr;
        if (stored && stored == preference.object->getMetaClass()) {
            mApplyingStored = true;
            copyProperties(*document.root, *preference.object);
            mApplyingStored = false;
            return;
        }
        error = QStringLiteral("it holds an object of another class");
    }
    OXMError::emitError(nullptr, OXM::InvalidValue,
                        QStringLiteral("Preferences file '%1' can't be used (%2); the defaults "
                                       "are used until the preference is changed")
                            .arg(fileName, error));
}

bool OXWPreferenceManager::writeStored(const Preference& preference) const
{
    const QString fileName = storageFile(preference.id);
    if (fileName.isEmpty())
        return false;
    QJsonObject header;
    header.insert(QStringLiteral("kind"), QLatin1String(StoredKind));
    header.insert(QStringLiteral("preference"), preference.id.toString());
    QByteArray json;
    QString error;
    bool ok = OXMObjectSerializer::write(*preference.object, header, json, &error);
    if (ok) {
        QDir().mkpath(QFileInfo(fileName).absolutePath());
        QSaveFile file(fileName);
        ok = file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.commit();
        if (!ok)
            error = file.errorString();
    }
    if (!ok)
        OXMError::emitError(
            nullptr, OXM::GenericError,
            QStringLiteral("Preferences file '%1' could not be written (%2)").arg(fileName, error));
    return ok;
}
