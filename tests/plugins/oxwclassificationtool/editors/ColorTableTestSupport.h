#pragma once

// Helpers shared by the colour table file tests: objects and intervals of a given cell count,
// files in a temporary directory, curves evaluated at local positions.

#include "OXWLUTColorTableFile.h"
#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>

inline void PrintTo(const OXMVector2<float>& h, std::ostream* os)
{
    *os << "(" << h.x << ", " << h.y << ")";
}

namespace colortabletest {

using File = OXWLUTColorTableFile;
using Format = OXWLUTColorTableFile::Format;
using Handle = OXWLUTIntervalInfo::Handle;
using HandleList = OXWLUTIntervalInfo::HandleList;
using Table = OXWLUTColorTableFile::Table;

constexpr int kRed = OXWLUTIntervalInfo::RedChannel;
constexpr int kGreen = OXWLUTIntervalInfo::GreenChannel;
constexpr int kBlue = OXWLUTIntervalInfo::BlueChannel;
constexpr int kColours[] = {kRed, kGreen, kBlue};

// An object whose grey values are the histogram indices 0 .. cells-1, one cell per index, with
// one interval over the whole axis.
inline std::unique_ptr<OXWLUTObjectInfo> makeObject(int cells)
{
    return std::make_unique<OXWLUTObjectInfo>(-0.5f, static_cast<float>(cells) - 0.5f, 0.0f, 1.0f,
                                              static_cast<float>(cells), 0.0f, 0.0f);
}

// The width of one column of a bar of the given number of columns showing the whole axis, in
// the interval's local units, as the bar computes it from its columns 0 and 1.
inline float barColumnWidth(const OXWLUTIntervalInfo& interval, int columns)
{
    return File::columnWidth(interval, 0.0f, 1.0f / static_cast<float>(columns));
}

// A table of three curves with handles at the given positions and values.
inline Table makeTable(std::initializer_list<std::array<float, 4>> entries)
{
    Table table;
    for (const auto& e : entries) {
        table.red.emplace_back(e[0], e[1]);
        table.green.emplace_back(e[0], e[2]);
        table.blue.emplace_back(e[0], e[3]);
    }
    return table;
}

// The value of a piecewise-linear curve (handles in increasing x) at x; constant beyond the
// end handles.
inline double valueAt(const HandleList& curve, double x)
{
    if (curve.empty()) {
        return std::nan("");
    }
    if (x <= curve.front().x) {
        return curve.front().y;
    }
    for (std::size_t k = 0; k + 1 < curve.size(); ++k) {
        const Handle& p = curve[k];
        const Handle& q = curve[k + 1];
        if (x <= q.x) {
            return q.x > p.x ? p.y + (q.y - p.y) * (x - p.x) / (q.x - p.x) : q.y;
        }
    }
    return curve.back().y;
}

// Everything that an import may change, to prove that a failed import changed nothing.
struct ColourState
{
    HandleList reference[3];
    HandleList fitted[3];

    explicit ColourState(const OXWLUTIntervalInfo& interval)
    {
        for (int c = 0; c < 3; ++c) {
            reference[c] = interval.referenceHandles(kColours[c]);
            fitted[c] = interval.handles(kColours[c]);
        }
    }
    bool operator==(const ColourState& o) const
    {
        for (int c = 0; c < 3; ++c) {
            if (reference[c] != o.reference[c] || fitted[c] != o.fitted[c]) {
                return false;
            }
        }
        return true;
    }
};

// A temporary directory for the files of one test.
class TempFiles
{
public:
    TempFiles() { EXPECT_TRUE(mDir.isValid()); }

    QString path(const QString& name) const { return mDir.filePath(name); }

    QString write(const QString& name, const QByteArray& contents) const
    {
        const QString fileName = path(name);
        QFile file(fileName);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        EXPECT_EQ(file.write(contents), contents.size());
        return fileName;
    }

    static QByteArray contentsOf(const QString& fileName)
    {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly)) {
            return QByteArray();
        }
        return file.readAll();
    }

private:
    QTemporaryDir mDir;
};

} // namespace colortabletest
