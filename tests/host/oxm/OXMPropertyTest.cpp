#include "OXMBooleanOP.h"
#include "OXMObject.h"
#include "OXMObjectIOCPtr.h"
#include "OXMObjectPath.h"
#include "OXMPropertyValue.h"
#include "OXMSingleValueOP.h"
#include "OXMSingleValueOPPtr.h"
#include "OXMTestListener.h"
#include "OXMTypeInfo.h"
#include "OXMUndoRecorder.h"
#include "OXMValueArrayOP.h"
#include "OXMVector2.h"
#include "OXMVector3.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

// An object with a few typed properties, as a host class would declare them.
class Material : public OXMObject
{
public:
    Material()
    {
        addProperty(OXM::Scale, &scale);
        addProperty(OXM::Name, &name);
        addProperty(OXM::MapMode, &mapMode);
        addProperty(OXM::IntervalIndexList, &borders);
        addProperty(OXM::LookupTableHandleList, &handles);
        addProperty(OXM::IntervalNameList, &names);
        addProperty(OXM::BoundingBox, &box);
        addProperty(OXM::SampleDataType, &dataType);
    }
    OXMSingleValueOP<float> scale{1.0f};
    OXMSingleValueOP<const char*> name;
    OXMSingleValueOP<OXMenum> mapMode{OXM::Constant};
    OXMValueArrayOP<int> borders;
    OXMValueArrayOP<OXMVector2<float>> handles;
    OXMValueArrayOP<const char*> names;
    OXMSingleValueOP<std::pair<OXMVector3<float>, OXMVector3<float>>> box;
    OXMSingleValueOP<OXMTypeInfo> dataType;
};

struct Change
{
    OXMObject* object;
    OXMenum property;
    std::unique_ptr<OXMPropertyValue> oldValue;
    std::unique_ptr<OXMPropertyValue> newValue;
};

class Recorder : public OXMUndoRecorder
{
public:
    Recorder() { previous = OXMObject::setUndoRecorder(this); }
    ~Recorder() override { OXMObject::setUndoRecorder(previous); }
    void recordChange(OXMObject* o, OXMenum id, const OXMPropertyValue& oldValue,
                      const OXMPropertyValue& newValue) override
    {
        changes.push_back({o, id, oldValue.clone(), newValue.clone()});
    }
    std::vector<Change> changes;
    OXMUndoRecorder* previous;
};

} // namespace

TEST(OXMProperty, TypedAccessAnswersNullForMissingPropertiesAndTypeMismatches)
{
    Material m;
    EXPECT_NE(OXMSingleValuePropertyIF<float>::getInterface(m.getProperty(OXM::Scale)), nullptr);
    EXPECT_EQ(OXMSingleValuePropertyIF<double>::getInterface(m.getProperty(OXM::Scale)), nullptr);
    EXPECT_EQ(OXMSingleValuePropertyIF<int>::getInterface(m.getProperty(OXM::Scale)), nullptr);
    EXPECT_EQ(OXMSingleValuePropertyIF<float>::getInterface(m.getProperty(OXM::Bias)), nullptr);
    EXPECT_EQ(OXMValueArrayPropertyIF<float>::getInterface(m.getProperty(OXM::Scale)), nullptr);
    EXPECT_EQ(OXMValueArrayPropertyIF<float>::getInterface(m.getProperty(OXM::IntervalIndexList)),
              nullptr);

    double d = 0;
    EXPECT_FALSE(m.getValue(OXM::Scale, d));
    EXPECT_FALSE(m.setValue(OXM::Scale, 2.0));
    float f = 0;
    EXPECT_TRUE(m.setValue(OXM::Scale, 2.5f));
    EXPECT_TRUE(m.getValue(OXM::Scale, f));
    EXPECT_EQ(f, 2.5f);
}

TEST(OXMProperty, PropertiesKeepTheOrderOfAdditionAndRefuseDuplicateKeys)
{
    Material m;
    ASSERT_EQ(m.getPropertyCount(), 8);
    EXPECT_EQ(m.getPropertyAt(0)->getID(), OXM::Scale);
    EXPECT_EQ(m.getPropertyAt(7)->getID(), OXM::SampleDataType);
    OXMSingleValueOP<int> extra;
    EXPECT_FALSE(m.addProperty(OXM::Scale, &extra));
    EXPECT_FALSE(m.addProperty(OXM::Bias, &m.scale)); // already belongs to the object
    EXPECT_TRUE(m.addProperty(OXM::Bias, &extra));
    EXPECT_EQ(extra.getOwner(), &m);
    EXPECT_TRUE(m.removeProperty(OXM::Bias));
    EXPECT_EQ(extra.getOwner(), nullptr);
    EXPECT_EQ(m.getProperty(OXM::Bias), nullptr);
    {
        OXMSingleValueOP<int> shortLived;
        m.addProperty(OXM::Origin, &shortLived);
    }
    EXPECT_EQ(m.getProperty(OXM::Origin), nullptr); // a destroyed property leaves its object
    EXPECT_TRUE(m.addProperty(OXM::Origin, new OXMSingleValueOP<int>(5), true));
}

TEST(OXMProperty, StringsValuesPairsAndTypeInfos)
{
    Material m;
    auto* name = OXMSingleValuePropertyIF<const char*>::getInterface(m.getProperty(OXM::Name));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->getValue(), nullptr); // null string by default
    EXPECT_TRUE(name->setValue("Bone"));
    EXPECT_STREQ(name->getValue(), "Bone");
    EXPECT_TRUE(name->setValue(""));
    ASSERT_NE(name->getValue(), nullptr);
    EXPECT_STREQ(name->getValue(), ""); // empty differs from null

    using Box = std::pair<OXMVector3<float>, OXMVector3<float>>;
    EXPECT_TRUE(m.setValue(OXM::BoundingBox, Box({0, 0, 0}, {2, 4, 6})));
    Box box;
    EXPECT_TRUE(m.getValue(OXM::BoundingBox, box));
    EXPECT_EQ(box.second, OXMVector3<float>(2, 4, 6));

    EXPECT_TRUE(m.setValue(OXM::SampleDataType, OXMTypeInfo(OXM::UInt16)));
    OXMTypeInfo t;
    EXPECT_TRUE(m.getValue(OXM::SampleDataType, t));
    EXPECT_EQ(t.getID(), OXM::UInt16);
}

TEST(OXMProperty, AllowedValuesResetAndLock)
{
    Material m;
    m.mapMode.setAllowedValues({OXM::Constant, OXM::LookupTable});
    EXPECT_TRUE(m.setValue(OXM::MapMode, OXM::LookupTable));
    EXPECT_FALSE(m.setValue(OXM::MapMode, OXM::Linear));
    EXPECT_EQ(m.mapMode.getValue(), OXM::LookupTable); // a refused value leaves the old one
    EXPECT_TRUE(m.mapMode.reset());
    EXPECT_EQ(m.mapMode.getValue(), OXM::Constant);

    m.scale.lock();
    EXPECT_TRUE(m.scale.isLocked());
    EXPECT_FALSE(m.setValue(OXM::Scale, 3.0f));
    EXPECT_FALSE(m.handles.isLocked());
    m.scale.unlock();
    EXPECT_TRUE(m.setValue(OXM::Scale, 3.0f));

    OXMBooleanOP flag;
    EXPECT_EQ(flag.getValue(), OXM::False);
    EXPECT_TRUE(flag.setValue(OXM::True));
    EXPECT_FALSE(flag.setValue(OXM::Enabled));
    EXPECT_EQ(flag.getValue(), OXM::True);
}

TEST(OXMProperty, ArraysHaveInclusiveIndexRangesAndInitArrayReplacesTheWholeArray)
{
    Material m;
    auto* a = OXMValueArrayPropertyIF<int>::getInterface(m.getProperty(OXM::IntervalIndexList));
    ASSERT_NE(a, nullptr);
    int first = 7, last = 7;
    EXPECT_TRUE(a->getArrayIndexRange(first, last));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, -1);

    const int five[] = {0, 10, 20, 30, 40};
    EXPECT_TRUE(a->initArray(0, 4, five));
    a->getArrayIndexRange(first, last);
    EXPECT_EQ(last, 4);
    const int two[] = {1, 2};
    EXPECT_TRUE(a->initArray(0, 1, two));
    EXPECT_EQ(a->getArray(), (std::vector<int>{1, 2})); // not merged with the old items
    EXPECT_FALSE(a->initArray(1, 2, two));              // whole arrays start at 0
    EXPECT_FALSE(a->initArray(0, -2, nullptr));
    EXPECT_TRUE(a->initArray(0, -1, nullptr));
    EXPECT_EQ(a->getArraySize(), 0);

    EXPECT_TRUE(a->initArray(0, 4, five));
    int out[3] = {};
    EXPECT_TRUE(a->getArrayItems(1, 3, out));
    EXPECT_EQ(out[0], 10);
    EXPECT_EQ(out[2], 30);
    EXPECT_FALSE(a->getArrayItems(3, 5, out)); // past the end
    EXPECT_FALSE(a->getArrayItems(-1, 1, out));
    EXPECT_FALSE(a->getArrayItems(2, 1, out));

    const int repl[] = {11, 21};
    EXPECT_TRUE(a->setArrayItems(1, 2, repl));
    EXPECT_EQ(a->getArray(), (std::vector<int>{0, 11, 21, 30, 40}));
    const int tail[] = {50, 60};
    EXPECT_TRUE(a->setArrayItems(5, 6, tail)); // extends at the end
    EXPECT_EQ(a->getArraySize(), 7);
    EXPECT_FALSE(a->setArrayItems(9, 9, tail)); // would leave a gap
}

TEST(OXMProperty, StringArraysKeepTheirItems)
{
    Material m;
    auto* a =
        OXMValueArrayPropertyIF<const char*>::getInterface(m.getProperty(OXM::IntervalNameList));
    ASSERT_NE(a, nullptr);
    std::string bone = "Bone";
    const char* items[] = {bone.c_str(), "Soft"};
    EXPECT_TRUE(a->initArray(0, 1, items));
    bone = "Changed"; // the property keeps its own copy
    const char* out[2] = {};
    ASSERT_TRUE(a->getArrayItems(0, 1, out));
    EXPECT_STREQ(out[0], "Bone");
    EXPECT_STREQ(out[1], "Soft");
}

TEST(OXMProperty, CopyPropertyCopiesOneValueBetweenObjectsOfMatchingTypes)
{
    Material a, b;
    a.setValue(OXM::Scale, 4.0f);
    const OXMVector2<float> h[] = {{0, 0}, {0.5f, 1}};
    a.handles.initArray(0, 1, h);
    EXPECT_TRUE(b.copyProperty(&a, OXM::Scale));
    EXPECT_TRUE(b.copyProperty(&a, OXM::LookupTableHandleList));
    EXPECT_EQ(b.scale.getValue(), 4.0f);
    EXPECT_EQ(b.handles.getArray(), a.handles.getArray());
    EXPECT_FALSE(b.copyProperty(&a, OXM::Bias)); // missing on both
    EXPECT_FALSE(b.copyProperty(nullptr, OXM::Scale));

    OXMObject other;
    OXMSingleValueOP<double> scaleAsDouble(9.0);
    other.addProperty(OXM::Scale, &scaleAsDouble);
    EXPECT_FALSE(b.copyProperty(&other, OXM::Scale)); // type mismatch
    EXPECT_EQ(b.scale.getValue(), 4.0f);
}

TEST(OXMProperty, EveryWriteThatChangesAValueSendsOneMessageNamingObjectAndProperty)
{
    Material m;
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&m, &l);
    EXPECT_TRUE(m.setValue(OXM::Scale, 2.0f));
    EXPECT_TRUE(m.setValue(OXM::Scale, 2.0f)); // unchanged: no message
    const int items[] = {1, 2};
    m.borders.initArray(0, 1, items);
    m.borders.initArray(0, 1, items);
    m.borders.setArrayItems(0, 0, items);
    m.mapMode.setValue(OXM::Linear);
    ASSERT_EQ(l.entries.size(), 3u);
    EXPECT_EQ(l.entries[0].type, OXM::PropertyChanged);
    EXPECT_EQ(l.entries[0].initialSender, &m);
    EXPECT_EQ(l.entries[0].property, OXM::Scale);
    EXPECT_EQ(l.entries[1].property, OXM::IntervalIndexList);
    EXPECT_EQ(l.entries[2].property, OXM::MapMode);
}

TEST(OXMProperty, UndoRecorderReceivesExactOldAndNewValues)
{
    Material m;
    m.setValue(OXM::Scale, 1.5f);
    Recorder r;
    m.setValue(OXM::Scale, 2.5f);
    m.setValue(OXM::Scale, 2.5f); // no change, nothing recorded
    m.setValue(OXM::Scale, 7.0);  // wrong type, nothing recorded
    const int items[] = {3, 4, 5};
    m.borders.initArray(0, 2, items);
    m.name.setValue("CT");
    ASSERT_EQ(r.changes.size(), 3u);

    EXPECT_EQ(r.changes[0].object, &m);
    EXPECT_EQ(r.changes[0].property, OXM::Scale);
    ASSERT_NE(r.changes[0].oldValue->get<float>(), nullptr);
    EXPECT_EQ(*r.changes[0].oldValue->get<float>(), 1.5f);
    EXPECT_EQ(*r.changes[0].newValue->get<float>(), 2.5f);
    EXPECT_EQ(r.changes[0].oldValue->get<double>(), nullptr);

    using IntArray = std::vector<int>;
    ASSERT_NE(r.changes[1].oldValue->get<IntArray>(), nullptr);
    EXPECT_TRUE(r.changes[1].oldValue->get<IntArray>()->empty());
    EXPECT_EQ(*r.changes[1].newValue->get<IntArray>(), (IntArray{3, 4, 5}));

    EXPECT_TRUE(r.changes[2].oldValue->get<QByteArray>()->isNull());
    EXPECT_EQ(*r.changes[2].newValue->get<QByteArray>(), QByteArray("CT"));

    // Undo: recording off, the old values go back through the normal write path.
    OXMUndoRecorder* active = OXMObject::setUndoRecorder(nullptr);
    OXMTestListener l;
    OXMObjectIOCPtr ptr(&m, &l);
    for (auto it = r.changes.rbegin(); it != r.changes.rend(); ++it)
        EXPECT_TRUE(it->object->getProperty(it->property)->restoreValue(*it->oldValue));
    EXPECT_EQ(m.scale.getValue(), 1.5f);
    EXPECT_EQ(m.borders.getArraySize(), 0);
    EXPECT_EQ(m.name.getValue(), nullptr);
    EXPECT_EQ(l.entries.size(), 3u);
    EXPECT_FALSE(m.scale.restoreValue(*r.changes[1].oldValue)); // an array is not a float
    OXMObject::setUndoRecorder(active);
    EXPECT_EQ(r.changes.size(), 3u);
}

TEST(OXMProperty, PropertyPointerWritesAndReportsFailures)
{
    Material m;
    int errors = 0;
    const int handler = OXMError::addHandler([&](const OXMError::Message&) { ++errors; });
    OXMSingleValueOPPtr<float> scale(&m, OXM::Scale);
    EXPECT_TRUE(scale.setValue(6.0f));
    EXPECT_EQ(m.scale.getValue(), 6.0f);
    OXMSingleValueOPPtr<int> wrong(&m, OXM::Scale);
    EXPECT_FALSE(wrong.isValid());
    EXPECT_FALSE(wrong.setValue(1));
    m.mapMode.setAllowedValues({OXM::Constant});
    OXMSingleValueOPPtr<OXMenum> mode(&m, OXM::MapMode);
    EXPECT_FALSE(mode.setValue(OXM::Linear));
    EXPECT_EQ(errors, 2);
    OXMError::removeHandler(handler);
}

TEST(OXMProperty, ClonedPropertiesHaveTheirOwnValue)
{
    Material m;
    m.setValue(OXM::Scale, 3.0f);
    std::unique_ptr<OXMProperty> copy(m.scale.clone());
    EXPECT_EQ(copy->getOwner(), nullptr);
    auto* c = OXMSingleValuePropertyIF<float>::getInterface(copy.get());
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->getValue(), 3.0f);
    c->setValue(8.0f);
    EXPECT_EQ(m.scale.getValue(), 3.0f);
    EXPECT_TRUE(m.scale.assignFrom(*copy));
    EXPECT_EQ(m.scale.getValue(), 8.0f);
}
