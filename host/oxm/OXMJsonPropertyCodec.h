#pragma once

#include "OXMenum.h"

#include <QJsonValue>
#include <QString>

class OXMObjectLink;
class OXMProperty;

// The JSON form of one property value, for the object documents of OXMObjectSerializer.
//
// The property's own type decides the form; the value carries no type tag:
// - bool: true / false; integers: numbers (read back only when integral and in range);
// - float and double: the shortest number that reads back to the same value ("0.1" for the
//   float 0.1f), or the strings "nan", "inf", "-inf";
// - OXMenum: "Namespace::Name" (never the number, which differs between runs), null for none;
// - strings (const char*): the text (the stored bytes in the local 8-bit encoding), null for
//   a null string; OXMTypeInfo: its type as an enumeration ("OXM::UInt16");
// - OXMVector2 / OXMVector3 / std::pair / OXMRGBf / OXMRGB8 / OXMRGBA / OXMInterval /
//   std::vector: arrays of their components;
// - OXMObjectLink: whatever the document's LinkWriter makes of it (see OXMObjectSerializer);
// - OXMObjectPath: an array of its elements, each a link with "property", the list property
//   that holds it in the previous element's object;
// - array properties: an array of items; an array whose index range does not start at 0 is
//   {"first": f, "items": [...]}.
//
// Locations: "at" is the document pointer of the value (a JSON pointer into the object tree,
// see OXMObjectSerializer); errors name it.
class OXMJsonPropertyCodec
{
public:
    // What the document makes of links (the writer knows which objects it holds).
    class LinkWriter
    {
    public:
        virtual ~LinkWriter() = default;
        virtual QJsonValue writeLink(const OXMObjectLink& link, const QString& at) = 0;
    };
    class LinkReader
    {
    public:
        virtual ~LinkReader() = default;
        // False with the reason in error when the JSON is no link of this document.
        virtual bool readLink(const QJsonValue& json, const QString& at, OXMObjectLink& link,
                              QString& error) = 0;
    };

    // The JSON of the property's value; false (with the reason in error) for a property of a
    // type this format does not know.
    static bool write(const OXMProperty& property, LinkWriter& links, const QString& at,
                      QJsonValue& json, QString& error);
    // Decodes json for the property and writes it through the normal write path (a locked
    // property is unlocked for it, as an object copy does). False, with the reason in error,
    // when the JSON does not fit the property's type or the property refuses the value.
    static bool read(OXMProperty& property, const QJsonValue& json, LinkReader& links,
                     const QString& at, QString& error);

    // "OXM::Opacity"; and the value of such a name that is registered now (invalid if none).
    static QString enumName(OXMenum value);
    static OXMenum enumFromName(const QString& name);
    // The token of a key or index in a document pointer ("~" and "/" escaped).
    static QString pointerToken(const QString& key);
};
