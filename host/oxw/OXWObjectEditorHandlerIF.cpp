#include "OXWObjectEditorHandlerIF.h"

#include <OXMMetaClass.h>
#include <OXMRegisteredEnum.h>

OXWObjectEditorHandlerIF::OXWObjectEditorHandlerIF() = default;

OXWObjectEditorHandlerIF::~OXWObjectEditorHandlerIF() = default;

const OXMMetaClass* OXWObjectEditorHandlerIF::metaClass()
{
    static auto* meta =
        new OXMMetaClass("OXWObjectEditorHandlerIF", sizeof(OXWObjectEditorHandlerIF),
                         OXMObject::metaClass(), nullptr, "oxw");
    return meta;
}

const OXMMetaClass* OXWObjectEditorHandlerIF::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWObjectEditorHandlerIF::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXWObjectEditorHandlerIF");
    return index == 0 ? id->getValue() : OXMObject::getObjectID(index - 1);
}
