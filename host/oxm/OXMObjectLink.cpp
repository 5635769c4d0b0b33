#include "OXMObjectLink.h"

#include "OXMObject.h"

bool OXMObjectLink::linkIsOfType(const char* className) const
{
    const OXMObject* o = mLink.get();
    return o && o->isOfType(className);
}
