#include "OXMInterval.h"
#include "OXMRGB8.h"
#include "OXMRGBA.h"
#include "OXMRGBf.h"
#include "OXMVector2.h"
#include "OXMVector3.h"

#include <gtest/gtest.h>

TEST(OXMValueTypes, NamedColoursOfBytesScaleWithTheFactorAndStayOpaque)
{
    using C = OXMRGBA<unsigned char>;
    EXPECT_EQ(C::WHITE(), C(255, 255, 255, 255));
    EXPECT_EQ(C::BLACK(), C(0, 0, 0, 255));
    EXPECT_EQ(C::RED(1.0), C(255, 0, 0));
    EXPECT_EQ(C::GREEN(0.5), C(0, 128, 0));
    EXPECT_EQ(C::BLUE(1.0), C(0, 0, 255));
    EXPECT_EQ(C::CYAN(1.0), C(0, 255, 255));
    EXPECT_EQ(C::MAGENTA(1.0), C(255, 0, 255));
    EXPECT_EQ(C::YELLOW(1.0), C(255, 255, 0));
    EXPECT_EQ(C::RED(2.0), C::RED(1.0)); // clamped
    EXPECT_EQ(C::RED(-1.0).r, 0);
}

TEST(OXMValueTypes, NamedColoursOfFloatsRunToOne)
{
    using C = OXMRGBA<float>;
    EXPECT_EQ(C::WHITE(), C(1.f, 1.f, 1.f, 1.f));
    EXPECT_FLOAT_EQ(C::YELLOW(0.25f).g, 0.25f);
    EXPECT_EQ(C::YELLOW(0.25f).b, 0.f);
}

TEST(OXMValueTypes, VectorsAndIntervals)
{
    const OXMVector3<float> a(1, 2, 3), b(4, 5, 6);
    EXPECT_EQ(a + b, OXMVector3<float>(5, 7, 9));
    EXPECT_EQ((a + b) / 2.0f, OXMVector3<float>(2.5f, 3.5f, 4.5f));
    EXPECT_EQ(b - a, OXMVector3<float>(3, 3, 3));
    EXPECT_EQ(OXMVector2<int>(5, 7) - OXMVector2<int>(1, 2), OXMVector2<int>(4, 5));
    EXPECT_EQ(b[2], 6);
    EXPECT_NE(a, b);
    EXPECT_EQ(OXMVector2<int>(1, 2) * 3, OXMVector2<int>(3, 6));
    EXPECT_EQ(OXMInterval(3, 7).size(), 5);
    EXPECT_TRUE(OXMInterval().isEmpty());
    EXPECT_TRUE(OXMInterval(3, 7).contains(7));
    EXPECT_FALSE(OXMInterval(3, 7).contains(8));
    EXPECT_NE(OXMRGBf(1, 0, 0), OXMRGBf(1, 0, 0.5f));
    EXPECT_EQ(OXMRGB8(1, 2, 3), OXMRGB8(1, 2, 3));
}
