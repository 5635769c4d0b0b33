#include "OXMTulvoRights.h"

#include "OXMClassFactory.h"
#include "OXMMetaClass.h"
#include "OXMRegisteredEnum.h"

OXMTulvoRights::OXMTulvoRights()
{
    addProperties();
}

OXMTulvoRights::OXMTulvoRights(const OXMTulvoRights& other)
    : OXMObject(other), mAllowClassificationEdit(other.mAllowClassificationEdit)
{
    addProperties();
}

OXMTulvoRights& OXMTulvoRights::operator=(const OXMTulvoRights& other)
{
    OXMObject::operator=(other);
    mAllowClassificationEdit = other.mAllowClassificationEdit;
    return *this;
}

OXMTulvoRights::~OXMTulvoRights() = default;

void OXMTulvoRights::addProperties()
{
    addProperty(OXM::AllowClassificationEdit, &mAllowClassificationEdit);
}

const OXMMetaClass* OXMTulvoRights::metaClass()
{
    static auto* factory = new OXMDefaultClassFactory<OXMTulvoRights>;
    static auto* meta = new OXMMetaClass("OXMTulvoRights", sizeof(OXMTulvoRights),
                                         OXMObject::metaClass(), factory, "oxm");
    return meta;
}

const OXMMetaClass* OXMTulvoRights::getMetaClass() const
{
    return metaClass();
}

OXMenum OXMTulvoRights::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXMTulvoRights");
    return index == 0 ? id->getValue() : OXMObject::getObjectID(index - 1);
}

bool OXMTulvoRights::getAllowClassificationEdit() const
{
    return mAllowClassificationEdit.getValue();
}

bool OXMTulvoRights::setAllowClassificationEdit(bool allow)
{
    return mAllowClassificationEdit.setValue(allow);
}
