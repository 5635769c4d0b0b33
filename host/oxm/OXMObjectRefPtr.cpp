#include "OXMObjectRefPtr.h"

#include "OXMClassManager.h"
#include "OXMMetaClass.h"
#include "OXMObject.h"

#include <vector>

OXMObjectRefPtr::OXMObjectRefPtr(const char* className, OXMenum scope)
{
    const OXMMetaClass* meta = OXMClassManager::findMetaClass(className);
    if (!meta)
        return;
    if (meta->isSingleton()) {
        OXMClassManager::SearchPattern pattern;
        pattern.className = className;
        pattern.includeDerived = false;
        const int n = OXMClassManager::getObjectCount(pattern);
        if (n > 0) {
            std::vector<OXMClass*> found(std::size_t(n), nullptr);
            OXMClassManager::findObjects(found.data(), n, pattern);
            for (OXMClass* c : found) {
                if (c->getScope() == scope) {
                    OXMObjectPtr::operator=(static_cast<OXMObject*>(c));
                    return;
                }
            }
        }
    }
    OXMClass* created = meta->create();
    if (!created)
        return;
    OXMObject* object = dynamic_cast<OXMObject*>(created);
    if (!object) {
        OXMMetaClass::destruct(created, true);
        return;
    }
    object->setScope(scope);
    OXMObjectPtr::operator=(object);
}
