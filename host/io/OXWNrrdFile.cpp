#include "OXWNrrdFile.h"

#include <OXMSampleLoops.h>
#include <OXMTaskInfo.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QObject>

#include <zlib.h>

#include <algorithm>
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

// Raw bytes straight into the buffer.
bool readRaw(QFile& file, std::vector<std::uint8_t>& bytes, QString& error, OXMTaskInfo* task)
{
    const std::size_t total = bytes.size();
    for (std::size_t at = 0; at < total;) {
        const qint64 want = qint64(std::min<std::size_t>(total - at, Chunk));
        const qint64 got = file.read(reinterpret_cast<char*>(bytes.data() + at), want);
        if (got <= 0) {
            error = QObject::tr("truncated: the file ends before its voxels");
            return false;
        }
        at += std::size_t(got);
        if (aborted(task, double(at) / double(total)))
            return false;
    }
    return true;
}

// A gzip (or zlib) stream inflated into the buffer.
bool readGzip(QFile& file, std::vector<std::uint8_t>& bytes, QString& error, OXMTaskInfo* task)
{
    z_stream z{};
    if (inflateInit2(&z, 15 + 32) != Z_OK) {
        error = QObject::tr("the compressed data cannot be read");
        return false;
    }
    z.next_out = bytes.data();
    z.avail_out = uInt(std::min<std::size_t>(bytes.size(), 1u << 30));
    QByteArray in;
    int status = Z_OK;
    while (status == Z_OK && z.total_out < bytes.size()) {
        if (z.avail_in == 0) {
            in = file.read(Chunk);
            if (in.isEmpty())
                break;
            z.next_in = reinterpret_cast<Bytef*>(in.data());
            z.avail_in = uInt(in.size());
        }
        if (z.avail_out == 0)
            z.avail_out = uInt(std::min<std::size_t>(bytes.size() - z.total_out, 1u << 30));
        status = inflate(&z, Z_NO_FLUSH);
        if (aborted(task, double(z.total_out) / double(bytes.size()))) {
            inflateEnd(&z);
            return false;
        }
    }
    const bool complete = z.total_out == bytes.size();
    inflateEnd(&z);
    if (!complete)
        error = status == Z_DATA_ERROR || status == Z_MEM_ERROR
                    ? QObject::tr("the compressed data are corrupt")
                    : QObject::tr("truncated: the compressed data end before the voxels");
    return complete;
}

// Numbers as text, converted to the voxel type.
bool readAscii(QFile& file, const OXWVolumeHeader& h, std::vector<std::uint8_t>& bytes,
               QString& error)
{
    const QList<QByteArray> words = file.readAll().simplified().split(' ');
    const std::size_t values = bytes.size() / std::size_t(h.bytesPerValue);
    if (std::size_t(words.size()) < values || (values > 0 && words.front().isEmpty())) {
        error = QObject::tr("truncated: fewer numbers than voxels");
        return false;
    }
    bool ok = true;
    OXMSampleLoops::forComponentType(h.valueType, [&](auto sample) {
        using T = decltype(sample);
        T* out = reinterpret_cast<T*>(bytes.data());
        for (std::size_t i = 0; i < values && ok; ++i)
            out[i] = T(words[int(i)].toDouble(&ok));
    });
    if (!ok)
        error = QObject::tr("a value that is not a number");
    return ok;
}

void swapBytes(std::vector<std::uint8_t>& bytes, int size)
{
    for (std::size_t i = 0; i + std::size_t(size) <= bytes.size(); i += std::size_t(size))
        std::reverse(bytes.begin() + std::ptrdiff_t(i), bytes.begin() + std::ptrdiff_t(i) + size);
}

} // namespace

bool OXWNrrdFile::readVoxels(const QString& headerPath, const OXWVolumeHeader& h,
                             std::vector<std::uint8_t>& bytes, QString& error, OXMTaskInfo* task)
{
    const bool detached = !h.dataFile.isEmpty();
    QFile file(detached ? QFileInfo(QFileInfo(headerPath).dir(), h.dataFile).filePath()
                        : headerPath);
    if (!file.open(QIODevice::ReadOnly) || (!detached && !file.seek(h.headerBytes))) {
        error = QObject::tr("the data file %1 cannot be read").arg(QFileInfo(file).fileName());
        return false;
    }
    try {
        bytes.assign(std::size_t(h.dataBytes()), 0);
    } catch (const std::bad_alloc&) {
        error = QObject::tr("not enough memory for the voxels");
        return false;
    }
    bool ok = false;
    if (h.encoding == OXWVolumeHeader::Encoding::Raw)
        ok = readRaw(file, bytes, error, task);
    else if (h.encoding == OXWVolumeHeader::Encoding::Gzip)
        ok = readGzip(file, bytes, error, task);
    else
        ok = readAscii(file, h, bytes, error);
    if (ok && h.bigEndian && h.encoding != OXWVolumeHeader::Encoding::Ascii && h.bytesPerValue > 1)
        swapBytes(bytes, h.bytesPerValue);
    return ok;
}
