#pragma once

#include "OXMObjectWeakPtr.h"
#include "OXMenum.h"

// A link value: the linked object, an optional auxiliary object (e.g. a volume's transform),
// the object that owns the link and the property that holds it. A link read from a
// property names that property's object and ID as owner and property. The link itself holds
// no references (a link property holds them); its pointers read null once an object dies.
class OXMObjectLink
{
public:
    OXMObjectLink() = default;
    OXMObjectLink(OXMObject* link, OXMObject* aux = nullptr, OXMenum propertyID = OXMenum(),
                  OXMObject* owner = nullptr, OXMenum kind = OXM::Unknown)
        : mLink(link), mAux(aux), mOwner(owner), mPropertyID(propertyID), mKind(kind)
    {
    }

    OXMObject* getLink() const { return mLink.get(); }
    void setLink(OXMObject* link) { mLink = link; }
    OXMObject* getAuxLink() const { return mAux.get(); }
    void setAuxLink(OXMObject* aux) { mAux = aux; }
    OXMObject* getOwner() const { return mOwner.get(); }
    void setOwner(OXMObject* owner) { mOwner = owner; }
    OXMenum getPropertyID() const { return mPropertyID; }
    void setPropertyID(OXMenum id) { mPropertyID = id; }
    OXMenum getKind() const { return mKind; }
    void setKind(OXMenum kind) { mKind = kind; }

    bool isNull() const { return !mLink.get() && !mAux.get(); }
    // Whether the linked object is of the named class (or derived from it).
    bool linkIsOfType(const char* className) const;

    // Same linked and auxiliary objects, owner, property and kind.
    bool operator==(const OXMObjectLink& o) const
    {
        return mLink.get() == o.mLink.get() && mAux.get() == o.mAux.get() &&
               mOwner.get() == o.mOwner.get() && mPropertyID == o.mPropertyID && mKind == o.mKind;
    }
    bool operator!=(const OXMObjectLink& o) const { return !(*this == o); }

private:
    OXMObjectWeakPtr mLink;
    OXMObjectWeakPtr mAux;
    OXMObjectWeakPtr mOwner;
    OXMenum mPropertyID;
    OXMenum mKind = OXM::Unknown;
};
