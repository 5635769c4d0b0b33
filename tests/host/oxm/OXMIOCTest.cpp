#include "OXMObject.h"
#include "OXMObjectIOCPtr.h"
#include "OXMSingleValueOP.h"
#include "OXMTestListener.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class Node : public OXMObject
{
public:
    Node()
    {
        addProperty(OXM::Scale, &scale);
        addProperty(OXM::Bias, &bias);
    }
    OXMSingleValueOP<float> scale;
    OXMSingleValueOP<float> bias;
};

} // namespace

TEST(OXMIOC, AssigningAnotherObjectMovesTheRegistration)
{
    Node a, b;
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&a, &l);
    EXPECT_EQ(a.getListenerCount(), 1);
    ptr = &b;
    EXPECT_EQ(a.getListenerCount(), 0);
    EXPECT_EQ(b.getListenerCount(), 1);
    a.scale.setValue(1);
    b.scale.setValue(1);
    ASSERT_EQ(l.entries.size(), 1u);
    EXPECT_EQ(l.entries[0].initialSender, &b);

    {
        OXMObjectIOCPtr copy(ptr); // a copy is a registration of its own
        EXPECT_EQ(b.getListenerCount(), 2);
    }
    EXPECT_EQ(b.getListenerCount(), 1);
    ptr = nullptr;
    EXPECT_EQ(b.getListenerCount(), 0);

    OXMObjectIOCPtr late(&a); // registration without listener, listener set later
    a.scale.setValue(2);
    late.setListener(&l);
    a.scale.setValue(3);
    EXPECT_EQ(l.entries.size(), 2u);
}

TEST(OXMIOC, DestructionSendsDyingAndClearsThePointers)
{
    OXMTestListener l;
    OXMObjectIOCPtr ptr;
    OXMObject* seen = nullptr;
    {
        Node n;
        ptr = &n;
        ptr.setListener(&l);
        l.hook = [&](OXMIOC::Message& m) { seen = m.getInitialSender(); };
    }
    ASSERT_EQ(l.count(OXMIOC::Dying), 1);
    EXPECT_NE(seen, nullptr);
    EXPECT_EQ(ptr.get(), nullptr);
}

TEST(OXMIOC, MessageLockHoldsAndCoalescesUntilTheOutermostUnlock)
{
    Node n;
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&n, &l);
    EXPECT_FALSE(n.lock(OXM::Scale)); // only property messages can be held
    EXPECT_TRUE(n.lock(OXM::PropertyMessage));
    EXPECT_TRUE(n.lock(OXM::PropertyMessage));
    for (int i = 1; i <= 100; ++i)
        n.scale.setValue(float(i));
    n.bias.setValue(1);
    n.scale.setValue(0);
    EXPECT_TRUE(n.isLocked(OXM::PropertyMessage));
    EXPECT_TRUE(n.unlock(OXM::PropertyMessage));
    EXPECT_TRUE(l.entries.empty()); // still held by the outer lock
    EXPECT_TRUE(n.unlock(OXM::PropertyMessage));
    ASSERT_EQ(l.entries.size(), 2u);
    EXPECT_EQ(l.entries[0].property, OXM::Scale); // order of first occurrence
    EXPECT_EQ(l.entries[1].property, OXM::Bias);
    EXPECT_FALSE(n.unlock(OXM::PropertyMessage)); // unbalanced
    EXPECT_FALSE(n.isLocked(OXM::PropertyMessage));
    n.scale.setValue(5);
    EXPECT_EQ(l.entries.size(), 3u);
}

TEST(OXMIOC, ApplicationChannelReceivesEveryObjectsMessages)
{
    Node a, b;
    OXMTestListener app;
    EXPECT_TRUE(OXMIOC::iocOpen(&app));
    EXPECT_FALSE(OXMIOC::iocOpen(&app));
    a.scale.setValue(1);
    b.bias.setValue(1);
    EXPECT_TRUE(OXMIOC::iocClose(&app));
    a.scale.setValue(2);
    ASSERT_EQ(app.entries.size(), 2u);
    EXPECT_EQ(app.entries[1].initialSender, &b);
    EXPECT_EQ(app.entries[1].property, OXM::Bias);
    {
        OXMTestListener temporary;
        OXMIOC::iocOpen(&temporary);
    } // a destroyed listener leaves the channel
    a.scale.setValue(3);
    EXPECT_EQ(OXMIOC::getApplicationListenerCount(), 0);
}

TEST(OXMIOC, ListenersMayUnregisterOthersAndDeleteTheObjectDuringDelivery)
{
    Node n;
    OXMTestListener first, second, third;
    auto p2 = std::make_unique<OXMObjectIOCPtr>(&n, &second);
    OXMObjectIOCPtr p1(&n, &first);
    OXMObjectIOCPtr p3(&n, &third);
    // Registration order: second, first, third. second removes third's registration.
    second.hook = [&](OXMIOC::Message&) { p3 = nullptr; };
    n.scale.setValue(1);
    EXPECT_EQ(second.entries.size(), 1u);
    EXPECT_EQ(first.entries.size(), 1u);
    EXPECT_TRUE(third.entries.empty());
    EXPECT_EQ(n.getListenerCount(), 2);

    auto* doomed = new Node;
    OXMTestListener killer, after;
    OXMObjectIOCPtr k(doomed, &killer);
    OXMObjectIOCPtr a(doomed, &after);
    killer.hook = [&](OXMIOC::Message& m) {
        if (m.getType() == OXM::PropertyChanged)
            delete doomed;
    };
    doomed->scale.setValue(1);
    EXPECT_EQ(k.get(), nullptr);
    EXPECT_EQ(a.get(), nullptr);
    EXPECT_EQ(after.count(OXM::PropertyChanged), 0); // delivery stopped with the object
    EXPECT_EQ(after.count(OXMIOC::Dying), 1);
}

TEST(OXMIOC, BroadcastDeliversAMessageWithItsInitialSender)
{
    Node source, relay;
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&relay, &l);
    OXMIOC::Message m(OXM::PropertyChanged, &source, OXM::Scale, &relay);
    relay.iocBroadcast(m);
    ASSERT_EQ(l.entries.size(), 1u);
    EXPECT_EQ(l.entries[0].initialSender, &source);
    EXPECT_EQ(m.getSender(), &relay);
}
