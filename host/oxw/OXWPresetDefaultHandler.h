#pragma once

#include "OXWPresetHandler.h"
#include "OXWPresetStore.h"

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

    OXWPresetStore& store() { return mStore; }
    const OXWPresetStore& store() const { return mStore; }
    QString lastError() const { return mLastError; }
    void clearLastError() const { mLastError.clear(); }

protected:
    // Records the error text (empty on success) and answers ok.
    bool result(bool ok, const QString& error) const;
    void announceStoreChange();

private:
    QString mName;
    OXWPresetStore mStore;
    mutable QString mLastError;
};
