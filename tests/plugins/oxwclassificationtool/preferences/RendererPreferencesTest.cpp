// The default 3D renderer preference and its page: the page that
// shows a renderer row by its pair of class name and shading model and writes rows back.

#include <OXMDefault3DRendererPreferences.h>
#include <OXWDefault3DRendererPreferencesWidget.h>

#include <OXMObjectIOCPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXWComboBox.h>

#include <QCheckBox>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const char* const Ns = "oxwclassificationtool";
const OXMRegisteredEnum RenderPluginName("RenderPluginName", false, Ns);
const OXMRegisteredEnum ShadingModel("ShadingModel", false, Ns);
const OXMRegisteredEnum SecondLightShadow("SecondLightShadow", false, Ns);
const OXMRegisteredEnum ScatterHQ("ScatterHQ", false, Ns);

using Page = OXWDefault3DRendererPreferencesWidget;

struct Preferences : OXMDefault3DRendererPreferences
{
    Preferences() { setAutoDelete(false); }
    std::string renderer() const
    {
        const char* name = nullptr;
        return getValue(RenderPluginName, name) && name ? name : "";
    }
    OXMenum shading() const
    {
        OXMenum value;
        getValue(ShadingModel, value);
        return value;
    }
};

class RendererPreferencesPage : public ::testing::Test
{
protected:
    void SetUp() override
    {
        page.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&page));
    }
    void edit(std::vector<OXMObject*> objects)
    {
        std::vector<OXMObjectPath> paths;
        for (OXMObject* o : objects)
            paths.emplace_back(std::vector<OXMObjectLink>{OXMObjectLink(o)});
        page.setEditedObjects(paths.data(), int(paths.size()));
        page.repaint();
    }
    QString shown() const { return page.mDefault3DRendererComboBox->currentText(); }

    Page page;
    Preferences first, second;
};

TEST_F(RendererPreferencesPage, ShowsTheRowOfThePairAndKeepsItsRowForAPairOfNoRow)
{
    edit({&first});
    EXPECT_EQ(shown(), "Isosurface renderer");
    EXPECT_FALSE(page.mSecondLightShadowCheckBox->isChecked());
    const struct
    {
        const char* className;
        OXMenum shading;
        const char* row;
    } cases[] = {{"OXMOxm2RenderPlugin", ScatterHQ, "Scatter HQ (v1.2)"},
                 {"OXMRaytracing::Volume::RenderPlugin", ScatterHQ, "Volume renderer (Scatter HQ)"},
                 {"SomeOtherRenderer", ScatterHQ, "Volume renderer (Scatter HQ)"},
                 // (Oxm2, ScatterHQ) on the way, then a pair of no row
                 {"OXMOxm2RenderPlugin", OXM::Phong, "Scatter HQ (v1.2)"}};
    for (const auto& c : cases) {
        first.setValue<const char*>(RenderPluginName, c.className);
        first.setValue(ShadingModel, c.shading);
        EXPECT_EQ(shown(), c.row) << c.className << " " << c.shading.getName();
    }
    // A page shown first with an object of no row has no current row.
    Page fresh;
    Preferences unknown;
    unknown.setValue<const char*>(RenderPluginName, "SomeOtherRenderer");
    const OXMObjectPath path(std::vector<OXMObjectLink>{OXMObjectLink(&unknown)});
    fresh.setEditedObjects(&path, 1);
    fresh.show();
    EXPECT_EQ(fresh.mDefault3DRendererComboBox->currentIndex(), -1);
}

TEST_F(RendererPreferencesPage, WritesEveryEditedObjectAndShowsTheOneThatWasCurrent)
{
    edit({&first, &second});
    page.mDefault3DRendererComboBox->setFocus();
    for (int down = 0; down < 4; ++down) // "X-Ray" is the fifth row
        QTest::keyClick(page.mDefault3DRendererComboBox, Qt::Key_Down);
    for (const Preferences* p : {&first, &second}) {
        EXPECT_EQ(p->renderer(), "OXMOxm2RenderPlugin");
        EXPECT_STREQ(p->shading().getName(), "XRay");
    }
    QTest::keyClick(page.mSecondLightShadowCheckBox, Qt::Key_Space);
    OXMenum shadow;
    EXPECT_TRUE(second.getValue(SecondLightShadow, shadow) && shadow == OXM::True);
    page.mSecondLightShadowCheckBox->setCheckState(Qt::PartiallyChecked); // keeps the values
    EXPECT_TRUE(second.getValue(SecondLightShadow, shadow) && shadow == OXM::True);

    second.setValue<const char*>(RenderPluginName, "OXMRaytracing::Volume::RenderPlugin");
    edit({&second, &first}); // the first stays the one shown
    EXPECT_EQ(shown(), "X-Ray");
    EXPECT_TRUE(page.canEdit(nullptr, 0));
    OXMObject plain;
    plain.setAutoDelete(false);
    const OXMObjectPath plainPath(std::vector<OXMObjectLink>{OXMObjectLink(&plain)});
    EXPECT_FALSE(page.canEdit(&plainPath, 1));
}

} // namespace
