#include "OXMObjectDocumentReader.h"

#include "OXMClassManager.h"
#include "OXMMetaClass.h"
#include "OXMNoUndoScope.h"
#include "OXMObject.h"
#include "OXMProperty.h"

#include <QJsonArray>

namespace {

const QString ClassKey = QStringLiteral("class");
const QString PropertiesKey = QStringLiteral("properties");
const QString RefKey = QStringLiteral("ref");
const QString AuxKey = QStringLiteral("aux");
const QString KindKey = QStringLiteral("kind");

QString located(const QString& at, const QString& what)
{
    return QStringLiteral("%1: %2").arg(at.isEmpty() ? QStringLiteral("/") : at, what);
}

QString propertyPlace(const QString& at, const QString& key)
{
    return at + QLatin1Char('/') + OXMJsonPropertyCodec::pointerToken(key);
}

// The objects that the link properties of object link to (links and auxiliary objects).
std::vector<OXMObject*> linkedObjects(const OXMObject& object)
{
    std::vector<OXMObject*> linked;
    for (int i = 0; i < object.getPropertyCount(); ++i) {
        const OXMProperty* property = object.getPropertyAt(i);
        std::vector<OXMObjectLink> links;
        if (auto* single = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(property))
            links.push_back(single->getValue());
        else if (auto* array = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(property))
            links = array->getArray();
        for (const OXMObjectLink& link : links) {
            for (OXMObject* o : {link.getLink(), link.getAuxLink()}) {
                if (o)
                    linked.push_back(o);
            }
        }
    }
    return linked;
}

// A new object of the named class (never an existing singleton: a document must not reach
// objects outside itself); null when the class is unknown or makes no OXMObject.
OXMObject* createObject(const QString& className)
{
    OXMClass* created = OXMClassManager::createObject(className.toUtf8().constData());
    auto* object = dynamic_cast<OXMObject*>(created);
    if (created && !object)
        OXMMetaClass::destruct(created, true);
    return object;
}

} // namespace

bool OXMObjectDocumentReader::read(const QJsonObject& node, int maxDepth, OXMObjectPtr& root,
                                   QString& error)
{
    const OXMNoUndoScope noUndo;
    mNodes.clear();
    mPlaces.clear();
    mMaxDepth = maxDepth;
    bool ok = create(node, QString(), 0, error);
    for (std::size_t i = 0; ok && i < mNodes.size(); ++i)
        ok = assign(mNodes[i], error);
    ok = ok && !findCycle(error);
    if (!ok)
        unlinkAll();
    root = ok ? mNodes.front().object : OXMObjectPtr();
    mPlaces.clear();
    mNodes.clear(); // objects that no link took go now
    return ok;
}

bool OXMObjectDocumentReader::create(const QJsonObject& node, const QString& at, int depth,
                                     QString& error)
{
    if (depth > mMaxDepth) {
        error = located(at, QStringLiteral("objects nested deeper than %1 levels").arg(mMaxDepth));
        return false;
    }
    const QString className = node.value(ClassKey).toString();
    OXMObject* object = createObject(className);
    if (!object) {
        error = located(at, QStringLiteral("unknown class \"%1\"").arg(className));
        return false;
    }
    mNodes.push_back({at, node, OXMObjectPtr(object)});
    mPlaces.insert(at, object);
    object->prepareRoles();

    const QJsonObject properties = node.value(PropertiesKey).toObject();
    for (int i = 0; i < object->getPropertyCount(); ++i) {
        const OXMProperty& property = *object->getPropertyAt(i);
        const QString key = OXMJsonPropertyCodec::enumName(property.getID());
        if (!property.isParentLink() || !properties.contains(key))
            continue;
        const QJsonValue value = properties.value(key);
        const QString here = propertyPlace(at, key);
        if (!value.isArray()) {
            if (!createLinked(value, here, depth, error))
                return false;
            continue;
        }
        const QJsonArray links = value.toArray();
        for (int k = 0; k < links.size(); ++k) {
            if (!createLinked(links.at(k), here + QLatin1Char('/') + QString::number(k), depth,
                              error))
                return false;
        }
    }
    return true;
}

bool OXMObjectDocumentReader::createLinked(const QJsonValue& link, const QString& at, int depth,
                                           QString& error)
{
    const QJsonObject json = link.toObject();
    if (json.contains(ClassKey) && !create(json, at, depth + 1, error))
        return false;
    const QJsonObject aux = json.value(AuxKey).toObject();
    return !aux.contains(ClassKey) || create(aux, at + QLatin1Char('/') + AuxKey, depth + 1, error);
}

bool OXMObjectDocumentReader::assign(const Node& node, QString& error)
{
    OXMObject& object = *node.object.get();
    const QJsonValue properties = node.json.value(PropertiesKey);
    if (!properties.isUndefined() && !properties.isObject()) {
        error = located(node.at, QStringLiteral("\"properties\" must be an object"));
        return false;
    }
    const QJsonObject values = properties.toObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        const QString here = propertyPlace(node.at, it.key());
        OXMProperty* property = object.getProperty(OXMJsonPropertyCodec::enumFromName(it.key()));
        if (!property) {
            error = located(here, QStringLiteral("an object of the class \"%1\" has no such "
                                                 "property")
                                      .arg(node.json.value(ClassKey).toString()));
            return false;
        }
        if (!OXMJsonPropertyCodec::read(*property, it.value(), *this, here, error))
            return false;
    }
    return true;
}

bool OXMObjectDocumentReader::objectAt(const QJsonObject& json, const QString& at,
                                       OXMObject*& object, QString& error)
{
    if (json.contains(RefKey)) {
        const QString place = json.value(RefKey).toString();
        object = json.value(RefKey).isString() ? mPlaces.value(place) : nullptr;
        if (!object)
            error = located(at, QStringLiteral("the reference \"%1\" names no object of the "
                                               "document")
                                    .arg(place));
        return object != nullptr;
    }
    object = json.contains(ClassKey) ? mPlaces.value(at) : nullptr;
    if (!object)
        error = located(at, json.contains(ClassKey)
                                ? QStringLiteral("an object is stored only in a parent link")
                                : QStringLiteral("a link needs \"ref\" or \"class\""));
    return object != nullptr;
}

bool OXMObjectDocumentReader::readLink(const QJsonValue& json, const QString& at,
                                       OXMObjectLink& link, QString& error)
{
    link = OXMObjectLink();
    if (json.isNull())
        return true;
    if (!json.isObject()) {
        error = located(at, QStringLiteral("expected a link (an object or null)"));
        return false;
    }
    const QJsonObject o = json.toObject();
    OXMObject* linked = nullptr;
    OXMObject* aux = nullptr;
    OXMenum kind = OXM::Unknown;
    if (!objectAt(o, at, linked, error))
        return false;
    if (o.contains(AuxKey) &&
        !objectAt(o.value(AuxKey).toObject(), at + QLatin1Char('/') + AuxKey, aux, error))
        return false;
    if (o.contains(KindKey)) {
        kind = OXMJsonPropertyCodec::enumFromName(o.value(KindKey).toString());
        if (!kind.isValid()) {
            error = located(at, QStringLiteral("unknown link kind"));
            return false;
        }
    }
    link = OXMObjectLink(linked, aux, OXMenum(), nullptr, kind);
    return true;
}

bool OXMObjectDocumentReader::findCycle(QString& error) const
{
    // Links hold references: objects that link to each other in a ring would never go.
    // Depth-first search with an explicit stack; only the new objects take part.
    enum State
    {
        Unvisited,
        OnPath,
        Done
    };
    QHash<const OXMObject*, State> state;
    for (const Node& node : mNodes)
        state.insert(node.object.get(), Unvisited);
    for (const Node& start : mNodes) {
        if (state.value(start.object.get()) != Unvisited)
            continue;
        std::vector<std::pair<const OXMObject*, std::vector<OXMObject*>>> path;
        path.emplace_back(start.object.get(), linkedObjects(*start.object.get()));
        state[start.object.get()] = OnPath;
        while (!path.empty()) {
            std::vector<OXMObject*>& next = path.back().second;
            if (next.empty()) {
                state[path.back().first] = Done;
                path.pop_back();
                continue;
            }
            OXMObject* o = next.back();
            next.pop_back();
            const auto found = state.find(o);
            if (found == state.end() || found.value() == Done)
                continue;
            if (found.value() == OnPath) {
                error = QStringLiteral("the links of the document form a ring");
                return true;
            }
            found.value() = OnPath;
            path.emplace_back(o, linkedObjects(*o));
        }
    }
    return false;
}

void OXMObjectDocumentReader::unlinkAll()
{
    for (const Node& node : mNodes) {
        OXMObject& object = *node.object.get();
        for (int i = 0; i < object.getPropertyCount(); ++i) {
            OXMProperty* property = object.getPropertyAt(i);
            const bool wasLocked = property->isLocked();
            property->unlock();
            if (auto* single = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(property))
                single->setValue(OXMObjectLink());
            else if (auto* array = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(property))
                array->initArray(0, -1, nullptr);
            property->lock(wasLocked);
        }
    }
}
