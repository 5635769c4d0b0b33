#include "OXWNrrdFile.h"

#include <OXMSampleLoops.h>
#include <OXMTaskInfo.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <zlib.h>

#include <algorithm>
#include <climits>
#include <new>

namespace {

constexpr qint64 Chunk = 8 << 20;

bool aborted(OXMTaskInfo* task, double done)
{
    if (!task)
        return false;
    task->setProgress(float(done));
    return task->isAbortRequested();
}

// A buffer of voxels being filled: its bytes, and the value range counted so far.
struct Target
{
    std::uint8_t* data;
    std::size_t size;
    const OXWVolumeHeader& header;
    OXWNrrdFile::ValueRange range;

    // Counts the values of bytes [from, to) (scalar integer data of the machine's byte order).
    void count(std::size_t from, std::size_t to)
    {
        if (!range.known)
            return;
        OXMSampleLoops::forComponentType(header.valueType, [&](auto sample) {
            using T = decltype(sample);
            const T* v = reinterpret_cast<const T*>(data + from);
            const std::size_t n = (to - from) / sizeof(T);
            if (n == 0)
                return;
            T lo = v[0], hi = v[0];
            for (std::size_t i = 1; i < n; ++i) {
                lo = v[i] < lo ? v[i] : lo;
                hi = v[i] > hi ? v[i] : hi;
            }
            range.smallest = std::min(range.smallest, (long long)lo);
            range.largest = std::max(range.largest, (long long)hi);
        });
    }
};

// Raw bytes straight into the buffer, counted while they are in the cache.
bool readRaw(QFile& file, Target& t, QString& error, OXMTaskInfo* task)
{
    for (std::size_t at = 0; at < t.size;) {
        const qint64 want = qint64(std::min<std::size_t>(t.size - at, Chunk));
        const qint64 got = file.read(reinterpret_cast<char*>(t.data + at), want);
        if (got <= 0) {
            error = QObject::tr("truncated: the file ends before its voxels");
            return false;
        }
        if (!t.header.bigEndian)
            t.count(at, at + std::size_t(got));
        at += std::size_t(got);
        if (aborted(task, double(at) / double(t.size)))
            return false;
    }
    return true;
}

// A gzip (or zlib) stream inflated into the buffer.
bool readGzip(QFile& file, Target& t, QString& error, OXMTaskInfo* task)
{
    z_stream z{};
    if (inflateInit2(&z, 15 + 32) != Z_OK) {
        error = QObject::tr("the compressed data cannot be read");
        return false;
    }
    z.next_out = t.data;
    z.avail_out = uInt(std::min<std::size_t>(t.size, 1u << 30));
    QByteArray in;
    int status = Z_OK;
    while (status == Z_OK && z.total_out < t.size) {
        if (z.avail_in == 0) {
            in = file.read(Chunk);
            if (in.isEmpty())
                break;
            z.next_in = reinterpret_cast<Bytef*>(in.data());
            z.avail_in = uInt(in.size());
        }
        if (z.avail_out == 0)
            z.avail_out = uInt(std::min<std::size_t>(t.size - z.total_out, 1u << 30));
        status = inflate(&z, Z_NO_FLUSH);
        if (aborted(task, double(z.total_out) / double(t.size))) {
            inflateEnd(&z);
            return false;
        }
    }
    const bool complete = z.total_out == t.size;
    inflateEnd(&z);
    if (!complete)
        error = status == Z_DATA_ERROR || status == Z_MEM_ERROR
                    ? QObject::tr("the compressed data are corrupt")
                    : QObject::tr("truncated: the compressed data end before the voxels");
    return complete;
}

// Numbers as text, converted to the voxel type.
bool readAscii(QFile& file, Target& t, QString& error)
{
    const OXWVolumeHeader& h = t.header;
    const QList<QByteArray> words = file.readAll().simplified().split(' ');
    const std::size_t values = t.size / std::size_t(h.bytesPerValue);
    if (std::size_t(words.size()) < values || (values > 0 && words.front().isEmpty())) {
        error = QObject::tr("truncated: fewer numbers than voxels");
        return false;
    }
    bool ok = true;
    OXMSampleLoops::forComponentType(h.valueType, [&](auto sample) {
        using T = decltype(sample);
        T* out = reinterpret_cast<T*>(t.data);
        for (std::size_t i = 0; i < values && ok; ++i)
            out[i] = T(words[int(i)].toDouble(&ok));
    });
    if (!ok)
        error = QObject::tr("a value that is not a number");
    return ok;
}

void swapBytes(std::uint8_t* bytes, std::size_t size, int valueSize)
{
    for (std::size_t i = 0; i + std::size_t(valueSize) <= size; i += std::size_t(valueSize))
        std::reverse(bytes + i, bytes + i + valueSize);
}

bool readInto(QFile& file, Target& t, QString& error, OXMTaskInfo* task)
{
    const OXWVolumeHeader& h = t.header;
    bool ok = false;
    if (h.encoding == OXWVolumeHeader::Encoding::Raw)
        ok = readRaw(file, t, error, task);
    else if (h.encoding == OXWVolumeHeader::Encoding::Gzip)
        ok = readGzip(file, t, error, task);
    else
        ok = readAscii(file, t, error);
    const bool swapped =
        ok && h.bigEndian && h.encoding != OXWVolumeHeader::Encoding::Ascii && h.bytesPerValue > 1;
    if (swapped)
        swapBytes(t.data, t.size, h.bytesPerValue);
    if (ok && (swapped || h.encoding != OXWVolumeHeader::Encoding::Raw))
        t.count(0, t.size);
    return ok;
}

} // namespace

std::shared_ptr<std::uint8_t> OXWNrrdFile::readVoxels(const QString& headerPath,
                                                      const OXWVolumeHeader& h, QString& error,
                                                      ValueRange* range, OXMTaskInfo* task)
{
    const bool detached = !h.dataFile.isEmpty();
    QFile file(detached ? QFileInfo(QFileInfo(headerPath).dir(), h.dataFile).filePath()
                        : headerPath);
    if (!file.open(QIODevice::ReadOnly) || (!detached && !file.seek(h.headerBytes))) {
        error = QObject::tr("the data file %1 cannot be read").arg(QFileInfo(file).fileName());
        return nullptr;
    }
    const std::size_t size = std::size_t(h.dataBytes());
    std::shared_ptr<std::uint8_t> data(new (std::nothrow) std::uint8_t[size],
                                       std::default_delete<std::uint8_t[]>());
    if (!data) {
        error = QObject::tr("not enough memory for the voxels");
        return nullptr;
    }
    Target t{data.get(), size, h, ValueRange()};
    const bool integer = h.components == 1 && h.valueType != OXM::Float32 &&
                         h.valueType != OXM::Float64 && h.valueType != OXM::Unknown;
    t.range = {integer, LLONG_MAX, LLONG_MIN};
    if (!readInto(file, t, error, task))
        return nullptr;
    if (range)
        *range = t.range;
    return data;
}
