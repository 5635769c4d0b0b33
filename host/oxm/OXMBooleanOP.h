#pragma once

#include "OXMSingleValueOP.h"

// The host's boolean enumeration property: OXM::True or OXM::False, default OXM::False.
class OXMBooleanOP : public OXMSingleValueOP<OXMenum>
{
public:
    OXMBooleanOP() : OXMSingleValueOP<OXMenum>(OXM::False)
    {
        setAllowedValues({OXM::True, OXM::False});
    }
    OXMProperty* clone() const override { return new OXMBooleanOP(*this); }
};
