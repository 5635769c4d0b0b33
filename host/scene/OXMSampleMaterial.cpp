#include "OXMSampleMaterial.h"

#include "OXMSampleTransferSpec.h"

OXM_SCENE_CLASS_IMPL(OXMSampleMaterial, "OXMSampleMaterial", OXMSceneObject)

const std::vector<OXMenum>& OXMSampleMaterial::channelIDs()
{
    static const std::vector<OXMenum> ids = {
        OXM::Opacity,     OXM::Gradient,      OXM::Transparency, OXM::Shininess,
        OXM::AmbientRed,  OXM::AmbientGreen,  OXM::AmbientBlue,  OXM::AmbientIntensity,
        OXM::DiffuseRed,  OXM::DiffuseGreen,  OXM::DiffuseBlue,  OXM::DiffuseIntensity,
        OXM::SpecularRed, OXM::SpecularGreen, OXM::SpecularBlue, OXM::SpecularIntensity,
        OXM::EmissionRed, OXM::EmissionGreen, OXM::EmissionBlue, OXM::EmissionIntensity,
    };
    return ids;
}

OXMSampleMaterial::OXMSampleMaterial()
{
    addSingle<const char*>(OXM::Name, "");
    addArray<int>(OXM::IntervalIndexList);
    addArray<OXMenum>(OXM::IntervalModeList);
    addArray<const char*>(OXM::IntervalNameList);
    addArray<float>(OXM::IsosurfaceValueList);
    addSingle(OXM::VisibleOpacityIndexRange, std::pair<float, float>(0.0f, 0.0f));
    addSingle(OXM::VisibleOpacityValueRange, std::pair<float, float>(0.0f, 1.0f));
    for (OXMenum id : channelIDs()) {
        addLink(id, true);
        setLinkedObject(id, new OXMSampleTransferSpec);
        markPresetProperties({id});
    }
    markPresetProperties({OXM::IntervalIndexList, OXM::IntervalModeList, OXM::IntervalNameList});
}

OXMSampleMaterial::OXMSampleMaterial(const OXMSampleMaterial& other) : OXMSampleMaterial()
{
    copyValuesFrom(other);
    redirectReferences(other);
}

OXMSampleMaterial& OXMSampleMaterial::operator=(const OXMSampleMaterial& other)
{
    if (this != &other) {
        copyValuesFrom(other);
        redirectReferences(other);
    }
    return *this;
}

void OXMSampleMaterial::redirectReferences(const OXMSampleMaterial& source)
{
    for (OXMenum id : channelIDs()) {
        OXMSampleTransferSpec* mine = getChannel(id);
        OXMObject* target = mine ? mine->getLinkedObject(OXM::Reference) : nullptr;
        if (!target)
            continue;
        for (OXMenum other : channelIDs()) {
            if (source.getChannel(other) == target) {
                mine->setLinkedObject(OXM::Reference, getChannel(other));
                break;
            }
        }
    }
}

OXMSampleTransferSpec* OXMSampleMaterial::getChannel(OXMenum id) const
{
    return dynamic_cast<OXMSampleTransferSpec*>(getLinkedObject(id));
}

bool OXMSampleMaterial::setDefaultClassification(int first, int last, OXMenum inputChannel)
{
    if (last < first)
        return false;
    const float x0 = float(first);
    const float x1 = float(last);
    bool ok = true;
    lock(OXM::PropertyMessage);

    const std::vector<int> borders = {first - 1, last};
    const std::vector<OXMenum> modes = {OXM::Enabled};
    const std::vector<const char*> names = {"Interval 1"};
    ok = OXMValueArrayPropertyIF<int>::getInterface(getProperty(OXM::IntervalIndexList))
             ->setArray(borders) &&
         ok;
    ok = OXMValueArrayPropertyIF<OXMenum>::getInterface(getProperty(OXM::IntervalModeList))
             ->setArray(modes) &&
         ok;
    ok = OXMValueArrayPropertyIF<const char*>::getInterface(getProperty(OXM::IntervalNameList))
             ->setArray(names) &&
         ok;
    const std::vector<float> iso = {0.5f * (x0 + x1)};
    ok = OXMValueArrayPropertyIF<float>::getInterface(getProperty(OXM::IsosurfaceValueList))
             ->setArray(iso) &&
         ok;
    ok = setValue(OXM::VisibleOpacityIndexRange, std::pair<float, float>(x0, x1)) && ok;
    ok = setValue(OXM::VisibleOpacityValueRange, std::pair<float, float>(0.0f, 1.0f)) && ok;

    const std::vector<OXMVector2<float>> ramp = {{x0, 0.0f}, {x1, 1.0f}};
    const std::vector<OXMVector2<float>> one = {{x0, 1.0f}, {x1, 1.0f}};
    const struct
    {
        OXMenum id;
        bool curve;
        float value;
    } channels[] = {
        {OXM::Opacity, true, 0.0f},
        {OXM::Gradient, true, 0.0f},
        {OXM::AmbientRed, true, 0.0f},
        {OXM::AmbientGreen, true, 0.0f},
        {OXM::AmbientBlue, true, 0.0f},
        {OXM::DiffuseRed, true, 0.0f},
        {OXM::DiffuseGreen, true, 0.0f},
        {OXM::DiffuseBlue, true, 0.0f},
        {OXM::SpecularRed, true, 0.0f},
        {OXM::SpecularGreen, true, 0.0f},
        {OXM::SpecularBlue, true, 0.0f},
        {OXM::EmissionRed, true, 0.0f},
        {OXM::EmissionGreen, true, 0.0f},
        {OXM::EmissionBlue, true, 0.0f},
        {OXM::AmbientIntensity, false, 0.2f},
        {OXM::DiffuseIntensity, false, 0.7f},
        {OXM::SpecularIntensity, false, 0.1f},
        {OXM::EmissionIntensity, false, 0.0f},
        {OXM::Shininess, false, 10.0f},
        {OXM::Transparency, false, 1.0f},
    };
    for (const auto& c : channels) {
        OXMSampleTransferSpec* transfer = getChannel(c.id);
        if (!transfer) {
            ok = false;
            continue;
        }
        ok = transfer->setValue(OXM::InputChannel, inputChannel) && ok;
        ok = (c.curve ? transfer->setCurve(c.id == OXM::Opacity ? ramp : one)
                      : transfer->setConstant(c.value)) &&
             ok;
    }
    unlock(OXM::PropertyMessage);
    return ok;
}
