#include "OXMSampleTransferSpec.h"

OXM_SCENE_CLASS_IMPL(OXMSampleTransferSpec, "OXMSampleTransferSpec", OXMSceneObject)

OXMSampleTransferSpec::OXMSampleTransferSpec()
{
    addSingle(OXM::MapMode, OXM::LookupTable);
    addLink(OXM::Reference, false);
    addArray<OXMVector2<float>>(OXM::LookupTableHandleList);
    addSingle(OXM::LookupTableHandleMode, OXM::Linear);
    addSingle(OXM::Scale, 1.0f);
    addSingle(OXM::Bias, 0.0f);
    addSingle(OXM::InputChannel, OXM::Gray);
    markPresetProperties({OXM::MapMode, OXM::Reference, OXM::LookupTableHandleList,
                          OXM::LookupTableHandleMode, OXM::Scale, OXM::Bias});
}

OXMSampleTransferSpec::OXMSampleTransferSpec(const OXMSampleTransferSpec& other)
    : OXMSampleTransferSpec()
{
    copyValuesFrom(other);
}

OXMSampleTransferSpec& OXMSampleTransferSpec::operator=(const OXMSampleTransferSpec& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

bool OXMSampleTransferSpec::setCurve(const std::vector<OXMVector2<float>>& handles)
{
    auto* list = OXMValueArrayPropertyIF<OXMVector2<float>>::getInterface(
        getProperty(OXM::LookupTableHandleList));
    bool ok = setValue(OXM::Scale, 1.0f);
    ok = setValue(OXM::Bias, 0.0f) && ok;
    ok = setValue(OXM::MapMode, OXM::LookupTable) && ok;
    ok = setValue(OXM::LookupTableHandleMode, OXM::Linear) && ok;
    ok = list && list->setArray(handles) && ok;
    return ok;
}

bool OXMSampleTransferSpec::setConstant(float value)
{
    bool ok = setValue(OXM::Scale, value);
    ok = setValue(OXM::Bias, 0.0f) && ok;
    ok = setValue(OXM::MapMode, OXM::Constant) && ok;
    return ok;
}

bool OXMSampleTransferSpec::setReference(OXMSampleTransferSpec* channel)
{
    bool ok = setLinkedObject(OXM::Reference, channel);
    ok = setValue(OXM::MapMode, OXM::Reference) && ok;
    return ok;
}

const OXMSampleTransferSpec* OXMSampleTransferSpec::resolve() const
{
    const OXMSampleTransferSpec* c = this;
    for (int step = 0; step < 16 && c; ++step) {
        OXMenum mode;
        if (!c->getValue(OXM::MapMode, mode) || mode != OXM::Reference)
            return c;
        c = dynamic_cast<const OXMSampleTransferSpec*>(c->getLinkedObject(OXM::Reference));
    }
    return nullptr;
}

float OXMSampleTransferSpec::evaluate(float x) const
{
    const OXMSampleTransferSpec* c = resolve();
    if (!c)
        return 0.0f;
    float scale = 1.0f, bias = 0.0f;
    OXMenum mode;
    c->getValue(OXM::Scale, scale);
    c->getValue(OXM::Bias, bias);
    c->getValue(OXM::MapMode, mode);
    if (mode == OXM::Constant)
        return scale;
    auto* list = OXMValueArrayPropertyIF<OXMVector2<float>>::getInterface(
        c->getProperty(OXM::LookupTableHandleList));
    if (!list || list->getArraySize() == 0)
        return 0.0f;
    const std::vector<OXMVector2<float>> h = list->getArray();
    float y = h.front().y;
    if (x >= h.back().x) {
        y = h.back().y;
    } else if (x > h.front().x) {
        for (std::size_t i = 1; i < h.size(); ++i) {
            if (x <= h[i].x) {
                const float dx = h[i].x - h[i - 1].x;
                const float t = dx > 0.0f ? (x - h[i - 1].x) / dx : 1.0f;
                y = h[i - 1].y + t * (h[i].y - h[i - 1].y);
                break;
            }
        }
    }
    return y * scale + bias;
}
