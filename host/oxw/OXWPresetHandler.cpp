#include "OXWPresetHandler.h"

#include <OXMMetaClass.h>
#include <OXMRegisteredEnum.h>

#include <algorithm>
#include <vector>

namespace {

// The live handlers in the order of their registration.
std::vector<OXWPresetHandler*>& registry()
{
    static std::vector<OXWPresetHandler*> handlers;
    return handlers;
}

} // namespace

OXWPresetHandler::OXWPresetHandler(OXMenum id) : mHandlerID(id)
{
    setAutoDelete(false);
    if (mHandlerID.isValid()) {
        registry().push_back(this);
    }
}

OXWPresetHandler::~OXWPresetHandler()
{
    std::vector<OXWPresetHandler*>& handlers = registry();
    handlers.erase(std::remove(handlers.begin(), handlers.end(), this), handlers.end());
}

const OXMMetaClass* OXWPresetHandler::metaClass()
{
    // No factory: a handler needs its identifier and is created by its owner, not by name.
    static auto* meta = new OXMMetaClass("OXWPresetHandler", sizeof(OXWPresetHandler),
                                         OXMObject::metaClass(), nullptr, "oxw");
    return meta;
}

const OXMMetaClass* OXWPresetHandler::getMetaClass() const
{
    return metaClass();
}

OXMenum OXWPresetHandler::getObjectID(int index) const
{
    static auto* id = new OXMRegisteredEnum("OXWPresetHandler");
    return index == 0 ? id->getValue() : OXMObject::getObjectID(index - 1);
}

OXWPresetHandler* OXWPresetHandler::getPresetHandler(OXMenum id)
{
    if (!id.isValid()) {
        return nullptr;
    }
    const std::vector<OXWPresetHandler*>& handlers = registry();
    const auto found = std::find_if(handlers.rbegin(), handlers.rend(),
                                    [id](OXWPresetHandler* h) { return h->mHandlerID == id; });
    return found == handlers.rend() ? nullptr : *found;
}

bool OXWPresetHandler::setTargetObject(OXMObject* target)
{
    mTarget = target;
    return true;
}

bool OXWPresetHandler::setHistogramObject(OXMObject* histogram)
{
    mHistogram = histogram;
    return true;
}
