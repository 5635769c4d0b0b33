// The JSON documents of objects: every value type comes back equal, enumerations travel by
// name, objects held through parent links are made again by class name and references between
// them are kept, and every malformed document is refused whole, leaving no object behind.

#include "OXMObjectSerializer.h"
#include "OXMClassFactory.h"
#include "OXMClassManager.h"
#include "OXMInterval.h"
#include "OXMJsonPropertyCodec.h"
#include "OXMMetaClass.h"
#include "OXMObject.h"
#include "OXMObjectPath.h"
#include "OXMRGB8.h"
#include "OXMRGBA.h"
#include "OXMRGBf.h"
#include "OXMRegisteredEnum.h"
#include "OXMSingleValueOP.h"
#include "OXMTypeInfo.h"
#include "OXMValueArrayOP.h"
#include "OXMVector2.h"
#include "OXMVector3.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

namespace {

const char* const Ns = "serializertests";
OXMenum key(const QByteArray& name)
{
    return *new OXMRegisteredEnum(name.constData(), false, Ns); // lives for the program
}

constexpr float Inf = std::numeric_limits<float>::infinity();

template <typename T>
std::pair<T, T> pair(const T& a, const T& b)
{
    return {a, b};
}

// A sample pair per type: a default-like value and one at the edges of the type.
const auto samples = std::make_tuple(
    pair(false, true), pair(0, std::numeric_limits<int>::min()),
    pair(0.1f, std::numeric_limits<float>::max()), pair(0.1, -1e300),
    pair<OXMenum>(OXM::Enabled, OXMenum()), pair<const char*>(nullptr, "Grün/\"x\"\n"),
    pair(OXMTypeInfo(OXM::UInt16), OXMTypeInfo()),
    pair<OXMVector2<float>>({0.5f, 1.0f}, {-Inf, 1e-45f}),
    pair<OXMVector3<int>>({1, 2, 3}, {-7, 0, 65536}),
    pair<std::pair<float, float>>({0.0f, 1.0f}, {3.3f, -0.0f}),
    pair<std::vector<float>>({}, {1.0f, 0.25f, 1e10f}),
    pair<OXMRGBf>({1, 0.5f, 0}, {0.2f, 0.4f, 0.6f}), pair<OXMRGB8>({255, 0, 7}, {1, 2, 3}),
    pair<OXMRGBA<unsigned char>>({255, 255, 255, 0}, {1, 2, 3, 4}),
    pair<OXMInterval>({0, -1}, {-5, 5}));

// A node of a tree (parent links single and in an array, a plain link, a path, a float) that
// also has a single and an array property of every sample type; created by class name.
class Node : public OXMObject
{
public:
    Node()
    {
        for (OXMenum id : {OXM::ApplicationSampleMaterial, OXM::VolumeRenderObjectList}) {
            OXMProperty* p = id == OXM::VolumeRenderObjectList
                                 ? static_cast<OXMProperty*>(new OXMValueArrayOP<OXMObjectLink>)
                                 : new OXMSingleValueOP<OXMObjectLink>;
            p->setParentLink(true);
            addProperty(id, p, true);
        }
        addProperty(OXM::Reference, new OXMSingleValueOP<OXMObjectLink>, true);
        addProperty(OXM::ScenePath, new OXMSingleValueOP<OXMObjectPath>, true);
        addProperty(OXM::Scale, new OXMSingleValueOP<float>(1.0f), true);
        std::apply([this](const auto&... pairs) { (add(pairs), ...); }, samples);
    }
    static const OXMMetaClass* metaClass()
    {
        static OXMDefaultClassFactory<Node> factory;
        static OXMMetaClass meta("SerializerTestNode", sizeof(Node), OXMObject::metaClass(),
                                 &factory, Ns);
        return &meta;
    }
    const OXMMetaClass* getMetaClass() const override { return metaClass(); }

private:
    // Sn and An: the single value and the array of sample n.
    template <typename T>
    void add(const std::pair<T, T>&)
    {
        const QByteArray n = QByteArray::number(mSamples++);
        addProperty(key("S" + n), new OXMSingleValueOP<T>, true);
        if constexpr (!std::is_same<T, bool>::value)
            addProperty(key("A" + n), new OXMValueArrayOP<T>, true);
    }
    int mSamples = 0;
};

int liveTestObjects()
{
    OXMClassManager::SearchPattern pattern;
    pattern.moduleName = Ns;
    return OXMClassManager::getObjectCount(pattern);
}

bool sameValue(const OXMProperty* a, const OXMProperty* b)
{
    return a && b && a->saveValue()->equals(*b->saveValue());
}

OXMObjectPtr roundTrip(const OXMObject& object, QByteArray* text = nullptr)
{
    QByteArray json;
    QString error;
    EXPECT_TRUE(OXMObjectSerializer::write(object, {}, json, &error)) << error.toStdString();
    OXMObjectSerializer::Document document;
    EXPECT_TRUE(OXMObjectSerializer::read(json, document, &error)) << error.toStdString();
    if (text)
        *text = json;
    return document.root;
}

} // namespace

TEST(OXMObjectSerializer, EveryValueTypeComesBackEqualAndIsWrittenReadably)
{
    for (int pick = 0; pick < 2; ++pick) {
        OXMObjectPtr node(new Node);
        int index = 5;
        std::apply(
            [&](const auto&... pairs) {
                const auto set = [&](const auto& pair) {
                    const auto& value = pick == 0 ? pair.first : pair.second;
                    using T = std::decay_t<decltype(value)>;
                    EXPECT_TRUE(node->setValue<T>(node->getPropertyAt(index++)->getID(), value));
                    if constexpr (!std::is_same<T, bool>::value) {
                        EXPECT_TRUE(node->setArray<T>(node->getPropertyAt(index++)->getID(),
                                                      {value, pair.first, value}));
                    }
                };
                (set(pairs), ...);
            },
            samples);
        node->setValue(OXM::Scale, std::numeric_limits<float>::quiet_NaN());
        QByteArray text;
        const OXMObjectPtr copy = roundTrip(*node, &text);
        ASSERT_TRUE(copy);
        for (int i = 5; i < node->getPropertyCount(); ++i)
            EXPECT_TRUE(sameValue(node->getPropertyAt(i), copy->getPropertyAt(i)))
                << node->getPropertyAt(i)->getID().toString().toStdString() << " pick " << pick;
        float scale = 0.0f;
        EXPECT_TRUE(copy->getValue(OXM::Scale, scale) && std::isnan(scale));
        if (pick == 0) {
            for (const char* readable :
                 {"\"OXM::Scale\": \"nan\"", "\"serializertests::S4\": \"OXM::Enabled\"",
                  "\"serializertests::S2\": 0.1", "\"serializertests::A7\": [\n",
                  "\"serializertests::S7\": [0.5, 1]", "\"OXM::UInt16\""})
                EXPECT_TRUE(text.contains(readable)) << readable;
        }
    }
}

TEST(OXMObjectSerializer, ChildrenAreMadeAgainAndReferencesAndPathsPointIntoTheCopy)
{
    OXMObjectPtr root(new Node);
    auto* a = new Node;
    auto* b = new Node;
    auto* c = new Node;
    auto* aux = new Node;
    Node outside;
    outside.setAutoDelete(false);
    root->setValue(OXM::ApplicationSampleMaterial,
                   OXMObjectLink(a, nullptr, {}, nullptr, OXM::Local));
    root->setArray(OXM::VolumeRenderObjectList,
                   std::vector<OXMObjectLink>{OXMObjectLink(b), OXMObjectLink(c, aux)});
    a->setValue(OXM::Reference, OXMObjectLink(c));        // to a later sibling
    c->setValue(OXM::Reference, OXMObjectLink(aux));      // to an auxiliary object
    b->setValue(OXM::Reference, OXMObjectLink(&outside)); // not in the document
    a->setValue(OXM::ScenePath, OXMObjectPath::fromObject(c));
    a->setValue(OXM::Scale, 2.5f);

    QByteArray text;
    OXMObjectPtr copy = roundTrip(*root, &text);
    ASSERT_TRUE(copy);
    OXMObjectLink la;
    ASSERT_TRUE(copy->getValue(OXM::ApplicationSampleMaterial, la));
    EXPECT_EQ(la.getKind(), OXM::Local);
    std::vector<OXMObjectLink> list;
    ASSERT_TRUE(copy->getArray(OXM::VolumeRenderObjectList, list));
    ASSERT_EQ(list.size(), 2u);
    OXMObject* a2 = la.getLink();
    OXMObject* c2 = list[1].getLink();
    for (OXMObject* made : {a2, list[0].getLink(), c2, list[1].getAuxLink()}) {
        ASSERT_NE(made, nullptr);
        EXPECT_TRUE(made->isOfType("SerializerTestNode"));
        EXPECT_TRUE(made != a && made != b && made != c && made != aux);
    }
    EXPECT_EQ(a2->getParentLink().getOwner(), copy.get());
    EXPECT_EQ(a2->getLinkedObject(OXM::Reference), c2);
    EXPECT_EQ(c2->getLinkedObject(OXM::Reference), list[1].getAuxLink());
    EXPECT_EQ(list[0].getLink()->getLinkedObject(OXM::Reference), nullptr);
    OXMObjectPath path;
    ASSERT_TRUE(a2->getValue(OXM::ScenePath, path));
    EXPECT_EQ(path, OXMObjectPath::fromObject(c2));
    float scale = 0.0f;
    EXPECT_TRUE(a2->getValue(OXM::Scale, scale) && scale == 2.5f);
    EXPECT_TRUE(text.contains("\"ref\": \"/OXM::VolumeRenderObjectList/1/aux\""));
}

TEST(OXMObjectSerializer, MalformedDocumentsAreRefusedWholeAndLeaveNoObjects)
{
    Node tree;
    tree.setAutoDelete(false);
    tree.setValue(OXM::ApplicationSampleMaterial, OXMObjectLink(new Node));
    QByteArray good;
    ASSERT_TRUE(OXMObjectSerializer::write(tree, {{"kind", "test"}}, good));
    const auto edit = [&good](const char* from, const char* to) {
        return QByteArray(good).replace(from, to);
    };
    const auto nested = [](int depth) {
        QByteArray node = R"({"class": "SerializerTestNode"})";
        for (int i = 0; i < depth; ++i)
            node =
                R"({"class": "SerializerTestNode", "properties": {"OXM::ApplicationSampleMaterial": )" +
                node + "}}";
        return R"({"format": "oxm-objects", "version": 1, "root": )" + node + "}";
    };
    const struct
    {
        QByteArray document;
        const char* reason;
    } cases[] = {
        {"", "not valid JSON"},
        {good.left(good.size() / 2), "not valid JSON"},
        {"[1, 2]", "not a document"},
        {edit("oxm-objects", "other"), "not a document"},
        {edit("\"version\": 1", "\"version\": 2"), "newer version"},
        {edit("\"version\": 1", "\"version\": \"1\""), "no valid format version"},
        {edit("\"root\"", "\"rot\""), "no \"root\""},
        {edit("SerializerTestNode", "NoSuchClass"), "unknown class \"NoSuchClass\""},
        {edit("OXM::Scale", "OXM::Opacity"), "/OXM::Opacity: an object of the class"},
        {edit("\"OXM::Scale\": 1", "\"OXM::Scale\": \"1\""), "expected a number"},
        {edit("\"OXM::Scale\": 1", "\"OXM::Scale\": 1e39"), "expected a number"},
        // More than half a float step above the largest float.
        {edit("\"OXM::Scale\": 1", "\"OXM::Scale\": 3.4028237e38"), "expected a number"},
        {edit("\"OXM::Reference\": null", "\"OXM::Reference\": {\"ref\": \"/nowhere\"}"),
         "names no object"},
        {edit("\"OXM::Reference\": null",
              "\"OXM::Reference\": {\"class\": \"SerializerTestNode\"}"),
         "only in a parent link"},
        {edit("\"OXM::Reference\": null", "\"OXM::Reference\": {\"ref\": \"\"}"), "ring"},
        {edit("\"OXM::VolumeRenderObjectList\": [", "\"OXM::VolumeRenderObjectList\": [7"),
         "expected a link"},
        {nested(OXMObjectSerializer::MaxDepth + 1), "deeper than"},
    };
    const int before = liveTestObjects();
    for (const auto& c : cases) {
        OXMObjectSerializer::Document document;
        QString error;
        EXPECT_FALSE(OXMObjectSerializer::read(c.document, document, &error)) << c.reason;
        EXPECT_TRUE(error.contains(QLatin1String(c.reason))) << error.toStdString();
        EXPECT_FALSE(document.root);
        EXPECT_EQ(liveTestObjects(), before) << c.reason;
    }
    OXMObjectSerializer::Document document;
    ASSERT_TRUE(OXMObjectSerializer::read(nested(OXMObjectSerializer::MaxDepth), document));
    EXPECT_FALSE(document.header.contains("kind")) << "the nested one has none";
    ASSERT_TRUE(OXMObjectSerializer::read(good, document));
    EXPECT_EQ(document.header.value("kind").toString(), QStringLiteral("test"));
    // Keys in error places are escaped as JSON pointers do it.
    EXPECT_EQ(OXMJsonPropertyCodec::pointerToken(QStringLiteral("a~1/b")), "a~01~1b");
}

TEST(OXMObjectSerializer, AnEnumerationWithdrawnSinceWritingAndAPropertyOfAnUnknownTypeAreRefused)
{
    Node node;
    node.setAutoDelete(false);
    QByteArray json;
    {
        const OXMRegisteredEnum passing("Passing", false, Ns);
        node.setValue(key("S4"), OXMenum(passing));
        ASSERT_TRUE(OXMObjectSerializer::write(node, {}, json));
    }
    OXMObjectSerializer::Document document;
    QString error;
    EXPECT_FALSE(OXMObjectSerializer::read(json, document, &error));
    EXPECT_TRUE(error.contains("/serializertests::S4: unknown value \"serializertests::Passing\""))
        << error.toStdString();

    node.addProperty(key("Foreign"), new OXMSingleValueOP<QString>, true);
    EXPECT_FALSE(OXMObjectSerializer::write(node, {}, json, &error));
    EXPECT_TRUE(error.contains("/serializertests::Foreign: the property has a type"));
}
