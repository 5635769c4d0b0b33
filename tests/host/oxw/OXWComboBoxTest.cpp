#include "OXWComboBox.h"

#include <gtest/gtest.h>

TEST(OXWComboBox, InsertItemWithTheIndexLastAppendsByDefault)
{
    OXWComboBox combo(nullptr, "mDefault3DRendererComboBox");
    EXPECT_EQ(combo.objectName(), QStringLiteral("mDefault3DRendererComboBox"));
    combo.insertItem(QStringLiteral("b"));
    combo.insertItem(QStringLiteral("c"), -1);
    combo.insertItem(QStringLiteral("a"), 0);
    combo.insertItem(QStringLiteral("z"), 99);
    ASSERT_EQ(combo.count(), 4);
    EXPECT_EQ(combo.itemText(0), QStringLiteral("a"));
    EXPECT_EQ(combo.itemText(1), QStringLiteral("b"));
    EXPECT_EQ(combo.itemText(2), QStringLiteral("c"));
    EXPECT_EQ(combo.itemText(3), QStringLiteral("z"));
    combo.setCurrentItem(2);
    EXPECT_EQ(combo.currentItem(), 2);
    EXPECT_EQ(combo.currentText(), QStringLiteral("c"));
    // The QComboBox overload stays usable.
    combo.insertItem(1, QStringLiteral("q"));
    EXPECT_EQ(combo.itemText(1), QStringLiteral("q"));
}
