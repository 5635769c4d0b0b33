#pragma once

#include <QByteArray>

// How a property keeps values of the interface type T. Strings are read and written as
// const char* and kept as QByteArray (a read pointer is valid until the next write).
template <typename T>
struct OXMValueTraits
{
    using Storage = T;
    static const Storage& toStorage(const T& v) { return v; }
    static const T& fromStorage(const Storage& s) { return s; }
};

template <>
struct OXMValueTraits<const char*>
{
    using Storage = QByteArray;
    static QByteArray toStorage(const char* v) { return v ? QByteArray(v) : QByteArray(); }
    static const char* fromStorage(const QByteArray& s)
    {
        return s.isNull() ? nullptr : s.constData();
    }
};
