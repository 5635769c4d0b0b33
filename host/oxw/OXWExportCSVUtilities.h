#pragma once

#include <OXMVector2.h>

#include <QString>

// Comma-separated value export in the host's layout.
class OXWExportCSVUtilities
{
public:
    // Writes the points: the header line "x,y", then one line "x,y" per point, numbers in the
    // C locale (decimal point, no group separators) with up to 9 significant digits so a
    // float reads back unchanged; lines end in "\n". The file is replaced atomically (it is
    // either the complete new file or untouched). False for an empty file name, a negative
    // count, missing points with a positive count or a write failure; zero points write the
    // header only.
    static bool exportPointsAsCSV(const QString& fileName, const OXMVector2<float>* points,
                                  int count);
};
