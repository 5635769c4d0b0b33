#include "OXMMetaClass.h"
#include "OXMClassFactory.h"
#include "OXMClassManager.h"
#include "OXMObject.h"
#include "OXMObjectRefPtr.h"
#include "OXMRegisteredEnum.h"
#include "OXMSingleValueOP.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <vector>

namespace {

const char* const Module = "oxmtest.module";

class Record : public OXMObject
{
public:
    Record() { addProperty(OXM::Scale, &scale); }
    Record(const Record& o) : OXMObject(o), scale(o.scale) { addProperty(OXM::Scale, &scale); }
    Record& operator=(const Record& o)
    {
        OXMObject::operator=(o);
        scale = o.scale;
        return *this;
    }
    static const OXMMetaClass* metaClass()
    {
        static OXMDefaultClassFactory<Record> factory;
        static OXMMetaClass meta("OXMTestRecord", sizeof(Record), OXMObject::metaClass(), &factory,
                                 Module, 0, 0x20000000);
        return &meta;
    }
    const OXMMetaClass* getMetaClass() const override { return metaClass(); }
    OXMenum getObjectID(int index) const override
    {
        static OXMRegisteredEnum id("OXMTestRecord", false, Module); // on first use
        return index == 0 ? id.getValue() : OXMObject::getObjectID(index - 1);
    }
    OXMSingleValueOP<float> scale{1.0f};
};

class Settings : public OXMObject
{
public:
    static const OXMMetaClass* metaClass()
    {
        static OXMDefaultClassFactory<Settings> factory;
        static OXMMetaClass meta("OXMTestSettings", sizeof(Settings), OXMObject::metaClass(),
                                 &factory, "oxmtest.other", OXMMetaClass::Singleton);
        return &meta;
    }
    const OXMMetaClass* getMetaClass() const override { return metaClass(); }
};

} // namespace

TEST(OXMMetaClass, FactoryCreatesClonesAssignsAndDestroys)
{
    const OXMMetaClass* meta = Record::metaClass();
    ASSERT_EQ(OXMClassManager::findMetaClass("OXMTestRecord"), meta);
    EXPECT_STREQ(meta->getClassName(), "OXMTestRecord");
    EXPECT_TRUE(meta->isOfType("OXMObject"));
    EXPECT_TRUE(meta->isOfType("OXMClass"));
    EXPECT_FALSE(meta->isOfType("OXMTestSettings"));
    EXPECT_FALSE(meta->isSingleton());

    std::unique_ptr<OXMClass> made(OXMClassManager::createObject("OXMTestRecord"));
    auto* a = dynamic_cast<Record*>(made.get());
    ASSERT_NE(a, nullptr);
    a->scale.setValue(5.0f);

    std::unique_ptr<OXMClass> copy(OXMMetaClass::clone(a));
    auto* b = dynamic_cast<Record*>(copy.get());
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->scale.getValue(), 5.0f);
    EXPECT_NE(&b->scale, &a->scale);
    b->scale.setValue(1.0f);
    EXPECT_EQ(a->scale.getValue(), 5.0f);

    EXPECT_TRUE(meta->assign(b, a));
    EXPECT_EQ(b->scale.getValue(), 5.0f);

    int errors = 0;
    const int h = OXMError::addHandler([&](const OXMError::Message& m) {
        EXPECT_EQ(m.getCode(), OXM::InvalidOperation);
        ++errors;
    });
    OXMObject plain;
    EXPECT_FALSE(meta->assign(b, &plain));
    EXPECT_EQ(meta->getFactory()->createCopy(&plain), nullptr);
    EXPECT_FALSE(meta->getFactory()->destroy(&plain, false));
    EXPECT_EQ(errors, 3);
    OXMError::removeHandler(h);

    // Construction in caller's storage and destruction in place.
    alignas(Record) unsigned char storage[sizeof(Record)];
    OXMClass* inPlace = meta->create(storage);
    ASSERT_EQ(static_cast<void*>(inPlace), static_cast<void*>(storage));
    EXPECT_TRUE(OXMMetaClass::destruct(inPlace, false));
    EXPECT_TRUE(OXMMetaClass::destruct(made.release(), true));
    EXPECT_FALSE(OXMMetaClass::destruct(nullptr, true));
    EXPECT_EQ(OXMClassManager::createObject("NoSuchClass"), nullptr);
}

TEST(OXMMetaClass, DefaultFlagsAndObjectIdentifierChains)
{
    Record r;
    Record::metaClass()->applyDefaultFlags(&r);
    EXPECT_EQ(r.getFlags() & 0x20000000u, 0x20000000u);

    const OXMenum first = r.getObjectID(0);
    EXPECT_STREQ(first.getName(), "OXMTestRecord");
    EXPECT_EQ(r.getObjectID(0), first);
    EXPECT_EQ(r.getObjectID(1), OXMObject().getObjectID(0));
    EXPECT_STREQ(r.getObjectID(1).getName(), "OXMObject");
    EXPECT_STREQ(r.getObjectID(2).getName(), "OXMClass");
    EXPECT_FALSE(r.getObjectID(3).isValid());
    EXPECT_TRUE(r.isOfType(first));
    EXPECT_TRUE(r.isOfType(OXMObject().getObjectID(0)));
    EXPECT_FALSE(OXMObject().isOfType(first));
}

TEST(OXMClassManager, SearchFindsLiveObjectsByModuleAndClass)
{
    OXMClassManager::SearchPattern byModule{nullptr, Module, true};
    const int before = OXMClassManager::getObjectCount(byModule);
    auto* a = new Record;
    auto* b = new Record;
    Settings s;
    EXPECT_EQ(OXMClassManager::getObjectCount(byModule), before + 2);
    OXMClassManager::SearchPattern byClass{"OXMTestSettings", nullptr, false};
    EXPECT_EQ(OXMClassManager::getObjectCount(byClass), 1);
    EXPECT_EQ(OXMClassManager::getObjectCount({nullptr, "nosuchmodule", true}), 0);
    EXPECT_FALSE(OXMClassManager::registerMetaClass(nullptr));
    OXMClassManager::SearchPattern derived{"OXMObject", nullptr, false};
    OXMClassManager::SearchPattern derivedToo{"OXMObject", nullptr, true};
    EXPECT_GT(OXMClassManager::getObjectCount(derivedToo),
              OXMClassManager::getObjectCount(derived));

    // The termination pattern: destroy the first match until none is left.
    for (;;) {
        const int n = OXMClassManager::getObjectCount(byModule);
        if (n == 0)
            break;
        std::vector<OXMClass*> found(static_cast<std::size_t>(n));
        ASSERT_EQ(OXMClassManager::findObjects(found.data(), n, byModule), n);
        ASSERT_EQ(OXMClassManager::findObjects(nullptr, n, byModule), 0);
        ASSERT_TRUE(OXMMetaClass::destruct(found[0], true));
    }
    EXPECT_EQ(OXMClassManager::getObjectCount(byModule), 0);
    (void)a;
    (void)b;
}

TEST(OXMClassManager, RefPtrCreatesByClassNameAndReusesSingletonsPerScope)
{
    Record::metaClass(); // a module builds its meta-classes when it is loaded
    OXMObjectRefPtr record("OXMTestRecord", OXM::Global);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->getScope(), OXM::Global);
    EXPECT_TRUE(record->isOfType("OXMTestRecord"));
    OXMObjectRefPtr record2("OXMTestRecord", OXM::Global);
    EXPECT_NE(record.get(), record2.get());

    Settings::metaClass();
    OXMObjectRefPtr s1("OXMTestSettings", OXM::Global);
    OXMObjectRefPtr s2("OXMTestSettings", OXM::Global);
    OXMObjectRefPtr s3("OXMTestSettings", OXM::Local);
    EXPECT_EQ(s1.get(), s2.get());
    EXPECT_NE(s1.get(), s3.get());
    EXPECT_EQ(s1->getRefCount(), 2);

    OXMObjectRefPtr none("NoSuchClass");
    EXPECT_FALSE(none);
}

TEST(OXMRoles, PrepareRolesActivatesDefaultRolesWithTheirParents)
{
    OXMRegisteredEnum prefs("TestPreferencesRole", false, Module);
    OXMRegisteredEnum special("TestSpecialRole", false, Module);
    EXPECT_TRUE(OXMObject::RoleManager::addRole(OXM::Object));
    EXPECT_TRUE(OXMObject::RoleManager::addRole(prefs, OXM::Object));
    EXPECT_TRUE(OXMObject::RoleManager::addRole(special, prefs));
    EXPECT_TRUE(OXMObject::RoleManager::addDefaultRole(Record::metaClass(), prefs));
    int roleInterface = 0;
    EXPECT_TRUE(OXMObject::RoleManager::setRoleInterface(prefs, &roleInterface));
    EXPECT_EQ(OXMObject::RoleManager::getRoleInterface(prefs), &roleInterface);
    EXPECT_FALSE(OXMObject::RoleManager::setRoleInterface(OXM::Histogram, &roleInterface));

    Record r;
    EXPECT_FALSE(r.isRoleActive(prefs));
    EXPECT_TRUE(r.prepareRoles());
    EXPECT_TRUE(r.isRoleActive(prefs));
    EXPECT_TRUE(r.isRoleActive(OXM::Object));
    EXPECT_FALSE(r.isRoleActive(special));

    OXMObject plain;
    plain.prepareRoles();
    EXPECT_FALSE(plain.isRoleActive(prefs)); // the base class does not get derived roles
    plain.setRoleActive(special, true);
    EXPECT_TRUE(plain.isRoleActive(prefs));
    plain.setRoleActive(special, false);
    EXPECT_FALSE(plain.isRoleActive(special));
    // A removed role is no class's default any more; the other defaults stay.
    EXPECT_TRUE(OXMObject::RoleManager::addDefaultRole(Record::metaClass(), special));
    EXPECT_TRUE(OXMObject::RoleManager::removeRole(special));
    Record later;
    EXPECT_TRUE(later.prepareRoles());
    EXPECT_TRUE(later.isRoleActive(prefs));
    EXPECT_FALSE(later.isRoleActive(special));
}
