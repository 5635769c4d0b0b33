#pragma once

#include "OXMProperty.h"

// Typed access to a single-value property. getInterface answers null for a missing property
// or one of another type.
template <typename T>
class OXMSingleValuePropertyIF
{
public:
    virtual ~OXMSingleValuePropertyIF() = default;

    static OXMSingleValuePropertyIF* getInterface(OXMProperty* property)
    {
        return dynamic_cast<OXMSingleValuePropertyIF*>(property);
    }
    static const OXMSingleValuePropertyIF* getInterface(const OXMProperty* property)
    {
        return dynamic_cast<const OXMSingleValuePropertyIF*>(property);
    }

    virtual T getValue() const = 0;
    // False when the property is locked or refuses the value; the value then stays.
    virtual bool setValue(const T& value) = 0;
};
