#pragma once

#include "OXMObjectLink.h"

#include <vector>

// A path through the containment tree: element 0 links to the root, every further element
// is the link from the previous element's object to the next. Negative indices count from
// the end (-1 is the last element).
class OXMObjectPath
{
public:
    OXMObjectPath() = default;
    explicit OXMObjectPath(std::vector<OXMObjectLink> links) : mLinks(std::move(links)) {}
    // The path from the root of the object's tree, following parent links upwards.
    static OXMObjectPath fromObject(OXMObject* object);

    int getPathDepth() const { return int(mLinks.size()); }
    bool isEmpty() const { return mLinks.empty(); }
    void append(const OXMObjectLink& link) { mLinks.push_back(link); }

    // The element at the index; a null link for an index outside the path.
    OXMObjectLink getPathElement(int index) const;
    // The linked / auxiliary object of the element; null outside the path.
    OXMObject* getLink(int index) const;
    OXMObject* getAuxLink(int index) const;

    // Keeps the elements first..last (inclusive, negative from the end): truncate(0, -2)
    // drops the last element. False (and unchanged) when the range is not inside the path;
    // an empty range empties the path.
    bool truncate(int first, int last);

    bool operator==(const OXMObjectPath& o) const { return mLinks == o.mLinks; }
    bool operator!=(const OXMObjectPath& o) const { return !(*this == o); }

private:
    int resolve(int index) const { return index < 0 ? int(mLinks.size()) + index : index; }

    std::vector<OXMObjectLink> mLinks;
};
