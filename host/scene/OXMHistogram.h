#pragma once

#include "OXMSceneObject.h"

#include <cstdint>

class OXMHistogramResult;
class OXMSampleGrid;
class OXMSampleTransferSpec;
class OXMTaskInfo;

// The grey-value histogram of the volume or region that holds it in its OXM::HistogramList
// (the owner of its parent link). Properties: OXM::SampleTransferSpec (link to a child
// OXMSampleTransferSpec whose OXM::InputChannel selects the channel), OXM::Result (named
// "Result": link to the child OXMHistogramResult), "BinCount" (int, bins for floating-point
// data and for integer data too wide for one bin per value, default 256).
//
// Action OXM::Calculate counts the voxels of the grid (of a region: only those in its mask)
// on two threads and writes the result; it reports progress and stops on requestAbort, in
// which case the previous result stays. checkExecute(OXM::Calculate) answers true with
// OXM::NoError when the data changed since the last calculation, true with OXM::Running
// while a calculation runs, and false with OXM::NoError when the result is up to date.
class OXMHistogram : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMHistogram)

public:
    OXMHistogram();
    OXMHistogram(const OXMHistogram& other);
    OXMHistogram& operator=(const OXMHistogram& other);

    OXMSampleTransferSpec* getTransferSpec() const;

    // The first histogram of owner's OXM::HistogramList whose transfer channel reads the input
    // channel; null if none does.
    static OXMHistogram* findInList(const OXMSceneObject& owner, OXMenum inputChannel);
    OXMHistogramResult* getResult() const;
    // Workers of a calculation (default 2).
    void setThreadCount(int threads) { mThreads = threads; }

    // Whether the result is missing or older than the data it was computed from.
    bool needsCalculation() const;

private:
    struct Source
    {
        const OXMSampleGrid* grid = nullptr;
        const std::uint8_t* mask = nullptr;
        long long maskSize = 0;
        int dataVersion = -1;
        int maskVersion = -1;
        const void* gridID = nullptr;
    };
    bool findSource(Source& source) const;
    OXMenum calculate(OXMTaskInfo& task);

    int mThreads = 2;
    // Identity of the data of the last successful calculation.
    const void* mDoneGrid = nullptr;
    int mDoneDataVersion = -1;
    int mDoneMaskVersion = -1;
    int mDoneBinCount = -1;
    OXMenum mDoneChannel;
};
