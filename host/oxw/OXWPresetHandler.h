#pragma once

#include <OXMObject.h>
#include <OXMObjectWeakPtr.h>
#include <OXMenum.h>

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
// Ownership: whoever creates a handler owns it (auto-delete is off, references taken through
// the object pointers never delete it). Target and histogram are held weakly: they read null
// once their objects are destroyed.
class OXWPresetHandler : public OXMObject
{
public:
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

    // The object that presets are saved from and applied to; null clears it. The base stores
    // the object and answers true; handlers override it to look up what they need.
    virtual bool setTargetObject(OXMObject* target);
    OXMObject* getTargetObject() const { return mTarget.get(); }

    // The histogram of the target's data; null clears it. The base stores it and answers true.
    virtual bool setHistogramObject(OXMObject* histogram);
    OXMObject* getHistogramObject() const { return mHistogram.get(); }

private:
    OXMenum mHandlerID;
    OXMObjectWeakPtr mTarget;
    OXMObjectWeakPtr mHistogram;
};
