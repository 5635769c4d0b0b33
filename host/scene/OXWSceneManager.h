#pragma once

#include "OXMObjectPath.h"
#include "OXMSceneObject.h"

#include <functional>

class OXMScene;

// Places new objects in the scene tree and keeps the current selection.
// Properties: OXM::Scene (link to the OXMScene), OXM::RenderObjectSelectionList and
// OXM::RegionOfInterestSelectionList (arrays of OXMObjectPath). The application connects
// its own selection through setSelectionHook (or by listening to the two lists).
class OXWSceneManager : public OXMSceneObject
{
    OXM_SCENE_CLASS(OXWSceneManager)

public:
    using SelectionHook = std::function<void(const OXMObjectPath& selected)>;

    OXWSceneManager();
    OXWSceneManager(const OXWSceneManager& other);
    OXWSceneManager& operator=(const OXWSceneManager& other);

    OXMScene* getScene() const;
    bool setScene(OXMScene* scene);

    // Inserts the linked object (with its auxiliary object) into the link-array property
    // link.getPropertyID() of the last object of parentPath (the scene when the path is
    // empty), sets the object's OXM::ScenePath and selects it. False, and nothing changes,
    // when the parent or its list property is missing or the link is empty.
    bool addAndSelectObject(const OXMObjectLink& link, const OXMObjectPath& parentPath);

    // Selects the object at the path: a region goes into the region selection (the render
    // object selection is cleared), anything else into the render object selection.
    bool select(const OXMObjectPath& path);
    OXMObjectPath getSelection() const;

    void setSelectionHook(SelectionHook hook) { mHook = std::move(hook); }

private:
    SelectionHook mHook;
};
