#pragma once

#include <cmath>

#include <QCoreApplication>
#include <QString>

#include <memory>
#include <vector>

class OXWLUTIntervalInfo;

// The in-memory classification of one volume or region: the grey-value axis of its
// histogram, the opacity axis, the part of both that the editor shows, the editor's vertical
// zoom and isosurface marker, and the ordered intervals that tile the grey-value axis.
//
// Everything inside works in normalised coordinates. A position is a point of the grey-value
// axis [0, 1], divided into n = greyCount() cells of width s = greyStep(), one per grey value;
// interval borders lie on cell boundaries and handles on cell centres. A height is a point of
// the opacity axis [0, 1].
class OXWLUTObjectInfo
{
    Q_DECLARE_TR_FUNCTIONS(OXWLUTObjectInfo)

public:
    OXWLUTObjectInfo(float greyMin, float greyMax, float opacityMin, float opacityMax,
                     float greyCount, float calibratedMin, float calibratedMax);
    OXWLUTObjectInfo(const OXWLUTObjectInfo&) = delete;
    OXWLUTObjectInfo& operator=(const OXWLUTObjectInfo&) = delete;
    virtual ~OXWLUTObjectInfo();

    float greyMin() const { return mGreyMin; }
    float greyMax() const { return mGreyMax; }
    float greyRange() const { return mGreyRange; }
    float greyCount() const { return mGreyCount; }
    float greyStep() const { return mGreyStep; }
    float opacityMin() const { return mOpacityMin; }
    float opacityMax() const { return mOpacityMax; }
    float opacityRange() const { return mOpacityRange; }
    float visibleGreyFrom() const { return mVisibleGreyFrom; }
    float visibleGreyTo() const { return mVisibleGreyTo; }
    float visibleOpacityFrom() const { return mVisibleOpacityFrom; }
    float visibleOpacityTo() const { return mVisibleOpacityTo; }
    float calibratedMin() const { return mCalibratedMin; }
    float calibratedMax() const { return mCalibratedMax; }
    float calibratedRange() const { return mCalibratedRange; }

    // Editor state, written directly by the editor and the tool panel.
    int valueDecimals() const { return mValueDecimals; }
    void setValueDecimals(int decimals) { mValueDecimals = decimals; }
    int opacityDecimals() const { return mOpacityDecimals; }
    void setOpacityDecimals(int decimals) { mOpacityDecimals = decimals; }
    float verticalZoom() const { return mVerticalZoom; }
    void setVerticalZoom(float zoom) { mVerticalZoom = zoom; }
    float isosurface() const { return mIsosurface; }
    void setIsosurface(float position) { mIsosurface = position; }

    // Conversions between normalised and data coordinates (no clamping).
    float greyFromPosition(float x) const { return x * mGreyRange + mGreyMin; }
    float positionFromGrey(float g) const { return (g - mGreyMin) * mGreyRangeInv; }
    float opacityFromPosition(float h) const { return h * mOpacityRange + mOpacityMin; }
    float positionFromOpacity(float v) const { return (v - mOpacityMin) * mOpacityRangeInv; }
    float calibratedFromPosition(float x) const { return x * mCalibratedRange + mCalibratedMin; }
    float positionFromCalibrated(float v) const;

    // Cell snapping. A position exactly on a boundary belongs to the cell on its right.
    // Inline: it runs for every handle when a curve is read.
    float snapToCellCentre(float x) const
    {
        return float((floorOf(double(mGreyCount) * double(x)) + 0.5) * double(mGreyStep));
    }
    float snapDownToCell(float x) const;
    float snapUpToCell(float x) const;

    int intervalCount() const { return static_cast<int>(mIntervals.size()); }
    OXWLUTIntervalInfo* interval(int i) const;
    // The first interval with from <= x <= to, or null.
    OXWLUTIntervalInfo* intervalAt(float x) const;
    // The first interval that contains x with a tolerance of 5e-7, so a point on a shared
    // border belongs to the interval on its left; -1 if none.
    int intervalIndexAt(float x) const;
    bool hasLeftNeighbour(int i) const { return i >= 1 && i < intervalCount(); }
    bool hasRightNeighbour(int i) const { return i >= 0 && i < intervalCount() - 1; }
    void setAllIntervalsEnabled(bool enabled);
    // Back to one interval [0, 1] with default curves named "Interval 1".
    void resetIntervals();

    // Editing of the interval list.
    bool newInterval(float x, bool atLeft);
    bool deleteInterval(float x, bool expandLeft);
    bool moveLeftBorder(int i, float x);
    bool moveRightBorder(int i, float x);
    bool removeEmptyIntervals();
    void renameIntervals();

    // Visible ranges of the editor; false when the range is empty, inverted or unchanged.
    bool setVisibleOpacityRange(float a, float b);
    bool setVisibleGreyRange(float a, float b);

private:
    // floor() without the library call that it costs on the baseline instruction set; exact,
    // as truncation is exact below 2^52.
    static double floorOf(double v)
    {
        if (!(std::fabs(v) < 4.0e15)) {
            return std::floor(v); // NaN, infinities, huge values
        }
        const double t = double(static_cast<long long>(v));
        return t > v ? t - 1.0 : t;
    }

    std::unique_ptr<OXWLUTIntervalInfo> createDefaultInterval();
    QString defaultName(int place) const;

    float mGreyMin;
    float mGreyMax;
    float mGreyRange;
    float mGreyRangeInv;
    float mGreyCount;
    float mGreyStep;
    float mOpacityMin;
    float mOpacityMax;
    float mOpacityRange;
    float mOpacityRangeInv;
    float mVisibleGreyFrom = 0.0f;
    float mVisibleGreyTo = 1.0f;
    float mVisibleOpacityFrom = 0.0f;
    float mVisibleOpacityTo = 1.0f;
    float mCalibratedMin;
    float mCalibratedMax;
    float mCalibratedRange;
    int mValueDecimals = 0;
    int mOpacityDecimals = 4;
    std::vector<std::unique_ptr<OXWLUTIntervalInfo>> mIntervals;
    float mVerticalZoom = 1.0f;
    float mIsosurface = 0.0f;
};
