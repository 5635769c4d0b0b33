#include "OXMSampleGrid.h"

#include <climits>

#include "OXMHistogramCalculator.h"
#include "OXMSceneNames.h"

#include <atomic>
#include <cstring>

OXM_SCENE_CLASS_IMPL(OXMSampleGrid, "OXMSampleGrid", OXMSceneObject)

namespace {

OXMProperty* lockedProperty(OXMObject& o, OXMenum id)
{
    OXMProperty* p = o.getProperty(id);
    if (p)
        p->lock();
    return p;
}

} // namespace

OXMSampleGrid::OXMSampleGrid()
{
    addSingle<const char*>(OXM::Name, "");
    addSingle(OXMSceneNames::dimensions(), OXMVector3<int>(0, 0, 0));
    addSingle(OXMSceneNames::spacing(), OXMVector3<float>(1.0f, 1.0f, 1.0f));
    addSingle(OXMSceneNames::gridOrigin(), OXMVector3<float>(0.0f, 0.0f, 0.0f));
    addSingle(OXM::SampleDataType, OXMTypeInfo(OXM::UInt8));
    addSingle(OXMSceneNames::dataVersion(), 0);
    addSingle<const char*>(OXMSceneNames::dataSource(), "");
    addSingle<const char*>(OXMSceneNames::dataSeries(), "");
    lockedProperty(*this, OXMSceneNames::dimensions());
    lockedProperty(*this, OXM::SampleDataType);
}

OXMSampleGrid::OXMSampleGrid(const OXMSampleGrid& other) : OXMSampleGrid()
{
    copyValuesFrom(other);
    mData = other.mData;
    mByteCount = other.mByteCount;
}

OXMSampleGrid& OXMSampleGrid::operator=(const OXMSampleGrid& other)
{
    if (this != &other) {
        mData = other.mData;
        mByteCount = other.mByteCount;
        mByteCount = other.mByteCount;
        copyValuesFrom(other);
    }
    return *this;
}

bool OXMSampleGrid::setData(const OXMVector3<int>& dims, OXMenum dataType,
                            std::vector<std::uint8_t> bytes)
{
    auto vector = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const std::size_t size = vector->size();
    return setData(dims, dataType, std::shared_ptr<const std::uint8_t>(vector, vector->data()),
                   size);
}

bool OXMSampleGrid::setData(const OXMVector3<int>& dims, OXMenum dataType,
                            std::shared_ptr<const std::uint8_t> data, std::size_t byteCount)
{
    const OXMTypeInfo type(dataType);
    if (!type.isValid() || dims.x < 0 || dims.y < 0 || dims.z < 0)
        return false;
    const unsigned long long count =
        (unsigned long long)dims.x * (unsigned long long)dims.y * (unsigned long long)dims.z;
    if (byteCount != count * (unsigned long long)type.getSize() || (byteCount > 0 && !data))
        return false;
    mData = std::move(data);
    mByteCount = byteCount;
    lock(OXM::PropertyMessage);
    OXMProperty* d = getProperty(OXMSceneNames::dimensions());
    OXMProperty* t = getProperty(OXM::SampleDataType);
    d->unlock();
    t->unlock();
    setValue(OXMSceneNames::dimensions(), dims);
    setValue(OXM::SampleDataType, type);
    d->lock();
    t->lock();
    static std::atomic<int> versions{0};
    setValue(OXMSceneNames::dataVersion(), ++versions);
    unlock(OXM::PropertyMessage);
    return true;
}

OXMVector3<int> OXMSampleGrid::getDimensions() const
{
    OXMVector3<int> v;
    getValue(OXMSceneNames::dimensions(), v);
    return v;
}

OXMVector3<float> OXMSampleGrid::getSpacing() const
{
    OXMVector3<float> v;
    getValue(OXMSceneNames::spacing(), v);
    return v;
}

bool OXMSampleGrid::setSpacing(const OXMVector3<float>& spacing)
{
    return setValue(OXMSceneNames::spacing(), spacing);
}

OXMVector3<float> OXMSampleGrid::getGridOrigin() const
{
    OXMVector3<float> v;
    getValue(OXMSceneNames::gridOrigin(), v);
    return v;
}

bool OXMSampleGrid::setGridOrigin(const OXMVector3<float>& origin)
{
    return setValue(OXMSceneNames::gridOrigin(), origin);
}

OXMTypeInfo OXMSampleGrid::getDataType() const
{
    OXMTypeInfo t;
    getValue(OXM::SampleDataType, t);
    return t;
}

long long OXMSampleGrid::getVoxelCount() const
{
    const OXMVector3<int> d = getDimensions();
    return (long long)d.x * d.y * d.z;
}

int OXMSampleGrid::getDataVersion() const
{
    int v = 0;
    getValue(OXMSceneNames::dataVersion(), v);
    return v;
}

OXMenum OXMSampleGrid::getDefaultChannel() const
{
    const OXMTypeInfo type = getDataType();
    if (type.getChannel(OXM::Gray) && type.getChannel(OXM::Gray)->getID() == OXM::Gray)
        return OXM::Gray;
    const OXMTypeInfo::Channel* c = type.getChannel(0);
    return c ? c->getID() : OXM::Gray;
}

double OXMSampleGrid::getNativeValue(long long index, int channelIndex) const
{
    const OXMTypeInfo type = getDataType();
    const OXMTypeInfo::Channel* c = type.getChannel(channelIndex);
    if (!c || !getData() || index < 0 || index >= getVoxelCount())
        return 0.0;
    const std::uint8_t* p = getData() + (std::size_t(index) * std::size_t(type.getChannelCount()) +
                                         std::size_t(channelIndex)) *
                                            std::size_t(c->getSize());
    auto read = [p](auto v) {
        std::memcpy(&v, p, sizeof(v));
        return double(v);
    };
    const OXMenum t = c->getDataType();
    if (t == OXM::UInt8)
        return read(std::uint8_t());
    if (t == OXM::Int8)
        return read(std::int8_t());
    if (t == OXM::UInt16)
        return read(std::uint16_t());
    if (t == OXM::Int16)
        return read(std::int16_t());
    if (t == OXM::UInt32)
        return read(std::uint32_t());
    if (t == OXM::Int32)
        return read(std::int32_t());
    if (t == OXM::Float32)
        return read(float());
    if (t == OXM::Float64)
        return read(double());
    return 0.0;
}

void OXMSampleGrid::setValueRange(long long smallest, long long largest)
{
    mValueRangeVersion = getDataVersion();
    mSmallest = smallest;
    mLargest = largest;
}

bool OXMSampleGrid::getIndexRange(OXMenum channel, int& first, int& last) const
{
    const OXMTypeInfo::Channel* c = getDataType().getChannel(channel);
    const bool oneBinPerValue = c && c->isInteger() && getDataType().getChannelCount() == 1 &&
                                mLargest - mSmallest < OXMHistogramCalculator::MaxIntegerBins &&
                                mSmallest > INT_MIN && mLargest < INT_MAX;
    if (mValueRangeVersion == getDataVersion() && oneBinPerValue && mLargest >= mSmallest) {
        first = int(mSmallest);
        last = int(mLargest);
        return true;
    }
    OXMHistogramCalculator::Input in;
    OXMHistogramCalculator::Output out;
    if (!OXMHistogramCalculator::makeInput(*this, channel, in) ||
        OXMHistogramCalculator::calculate(in, out) != OXM::NoError)
        return false;
    first = out.first;
    last = out.first + int(out.counts.size()) - 1;
    return true;
}
