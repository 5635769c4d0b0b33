#pragma once

#include "OXMHostEnumList.h"

#include <QHashFunctions>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <iosfwd>

class QDebug;

// A registered enumeration value: names properties, actions, roles, modes and result codes.
// Values are small integers handed out by the process-wide registry; the same name in the
// same namespace always yields the same value. 0 is "no value"; numbers are never reused.
class OXMenum
{
public:
    static constexpr const char* HostNamespace = "OXM";

    constexpr OXMenum() = default;
    constexpr explicit OXMenum(int value) : mValue(value) {}

    constexpr int toInt() const { return mValue; }
    constexpr bool isValid() const { return mValue > 0; }

    // The registered name ("Opacity"), or "" for a value that was never registered.
    const char* getName() const;
    // The namespace of the value ("OXM"), or "".
    const char* getNamespace() const;
    // "OXM::Opacity", "oxwclassificationtool::ShadingModel", "<none>" or "<invalid 42>".
    QString toString() const;

    // The value of a name that is registered now, or an invalid value. Without a namespace the
    // host namespace is searched first, then every other namespace.
    static OXMenum find(const char* name, const char* nameSpace = nullptr);

    constexpr bool operator==(const OXMenum& o) const { return mValue == o.mValue; }
    constexpr bool operator!=(const OXMenum& o) const { return mValue != o.mValue; }
    constexpr bool operator<(const OXMenum& o) const { return mValue < o.mValue; }

private:
    int mValue = 0;
};

std::ostream& operator<<(std::ostream& os, OXMenum value);
QDebug operator<<(QDebug debug, OXMenum value);
// Lets GoogleTest print values by name.
void PrintTo(OXMenum value, std::ostream* os);
inline uint qHash(OXMenum value, uint seed = 0)
{
    return ::qHash(value.toInt(), seed);
}

namespace std {
template <>
struct hash<OXMenum>
{
    std::size_t operator()(OXMenum v) const noexcept { return std::hash<int>()(v.toInt()); }
};
} // namespace std

namespace OXMHostEnumIds {
enum : int
{
    None = 0,
#define OXM_HOST_ENUM_ID(n) n,
    OXM_HOST_ENUM_LIST(OXM_HOST_ENUM_ID)
#undef OXM_HOST_ENUM_ID
        Count
};
} // namespace OXMHostEnumIds

// The host's own values: OXM::Opacity, OXM::NoError, ...
namespace OXM {
#define OXM_HOST_ENUM_CONST(n) inline constexpr OXMenum n{OXMHostEnumIds::n};
OXM_HOST_ENUM_LIST(OXM_HOST_ENUM_CONST)
#undef OXM_HOST_ENUM_CONST
} // namespace OXM
