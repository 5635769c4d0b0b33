#pragma once

#include "OXMObjectPtr.h"
#include "OXMenum.h"

// A reference pointer that can also create the object it holds by class name.
class OXMObjectRefPtr : public OXMObjectPtr
{
public:
    OXMObjectRefPtr() = default;
    OXMObjectRefPtr(OXMObject* object) : OXMObjectPtr(object) {}
    // Creates an object of the named class through the class manager and gives it the scope.
    // For a singleton class an existing object of the class in that scope is used instead.
    // Empty when the class is unknown, creation fails or the class is not an OXMObject.
    explicit OXMObjectRefPtr(const char* className, OXMenum scope = OXM::Local);
    OXMObjectRefPtr(const OXMObjectRefPtr& other) = default;
    OXMObjectRefPtr& operator=(const OXMObjectRefPtr& other) = default;
    OXMObjectRefPtr& operator=(OXMObject* object)
    {
        OXMObjectPtr::operator=(object);
        return *this;
    }
};
