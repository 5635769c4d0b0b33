// The classification preset record: its 26 properties with their defaults and flags, a
// channel object of its own per channel, its identity and class registration, and copies that
// get their own channels with the references between them carried over.

#include "OXMPresetClassificationProxyObject.h"

#include <OXMClassManager.h>
#include <OXMMetaClass.h>
#include <OXMObjectRefPtr.h>
#include <OXMProperty.h>
#include <OXMRegisteredEnum.h>
#include <OXMSceneNames.h>

#include <gtest/gtest.h>

#include <set>

namespace {

const char* const Ns = "oxwclassificationtool";

OXMenum plugin(const char* name)
{
    return OXMRegisteredEnum(name, false, Ns).getValue();
}

class PresetRecord : public ::testing::Test
{
protected:
    void SetUp() override { OXMSceneNames::registerSceneClasses(); }
};

} // namespace

TEST_F(PresetRecord, ANewRecordHasItsPropertiesInOrderWithTheirDefaults)
{
    OXMObjectRefPtr record("OXMPresetClassificationProxyObject");
    ASSERT_TRUE(record);
    std::vector<OXMenum> expected = {plugin("AbsoluteMode"), plugin("IntervalFloatIndexList"),
                                     OXM::IntervalIndexList, OXM::IntervalModeList,
                                     OXM::IntervalNameList};
    const auto& channels = OXMPresetClassificationProxyObject::channelIDs();
    expected.insert(expected.end(), channels.begin(), channels.end());
    expected.insert(expected.end(),
                    {OXM::RenderPlugin, plugin("ShadingModel"), OXM::SamplingDistance,
                     OXM::GradientNormalization, plugin("ShadingCountLimit")});
    ASSERT_EQ(record->getPropertyCount(), 26);
    for (int i = 0; i < 26; ++i) {
        EXPECT_EQ(record->getPropertyAt(i)->getID(), expected[std::size_t(i)]) << i;
        const bool floatBorders = i == 1; // flagged 0x80000010 by the record
        EXPECT_EQ(bool(record->getPropertyAt(i)->getProtectedFlags() & OXMProperty::PresetFlag),
                  !floatBorders);
    }
    EXPECT_FALSE(record->getProperty(OXM::EmissionRed));

    OXMenum absolute, shading, normalization;
    float distance = 0;
    int limit = -1;
    const char* className = "set";
    EXPECT_TRUE(record->getValue(plugin("AbsoluteMode"), absolute) && absolute == OXM::False);
    EXPECT_TRUE(record->getValue(plugin("ShadingModel"), shading) && shading == OXM::Phong);
    EXPECT_TRUE(record->getValue(OXM::SamplingDistance, distance) && distance == 1.0f);
    EXPECT_TRUE(record->getValue(OXM::GradientNormalization, normalization) &&
                normalization == OXM::Disabled);
    EXPECT_TRUE(record->getValue(plugin("ShadingCountLimit"), limit) && limit == 0);
    EXPECT_TRUE(record->getValue(OXM::RenderPlugin, className) && className == nullptr);
    EXPECT_FALSE(record->setValue(plugin("AbsoluteMode"), OXM::Enabled)) << "true or false only";

    std::set<OXMObject*> distinct;
    for (OXMenum id : channels) {
        OXMObject* channel = record->getLinkedObject(id);
        ASSERT_NE(channel, nullptr);
        EXPECT_TRUE(channel->isOfType("OXMSampleTransferSpec"));
        EXPECT_EQ(channel->getScope(), OXM::Local);
        EXPECT_EQ(channel->getParentLink().getOwner(), record.get());
        distinct.insert(channel);
    }
    EXPECT_EQ(distinct.size(), channels.size());

    EXPECT_STREQ(record->getObjectID(0).getName(), "OXMPresetClassificationProxyObject");
    EXPECT_STREQ(record->getObjectID(0).getNamespace(), Ns);
    EXPECT_EQ(record->getObjectID(0), record->getObjectID(0));
    EXPECT_STREQ(record->getObjectID(1).getName(), "OXMObject");
    EXPECT_STREQ(record->getMetaClass()->getModuleName(), Ns);
}

TEST_F(PresetRecord, CopiesGetTheirOwnChannelsAndKeepTheReferencesBetweenThem)
{
    OXMObjectRefPtr record("OXMPresetClassificationProxyObject");
    OXMObject* ambient = record->getLinkedObject(OXM::AmbientRed);
    OXMObject* diffuse = record->getLinkedObject(OXM::DiffuseRed);
    ambient->setValue(OXM::Scale, 0.25f);
    diffuse->setValue(OXM::MapMode, OXM::Reference);
    diffuse->setValue(OXM::Reference, OXMObjectLink(ambient));
    record->setArray(OXM::IntervalIndexList, std::vector<int>{-1, 7, 255});

    OXMObjectPtr copy(dynamic_cast<OXMObject*>(OXMMetaClass::clone(record.get())));
    OXMObjectRefPtr assigned("OXMPresetClassificationProxyObject");
    ASSERT_TRUE(copy);
    ASSERT_TRUE(record->getMetaClass()->assign(assigned.get(), record.get()));
    for (OXMObject* made : {copy.get(), assigned.get()}) {
        std::vector<int> borders;
        made->getArray(OXM::IntervalIndexList, borders);
        EXPECT_EQ(borders, (std::vector<int>{-1, 7, 255}));
        OXMObject* madeAmbient = made->getLinkedObject(OXM::AmbientRed);
        OXMObject* madeDiffuse = made->getLinkedObject(OXM::DiffuseRed);
        EXPECT_NE(madeAmbient, ambient);
        float scale = 0;
        EXPECT_TRUE(madeAmbient->getValue(OXM::Scale, scale) && scale == 0.25f);
        EXPECT_EQ(madeDiffuse->getLinkedObject(OXM::Reference), madeAmbient);
        EXPECT_EQ(madeAmbient->getParentLink().getOwner(), made);
    }
    OXMObject other;
    other.setAutoDelete(false);
    EXPECT_FALSE(OXMClassManager::findMetaClass("OXMPresetClassificationProxyObject")
                     ->assign(&other, record.get()))
        << "records only";
}
