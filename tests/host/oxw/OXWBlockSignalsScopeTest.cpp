#include "OXWBlockSignalsScope.h"

#include <QObject>

#include <gtest/gtest.h>

TEST(OXWBlockSignalsScope, BlocksForTheScopeAndRestoresThePreviousState)
{
    QObject o;
    int received = 0;
    QObject::connect(&o, &QObject::objectNameChanged, [&] { ++received; });
    {
        OXWBlockSignalsScope scope(&o);
        EXPECT_FALSE(scope.previousState());
        EXPECT_TRUE(o.signalsBlocked());
        o.setObjectName(QStringLiteral("a"));
        {
            OXWBlockSignalsScope inner(&o);
            EXPECT_TRUE(inner.previousState());
        }
        EXPECT_TRUE(o.signalsBlocked()); // the inner scope restored "blocked"
    }
    EXPECT_FALSE(o.signalsBlocked());
    EXPECT_EQ(received, 0);
    o.setObjectName(QStringLiteral("b"));
    EXPECT_EQ(received, 1);

    o.blockSignals(true);
    {
        OXWBlockSignalsScope scope(&o);
    }
    EXPECT_TRUE(o.signalsBlocked()); // it was blocked before
}

TEST(OXWBlockSignalsScope, ToleratesNullAndObjectsDestroyedInside)
{
    {
        OXWBlockSignalsScope scope(nullptr);
    }
    auto* o = new QObject;
    {
        OXWBlockSignalsScope scope(o);
        delete o;
    }
    SUCCEED();
}
