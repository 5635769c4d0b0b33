#include "OXMObjectSerializer.h"

#include "OXMObjectDocumentReader.h"
#include "OXMObjectDocumentWriter.h"

#include <QByteArrayList>
#include <QJsonDocument>
#include <QJsonParseError>

namespace {

const QString FormatKey = QStringLiteral("format");
const QString VersionKey = QStringLiteral("version");
const QString RootKey = QStringLiteral("root");

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

// QJsonDocument writes every item of an array on a line of its own; an array of plain
// numbers (a handle [x, y], a vector) reads better on one line: "[10, 0.5]".
QByteArray joinScalarArrays(const QByteArray& indented)
{
    const auto isStructure = [](char c) {
        return c == '[' || c == ']' || c == '{' || c == '}' || c == '"';
    };
    QByteArray out;
    out.reserve(indented.size());
    const int n = indented.size();
    for (int i = 0; i < n; ++i) {
        const char c = indented.at(i);
        if (c == '"') { // a string, copied as it is
            int j = i + 1;
            while (j < n && indented.at(j) != '"')
                j += indented.at(j) == '\\' ? 2 : 1;
            j = qMin(j, n - 1);
            out.append(indented.constData() + i, j - i + 1);
            i = j;
            continue;
        }
        int end = i + 1;
        while (c == '[' && end < n && !isStructure(indented.at(end)))
            ++end;
        if (c != '[' || end >= n || indented.at(end) != ']') {
            out.append(c);
            continue;
        }
        QByteArrayList items = indented.mid(i + 1, end - i - 1).split(',');
        for (QByteArray& item : items)
            item = item.trimmed();
        out.append('[').append(items.join(", ")).append(']');
        i = end;
    }
    return out;
}

bool parseEnvelope(const QByteArray& json, QJsonObject& top, QString* error)
{
    QJsonParseError parse;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parse);
    if (parse.error != QJsonParseError::NoError)
        return fail(error, QStringLiteral("not valid JSON (%1 at byte %2)")
                               .arg(parse.errorString())
                               .arg(parse.offset));
    top = document.object();
    if (!document.isObject() ||
        top.value(FormatKey).toString() != QLatin1String(OXMObjectSerializer::FormatName))
        return fail(error, QStringLiteral("not a document of this program (no \"format\": \"%1\")")
                               .arg(QLatin1String(OXMObjectSerializer::FormatName)));
    const QJsonValue version = top.value(VersionKey);
    if (!version.isDouble() || version.toDouble() != double(version.toInt()) || version.toInt() < 1)
        return fail(error, QStringLiteral("the document has no valid format version"));
    if (version.toInt() > OXMObjectSerializer::FormatVersion)
        return fail(error, QStringLiteral("written by a newer version of the program (format "
                                          "version %1; this one reads up to %2)")
                               .arg(version.toInt())
                               .arg(OXMObjectSerializer::FormatVersion));
    return true;
}

} // namespace

bool OXMObjectSerializer::write(const OXMObject& root, const QJsonObject& header, QByteArray& json,
                                QString* error)
{
    QJsonObject top = header;
    QJsonObject node;
    QString reason;
    OXMObjectDocumentWriter writer;
    if (!writer.write(root, MaxDepth, node, reason))
        return fail(error, reason);
    top.insert(FormatKey, QLatin1String(FormatName));
    top.insert(VersionKey, FormatVersion);
    top.insert(RootKey, node);
    json = joinScalarArrays(QJsonDocument(top).toJson(QJsonDocument::Indented));
    return true;
}

bool OXMObjectSerializer::read(const QByteArray& json, Document& document, QString* error)
{
    document = Document();
    QJsonObject top;
    if (!parseEnvelope(json, top, error))
        return false;
    if (!top.value(RootKey).isObject())
        return fail(error, QStringLiteral("the document holds no objects (no \"root\")"));
    QString reason;
    OXMObjectDocumentReader reader;
    if (!reader.read(top.value(RootKey).toObject(), MaxDepth, document.root, reason))
        return fail(error, reason);
    top.remove(RootKey);
    document.header = top;
    return true;
}

bool OXMObjectSerializer::readHeader(const QByteArray& json, QJsonObject& header, QString* error)
{
    if (!parseEnvelope(json, header, error))
        return false;
    header.remove(RootKey);
    return true;
}
