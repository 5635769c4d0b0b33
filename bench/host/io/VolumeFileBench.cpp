// Opening a 512³ 16-bit NRRD file (256 MiB of voxels) into a scene volume, against reading the
// same bytes with one read() in the same run, and the peak memory of the open as a multiple of
// the voxel data (the reader's buffer is the volume's: no second copy).

#include <OXWVolumeFile.h>

#include <OXMObjectPtr.h>
#include <OXMVolumeRenderObject.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int Size = 512;
constexpr long long VoxelBytes = 2LL * Size * Size * Size;

struct NrrdFile
{
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("volume.nrrd"));
    long long headerBytes = 0;

    NrrdFile()
    {
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        const QByteArray header = "NRRD0004\ntype: ushort\ndimension: 3\nsizes: 512 512 512\n"
                                  "encoding: raw\nendian: little\n\n";
        headerBytes = header.size();
        f.write(header);
        std::vector<std::uint16_t> slice(std::size_t(Size) * Size);
        for (int z = 0; z < Size; ++z) {
            for (std::size_t i = 0; i < slice.size(); ++i)
                slice[i] = std::uint16_t((i * 7 + std::size_t(z) * 13) & 0x0fff);
            f.write(reinterpret_cast<const char*>(slice.data()), qint64(slice.size() * 2));
        }
    }
};

NrrdFile& file()
{
    static NrrdFile f;
    return f;
}

// Kilobytes of a line of /proc/self/status ("VmRSS:", "VmHWM:").
long long statusKB(const char* key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(key, 0) == 0)
            return std::stoll(line.substr(std::string(key).size()));
    return 0;
}

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

void BM_OpenNrrd(benchmark::State& state)
{
    NrrdFile& f = file();
    double peak = 0.0;
    for (auto _ : state) {
        resetPeak();
        const long long before = statusKB("VmRSS:");
        OXWVolumeFile::Result r = OXWVolumeFile::read(f.path);
        OXMObjectPtr hold(r.volume);
        peak = std::max(peak, double(statusKB("VmHWM:") - before) * 1024.0 / double(VoxelBytes));
        if (!r.volume) {
            state.SkipWithError(r.error.toStdString().c_str());
            break;
        }
    }
    state.counters["peak_over_voxels"] = peak;
    state.SetBytesProcessed(state.iterations() * VoxelBytes);
}
BENCHMARK(BM_OpenNrrd)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor: the same bytes with one read() into a new buffer of their size (a new volume
// needs new memory, which the system hands out page by page).
void BM_ReadBytes(benchmark::State& state)
{
    NrrdFile& f = file();
    for (auto _ : state) {
        std::unique_ptr<char[]> buffer(new char[std::size_t(VoxelBytes)]);
        const int fd = ::open(QFile::encodeName(f.path).constData(), O_RDONLY);
        ::lseek(fd, f.headerBytes, SEEK_SET);
        long long total = 0;
        while (total < VoxelBytes) {
            const ssize_t got = ::read(fd, buffer.get() + total, std::size_t(VoxelBytes - total));
            if (got <= 0)
                break;
            total += got;
        }
        ::close(fd);
        benchmark::DoNotOptimize(buffer.get());
    }
    state.SetBytesProcessed(state.iterations() * VoxelBytes);
}
BENCHMARK(BM_ReadBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

namespace {

// The same read into a buffer that is already mapped: the cost of the copy alone.
void BM_ReadBytesIntoMappedBuffer(benchmark::State& state)
{
    NrrdFile& f = file();
    std::vector<char> buffer(static_cast<std::size_t>(VoxelBytes), 1);
    for (auto _ : state) {
        const int fd = ::open(QFile::encodeName(f.path).constData(), O_RDONLY);
        ::lseek(fd, f.headerBytes, SEEK_SET);
        for (long long total = 0; total < VoxelBytes;) {
            const ssize_t got = ::read(fd, buffer.data() + total, std::size_t(VoxelBytes - total));
            if (got <= 0)
                break;
            total += got;
        }
        ::close(fd);
        benchmark::DoNotOptimize(buffer.data());
    }
    state.SetBytesProcessed(state.iterations() * VoxelBytes);
}
BENCHMARK(BM_ReadBytesIntoMappedBuffer)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
