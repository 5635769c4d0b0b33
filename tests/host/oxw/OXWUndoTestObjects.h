#pragma once

#include <OXMIOC.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMSingleValueOP.h>
#include <OXMValueArrayOP.h>
#include <OXMVector2.h>

#include <map>

// An object with the kinds of properties user actions change: scalars, arrays and a link.
class OXWTestItem : public OXMObject
{
public:
    explicit OXWTestItem(bool autoDelete = false)
    {
        setAutoDelete(autoDelete);
        addProperty(OXM::Opacity, &opacity);
        addProperty(OXM::Shininess, &shininess);
        addProperty(OXM::LookupTable, &table);
        addProperty(OXM::LookupTableHandleList, &handles);
        addProperty(OXM::Reference, &reference);
    }
    OXMSingleValueOP<float> opacity{1.0f};
    OXMSingleValueOP<int> shininess{0};
    OXMValueArrayOP<float> table;
    OXMValueArrayOP<OXMVector2<float>> handles;
    OXMSingleValueOP<OXMObjectLink> reference;
};

// Counts the change messages it receives, per property.
class OXWChangeCounter : public OXMIOC
{
public:
    void iocCallback(Message& m) override
    {
        if (m.getType() != OXM::PropertyChanged)
            return;
        ++total;
        ++perProperty[m.getPropertyID().toInt()];
    }
    int count(OXMenum id) const
    {
        auto it = perProperty.find(id.toInt());
        return it == perProperty.end() ? 0 : it->second;
    }
    void reset()
    {
        total = 0;
        perProperty.clear();
    }

    int total = 0;
    std::map<int, int> perProperty;
};
