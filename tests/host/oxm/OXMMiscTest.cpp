#include "OXMError.h"
#include "OXMLocalClassFlags.h"
#include "OXMObject.h"
#include "OXMObjectIOCPtr.h"
#include "OXMPluginInfo.h"
#include "OXMSingleton.h"
#include "OXMTestListener.h"
#include "OXMTulvoRights.h"

#include <gtest/gtest.h>

#include <cstddef>

TEST(OXMError, HandlersObserveErrorsWithSourceCodeAndText)
{
    OXMObject source;
    std::vector<OXMError::Message> seen;
    const int id = OXMError::addHandler([&](const OXMError::Message& m) { seen.push_back(m); });
    const int before = OXMError::getErrorCount();
    OXMError::emitError(OXMError::Message(&source, OXM::OutOfMemory));
    OXMError::emitError(&source, OXM::GenericError, QStringLiteral("property refused"));
    EXPECT_TRUE(OXMError::removeHandler(id));
    EXPECT_FALSE(OXMError::removeHandler(id));
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].getSource(), &source);
    EXPECT_EQ(seen[0].getCode(), OXM::OutOfMemory);
    EXPECT_EQ(seen[1].toString(), QStringLiteral("OXM::GenericError: property refused"));
    EXPECT_EQ(OXMError::getErrorCount(), before + 2);
}

TEST(OXMClassFlags, FlagsScopeAndLocalFlagsRestoreAtScopeEnd)
{
    OXMObject o;
    EXPECT_EQ(o.getScope(), OXM::Local);
    EXPECT_TRUE(o.setScope(OXM::Global));
    EXPECT_FALSE(o.setScope(OXM::Opacity));
    EXPECT_EQ(o.getScope(), OXM::Global);

    o.setFlags(0x10000000u | 0x1u, 0);
    {
        OXMLocalClassFlags local(&o, 0x4u, 0x10000000u);
        EXPECT_EQ(o.getFlags(), 0x5u);
    }
    EXPECT_EQ(o.getFlags(), 0x10000001u);
    o.setProtectedFlags(0x110100u, 0);
    o.setProtectedFlags(0, 0x100u);
    EXPECT_EQ(o.getProtectedFlags(), 0x110000u);
    EXPECT_EQ(o.getFlags(), 0x10000001u); // independent words
    OXMLocalClassFlags none(nullptr, 1, 0);
}

TEST(OXMPluginInfo, ConstructorCopiesTheNameAndMembersKeepTheirOrder)
{
    std::string name = "oxwclassificationtool";
    OXMPluginInfo info(name.c_str());
    name[0] = 'X';
    EXPECT_STREQ(info.name, "oxwclassificationtool");
    EXPECT_EQ(info.recordSize, static_cast<std::int32_t>(sizeof(OXMPluginInfo)));
    EXPECT_EQ(info.initialize, nullptr);
    EXPECT_LT(offsetof(OXMPluginInfo, vendor), offsetof(OXMPluginInfo, copyright));
    EXPECT_LT(offsetof(OXMPluginInfo, description), offsetof(OXMPluginInfo, versionMajor));
    EXPECT_LT(offsetof(OXMPluginInfo, hostVersionMinor), offsetof(OXMPluginInfo, reserved));
    EXPECT_LT(offsetof(OXMPluginInfo, reserved), offsetof(OXMPluginInfo, initialize));
    EXPECT_LT(offsetof(OXMPluginInfo, initialize), offsetof(OXMPluginInfo, terminate));
}

TEST(OXMSingleton, InstanceIsNullUntilRegistered)
{
    struct Application
    {
        int id = 7;
    };
    EXPECT_EQ(OXMSingleton<Application>::getInstance(), nullptr);
    Application app;
    OXMSingleton<Application>::setInstance(&app);
    EXPECT_EQ(OXMSingleton<Application>::getInstance()->id, 7);
    Application other;
    OXMSingleton<Application>::clearInstance(&other);
    EXPECT_EQ(OXMSingleton<Application>::getInstance(), &app);
    OXMSingleton<Application>::clearInstance(&app);
    EXPECT_EQ(OXMSingleton<Application>::getInstance(), nullptr);
}

TEST(OXMTulvoRights, RightsAreListenableProperties)
{
    OXMTulvoRights rights;
    EXPECT_TRUE(rights.getAllowClassificationEdit());
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&rights, &l);
    EXPECT_TRUE(rights.setAllowClassificationEdit(false));
    EXPECT_FALSE(rights.getAllowClassificationEdit());
    ASSERT_EQ(l.entries.size(), 1u);
    EXPECT_EQ(l.entries[0].property, OXM::AllowClassificationEdit);
    EXPECT_TRUE(rights.isOfType("OXMObject"));
    OXMTulvoRights copy(rights);
    EXPECT_FALSE(copy.getAllowClassificationEdit());
}
