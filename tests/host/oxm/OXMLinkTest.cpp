#include "OXMObject.h"
#include "OXMObjectParentLinkOP.h"
#include "OXMObjectPath.h"
#include "OXMObjectPtr.h"
#include "OXMPropertyValue.h"
#include "OXMSingleValueOP.h"
#include "OXMUndoRecorder.h"
#include "OXMValueArrayOP.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

// Counts live instances, to observe reference-driven deletion.
class Tracked : public OXMObject
{
public:
    Tracked() { ++alive; }
    ~Tracked() override { --alive; }
    static int alive;
};
int Tracked::alive = 0;

class Scene : public OXMObject
{
public:
    Scene()
    {
        volumes.setParentLink(true);
        addProperty(OXM::VolumeRenderObjectList, &volumes);
        addProperty(OXM::ApplicationSampleMaterial, &material);
        addProperty(OXM::Reference, &reference);
    }
    OXMValueArrayOP<OXMObjectLink> volumes;
    OXMObjectParentLinkOP material;
    OXMSingleValueOP<OXMObjectLink> reference;
};

} // namespace

TEST(OXMLink, LinkPropertiesNameOwnerAndPropertyAndHoldTheirObjects)
{
    Tracked::alive = 0;
    {
        Scene scene;
        Tracked* child = new Tracked;
        Tracked* aux = new Tracked;
        EXPECT_TRUE(scene.setValue(OXM::ApplicationSampleMaterial,
                                   OXMObjectLink(child, aux, OXM::Name /* replaced */)));
        OXMObjectLink read;
        ASSERT_TRUE(scene.getValue(OXM::ApplicationSampleMaterial, read));
        EXPECT_EQ(read.getLink(), child);
        EXPECT_EQ(read.getAuxLink(), aux);
        EXPECT_EQ(read.getOwner(), &scene);
        EXPECT_EQ(read.getPropertyID(), OXM::ApplicationSampleMaterial);
        EXPECT_EQ(child->getRefCount(), 1);

        const OXMObjectLink parent = child->getParentLink();
        EXPECT_EQ(parent.getOwner(), &scene);
        EXPECT_EQ(parent.getPropertyID(), OXM::ApplicationSampleMaterial);
        EXPECT_EQ(parent.getLink(), child);

        // A plain link does not make a parent.
        Tracked* other = new Tracked;
        scene.setValue(OXM::Reference, OXMObjectLink(other));
        EXPECT_EQ(other->getParentLink().getOwner(), nullptr);
        EXPECT_TRUE(read.linkIsOfType("OXMObject"));
        EXPECT_FALSE(read.linkIsOfType("OXMVolumeRenderObject"));

        // Replacing the link releases the old objects.
        EXPECT_TRUE(scene.setValue(OXM::ApplicationSampleMaterial, OXMObjectLink()));
        EXPECT_EQ(Tracked::alive, 1);
    }
    EXPECT_EQ(Tracked::alive, 0); // the scene's links went with it

    // A parent link that holds its object before it has an owner makes its owner the parent.
    OXMObject owner;
    owner.setAutoDelete(false);
    auto* link = new OXMObjectParentLinkOP;
    Tracked* held = new Tracked;
    link->setValue(OXMObjectLink(held));
    owner.addProperty(OXM::ApplicationSampleMaterial, link, true);
    EXPECT_EQ(held->getParentLink().getOwner(), &owner);
}

TEST(OXMLink, ParentLinkArraysBuildTheTreeAndPathsWalkIt)
{
    Tracked::alive = 0;
    Scene root;
    root.setAutoDelete(false);
    auto* inner = new Scene;
    auto* leaf = new Tracked;
    auto* transform = new Tracked;
    const OXMObjectLink innerLink(inner);
    root.volumes.initArray(0, 0, &innerLink);
    const OXMObjectLink leafLink(leaf, transform);
    inner->volumes.initArray(0, 0, &leafLink);

    OXMObjectPath path = OXMObjectPath::fromObject(leaf);
    ASSERT_EQ(path.getPathDepth(), 3);
    EXPECT_EQ(path.getLink(0), &root);
    EXPECT_EQ(path.getLink(-1), leaf);
    EXPECT_EQ(path.getAuxLink(-1), transform);
    EXPECT_EQ(path.getPathElement(-1).getOwner(), inner);
    EXPECT_EQ(path.getPathElement(-1).getPropertyID(), OXM::VolumeRenderObjectList);
    EXPECT_EQ(path.getLink(5), nullptr);
    EXPECT_TRUE(path.getPathElement(-4).isNull());

    OXMObjectPath same = OXMObjectPath::fromObject(leaf);
    EXPECT_EQ(path, same);
    OXMObjectPath parentPath = path;
    EXPECT_TRUE(parentPath.truncate(0, -2));
    EXPECT_EQ(parentPath.getPathDepth(), 2);
    EXPECT_EQ(parentPath.getLink(-1), inner);
    EXPECT_NE(parentPath, path);
    EXPECT_EQ(parentPath, OXMObjectPath::fromObject(inner));
    EXPECT_FALSE(parentPath.truncate(0, 5));
    EXPECT_EQ(parentPath.getPathDepth(), 2);

    // Removing the leaf from the list releases it; the path's links read null afterwards.
    inner->volumes.initArray(0, -1, nullptr);
    EXPECT_EQ(Tracked::alive, 0);
    EXPECT_EQ(path.getLink(-1), nullptr);
    EXPECT_EQ(path.getLink(1), inner);

    // A child taken out of its list but held elsewhere has no parent any more.
    OXMObjectPtr kept(new Tracked);
    const OXMObjectLink keptLink(kept.get());
    inner->volumes.initArray(0, 0, &keptLink);
    EXPECT_EQ(OXMObjectPath::fromObject(kept.get()).getPathDepth(), 3);
    inner->volumes.initArray(0, -1, nullptr);
    EXPECT_EQ(OXMObjectPath::fromObject(kept.get()).getPathDepth(), 1);
}

TEST(OXMLink, DestroyedObjectsLeaveNullLinksAndNoDanglingParents)
{
    Scene scene;
    auto* child = new Tracked;
    child->addRef(); // held by us as well
    scene.setValue(OXM::ApplicationSampleMaterial, OXMObjectLink(child));
    {
        auto* parent = new Scene;
        parent->setValue(OXM::ApplicationSampleMaterial, OXMObjectLink(child));
        EXPECT_EQ(child->getParentLink().getOwner(), parent);
        delete parent;
    }
    EXPECT_EQ(child->getParentLink().getOwner(), nullptr);
    delete child; // explicit destruction while still linked
    OXMObjectLink read;
    scene.getValue(OXM::ApplicationSampleMaterial, read);
    EXPECT_EQ(read.getLink(), nullptr);
}

TEST(OXMLink, ReferencePointersDeleteAutoDeleteObjectsWithTheLastReference)
{
    Tracked::alive = 0;
    OXMObjectPtr keep;
    {
        OXMObjectPtr p(new Tracked);
        keep = p;
        EXPECT_EQ(p->getRefCount(), 2);
    }
    EXPECT_EQ(Tracked::alive, 1);
    OXMObject* handedOver = keep.release();
    EXPECT_EQ(Tracked::alive, 1); // release does not delete
    EXPECT_EQ(handedOver->getRefCount(), 0);
    {
        OXMObjectPtr again(handedOver);
    }
    EXPECT_EQ(Tracked::alive, 0);

    auto* manual = new Tracked;
    manual->setAutoDelete(false);
    {
        OXMObjectPtr p(manual);
    }
    EXPECT_EQ(Tracked::alive, 1);
    OXMObjectPtr p(manual);
    delete manual;
    EXPECT_EQ(p.get(), nullptr);
}

TEST(OXMLink, LinkChangesAreRecordedAndTheRecordKeepsTheOldObjectAlive)
{
    class Keep : public OXMUndoRecorder
    {
    public:
        void recordChange(OXMObject*, OXMenum id, const OXMPropertyValue& o,
                          const OXMPropertyValue& n) override
        {
            property = id;
            oldValue = o.clone();
            newValue = n.clone();
        }
        OXMenum property;
        std::unique_ptr<OXMPropertyValue> oldValue, newValue;
    } recorder;

    Tracked::alive = 0;
    Scene scene;
    auto* first = new Tracked;
    scene.setValue(OXM::ApplicationSampleMaterial, OXMObjectLink(first));
    OXMUndoRecorder* previous = OXMObject::setUndoRecorder(&recorder);
    auto* second = new Tracked;
    scene.setValue(OXM::ApplicationSampleMaterial, OXMObjectLink(second));
    OXMObject::setUndoRecorder(previous);

    EXPECT_EQ(recorder.property, OXM::ApplicationSampleMaterial);
    ASSERT_NE(recorder.oldValue->get<OXMObjectLink>(), nullptr);
    EXPECT_EQ(recorder.oldValue->get<OXMObjectLink>()->getLink(), first);
    EXPECT_EQ(recorder.newValue->get<OXMObjectLink>()->getLink(), second);
    EXPECT_EQ(Tracked::alive, 2); // first lives on in the record

    EXPECT_TRUE(
        scene.getProperty(OXM::ApplicationSampleMaterial)->restoreValue(*recorder.oldValue));
    EXPECT_EQ(first->getParentLink().getOwner(), &scene);
    recorder.oldValue.reset();
    recorder.newValue.reset();
    EXPECT_EQ(Tracked::alive, 1); // second went with the record
}
