#pragma once

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMSingleValueOP.h>

// Places new objects in the scene tree and selects them. Property: OXM::Scene (link to the
// scene, the parent of objects placed at the top). The selection is the application's
// (OXWApplication's OXM::RenderObjectSelectionList and OXM::RegionOfInterestSelectionList), so
// every view that follows the selection follows the scene manager too; inside a user action
// the insertion and the selection are one undo step, whose undo takes the object out and
// selects again what was selected before.
//
// The class is registered with the class manager as "OXWSceneManager".
class OXWSceneManager : public OXMObject
{
public:
    OXWSceneManager();
    OXWSceneManager(const OXWSceneManager& other);
    OXWSceneManager& operator=(const OXWSceneManager& other);
    ~OXWSceneManager() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    OXMenum getObjectID(int index) const override;

    OXMObject* getScene() const;
    bool setScene(OXMObject* scene);

    // Inserts the linked object (with its auxiliary object) at the end of the link-array
    // property link.getPropertyID() of the last object of parentPath (of the scene when the
    // path is empty), sets the object's OXM::ScenePath and selects it. False, and nothing
    // changes, when the link is empty or the parent or its list property is missing; false
    // after the insertion when there is no application to select in.
    bool addAndSelectObject(const OXMObjectLink& link, const OXMObjectPath& parentPath);

    // Makes the object at the path the only selected one: a region (role
    // OXM::RegionOfInterest) in the region selection with the render object selection empty,
    // anything else the other way round. False without an application.
    bool select(const OXMObjectPath& path);
    // The selection as the tools read it: the one selected region; with no region selected,
    // the one selected render object; an empty path otherwise.
    static OXMObjectPath getSelection();

private:
    OXMSingleValueOP<OXMObjectLink> mScene;
};
