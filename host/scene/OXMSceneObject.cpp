#include "OXMSceneObject.h"

#include "OXMMetaClass.h"
#include "OXMObjectPtr.h"

OXM_SCENE_CLASS_IMPL(OXMSceneObject, "OXMSceneObject", OXMObject)

namespace {

// A link whose parent-held object (and auxiliary object) are replaced by copies; holders keeps
// the copies alive until they are stored (and deletes them if storing fails).
OXMObjectLink cloneLink(const OXMObjectLink& link, std::vector<OXMObjectPtr>& holders)
{
    auto copyOf = [&holders](OXMObject* o) {
        OXMClass* c = o ? OXMMetaClass::clone(o) : nullptr;
        auto* copy = dynamic_cast<OXMObject*>(c);
        if (c && !copy)
            OXMMetaClass::destruct(c, true);
        if (copy)
            holders.emplace_back(copy);
        return copy;
    };
    OXMObjectLink copy = link;
    copy.setLink(copyOf(link.getLink()));
    copy.setAuxLink(copyOf(link.getAuxLink()));
    return copy;
}

} // namespace

OXMSceneObject::OXMSceneObject() = default;

OXMSceneObject::OXMSceneObject(const OXMSceneObject& other) : OXMObject()
{
    copyValuesFrom(other);
}

OXMSceneObject& OXMSceneObject::operator=(const OXMSceneObject& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

OXMObject* OXMSceneObject::getLinkedAuxObject(OXMenum id) const
{
    OXMObjectLink l;
    return getValue(id, l) ? l.getAuxLink() : nullptr;
}

bool OXMSceneObject::setLinkedObject(OXMenum id, OXMObject* object, OXMObject* aux)
{
    return setValue(id, OXMObjectLink(object, aux));
}

std::vector<OXMObjectLink> OXMSceneObject::getLinks(OXMenum id) const
{
    auto* a = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(getProperty(id));
    return a ? a->getArray() : std::vector<OXMObjectLink>();
}

bool OXMSceneObject::appendLink(OXMenum id, const OXMObjectLink& link)
{
    auto* a = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(getProperty(id));
    if (!a)
        return false;
    const int n = a->getArraySize();
    return a->setArrayItems(n, n, &link);
}

OXMSingleValueOP<OXMObjectLink>* OXMSceneObject::addLink(OXMenum id, bool parentLink)
{
    auto* p = new OXMSingleValueOP<OXMObjectLink>;
    p->setParentLink(parentLink);
    return addProperty(id, p, true) ? p : nullptr;
}

OXMValueArrayOP<OXMObjectLink>* OXMSceneObject::addLinkArray(OXMenum id, bool parentLink)
{
    auto* p = new OXMValueArrayOP<OXMObjectLink>;
    p->setParentLink(parentLink);
    return addProperty(id, p, true) ? p : nullptr;
}

void OXMSceneObject::markPresetProperties(std::initializer_list<OXMenum> ids)
{
    for (OXMenum id : ids) {
        if (OXMProperty* p = getProperty(id))
            p->setProtectedFlags(OXMProperty::PresetFlag, 0);
    }
}

void OXMSceneObject::copyValuesFrom(const OXMObject& other)
{
    OXMObject::operator=(other);
    std::vector<OXMObjectPtr> holders;
    for (int i = 0; i < other.getPropertyCount(); ++i) {
        const OXMProperty* src = other.getPropertyAt(i);
        OXMProperty* dst = getProperty(src->getID());
        if (!dst)
            continue;
        const bool wasLocked = dst->isLocked();
        dst->unlock();
        if (src->isParentLink()) {
            if (auto* s = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(src)) {
                if (auto* d = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(dst))
                    d->setValue(cloneLink(s->getValue(), holders));
            } else if (auto* sa = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(src)) {
                if (auto* da = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(dst)) {
                    std::vector<OXMObjectLink> links = sa->getArray();
                    for (OXMObjectLink& l : links)
                        l = cloneLink(l, holders);
                    da->setArray(links);
                }
            }
        } else {
            dst->assignFrom(*src);
        }
        dst->lock(wasLocked);
    }
}
