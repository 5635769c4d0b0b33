#pragma once

#include "OXMClass.h"
#include "OXMIOC.h"
#include "OXMObjectLink.h"
#include "OXMSingleValuePropertyIF.h"
#include "OXMValueArrayPropertyIF.h"

#include <memory>
#include <vector>

class OXMAction;
class OXMMetaClass;
class OXMObjectIOCPtr;
class OXMObjectWeakPtr;
class OXMProperty;
class OXMUndoRecorder;
struct OXMObjectPrivate;

// A host object: an ordered set of properties keyed by OXMenum, listeners, actions, roles,
// a reference count and a place in the containment tree (its parent link).
//
// Writing a property checks the value, stores it, reports (object, property, old, new) to the
// undo recorder if one is installed and sends one OXM::PropertyChanged message to the
// object's listeners and to the application channel. A write that does not change the value
// sends and records nothing. Cost: O(listeners + value size).
class OXMObject : public OXMClass, public OXMIOC
{
public:
    OXMObject();
    // Copies flags and scope; properties are the derived class's, listeners stay behind.
    OXMObject(const OXMObject& other);
    OXMObject& operator=(const OXMObject& other);
    // Sends OXMIOC::Dying to the listeners, clears every pointer to the object and detaches
    // the properties that are still added (deleting those the object owns).
    ~OXMObject() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    OXMenum getObjectID(int index) const override;
    using OXMClass::isOfType;
    // Whether one of the object's identifiers (getObjectID chain) is id.
    bool isOfType(OXMenum id) const;

    // --- properties
    // Adds the property under id (at the end of the order). False when the id is taken, the
    // property is null or belongs to another object. With takeOwnership the object deletes it.
    bool addProperty(OXMenum id, OXMProperty* property, bool takeOwnership = false);
    bool removeProperty(OXMenum id);
    OXMProperty* getProperty(OXMenum id);
    const OXMProperty* getProperty(OXMenum id) const;
    int getPropertyCount() const;
    OXMProperty* getPropertyAt(int index) const;
    // Copies the value of the source's property id into this object's property id through
    // the normal write path. False if either is missing or their types differ.
    bool copyProperty(const OXMObject* source, OXMenum id);

    // Typed shortcuts over getProperty + the property interfaces.
    template <typename T>
    bool getValue(OXMenum id, T& value) const
    {
        auto* p = OXMSingleValuePropertyIF<T>::getInterface(getProperty(id));
        if (!p)
            return false;
        value = p->getValue();
        return true;
    }
    template <typename T>
    bool setValue(OXMenum id, const T& value)
    {
        auto* p = OXMSingleValuePropertyIF<T>::getInterface(getProperty(id));
        return p && p->setValue(value);
    }
    // The whole array property id, from its first index to its last; false, and values empty,
    // when it is missing or of another type.
    template <typename T>
    bool getArray(OXMenum id, std::vector<T>& values) const
    {
        auto* p = OXMValueArrayPropertyIF<T>::getInterface(getProperty(id));
        values = p ? p->getArray() : std::vector<T>();
        return p != nullptr;
    }
    // Replaces the whole array property id (initArray over 0..n-1).
    template <typename T>
    bool setArray(OXMenum id, const std::vector<T>& values)
    {
        auto* p = OXMValueArrayPropertyIF<T>::getInterface(getProperty(id));
        return p && p->setArray(values);
    }
    // The object linked by the single link property id; null when missing or empty.
    OXMObject* getLinkedObject(OXMenum id) const;
    // The same of an object that may be null (null then).
    static OXMObject* linkedObject(const OXMObject* object, OXMenum id)
    {
        return object ? object->getLinkedObject(id) : nullptr;
    }
    // The whole array property id of an object that may be null (empty then).
    template <typename T>
    static std::vector<T> arrayOf(const OXMObject* object, OXMenum id)
    {
        std::vector<T> values;
        if (object)
            object->getArray(id, values);
        return values;
    }

    // --- references and lifetime
    void addRef() { ++mRefCount; }
    // Drops a reference; with mayDelete, an auto-delete object goes with its last one.
    void unref(bool mayDelete = true);
    int getRefCount() const { return mRefCount; }
    // Auto-delete (the default): deleted when the last reference goes. Objects that live on
    // the stack or are owned by C++ code must switch it off before references are taken.
    void setAutoDelete(bool autoDelete) { mAutoDelete = autoDelete; }
    bool isAutoDelete() const { return mAutoDelete; }

    // --- containment tree
    // The link through which the parent holds this object: link = this object, its auxiliary
    // object, owner = the parent, property = the parent's property; no owner for a root.
    OXMObjectLink getParentLink() const;

    // --- messages
    // lock(OXM::PropertyMessage) holds the object's messages; the matching unlock delivers
    // them, once per (type, property), in the order of their first occurrence. Locks nest.
    // Other lock kinds are refused.
    bool lock(OXMenum what);
    bool unlock(OXMenum what);
    bool isLocked(OXMenum what) const;
    // Sends a message of this object (type, property) to its listeners and the application.
    void sendMessage(OXMenum type, OXMenum propertyID);
    void iocBroadcast(Message& message) override;
    int getListenerCount() const;

    // --- actions
    // Adds an action (the object owns it); false if an action with its id exists.
    bool addAction(OXMAction* action);
    OXMAction* getAction(OXMenum id) const;
    // Runs the action synchronously; true on success (error code OXM::NoError).
    bool execute(OXMenum id, void* parameters = nullptr);
    // Asks whether the action would have to run; see OXMAction::check.
    bool checkExecute(OXMenum id, void* parameters, OXMenum* errorCode);

    // --- roles
    class RoleManager
    {
    public:
        // Declares a role with its parent role (an active role implies its parents).
        static bool addRole(OXMenum role, OXMenum parent = OXMenum());
        // Withdraws the role, also as a default role of classes.
        static bool removeRole(OXMenum role);
        static bool hasRole(OXMenum role);
        static OXMenum getParentRole(OXMenum role);
        // Objects of the class (and of classes derived from it) get the role at prepareRoles.
        static bool addDefaultRole(const OXMMetaClass* metaClass, OXMenum role);
        static bool setRoleInterface(OXMenum role, void* roleInterface);
        static void* getRoleInterface(OXMenum role);
    };
    // Activates the default roles of the object's class and its bases (with their parents).
    bool prepareRoles();
    bool isRoleActive(OXMenum role) const;
    // Activates (with its parents) or deactivates one role.
    bool setRoleActive(OXMenum role, bool active);

    // --- undo
    // Installs the recorder that receives every value and link change; returns the previous
    // one. Null switches recording off.
    static OXMUndoRecorder* setUndoRecorder(OXMUndoRecorder* recorder);
    static OXMUndoRecorder* getUndoRecorder();

private:
    friend class OXMProperty;
    friend class OXMObjectWeakPtr;
    friend class OXMObjectIOCPtr;
    friend class OXMClassManager;

    void addListener(OXMObjectIOCPtr* ptr);
    void removeListener(OXMObjectIOCPtr* ptr);
    void deliver(Message& message);
    void propertyDestroyed(OXMProperty* property);
    void setParent(OXMObject* owner, OXMenum propertyID, OXMObject* aux);
    void clearParent(OXMObject* owner, OXMenum propertyID);

    std::unique_ptr<OXMObjectPrivate> d;
    OXMObjectWeakPtr* mGuards = nullptr;
    OXMObject* mPrevObject = nullptr;
    OXMObject* mNextObject = nullptr;
    int mRefCount = 0;
    bool mAutoDelete = true;
    bool mDying = false;
};
