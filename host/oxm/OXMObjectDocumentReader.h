#pragma once

#include "OXMJsonPropertyCodec.h"
#include "OXMObjectPtr.h"

#include <QHash>
#include <QJsonObject>
#include <QString>

#include <vector>

class OXMObject;

// Builds the object tree of a document (see OXMObjectSerializer for the format) in two steps:
// first every object node is created by its class name through the class manager (the nodes
// of parent-link properties and of auxiliary objects, recursively), then every property of
// every node is written, links resolved against the places of the created objects. Nothing
// outside the new objects is touched and no undo step records the writes; on any failure all
// new objects are dropped.
class OXMObjectDocumentReader : public OXMJsonPropertyCodec::LinkReader
{
public:
    // The root object of node; false, with the reason in error, when a node names an unknown
    // class or a property the object lacks, a value does not fit its property, a reference
    // points to no object of the document, or the tree is deeper than maxDepth objects.
    bool read(const QJsonObject& node, int maxDepth, OXMObjectPtr& root, QString& error);

    bool readLink(const QJsonValue& json, const QString& at, OXMObjectLink& link,
                  QString& error) override;

private:
    struct Node
    {
        QString at;
        QJsonObject json;
        OXMObjectPtr object;
    };

    bool create(const QJsonObject& node, const QString& at, int depth, QString& error);
    bool createLinked(const QJsonValue& link, const QString& at, int depth, QString& error);
    bool assign(const Node& node, QString& error);
    // The object placed at `at` (for a "class" node) or named by a {"ref": place}.
    bool objectAt(const QJsonObject& json, const QString& at, OXMObject*& object, QString& error);
    // Whether the links between the new objects form a ring (which reference counting would
    // never free); the error says so.
    bool findCycle(QString& error) const;
    // Empties every link of the new objects, so that all of them go with the last pointer.
    void unlinkAll();

    std::vector<Node> mNodes;
    QHash<QString, OXMObject*> mPlaces;
    int mMaxDepth = 0;
};
