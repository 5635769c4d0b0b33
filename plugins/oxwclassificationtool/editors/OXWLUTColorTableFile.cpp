#include "OXWLUTColorTableFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <numeric>

namespace {

using Handle = OXWLUTColorTableFile::Handle;
using HandleList = OXWLUTColorTableFile::HandleList;
using Table = OXWLUTColorTableFile::Table;

const char TextHeader[] = "; Color look up table\n\n";

// A text file with more entries than this, or larger than MaxFileSize, is no colour table of
// an interval (an interval never has more handles than the grey-value axis has cells): it is
// refused rather than handed to the model.
constexpr int MaxTextEntries = 1 << 20;

QString translated(const char* text)
{
    return QCoreApplication::translate("OXWLUTColorBar", text);
}

// The end of an operation on a named file: true when there is no reason against it, otherwise
// false and, when asked for, the line "<file>: <reason>" for the user's log.
bool outcome(const QString& reason, const QString& fileName, QString* refusal)
{
    if (refusal) {
        *refusal = reason.isEmpty()
                       ? QString()
                       : QDir::toNativeSeparators(fileName) + QStringLiteral(": ") + reason;
    }
    return reason.isEmpty();
}

// Opens a named file for reading unless it is no regular file or too large: the reason then.
QString openForReading(QFile& file)
{
    const QFileInfo info(file.fileName());
    if (!info.exists()) {
        return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "no such file"));
    }
    if (!info.isFile()) {
        return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "not a regular file"));
    }
    if (info.size() > OXWLUTColorTableFile::MaxFileSize) {
        return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "larger than %1 bytes"))
            .arg(OXWLUTColorTableFile::MaxFileSize);
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "cannot open: %1"))
            .arg(file.errorString());
    }
    return QString();
}

QString noCompleteTable()
{
    return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "no complete colour table"));
}

QString cannotWrite(const QFile& file)
{
    return translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "cannot write: %1"))
        .arg(file.errorString());
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Reads a decimal number at the start of [p, p + length), independent of the C locale: an
// optional sign, digits with an optional point, an optional exponent. Words such as "inf" and
// "nan" are not numbers. Returns the characters used, 0 when there is no number, and -1 when
// the number does not fit a float (it overflows or is lost below the smallest double).
int scanNumber(const char* p, int length, float& value)
{
    int start = 0;
    if (length > 0 && p[0] == '+') {
        start = 1; // std::from_chars takes "-" but not "+"
    }
    int i = start;
    if (i < length && p[i] == '-' && start == 0) {
        ++i;
    }
    if (i >= length || !(isDigit(p[i]) || (p[i] == '.' && i + 1 < length && isDigit(p[i + 1])))) {
        return 0;
    }
    double v = 0.0;
    const auto result = std::from_chars(p + start, p + length, v, std::chars_format::general);
    if (result.ptr == p + start) {
        return 0;
    }
    const int used = int(result.ptr - p);
    if (result.ec != std::errc() || !std::isfinite(v) || std::fabs(v) > double(FLT_MAX)) {
        return -1;
    }
    value = float(v);
    return used;
}

bool isFinite(const HandleList& list)
{
    return std::all_of(list.begin(), list.end(),
                       [](const Handle& h) { return std::isfinite(h.x) && std::isfinite(h.y); });
}

// A table that may be handed to an interval: entries, the same count in all three lists,
// nothing but finite numbers.
bool isUsable(const Table& table)
{
    return !table.red.empty() && table.green.size() == table.red.size() &&
           table.blue.size() == table.red.size() && isFinite(table.red) && isFinite(table.green) &&
           isFinite(table.blue);
}

unsigned char clampedByte(double v)
{
    if (!(v >= 0.0)) {
        return 0; // also NaN
    }
    return v >= 255.0 ? 255 : static_cast<unsigned char>(v);
}

// Samples one curve into the 256 entries of one colour of the palette. Each segment k of
// handles k and k + 1 writes the entries from trunc(x0 * 256) to trunc(x1 * 256), interpolating
// over steps = trunc((x1 - x0) * 256); a segment narrower than one entry (steps = 0) writes
// y0. An entry shared by two segments keeps the later segment's value; entries from 256 on
// lie outside the table.
//
// The table starts empty for every export, so a file never depends on what was exported
// before. Entries outside the span of the handles (usually the first and the last, since the
// end handles sit on the centres of the interval's end cells, not on its borders) take the
// value of the nearest end handle: the colour continues flat to the borders, as the bar shows
// it.
void sampleCurve(const HandleList& curve, char* bytes)
{
    std::array<int, OXWLUTColorTableFile::PaletteEntries> value{};
    std::array<bool, OXWLUTColorTableFile::PaletteEntries> written{};
    const double last = OXWLUTColorTableFile::PaletteEntries - 1;
    for (size_t k = 0; k + 1 < curve.size(); ++k) {
        const double x0 = curve[k].x;
        const double y0 = curve[k].y;
        const double x1 = curve[k + 1].x;
        const double y1 = curve[k + 1].y;
        if (!std::isfinite(x0) || !std::isfinite(x1)) {
            continue;
        }
        const double firstIndex = std::trunc(x0 * 256.0);
        const double lastIndex = std::trunc(x1 * 256.0);
        const double steps = std::trunc((x1 - x0) * 256.0);
        const double from = std::max(firstIndex, 0.0);
        const double to = std::min(lastIndex, last);
        if (from > to) {
            continue;
        }
        for (int j = int(from); j <= int(to); ++j) {
            const double d = j - firstIndex;
            const double y = steps != 0.0 ? y0 + (y1 - y0) * d / steps : y0;
            value[size_t(j)] = clampedByte(std::floor(y));
            written[size_t(j)] = true;
        }
    }

    const auto firstWritten = std::find(written.begin(), written.end(), true);
    const auto lastWritten = std::find(written.rbegin(), written.rend(), true);
    const int firstWrittenIndex = int(firstWritten - written.begin());
    const int lastWrittenIndex = int(written.size()) - 1 - int(lastWritten - written.rbegin());
    const int front = curve.empty() ? 0 : clampedByte(std::floor(double(curve.front().y)));
    const int back = curve.empty() ? 0 : clampedByte(std::floor(double(curve.back().y)));
    for (int j = 0; j < OXWLUTColorTableFile::PaletteEntries; ++j) {
        if (written[size_t(j)]) {
            continue;
        }
        if (firstWritten == written.end() || j < firstWrittenIndex) {
            value[size_t(j)] = front;
        } else if (j > lastWrittenIndex) {
            value[size_t(j)] = back;
        } else {
            value[size_t(j)] = value[size_t(j - 1)]; // no gap between ordered segments
        }
    }
    for (int j = 0; j < OXWLUTColorTableFile::PaletteEntries; ++j) {
        bytes[3 * j] = char(value[size_t(j)]);
    }
}

bool sameCurves(const OXWLUTIntervalInfo& interval, const HandleList (&reference)[3],
                const HandleList (&fitted)[3])
{
    for (int c = 0; c < 3; ++c) {
        const int channel = OXWLUTIntervalInfo::RedChannel + c;
        if (interval.referenceHandles(channel) != reference[c] ||
            interval.handles(channel) != fitted[c]) {
            return false;
        }
    }
    return true;
}

} // namespace

void OXWLUTColorTableFile::Table::clear()
{
    red.clear();
    green.clear();
    blue.clear();
}

// --- Names -------------------------------------------------------------------------------

QString OXWLUTColorTableFile::filter(Format format)
{
    return format == Format::Palette ? QCoreApplication::translate("OXWLUTColorBar", "*.act")
                                     : QCoreApplication::translate("OXWLUTColorBar", "*.lut");
}

OXWLUTColorTableFile::Format OXWLUTColorTableFile::formatFromFilter(const QString& selectedFilter)
{
    return selectedFilter == filter(Format::Palette) ? Format::Palette : Format::Text;
}

QString OXWLUTColorTableFile::withExtension(const QString& fileName, Format format)
{
    QString lower;
    QString upper;
    if (format == Format::Palette) {
        lower = QCoreApplication::translate("OXWLUTColorBar", ".act");
        upper = QCoreApplication::translate("OXWLUTColorBar", ".ACT");
    } else {
        lower = QCoreApplication::translate("OXWLUTColorBar", ".lut");
        upper = QCoreApplication::translate("OXWLUTColorBar", ".LUT");
    }
    if (fileName.endsWith(lower, Qt::CaseSensitive) ||
        fileName.endsWith(upper, Qt::CaseSensitive)) {
        return fileName;
    }
    return fileName + lower;
}

// --- Writing -------------------------------------------------------------------------------

bool OXWLUTColorTableFile::isWritable(const Table& table)
{
    return table.red.size() >= 2 && table.green.size() == table.red.size() &&
           table.blue.size() == table.red.size();
}

QByteArray OXWLUTColorTableFile::textContents(const Table& table)
{
    if (!isWritable(table)) {
        return QByteArray();
    }
    // Six decimals in the C locale whatever the user's locale, as "%f" would print them in C.
    auto number = [](float v) { return QByteArray::number(double(v), 'f', 6); };
    QByteArray text(TextHeader);
    for (size_t k = 0; k < table.red.size(); ++k) {
        text += number(table.red[k].x);
        text += ' ';
        text += number(table.red[k].y);
        text += ' ';
        text += number(table.green[k].y);
        text += ' ';
        text += number(table.blue[k].y);
        text += '\n';
    }
    return text;
}

QByteArray OXWLUTColorTableFile::paletteContents(const Table& table)
{
    if (!isWritable(table)) {
        return QByteArray();
    }
    QByteArray bytes(PaletteSize, '\0');
    sampleCurve(table.red, bytes.data());
    sampleCurve(table.green, bytes.data() + 1);
    sampleCurve(table.blue, bytes.data() + 2);
    return bytes;
}

bool OXWLUTColorTableFile::write(QIODevice& device, const Table& table, Format format)
{
    if (!isWritable(table) || !device.isWritable()) {
        return false;
    }
    const QByteArray contents =
        format == Format::Palette ? paletteContents(table) : textContents(table);
    return device.write(contents) == contents.size();
}

bool OXWLUTColorTableFile::write(const QString& fileName, const Table& table, Format format,
                                 QString* refusal)
{
    if (!isWritable(table)) {
        return outcome(noCompleteTable(), fileName, refusal);
    }
    if (fileName.isEmpty()) {
        return outcome(translated(QT_TRANSLATE_NOOP("OXWLUTColorBar", "no file name")), fileName,
                       refusal);
    }
    QFile file(fileName);
    QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Truncate;
    if (format == Format::Text) {
        mode |= QIODevice::Text; // the platform's line ends
    }
    if (!file.open(mode)) {
        return outcome(cannotWrite(file), fileName, refusal);
    }
    const bool written = write(file, table, format);
    file.close();
    const bool ok = written && file.error() == QFileDevice::NoError;
    return outcome(ok ? QString() : cannotWrite(file), fileName, refusal);
}

OXWLUTColorTableFile::Table OXWLUTColorTableFile::tableOf(const OXWLUTIntervalInfo& interval)
{
    Table table;
    table.red = interval.handles(OXWLUTIntervalInfo::RedChannel);
    table.green = interval.handles(OXWLUTIntervalInfo::GreenChannel);
    table.blue = interval.handles(OXWLUTIntervalInfo::BlueChannel);
    return table;
}

bool OXWLUTColorTableFile::exportInterval(const OXWLUTIntervalInfo& interval,
                                          const QString& fileName, Format format, QString* refusal)
{
    // An empty name would write the bare extension into the working directory.
    const QString target = fileName.isEmpty() ? fileName : withExtension(fileName, format);
    return write(target, tableOf(interval), format, refusal);
}

// --- Reading -------------------------------------------------------------------------------

bool OXWLUTColorTableFile::parseEntry(const char* piece, int length, float entry[4])
{
    int i = 0;
    while (i < length && isBlank(piece[i])) {
        ++i;
    }
    if (i < length && piece[i] == ';') {
        return false; // a comment
    }
    for (int k = 0; k < 4; ++k) {
        if (k > 0) {
            const int separator = i;
            while (i < length && isBlank(piece[i])) {
                ++i;
            }
            if (i == separator) {
                return false;
            }
        }
        float value = 0.0f;
        const int used = scanNumber(piece + i, length - i, value);
        if (used <= 0) {
            // No number, or one that is not finite in a float: a line with "nan", "inf" or
            // 1e999 is not an entry, so that one bad line cannot poison the whole curve.
            return false;
        }
        entry[k] = value;
        i += used;
    }
    return true; // anything after the fourth number is ignored
}

bool OXWLUTColorTableFile::readText(QIODevice& device, Table& table)
{
    table.clear();
    if (!device.isReadable()) {
        return false;
    }
    // Pieces of at most MaxPieceLength characters: readLine stops after a line feed or when
    // the buffer (with its terminating zero) is full; the rest of a longer line comes as the
    // next piece and is judged on its own. A carriage return before the line feed is a
    // trailing character like any other, so LF and CR LF files read alike.
    char piece[MaxPieceLength + 1];
    qint64 total = 0;
    qint64 length = 0;
    while ((length = device.readLine(piece, sizeof piece)) > 0) {
        total += length;
        if (total > MaxFileSize) {
            table.clear();
            return false;
        }
        float entry[4];
        if (!parseEntry(piece, int(length), entry)) {
            continue;
        }
        if (int(table.red.size()) >= MaxTextEntries) {
            table.clear();
            return false;
        }
        table.red.emplace_back(entry[0], entry[1]);
        table.green.emplace_back(entry[0], entry[2]);
        table.blue.emplace_back(entry[0], entry[3]);
    }
    if (length < 0 && !device.atEnd()) {
        table.clear(); // a read error: the table is incomplete
    }
    return !table.isEmpty();
}

bool OXWLUTColorTableFile::readText(const QString& fileName, Table& table)
{
    return read(fileName, Format::Text, table);
}

bool OXWLUTColorTableFile::readPalette(QIODevice& device, Table& table)
{
    table.clear();
    if (!device.isReadable()) {
        return false;
    }
    // Exactly the first 768 bytes: fewer is no palette, anything after them is not looked at
    // (a longer file still gives its first 256 entries).
    QByteArray bytes;
    while (bytes.size() < PaletteSize) {
        const QByteArray chunk = device.read(PaletteSize - bytes.size());
        if (chunk.isEmpty()) {
            break;
        }
        bytes += chunk;
    }
    if (bytes.size() < PaletteSize) {
        return false;
    }
    table.red.reserve(PaletteEntries);
    table.green.reserve(PaletteEntries);
    table.blue.reserve(PaletteEntries);
    // Entry i stands for the local position i / 256. Positions in local units, as in the text
    // format, give the column width of the import's fit the same meaning for both formats: the
    // 256 entries spread over the interval with half a column to spare at each end (with the
    // bare indices 0 to 255 that half column would shrink to 1/256 of itself).
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    for (int i = 0; i < PaletteEntries; ++i) {
        const float x = float(i) / float(PaletteEntries);
        table.red.emplace_back(x, float(data[3 * i]));
        table.green.emplace_back(x, float(data[3 * i + 1]));
        table.blue.emplace_back(x, float(data[3 * i + 2]));
    }
    return true;
}

bool OXWLUTColorTableFile::readPalette(const QString& fileName, Table& table)
{
    return read(fileName, Format::Palette, table);
}

bool OXWLUTColorTableFile::read(QIODevice& device, Format format, Table& table)
{
    return format == Format::Palette ? readPalette(device, table) : readText(device, table);
}

bool OXWLUTColorTableFile::read(const QString& fileName, Format format, Table& table,
                                QString* refusal)
{
    table.clear();
    QFile file(fileName);
    QString reason = openForReading(file);
    if (reason.isEmpty() && !read(file, format, table)) {
        reason = noCompleteTable();
    }
    return outcome(reason, fileName, refusal);
}

// --- Import --------------------------------------------------------------------------------

float OXWLUTColorTableFile::columnWidth(const OXWLUTIntervalInfo& interval, float column0Position,
                                        float column1Position)
{
    return interval.localFromGlobal(column1Position) - interval.localFromGlobal(column0Position);
}

void OXWLUTColorTableFile::sortByPosition(Table& table)
{
    if (!isUsable(table)) {
        return;
    }
    std::vector<size_t> order(table.red.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return table.red[a].x < table.red[b].x; });
    auto permute = [&order](HandleList& list) {
        HandleList sorted;
        sorted.reserve(list.size());
        for (size_t i : order) {
            sorted.push_back(list[i]);
        }
        list.swap(sorted);
    };
    permute(table.red);
    permute(table.green);
    permute(table.blue);
}

void OXWLUTColorTableFile::fitPositions(Table& table, float columnWidth)
{
    HandleList* lists[3] = {&table.red, &table.green, &table.blue};
    double minX = 0.0;
    double maxX = 0.0;
    bool any = false;
    for (const HandleList* list : lists) {
        for (const Handle& h : *list) {
            if (!any || h.x < minX) {
                minX = h.x;
            }
            if (!any || h.x > maxX) {
                maxX = h.x;
            }
            any = true;
        }
    }
    if (!any) {
        return;
    }
    // In double, so that even positions near the float limits give a finite range.
    const double p = std::isfinite(columnWidth) && columnWidth > 0.0f ? double(columnWidth) : 0.0;
    const double range = maxX - minX + p;
    const bool spread = range > 0.0 && std::isfinite(range);
    const double origin = minX - p / 2.0;
    for (HandleList* list : lists) {
        for (Handle& h : *list) {
            const double x = spread ? (h.x - origin) / range : double(h.x);
            h.x = float(std::min(std::max(x, 0.0), 1.0));
        }
    }
}

bool OXWLUTColorTableFile::applyFractionRule(Table& table)
{
    HandleList* lists[3] = {&table.red, &table.green, &table.blue};
    double minY = 0.0;
    double maxY = 0.0;
    bool any = false;
    for (const HandleList* list : lists) {
        for (const Handle& h : *list) {
            if (!any || h.y < minY) {
                minY = h.y;
            }
            if (!any || h.y > maxY) {
                maxY = h.y;
            }
            any = true;
        }
    }
    const bool fractions = any && maxY - minY < FractionSpan;
    // Colour values live on the 0 to 255.5 scale; the bar turns them into bytes by
    // truncation, so anything outside would wrap around or overflow there.
    for (HandleList* list : lists) {
        for (Handle& h : *list) {
            double y = fractions ? double(h.y) * 255.0 + 0.5 : double(h.y);
            if (!(y >= 0.0)) {
                y = 0.0;
            } else if (y > double(MaxValue)) {
                y = double(MaxValue);
            }
            h.y = float(y);
        }
    }
    return fractions;
}

bool OXWLUTColorTableFile::importTable(OXWLUTIntervalInfo& interval, Table table, float columnWidth)
{
    if (!interval.objectInfo() || !isUsable(table)) {
        return false;
    }
    sortByPosition(table);
    fitPositions(table, columnWidth);
    applyFractionRule(table);

    HandleList reference[3];
    HandleList fitted[3];
    for (int c = 0; c < 3; ++c) {
        reference[c] = interval.referenceHandles(OXWLUTIntervalInfo::RedChannel + c);
        fitted[c] = interval.handles(OXWLUTIntervalInfo::RedChannel + c);
    }
    // With an object every colour channel accepts its list, so the three change together.
    interval.setReferenceHandles(OXWLUTIntervalInfo::RedChannel, table.red);
    interval.setReferenceHandles(OXWLUTIntervalInfo::GreenChannel, table.green);
    interval.setReferenceHandles(OXWLUTIntervalInfo::BlueChannel, table.blue);
    return !sameCurves(interval, reference, fitted);
}

bool OXWLUTColorTableFile::importIntoInterval(OXWLUTIntervalInfo& interval, QIODevice& device,
                                              Format format, float columnWidth)
{
    Table table;
    if (!interval.objectInfo() || !read(device, format, table)) {
        return false;
    }
    return importTable(interval, std::move(table), columnWidth);
}

bool OXWLUTColorTableFile::importIntoInterval(OXWLUTIntervalInfo& interval, const QString& fileName,
                                              Format format, float columnWidth)
{
    Table table;
    if (!interval.objectInfo() || !read(fileName, format, table)) {
        return false;
    }
    return importTable(interval, std::move(table), columnWidth);
}
