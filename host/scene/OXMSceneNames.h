#pragma once

#include "OXMenum.h"

// Property keys of the scene objects that are not among the host's built-in enumerations.
// Each is registered on first use and stays registered for the life of the process.
class OXMSceneNames
{
public:
    // Host namespace.
    static OXMenum dimensions();  // OXMVector3<int>, voxels per axis of a sample grid
    static OXMenum spacing();     // OXMVector3<float>, voxel size
    static OXMenum gridOrigin();  // OXMVector3<float>, centre of voxel (0, 0, 0)
    static OXMenum dataVersion(); // int, incremented whenever the voxels change
    // Strings of a sample grid: the file or folder its voxels were read from and the DICOM
    // series chosen there; empty for voxels made in memory.
    static OXMenum dataSource();
    static OXMenum dataSeries();
    static OXMenum maskVersion(); // int, incremented whenever a region's mask changes
    static OXMenum voxelCount();  // int, voxels inside a region
    static OXMenum dataRange();   // pair of floats of a histogram result
    static OXMenum binCount();    // int, bins of a histogram of floating-point data
    // A camera's view: OXMVector3<float> position, focal point and up direction, and the
    // float view angle in degrees.
    static OXMenum cameraPosition();
    static OXMenum cameraFocalPoint();
    static OXMenum cameraViewUp();
    static OXMenum cameraViewAngle();

    // Namespace of the classification plug-in.
    static OXMenum shadingModel();
    static OXMenum shadingCountLimit();
    static OXMenum surfaceInverted();
    static OXMenum sceneCameraList();
    static OXMenum tulvoRights();
    static OXMenum scatterHQ();
    static OXMenum scatter();
    static OXMenum scatterGradient();
    static OXMenum xRay();
    static OXMenum sum();

    // Declares the roles of the scene objects and registers every scene class with the class
    // manager (idempotent; also done when the library is loaded).
    static bool registerSceneClasses();
};
