#include "OXMRegisteredEnum.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <vector>

namespace {
const char* const NS = "oxmtest.enums";
}

TEST(OXMEnum, SameNameInSameNamespaceYieldsSameValueFromEveryRegistration)
{
    OXMRegisteredEnum a("ShadingModel", false, NS);
    OXMRegisteredEnum b("ShadingModel", false, NS);
    OXMRegisteredEnum other("ShadingModel", false, "oxmtest.other");
    OXMRegisteredEnum c("ScatterHQ", false, NS);
    EXPECT_TRUE(a.getValue().isValid());
    EXPECT_EQ(OXMenum(a), OXMenum(b));
    EXPECT_NE(a.getValue(), other.getValue());
    EXPECT_NE(a.getValue(), c.getValue());
    EXPECT_STREQ(b.getName(), "ShadingModel");
    EXPECT_STREQ(b.getNamespace(), NS);
}

TEST(OXMEnum, CountAndFindFollowRegistrationsAndWithdrawal)
{
    const char* ns = "oxmtest.count";
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(ns), 0);
    auto a = std::make_unique<OXMRegisteredEnum>("A", false, ns);
    auto a2 = std::make_unique<OXMRegisteredEnum>("A", true, ns);
    auto b = std::make_unique<OXMRegisteredEnum>("B", true, ns);
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(ns), 3);
    EXPECT_EQ(OXMRegisteredEnum::getValueCount(ns), 2);

    OXMRegisteredEnum* found[8] = {};
    ASSERT_EQ(OXMRegisteredEnum::findEnums(found, 8, ns), 3);
    EXPECT_EQ(found[0], a.get());
    EXPECT_EQ(found[1], a2.get());
    EXPECT_EQ(found[2], b.get());
    EXPECT_FALSE(found[0]->isOwned());
    EXPECT_TRUE(found[2]->isOwned());
    EXPECT_EQ(OXMRegisteredEnum::findEnums(found, 2, ns), 2); // never more than asked

    const OXMenum bValue = *b;
    b.reset();
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(ns), 2);
    EXPECT_EQ(OXMRegisteredEnum::getValueCount(ns), 1);
    EXPECT_FALSE(OXMenum::find("B", ns).isValid());
    EXPECT_STREQ(bValue.getName(), "B"); // a withdrawn value still prints its name

    a.reset();
    EXPECT_EQ(OXMenum::find("A", ns), a2->getValue()); // one registration of A is left
    OXMRegisteredEnum again("B", false, ns);
    EXPECT_EQ(again.getValue(), bValue); // re-registration gives the value back
}

TEST(OXMEnum, TerminationWalkDestroysOnlyOwnedRegistrations)
{
    const char* ns = "oxmtest.walk";
    OXMRegisteredEnum mine("Mine", false, ns);
    new OXMRegisteredEnum("Owned1", true, ns);
    new OXMRegisteredEnum("Owned2", true, ns);
    const int n = OXMRegisteredEnum::getEnumCount(ns);
    std::vector<OXMRegisteredEnum*> all(static_cast<std::size_t>(n));
    const int found = OXMRegisteredEnum::findEnums(all.data(), n, ns);
    for (int i = found - 1; i >= 0; --i) {
        if (all[static_cast<std::size_t>(i)]->isOwned())
            delete all[static_cast<std::size_t>(i)];
    }
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(ns), 1);
    EXPECT_TRUE(OXMenum::find("Mine", ns).isValid());
}

TEST(OXMEnum, HostValuesExistWithNamesInTheHostNamespace)
{
    EXPECT_STREQ(OXM::Opacity.getName(), "Opacity");
    EXPECT_STREQ(OXM::NoError.getNamespace(), "OXM");
    EXPECT_EQ(OXMenum::find("Phong"), OXM::Phong);
    EXPECT_EQ(OXMenum::find("Phong", "OXM"), OXM::Phong);
    EXPECT_NE(OXM::True, OXM::Enabled);
    OXMRegisteredEnum again("Opacity");
    EXPECT_EQ(again.getValue(), OXM::Opacity);

    std::ostringstream os;
    os << OXM::InvalidValue;
    EXPECT_EQ(os.str(), "OXM::InvalidValue");
    EXPECT_EQ(OXMenum().toString(), QStringLiteral("<none>"));
    EXPECT_EQ(OXMenum(-1).toString(), QStringLiteral("<invalid -1>"));
}

TEST(OXMEnum, FindWithoutNamespaceSearchesPluginNamespaces)
{
    OXMRegisteredEnum r("OnlyInPlugin", false, "oxmtest.find");
    EXPECT_EQ(OXMenum::find("OnlyInPlugin"), r.getValue());
    EXPECT_FALSE(OXMenum::find("NeverRegistered").isValid());
    OXMRegisteredEnum empty("", false, "oxmtest.find");
    EXPECT_FALSE(empty.getValue().isValid());
}
