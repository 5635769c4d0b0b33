#include "OXMenum.h"

#include "OXMEnumRegistry.h"

#include <QDebug>

#include <ostream>

const char* OXMenum::getName() const
{
    return OXMEnumRegistry::instance().name(mValue);
}

const char* OXMenum::getNamespace() const
{
    return OXMEnumRegistry::instance().nameSpace(mValue);
}

QString OXMenum::toString() const
{
    if (mValue == 0)
        return QStringLiteral("<none>");
    const char* n = getName();
    if (!*n)
        return QStringLiteral("<invalid %1>").arg(mValue);
    return QString::fromUtf8(getNamespace()) + QStringLiteral("::") + QString::fromUtf8(n);
}

OXMenum OXMenum::find(const char* name, const char* nameSpace)
{
    return OXMEnumRegistry::instance().find(name, nameSpace);
}

std::ostream& operator<<(std::ostream& os, OXMenum value)
{
    return os << value.toString().toStdString();
}

QDebug operator<<(QDebug debug, OXMenum value)
{
    QDebugStateSaver saver(debug);
    debug.noquote() << value.toString();
    return debug;
}

void PrintTo(OXMenum value, std::ostream* os)
{
    *os << value;
}
