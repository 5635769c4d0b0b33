#pragma once

#include "OXMValueArrayOP.h"

// A float array property whose index range starts at a chosen first index (a histogram over
// the grey values first..last). Items are addressed by their index: getArrayItems(first,
// last) reads the whole array. initArray(first, last, items) replaces array and first index.
class OXMIndexedFloatArrayOP : public OXMValueArrayOP<float>
{
public:
    OXMIndexedFloatArrayOP() = default;
    OXMIndexedFloatArrayOP(const OXMIndexedFloatArrayOP& other);
    OXMIndexedFloatArrayOP& operator=(const OXMIndexedFloatArrayOP& other);

    int getFirstIndex() const { return mFirst; }

    bool getArrayIndexRange(int& first, int& last) const override;
    bool getArrayItems(int first, int last, float* items) const override;
    bool setArrayItems(int first, int last, const float* items) override;
    bool initArray(int first, int last, const float* items) override;
    bool assignFrom(const OXMProperty& source) override;
    OXMProperty* clone() const override { return new OXMIndexedFloatArrayOP(*this); }

private:
    int mFirst = 0;
};
