#pragma once

#include "OXWTransferFunction.h"

#include <QByteArray>
#include <QString>

#include <vector>

// The preset files of other viewers as the host reads and writes them: ParaView colour-map JSON
// (OXWParaViewPresetFile) and 3D Slicer presets (OXWSlicerPresetFile), told apart from each
// other and from the host's own preset documents (OXMObjectSerializer) by their content, not
// by their name.
//
// Reading is all or nothing per file: a file that can't be read, is larger than
// OXWPresetStore::MaxFileSize, is no well-formed JSON or XML, or holds no preset at all is
// refused with one sentence naming the file and the reason, and nothing of it is returned.
// Single presets that can't be used are returned with their reason (OXWTransferFunction's
// refused), so that the others can still be imported.
class OXWTransferFunctionFile
{
public:
    enum class Format
    {
        Unknown,
        Native, // the host's own preset documents
        ParaView,
        Slicer
    };

    // The format of the bytes: a JSON object of the host's document format is Native, other
    // JSON ParaView, XML Slicer.
    static Format detect(const QByteArray& bytes);
    // Format by a file name's suffix (".json", ".xml"; anything else is Native).
    static Format formatOfName(const QString& fileName);

    // The presets of a ParaView or Slicer file; false with the reason in error (the format
    // found is set in any case).
    static bool read(const QString& fileName, Format& format,
                     std::vector<OXWTransferFunction>& presets, QString& error);
    static bool readBytes(const QByteArray& bytes, Format format,
                          std::vector<OXWTransferFunction>& presets, QString& error);
    // Writes the presets in a foreign format (ParaView or Slicer), atomically.
    static bool write(const QString& fileName, Format format,
                      const std::vector<OXWTransferFunction>& presets, QString& error);
    static QByteArray toBytes(Format format, const std::vector<OXWTransferFunction>& presets);

    // One line for a listing: name, range, the file's opacity and colour points, what was
    // left out, or why the preset is refused.
    static QString describe(const OXWTransferFunction& preset);
    // The log line of a preset that was imported without some of its content; empty when
    // nothing was left out.
    static QString leftOutMessage(const OXWTransferFunction& preset, const QString& fileName);
};
