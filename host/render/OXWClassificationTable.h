#pragma once

#include <OXMenum.h>

#include <QRgb>

#include <cmath>
#include <vector>

class OXMObject;

// The classification of a volume or region of interest as one RGBA entry per grey-value bin,
// shared by every view that draws volumes: the slices take the packed entries, the 3D view
// hands the float entries to its renderer.
//
// build(object) finds, through the objects' properties:
//   - the material (link OXM::ApplicationSampleMaterial of the object),
//   - the sample grid (link OXM::SampleGrid of the object, else of the owner of its parent
//     link, i.e. a region's volume),
//   - the bin range: the index range of the "Histogram" array of the histogram result (first
//     entry of OXM::HistogramList whose channel reads the opacity channel's input channel, the
//     object's list or else its parent's) when it holds values; otherwise the range the
//     histogram would have, counted over the whole grid (integer data: every integer value
//     from the smallest to the largest voxel value).
//
// Entry k (bin k), each component 0..1:
//   - alpha: the opacity channel at x = k times the material's transparency scale; 0 for a bin
//     outside every interval of OXM::IntervalIndexList (interval i holds the bins b(i)+1 ..
//     b(i+1)) or in an interval whose OXM::IntervalModeList entry is OXM::Disabled;
//   - colour: the material's colour under full light without highlight, the ambient and the
//     diffuse colour at k weighted by their intensities, (Ka·ambient + Kd·diffuse) / (Ka + Kd),
//     so that a renderer that multiplies it by Ka + Kd·(N·L) lights it as the material says.
// Channels are resolved through their OXM::Reference links while their OXM::MapMode is
// OXM::Reference; a channel in OXM::Constant mode is its OXM::Scale everywhere, a lookup table
// is the piecewise-linear curve of its handles (in ascending x) times OXM::Scale plus OXM::Bias.
// The material's scalars (intensities, shininess, transparency, specular colour) are read as
// constants: a lookup table there counts with its value at the middle of the bin range.
//
// Floating-point data (and integer data too wide for one bin per grey value, whose histogram's
// data range is not its index range): the bins are those of the host's histogram of such data,
// binCount bins whose centres run evenly from the smallest to the largest value (the histogram
// result's data range when there is a result, else counted over the grid); a value v belongs to bin
// floor((v - low) * (bins - 1) / (high - low) + 0.5). Colour data use the component that the
// opacity channel's OXM::InputChannel names.
//
// Cost: one linear sweep per curve over the bins after the bin range is known (no histogram
// pass when a histogram result exists); see bench/host/render.
class OXWClassificationTable
{
public:
    enum class Status
    {
        Empty,      // nothing built yet / no object
        NoMaterial, // the object has no material
        NoGrid,     // no sample grid, or a grid without voxels
        NoRange,    // the bin range could not be determined
        NoOpacity,  // the material has no opacity channel
        Ok,
    };

    // The material's scalars, for renderers that light the colour.
    struct Lighting
    {
        float ambient = 0.2f;
        float diffuse = 0.7f;
        float specular = 0.1f;
        float shininess = 10.0f;
        float specularColour[3] = {1.0f, 1.0f, 1.0f};
    };

    OXWClassificationTable() = default;

    // Rebuilds the table for the object (a volume or a region of interest). Returns the new
    // status; on failure the table is empty (every lookup answers transparent).
    Status build(const OXMObject* object);
    void clear();

    Status getStatus() const { return mStatus; }
    bool isValid() const { return mStatus == Status::Ok; }

    int getFirstBin() const { return mFirst; }
    int getLastBin() const { return mLast; }
    int getBinCount() const { return mLast - mFirst + 1; }
    // Red, green, blue, alpha of every bin from the first, 0..1.
    const std::vector<float>& getRGBA() const { return mRGBA; }
    const Lighting& getLighting() const { return mLighting; }
    // The material's transparency scale (already in every alpha), for surfaces.
    float getTransparency() const { return mTransparency; }
    // The ambient (0 red, 1 green, 2 blue) and the diffuse colour (3, 4, 5) per bin, 0..1, for
    // renderers that light them apart; as the last build left them.
    const std::vector<float>& getColourChannel(int index) const { return mCurves[index + 1]; }
    // The gradient channel per bin (a factor of the opacity as a function of the gradient's
    // magnitude, in grey values per voxel, read at first + magnitude); empty while the channel
    // is 1 everywhere, as it is by default.
    const std::vector<float>& getGradientOpacity() const { return mGradientOpacity; }
    // Premultiplied ARGB entries (QImage::Format_ARGB32_Premultiplied layout), one per bin;
    // made from the float entries on the first call after a build.
    const std::vector<QRgb>& getTable() const;
    // The entry of bin k; transparent outside the bin range.
    QRgb entryForBin(long long k) const
    {
        const std::vector<QRgb>& table = getTable();
        const long long i = k - mFirst;
        return i >= 0 && i < (long long)table.size() ? table[std::size_t(i)] : 0u;
    }

    // Floating-point data: the bin a native value falls into; integer data: the value rounded.
    // A value outside the bin range (or not a number) gives getLastBin() + 1, whose entry is
    // transparent.
    bool isFloatBinning() const { return mFloat; }
    long long binForValue(double native) const
    {
        const double k = mFloat ? std::floor((native - mLow) * mScale + 0.5)
                                : std::floor(native + 0.5) - double(mFirst);
        if (!(k >= 0.0 && k <= double(mLast) - double(mFirst)))
            return (long long)mLast + 1;
        return (long long)mFirst + (long long)k;
    }
    QRgb entryForValue(double native) const { return entryForBin(binForValue(native)); }
    // The native value at the centre of bin k (k itself for integer data).
    double valueForBin(double k) const
    {
        return mFloat && mScale > 0.0 ? mLow + (k - mFirst) / mScale : k;
    }

    // The objects the table was built from: the object, its material, the channels read (and
    // every object on their reference chains), the grid, the histogram and its result. A
    // change message of any of them can change the table.
    const std::vector<OXMObject*>& getSources() const { return mSources; }
    // The grid whose voxels the table classifies, the region's volume for a region.
    OXMObject* getGrid() const { return mGrid; }
    // The data component that the table classifies (0 for scalar data).
    int getComponent() const { return mComponent; }

    // The material of an object (null if none).
    static OXMObject* findMaterial(const OXMObject* object);
    // The sample grid of an object: its own link, else its parent owner's.
    static OXMObject* findGrid(const OXMObject* object);
    // The channel a material's channel link names, followed through reference links (null for
    // a missing link or a reference cycle). Every object visited is appended to visited.
    static OXMObject* resolveChannel(const OXMObject* material, OXMenum channelID,
                                     std::vector<OXMObject*>* visited = nullptr);

private:
    void addSource(OXMObject* object);
    bool findBinRange(const OXMObject* object, OXMenum inputChannel);
    void readLighting(const OXMObject* material, std::vector<OXMObject*>& visited);
    void fillEntries(const OXMObject* material, const OXMObject* opacity,
                     std::vector<OXMObject*>& visited);
    void clearOutsideEnabledIntervals(const OXMObject* material);
    void fillGradientOpacity(const OXMObject* material, std::vector<OXMObject*>& visited);
    void pack() const;

    // The bin range counted over a grid without histogram values. The grid pointer only
    // identifies the grid (with its data version); it is never dereferenced from here.
    struct RangeCache
    {
        const void* grid = nullptr;
        int dataVersion = -1;
        OXMenum channel;
        int first = 0;
        int last = -1;
        bool binned = false;
        double low = 0.0;
        double scale = 0.0;
    };

    RangeCache mRangeCache;
    Status mStatus = Status::Empty;
    int mFirst = 0;
    int mLast = -1;
    bool mFloat = false;
    double mLow = 0.0;
    double mScale = 0.0;
    int mComponent = 0;
    OXMObject* mGrid = nullptr;
    Lighting mLighting;
    float mTransparency = 1.0f;
    std::vector<float> mRGBA;
    std::vector<float> mGradientOpacity;
    mutable std::vector<QRgb> mTable;
    mutable bool mPacked = true;
    // One curve per bin while the entries are filled (kept to spare the allocations).
    std::vector<float> mCurves[7];
    std::vector<OXMObject*> mSources;
};
