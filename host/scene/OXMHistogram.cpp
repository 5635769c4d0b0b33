#include "OXMHistogram.h"

#include "OXMAction.h"
#include "OXMHistogramCalculator.h"
#include "OXMHistogramResult.h"
#include "OXMRegionOfInterest.h"
#include "OXMSampleGrid.h"
#include "OXMSampleTransferSpec.h"
#include "OXMSceneNames.h"
#include "OXMVolumeRenderObject.h"

OXM_SCENE_CLASS_IMPL(OXMHistogram, "OXMHistogram", OXMSceneObject)

OXMHistogram::OXMHistogram()
{
    addLink(OXM::SampleTransferSpec, true);
    addLink(OXM::Result, true);
    addSingle(OXMSceneNames::binCount(), 256);
    setLinkedObject(OXM::SampleTransferSpec, new OXMSampleTransferSpec);
    setLinkedObject(OXM::Result, new OXMHistogramResult);
    addAction(new OXMAction(
        OXM::Calculate,
        [](OXMObject& self, void*, OXMTaskInfo& task) {
            return static_cast<OXMHistogram&>(self).calculate(task);
        },
        [](const OXMObject& self, void*, OXMenum* code) {
            const OXMAction* a = self.getAction(OXM::Calculate);
            if (a && a->isRunning()) {
                if (code)
                    *code = OXM::Running;
                return true;
            }
            if (code)
                *code = OXM::NoError;
            return static_cast<const OXMHistogram&>(self).needsCalculation();
        }));
}

OXMHistogram::OXMHistogram(const OXMHistogram& other) : OXMHistogram()
{
    copyValuesFrom(other);
    mThreads = other.mThreads;
}

OXMHistogram& OXMHistogram::operator=(const OXMHistogram& other)
{
    if (this != &other) {
        copyValuesFrom(other);
        mThreads = other.mThreads;
        mDoneGrid = nullptr;
    }
    return *this;
}

OXMSampleTransferSpec* OXMHistogram::getTransferSpec() const
{
    return dynamic_cast<OXMSampleTransferSpec*>(getLinkedObject(OXM::SampleTransferSpec));
}

OXMHistogramResult* OXMHistogram::getResult() const
{
    return dynamic_cast<OXMHistogramResult*>(getLinkedObject(OXM::Result));
}

bool OXMHistogram::findSource(Source& source) const
{
    OXMObject* owner = getParentLink().getOwner();
    if (auto* roi = dynamic_cast<OXMRegionOfInterest*>(owner)) {
        source.grid = roi->getSampleGrid();
        source.mask = roi->getMask().empty() ? nullptr : roi->getMask().data();
        source.maskSize = (long long)roi->getMask().size();
        source.maskVersion = roi->getMaskVersion();
        if (!source.mask)
            return false;
    } else if (auto* volume = dynamic_cast<OXMVolumeRenderObject*>(owner)) {
        source.grid = volume->getSampleGrid();
    }
    if (!source.grid || !source.grid->getData())
        return false;
    if (source.mask && source.maskSize != source.grid->getVoxelCount())
        return false;
    source.dataVersion = source.grid->getDataVersion();
    source.gridID = source.grid;
    return true;
}

bool OXMHistogram::needsCalculation() const
{
    Source s;
    if (!findSource(s))
        return !getResult();
    OXMenum channel = OXM::Gray;
    if (const OXMSampleTransferSpec* transfer = getTransferSpec())
        transfer->getValue(OXM::InputChannel, channel);
    int bins = 0;
    getValue(OXMSceneNames::binCount(), bins);
    return !getResult() || s.gridID != mDoneGrid || s.dataVersion != mDoneDataVersion ||
           s.maskVersion != mDoneMaskVersion || channel != mDoneChannel || bins != mDoneBinCount;
}

OXMenum OXMHistogram::calculate(OXMTaskInfo& task)
{
    Source s;
    if (!findSource(s))
        return OXM::MissingAFObject;
    // A result that is up to date is kept: re-reading a classification asks for a
    // calculation every time, and only changed data costs a pass over the voxels.
    if (!needsCalculation())
        return OXM::NoError; // nothing ran, nothing to report
    OXMHistogramResult* result = getResult();
    if (!result)
        return OXM::MissingAFObject;
    OXMenum channel = OXM::Gray;
    if (const OXMSampleTransferSpec* transfer = getTransferSpec())
        transfer->getValue(OXM::InputChannel, channel);
    OXMHistogramCalculator::Input in;
    if (!OXMHistogramCalculator::makeInput(*s.grid, channel, in))
        return OXM::InvalidValue;
    in.mask = s.mask;
    in.threadCount = mThreads;
    getValue(OXMSceneNames::binCount(), in.binCount);
    OXMHistogramCalculator::Output out;
    task.setProgress(0.0f);
    const OXMenum code = OXMHistogramCalculator::calculate(in, out, &task);
    if (code != OXM::NoError)
        return code;
    if (!result->setResult(out.first, out.counts, {out.dataLow, out.dataHigh}))
        return OXM::GenericError;
    mDoneGrid = s.gridID;
    mDoneDataVersion = s.dataVersion;
    mDoneMaskVersion = s.maskVersion;
    mDoneChannel = channel;
    mDoneBinCount = in.binCount;
    task.setProgress(1.0f);
    return OXM::NoError;
}

OXMHistogram* OXMHistogram::findInList(const OXMSceneObject& owner, OXMenum inputChannel)
{
    for (const OXMObjectLink& l : owner.getLinks(OXM::HistogramList)) {
        auto* h = dynamic_cast<OXMHistogram*>(l.getLink());
        OXMenum channel;
        if (h && h->getTransferSpec() &&
            h->getTransferSpec()->getValue(OXM::InputChannel, channel) && channel == inputChannel)
            return h;
    }
    return nullptr;
}
