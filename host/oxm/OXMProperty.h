#pragma once

#include "OXMClass.h"

#include <memory>

class OXMObject;
class OXMObjectLink;
class OXMPropertyValue;

// A property: one value (or array) of an object, added under an OXMenum key. The typed
// templates OXMSingleValueOP<T> and OXMValueArrayOP<T> implement it; code reads and writes
// through the interfaces OXMSingleValuePropertyIF<T> and OXMValueArrayPropertyIF<T>.
class OXMProperty : public OXMClass
{
public:
    // Protected flag (getProtectedFlags) of the properties that presets hold: a classification
    // preset's record carries it, and so do the properties of the host's objects that a preset
    // writes; a preset handler treats a change of such a property as a change of its preset.
    static constexpr unsigned PresetFlag = 0x20000000u;

    OXMProperty() = default;
    // Copies flags, lock and kind; the copy belongs to no object.
    OXMProperty(const OXMProperty& other);
    OXMProperty& operator=(const OXMProperty& other);
    // Removes the property from its object.
    ~OXMProperty() override;

    OXMObject* getOwner() const { return mOwner; }
    OXMenum getID() const { return mID; }

    // A locked property refuses every write.
    bool isLocked() const { return mLocked; }
    void lock(bool locked = true) { mLocked = locked; }
    void unlock() { mLocked = false; }

    // A parent-link property makes its object the parent of the objects it links to
    // (their getParentLink() names it). Set it before the property is added.
    bool isParentLink() const { return mParentLink; }
    void setParentLink(bool parentLink) { mParentLink = parentLink; }

    // Back to the default value, through the normal write path.
    virtual bool reset() = 0;
    // Takes the value of another property of the same type; false on a type mismatch.
    virtual bool assignFrom(const OXMProperty& source) = 0;
    virtual OXMProperty* clone() const = 0;
    virtual std::unique_ptr<OXMPropertyValue> saveValue() const = 0;
    // Writes a saved value back through the normal write path; false if its type differs.
    virtual bool restoreValue(const OXMPropertyValue& value) = 0;

protected:
    // Whether a change must build old and new values for the undo recorder.
    bool isRecording() const;
    // Reports a change: to the recorder (when both values are given) and as one
    // OXM::PropertyChanged message of the owner. May destroy the property's object.
    void valueChanged(const OXMPropertyValue* oldValue, const OXMPropertyValue* newValue);
    // Called after the property was added to or removed from an object.
    virtual void ownerChanged(OXMObject* oldOwner);

    // Bookkeeping of link values: references and parent links.
    void acquireLink(const OXMObjectLink& link);
    void detachParent(const OXMObjectLink& link, OXMObject* owner);
    void attachParent(const OXMObjectLink& link, OXMObject* owner);
    static void releaseLink(const OXMObjectLink& link);

private:
    friend class OXMObject;
    OXMObject* mOwner = nullptr;
    OXMenum mID;
    bool mLocked = false;
    bool mParentLink = false;
};
