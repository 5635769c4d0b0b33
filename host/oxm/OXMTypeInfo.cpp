#include "OXMTypeInfo.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

struct TypeTable
{
    OXMenum id;
    int count;
    const OXMTypeInfo::Channel* channels[4];
};

} // namespace

// The tables are built by a member so that the private channel constructor is reachable.
static const TypeTable* findType(OXMenum id);

double OXMTypeInfo::Channel::intToNative(long long value) const
{
    const double v = double(value);
    if (v <= mMin)
        return mMin;
    if (v >= mMax)
        return mMax;
    if (!mInteger && mSize == 4)
        return double(float(v));
    return v;
}

double OXMTypeInfo::Channel::floatToNative(double value) const
{
    if (std::isnan(value))
        return mInteger ? 0.0 : value;
    if (value <= mMin)
        return mMin;
    if (value >= mMax)
        return mMax;
    if (mInteger)
        return std::round(value);
    if (mSize == 4)
        return double(float(value));
    return value;
}

float OXMTypeInfo::Channel::nativeToFloat(double native) const
{
    return float(native);
}

OXMTypeInfo::OXMTypeInfo(OXMenum id) : mID(findType(id) ? id : OXMenum()) {}

int OXMTypeInfo::getChannelCount() const
{
    const TypeTable* t = findType(mID);
    return t ? t->count : 0;
}

const OXMTypeInfo::Channel* OXMTypeInfo::getChannel(OXMenum channelID) const
{
    const TypeTable* t = findType(mID);
    if (!t)
        return nullptr;
    if (!channelID.isValid())
        return t->channels[0];
    for (int i = 0; i < t->count; ++i) {
        if (t->channels[i]->getID() == channelID)
            return t->channels[i];
    }
    return nullptr;
}

const OXMTypeInfo::Channel* OXMTypeInfo::getChannel(int index) const
{
    const TypeTable* t = findType(mID);
    return t && index >= 0 && index < t->count ? t->channels[index] : nullptr;
}

int OXMTypeInfo::getSize() const
{
    const TypeTable* t = findType(mID);
    if (!t)
        return 0;
    int size = 0;
    for (int i = 0; i < t->count; ++i)
        size += t->channels[i]->getSize();
    return size;
}

struct OXMTypeInfoTables
{
    using C = OXMTypeInfo::Channel;
    static C make(OXMenum id, OXMenum type, int size, bool integer, double min, double max)
    {
        return C(id, type, size, integer, min, max);
    }
};

static const TypeTable* findType(OXMenum id)
{
    using T = OXMTypeInfoTables;
    static const OXMTypeInfo::Channel i8 = T::make(OXM::Gray, OXM::Int8, 1, true, -128, 127);
    static const OXMTypeInfo::Channel u8 = T::make(OXM::Gray, OXM::UInt8, 1, true, 0, 255);
    static const OXMTypeInfo::Channel i16 = T::make(OXM::Gray, OXM::Int16, 2, true, -32768, 32767);
    static const OXMTypeInfo::Channel u16 = T::make(OXM::Gray, OXM::UInt16, 2, true, 0, 65535);
    static const OXMTypeInfo::Channel i32 =
        T::make(OXM::Gray, OXM::Int32, 4, true, double(INT32_MIN), double(INT32_MAX));
    static const OXMTypeInfo::Channel u32 =
        T::make(OXM::Gray, OXM::UInt32, 4, true, 0, double(UINT32_MAX));
    static const OXMTypeInfo::Channel f32 =
        T::make(OXM::Gray, OXM::Float32, 4, false, -double(FLT_MAX), double(FLT_MAX));
    static const OXMTypeInfo::Channel f64 =
        T::make(OXM::Gray, OXM::Float64, 8, false, -DBL_MAX, DBL_MAX);
    static const OXMTypeInfo::Channel r8 = T::make(OXM::Red, OXM::UInt8, 1, true, 0, 255);
    static const OXMTypeInfo::Channel g8 = T::make(OXM::Green, OXM::UInt8, 1, true, 0, 255);
    static const OXMTypeInfo::Channel b8 = T::make(OXM::Blue, OXM::UInt8, 1, true, 0, 255);
    static const OXMTypeInfo::Channel a8 = T::make(OXM::Alpha, OXM::UInt8, 1, true, 0, 255);
    static const OXMTypeInfo::Channel r16 = T::make(OXM::Red, OXM::UInt16, 2, true, 0, 65535);
    static const OXMTypeInfo::Channel g16 = T::make(OXM::Green, OXM::UInt16, 2, true, 0, 65535);
    static const OXMTypeInfo::Channel b16 = T::make(OXM::Blue, OXM::UInt16, 2, true, 0, 65535);
    static const OXMTypeInfo::Channel a16 = T::make(OXM::Alpha, OXM::UInt16, 2, true, 0, 65535);
    static const TypeTable tables[] = {
        {OXM::Int8, 1, {&i8}},
        {OXM::UInt8, 1, {&u8}},
        {OXM::Int16, 1, {&i16}},
        {OXM::UInt16, 1, {&u16}},
        {OXM::Int32, 1, {&i32}},
        {OXM::UInt32, 1, {&u32}},
        {OXM::Float32, 1, {&f32}},
        {OXM::Float64, 1, {&f64}},
        {OXM::Rgb8, 3, {&r8, &g8, &b8}},
        {OXM::Rgb16, 3, {&r16, &g16, &b16}},
        {OXM::Rgba8, 4, {&r8, &g8, &b8, &a8}},
        {OXM::Rgba16, 4, {&r16, &g16, &b16, &a16}},
    };
    for (const TypeTable& t : tables) {
        if (t.id == id)
            return &t;
    }
    return nullptr;
}
