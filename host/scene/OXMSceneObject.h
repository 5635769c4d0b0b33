#pragma once

#include "OXMObject.h"
#include "OXMObjectLink.h"
#include "OXMSceneClass.h"
#include "OXMSingleValueOP.h"
#include "OXMValueArrayOP.h"

#include <vector>

// Base of the scene objects: helpers that add properties owned by the object, read and write
// links, and copy an object's values (children held through parent links are cloned, other
// links are shared).
class OXMSceneObject : public OXMObject
{
    OXM_SCENE_CLASS(OXMSceneObject)

public:
    OXMSceneObject();
    OXMSceneObject(const OXMSceneObject& other);
    OXMSceneObject& operator=(const OXMSceneObject& other);

    OXMObject* getLinkedAuxObject(OXMenum id) const;
    // Writes a link to object (with an optional auxiliary object) into property id.
    bool setLinkedObject(OXMenum id, OXMObject* object, OXMObject* aux = nullptr);
    // The links of the link array property id (empty when missing).
    std::vector<OXMObjectLink> getLinks(OXMenum id) const;
    // Appends a link to the link array property id.
    bool appendLink(OXMenum id, const OXMObjectLink& link);

protected:
    template <typename T>
    OXMSingleValueOP<T>* addSingle(OXMenum id, const T& defaultValue)
    {
        auto* p = new OXMSingleValueOP<T>(defaultValue);
        return addProperty(id, p, true) ? p : nullptr;
    }
    template <typename T>
    OXMValueArrayOP<T>* addArray(OXMenum id, const std::vector<T>& defaultValues = {})
    {
        auto* p = new OXMValueArrayOP<T>;
        p->setDefaultArray(defaultValues);
        p->reset();
        return addProperty(id, p, true) ? p : nullptr;
    }
    OXMSingleValueOP<OXMObjectLink>* addLink(OXMenum id, bool parentLink);
    OXMValueArrayOP<OXMObjectLink>* addLinkArray(OXMenum id, bool parentLink);

    // Copies flags, scope and the values of every property that both objects have.
    void copyValuesFrom(const OXMObject& other);
    // Gives the properties OXMProperty::PresetFlag: a preset holds them.
    void markPresetProperties(std::initializer_list<OXMenum> ids);
};
