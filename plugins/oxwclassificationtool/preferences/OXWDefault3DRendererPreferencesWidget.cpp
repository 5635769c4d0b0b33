#include "OXWDefault3DRendererPreferencesWidget.h"

#include "OXMDefault3DRendererPreferences.h"
#include "OXWClassificationToolEnums.h"

#include <OXMClassFactory.h>
#include <OXMError.h>
#include <OXMMetaClass.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleValueOPPtr.h>
#include <OXWComboBox.h>

#include <QCheckBox>

#include <cstring>
#include <new>

namespace {

const char* const Ns = OXWClassificationToolEnums::Namespace;
const OXMRegisteredEnum RenderPluginNameKey("RenderPluginName", false, Ns);
const OXMRegisteredEnum ShadingModelKey("ShadingModel", false, Ns);
const OXMRegisteredEnum SecondLightShadowKey("SecondLightShadow", false, Ns);
const OXMRegisteredEnum ScatterValue("Scatter", false, Ns);
const OXMRegisteredEnum ScatterHQValue("ScatterHQ", false, Ns);
const OXMRegisteredEnum ScatterGradientValue("ScatterGradient", false, Ns);
const OXMRegisteredEnum XRayValue("XRay", false, Ns);
const OXMRegisteredEnum SumValue("Sum", false, Ns);

// The window flags of a page made by the factory: a dialog of tool-window style (the older
// toolkit's 2050, WType_Dialog | WStyle_Tool).
constexpr Qt::WindowFlags PageWindowFlags = Qt::Tool;
constexpr unsigned InterfaceProtectedFlags = 0x110100u;
// QCheckBox::stateChanged's values.
constexpr int Checked = 2;
constexpr int Unchecked = 0;

struct Renderer
{
    const char* text;
    const char* className;
    const OXMenum* shadingModel;
};

const OXMenum PhongValue = OXM::Phong;
const OXMenum MaximumValue = OXM::Maximum;

const Renderer* renderers()
{
    static const OXMenum scatter = ScatterValue, scatterHQ = ScatterHQValue,
                         scatterGradient = ScatterGradientValue, xRay = XRayValue, sum = SumValue;
    static const Renderer table[OXWDefault3DRendererPreferencesWidget::RendererCount] = {
        {"Isosurface renderer", "OXMRaytracing::Isosurface::RenderPlugin", &PhongValue},
        {"Volume renderer (Phong)", "OXMRaytracing::Volume::RenderPlugin", &PhongValue},
        {"Volume renderer (Scatter HQ)", "OXMRaytracing::Volume::RenderPlugin", &scatterHQ},
        {"Hardware renderer (Scatter HQ)", "OXMDDTextureDefault3DRendererPlugin", &scatterHQ},
        {"X-Ray", "OXMOxm2RenderPlugin", &xRay},
        {"Sum along Ray", "OXMOxm2RenderPlugin", &sum},
        {"Maximum Projection", "OXMOxm2RenderPlugin", &MaximumValue},
        {"Scatter (v1.2)", "OXMOxm2RenderPlugin", &scatter},
        {"Scatter HQ (v1.2)", "OXMOxm2RenderPlugin", &scatterHQ},
        {"Scatter Gradient (v1.2)", "OXMOxm2RenderPlugin", &scatterGradient},
    };
    return table;
}

bool isRow(int index)
{
    return index >= 0 && index < OXWDefault3DRendererPreferencesWidget::RendererCount;
}

// The page's factory: made by name as a tool window; neither copied nor assigned.
class PageFactory : public OXMClassFactory
{
    using Page = OXWDefault3DRendererPreferencesWidget;

public:
    OXMClass* create(void* storage) override
    {
        Page* page = storage ? new (storage) Page(nullptr, nullptr, PageWindowFlags)
                             : new (std::nothrow) Page(nullptr, nullptr, PageWindowFlags);
        return static_cast<OXWObjectEditorHandlerIF*>(page);
    }
    OXMClass* createCopy(const OXMClass*, void*) override { return nullptr; }
    bool assign(OXMClass*, const OXMClass*) override { return false; }
    bool destroy(OXMClass* object, bool freeMemory) override
    {
        return destroyAs<Page>(object, freeMemory);
    }
};

} // namespace

OXWDefault3DRendererPreferencesWidget::OXWDefault3DRendererPreferencesWidget(QWidget* parent,
                                                                             const char* name,
                                                                             Qt::WindowFlags flags)
    : OXWDefault3DRendererPreferencesWidgetUI(parent, name, flags)
{
    OXWObjectEditorHandlerIF::setProtectedFlags(InterfaceProtectedFlags, 0);
    for (int i = 0; i < RendererCount; ++i) {
        mRendererClassNames[std::size_t(i)] = rendererClassName(i);
        mRendererShadingModels[std::size_t(i)] = rendererShadingModel(i);
        mDefault3DRendererComboBox->insertItem(rendererText(i));
    }
    mDefault3DRendererComboBox->setCurrentItem(-1); // until an object shows a renderer
    connect(mDefault3DRendererComboBox, QOverload<int>::of(&QComboBox::activated), this,
            &OXWDefault3DRendererPreferencesWidget::setDefault3DRenderer);
    connect(mSecondLightShadowCheckBox, &QCheckBox::stateChanged, this,
            &OXWDefault3DRendererPreferencesWidget::setSecondLightShadow);
    metaClass()->applyDefaultFlags(static_cast<OXWObjectEditorHandlerIF*>(this));
}

OXWDefault3DRendererPreferencesWidget::~OXWDefault3DRendererPreferencesWidget() = default;

QString OXWDefault3DRendererPreferencesWidget::rendererText(int index)
{
    return isRow(index) ? QString::fromLatin1(renderers()[index].text) : QString();
}

const char* OXWDefault3DRendererPreferencesWidget::rendererClassName(int index)
{
    return isRow(index) ? renderers()[index].className : nullptr;
}

OXMenum OXWDefault3DRendererPreferencesWidget::rendererShadingModel(int index)
{
    return isRow(index) ? *renderers()[index].shadingModel : OXMenum();
}

bool OXWDefault3DRendererPreferencesWidget::canEdit(const OXMObjectPath* paths, int count)
{
    for (int i = 0; i < count; ++i) {
        const OXMObject* object = paths ? paths[i].getLink(-1) : nullptr;
        const OXMMetaClass* meta = object ? object->getMetaClass() : nullptr;
        if (!meta || !meta->isOfType("OXMDefault3DRendererPreferences"))
            return false;
    }
    return true;
}

void OXWDefault3DRendererPreferencesWidget::setEditedObjects(const OXMObjectPath* paths, int count)
{
    OXMObject* previous = mCurrentObject.get();
    mEditedPaths.clear();
    mEditedObjects.clear();
    mCurrentObject = nullptr;
    if (count < 1 || !paths)
        return;
    for (int i = 0; i < count; ++i) {
        mEditedPaths.push_back(paths[i]);
        mEditedObjects.push_back(std::make_unique<OXMObjectIOCPtr>(paths[i].getLink(-1), this));
    }
    mCurrentObject = mEditedObjects.front()->get();
    for (const auto& edited : mEditedObjects) {
        if (previous && edited->get() == previous)
            mCurrentObject = previous;
    }
    update();
}

void OXWDefault3DRendererPreferencesWidget::setDefault3DRenderer(int index)
{
    for (const auto& edited : mEditedObjects) {
        if (!isRow(index))
            break;
        OXMSingleValueOPPtr<OXMenum>(edited->get(), ShadingModelKey)
            .setValue(mRendererShadingModels[std::size_t(index)]);
        OXMSingleValueOPPtr<const char*>(edited->get(), RenderPluginNameKey)
            .setValue(mRendererClassNames[std::size_t(index)]);
    }
    update();
}

void OXWDefault3DRendererPreferencesWidget::setSecondLightShadow(int state)
{
    for (const auto& edited : mEditedObjects) {
        OXMObject* object = edited->get();
        OXMenum value = OXM::False;
        if (!object || !object->getValue(SecondLightShadowKey, value))
            continue;
        if (state == Checked)
            value = OXM::True;
        else if (state == Unchecked)
            value = OXM::False;
        object->setValue(SecondLightShadowKey, value);
    }
    update();
}

void OXWDefault3DRendererPreferencesWidget::refresh()
{
    if (!isVisible())
        return;
    const OXMObject* current = mCurrentObject.get();
    OXMenum shading = OXM::Phong;
    const char* className = OXMDefault3DRendererPreferences::defaultRenderPluginName();
    OXMenum shadow = OXM::False;
    if (current) {
        current->getValue(ShadingModelKey, shading);
        current->getValue(RenderPluginNameKey, className);
        current->getValue(SecondLightShadowKey, shadow);
    }
    for (int i = 0; i < RendererCount; ++i) {
        const char* rowClass = mRendererClassNames[std::size_t(i)];
        if (mRendererShadingModels[std::size_t(i)] == shading && className &&
            std::strcmp(rowClass, className) == 0) {
            mDefault3DRendererComboBox->setCurrentItem(i);
            break;
        }
    }
    mSecondLightShadowCheckBox->setChecked(shadow == OXM::True);
}

void OXWDefault3DRendererPreferencesWidget::iocCallback(Message& message)
{
    refresh();
    OXWObjectEditorHandlerIF::iocCallback(message);
}

void OXWDefault3DRendererPreferencesWidget::showEvent(QShowEvent* event)
{
    refresh();
    OXWDefault3DRendererPreferencesWidgetUI::showEvent(event);
}

void OXWDefault3DRendererPreferencesWidget::paintEvent(QPaintEvent* event)
{
    refresh();
    OXWDefault3DRendererPreferencesWidgetUI::paintEvent(event);
}

const OXMMetaClass* OXWDefault3DRendererPreferencesWidget::metaClass()
{
    static PageFactory factory;
    static OXMMetaClass meta(
        "OXWDefault3DRendererPreferencesWidget", sizeof(OXWDefault3DRendererPreferencesWidget),
        OXWObjectEditorHandlerIF::metaClass(), &factory, Ns,
        OXWObjectEditorHandlerIF::metaClass()->isSingleton() ? unsigned(OXMMetaClass::Singleton)
                                                             : 0u);
    return &meta;
}

const OXMMetaClass* OXWDefault3DRendererPreferencesWidget::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWDefault3DRendererPreferencesWidget::getObjectID(int index) const
{
    static const OXMRegisteredEnum id("OXWDefault3DRendererPreferencesWidget", false, Ns);
    return index == 0 ? id.getValue() : OXWObjectEditorHandlerIF::getObjectID(index - 1);
}

namespace {
// The class is known to the host as soon as the library is loaded.
[[maybe_unused]] const OXMMetaClass* const RegisteredMeta =
    OXWDefault3DRendererPreferencesWidget::metaClass();
} // namespace
