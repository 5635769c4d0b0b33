#pragma once

#include <OXMBooleanOP.h>
#include <OXMObject.h>
#include <OXMObjectWeakPtr.h>
#include <OXMSingleValueOP.h>
#include <OXMenum.h>

#include <QPixmap>
#include <QString>
#include <QStringList>

class QWidget;

// Base of the host's preset handlers. A preset handler serves one kind of preset (a
// classification, a camera, ...): the generic preset machinery (the preset combo box, the save,
// delete, import and export dialogs) finds the handler of its kind by the handler's identifier
// and talks to it. The handler is told which object the presets apply to (the target) and, for
// kinds that need it, the histogram of that object's data.
//
// Registry: constructing a handler registers it under its identifier for the whole process;
// destroying it withdraws the registration. getPresetHandler answers the handler registered
// most recently under an identifier that is still alive, so a second handler of the same
// identifier shadows the first until it goes. An invalid identifier is never registered. GUI
// thread only.
//
// Preset types: OXM::DefaultPreset names the handler's built-in presets (computed, never
// stored), OXM::UserPreset the presets the user saved or imported (OXWPresetDefaultHandler
// keeps them as files).
//
// Current preset: the handler's own properties say which preset the target's state came from,
// OXM::Preset (a string, "Unknown" when none) and OXM::PresetModified (OXM::True once the user
// changed something the preset holds). Their change messages tell the preset boxes what to
// show. Writing them is bookkeeping: no undo step records it.
//
// Ownership: whoever creates a handler owns it (auto-delete is off, references taken through
// the object pointers never delete it). Target and histogram are held weakly: they read null
// once their objects are destroyed.
class OXWPresetHandler : public OXMObject
{
public:
    // The value of OXM::Preset when no preset is current.
    static constexpr const char* UnknownPreset = "Unknown";

    explicit OXWPresetHandler(OXMenum id);
    ~OXWPresetHandler() override;

    OXWPresetHandler(const OXWPresetHandler&) = delete;
    OXWPresetHandler& operator=(const OXWPresetHandler&) = delete;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    OXMenum getObjectID(int index) const override;

    // The handler registered under id; null when none is (or id is invalid).
    static OXWPresetHandler* getPresetHandler(OXMenum id);

    // The identifier the handler is registered under.
    OXMenum getHandlerID() const { return mHandlerID; }

    // --- the operations of the preset machinery; the base has no presets and refuses
    // The names of the presets of a type, in the order to show them; false for a type the
    // handler does not serve.
    virtual bool getPresetList(QStringList& list, OXMenum type) const;
    // The picture of a preset (the preset box shows it with groupIcons); a null pixmap if none.
    virtual QPixmap getPresetPixmap(const QString& name, OXMenum type);
    // The name of the kind of preset, for menus and dialogs.
    virtual QString presetCategoryText() const;
    // Applies the preset to the target. Callers wrap it in one user action.
    virtual bool applyPresetToTarget(const QString& name, OXMenum type);
    // Saves the target's state as a preset of that name (replacing one of the same name).
    virtual bool saveTargetAsPreset(const QString& name, OXMenum type);
    virtual bool deletePreset(const QString& name, OXMenum type);
    // Makes the preset the current one, unmodified, without applying it; false when the
    // handler has no such preset.
    virtual bool loadState(const QString& name, OXMenum type);
    // Saves the target over the current user preset and makes it unmodified; false when no
    // user preset is current.
    virtual bool saveState();
    // The extra widget of the save dialog (the dialog takes it over); null when there is none.
    virtual QWidget* createSaveDialogExtension();

    // The object that presets are saved from and applied to; null clears it. The base stores
    // the object and answers true; handlers override it to look up what they need.
    virtual bool setTargetObject(OXMObject* target);
    OXMObject* getTargetObject() const { return mTarget.get(); }

    // The histogram of the target's data; null clears it. The base stores it and answers true.
    virtual bool setHistogramObject(OXMObject* histogram);
    OXMObject* getHistogramObject() const { return mHistogram.get(); }

    // --- the current preset (see above)
    // Its name; empty when none is current.
    QString getCurrentPreset() const;
    // Makes name current and unmodified; an empty name (or UnknownPreset) makes none current.
    bool setCurrentPreset(const QString& name);
    bool isCurrentPresetModified() const;
    bool setCurrentPresetModified(bool modified);

private:
    OXMenum mHandlerID;
    OXMObjectWeakPtr mTarget;
    OXMObjectWeakPtr mHistogram;
    OXMSingleValueOP<const char*> mPreset{UnknownPreset};
    OXMBooleanOP mPresetModified;
};
