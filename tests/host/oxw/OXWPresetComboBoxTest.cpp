#include "OXWPresetComboBox.h"

#include "OXWPresetHandler.h"

#include <OXMRegisteredEnum.h>

#include <gtest/gtest.h>

#include <memory>

TEST(OXWPresetComboBox, ConstructionNamesTheBoxAndKeepsThePresetType)
{
    QWidget parent;
    OXWPresetComboBox box(&parent, "oXWPresetComboBox1", nullptr);
    EXPECT_EQ(box.parentWidget(), &parent);
    EXPECT_EQ(box.objectName(), QStringLiteral("oXWPresetComboBox1"));
    EXPECT_TRUE(box.presetType().isNull());
    // Nothing is listed until a handler provides presets.
    EXPECT_EQ(box.count(), 0);
    EXPECT_EQ(box.currentIndex(), -1);

    OXWPresetComboBox typed(nullptr, nullptr, "Camera");
    EXPECT_TRUE(typed.objectName().isEmpty());
    EXPECT_EQ(typed.presetType(), QStringLiteral("Camera"));
}

TEST(OXWPresetComboBox, TheConfigurationIsReachableThroughTheToolkitsProperties)
{
    OXWPresetComboBox box(nullptr, "box", nullptr);
    const char* const flags[] = {"saveAction", "removeAction", "importAction", "exportAction",
                                 "groupIcons"};
    for (const char* flag : flags) {
        SCOPED_TRACE(flag);
        EXPECT_EQ(box.property(flag), QVariant(false));
        // A declared property: the write reaches the box instead of adding a dynamic one.
        EXPECT_TRUE(box.setProperty(flag, true));
        EXPECT_EQ(box.property(flag), QVariant(true));
    }
    EXPECT_TRUE(box.saveAction());
    EXPECT_TRUE(box.removeAction());
    EXPECT_TRUE(box.importAction());
    EXPECT_TRUE(box.exportAction());
    EXPECT_TRUE(box.groupIcons());
    EXPECT_TRUE(box.dynamicPropertyNames().isEmpty());

    EXPECT_EQ(box.property("handlerID"), QVariant(QString()));
    EXPECT_TRUE(box.setProperty("handlerID", QStringLiteral("PresetClassificationHandler")));
    EXPECT_EQ(box.handlerID(), QStringLiteral("PresetClassificationHandler"));

    EXPECT_FALSE(box.usesMainWindowIconSize());
    box.setUsesMainWindowIconSize(true);
    EXPECT_TRUE(box.usesMainWindowIconSize());
}

TEST(OXWPresetComboBox, FindsTheHandlerRegisteredUnderItsHandlerID)
{
    static const OXMRegisteredEnum id("ComboBoxTestHandler", false, "oxwpresettests");
    OXWPresetComboBox box(nullptr, "box", nullptr);
    EXPECT_EQ(box.presetHandler(), nullptr);
    box.setProperty("handlerID", QStringLiteral("ComboBoxTestHandler"));
    EXPECT_EQ(box.presetHandler(), nullptr);
    {
        OXWPresetHandler handler(id);
        EXPECT_EQ(box.presetHandler(), &handler);
    }
    EXPECT_EQ(box.presetHandler(), nullptr);
}
