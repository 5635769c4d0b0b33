#pragma once

#include "OXMError.h"
#include "OXMObject.h"
#include "OXMObjectWeakPtr.h"
#include "OXMSingleValuePropertyIF.h"

// Writes and reads one single-value property of an object, named by object and ID. Failures
// (missing object or property, wrong type, refused value) are reported through OXMError.
template <typename T>
class OXMSingleValueOPPtr
{
public:
    OXMSingleValueOPPtr(OXMObject* object, OXMenum propertyID) : mObject(object), mID(propertyID) {}

    OXMSingleValuePropertyIF<T>* getInterface() const
    {
        OXMObject* o = mObject.get();
        return o ? OXMSingleValuePropertyIF<T>::getInterface(o->getProperty(mID)) : nullptr;
    }
    bool isValid() const { return getInterface() != nullptr; }

    bool getValue(T& value) const
    {
        auto* p = getInterface();
        if (!p)
            return false;
        value = p->getValue();
        return true;
    }
    bool setValue(const T& value)
    {
        auto* p = getInterface();
        if (!p) {
            OXMError::emitError(mObject.get(), OXM::InvalidOperation,
                                QStringLiteral("no property %1 of this type").arg(mID.toString()));
            return false;
        }
        if (!p->setValue(value)) {
            OXMError::emitError(
                mObject.get(), OXM::InvalidValue,
                QStringLiteral("property %1 refused the value").arg(mID.toString()));
            return false;
        }
        return true;
    }

private:
    OXMObjectWeakPtr mObject;
    OXMenum mID;
};
