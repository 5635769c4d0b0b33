// The classification preset record's conversion onto the grey-value range of the data it is
// applied to: relative presets stretched, absolute ones cut and clipped, others refused.

#include "OXMPresetClassificationProxyObject.h"
#include "OXWPresetConversion.h"

#include <OXMClassManager.h>
#include <OXMMetaClass.h>
#include <OXMObjectRefPtr.h>
#include <OXMProperty.h>
#include <OXMRegisteredEnum.h>
#include <OXMSceneNames.h>
#include <OXMVector2.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

const char* const Ns = "oxwclassificationtool";

OXMenum plugin(const char* name)
{
    return OXMRegisteredEnum(name, false, Ns).getValue();
}

using Handles = std::vector<OXMVector2<float>>;
using Range = OXWPresetConversion::Range;

struct Record
{
    Record() { OXMSceneNames::registerSceneClasses(); }
    OXMObjectRefPtr object{"OXMPresetClassificationProxyObject"};
    OXMObject* opacity() const { return object->getLinkedObject(OXM::Opacity); }
};

const OXMenum FloatBorders = plugin("IntervalFloatIndexList");

} // namespace

TEST(PresetConversion, IntervalBordersAreStretchedOrCutOntoTheRange)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct
    {
        const char* what;
        std::vector<int> borders;
        std::vector<float> floatBorders;
        Range range;
        bool absolute;
        bool converts;
        std::vector<int> expected;
        std::vector<std::string> names; // kept with their intervals
    } cases[] = {
        {"stretched", {10, 20, 30}, {}, {0, 100}, false, true, {0, 50, 100}, {"A", "B"}},
        {"float borders", {10, 20, 30}, {0, 1, 4}, {0, 8}, false, true, {0, 2, 8}, {"A", "B"}},
        {"first = last", {5, 9, 5}, {}, {0, 100}, false, false, {5, 9, 5}, {"A", "B"}},
        {"one border", {5}, {}, {0, 100}, false, false, {5}, {}},
        {"not a number", {1, 2}, {0, nan}, {0, 100}, false, false, {1, 2}, {"A"}},
        {"above dropped", {0, 50, 300, 400}, {}, {20, 200}, true, true, {20, 50, 200}, {"A", "B"}},
        {"below skipped", {0, 10, 40, 90}, {}, {20, 200}, true, true, {20, 40, 90}, {"B", "C"}},
        {"none in range", {300, 400}, {}, {20, 200}, true, true, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Record r;
        const std::size_t n = c.borders.empty() ? 0 : c.borders.size() - 1;
        const std::vector<OXMenum> modes = {OXM::Disabled, OXM::Enabled, OXM::Disabled};
        const std::vector<const char*> names = {"A", "B", "C"};
        ASSERT_TRUE(r.object->setArray(OXM::IntervalIndexList, c.borders));
        ASSERT_TRUE(r.object->setArray(FloatBorders, c.floatBorders));
        ASSERT_TRUE(r.object->setArray(OXM::IntervalModeList,
                                       std::vector<OXMenum>(modes.begin(), modes.begin() + n)));
        ASSERT_TRUE(r.object->setArray(OXM::IntervalNameList,
                                       std::vector<const char*>(names.begin(), names.begin() + n)));
        EXPECT_EQ(OXWPresetConversion::convertIntervals(r.object.get(), c.range, c.absolute),
                  c.converts);
        std::vector<int> borders;
        std::vector<OXMenum> keptModes;
        std::vector<const char*> keptNames;
        r.object->getArray(OXM::IntervalIndexList, borders);
        r.object->getArray(OXM::IntervalModeList, keptModes);
        r.object->getArray(OXM::IntervalNameList, keptNames);
        EXPECT_EQ(borders, c.expected);
        ASSERT_EQ(keptNames.size(), c.names.size());
        ASSERT_EQ(keptModes.size(), c.names.size());
        for (std::size_t i = 0; i < keptNames.size(); ++i) {
            EXPECT_EQ(keptNames[i], c.names[i]);
            EXPECT_EQ(keptModes[i], modes[std::size_t(c.names[i][0] - 'A')]) << "with its name";
        }
    }
    Record mismatched;
    mismatched.object->setArray(OXM::IntervalIndexList, std::vector<int>{0, 50, 100});
    EXPECT_FALSE(OXWPresetConversion::convertIntervals(mismatched.object.get(), {0, 10}, true))
        << "two intervals need two modes and two names";
}

TEST(PresetConversion, HandlesAreStretchedOrClippedWithInterpolatedEnds)
{
    const float inf = std::numeric_limits<float>::infinity();
    const struct
    {
        const char* what;
        Handles handles;
        Range range;
        bool absolute;
        bool converts;
        Handles expected;
    } cases[] = {
        {"stretched",
         {{10, 0}, {20, 0.5f}, {30, 1}},
         {0, 100},
         false,
         true,
         {{0, 0}, {50, 0.5f}, {100, 1}}},
        {"first and last at one x", {{10, 0}, {10, 1}}, {0, 100}, false, false, {{10, 0}, {10, 1}}},
        {"infinite", {{10, 0}, {inf, 1}}, {0, 100}, false, false, {{10, 0}, {inf, 1}}},
        {"both ends clipped", {{0, 0}, {100, 1}}, {20, 80}, true, true, {{20, 0.2f}, {80, 0.8f}}},
        {"inner handles kept",
         {{0, 0}, {40, 1}, {60, 0}, {100, 1}},
         {20, 80},
         true,
         true,
         {{20, 0.5f}, {40, 1}, {60, 0}, {80, 0.5f}}},
        {"end inside", {{0, 0}, {50, 1}}, {20, 80}, true, true, {{20, 0.4f}, {50, 1}}},
        {"first at r0 stays", {{20, 0}, {100, 1}}, {20, 80}, true, true, {{20, 0}, {100, 1}}},
        {"nothing right of r0", {{0, 0}, {10, 1}}, {20, 80}, true, true, {{0, 0}, {10, 1}}},
        {"empty", {}, {0, 10}, false, true, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Record r;
        ASSERT_TRUE(r.opacity()->setArray(OXM::LookupTableHandleList, c.handles));
        EXPECT_EQ(OXWPresetConversion::convertHandles(r.opacity(), c.range, c.absolute),
                  c.converts);
        Handles handles;
        r.opacity()->getArray(OXM::LookupTableHandleList, handles);
        ASSERT_EQ(handles.size(), c.expected.size());
        for (std::size_t k = 0; k < handles.size(); ++k) {
            EXPECT_FLOAT_EQ(handles[k].x, c.expected[k].x) << k;
            EXPECT_FLOAT_EQ(handles[k].y, c.expected[k].y) << k;
        }
    }
    EXPECT_FALSE(OXWPresetConversion::convertHandles(Record().object.get(), {0, 1}, false))
        << "an object without handle list";
}
