#pragma once

#include "OXMObjectPtr.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

class OXMObject;

// The JSON documents of the host's objects: the properties of an object and of the objects it
// holds, for presets, preferences and scene documents.
//
// A document is one JSON object, written indented and readable:
//
//   {
//       "format": "oxm-objects",          what the file is
//       "version": 1,                     the format's version (FormatVersion)
//       "kind": "preset", ...             the caller's header fields
//       "root": {                         the root object's node
//           "class": "OXMPresetClassificationProxyObject",
//           "properties": {
//               "OXM::IntervalIndexList": [-1, 255],
//               "OXM::IntervalModeList": ["OXM::Enabled"],
//               "oxwclassificationtool::AbsoluteMode": "OXM::False",
//               "OXM::AmbientRed": {"class": "OXMSampleTransferSpec", "properties": {...}},
//               "OXM::DiffuseRed": {"class": "OXMSampleTransferSpec", "properties": {
//                   "OXM::MapMode": "OXM::Reference",
//                   "OXM::Reference": {"ref": "/OXM::AmbientRed"},
//                   "OXM::LookupTableHandleList": [[0, 0], [255, 1]], ...
//
// Keys and enumeration values are "Namespace::Name", never numbers. Every property of an
// object is written under its key, its value in the form its type has (OXMJsonPropertyCodec).
// An object held through a parent-link property (or as the auxiliary object, "aux", of such a
// link) is written in place as a node {"class", "properties"} and made again by its class name
// when read; every other link to an object of the document is {"ref": place}, where the place
// is a JSON pointer of keys and indices from the root ("" for the root, "/OXM::AmbientRed",
// "/OXM::VolumeRenderObjectList/0/aux"). Links to objects outside the document are null.
// A link may carry its kind ("kind"); arrays whose indices do not start at 0 are written as
// {"first": f, "items": [...]}.
//
// Reading is all or nothing: the objects are built fresh (never taken from the application:
// no singleton is reused) and handed over only when every node, property, value and reference
// was understood. A document that is no JSON, truncated, of another format, of a newer
// version, names an unknown class or property, holds a value of the wrong form, or whose
// links form a ring, is refused with a one-line reason and creates nothing that stays.
// Properties a node does not mention keep the value the object's class gives them.
class OXMObjectSerializer
{
public:
    static constexpr const char* FormatName = "oxm-objects";
    static constexpr int FormatVersion = 1;
    // The deepest nesting of objects written or read.
    static constexpr int MaxDepth = 32;

    struct Document
    {
        // Every top-level field but "root": "format", "version" and the caller's fields.
        QJsonObject header;
        OXMObjectPtr root;
    };

    // The document of root with the caller's header fields ("format", "version" and "root"
    // are the serializer's). False, with the reason in error, when root holds a property of
    // a type documents do not hold or objects nested deeper than MaxDepth.
    static bool write(const OXMObject& root, const QJsonObject& header, QByteArray& json,
                      QString* error = nullptr);
    // The document's header and objects; see above for what is refused.
    static bool read(const QByteArray& json, Document& document, QString* error = nullptr);
    // Only the header (format and version checked, no objects made): for listing documents.
    static bool readHeader(const QByteArray& json, QJsonObject& header, QString* error = nullptr);
};
