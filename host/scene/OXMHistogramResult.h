#pragma once

#include "OXMSceneObject.h"

#include <utility>
#include <vector>

class OXMIndexedFloatArrayOP;

// The result of a histogram calculation. Properties: OXM::Histogram (named "Histogram": float
// array with the index range first..last of the grey-value indices, one value per bin) and
// "DataRange" (pair of floats: the values of the first and the last bin).
class OXMHistogramResult : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMHistogramResult)

public:
    OXMHistogramResult();
    OXMHistogramResult(const OXMHistogramResult& other);
    OXMHistogramResult& operator=(const OXMHistogramResult& other);

    // Replaces bins and range with one change message per property.
    bool setResult(int first, const std::vector<float>& counts, std::pair<float, float> range);
    int getFirstIndex() const;
    std::vector<float> getCounts() const;
    std::pair<float, float> getDataRange() const;

private:
    OXMIndexedFloatArrayOP* mHistogram = nullptr;
};
