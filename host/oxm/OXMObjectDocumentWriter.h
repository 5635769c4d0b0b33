#pragma once

#include "OXMJsonPropertyCodec.h"

#include <QJsonObject>
#include <QString>

#include <unordered_map>

class OXMObject;

// Writes the object tree of a document (see OXMObjectSerializer for the format): the root, and
// every object that a parent-link property of an object of the tree links to or holds as the
// auxiliary object of such a link. Each object is written once, at its first place in the order
// of the properties; every other link to it is a reference to that place. Links to objects
// outside the tree are written as null: a document holds only its own objects.
class OXMObjectDocumentWriter : public OXMJsonPropertyCodec::LinkWriter
{
public:
    // The node of root; false, with the reason in error, when a property has a type documents
    // do not hold or the tree is deeper than maxDepth objects.
    bool write(const OXMObject& root, int maxDepth, QJsonObject& node, QString& error);

    QJsonValue writeLink(const OXMObjectLink& link, const QString& at) override;

private:
    // Gives every object of the tree its place (document pointer).
    bool place(const OXMObject* object, const QString& at, int depth, int maxDepth);
    void placeLink(const OXMObjectLink& link, const QString& at, int depth, int maxDepth, bool& ok);
    QJsonObject objectNode(const OXMObject& object, const QString& at);
    // The node of the object when at is its place, a reference when it has another one, empty
    // when the document does not hold it.
    QJsonObject target(const OXMObject* object, const QString& at);

    std::unordered_map<const OXMObject*, QString> mPlaces;
    QString mError;
};
