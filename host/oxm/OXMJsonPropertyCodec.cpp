#include "OXMJsonPropertyCodec.h"

#include "OXMInterval.h"
#include "OXMObjectLink.h"
#include "OXMObjectPath.h"
#include "OXMProperty.h"
#include "OXMRGB8.h"
#include "OXMRGBA.h"
#include "OXMRGBf.h"
#include "OXMSingleValuePropertyIF.h"
#include "OXMTypeInfo.h"
#include "OXMValueArrayPropertyIF.h"
#include "OXMVector2.h"
#include "OXMVector3.h"

#include <QJsonArray>
#include <QJsonObject>

#include <charconv>
#include <cmath>
#include <deque>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

struct WriteContext
{
    OXMJsonPropertyCodec::LinkWriter& links;
    QString at;
};

struct ReadContext
{
    OXMJsonPropertyCodec::LinkReader& links;
    QString at;
    QString& error;
    std::deque<QByteArray> strings; // the bytes of read strings, until the property has them

    bool fail(const QString& what)
    {
        error = QStringLiteral("%1: %2").arg(at.isEmpty() ? QStringLiteral("/") : at, what);
        return false;
    }
};

// --- scalars ---------------------------------------------------------------------------------

template <typename T, typename Enable = void>
struct Codec;

template <>
struct Codec<bool>
{
    static QJsonValue write(bool v, WriteContext&) { return v; }
    static bool read(const QJsonValue& j, bool& v, ReadContext& c)
    {
        if (!j.isBool())
            return c.fail(QStringLiteral("expected true or false"));
        v = j.toBool();
        return true;
    }
};

template <typename T>
struct Codec<T, std::enable_if_t<std::is_integral<T>::value && !std::is_same<T, bool>::value>>
{
    static QJsonValue write(T v, WriteContext&) { return double(v); }
    static bool read(const QJsonValue& j, T& v, ReadContext& c)
    {
        const double d = j.toDouble();
        if (!j.isDouble() || d != std::floor(d) || d < double(std::numeric_limits<T>::min()) ||
            d > double(std::numeric_limits<T>::max()))
            return c.fail(QStringLiteral("expected an integer from %1 to %2")
                              .arg(QString::number(std::numeric_limits<T>::min()),
                                   QString::number(std::numeric_limits<T>::max())));
        v = T(d);
        return true;
    }
};

// The double nearest to the shortest decimal that reads back as f: JSON then shows "0.1" for
// the float 0.1f instead of the digits of its binary value.
double shortestDouble(float f)
{
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, f);
    double d = double(f);
    std::from_chars(text, end.ptr, d);
    return d;
}

template <typename T>
struct Codec<T, std::enable_if_t<std::is_floating_point<T>::value>>
{
    static QJsonValue write(T v, WriteContext&)
    {
        if (std::isnan(v))
            return QStringLiteral("nan");
        if (std::isinf(v))
            return v > 0 ? QStringLiteral("inf") : QStringLiteral("-inf");
        if constexpr (std::is_same<T, float>::value)
            return shortestDouble(v);
        else
            return double(v);
    }
    static bool read(const QJsonValue& j, T& v, ReadContext& c)
    {
        const QString s = j.toString();
        if (j.isString() && (s == QLatin1String("nan") || s == QLatin1String("inf") ||
                             s == QLatin1String("-inf"))) {
            v = s == QLatin1String("nan")
                    ? std::numeric_limits<T>::quiet_NaN()
                    : (s == QLatin1String("inf") ? 1 : -1) * std::numeric_limits<T>::infinity();
            return true;
        }
        // Decimals up to half a step above the largest finite value still round to it.
        const double largest = double(std::numeric_limits<T>::max());
        const double limit = std::is_same<T, float>::value
                                 ? largest + std::ldexp(1.0, std::numeric_limits<T>::max_exponent -
                                                                 std::numeric_limits<T>::digits - 1)
                                 : largest;
        const double d = j.toDouble();
        if (!j.isDouble() || !(std::fabs(d) <= limit))
            return c.fail(QStringLiteral("expected a number of this property's range"));
        v = std::fabs(d) > largest ? std::copysign(std::numeric_limits<T>::max(), T(d > 0 ? 1 : -1))
                                   : T(d);
        return true;
    }
};

template <>
struct Codec<OXMenum>
{
    static QJsonValue write(OXMenum v, WriteContext&)
    {
        return v.isValid() ? QJsonValue(OXMJsonPropertyCodec::enumName(v)) : QJsonValue();
    }
    static bool read(const QJsonValue& j, OXMenum& v, ReadContext& c)
    {
        if (j.isNull() || j.isUndefined()) {
            v = OXMenum();
            return true;
        }
        v = OXMJsonPropertyCodec::enumFromName(j.toString());
        if (!v.isValid())
            return c.fail(j.isString() ? QStringLiteral("unknown value \"%1\"").arg(j.toString())
                                       : QStringLiteral("expected a value \"Namespace::Name\""));
        return true;
    }
};

template <>
struct Codec<const char*>
{
    static QJsonValue write(const char* v, WriteContext&)
    {
        return v ? QJsonValue(QString::fromLocal8Bit(v)) : QJsonValue();
    }
    static bool read(const QJsonValue& j, const char*& v, ReadContext& c)
    {
        if (j.isNull()) {
            v = nullptr;
            return true;
        }
        if (!j.isString())
            return c.fail(QStringLiteral("expected a text"));
        c.strings.push_back(j.toString().toLocal8Bit());
        v = c.strings.back().constData();
        return true;
    }
};

template <>
struct Codec<OXMTypeInfo>
{
    static QJsonValue write(const OXMTypeInfo& v, WriteContext& c)
    {
        return Codec<OXMenum>::write(v.getID(), c);
    }
    static bool read(const QJsonValue& j, OXMTypeInfo& v, ReadContext& c)
    {
        OXMenum id;
        if (!Codec<OXMenum>::read(j, id, c))
            return false;
        v = id.isValid() ? OXMTypeInfo(id) : OXMTypeInfo();
        if (id.isValid() && !v.isValid())
            return c.fail(QStringLiteral("\"%1\" is no data type").arg(j.toString()));
        return true;
    }
};

template <>
struct Codec<OXMObjectLink>
{
    static QJsonValue write(const OXMObjectLink& v, WriteContext& c)
    {
        return c.links.writeLink(v, c.at);
    }
    static bool read(const QJsonValue& j, OXMObjectLink& v, ReadContext& c)
    {
        return c.links.readLink(j, c.at, v, c.error);
    }
};

// --- composites: fixed arrays of components --------------------------------------------------

// Reads the n items of a JSON array; item(i, json) decodes one.
template <typename F>
bool readItems(const QJsonValue& j, int n, ReadContext& c, F item)
{
    const QJsonArray a = j.toArray();
    if (!j.isArray() || (n >= 0 && a.size() != n))
        return c.fail(n >= 0 ? QStringLiteral("expected an array of %1 items").arg(n)
                             : QStringLiteral("expected an array"));
    for (int i = 0; i < a.size(); ++i) {
        if (!item(i, a.at(i)))
            return false;
    }
    return true;
}

// Types whose components are reached by index: OXMVector2, OXMVector3.
template <typename V, typename T, int N>
struct IndexedCodec
{
    static QJsonValue write(const V& v, WriteContext& c)
    {
        QJsonArray a;
        for (int i = 0; i < N; ++i)
            a.append(Codec<T>::write(v[i], c));
        return a;
    }
    static bool read(const QJsonValue& j, V& v, ReadContext& c)
    {
        return readItems(j, N, c,
                         [&](int i, const QJsonValue& x) { return Codec<T>::read(x, v[i], c); });
    }
};

template <typename T>
struct Codec<OXMVector2<T>> : IndexedCodec<OXMVector2<T>, T, 2>
{
};
template <typename T>
struct Codec<OXMVector3<T>> : IndexedCodec<OXMVector3<T>, T, 3>
{
};

// Types of named members: the members' pointers in their order.
template <typename V, typename T, T V::*... Members>
struct MemberCodec
{
    static QJsonValue write(const V& v, WriteContext& c)
    {
        return QJsonArray{Codec<T>::write(v.*Members, c)...};
    }
    static bool read(const QJsonValue& j, V& v, ReadContext& c)
    {
        T* members[] = {&(v.*Members)...};
        return readItems(j, int(sizeof...(Members)), c, [&](int i, const QJsonValue& x) {
            return Codec<T>::read(x, *members[i], c);
        });
    }
};

template <>
struct Codec<OXMRGBf> : MemberCodec<OXMRGBf, float, &OXMRGBf::r, &OXMRGBf::g, &OXMRGBf::b>
{
};
template <>
struct Codec<OXMRGB8> : MemberCodec<OXMRGB8, unsigned char, &OXMRGB8::r, &OXMRGB8::g, &OXMRGB8::b>
{
};
template <typename T>
struct Codec<OXMRGBA<T>>
    : MemberCodec<OXMRGBA<T>, T, &OXMRGBA<T>::r, &OXMRGBA<T>::g, &OXMRGBA<T>::b, &OXMRGBA<T>::a>
{
};
template <>
struct Codec<OXMInterval> : MemberCodec<OXMInterval, int, &OXMInterval::from, &OXMInterval::to>
{
};

template <typename A, typename B>
struct Codec<std::pair<A, B>>
{
    static QJsonValue write(const std::pair<A, B>& v, WriteContext& c)
    {
        return QJsonArray{Codec<A>::write(v.first, c), Codec<B>::write(v.second, c)};
    }
    static bool read(const QJsonValue& j, std::pair<A, B>& v, ReadContext& c)
    {
        return readItems(j, 2, c, [&](int i, const QJsonValue& x) {
            return i == 0 ? Codec<A>::read(x, v.first, c) : Codec<B>::read(x, v.second, c);
        });
    }
};

template <typename T>
struct Codec<std::vector<T>>
{
    static QJsonValue write(const std::vector<T>& v, WriteContext& c)
    {
        QJsonArray a;
        for (const T& x : v)
            a.append(Codec<T>::write(x, c));
        return a;
    }
    static bool read(const QJsonValue& j, std::vector<T>& v, ReadContext& c)
    {
        v.assign(std::size_t(j.toArray().size()), T());
        return readItems(j, -1, c, [&](int i, const QJsonValue& x) {
            return Codec<T>::read(x, v[std::size_t(i)], c);
        });
    }
};

// A path: its elements as links of the document, each with the list property that holds it
// in the previous element's object.
template <>
struct Codec<OXMObjectPath>
{
    static QJsonValue write(const OXMObjectPath& v, WriteContext& c)
    {
        QJsonArray a;
        for (int i = 0; i < v.getPathDepth(); ++i) {
            const OXMObjectLink element = v.getPathElement(i);
            QJsonObject o = c.links.writeLink(element, c.at).toObject();
            if (element.getPropertyID().isValid())
                o.insert(QStringLiteral("property"), enumName(element.getPropertyID()));
            a.append(o);
        }
        return a;
    }
    static bool read(const QJsonValue& j, OXMObjectPath& v, ReadContext& c)
    {
        std::vector<OXMObjectLink> links;
        const bool ok = readItems(j, -1, c, [&](int, const QJsonValue& x) {
            OXMObjectLink link;
            OXMenum property;
            // An element whose object the document does not hold keeps only its property.
            const QJsonObject o = x.toObject();
            const bool linked =
                o.contains(QStringLiteral("ref")) || o.contains(QStringLiteral("class"));
            if (!c.links.readLink(linked ? x : QJsonValue(), c.at, link, c.error) ||
                !Codec<OXMenum>::read(o.value(QStringLiteral("property")), property, c))
                return false;
            link.setOwner(links.empty() ? nullptr : links.back().getLink());
            link.setPropertyID(property);
            links.push_back(link);
            return true;
        });
        v = OXMObjectPath(links);
        return ok;
    }

private:
    static QString enumName(OXMenum e) { return OXMJsonPropertyCodec::enumName(e); }
};

// --- properties ------------------------------------------------------------------------------

template <typename... Ts>
struct TypeList
{
};

// Every value type of the host's properties.
using PropertyTypes =
    TypeList<bool, int, float, double, OXMenum, const char*, OXMTypeInfo, OXMObjectLink,
             OXMObjectPath, OXMVector2<int>, OXMVector2<float>, OXMVector2<double>, OXMVector3<int>,
             OXMVector3<float>, OXMVector3<double>, std::pair<int, int>, std::pair<float, float>,
             std::pair<double, double>, std::pair<OXMVector3<float>, OXMVector3<float>>,
             std::vector<int>, std::vector<float>, std::vector<double>, OXMRGBf, OXMRGB8,
             OXMRGBA<unsigned char>, OXMRGBA<float>, OXMInterval>;

// Array properties exist for every type but bool.
template <typename T>
constexpr bool HasArrays = !std::is_same<T, bool>::value;

template <typename T>
QJsonValue writeArray(const OXMValueArrayPropertyIF<T>& array, WriteContext& c)
{
    int first = 0;
    int last = -1;
    array.getArrayIndexRange(first, last);
    std::vector<T> items(std::size_t(last >= first ? last - first + 1 : 0));
    if (!items.empty())
        array.getArrayItems(first, last, items.data());
    QJsonArray json;
    const QString at = c.at;
    for (std::size_t i = 0; i < items.size(); ++i) {
        c.at = at + QLatin1Char('/') + QString::number(i);
        json.append(Codec<T>::write(items[i], c));
    }
    c.at = at;
    if (first == 0)
        return json;
    return QJsonObject{{QStringLiteral("first"), first}, {QStringLiteral("items"), json}};
}

template <typename T>
bool readArray(OXMValueArrayPropertyIF<T>& array, const QJsonValue& j, ReadContext& c)
{
    int first = 0;
    QJsonValue items = j;
    if (j.isObject()) {
        QJsonObject o = j.toObject();
        if (!Codec<int>::read(o.value(QStringLiteral("first")), first, c))
            return false;
        items = o.value(QStringLiteral("items"));
    }
    std::vector<T> values(std::size_t(items.toArray().size()));
    const QString at = c.at;
    const bool ok = readItems(items, -1, c, [&](int i, const QJsonValue& x) {
        c.at = at + QLatin1Char('/') + QString::number(i);
        return Codec<T>::read(x, values[std::size_t(i)], c);
    });
    c.at = at;
    if (!ok)
        return false;
    const int last = first + int(values.size()) - 1;
    if (!array.initArray(first, last, values.empty() ? nullptr : values.data()))
        return c.fail(QStringLiteral("the property refuses these items"));
    return true;
}

template <typename T>
bool writeAs(const OXMProperty& p, WriteContext& c, QJsonValue& json)
{
    if (auto* single = OXMSingleValuePropertyIF<T>::getInterface(&p)) {
        json = Codec<T>::write(single->getValue(), c);
        return true;
    }
    if constexpr (HasArrays<T>) {
        if (auto* array = OXMValueArrayPropertyIF<T>::getInterface(&p)) {
            json = writeArray(*array, c);
            return true;
        }
    }
    return false;
}

// Whether p is of type T; if so, ok says whether reading succeeded.
template <typename T>
bool readAs(OXMProperty& p, const QJsonValue& json, ReadContext& c, bool& ok)
{
    if (auto* single = OXMSingleValuePropertyIF<T>::getInterface(&p)) {
        T value{};
        ok = Codec<T>::read(json, value, c);
        if (ok && !single->setValue(value))
            ok = c.fail(QStringLiteral("the property refuses this value"));
        return true;
    }
    if constexpr (HasArrays<T>) {
        if (auto* array = OXMValueArrayPropertyIF<T>::getInterface(&p)) {
            ok = readArray(*array, json, c);
            return true;
        }
    }
    return false;
}

template <typename... Ts>
bool writeAny(TypeList<Ts...>, const OXMProperty& p, WriteContext& c, QJsonValue& json)
{
    return (writeAs<Ts>(p, c, json) || ...);
}

template <typename... Ts>
bool readAny(TypeList<Ts...>, OXMProperty& p, const QJsonValue& json, ReadContext& c, bool& ok)
{
    return (readAs<Ts>(p, json, c, ok) || ...);
}

QString unknownType(const QString& at)
{
    return QStringLiteral("%1: the property has a type that documents do not hold")
        .arg(at.isEmpty() ? QStringLiteral("/") : at);
}

} // namespace

bool OXMJsonPropertyCodec::write(const OXMProperty& property, LinkWriter& links, const QString& at,
                                 QJsonValue& json, QString& error)
{
    WriteContext c{links, at};
    if (writeAny(PropertyTypes(), property, c, json))
        return true;
    error = unknownType(at);
    return false;
}

bool OXMJsonPropertyCodec::read(OXMProperty& property, const QJsonValue& json, LinkReader& links,
                                const QString& at, QString& error)
{
    ReadContext c{links, at, error, {}};
    const bool wasLocked = property.isLocked();
    property.unlock();
    bool ok = false;
    const bool known = readAny(PropertyTypes(), property, json, c, ok);
    property.lock(wasLocked);
    if (!known)
        error = unknownType(at);
    return known && ok;
}

QString OXMJsonPropertyCodec::enumName(OXMenum value)
{
    return QString::fromUtf8(value.getNamespace()) + QStringLiteral("::") +
           QString::fromUtf8(value.getName());
}

OXMenum OXMJsonPropertyCodec::enumFromName(const QString& name)
{
    // Namespaces have no "::"; names may ("OXMRaytracing::Volume::RenderPlugin").
    const int split = name.indexOf(QLatin1String("::"));
    if (split <= 0)
        return OXMenum();
    const QByteArray nameSpace = name.left(split).toUtf8();
    const QByteArray local = name.mid(split + 2).toUtf8();
    return local.isEmpty() ? OXMenum() : OXMenum::find(local.constData(), nameSpace.constData());
}

QString OXMJsonPropertyCodec::pointerToken(const QString& key)
{
    QString token = key;
    token.replace(QLatin1Char('~'), QLatin1String("~0"));
    token.replace(QLatin1Char('/'), QLatin1String("~1"));
    return token;
}
