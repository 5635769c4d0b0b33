#pragma once

#include "OXWPresetHandler.h"
#include "OXWPresetStore.h"
#include "OXWTransferFunctionFile.h"

#include <OXMObjectPtr.h>

#include <QString>

// A preset handler that keeps its user presets (OXM::UserPreset) as files: one record object
// per preset, stored and read through OXWPresetStore. Handlers of a kind derive from it and
// fill and read the records (saveTargetAsPreset with savePreset, applyPresetToTarget with
// loadPreset); it has no built-in presets of its own.
//
// Names: a user preset's name must pass OXWPresetStore::checkName and must not be that of a
// built-in preset (getPresetList(OXM::DefaultPreset)); names with slashes are fine (the file
// name is derived). Saving under an existing name replaces that preset; the save dialog asks
// first (OXWPresetSaveDialog).
//
// Every change of the stored presets is announced as a message of the handler for
// OXM::UserPreset (the preset boxes list again). The reason of the last failed storage
// operation is kept for the message the user sees (lastError).
class OXWPresetDefaultHandler : public OXWPresetHandler
{
public:
    // name: what the handler's presets are ("Classification").
    OXWPresetDefaultHandler(OXMenum id, const QString& name);

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    OXMenum getObjectID(int index) const override;

    QString getHandlerName() const { return mName; }

    // OXM::UserPreset: the stored presets; OXM::DefaultPreset: none (true); other types: false.
    bool getPresetList(QStringList& list, OXMenum type) const override;
    QString presetCategoryText() const override;
    bool deletePreset(const QString& name, OXMenum type) override;

    // The stored record of the user preset; null (with lastError) when there is none or its
    // file can't be read. flags: none are defined, pass 0.
    OXMObjectPtr loadPreset(const QString& name, OXMenum type, int flags) const;
    // Stores record as the user preset name.
    bool savePreset(OXMObject* record, const QString& name, OXMenum type);
    // Writes every property of source that destination also has onto destination (the normal
    // write path); false if either is null or any write fails (the others are still made).
    static bool copyProperties(OXMObject* destination, const OXMObject* source);

    // Why name can't be used for a new user preset; empty when it can.
    QString checkPresetName(const QString& name) const;
    bool hasUserPreset(const QString& name) const;
    // The name in a preset file of this handler (the whole file is read); false with
    // lastError when it is none.
    bool readPresetFile(const QString& fileName, QString& name) const;
    // Copies a preset file into the store (replacing a preset of its name); name receives it.
    bool importPreset(const QString& fileName, QString& name);
    bool exportPreset(const QString& name, const QString& fileName) const;

    // --- presets of other viewers (OXWTransferFunctionFile)
    // The record of a user preset made from another viewer's transfer function; null when
    // this kind of preset can't hold one (the base: always).
    virtual OXMObjectPtr recordFromTransferFunction(const OXWTransferFunction& preset) const;
    // The target's state as one transfer function for another viewer; false when there is
    // none (the base: always).
    virtual bool targetTransferFunction(OXWTransferFunction& preset) const;
    // The name an imported preset gets: its own with control characters made spaces and cut
    // to the longest name, " (imported)" added to a built-in preset's name.
    QString importName(const QString& name) const;
    // Imports the presets as user presets under the names (one each). Every record is made and
    // every name and the folder checked before anything is stored; then the records are
    // stored in the background, all or none (OXWPresetStore::saveInBackground: the names are
    // listed at once, a failure is reported in the host's error channel and takes them away
    // again). Each preset imported without something it holds is reported as one line in the
    // host's error channel (OXM::InvalidValue).
    bool importTransferFunctions(const std::vector<OXWTransferFunction>& presets,
                                 const QStringList& names, const QString& fileName);
    // Writes the target's state, named name, as a file of another viewer.
    bool exportTransferFunction(const QString& name, const QString& fileName,
                                OXWTransferFunctionFile::Format format) const;

    OXWPresetStore& store() { return mStore; }
    const OXWPresetStore& store() const { return mStore; }
    QString lastError() const { return mLastError; }
    void clearLastError() const { mLastError.clear(); }

protected:
    // Records the error text (empty on success) and answers ok.
    bool result(bool ok, const QString& error) const;
    void announceStoreChange();

private:
    // The records of every preset; false (with lastError) at the first that can't be made.
    bool makeRecords(const std::vector<OXWTransferFunction>& presets,
                     std::vector<OXMObjectPtr>& records) const;
    // Hands the records over to the store, to be stored under the names in the background.
    bool storeRecords(std::vector<OXMObjectPtr> records, const QStringList& names);

    QString mName;
    OXWPresetStore mStore;
    mutable QString mLastError;
};
