#include "OXWExportCSVUtilities.h"

#include <QByteArray>
#include <QSaveFile>

namespace {
void appendNumber(QByteArray& line, float value)
{
    // QByteArray::number always uses the C locale.
    line += QByteArray::number(double(value), 'g', 9);
}
} // namespace

bool OXWExportCSVUtilities::exportPointsAsCSV(const QString& fileName,
                                              const OXMVector2<float>* points, int count)
{
    if (fileName.isEmpty() || count < 0 || (count > 0 && !points))
        return false;
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray text("x,y\n");
    text.reserve(4 + count * 24);
    for (int i = 0; i < count; ++i) {
        appendNumber(text, points[i].x);
        text += ',';
        appendNumber(text, points[i].y);
        text += '\n';
    }
    if (file.write(text) != text.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
