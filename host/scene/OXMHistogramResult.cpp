#include "OXMHistogramResult.h"

#include "OXMIndexedFloatArrayOP.h"
#include "OXMSceneNames.h"

OXM_SCENE_CLASS_IMPL(OXMHistogramResult, "OXMHistogramResult", OXMSceneObject)

OXMHistogramResult::OXMHistogramResult() : mHistogram(new OXMIndexedFloatArrayOP)
{
    addProperty(OXM::Histogram, mHistogram, true);
    addSingle(OXMSceneNames::dataRange(), std::pair<float, float>(0.0f, 0.0f));
}

OXMHistogramResult::OXMHistogramResult(const OXMHistogramResult& other) : OXMHistogramResult()
{
    copyValuesFrom(other);
}

OXMHistogramResult& OXMHistogramResult::operator=(const OXMHistogramResult& other)
{
    if (this != &other)
        copyValuesFrom(other);
    return *this;
}

bool OXMHistogramResult::setResult(int first, const std::vector<float>& counts,
                                   std::pair<float, float> range)
{
    lock(OXM::PropertyMessage);
    bool ok = mHistogram->initArray(first, first + int(counts.size()) - 1, counts.data());
    ok = setValue(OXMSceneNames::dataRange(), range) && ok;
    unlock(OXM::PropertyMessage);
    return ok;
}

int OXMHistogramResult::getFirstIndex() const
{
    return mHistogram->getFirstIndex();
}

std::vector<float> OXMHistogramResult::getCounts() const
{
    return mHistogram->getStoredArray();
}

std::pair<float, float> OXMHistogramResult::getDataRange() const
{
    std::pair<float, float> r;
    getValue(OXMSceneNames::dataRange(), r);
    return r;
}
