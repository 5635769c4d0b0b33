#pragma once

#include "OXMenum.h"

class OXMObject;
class OXMPropertyValue;

// Receives every successful change of a property value or link (see
// OXMObject::setUndoRecorder). The values are only valid during the call; clone() them to keep
// them. A recorded link value keeps the objects it names alive while it exists.
class OXMUndoRecorder
{
public:
    virtual ~OXMUndoRecorder() = default;
    virtual void recordChange(OXMObject* object, OXMenum propertyID,
                              const OXMPropertyValue& oldValue,
                              const OXMPropertyValue& newValue) = 0;
};
