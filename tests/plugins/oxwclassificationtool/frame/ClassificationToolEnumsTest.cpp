// The plug-in's vocabulary: values registered in the namespace "oxwclassificationtool" by
// every component that uses them, and the termination walk over owned registrations.

#include <OXWClassificationToolEnums.h>

#include <OXMRegisteredEnum.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>

namespace {

const char* const Ns = OXWClassificationToolEnums::Namespace;

// Every name is a distinct value of the plug-in's namespace; a component registering a name
// of the vocabulary again (here the test) gets the frame's value, another namespace does not.
TEST(ClassificationToolEnums, EveryNameOfTheVocabularyIsADistinctValueOfThePluginNamespace)
{
    std::set<int> values;
    for (const char* name : OXWClassificationToolEnums::Names) {
        const OXMRegisteredEnum registration(name, false, Ns);
        const OXMenum value = registration;
        EXPECT_STREQ(value.getName(), name);
        EXPECT_STREQ(value.getNamespace(), Ns);
        values.insert(value.toInt());
    }
    EXPECT_EQ(values.size(), size_t(OXWClassificationToolEnums::NameCount));
    const OXMenum frame = OXWClassificationToolEnums::default3DRendererPreferences();
    const OXMRegisteredEnum again("Default3DRendererPreferences", false, Ns);
    const OXMRegisteredEnum host("Default3DRendererPreferences", false, "OXM");
    EXPECT_EQ(OXMenum(again), frame);
    EXPECT_NE(OXMenum(host), frame);
}

TEST(ClassificationToolEnums, TerminationDestroysOwnedRegistrationsOnlyLastFirst)
{
    const int before = OXMRegisteredEnum::getEnumCount(Ns);
    ASSERT_GE(before, 1); // the frame's static registration

    // Owned registrations are heap objects handed to the module's termination.
    new OXMRegisteredEnum("XRay", true, Ns);
    new OXMRegisteredEnum("Sum", true, Ns);
    const OXMRegisteredEnum kept("Scatter", false, Ns);
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(Ns), before + 3);

    EXPECT_EQ(OXWClassificationToolEnums::removeOwnedRegistrations(), 2);
    EXPECT_EQ(OXMRegisteredEnum::getEnumCount(Ns), before + 1);

    // The static registration and the unowned one are still there, and a second walk finds
    // nothing more to remove.
    EXPECT_TRUE(OXWClassificationToolEnums::default3DRendererPreferences().isValid());
    EXPECT_EQ(OXWClassificationToolEnums::removeOwnedRegistrations(), 0);
    const int count = OXMRegisteredEnum::getEnumCount(Ns);
    auto found = std::make_unique<OXMRegisteredEnum*[]>(size_t(count));
    const int n = OXMRegisteredEnum::findEnums(found.get(), count, Ns);
    bool scatterFound = false;
    for (int i = 0; i < n; ++i) {
        EXPECT_FALSE(found[size_t(i)]->isOwned());
        scatterFound = scatterFound || std::strcmp(found[size_t(i)]->getName(), "Scatter") == 0;
    }
    EXPECT_TRUE(scatterFound);
}

} // namespace
