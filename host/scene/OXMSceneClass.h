#pragma once

#include "OXMClassFactory.h"
#include "OXMMetaClass.h"
#include "OXMRegisteredEnum.h"
#include "OXMenum.h"

// Module name under which the scene classes are registered with the class manager.
inline constexpr const char* OXMSceneModule = "oxmscene";

// Namespace of the classification plug-in: a few property keys of the render objects are
// registered there so that host and plug-in use identical values.
inline constexpr const char* OXMClassificationNamespace = "oxwclassificationtool";

// Declares the meta-class members of a scene class (inside the class body).
#define OXM_SCENE_CLASS(Class)                                                                     \
public:                                                                                            \
    static const OXMMetaClass* metaClass();                                                        \
    const OXMMetaClass* getMetaClass() const override;                                             \
    OXMenum getObjectID(int index) const override;                                                 \
                                                                                                   \
private:

// Defines them (in the source file): the class is created by the name className through the
// class manager and answers getObjectID(0) with that name as an enumeration of the host.
// The meta-class is registered when the library is loaded.
#define OXM_SCENE_CLASS_IMPL(Class, className, Base)                                               \
    const OXMMetaClass* Class::metaClass()                                                         \
    {                                                                                              \
        static auto* factory = new OXMDefaultClassFactory<Class>;                                  \
        static auto* meta = new OXMMetaClass(className, sizeof(Class), Base::metaClass(), factory, \
                                             OXMSceneModule);                                      \
        return meta;                                                                               \
    }                                                                                              \
    const OXMMetaClass* Class::getMetaClass() const                                                \
    {                                                                                              \
        return metaClass();                                                                        \
    }                                                                                              \
    OXMenum Class::getObjectID(int index) const                                                    \
    {                                                                                              \
        static auto* id = new OXMRegisteredEnum(className);                                        \
        return index == 0 ? id->getValue() : Base::getObjectID(index - 1);                         \
    }                                                                                              \
    namespace {                                                                                    \
    [[maybe_unused]] const OXMMetaClass* const Class##RegisteredMeta = Class::metaClass();         \
    }
