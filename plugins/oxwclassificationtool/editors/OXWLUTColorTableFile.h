#pragma once

#include "OXWLUTIntervalInfo.h"

#include <QByteArray>
#include <QString>

class QIODevice;

// The colour table files of the colour bar: the colours of one interval written to a file and
// read back into any interval. Widget-free, so that the bar, the tests and the fuzzer share it.
//
// Two formats:
// - text (".lut"): the header "; Color look up table", an empty line and one line
//   "position red green blue" per handle, printed with six decimals. Positions are local to
//   the interval (0 at its lower, 1 at its upper border), values run from 0 to 255.5.
// - palette (".act"): exactly 768 bytes, 256 entries of red, green and blue; entry i stands
//   for the local position i / 256. No header, no trailer.
//
// Reading is lenient and never trusts the file: a reader either delivers a complete, valid
// table (at least one entry, every number finite) or nothing, and nothing reaches an interval
// unless a complete table was read. Only regular files are opened by name: a pipe would block
// the open until a writer comes, a device such as /dev/zero would never end.
//
// Refusals: the operations on named files take an optional QString* refusal that receives,
// when they fail, one line for the user's log naming the file and the reason ("<file>: not a
// regular file", "<file>: no complete colour table", "<file>: cannot write: <system reason>").
// All user-visible strings are translated in the colour bar's context, "OXWLUTColorBar".
class OXWLUTColorTableFile
{
public:
    using Handle = OXWLUTIntervalInfo::Handle;
    using HandleList = OXWLUTIntervalInfo::HandleList;

    enum class Format
    {
        Text,
        Palette
    };

    // The three colour curves of one table: handles (position, value) with the same positions
    // in the same order in all three lists.
    struct Table
    {
        HandleList red;
        HandleList green;
        HandleList blue;

        bool isEmpty() const { return red.empty(); }
        void clear();
    };

    static constexpr int PaletteEntries = 256;
    static constexpr int PaletteSize = 3 * PaletteEntries;
    // A text line is judged in pieces of at most this many characters.
    static constexpr int MaxPieceLength = 4094;
    // No colour table file is larger (an interval never has more handles than the grey-value
    // axis has cells): a named file above it is refused unread, a device read up to it only.
    static constexpr qint64 MaxFileSize = qint64(256) << 20;
    // Largest minus smallest colour value below this: the values are fractions of one.
    static constexpr double FractionSpan = 1.001;
    static constexpr float MaxValue = 255.5f;

    // --- Names -----------------------------------------------------------------------------

    // The translated file dialog filter of a format, "*.lut" or "*.act".
    static QString filter(Format format);
    // The format of a filter chosen in a file dialog: the translated "*.act" is the palette,
    // every other filter (also an empty one) the text format.
    static Format formatFromFilter(const QString& selectedFilter);
    // The file name with the format's lower-case extension appended, unless it already ends
    // exactly in the lower- or upper-case extension (".act" or ".ACT", ".lut" or ".LUT";
    // ".Act" does not count). Idempotent.
    static QString withExtension(const QString& fileName, Format format);

    // --- Writing -----------------------------------------------------------------------------

    // Whether a table can be written: at least two red handles and as many green and blue.
    static bool isWritable(const Table& table);
    // The file contents of the text format (with '\n' line ends).
    static QByteArray textContents(const Table& table);
    // The 768 bytes of the palette format sampled from the curves; empty when the table is
    // not writable.
    static QByteArray paletteContents(const Table& table);
    // Write a writable table to an open device, or create or truncate the named file (text
    // mode for the text format, so the platform's line ends are used). False when the table
    // is not writable (the file is then not touched), the file cannot be opened or a write
    // fails.
    static bool write(QIODevice& device, const Table& table, Format format);
    static bool write(const QString& fileName, const Table& table, Format format,
                      QString* refusal = nullptr);
    // The fitted red, green and blue handles of an interval.
    static Table tableOf(const OXWLUTIntervalInfo& interval);
    // Export an interval's colours: withExtension, then write. False, and no file touched,
    // when the name is empty or the interval's curves are not writable.
    static bool exportInterval(const OXWLUTIntervalInfo& interval, const QString& fileName,
                               Format format, QString* refusal = nullptr);

    // --- Reading -----------------------------------------------------------------------------

    // Read a table from a device open for reading, or from the named file. True when a
    // complete, valid table was read (at least one entry); otherwise the table is left empty.
    // Values and positions are delivered as found in the file (see fitPositions and
    // applyFractionRule for what the import makes of them); a palette entry i has the
    // position i / 256. A longer palette file gives its first 768 bytes. A named file that is
    // no regular file or larger than MaxFileSize is refused before it is opened.
    static bool readText(QIODevice& device, Table& table);
    static bool readText(const QString& fileName, Table& table);
    static bool readPalette(QIODevice& device, Table& table);
    static bool readPalette(const QString& fileName, Table& table);
    static bool read(QIODevice& device, Format format, Table& table);
    static bool read(const QString& fileName, Format format, Table& table,
                     QString* refusal = nullptr);

    // One piece of a text line (at most MaxPieceLength characters, without the terminating
    // zero): true and the four numbers when it is an entry.
    static bool parseEntry(const char* piece, int length, float entry[4]);

    // --- Import --------------------------------------------------------------------------------

    // The width of one colour bar column in the interval's local units, from the positions of
    // the bar's columns 0 and 1: localFromGlobal(column1) - localFromGlobal(column0).
    static float columnWidth(const OXWLUTIntervalInfo& interval, float column0Position,
                             float column1Position);
    // Orders the entries by position (stable), so that a hand-written file in any order gives
    // a curve the model and the bar can walk from left to right.
    static void sortByPosition(Table& table);
    // Spreads the positions over [0, 1] with half a column to spare at each end:
    // x -> (x - (minX - p / 2)) / (maxX - minX + p). When that range is not positive the
    // positions stay as read, clamped to [0, 1].
    static void fitPositions(Table& table, float columnWidth);
    // Values whose largest minus smallest is below FractionSpan are fractions of one and
    // become value * 255 + 0.5; others stay. Then every value is clamped to [0, MaxValue].
    // Returns whether the values were scaled.
    static bool applyFractionRule(Table& table);

    // The whole import into an interval: read, sort, fit with the column width, values,
    // setReferenceHandles of the red, green and blue channels (the model fits the lists to
    // the interval). Returns whether the interval changed; nothing changes unless a complete,
    // valid table was read.
    static bool importIntoInterval(OXWLUTIntervalInfo& interval, QIODevice& device, Format format,
                                   float columnWidth);
    static bool importIntoInterval(OXWLUTIntervalInfo& interval, const QString& fileName,
                                   Format format, float columnWidth);
    // The same with a table that was read already.
    static bool importTable(OXWLUTIntervalInfo& interval, Table table, float columnWidth);
};
