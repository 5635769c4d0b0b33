#pragma once

#include "OXMSceneObject.h"
#include "OXMTypeInfo.h"
#include "OXMVector3.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

// The voxels of a volume: dimensions, spacing, data type and the sample buffer (x fastest,
// then y, then z). Properties: "Dimensions" (OXMVector3<int>), "Spacing" (OXMVector3<float>),
// "GridOrigin" (OXMVector3<float>, centre of the first voxel), OXM::SampleDataType
// (OXMTypeInfo), OXM::Name, "DataVersion" (int, a new process-wide unique number on every setData,
// so listeners hear of new voxels), "DataSource" and "DataSeries" (strings: the file or folder
// the voxels were read from, and the DICOM series chosen there; empty for voxels made here). Dimensions and data type are locked: only setData changes them.
class OXMSampleGrid : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXMSampleGrid)

public:
    OXMSampleGrid();
    // Shares the other grid's buffer (it is never changed in place, only replaced).
    OXMSampleGrid(const OXMSampleGrid& other);
    OXMSampleGrid& operator=(const OXMSampleGrid& other);

    // Replaces the voxels. bytes must hold dims.x * dims.y * dims.z voxels of the type; false
    // (and nothing changes) for a size mismatch, an unsupported type or a negative dimension.
    bool setData(const OXMVector3<int>& dims, OXMenum dataType, std::vector<std::uint8_t> bytes);
    // The same with a buffer that stays where it is (a file reader's): the grid shares it, its
    // memory lives as long as someone holds `data`.
    bool setData(const OXMVector3<int>& dims, OXMenum dataType,
                 std::shared_ptr<const std::uint8_t> data, std::size_t byteCount);
    template <typename T>
    bool setSamples(const OXMVector3<int>& dims, OXMenum dataType, const std::vector<T>& samples)
    {
        std::vector<std::uint8_t> bytes(samples.size() * sizeof(T));
        if (!bytes.empty())
            std::memcpy(bytes.data(), samples.data(), bytes.size());
        return setData(dims, dataType, std::move(bytes));
    }

    OXMVector3<int> getDimensions() const;
    OXMVector3<float> getSpacing() const;
    bool setSpacing(const OXMVector3<float>& spacing);
    OXMVector3<float> getGridOrigin() const;
    bool setGridOrigin(const OXMVector3<float>& origin);
    OXMTypeInfo getDataType() const;
    long long getVoxelCount() const;
    int getDataVersion() const;

    const std::uint8_t* getData() const { return mData.get(); }
    std::size_t getByteCount() const { return mByteCount; }
    // The voxel buffer itself, shared: it stays valid for its holder when the grid's data is
    // replaced or the grid goes.
    std::shared_ptr<const std::uint8_t> getDataHandle() const { return mData; }
    template <typename T>
    const T* getSamples() const
    {
        return reinterpret_cast<const T*>(getData());
    }

    // OXM::Gray for scalar data, else the first channel (OXM::Red).
    OXMenum getDefaultChannel() const;

    // The native value of channel channelIndex of voxel index (0 outside the grid).
    double getNativeValue(long long index, int channelIndex = 0) const;

    // The grey-value index range of the data as the histogram indexes it: for integer
    // channels with one bin per value the smallest and largest value, else 0..binCount-1.
    bool getIndexRange(OXMenum channel, int& first, int& last) const;
    // Tells the grid the smallest and largest value of its scalar integer data, found by
    // whoever wrote the voxels (a file reader counts them while reading): getIndexRange answers
    // from it without a pass over the voxels, until the data change.
    void setValueRange(long long smallest, long long largest);

private:
    std::shared_ptr<const std::uint8_t> mData;
    std::size_t mByteCount = 0;
    // From setValueRange, valid for the data version it was given at; -1: none.
    int mValueRangeVersion = -1;
    long long mSmallest = 0;
    long long mLargest = -1;
};
