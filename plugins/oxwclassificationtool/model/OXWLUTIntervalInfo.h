#pragma once

#include <OXMRGB8.h>
#include <OXMVector2.h>

#include <QString>

#include <cstddef>
#include <vector>

class OXWLUTObjectInfo;

// One interval of a classification: a stretch [from, to] of the normalised grey-value axis
// with a name, an enabled flag and four piecewise-linear curves (opacity, red, green, blue).
//
// Each curve is kept twice. The reference handles hold the curve as the user last shaped
// it, in local coordinates (0 = left border, 1 = right border). The fitted handles are
// derived from them for the current borders: end handles pinned to the centres of the
// first and last cells, inner handles snapped to cell centres, collisions resolved. Every
// border change refits from the reference handles, so moving a border back and forth never
// degrades a curve. Handle edits act on the fitted handles and are then committed (copied
// into the reference handles).
class OXWLUTIntervalInfo
{
public:
    enum Channel
    {
        OpacityChannel = 1,
        RedChannel = 2,
        GreenChannel = 3,
        BlueChannel = 4,
        AllChannels = 255
    };

    using Handle = OXMVector2<float>;
    using HandleList = std::vector<Handle>;

    // Without an object the interval has no curves; with one, every channel gets its
    // default curve (opacity ramp 0 -> 1, colours 255.5).
    explicit OXWLUTIntervalInfo(OXWLUTObjectInfo* objectInfo);
    OXWLUTIntervalInfo(const OXWLUTIntervalInfo& other);
    OXWLUTIntervalInfo& operator=(const OXWLUTIntervalInfo& other);
    virtual ~OXWLUTIntervalInfo();

    OXWLUTObjectInfo* objectInfo() const { return mObjectInfo; }
    float from() const { return mFrom; }
    float to() const { return mTo; }
    float width() const { return mWidth; }
    const QString& name() const { return mName; }

    // The fitted handles of a channel; an empty list for an invalid channel or no object.
    const HandleList& handles(int channel) const;
    // The reference handles of a channel; an empty list for an invalid channel.
    const HandleList& referenceHandles(int channel) const;

    bool setName(const QString& name);
    bool setEnabled(bool enabled);
    bool isEnabled() const;
    // Wider than one and a half cells.
    bool isWide() const;

    float globalFromLocal(float t) const { return t * mWidth + mFrom; }
    float localFromGlobal(float x) const { return (x - mFrom) * mWidthInv; }

    bool setBorders(float from, float to);
    bool fitChannel(int channel);
    bool commitChannel(int channel);
    bool resetChannel(int channel);
    bool setColour(const OXMRGB8& colour);
    bool setReferenceHandles(int channel, const HandleList& handles);
    HandleList globalCurve(int channel) const;

    // Hit tests: x is a position and rx a radius in positions; y and ry are channel units.
    int findHandle(int channel, float x, float y, float rx, float ry) const;
    int findSegment(int channel, float x, float y, float rx, float ry) const;
    int findSegmentWide(int channel, float x, float y, float rx, float ry) const;
    bool isHandleIndexValid(int channel, int k) const;
    bool isHandleMovable(int channel, int k) const;
    bool isSegmentMovable(int channel, int k) const;
    bool isSegmentLevel(int channel, int k) const;

    // Edits: x is a position, y a channel value.
    bool moveHandle(int channel, int k, float x, float y);
    bool moveSegment(int channel, int k, float x, float y);
    bool insertHandle(int channel, float x, float y);
    // The same; with commit false the reference curve is left as it is, so that a series of
    // insertions ends with one commitChannel.
    bool insertHandle(int channel, float x, float y, bool commit);
    // Whether a fitted handle of the channel lies exactly at position x.
    bool hasHandleAt(int channel, float x) const;
    bool deleteHandle(int channel, int k);

    static bool isValidChannel(int channel)
    {
        return channel >= OpacityChannel && channel <= BlueChannel;
    }

private:
    static constexpr int ChannelCount = 4;

    bool isUsable(int channel) const { return mObjectInfo && isValidChannel(channel); }
    float cellStep() const;
    float snapToCellCentre(float x) const;
    // Local x of the centres of the interval's first and last cells.
    float firstCentre() const;
    float lastCentre() const;
    // Runs one channel's operation, or all four for AllChannels (true unless stopAtFailure
    // and one of them failed).
    bool forChannels(int channel, bool (OXWLUTIntervalInfo::*operation)(int), bool stopAtFailure);
    bool fitOne(int channel);
    bool commitOne(int channel);
    bool resetOne(int channel);
    void resolveCollisions(HandleList& fitted) const;
    int findSegmentWithin(int channel, float x, float y, float rx, float ry, bool wide) const;

    OXWLUTObjectInfo* mObjectInfo;
    QString mName;
    bool mEnabled = true;
    float mFrom = 0.0f;
    float mTo = 1.0f;
    float mWidth = 1.0f;
    float mWidthInv = 1.0f;
    HandleList mHandles[ChannelCount];
    // Where the last insertion or lookup of each channel ended: a series of ascending
    // insertions (re-reading a curve) then finds its place at once. Only a guess; every use
    // checks it against the handles first.
    mutable std::size_t mSearchHint[ChannelCount] = {0, 0, 0, 0};
    float mBaseValue[ChannelCount] = {0.0f, 0.0f, 0.0f, 0.0f};
    HandleList mReferenceHandles[ChannelCount];
};
