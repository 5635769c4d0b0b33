#pragma once

#include "OXMSingleValueOP.h"

// A link property whose object is the parent of the object it links to.
class OXMObjectParentLinkOP : public OXMSingleValueOP<OXMObjectLink>
{
public:
    OXMObjectParentLinkOP() { setParentLink(true); }
    OXMProperty* clone() const override { return new OXMObjectParentLinkOP(*this); }
};
