#include "OXMObjectPath.h"

#include "OXMObject.h"

#include <algorithm>

OXMObjectPath OXMObjectPath::fromObject(OXMObject* object)
{
    std::vector<OXMObjectLink> links;
    for (OXMObject* o = object; o; o = o->getParentLink().getOwner()) {
        links.push_back(o->getParentLink());
        if (links.size() > 10000)
            break; // a cycle of parent links; never expected
    }
    std::reverse(links.begin(), links.end());
    return OXMObjectPath(std::move(links));
}

OXMObjectLink OXMObjectPath::getPathElement(int index) const
{
    const int i = resolve(index);
    if (i < 0 || i >= int(mLinks.size()))
        return OXMObjectLink();
    return mLinks[std::size_t(i)];
}

OXMObject* OXMObjectPath::getLink(int index) const
{
    const int i = resolve(index);
    return i < 0 || i >= int(mLinks.size()) ? nullptr : mLinks[std::size_t(i)].getLink();
}

OXMObject* OXMObjectPath::getAuxLink(int index) const
{
    const int i = resolve(index);
    return i < 0 || i >= int(mLinks.size()) ? nullptr : mLinks[std::size_t(i)].getAuxLink();
}

bool OXMObjectPath::truncate(int first, int last)
{
    const int f = resolve(first);
    const int l = resolve(last);
    const int n = int(mLinks.size());
    if (f < 0 || f > n || l < -1 || l >= n)
        return false;
    if (l < f) {
        mLinks.clear();
        return true;
    }
    mLinks.erase(mLinks.begin() + (l + 1), mLinks.end());
    mLinks.erase(mLinks.begin(), mLinks.begin() + f);
    return true;
}
