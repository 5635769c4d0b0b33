#include "OXWJsonReader.h"

#include <QCoreApplication>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using Type = OXWJsonReader::Type;
using Value = OXWJsonReader::Value;

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWJsonReader", text);
}

bool isDigit(char c)
{
    return unsigned(c - '0') < 10;
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    const char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

char32_t hex4(const char* p)
{
    char32_t code = 0;
    for (int k = 0; k < 4; ++k)
        code = code * 16 + char32_t(hexDigit(p[k]));
    return code;
}

bool isSurrogate(char32_t code, char32_t first)
{
    return code >= first && code < first + 0x400;
}

void appendUtf8(QByteArray& out, char32_t code)
{
    if (code < 0x80) {
        out += char(code);
        return;
    }
    const int tail = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    const unsigned char lead[] = {0, 0xC0, 0xE0, 0xF0};
    out += char(lead[tail] | (code >> (6 * tail)));
    for (int k = tail - 1; k >= 0; --k)
        out += char(0x80 | ((code >> (6 * k)) & 0x3F));
}

char unescaped(char c)
{
    switch (c) {
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c; // '"', '\\', '/'
    }
}

// The magnitude of a number (no sign) beyond double's range: infinite when it is large, zero
// when it is small.
double beyondRange(const char* begin, const char* end)
{
    constexpr long long Far = 1LL << 40; // further than any exponent a double has
    const char* e = std::find_if(begin, end, [](char c) { return c == 'e' || c == 'E'; });
    long long exponent = 0;
    if (e != end && std::from_chars(e + 1 + (e[1] == '+'), end, exponent).ec != std::errc())
        exponent = e[1] == '-' ? -Far : Far;
    exponent = std::clamp(exponent, -Far, Far);
    const char* point = std::find(begin, e, '.');
    const char* first = std::find_if(begin, e, [](char c) { return c >= '1' && c <= '9'; });
    // The power of ten of the first significant digit.
    const long long lead = first < point ? point - first - 1 : point - first;
    return first != e && lead + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

// The digits of a number as an integer and a power of ten.
struct Decimal
{
    std::uint64_t mantissa = 0;
    int digits = 0;
    int scale = 0;

    // The value when the integer and the power of ten are exact doubles: one rounding, the
    // same as std::from_chars (Clinger's fast path).
    bool exact(double& value) const
    {
        static constexpr double Powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                            1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
        if (digits > 19 || mantissa > (std::uint64_t(1) << 53) || scale < -22 || scale > 22)
            return false;
        value = scale < 0 ? double(mantissa) / Powers[-scale] : double(mantissa) * Powers[scale];
        return true;
    }
};

// Reads the digits from p on into d (after the decimal point when fraction); returns where they
// end.
const char* readDigits(const char* p, const char* end, bool fraction, Decimal& d)
{
    const char* from = p;
    std::uint64_t mantissa = d.mantissa;
    for (; p < end && isDigit(*p); ++p)
        mantissa = mantissa * 10 + std::uint64_t(*p - '0'); // not used once it overflows
    d.mantissa = mantissa;
    d.digits += int(p - from);
    d.scale -= fraction ? int(p - from) : 0;
    return p;
}

const char* readExponent(const char* p, const char* end, bool negative, Decimal& d)
{
    int exponent = 0;
    for (; p < end && isDigit(*p); ++p)
        exponent = std::min(exponent * 10 + (*p - '0'), 1 << 20); // far beyond any double
    d.scale += negative ? -exponent : exponent;
    return p;
}

// The magnitude of the number from begin (no sign) to end, rounded as std::from_chars does;
// beyond double's range infinite or zero.
bool readDouble(const char* begin, const char* end, double& value)
{
    const std::from_chars_result read = std::from_chars(begin, end, value);
    if (read.ec == std::errc::result_out_of_range)
        value = beyondRange(begin, end);
    return read.ptr == end && (read.ec == std::errc() || read.ec == std::errc::result_out_of_range);
}

// Reads a document into the value list (see OXWJsonReader); the first failure is kept with the
// place where it was met.
class Parser
{
public:
    Parser(const QByteArray& bytes, std::vector<Value>& values, std::vector<double>& numbers)
        : mBegin(bytes.constData()), mAt(mBegin), mEnd(mBegin + bytes.size()), mValues(values),
          mNumbers(numbers)
    {
    }

    bool document(QString& error);

private:
    bool value(int depth);
    bool container(int depth, char close);
    bool numbers(std::size_t array, int depth);
    bool items(std::size_t container, int depth, char close, int size);
    // The comma after an item, or the closing bracket; false when it is neither.
    bool separator(char close);
    bool member(int depth);
    bool string();
    bool escape();
    bool number(double& value);
    bool literal(const char* word, Type type, bool flag);
    // Skips white space and comments; false when a comment is not closed.
    bool skipSpace()
    {
        while (mAt < mEnd && (*mAt == ' ' || *mAt == '\n' || *mAt == '\r' || *mAt == '\t'))
            ++mAt;
        return mAt == mEnd || *mAt != '/' || skipComments();
    }
    bool skipComments();
    bool fail(const char* reason);
    // A new value at the end of the list (written in place: a copy would cost a stall).
    Value& add(Type type, bool flag = false);

    const char* mBegin;
    const char* mAt;
    const char* mEnd;
    std::vector<Value>& mValues;
    std::vector<double>& mNumbers;
    const char* mReason = nullptr;
};

bool Parser::document(QString& error)
{
    if (mEnd - mAt >= 3 && std::memcmp(mAt, "\xEF\xBB\xBF", 3) == 0)
        mAt += 3; // a UTF-8 byte order mark
    if (value(0))
        return true; // what follows the value is not read, as JsonCpp does
    const int line = int(std::count(mBegin, mAt, '\n')) + 1;
    const char* lineStart =
        std::find(std::make_reverse_iterator(mAt), std::make_reverse_iterator(mBegin), '\n').base();
    error = tr("%1 at line %2, column %3").arg(tr(mReason)).arg(line).arg(mAt - lineStart + 1);
    return false;
}

bool Parser::value(int depth)
{
    if (!skipSpace())
        return false;
    if (mAt == mEnd)
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "the text ends where a value was expected"));
    if (isDigit(*mAt) || *mAt == '-') {
        double read = 0.0;
        if (!number(read))
            return false;
        add(Type::Number).number = read;
        return true;
    }
    switch (*mAt) {
    case '{':
        return container(depth + 1, '}');
    case '[':
        return container(depth + 1, ']');
    case '"':
        return string();
    case 't':
        return literal("true", Type::Boolean, true);
    case 'f':
        return literal("false", Type::Boolean, false);
    case 'n':
        return literal("null", Type::Null, false);
    default:
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a value was expected"));
    }
}

bool Parser::container(int depth, char close)
{
    if (depth > OXWJsonReader::MaxDepth)
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "the values are nested too deeply"));
    const std::size_t index = mValues.size();
    add(close == '}' ? Type::Object : Type::Array);
    ++mAt;
    return close == '}' ? items(index, depth, close, 0) : numbers(index, depth);
}

// An array read as numbers only into the number list. At the first item that is no number, the
// numbers read so far become values of their own, and the rest is read item by item.
bool Parser::numbers(std::size_t array, int depth)
{
    const std::size_t first = mNumbers.size();
    for (;;) {
        if (!skipSpace())
            return false;
        if (mAt == mEnd || !(isDigit(*mAt) || *mAt == '-'))
            break;
        double read = 0.0;
        if (!number(read) || !skipSpace() || !separator(']'))
            return false;
        mNumbers.push_back(read);
    }
    const int size = int(mNumbers.size() - first);
    if (mAt < mEnd && *mAt == ']') {
        ++mAt;
        mValues[array].flag = true;
        mValues[array].span = {size, int(first)};
        return true;
    }
    for (std::size_t k = first; k < mNumbers.size(); ++k)
        add(Type::Number).number = mNumbers[k];
    mNumbers.resize(first);
    return items(array, depth, ']', size);
}

bool Parser::items(std::size_t container, int depth, char close, int size)
{
    const bool object = close == '}';
    for (;;) {
        if (!skipSpace())
            return false;
        if (mAt == mEnd)
            return fail(object ? QT_TRANSLATE_NOOP("OXWJsonReader", "an object is not closed")
                               : QT_TRANSLATE_NOOP("OXWJsonReader", "an array is not closed"));
        if (*mAt == close)
            break;
        if (!(object ? member(depth) : value(depth)) || !skipSpace() || !separator(close))
            return false;
        ++size;
    }
    ++mAt;
    mValues[container].span = {size, int(mValues.size())};
    return true;
}

bool Parser::separator(char close)
{
    if (mAt < mEnd && *mAt == ',')
        ++mAt; // also before the closing bracket
    else if (mAt < mEnd && *mAt != close)
        return fail(close == '}' ? QT_TRANSLATE_NOOP("OXWJsonReader", "',' or '}' was expected")
                                 : QT_TRANSLATE_NOOP("OXWJsonReader", "',' or ']' was expected"));
    return true;
}

bool Parser::member(int depth)
{
    if (*mAt != '"')
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a member name in quotes was expected"));
    if (!string() || !skipSpace())
        return false;
    if (mAt == mEnd || *mAt != ':')
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "':' was expected after a member name"));
    ++mAt;
    return value(depth);
}

bool Parser::string()
{
    const char* start = ++mAt;
    bool escaped = false;
    while (mAt < mEnd && *mAt != '"') {
        if (*mAt != '\\')
            ++mAt;
        else if (!escape())
            return false;
        else
            escaped = true;
    }
    if (mAt == mEnd) {
        mAt = start - 1;
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a string is not closed"));
    }
    add(Type::String, escaped).span = {int(start - mBegin), int(mAt - start)};
    ++mAt;
    return true;
}

bool Parser::escape()
{
    const char c = mAt + 1 < mEnd ? mAt[1] : '\0';
    if (c == 'u') {
        for (int k = 2; k < 6; ++k) {
            if (mAt + k >= mEnd || hexDigit(mAt[k]) < 0)
                return fail(QT_TRANSLATE_NOOP("OXWJsonReader",
                                              "\\u is not followed by four hexadecimal digits"));
        }
        mAt += 6;
        return true;
    }
    if (c == '\0' || !std::strchr("\"\\/bfnrt", c))
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a backslash starts no known escape"));
    mAt += 2;
    return true;
}

// Inlined where it is called: in arrays of numbers the call cost a tenth of the reading.
Q_ALWAYS_INLINE bool Parser::number(double& value)
{
    const bool negative = *mAt == '-';
    Decimal d;
    const char* p = readDigits(mAt + negative, mEnd, false, d);
    if (p < mEnd && *p == '.')
        p = readDigits(p + 1, mEnd, true, d);
    if (d.digits == 0)
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a value was expected"));
    if (p < mEnd && (*p == 'e' || *p == 'E')) {
        const bool sign = p + 1 < mEnd && (p[1] == '+' || p[1] == '-');
        const char* digits = p + 1 + sign;
        p = readExponent(digits, mEnd, sign && p[1] == '-', d);
        if (p == digits) {
            mAt = p;
            return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a number's exponent has no digits"));
        }
    }
    if (!d.exact(value) && !readDouble(mAt + negative, p, value))
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a number can't be read"));
    value = negative ? -value : value;
    mAt = p;
    return true;
}

bool Parser::literal(const char* word, Type type, bool flag)
{
    const std::size_t length = std::strlen(word);
    if (std::size_t(mEnd - mAt) < length || std::memcmp(mAt, word, length) != 0)
        return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a value was expected"));
    mAt += length;
    add(type, flag);
    return true;
}

bool Parser::skipComments()
{
    static constexpr char CommentEnd[] = "*/";
    const char* p = mAt;
    for (;;) {
        while (p < mEnd && (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t'))
            ++p;
        if (mEnd - p < 2 || *p != '/' || (p[1] != '/' && p[1] != '*'))
            break;
        const char* close = p[1] == '/' ? std::find(p, mEnd, '\n')
                                        : std::search(p + 2, mEnd, CommentEnd, CommentEnd + 2);
        if (close == mEnd && p[1] == '*') {
            mAt = p;
            return fail(QT_TRANSLATE_NOOP("OXWJsonReader", "a comment is not closed"));
        }
        p = p[1] == '/' ? close : close + 2;
    }
    mAt = p;
    return true;
}

bool Parser::fail(const char* reason)
{
    mReason = reason;
    return false;
}

Value& Parser::add(Type type, bool flag)
{
    return mValues.emplace_back(type, flag);
}

} // namespace

bool OXWJsonReader::read(const QByteArray& bytes, QString& error)
{
    mBytes = bytes;
    mValues.clear();
    mNumbers.clear();
    // Room for a value every eight bytes (a short number and its comma), up to a bound;
    // documents that hold more grow the list as they go.
    mNumbers.reserve(std::size_t(std::min(bytes.size() / 8 + 16, 1 << 20)));
    mValues.reserve(std::size_t(std::min(bytes.size() / 64 + 16, 1 << 20)));
    if (Parser(mBytes, mValues, mNumbers).document(error))
        return true;
    mValues.clear();
    mNumbers.clear();
    return false;
}

int OXWJsonReader::member(int object, QLatin1String key) const
{
    if (!isValue(object) || at(object).type != Type::Object)
        return -1;
    int found = -1;
    for (int m = 0, k = object + 1; m < size(object); ++m, k = next(k + 1)) {
        const Span name = at(k).span;
        const bool same = at(k).flag ? utf8(k) == QByteArray(key.data(), key.size())
                                     : name.second == key.size() &&
                                           std::memcmp(mBytes.constData() + name.first, key.data(),
                                                       std::size_t(name.second)) == 0;
        if (same)
            found = k + 1; // the last one counts
    }
    return found;
}

QString OXWJsonReader::text(int index) const
{
    return QString::fromUtf8(utf8(index));
}

QByteArray OXWJsonReader::utf8(int index) const
{
    if (!isValue(index) || at(index).type != Type::String)
        return QByteArray();
    const Value& v = at(index);
    const char* p = mBytes.constData() + v.span.first;
    const char* end = p + v.span.second;
    if (!v.flag)
        return QByteArray(p, v.span.second);
    QByteArray out;
    out.reserve(v.span.second);
    while (p < end) {
        if (*p != '\\') {
            out += *p++;
            continue;
        }
        const char c = p[1];
        p += 2;
        if (c != 'u') {
            out += unescaped(c);
            continue;
        }
        char32_t code = hex4(p);
        p += 4;
        if (isSurrogate(code, 0xD800) && end - p >= 6 && p[0] == '\\' && p[1] == 'u' &&
            isSurrogate(hex4(p + 2), 0xDC00)) {
            code = 0x10000 + ((code - 0xD800) << 10) + (hex4(p + 2) - 0xDC00);
            p += 6;
        }
        appendUtf8(out, isSurrogate(code, 0xD800) || isSurrogate(code, 0xDC00) ? 0xFFFD : code);
    }
    return out;
}
