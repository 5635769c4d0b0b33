#include "OXWPresetHandler.h"

#include <OXMObjectPtr.h>
#include <OXMRegisteredEnum.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

constexpr const char* TestNamespace = "oxwpresettests";

OXMenum testID(const char* name)
{
    // Registrations live for the process, like the identifiers of real handlers.
    static std::vector<std::unique_ptr<OXMRegisteredEnum>> registrations;
    registrations.push_back(std::make_unique<OXMRegisteredEnum>(name, false, TestNamespace));
    return *registrations.back();
}

// A handler that records what the base operations are asked, to show that callers reach the
// override through the registry.
class RecordingHandler : public OXWPresetHandler
{
public:
    using OXWPresetHandler::OXWPresetHandler;

    bool setTargetObject(OXMObject* target) override
    {
        ++targetCalls;
        return OXWPresetHandler::setTargetObject(target) && target != nullptr;
    }
    int targetCalls = 0;
};

} // namespace

TEST(OXWPresetHandler, ConstructionRegistersAndDestructionWithdraws)
{
    const OXMenum id = testID("Lifetime");
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), nullptr);
    {
        OXWPresetHandler handler(id);
        EXPECT_EQ(handler.getHandlerID(), id);
        EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), &handler);
    }
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), nullptr);
}

TEST(OXWPresetHandler, HandlersOfDifferentIdentifiersAreFoundSeparately)
{
    const OXMenum classification = testID("Classification");
    const OXMenum camera = testID("Camera");
    OXWPresetHandler first(classification);
    OXWPresetHandler second(camera);
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(classification), &first);
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(camera), &second);
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(testID("NeverRegistered")), nullptr);
}

TEST(OXWPresetHandler, ALaterHandlerShadowsAnEarlierOneUntilItGoes)
{
    const OXMenum id = testID("Shadowed");
    auto first = std::make_unique<OXWPresetHandler>(id);
    auto second = std::make_unique<OXWPresetHandler>(id);
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), second.get());
    second.reset();
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), first.get());

    // Withdrawing the earlier one leaves the later one registered.
    auto third = std::make_unique<OXWPresetHandler>(id);
    first.reset();
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), third.get());
    third.reset();
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), nullptr);
}

TEST(OXWPresetHandler, AnInvalidIdentifierIsNeverRegistered)
{
    OXWPresetHandler handler{OXMenum()};
    EXPECT_FALSE(handler.getHandlerID().isValid());
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(OXMenum()), nullptr);
}

TEST(OXWPresetHandler, ReleasingAReferenceDoesNotDestroyTheHandler)
{
    const OXMenum id = testID("Owned");
    auto* handler = new OXWPresetHandler(id);
    {
        OXMObjectPtr hold(handler);
        EXPECT_EQ(handler->getRefCount(), 1);
    }
    // Still alive and registered: its creator owns it.
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), handler);
    EXPECT_EQ(handler->getRefCount(), 0);
    delete handler;
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), nullptr);
}

TEST(OXWPresetHandler, TargetAndHistogramReadNullOnceTheirObjectsGo)
{
    OXWPresetHandler handler(testID("Weak"));
    EXPECT_EQ(handler.getTargetObject(), nullptr);
    EXPECT_EQ(handler.getHistogramObject(), nullptr);

    auto target = std::make_unique<OXMObject>();
    auto histogram = std::make_unique<OXMObject>();
    EXPECT_TRUE(handler.setTargetObject(target.get()));
    EXPECT_TRUE(handler.setHistogramObject(histogram.get()));
    EXPECT_EQ(handler.getTargetObject(), target.get());
    EXPECT_EQ(handler.getHistogramObject(), histogram.get());

    histogram.reset();
    EXPECT_EQ(handler.getHistogramObject(), nullptr);
    EXPECT_EQ(handler.getTargetObject(), target.get());

    EXPECT_TRUE(handler.setTargetObject(nullptr));
    EXPECT_EQ(handler.getTargetObject(), nullptr);
}

TEST(OXWPresetHandler, TheRegistryAnswersTheDerivedHandler)
{
    const OXMenum id = testID("Derived");
    RecordingHandler handler(id);
    OXWPresetHandler* found = OXWPresetHandler::getPresetHandler(id);
    ASSERT_EQ(found, &handler);
    OXMObject target;
    EXPECT_TRUE(found->setTargetObject(&target));
    EXPECT_FALSE(found->setTargetObject(nullptr));
    EXPECT_EQ(handler.targetCalls, 2);

    EXPECT_TRUE(found->isOfType("OXWPresetHandler"));
    EXPECT_TRUE(found->isOfType("OXMObject"));
    EXPECT_STREQ(found->getObjectID(0).getName(), "OXWPresetHandler");
    EXPECT_STREQ(found->getObjectID(1).getName(), "OXMObject");
}
