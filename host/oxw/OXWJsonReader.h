#pragma once

#include <QByteArray>
#include <QLatin1String>
#include <QString>

#include <vector>

// A JSON reader as lenient as JsonCpp, the reader of ParaView and VTK: "//" and "/* */" comments
// stand wherever white space may, a comma may follow the last item of an array or object, a
// UTF-8 byte order mark and whatever follows the document's value are skipped, and strings may
// hold raw control characters and bytes that are no UTF-8 (read as U+FFFD, like a lone
// surrogate). Numbers are JSON's (leading zeros allowed), rounded to the nearest double as
// std::from_chars rounds them (most without it: Clinger's exact case); those beyond double's
// range read as infinite or zero. Values nested deeper than MaxDepth are refused.
//
// The whole document is read at once into a flat list of values in document order: a container
// is followed by its items, an object's items are its keys and values in turns, and every value
// knows where the value after it (and all it holds) starts. An array of numbers only keeps them
// in a list of their own instead (numbers()), eight bytes each. Walking the lists allocates
// nothing; strings are decoded only when asked for.
class OXWJsonReader
{
public:
    static constexpr int MaxDepth = 1000;

    enum class Type : unsigned char
    {
        Null,
        Boolean,
        Number,
        String,
        Array,
        Object
    };
    struct Span
    {
        int first;
        int second;
    };
    struct Value
    {
        explicit Value(Type type = Type::Null, bool flag = false) : type(type), flag(flag) {}

        Type type = Type::Null;
        // Boolean: its value; String: it holds escapes; Array: it holds numbers only.
        bool flag = false;
        union {
            double number = 0.0; // Number
            // String: where its bytes between the quotes start and how many they are; Array,
            // Object: how many items (members) it has and the index after all it holds; Array
            // of numbers only: how many and where they start in the number list.
            Span span;
        };
    };

    // False, with the reason and where it was met ("... at line 3, column 14"), when the bytes
    // hold no JSON value.
    bool read(const QByteArray& bytes, QString& error);

    int count() const { return int(mValues.size()); }
    const Value& at(int index) const { return mValues[std::size_t(index)]; }
    // The type of the value at index; Null also for an index that is none (-1).
    Type type(int index) const { return isValue(index) ? at(index).type : Type::Null; }
    // The index of the value after this one and everything it holds.
    int next(int index) const
    {
        return isContainer(index) && !isNumbers(index) ? at(index).span.second : index + 1;
    }
    // The items of an array, the members of an object; 0 for other values.
    int size(int index) const { return isContainer(index) ? at(index).span.first : 0; }
    // The items of an array of numbers only (size() of them); null for other values (and -1),
    // whose items follow them in the list of values.
    const double* numbers(int index) const
    {
        return isNumbers(index) ? mNumbers.data() + at(index).span.second : nullptr;
    }
    // The value of the object's member key (its last one); -1 when index is no object or it
    // has no such member.
    int member(int object, QLatin1String key) const;
    // The text of a string (empty for other values).
    QString text(int index) const;
    // The string's bytes as decoded UTF-8 (escapes resolved).
    QByteArray utf8(int index) const;

private:
    bool isValue(int index) const { return index >= 0 && index < count(); }
    bool isContainer(int index) const
    {
        return isValue(index) && (at(index).type == Type::Array || at(index).type == Type::Object);
    }
    bool isNumbers(int index) const
    {
        return isValue(index) && at(index).type == Type::Array && at(index).flag;
    }

    QByteArray mBytes;
    std::vector<Value> mValues;
    std::vector<double> mNumbers;
};
