#include "OXMObject.h"

#include "OXMAction.h"
#include "OXMClassFactory.h"
#include "OXMClassManager.h"
#include "OXMMetaClass.h"
#include "OXMObjectIOCPtr.h"
#include "OXMProperty.h"
#include "OXMRegisteredEnum.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace {

struct DeliveryFrame
{
    bool destroyed = false;
    DeliveryFrame* outer = nullptr;
};

struct RoleData
{
    struct Role
    {
        OXMenum parent;
        void* roleInterface = nullptr;
    };
    std::unordered_map<OXMenum, Role> roles;
    std::vector<std::pair<const OXMMetaClass*, OXMenum>> defaults;
};

RoleData& roleData()
{
    static RoleData* r = new RoleData; // never destroyed
    return *r;
}

OXMUndoRecorder* gUndoRecorder = nullptr;

} // namespace

struct OXMObjectPrivate
{
    struct Entry
    {
        OXMenum id;
        OXMProperty* property;
        bool owned;
    };
    std::vector<Entry> properties;
    std::vector<OXMObjectIOCPtr*> listeners; // null entries are removed after delivery
    int delivering = 0;
    bool listenersDirty = false;
    DeliveryFrame* frames = nullptr;
    int messageLock = 0;
    std::vector<OXMIOC::Message> heldMessages;
    std::vector<std::unique_ptr<OXMAction>> actions;
    std::vector<OXMenum> roles;
    OXMObjectWeakPtr parentOwner;
    OXMObjectWeakPtr parentAux;
    OXMenum parentProperty;

    Entry* find(OXMenum id)
    {
        for (Entry& e : properties) {
            if (e.id == id)
                return &e;
        }
        return nullptr;
    }
    void compactListeners()
    {
        listeners.erase(std::remove(listeners.begin(), listeners.end(), nullptr), listeners.end());
        listenersDirty = false;
    }
};

OXMObject::OXMObject() : d(new OXMObjectPrivate)
{
    OXMClassManager::objectCreated(this);
}

OXMObject::OXMObject(const OXMObject& other)
    : OXMClass(other), OXMIOC(other), d(new OXMObjectPrivate)
{
    OXMClassManager::objectCreated(this);
}

OXMObject& OXMObject::operator=(const OXMObject& other)
{
    OXMClass::operator=(other);
    return *this;
}

OXMObject::~OXMObject()
{
    mDying = true;
    OXMClassManager::objectDestroyed(this);

    d->messageLock = 0;
    d->heldMessages.clear();
    Message dying(OXM::Dying, this);
    deliver(dying);
    for (DeliveryFrame* f = d->frames; f; f = f->outer)
        f->destroyed = true;
    d->frames = nullptr;

    while (mGuards) {
        OXMObjectWeakPtr* g = mGuards;
        g->detach();
        g->objectDestroyed();
    }

    std::vector<OXMObjectPrivate::Entry> properties;
    properties.swap(d->properties);
    for (const auto& e : properties) {
        e.property->mOwner = nullptr;
        e.property->mID = OXMenum();
    }
    for (const auto& e : properties) {
        if (e.owned)
            delete e.property;
    }
}

const OXMMetaClass* OXMObject::metaClass()
{
    static OXMDefaultClassFactory<OXMObject>* factory = new OXMDefaultClassFactory<OXMObject>;
    static OXMMetaClass* meta =
        new OXMMetaClass("OXMObject", sizeof(OXMObject), OXMClass::metaClass(), factory, "oxm");
    return meta;
}

const OXMMetaClass* OXMObject::getMetaClass() const
{
    return metaClass();
}

OXMenum OXMObject::getObjectID(int index) const
{
    static OXMRegisteredEnum* id = new OXMRegisteredEnum("OXMObject");
    return index == 0 ? id->getValue() : OXMClass::getObjectID(index - 1);
}

bool OXMObject::isOfType(OXMenum id) const
{
    if (!id.isValid())
        return false;
    for (int i = 0; i < 64; ++i) {
        const OXMenum e = getObjectID(i);
        if (!e.isValid())
            return false;
        if (e == id)
            return true;
    }
    return false;
}

// --- properties

bool OXMObject::addProperty(OXMenum id, OXMProperty* property, bool takeOwnership)
{
    if (!id.isValid() || !property || property->mOwner || d->find(id))
        return false;
    d->properties.push_back({id, property, takeOwnership});
    property->mOwner = this;
    property->mID = id;
    property->ownerChanged(nullptr);
    return true;
}

bool OXMObject::removeProperty(OXMenum id)
{
    auto& ps = d->properties;
    for (auto it = ps.begin(); it != ps.end(); ++it) {
        if (it->id == id) {
            const OXMObjectPrivate::Entry e = *it;
            ps.erase(it);
            e.property->mOwner = nullptr;
            e.property->ownerChanged(this);
            e.property->mID = OXMenum();
            if (e.owned)
                delete e.property;
            return true;
        }
    }
    return false;
}

void OXMObject::propertyDestroyed(OXMProperty* property)
{
    auto& ps = d->properties;
    for (auto it = ps.begin(); it != ps.end(); ++it) {
        if (it->property == property) {
            ps.erase(it);
            return;
        }
    }
}

OXMProperty* OXMObject::getProperty(OXMenum id)
{
    OXMObjectPrivate::Entry* e = d->find(id);
    return e ? e->property : nullptr;
}

const OXMProperty* OXMObject::getProperty(OXMenum id) const
{
    OXMObjectPrivate::Entry* e = d->find(id);
    return e ? e->property : nullptr;
}

int OXMObject::getPropertyCount() const
{
    return int(d->properties.size());
}

OXMProperty* OXMObject::getPropertyAt(int index) const
{
    if (index < 0 || index >= int(d->properties.size()))
        return nullptr;
    return d->properties[std::size_t(index)].property;
}

bool OXMObject::copyProperty(const OXMObject* source, OXMenum id)
{
    if (!source)
        return false;
    const OXMProperty* from = source->getProperty(id);
    OXMProperty* to = getProperty(id);
    return from && to && (from == to || to->assignFrom(*from));
}

OXMObject* OXMObject::getLinkedObject(OXMenum id) const
{
    OXMObjectLink link;
    return getValue(id, link) ? link.getLink() : nullptr;
}

// --- references

void OXMObject::unref(bool mayDelete)
{
    if (mRefCount > 0)
        --mRefCount;
    if (mRefCount == 0 && mayDelete && mAutoDelete && !mDying)
        delete this;
}

// --- containment tree

OXMObjectLink OXMObject::getParentLink() const
{
    OXMObject* owner = d->parentOwner.get();
    return OXMObjectLink(const_cast<OXMObject*>(this), owner ? d->parentAux.get() : nullptr,
                         owner ? d->parentProperty : OXMenum(), owner);
}

void OXMObject::setParent(OXMObject* owner, OXMenum propertyID, OXMObject* aux)
{
    d->parentOwner = owner;
    d->parentAux = aux;
    d->parentProperty = propertyID;
}

void OXMObject::clearParent(OXMObject* owner, OXMenum propertyID)
{
    if (d->parentOwner.get() == owner && d->parentProperty == propertyID) {
        d->parentOwner = nullptr;
        d->parentAux = nullptr;
        d->parentProperty = OXMenum();
    }
}

// --- messages

void OXMObject::addListener(OXMObjectIOCPtr* ptr)
{
    d->listeners.push_back(ptr);
}

void OXMObject::removeListener(OXMObjectIOCPtr* ptr)
{
    auto& ls = d->listeners;
    for (std::size_t i = ls.size(); i-- > 0;) {
        if (ls[i] == ptr) {
            if (d->delivering > 0) {
                ls[i] = nullptr;
                d->listenersDirty = true;
            } else {
                ls.erase(ls.begin() + std::ptrdiff_t(i));
            }
            return;
        }
    }
}

int OXMObject::getListenerCount() const
{
    const auto& ls = d->listeners;
    return int(ls.size() - std::size_t(std::count(ls.begin(), ls.end(), nullptr)));
}

void OXMObject::deliver(Message& message)
{
    OXMObjectPrivate& p = *d;
    DeliveryFrame frame;
    frame.outer = p.frames;
    p.frames = &frame;
    ++p.delivering;
    const std::size_t n = p.listeners.size(); // listeners added meanwhile wait for the next
    for (std::size_t i = 0; i < n; ++i) {
        OXMObjectIOCPtr* ptr = p.listeners[i];
        if (!ptr || !ptr->mListener)
            continue;
        ptr->mListener->iocCallback(message);
        if (frame.destroyed)
            return; // the object is gone; nothing of it may be touched
    }
    p.frames = frame.outer;
    if (--p.delivering == 0 && p.listenersDirty)
        p.compactListeners();
    OXMIOC::deliverToApplication(message);
}

void OXMObject::sendMessage(OXMenum type, OXMenum propertyID)
{
    Message m(type, this, propertyID);
    iocBroadcast(m);
}

void OXMObject::iocBroadcast(Message& message)
{
    if (d->messageLock > 0 && message.getType() != OXM::Dying) {
        for (const Message& held : d->heldMessages) {
            if (held.getType() == message.getType() &&
                held.getPropertyID() == message.getPropertyID() &&
                held.getInitialSender() == message.getInitialSender())
                return;
        }
        d->heldMessages.push_back(message);
        return;
    }
    deliver(message);
}

bool OXMObject::lock(OXMenum what)
{
    if (what != OXM::PropertyMessage)
        return false;
    ++d->messageLock;
    return true;
}

bool OXMObject::unlock(OXMenum what)
{
    if (what != OXM::PropertyMessage || d->messageLock == 0)
        return false;
    if (--d->messageLock > 0)
        return true;
    std::vector<Message> held;
    held.swap(d->heldMessages);
    DeliveryFrame frame;
    frame.outer = d->frames;
    d->frames = &frame;
    for (Message& m : held) {
        deliver(m);
        if (frame.destroyed)
            return true;
        if (d->messageLock > 0) { // a listener locked again: keep the rest for its unlock
            for (Message& rest : held) {
                if (&rest > &m)
                    iocBroadcast(rest);
            }
            break;
        }
    }
    d->frames = frame.outer;
    return true;
}

bool OXMObject::isLocked(OXMenum what) const
{
    return what == OXM::PropertyMessage && d->messageLock > 0;
}

// --- actions

bool OXMObject::addAction(OXMAction* action)
{
    if (!action || getAction(action->getID())) {
        delete action;
        return false;
    }
    d->actions.emplace_back(action);
    return true;
}

OXMAction* OXMObject::getAction(OXMenum id) const
{
    for (const auto& a : d->actions) {
        if (a->getID() == id)
            return a.get();
    }
    return nullptr;
}

bool OXMObject::execute(OXMenum id, void* parameters)
{
    OXMAction* a = getAction(id);
    return a && a->run(*this, parameters);
}

bool OXMObject::checkExecute(OXMenum id, void* parameters, OXMenum* errorCode)
{
    OXMAction* a = getAction(id);
    if (!a) {
        if (errorCode)
            *errorCode = OXM::InvalidOperation;
        return false;
    }
    return a->check(*this, parameters, errorCode);
}

// --- roles

bool OXMObject::RoleManager::addRole(OXMenum role, OXMenum parent)
{
    if (!role.isValid() || role == parent)
        return false;
    RoleData::Role& r = roleData().roles[role];
    r.parent = parent;
    return true;
}

bool OXMObject::RoleManager::removeRole(OXMenum role)
{
    auto& defaults = roleData().defaults;
    defaults.erase(std::remove_if(defaults.begin(), defaults.end(),
                                  [role](const auto& entry) { return entry.second == role; }),
                   defaults.end());
    return roleData().roles.erase(role) > 0;
}

bool OXMObject::RoleManager::hasRole(OXMenum role)
{
    return roleData().roles.count(role) > 0;
}

OXMenum OXMObject::RoleManager::getParentRole(OXMenum role)
{
    auto& roles = roleData().roles;
    auto it = roles.find(role);
    return it == roles.end() ? OXMenum() : it->second.parent;
}

bool OXMObject::RoleManager::addDefaultRole(const OXMMetaClass* metaClass, OXMenum role)
{
    if (!metaClass || !role.isValid())
        return false;
    auto& defaults = roleData().defaults;
    const auto entry = std::make_pair(metaClass, role);
    if (std::find(defaults.begin(), defaults.end(), entry) == defaults.end())
        defaults.push_back(entry);
    return true;
}

bool OXMObject::RoleManager::setRoleInterface(OXMenum role, void* roleInterface)
{
    auto& roles = roleData().roles;
    auto it = roles.find(role);
    if (it == roles.end())
        return false;
    it->second.roleInterface = roleInterface;
    return true;
}

void* OXMObject::RoleManager::getRoleInterface(OXMenum role)
{
    auto& roles = roleData().roles;
    auto it = roles.find(role);
    return it == roles.end() ? nullptr : it->second.roleInterface;
}

bool OXMObject::prepareRoles()
{
    const OXMMetaClass* meta = getMetaClass();
    for (const auto& entry : roleData().defaults) {
        if (meta && meta->isOfType(entry.first))
            setRoleActive(entry.second, true);
    }
    return true;
}

bool OXMObject::isRoleActive(OXMenum role) const
{
    return std::find(d->roles.begin(), d->roles.end(), role) != d->roles.end();
}

bool OXMObject::setRoleActive(OXMenum role, bool active)
{
    if (!role.isValid())
        return false;
    auto& roles = d->roles;
    if (!active) {
        roles.erase(std::remove(roles.begin(), roles.end(), role), roles.end());
        return true;
    }
    // The role and its parents; the depth bound guards against a cycle of parents.
    for (int depth = 0; role.isValid() && depth < 64; ++depth) {
        if (std::find(roles.begin(), roles.end(), role) == roles.end())
            roles.push_back(role);
        role = RoleManager::getParentRole(role);
    }
    return true;
}

// --- undo

OXMUndoRecorder* OXMObject::setUndoRecorder(OXMUndoRecorder* recorder)
{
    OXMUndoRecorder* previous = gUndoRecorder;
    gUndoRecorder = recorder;
    return previous;
}

OXMUndoRecorder* OXMObject::getUndoRecorder()
{
    return gUndoRecorder;
}
