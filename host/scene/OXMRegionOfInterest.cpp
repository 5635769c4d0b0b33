#include "OXMRegionOfInterest.h"

#include "OXMAction.h"
#include "OXMGreyvalueIntervalExtractor.h"
#include "OXMHistogram.h"
#include "OXMHistogramCalculator.h"
#include "OXMObjectPath.h"
#include "OXMObjectPtr.h"
#include "OXMSampleGrid.h"
#include "OXMSampleMaterial.h"
#include "OXMSampleTransferSpec.h"
#include "OXMSceneNames.h"
#include "OXMVolumeRenderObject.h"

#include <algorithm>
#include <atomic>

OXM_SCENE_CLASS_IMPL(OXMRegionOfInterest, "OXMRegionOfInterest", OXMSceneObject)

namespace {
const std::vector<std::uint8_t>& emptyMask()
{
    static const auto* e = new std::vector<std::uint8_t>;
    return *e;
}
} // namespace

OXMRegionOfInterest::OXMRegionOfInterest()
{
    OXMSceneNames::registerSceneClasses();
    addSingle<const char*>(OXM::Name, "");
    addSingle(OXM::ScenePath, OXMObjectPath());
    addLink(OXM::SampleGrid, true);
    addLink(OXM::ApplicationSampleMaterial, true);
    addLinkArray(OXM::HistogramList, true);
    addSingle(OXM::GradientNormalization, OXM::False);
    addSingle(OXMSceneNames::shadingCountLimit(), 0);
    addSingle(OXMSceneNames::surfaceInverted(), OXM::False);
    addSingle(OXMSceneNames::maskVersion(), 0);
    addSingle(OXMSceneNames::voxelCount(), 0);
    markPresetProperties({OXM::GradientNormalization, OXMSceneNames::shadingCountLimit()});
    addAction(new OXMAction(OXM::Init, [](OXMObject& self, void*, OXMTaskInfo&) {
        return static_cast<OXMRegionOfInterest&>(self).initDefaults() ? OXM::NoError
                                                                      : OXM::GenericError;
    }));
    addAction(OXMGreyvalueIntervalExtractor::createAction());
    prepareRoles();
}

OXMRegionOfInterest::OXMRegionOfInterest(const OXMRegionOfInterest& other) : OXMRegionOfInterest()
{
    copyValuesFrom(other);
    mMask = other.mMask;
}

OXMRegionOfInterest& OXMRegionOfInterest::operator=(const OXMRegionOfInterest& other)
{
    if (this != &other) {
        mMask = other.mMask;
        copyValuesFrom(other);
    }
    return *this;
}

OXMVolumeRenderObject* OXMRegionOfInterest::getVolume() const
{
    return dynamic_cast<OXMVolumeRenderObject*>(getParentLink().getOwner());
}

OXMSampleGrid* OXMRegionOfInterest::getSampleGrid() const
{
    if (auto* g = dynamic_cast<OXMSampleGrid*>(getLinkedObject(OXM::SampleGrid)))
        return g;
    const OXMVolumeRenderObject* v = getVolume();
    return v ? v->getSampleGrid() : nullptr;
}

OXMSampleMaterial* OXMRegionOfInterest::getMaterial() const
{
    return dynamic_cast<OXMSampleMaterial*>(getLinkedObject(OXM::ApplicationSampleMaterial));
}

OXMHistogram* OXMRegionOfInterest::getHistogram(OXMenum inputChannel) const
{
    return OXMHistogram::findInList(*this, inputChannel);
}

bool OXMRegionOfInterest::setMask(std::vector<std::uint8_t> mask)
{
    const long long count =
        (long long)std::count_if(mask.begin(), mask.end(), [](std::uint8_t m) { return m != 0; });
    mMask = std::make_shared<const std::vector<std::uint8_t>>(std::move(mask));
    static std::atomic<int> versions{0};
    lock(OXM::PropertyMessage);
    bool ok = setValue(OXMSceneNames::voxelCount(), int(std::min<long long>(count, 0x7fffffff)));
    ok = setValue(OXMSceneNames::maskVersion(), ++versions) && ok;
    unlock(OXM::PropertyMessage);
    return ok;
}

const std::vector<std::uint8_t>& OXMRegionOfInterest::getMask() const
{
    return mMask ? *mMask : emptyMask();
}

int OXMRegionOfInterest::getMaskVersion() const
{
    int v = 0;
    getValue(OXMSceneNames::maskVersion(), v);
    return v;
}

long long OXMRegionOfInterest::getMaskVoxelCount() const
{
    int v = 0;
    getValue(OXMSceneNames::voxelCount(), v);
    return v;
}

bool OXMRegionOfInterest::initDefaults()
{
    bool ok = true;
    const OXMSampleGrid* grid = getSampleGrid();
    const OXMenum channel = grid ? grid->getDefaultChannel() : OXM::Gray;
    if (!getMaterial()) {
        int first = 0, last = 0;
        OXMHistogramCalculator::Input in;
        OXMHistogramCalculator::Output out;
        if (grid && OXMHistogramCalculator::makeInput(*grid, channel, in) &&
            (long long)getMask().size() == in.voxelCount) {
            in.mask = getMask().data();
            if (OXMHistogramCalculator::calculate(in, out) == OXM::NoError) {
                first = out.first;
                last = out.first + int(out.counts.size()) - 1;
            } else {
                ok = false;
            }
        } else {
            ok = false;
        }
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
    return ok;
}
