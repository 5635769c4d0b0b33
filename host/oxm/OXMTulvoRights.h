#pragma once

#include "OXMObject.h"
#include "OXMSingleValueOP.h"

// The current user's rights on the open file. Each right is a bool property (so listeners
// hear changes); a new object grants everything.
class OXMTulvoRights : public OXMObject
{
public:
    OXMTulvoRights();
    OXMTulvoRights(const OXMTulvoRights& other);
    OXMTulvoRights& operator=(const OXMTulvoRights& other);
    ~OXMTulvoRights() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    OXMenum getObjectID(int index) const override;

    // Property OXM::AllowClassificationEdit.
    bool getAllowClassificationEdit() const;
    bool setAllowClassificationEdit(bool allow);

private:
    void addProperties();
    OXMSingleValueOP<bool> mAllowClassificationEdit{true};
};
