#pragma once

#include <OXMObjectIOCPtr.h>
#include <OXMenum.h>

#include <QString>

class OXMIOC;
class OXMObject;
class QComboBox;

// The rendering methods that the tool panel offers, and the rendering objects of the bound
// volume.
//
// A rendering method is a row of three parallel columns: the translated display name shown in
// the panel's combo box, the class of the render plug-in object that draws the volume, and the
// shading model. Several rows share a render plug-in class and differ in the shading model;
// on an "OXMOxm2RenderPlugin" the shading model lives in the scene camera's render settings
// (OXM::RenderingMode), on every other renderer in the plug-in object ("ShadingModel").
//
// The four object pointers are listening pointers, all with the same listener (the panel):
// the volume render object, its region of interest (or none), the render plug-in object linked
// by the volume and the object that carries the render settings.
class OXWRenderMethodTable
{
public:
    OXWRenderMethodTable();

    static constexpr int RowCount = 10;

    // Clears the box, inserts the display names of all rows in order and makes current the
    // row whose display name equals displayName; no current row (-1) when none does.
    void fillComboBox(QComboBox* box, const QString& displayName) const;
    // The render plug-in class of the first row with that display name; empty when none.
    QString classNameFor(const QString& displayName) const;
    // The display name of the first row with that class and shading model; null when none.
    QString displayNameFor(const QString& className, OXMenum shadingModel) const;
    // The shading model of the first row with that display name; OXM::Unknown when none.
    OXMenum shadingModelFor(const QString& displayName) const;

    // The render settings of an "OXMOxm2RenderPlugin": on the application's scene, the first
    // camera of its "SceneCameraList", and there the first entry of OXM::RaytracingEngineList
    // that is an "OXMOxm2RenderSettings". Null when any step finds nothing.
    static OXMObject* findRenderSettings();

    // Makes listener the listener of all four pointers.
    void setListener(OXMIOC* listener);
    // Lets go of all four objects.
    void clear();

    OXMObjectIOCPtr mVolume;
    OXMObjectIOCPtr mROI;
    OXMObjectIOCPtr mRenderPlugin;
    OXMObjectIOCPtr mRenderSettings;

    // The columns of row 0 .. RowCount - 1.
    QString displayName(int row) const;
    QString className(int row) const;
    OXMenum shadingModel(int row) const;

private:
    QString mDisplayNames[RowCount];
    QString mClassNames[RowCount];
    OXMenum mShadingModels[RowCount];
};
