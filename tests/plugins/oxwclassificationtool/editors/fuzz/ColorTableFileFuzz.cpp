// libFuzzer target of the colour table readers: any byte string is read as a text table and
// as a palette, imported into an interval and written back. Nothing may crash, a reader
// either delivers a complete table of finite numbers or nothing, an import leaves the curves
// finite and inside the interval, and what was imported can be written and read again.

#include "OXWLUTColorTableFile.h"
#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <QBuffer>
#include <QByteArray>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

using File = OXWLUTColorTableFile;

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

// A table read is complete and finite; what the import hands to the model (the reference
// handles) is ordered, inside the interval and on the colour scale; what the model fits from
// it is finite and on the colour scale.
void checkTable(const File::Table& table, bool read)
{
    require(read == !table.isEmpty());
    require(table.green.size() == table.red.size() && table.blue.size() == table.red.size());
    for (const File::HandleList* list : {&table.red, &table.green, &table.blue}) {
        for (const File::Handle& h : *list) {
            require(std::isfinite(h.x) && std::isfinite(h.y));
        }
    }
}

void checkInterval(const OXWLUTIntervalInfo& interval)
{
    for (int channel = OXWLUTIntervalInfo::RedChannel; channel <= OXWLUTIntervalInfo::BlueChannel;
         ++channel) {
        const File::HandleList& reference = interval.referenceHandles(channel);
        require(!reference.empty() && !interval.handles(channel).empty());
        for (size_t k = 0; k < reference.size(); ++k) {
            require(reference[k].x >= 0.0f && reference[k].x <= 1.0f);
            require(reference[k].y >= 0.0f && reference[k].y <= File::MaxValue);
            require(k == 0 || reference[k - 1].x <= reference[k].x);
        }
        for (const File::Handle& h : interval.handles(channel)) {
            require(std::isfinite(h.x) && h.y >= 0.0f && h.y <= File::MaxValue);
        }
    }
}

bool readFrom(QByteArray contents, File::Format format, File::Table& table)
{
    QBuffer buffer(&contents);
    buffer.open(QIODevice::ReadOnly);
    return File::read(buffer, format, table);
}

void fuzzFormat(const QByteArray& bytes, File::Format format, size_t size)
{
    File::Table table;
    const bool read = readFrom(bytes, format, table);
    checkTable(table, read);
    if (!read) {
        return;
    }
    // An axis of 2 to 301 cells, split once, and a bar of 50 to 849 columns: the import
    // meets wide and narrow intervals and columns wider and narrower than a cell.
    const int cells = 2 + int(size % 300);
    OXWLUTObjectInfo object(-0.5f, float(cells) - 0.5f, 0.0f, 1.0f, float(cells), 0.0f, 0.0f);
    object.newInterval(float((size / 7) % 97) / 97.0f, false);
    OXWLUTIntervalInfo& interval = *object.interval(int(size % 2) % object.intervalCount());
    File::importTable(interval, table,
                      File::columnWidth(interval, 0.0f, 1.0f / float(50 + size % 800)));
    checkInterval(interval);
    const File::Table fitted = File::tableOf(interval);
    if (!File::isWritable(fitted)) {
        return; // the channels were fitted to different counts: the bar refuses them too
    }
    for (File::Format out : {File::Format::Text, File::Format::Palette}) {
        QByteArray contents;
        QBuffer sink(&contents);
        sink.open(QIODevice::WriteOnly);
        require(File::write(sink, fitted, out));
        File::Table again;
        require(readFrom(contents, out, again));
        require(again.red.size() ==
                (out == File::Format::Palette ? size_t(File::PaletteEntries) : fitted.red.size()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
    fuzzFormat(bytes, File::Format::Text, size);
    fuzzFormat(bytes, File::Format::Palette, size);
    return 0;
}
