#include "OXWVolumePlacement.h"

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXMVector3.h>

#include <utility>

OXMObject* OXWVolumePlacement::volumeOf(const OXMObject* object)
{
    if (object && object->isRoleActive(OXM::RegionOfInterest))
        return object->getParentLink().getOwner();
    return const_cast<OXMObject*>(object);
}

OXWVolumePlacement::Matrix OXWVolumePlacement::identity()
{
    return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
}

OXMObject* OXWVolumePlacement::findTransform(const OXMObject* object)
{
    const OXMObject* volume = volumeOf(object);
    OXMObjectPath path;
    if (!volume || !volume->getValue(OXM::ScenePath, path))
        return nullptr;
    for (int i = path.getPathDepth() - 1; i >= 0; --i)
        if (path.getLink(i) == volume)
            return path.getAuxLink(i);
    return nullptr;
}

OXWVolumePlacement::Matrix OXWVolumePlacement::read(const OXMObject* object,
                                                    std::vector<OXMObject*>* sources)
{
    Matrix m = identity();
    OXMObject* transform = findTransform(object);
    std::pair<OXMVector3<float>, OXMVector3<float>> box;
    OXMVector3<float> origin;
    auto* values = OXMValueArrayPropertyIF<float>::getInterface(
        transform ? transform->getProperty(OXM::TransformMatrix) : nullptr);
    if (!values || !transform->getValue(OXM::Origin, origin) ||
        !volumeOf(object)->getValue(OXM::BoundingBox, box))
        return m;
    if (sources)
        sources->push_back(transform);
    const std::vector<float> t = values->getArray();
    if (t.size() != 16)
        return m;
    const OXMVector3<float> c = (box.first + box.second) / 2.0f;
    for (int r = 0; r < 3; ++r) {
        double shift = double(origin[r]) + double(t[std::size_t(r * 4 + 3)]);
        for (int k = 0; k < 3; ++k) {
            m[std::size_t(r * 4 + k)] = double(t[std::size_t(r * 4 + k)]);
            shift -= double(t[std::size_t(r * 4 + k)]) * double(c[k]);
        }
        m[std::size_t(r * 4 + 3)] = shift;
    }
    return m;
}

std::array<double, 3> OXWVolumePlacement::direction(const Matrix& m, const std::array<double, 3>& d)
{
    std::array<double, 3> out = {{0, 0, 0}};
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k)
            out[std::size_t(r)] += m[std::size_t(r * 4 + k)] * d[std::size_t(k)];
    return out;
}
