#include "OXWRoiAndVolumeExtractor.h"

#include "OXWTaskProgress.h"

#include <OXMGreyvalueIntervalExtraction.h>
#include <OXMObject.h>

namespace {

OXMObject* extract(const OXMObjectPath& path, OXMenum channel, const OXMInterval& interval,
                   OXMGreyvalueIntervalExtraction::Result result)
{
    OXMObject* source = path.getLink(-1);
    if (!source)
        return nullptr;
    OXMGreyvalueIntervalExtraction parameters;
    parameters.channel = channel;
    parameters.interval = interval;
    parameters.result = result;
    // Making the new object is not an edit of the scene; placing it is, and is recorded then.
    OXMUndoRecorder* recorder = OXMObject::setUndoRecorder(nullptr);
    OXWTaskProgress::beginStatusBarCallback();
    const bool ok = source->execute(OXM::ExtractGreyvalueInterval, &parameters);
    OXWTaskProgress::endStatusBarCallback();
    OXMObject::setUndoRecorder(recorder);
    return ok ? parameters.created : nullptr;
}

} // namespace

OXMObject* OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(const OXMObjectPath& path,
                                                                    OXMenum channel,
                                                                    const OXMInterval& interval)
{
    return extract(path, channel, interval, OXMGreyvalueIntervalExtraction::Result::Region);
}

OXMObject* OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
    const OXMObjectPath& path, OXMenum channel, const OXMInterval& interval)
{
    return extract(path, channel, interval, OXMGreyvalueIntervalExtraction::Result::Volume);
}
