#pragma once

#include "OXMenum.h"

struct OXMTypeInfoTables;

// A data type of voxels: 8/16/32-bit signed and unsigned integers (OXM::Int8 .. OXM::UInt32),
// 32/64-bit floats (OXM::Float32, OXM::Float64) and the colour types OXM::Rgb8, OXM::Rgb16,
// OXM::Rgba8, OXM::Rgba16. A small value: copyable and comparable.
class OXMTypeInfo
{
public:
    // One component of the type, with the conversions between its native values and floats.
    // Native values are returned as double (exact for every supported integer type).
    class Channel
    {
    public:
        // The channel's name: OXM::Gray for scalar types, OXM::Red/Green/Blue/Alpha else.
        OXMenum getID() const { return mID; }
        // The scalar type of the component (OXM::UInt8 for a channel of OXM::Rgb8).
        OXMenum getDataType() const { return mType; }
        int getSize() const { return mSize; }
        bool isInteger() const { return mInteger; }
        double getMinimum() const { return mMin; }
        double getMaximum() const { return mMax; }

        // The value clamped into the type's range.
        double intToNative(long long value) const;
        // Integer types: rounded to the nearest value (halves away from zero) and clamped;
        // NaN gives 0. Float32: the nearest float, clamped to the finite range.
        double floatToNative(double value) const;
        float nativeToFloat(double native) const;

    private:
        friend class OXMTypeInfo;
        friend struct ::OXMTypeInfoTables;
        Channel(OXMenum id, OXMenum type, int size, bool integer, double min, double max)
            : mID(id), mType(type), mSize(size), mInteger(integer), mMin(min), mMax(max)
        {
        }
        OXMenum mID;
        OXMenum mType;
        int mSize;
        bool mInteger;
        double mMin;
        double mMax;
    };

    OXMTypeInfo() = default;
    explicit OXMTypeInfo(OXMenum id);

    OXMenum getID() const { return mID; }
    bool isValid() const { return mID.isValid(); }
    int getChannelCount() const;
    // The channel with that name; an invalid name gives the first channel. Null if none.
    const Channel* getChannel(OXMenum channelID) const;
    const Channel* getChannel(int index) const;
    // Bytes per voxel.
    int getSize() const;

    bool operator==(const OXMTypeInfo& o) const { return mID == o.mID; }
    bool operator!=(const OXMTypeInfo& o) const { return mID != o.mID; }

private:
    OXMenum mID; // invalid for unsupported types
};
