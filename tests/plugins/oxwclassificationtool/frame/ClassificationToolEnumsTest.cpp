// The plug-in's vocabulary: the termination walk over owned registrations.

#include <OXWClassificationToolEnums.h>

#include <OXMRegisteredEnum.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>

namespace {

const char* const Ns = OXWClassificationToolEnums::Namespace;

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
