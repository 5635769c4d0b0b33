#include "OXMObjectDocumentWriter.h"

#include "OXMMetaClass.h"
#include "OXMObject.h"
#include "OXMProperty.h"

#include <QJsonArray>

namespace {

QString propertyPlace(const QString& at, const OXMProperty& property)
{
    return at + QLatin1Char('/') +
           OXMJsonPropertyCodec::pointerToken(OXMJsonPropertyCodec::enumName(property.getID()));
}

// The links of a link property, single or array; empty for other properties.
std::vector<OXMObjectLink> linksOf(const OXMProperty& property)
{
    if (auto* single = OXMSingleValuePropertyIF<OXMObjectLink>::getInterface(&property))
        return {single->getValue()};
    if (auto* array = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(&property))
        return array->getArray();
    return {};
}

} // namespace

bool OXMObjectDocumentWriter::write(const OXMObject& root, int maxDepth, QJsonObject& node,
                                    QString& error)
{
    mPlaces.clear();
    mError.clear();
    if (!place(&root, QString(), 0, maxDepth)) {
        error = QStringLiteral("the objects are nested deeper than %1 levels").arg(maxDepth);
        return false;
    }
    node = objectNode(root, QString());
    error = mError;
    return mError.isEmpty();
}

bool OXMObjectDocumentWriter::place(const OXMObject* object, const QString& at, int depth,
                                    int maxDepth)
{
    if (depth > maxDepth)
        return false;
    if (!mPlaces.emplace(object, at).second)
        return true; // placed before: every further link is a reference
    bool ok = true;
    for (int i = 0; i < object->getPropertyCount() && ok; ++i) {
        const OXMProperty& property = *object->getPropertyAt(i);
        if (!property.isParentLink())
            continue;
        const QString here = propertyPlace(at, property);
        const bool isArray =
            OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(&property) != nullptr;
        const std::vector<OXMObjectLink> links = linksOf(property);
        for (std::size_t k = 0; k < links.size() && ok; ++k)
            placeLink(links[k], isArray ? here + QLatin1Char('/') + QString::number(k) : here,
                      depth, maxDepth, ok);
    }
    return ok;
}

void OXMObjectDocumentWriter::placeLink(const OXMObjectLink& link, const QString& at, int depth,
                                        int maxDepth, bool& ok)
{
    if (OXMObject* linked = link.getLink())
        ok = ok && place(linked, at, depth + 1, maxDepth);
    if (OXMObject* aux = link.getAuxLink())
        ok = ok && place(aux, at + QStringLiteral("/aux"), depth + 1, maxDepth);
}

QJsonObject OXMObjectDocumentWriter::objectNode(const OXMObject& object, const QString& at)
{
    QJsonObject properties;
    for (int i = 0; i < object.getPropertyCount() && mError.isEmpty(); ++i) {
        const OXMProperty& property = *object.getPropertyAt(i);
        QJsonValue value;
        if (OXMJsonPropertyCodec::write(property, *this, propertyPlace(at, property), value,
                                        mError))
            properties.insert(OXMJsonPropertyCodec::enumName(property.getID()), value);
    }
    const OXMMetaClass* meta = object.getMetaClass();
    return QJsonObject{
        {QStringLiteral("class"), QString::fromUtf8(meta ? meta->getClassName() : "")},
        {QStringLiteral("properties"), properties}};
}

QJsonObject OXMObjectDocumentWriter::target(const OXMObject* object, const QString& at)
{
    const auto found = mPlaces.find(object);
    if (found == mPlaces.end())
        return QJsonObject();
    if (found->second == at)
        return objectNode(*object, at);
    return QJsonObject{{QStringLiteral("ref"), found->second}};
}

QJsonValue OXMObjectDocumentWriter::writeLink(const OXMObjectLink& link, const QString& at)
{
    QJsonObject json = target(link.getLink(), at);
    if (json.isEmpty())
        return QJsonValue();
    if (OXMObject* aux = link.getAuxLink()) {
        const QJsonObject auxJson = target(aux, at + QStringLiteral("/aux"));
        if (!auxJson.isEmpty())
            json.insert(QStringLiteral("aux"), auxJson);
    }
    if (link.getKind().isValid() && link.getKind() != OXM::Unknown)
        json.insert(QStringLiteral("kind"), OXMJsonPropertyCodec::enumName(link.getKind()));
    return json;
}
