#pragma once

#include "OXWObjectEditor.h"

#include <OXMIOC.h>
#include <OXMObjectIOCPtr.h>
#include <OXMObjectPtr.h>

#include <QString>

#include <memory>
#include <vector>

class OXMObject;

// The application's preferences: objects registered under an identifier, the editors that
// the preference dialog shows for them, and their storage from one run to the next.
//
// The manager holds a reference to each registered object and listens to it. With a storage
// folder set, a registered object takes the values stored for its identifier (the file
// "<Namespace>.<Name>.json" of that folder, an object document of OXMObjectSerializer whose
// root is of the object's class), and every later change of one of its properties writes the
// file again, atomically (QSaveFile). A stored file that can't be read (broken JSON, another
// class, an unknown value) leaves the object at its defaults, reported as one line naming the
// file and the reason (OXMError::emitError, OXM::InvalidValue); the file is left as it is
// until the user changes that preference. Without a storage folder nothing is read or written.
//
// The application makes one manager and registers it (OXMSingleton<OXWPreferenceManager>);
// plug-ins add their preferences at start-up and remove them at shut-down; a manager that is
// destroyed is no longer the registered one. GUI thread only.
class OXWPreferenceManager : public OXMIOC
{
public:
    OXWPreferenceManager();
    ~OXWPreferenceManager() override;
    OXWPreferenceManager(const OXWPreferenceManager&) = delete;
    OXWPreferenceManager& operator=(const OXWPreferenceManager&) = delete;

    // Empty (the default): preferences are neither read nor written.
    void setStorageDirectory(const QString& directory) { mDirectory = directory; }
    QString storageDirectory() const { return mDirectory; }
    // The file of a preference's stored values; empty without a storage folder.
    QString storageFile(OXMenum id) const;

    // Registers the object under id and gives it its stored values. False (nothing changed)
    // for an invalid id, a null object or an id that is taken.
    virtual bool addPreference(OXMenum id, OXMObject* object);
    // Withdraws the preference and the editor mappings that lead to it. False when no
    // preference has that id.
    virtual bool removePreference(OXMenum id);
    // The object registered under id; null when there is none.
    OXMObject* getPreference(OXMenum id) const;
    // The object registered under an identifier of that name (any namespace); null if none.
    OXMObject* findPreference(const char* name) const;
    int preferenceCount() const { return int(mPreferences.size()); }

    // Places an editor in the preference tree. False for a malformed mapping (see
    // OXWObjectEditor::EnumMapping::isValid) or one whose path does not start with
    // OXM::Preferences followed by an identifier.
    bool addEnumMapping(const OXWObjectEditor::EnumMapping& mapping);
    const std::vector<OXWObjectEditor::EnumMapping>& enumMappings() const { return mMappings; }
    // The object a mapping edits: the preference named by the second key of its path.
    OXMObject* editedObject(const OXWObjectEditor::EnumMapping& mapping) const;

    void iocCallback(Message& message) override;

private:
    struct Preference
    {
        OXMenum id;
        OXMObjectPtr object;
        std::unique_ptr<OXMObjectIOCPtr> watch;
    };

    void readStored(const Preference& preference);
    bool writeStored(const Preference& preference) const;

    QString mDirectory;
    std::vector<Preference> mPreferences;
    std::vector<OXWObjectEditor::EnumMapping> mMappings;
    bool mApplyingStored = false;
};
