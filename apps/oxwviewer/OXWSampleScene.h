#pragma once

class OXMObject;
class OXMScene;
class OXMVolumeRenderObject;

// The viewer's built-in sample: an 8-bit and a 16-bit CT-like phantom (OXMScenePhantom) of
// size³ voxels, as the volumes "Phantom 8-bit" and "Phantom 16-bit" of a scene, each with its
// default classification, a calculated histogram and the renderer of imported data
// (OXWImportRenderer).
//
// build(application, size) uses the scene that the application's OXM::Scene link names (or
// creates one and links it there) and, when the application has an OXM::SceneManager link
// that is empty, links a scene manager of that scene there. Nothing is selected: selection is
// the scene tree's business. Changes are not wrapped in a user action (loading the sample is
// not an undoable edit). Returns the volume to show first, the 16-bit one; null when a step
// fails (a size < 1, an application without an OXM::Scene link, a refused write); volumes added
// before the failing step stay in the scene.
class OXWSampleScene
{
public:
    struct Result
    {
        OXMScene* scene = nullptr;
        OXMVolumeRenderObject* volume8 = nullptr;
        OXMVolumeRenderObject* volume16 = nullptr;
    };

    static OXMVolumeRenderObject* build(OXMObject* application, int size = 256);
    // The same, reporting every object; false when a step fails.
    static bool build(OXMObject* application, int size, Result& result);

    static const char* volumeName8() { return "Phantom 8-bit"; }
    static const char* volumeName16() { return "Phantom 16-bit"; }
};
