#include "OXMTypeInfo.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

namespace {
const OXMTypeInfo::Channel& channel(OXMenum type)
{
    static OXMTypeInfo keep;
    keep = OXMTypeInfo(type);
    const OXMTypeInfo::Channel* c = keep.getChannel(OXMenum());
    EXPECT_NE(c, nullptr);
    return *c;
}
} // namespace

TEST(OXMTypeInfo, IntegerTypesClampAndRoundAtTheirEdges)
{
    struct Case
    {
        OXMenum type;
        double min;
        double max;
    } cases[] = {
        {OXM::Int8, -128, 127},
        {OXM::UInt8, 0, 255},
        {OXM::Int16, -32768, 32767},
        {OXM::UInt16, 0, 65535},
        {OXM::Int32, -2147483648.0, 2147483647.0},
        {OXM::UInt32, 0, 4294967295.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type.toString().toStdString());
        const OXMTypeInfo::Channel& ch = channel(c.type);
        EXPECT_EQ(ch.getDataType(), c.type);
        EXPECT_EQ(ch.intToNative(static_cast<long long>(c.max)), c.max);
        EXPECT_EQ(ch.intToNative(static_cast<long long>(c.max) + 1), c.max);
        EXPECT_EQ(ch.intToNative(static_cast<long long>(c.min)), c.min);
        EXPECT_EQ(ch.intToNative(static_cast<long long>(c.min) - 1), c.min);
        EXPECT_EQ(ch.floatToNative(c.max + 0.4), c.max);
        EXPECT_EQ(ch.floatToNative(c.max - 0.6), c.max - 1);
        EXPECT_EQ(ch.floatToNative(c.min - 1e3), c.min);
        EXPECT_EQ(ch.floatToNative(c.min + 0.5), c.min == 0 ? 1 : c.min); // halves away from 0
        EXPECT_EQ(ch.floatToNative(std::nan("")), 0);
        EXPECT_EQ(ch.nativeToFloat(c.max), float(c.max));
    }
    EXPECT_EQ(channel(OXM::UInt8).floatToNative(127.5), 128);
    EXPECT_EQ(channel(OXM::Int8).floatToNative(-1.5), -2);
}

TEST(OXMTypeInfo, FloatTypesKeepTheirPrecisionAndFiniteRange)
{
    const OXMTypeInfo::Channel& f32 = channel(OXM::Float32);
    EXPECT_EQ(f32.floatToNative(0.1), double(0.1f));
    EXPECT_EQ(f32.floatToNative(1e300), double(FLT_MAX));
    EXPECT_EQ(f32.floatToNative(-1e300), -double(FLT_MAX));
    EXPECT_EQ(f32.intToNative(16777217), 16777216.0); // nearest float
    const OXMTypeInfo::Channel& f64 = channel(OXM::Float64);
    EXPECT_EQ(f64.floatToNative(0.1), 0.1);
    EXPECT_EQ(f64.nativeToFloat(0.1), 0.1f);
    EXPECT_FALSE(f64.isInteger());
}

TEST(OXMTypeInfo, ColourTypesHaveNamedChannels)
{
    const OXMTypeInfo rgba16(OXM::Rgba16);
    EXPECT_EQ(rgba16.getChannelCount(), 4);
    EXPECT_EQ(rgba16.getSize(), 8);
    ASSERT_NE(rgba16.getChannel(OXM::Alpha), nullptr);
    EXPECT_EQ(rgba16.getChannel(OXM::Alpha)->getDataType(), OXM::UInt16);
    EXPECT_EQ(rgba16.getChannel(OXM::Alpha)->floatToNative(70000), 65535);
    const OXMTypeInfo rgb8(OXM::Rgb8);
    EXPECT_EQ(rgb8.getChannel(OXM::Alpha), nullptr);
    EXPECT_EQ(rgb8.getChannel(2)->getID(), OXM::Blue);
    EXPECT_EQ(rgb8.getChannel(3), nullptr);
    EXPECT_EQ(rgb8.getSize(), 3);
    EXPECT_EQ(OXMTypeInfo(OXM::Rgb16).getChannel(OXM::Red)->getMaximum(), 65535);
    EXPECT_EQ(OXMTypeInfo(OXM::Rgba8).getSize(), 4);

    const OXMTypeInfo unknown(OXM::Opacity);
    EXPECT_FALSE(unknown.isValid());
    EXPECT_EQ(unknown.getChannel(OXMenum()), nullptr);
    EXPECT_EQ(OXMTypeInfo(OXM::Int16), OXMTypeInfo(OXM::Int16));
    EXPECT_NE(OXMTypeInfo(OXM::Int16), OXMTypeInfo(OXM::UInt16));
}
