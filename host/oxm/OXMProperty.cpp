#include "OXMProperty.h"

#include "OXMObject.h"
#include "OXMObjectLink.h"
#include "OXMObjectPtr.h"
#include "OXMUndoRecorder.h"

OXMProperty::OXMProperty(const OXMProperty& other)
    : OXMClass(other), mLocked(other.mLocked), mParentLink(other.mParentLink)
{
}

OXMProperty& OXMProperty::operator=(const OXMProperty& other)
{
    OXMClass::operator=(other);
    mLocked = other.mLocked;
    return *this;
}

OXMProperty::~OXMProperty()
{
    if (mOwner)
        mOwner->propertyDestroyed(this);
}

bool OXMProperty::isRecording() const
{
    return mOwner && OXMObject::getUndoRecorder();
}

void OXMProperty::valueChanged(const OXMPropertyValue* oldValue, const OXMPropertyValue* newValue)
{
    OXMObject* owner = mOwner;
    if (!owner)
        return;
    if (oldValue && newValue) {
        if (OXMUndoRecorder* r = OXMObject::getUndoRecorder())
            r->recordChange(owner, mID, *oldValue, *newValue);
    }
    owner->sendMessage(OXM::PropertyChanged, mID);
}

void OXMProperty::ownerChanged(OXMObject*) {}

void OXMProperty::acquireLink(const OXMObjectLink& link)
{
    if (OXMObject* o = link.getLink())
        o->addRef();
    if (OXMObject* o = link.getAuxLink())
        o->addRef();
}

void OXMProperty::detachParent(const OXMObjectLink& link, OXMObject* owner)
{
    if (!mParentLink || !owner)
        return;
    if (OXMObject* o = link.getLink())
        o->clearParent(owner, mID);
}

void OXMProperty::attachParent(const OXMObjectLink& link, OXMObject* owner)
{
    if (!mParentLink || !owner)
        return;
    if (OXMObject* o = link.getLink())
        o->setParent(owner, mID, link.getAuxLink());
}

void OXMProperty::releaseLink(const OXMObjectLink& link)
{
    // Both pointers are taken first: releasing the linked object may destroy the auxiliary.
    OXMObject* l = link.getLink();
    OXMObjectPtr aux(link.getAuxLink());
    if (aux)
        aux->unref();
    if (l)
        l->unref();
}
