#include "OXMVolumeRenderObject.h"

#include "OXMAction.h"
#include "OXMGreyvalueIntervalExtractor.h"
#include "OXMHistogram.h"
#include "OXMObjectPath.h"
#include "OXMObjectRefPtr.h"
#include "OXMRenderPlugin.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMSceneNames.h"

OXM_SCENE_CLASS_IMPL(OXMVolumeRenderObject, "OXMVolumeRenderObject", OXMSceneObject)

using Box = std::pair<OXMVector3<float>, OXMVector3<float>>;

OXMVolumeRenderObject::OXMVolumeRenderObject()
{
    OXMSceneNames::registerSceneClasses();
    addSingle<const char*>(OXM::Name, "");
    addSingle(OXM::ScenePath, OXMObjectPath());
    addLink(OXM::SampleGrid, true);
    addLink(OXM::ApplicationSampleMaterial, true);
    addLinkArray(OXM::HistogramList, true);
    addLink(OXM::RenderPlugin, true);
    addLinkArray(OXM::RegionOfInterestList, true);
    addLinkArray(OXM::VolumeComponentList, true);
    addSingle(OXM::VolumeComponentMode, OXM::False);
    addSingle(OXM::GradientNormalization, OXM::False);
    addSingle(OXMSceneNames::shadingCountLimit(), 0);
    addSingle(OXMSceneNames::surfaceInverted(), OXM::False);
    addSingle(OXM::BoundingBox, Box());
    markPresetProperties(
        {OXM::RenderPlugin, OXM::GradientNormalization, OXMSceneNames::shadingCountLimit()});
    addAction(new OXMAction(OXM::Init, [](OXMObject& self, void*, OXMTaskInfo&) {
        return static_cast<OXMVolumeRenderObject&>(self).initDefaults() ? OXM::NoError
                                                                        : OXM::GenericError;
    }));
    addAction(OXMGreyvalueIntervalExtractor::createAction());
    prepareRoles();
}

OXMVolumeRenderObject::OXMVolumeRenderObject(const OXMVolumeRenderObject& other)
    : OXMVolumeRenderObject()
{
    copyValuesFrom(other);
}

OXMVolumeRenderObject& OXMVolumeRenderObject::operator=(const OXMVolumeRenderObject& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

OXMVolumeRenderObject* OXMVolumeRenderObject::create(OXMSampleGrid* grid, const char* name)
{
    if (!grid)
        return nullptr;
    auto* volume = new OXMVolumeRenderObject;
    OXMObjectPtr hold(volume);
    volume->setValue<const char*>(OXM::Name, name ? name : "");
    volume->setSampleGrid(grid);
    volume->initDefaults();
    hold.release();
    return volume;
}

OXMSampleGrid* OXMVolumeRenderObject::getSampleGrid() const
{
    return dynamic_cast<OXMSampleGrid*>(getLinkedObject(OXM::SampleGrid));
}

bool OXMVolumeRenderObject::setSampleGrid(OXMSampleGrid* grid)
{
    const bool ok = setLinkedObject(OXM::SampleGrid, grid);
    return updateBoundingBox() && ok;
}

OXMSampleMaterial* OXMVolumeRenderObject::getMaterial() const
{
    return dynamic_cast<OXMSampleMaterial*>(getLinkedObject(OXM::ApplicationSampleMaterial));
}

OXMHistogram* OXMVolumeRenderObject::getHistogram(OXMenum inputChannel) const
{
    return OXMHistogram::findInList(*this, inputChannel);
}

OXMObject* OXMVolumeRenderObject::getRenderPlugin() const
{
    return getLinkedObject(OXM::RenderPlugin);
}

bool OXMVolumeRenderObject::updateBoundingBox()
{
    Box box;
    if (const OXMSampleGrid* g = getSampleGrid()) {
        const OXMVector3<int> d = g->getDimensions();
        const OXMVector3<float> s = g->getSpacing();
        const OXMVector3<float> o = g->getGridOrigin();
        if (d.x > 0 && d.y > 0 && d.z > 0) {
            for (int i = 0; i < 3; ++i) {
                box.first[i] = o[i] - 0.5f * s[i];
                box.second[i] = o[i] + (float(d[i]) - 0.5f) * s[i];
            }
        }
    }
    return setValue(OXM::BoundingBox, box);
}

Box OXMVolumeRenderObject::getBoundingBox() const
{
    Box b;
    getValue(OXM::BoundingBox, b);
    return b;
}

bool OXMVolumeRenderObject::initDefaults()
{
    bool ok = true;
    OXMSampleGrid* grid = getSampleGrid();
    const OXMenum channel = grid ? grid->getDefaultChannel() : OXM::Gray;
    if (!getMaterial()) {
        int first = 0, last = 0;
        if (!grid || !grid->getIndexRange(channel, first, last))
            ok = false;
        auto* material = new OXMSampleMaterial;
        OXMObjectPtr hold(material);
        ok = material->setDefaultClassification(first, last, channel) && ok;
        ok = setLinkedObject(OXM::ApplicationSampleMaterial, material) && ok;
    }
    if (getLinks(OXM::HistogramList).empty()) {
        auto* histogram = new OXMHistogram;
        OXMObjectPtr hold(histogram);
        ok = histogram->getTransferSpec()->setValue(OXM::InputChannel, channel) && ok;
        ok = appendLink(OXM::HistogramList, OXMObjectLink(histogram)) && ok;
    }
    if (!getRenderPlugin()) {
        OXMObjectRefPtr plugin("OXMRaytracing::Volume::RenderPlugin");
        if (plugin) {
            plugin->prepareRoles();
            plugin->setValue(OXMSceneNames::shadingModel(), OXM::Phong);
            plugin->setValue(OXM::SamplingDistance, 0.5f);
        }
        ok = plugin && setLinkedObject(OXM::RenderPlugin, plugin.get()) && ok;
    }
    return ok;
}
