#include "OXWRenderMethodTable.h"

#include "OXWClassificationToolEnums.h"

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleton.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXWApplication.h>

#include <QComboBox>
#include <QCoreApplication>

namespace {

const OXMRegisteredEnum ScatterHQ("ScatterHQ", false, OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum XRay("XRay", false, OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum Sum("Sum", false, OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum Scatter("Scatter", false, OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ScatterGradient("ScatterGradient", false,
                                        OXWClassificationToolEnums::Namespace);
// The property of the render plug-in that holds the shading model of most renderers.
const OXMRegisteredEnum ShadingModel("ShadingModel", false, OXWClassificationToolEnums::Namespace);
// The scene's cameras.
const OXMRegisteredEnum SceneCameraList("SceneCameraList", false,
                                        OXWClassificationToolEnums::Namespace);

struct Row
{
    const char* displayName;
    const char* className;
    OXMenum shadingModel;
};

// The first link of the object's link array id; a null link when there is none.
OXMObjectLink firstLink(const OXMObject* object, OXMenum id)
{
    OXMObjectLink link;
    const auto* links = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        object ? object->getProperty(id) : nullptr);
    if (links && links->getArraySize() > 0) {
        links->getArrayItems(0, 0, &link);
    }
    return link;
}

} // namespace

OXWRenderMethodTable::OXWRenderMethodTable()
{
    const Row rows[RowCount] = {
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Isosurface renderer"),
         "OXMRaytracing::Isosurface::RenderPlugin", OXM::Phong},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Volume renderer (Phong)"),
         "OXMRaytracing::Volume::RenderPlugin", OXM::Phong},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Volume renderer (Scatter HQ)"),
         "OXMRaytracing::Volume::RenderPlugin", ScatterHQ},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Hardware renderer (Scatter HQ)"),
         "OXMDDTexture3DRenderPlugin", ScatterHQ},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "X-Ray"), "OXMOxm2RenderPlugin", XRay},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Sum along Ray"), "OXMOxm2RenderPlugin", Sum},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Maximum Projection"), "OXMOxm2RenderPlugin",
         OXM::Maximum},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Scatter (v1.2)"), "OXMOxm2RenderPlugin",
         Scatter},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Scatter HQ (v1.2)"), "OXMOxm2RenderPlugin",
         ScatterHQ},
        {QT_TRANSLATE_NOOP("OXWRenderMethodTable", "Scatter Gradient (v1.2)"),
         "OXMOxm2RenderPlugin", ScatterGradient},
    };
    for (int row = 0; row < RowCount; ++row) {
        mDisplayNames[row] =
            QCoreApplication::translate("OXWRenderMethodTable", rows[row].displayName);
        mClassNames[row] = QString::fromLatin1(rows[row].className);
        mShadingModels[row] = rows[row].shadingModel;
    }
}

void OXWRenderMethodTable::fillComboBox(QComboBox* box, const QString& displayName) const
{
    if (!box) {
        return;
    }
    box->clear();
    int current = -1;
    for (int row = 0; row < RowCount; ++row) {
        box->addItem(mDisplayNames[row]);
        if (current < 0 && mDisplayNames[row] == displayName) {
            current = row;
        }
    }
    box->setCurrentIndex(current);
}

QString OXWRenderMethodTable::classNameFor(const QString& displayName) const
{
    for (int row = 0; row < RowCount; ++row) {
        if (mDisplayNames[row] == displayName) {
            return mClassNames[row];
        }
    }
    return QString();
}

QString OXWRenderMethodTable::displayNameFor(const QString& className, OXMenum shadingModel) const
{
    for (int row = 0; row < RowCount; ++row) {
        if (mClassNames[row] == className && mShadingModels[row] == shadingModel) {
            return mDisplayNames[row];
        }
    }
    return QString();
}

OXMenum OXWRenderMethodTable::shadingModelFor(const QString& displayName) const
{
    for (int row = 0; row < RowCount; ++row) {
        if (mDisplayNames[row] == displayName) {
            return mShadingModels[row];
        }
    }
    return OXM::Unknown;
}

OXMObject* OXWRenderMethodTable::findRenderSettings()
{
    OXWApplication* application = OXMSingleton<OXWApplication>::getInstance();
    if (!application) {
        return nullptr;
    }
    OXMObjectLink scene;
    if (!application->getValue(OXM::Scene, scene) || !scene.getLink()) {
        return nullptr;
    }
    OXMObject* camera = firstLink(scene.getLink(), SceneCameraList).getLink();
    if (!camera) {
        return nullptr;
    }
    const auto* engines = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        camera->getProperty(OXM::RaytracingEngineList));
    if (!engines) {
        return nullptr;
    }
    for (const OXMObjectLink& engine : engines->getArray()) {
        if (engine.linkIsOfType("OXMOxm2RenderSettings")) {
            return engine.getLink();
        }
    }
    return nullptr;
}

void OXWRenderMethodTable::setListener(OXMIOC* listener)
{
    mVolume.setListener(listener);
    mROI.setListener(listener);
    mRenderPlugin.setListener(listener);
    mRenderSettings.setListener(listener);
}

void OXWRenderMethodTable::clear()
{
    mVolume = nullptr;
    mROI = nullptr;
    mRenderPlugin = nullptr;
    mRenderSettings = nullptr;
}

QString OXWRenderMethodTable::displayName(int row) const
{
    return row >= 0 && row < RowCount ? mDisplayNames[row] : QString();
}

QString OXWRenderMethodTable::className(int row) const
{
    return row >= 0 && row < RowCount ? mClassNames[row] : QString();
}

OXMenum OXWRenderMethodTable::shadingModel(int row) const
{
    return row >= 0 && row < RowCount ? mShadingModels[row] : OXM::Unknown;
}
