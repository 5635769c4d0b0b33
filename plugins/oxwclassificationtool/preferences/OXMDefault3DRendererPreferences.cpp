#include "OXMDefault3DRendererPreferences.h"

#include "OXWClassificationToolEnums.h"

#include <OXMBooleanOP.h>
#include <OXMClassFactory.h>
#include <OXMError.h>
#include <OXMMetaClass.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleValueOP.h>

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

// The host's flag values; the host gives them meaning.
constexpr unsigned ObjectProtectedFlags = 0x110100u;
constexpr unsigned AttributeFlags = 0x20000000u;
constexpr unsigned ObjectFlags = 0x20000000u;

// Set while a received message is passed on, so that it is not passed on again.
bool sBroadcasting = false;

} // namespace

struct OXMDefault3DRendererPreferences::Attributes
{
    OXMSingleValueOP<const char*> renderPluginName{defaultRenderPluginName()};
    OXMSingleValueOP<OXMenum> shadingModel{OXM::Phong};
    OXMBooleanOP secondLightShadow;

    Attributes() { shadingModel.setAllowedValues(shadingModels()); }

    std::vector<std::pair<OXMenum, OXMProperty*>> all()
    {
        return {{RenderPluginNameKey, &renderPluginName},
                {ShadingModelKey, &shadingModel},
                {SecondLightShadowKey, &secondLightShadow}};
    }
};

OXMDefault3DRendererPreferences::OXMDefault3DRendererPreferences()
{
    setProtectedFlags(ObjectProtectedFlags, 0);
    addAttributes();
    setFlags(ObjectFlags, 0);
    metaClass()->applyDefaultFlags(this);
}

OXMDefault3DRendererPreferences::OXMDefault3DRendererPreferences(
    const OXMDefault3DRendererPreferences& other)
    : OXMObject(other)
{
    setProtectedFlags(ObjectProtectedFlags, 0);
    addAttributes();
    *this = other;
    setFlags(ObjectFlags, 0);
    metaClass()->applyDefaultFlags(this);
}

OXMDefault3DRendererPreferences&
OXMDefault3DRendererPreferences::operator=(const OXMDefault3DRendererPreferences& other)
{
    if (this == &other)
        return *this;
    OXMObject::operator=(other);
    if (mAttributes && other.mAttributes) {
        auto mine = mAttributes->all();
        auto theirs = other.mAttributes->all();
        for (std::size_t i = 0; i < mine.size(); ++i)
            mine[i].second->assignFrom(*theirs[i].second);
    }
    return *this;
}

OXMDefault3DRendererPreferences::~OXMDefault3DRendererPreferences() = default;

void OXMDefault3DRendererPreferences::addAttributes()
{
    mAttributes.reset(new (std::nothrow) Attributes);
    if (!mAttributes) {
        OXMError::emitError(this, OXM::OutOfMemory);
        return;
    }
    bool ok = true;
    for (const auto& [key, attribute] : mAttributes->all())
        ok = addProperty(key, attribute) && ok;
    for (const auto& [key, attribute] : mAttributes->all())
        ok = attribute->setFlags(AttributeFlags, 0) && ok;
    if (!ok)
        OXMError::emitError(this, OXM::GenericError);
}

const std::vector<OXMenum>& OXMDefault3DRendererPreferences::shadingModels()
{
    static const std::vector<OXMenum> models = {OXM::Phong,           ScatterValue, ScatterHQValue,
                                                ScatterGradientValue, XRayValue,    SumValue,
                                                OXM::Maximum};
    return models;
}

const char* OXMDefault3DRendererPreferences::defaultRenderPluginName()
{
    return "OXMRaytracing::Isosurface::RenderPlugin";
}

void OXMDefault3DRendererPreferences::iocCallback(Message& message)
{
    if (!sBroadcasting) {
        sBroadcasting = true;
        Message passed(OXM::PropertyChanged, this, message.getPropertyID());
        iocBroadcast(passed);
        sBroadcasting = false;
    }
    OXMObject::iocCallback(message);
}

const OXMMetaClass* OXMDefault3DRendererPreferences::metaClass()
{
    static OXMDefaultClassFactory<OXMDefault3DRendererPreferences> factory;
    static OXMMetaClass meta(
        "OXMDefault3DRendererPreferences", sizeof(OXMDefault3DRendererPreferences),
        OXMObject::metaClass(), &factory, OXWClassificationToolEnums::Namespace,
        OXMObject::metaClass()->isSingleton() ? unsigned(OXMMetaClass::Singleton) : 0u);
    return &meta;
}

const OXMMetaClass* OXMDefault3DRendererPreferences::getMetaClass() const
{
    return metaClass();
}

OXMenum OXMDefault3DRendererPreferences::getObjectID(int index) const
{
    static const OXMRegisteredEnum id("OXMDefault3DRendererPreferences", false, Ns);
    return index == 0 ? id.getValue() : OXMObject::getObjectID(index - 1);
}

namespace {

// While the library is loaded the class is known to the host and the objects of the class
// carry the role "Default3DRendererPreferences".
class ClassRegistration
{
public:
    ClassRegistration()
    {
        using Roles = OXMObject::RoleManager;
        Roles::addRole(mRole, OXM::Object);
        Roles::addDefaultRole(OXMDefault3DRendererPreferences::metaClass(), mRole);
        Roles::setRoleInterface(mRole, &mInterface);
    }
    ~ClassRegistration() { OXMObject::RoleManager::removeRole(mRole); }

private:
    struct EmptyInterface
    {
    };
    OXMRegisteredEnum mRole{"Default3DRendererPreferences", false, Ns};
    EmptyInterface mInterface;
};

const ClassRegistration Registration;

} // namespace
