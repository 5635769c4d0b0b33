#include "OXWClassificationToolGUI.h"

#include "OXWClassificationToolEnums.h"
#include "OXWLUTColorBar.h"
#include "OXWLUTIntervalInfo.h"
#include "OXWLUTObjectInfo.h"
#include "OXWLUTWorkArea.h"
#include "OXWRenderMethodTable.h"

#include <OXMAction.h>
#include <OXMError.h>
#include <OXMLocalClassFlags.h>
#include <OXMMetaClass.h>
#include <OXMObject.h>
#include <OXMObjectPtr.h>
#include <OXMObjectRefPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleton.h>
#include <OXMTulvoRights.h>
#include <OXMVector2.h>
#include <OXMVector3.h>
#include <OXWApplication.h>
#include <OXWBlockSignalsScope.h>
#include <OXWColorWidget.h>
#include <OXWExportCSVUtilities.h>
#include <OXWFileDialog.h>
#include <OXWMainWindow.h>
#include <OXWPresetHandler.h>
#include <OXWRoiAndVolumeExtractor.h>
#include <OXWSceneManager.h>
#include <OXWSpinBox.h>
#include <OXWTaskProgress.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QMessageBox>
#include <QScrollBar>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <thread>
#include <utility>

namespace {
const OXMRegisteredEnum TulvoRightsName("TulvoRights", false,
                                        OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ShadingModelName("ShadingModel", false,
                                         OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum ShadingCountLimitName("ShadingCountLimit", false,
                                              OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum SurfaceInvertedName("SurfaceInverted", false,
                                            OXWClassificationToolEnums::Namespace);
const OXMRegisteredEnum PresetHandlerName("PresetClassificationHandler", false,
                                          OXWClassificationToolEnums::Namespace);
// Registered for the host's volume-render presets; the panel itself does not read it.
const OXMRegisteredEnum PresetVolumeRenderHandlerName("PresetVolumeRenderHandler", false,
                                                      OXWClassificationToolEnums::Namespace);
// The histogram result's grey-value range; a name of the host.
const OXMRegisteredEnum DataRangeName("DataRange");

// Colour handles are stored in 0..1; the model keeps them in 0..256.
constexpr float ColourHandleScale = 1.0f / 256.0f;
// While set, the host treats writes to the material as its own bookkeeping.
constexpr unsigned MaterialBookkeepingFlag = 0x10000000u;

using Vector = OXMVector2<float>;
using FloatPair = std::pair<float, float>;

OXWApplication* application()
{
    return OXMSingleton<OXWApplication>::getInstance();
}

// Writes the three interval lists of a material; a list the material lacks is skipped.
// Names are stored in the local 8-bit encoding.
void writeIntervalLists(OXMObject* material, const std::vector<int>& borders,
                        const std::vector<OXMenum>& modes, const std::vector<QString>& names)
{
    std::vector<QByteArray> encoded;
    for (const QString& name : names) {
        encoded.push_back(name.toLocal8Bit());
    }
    std::vector<const char*> pointers;
    for (const QByteArray& name : encoded) {
        pointers.push_back(name.constData());
    }
    material->setArray(OXM::IntervalIndexList, borders);
    material->setArray(OXM::IntervalModeList, modes);
    material->setArray(OXM::IntervalNameList, pointers);
}

std::vector<QString> readNames(const OXMObject* object)
{
    std::vector<QString> names;
    for (const char* name : OXMObject::arrayOf<const char*>(object, OXM::IntervalNameList)) {
        names.push_back(QString::fromLocal8Bit(name));
    }
    return names;
}

float clampColour(float value)
{
    return std::min(std::max(value, 0.5f), 255.5f);
}

bool isRgbType(OXMenum type)
{
    return type == OXM::Rgb8 || type == OXM::Rgb16 || type == OXM::Rgba8 || type == OXM::Rgba16;
}

// The page of the colour tab widget that each channel set belongs to.
enum ColourPage
{
    AmbientPage = 0,
    DiffusePage = 1,
    SpecularPage = 2,
    TransparencyPage = 3
};
} // namespace

OXWClassificationToolGUI::OXWClassificationToolGUI(QWidget* parent, const char* name)
    : OXWClassificationToolGUIUI(parent, name),
      mDelayedEvent(QEvent::MouseMove, QPointF(0, 0), Qt::NoButton, Qt::NoButton, Qt::NoModifier)
{
    for (OXMObjectIOCPtr* ptr : listeningPointers()) {
        ptr->setListener(this);
    }
    createTimers(); // first: binding below may already schedule a re-read
    createRenderMethodTable();
    mWorkAreaUseCalibrationButton->setIcon(OXWApplication::getMiniIconSet("object_calibrate"));
    mWorkAreaZoomPlusButton->setIcon(OXWApplication::getMiniIconSet("view_zoom_in"));
    mWorkAreaZoomMinusButton->setIcon(OXWApplication::getMiniIconSet("view_zoom_out"));
    releaseRenderObject();
    bindInitialSelection();
    mTransparencySpinBox->setMaxValue(double(std::numeric_limits<float>::max()));
    mTransparencySpinBox->setMinValue(0.0);
    connectEditors();
    connectControls();
    mWorkAreaToggleRenderingSettingsButton->hide();
    setUpOversamplingSpinBox();
    updateScrollBar();
    updateZoomButtons();
    adjustSize();
}

void OXWClassificationToolGUI::createTimers()
{
    mDelayedMouseMoveTimer = std::make_unique<QTimer>();
    mDelayedMouseMoveTimer->setObjectName(
        QStringLiteral("OXWWorkspaceWidget::Private::mDelayedMouseMoveTimer"));
    mDelayedMouseMoveTimer->setSingleShot(true);
    mUpdateObjectInfoTimer = new QTimer(this);
    mUpdateObjectInfoTimer->setObjectName(
        QStringLiteral("OXWClasificationToolGUI::mUpdateObjectInfoTimer"));
    mUpdateObjectInfoTimer->setSingleShot(true);
    mUpdateAnalyzerTimer = new QTimer(this);
    mUpdateAnalyzerTimer->setObjectName(
        QStringLiteral("OXWClasificationToolGUI::mUpdateAnalyzerTimer"));
    mUpdateAnalyzerTimer->setSingleShot(true);
}

void OXWClassificationToolGUI::createRenderMethodTable()
{
    mRenderMethodTable.reset(new (std::nothrow) OXWRenderMethodTable);
    if (!mRenderMethodTable) {
        OXMError::emitError(nullptr, OXM::OutOfMemory,
                            tr("The table of rendering methods could not be created."));
    } else {
        mRenderMethodTable->setListener(this);
    }
}

// The selection there is when the panel is made, and the application's messages from then on.
void OXWClassificationToolGUI::bindInitialSelection()
{
    if (OXWApplication* app = application()) {
        takeSceneAndRights();
        const OXMObjectPath path = findSelection();
        if (isUsableSelection(path, true)) {
            mSelectedObject = path.getLink(-1);
            if (bindRenderObject()) {
                mSelectionPath = path;
            } else {
                releaseRenderObject();
            }
        }
        iocOpen(this);
        Q_UNUSED(app);
    }
}

void OXWClassificationToolGUI::connectEditors()
{
    connect(mLUTWorkArea, &OXWLUTWorkArea::objectOpacityChanged, this,
            &OXWClassificationToolGUI::updateOpacity);
    connect(mLUTWorkArea, &OXWLUTWorkArea::verticalZoomChanged, this,
            &OXWClassificationToolGUI::updateVisibleOpacityArea);
    connect(mAmbientLUTColorBar, &OXWLUTColorBar::objectColorChanged, this,
            &OXWClassificationToolGUI::updateColor);
    connect(mDiffuseLUTColorBar, &OXWLUTColorBar::objectColorChanged, this,
            &OXWClassificationToolGUI::updateColor);
    connect(mLUTWorkArea, &OXWLUTWorkArea::objectInfoChanged, this,
            &OXWClassificationToolGUI::updateIntervals);
    connect(mColorManipulationTabWidget, &QTabWidget::currentChanged, this,
            &OXWClassificationToolGUI::colorTabChanged);
    connect(mSpecularShininessSpinBox, &OXWSpinBox::valueChanged, this,
            &OXWClassificationToolGUI::updateShininess);
    for (OXWSpinBox* box :
         {mAmbientIntensitySpinBox, mDiffuseIntensitySpinBox, mSpecularIntensitySpinBox}) {
        connect(box, &OXWSpinBox::valueChanged, this, &OXWClassificationToolGUI::updateIntensity);
    }
    connect(mTransparencySpinBox, &OXWSpinBox::valueChanged, this,
            &OXWClassificationToolGUI::updateTransparency);
    connect(mLUTWorkArea, &OXWLUTWorkArea::isosurfaceChanged, this,
            &OXWClassificationToolGUI::updateIsosurface);
    connect(mDiffuseSharedColortableCheckBox, &QCheckBox::toggled, this,
            &OXWClassificationToolGUI::setDiffuseShared);
    connect(mLUTWorkArea, &OXWLUTWorkArea::histogramSaveActivated, this,
            &OXWClassificationToolGUI::saveHistogram);
    connect(mLUTWorkArea, &OXWLUTWorkArea::createSegmentFromGreyvalueInterval, this,
            &OXWClassificationToolGUI::createSegmentFromGreyvalueIntervalSlot);
    connect(mLUTWorkArea, &OXWLUTWorkArea::extractGreyvalueInterval, this,
            &OXWClassificationToolGUI::extractGreyvalueIntervalSlot);
    connect(mSpecularColorWidget, &OXWColorWidget::rgbChanged, this,
            &OXWClassificationToolGUI::updateSpecularColor);
    connect(this, &OXWClassificationToolGUI::updateLUTWidgets, mLUTWorkArea,
            &OXWLUTWorkArea::updateAll);
    connect(this, &OXWClassificationToolGUI::updateLUTWidgets, mAmbientLUTColorBar,
            &OXWLUTColorBar::updateAll);
    connect(this, &OXWClassificationToolGUI::updateLUTWidgets, mDiffuseLUTColorBar,
            &OXWLUTColorBar::updateAll);
}

void OXWClassificationToolGUI::connectControls()
{
    connect(mWorkAreaZoomPlusButton, &QToolButton::clicked, this,
            &OXWClassificationToolGUI::workAreaZoomPlusSlot);
    connect(mWorkAreaZoomMinusButton, &QToolButton::clicked, this,
            &OXWClassificationToolGUI::workAreaZoomMinusSlot);
    connect(mWorkAreaScrollbar, &QScrollBar::valueChanged, this,
            &OXWClassificationToolGUI::workAreaScrollSlot);
    connect(mUpdateObjectInfoTimer, &QTimer::timeout, this,
            &OXWClassificationToolGUI::updateObjectInfo);
    connect(mUpdateAnalyzerTimer, &QTimer::timeout, this,
            &OXWClassificationToolGUI::updateAnalyzer);
    connect(mDelayedMouseMoveTimer.get(), &QTimer::timeout, this,
            &OXWClassificationToolGUI::sendDelayedMouseMoveEvent);
    connect(mRenderMethodComboBox, QOverload<int>::of(&QComboBox::activated), this,
            &OXWClassificationToolGUI::renderMethodSlot);
    connect(mOversamplingSpinBox, &OXWSpinBox::valueChanged, this,
            &OXWClassificationToolGUI::oversamplingSlot);
    connect(mHiddenSurfaceRemovalCheckBox, &QCheckBox::clicked, this,
            &OXWClassificationToolGUI::renderInnerSurfacesSlot);
    connect(mSurfaceInvertedCheckBox, &QCheckBox::clicked, this,
            &OXWClassificationToolGUI::surfaceInvertedSlot);
    connect(mGradientNormalizationCheckBox, &QCheckBox::clicked, this,
            &OXWClassificationToolGUI::gradientNormalizationSlot);
    connect(mWorkAreaUseCalibrationButton, &QToolButton::toggled, this,
            &OXWClassificationToolGUI::volumeComponentModeSlot);
}

void OXWClassificationToolGUI::setUpOversamplingSpinBox()
{
    mOversamplingSpinBox->setPrecision(1);
    mOversamplingSpinBox->setPrecisionReference(0.5);
    mOversamplingSpinBox->setMinValue(0.5);
    mOversamplingSpinBox->setMaxValue(50.0);
    mOversamplingSpinBox->setLineStep(0.5);
    mOversamplingSpinBox->setPageStep(0.5);
}

std::array<OXMObjectIOCPtr*, 15> OXWClassificationToolGUI::listeningPointers()
{
    return {&mScene,
            &mRights,
            &mMaterial,
            &mHistogram,
            &mSelectedObject,
            &mOpacity,
            &mShininess,
            &mTransparency,
            &mRed,
            &mGreen,
            &mBlue,
            &mIntensity,
            &mDiffuseRedLink,
            &mDiffuseGreenLink,
            &mDiffuseBlueLink};
}

OXWClassificationToolGUI::~OXWClassificationToolGUI()
{
    iocClose(this);
    releaseRenderObject();
    attachModel(nullptr);
    mLUTWorkArea->setRenderObject(nullptr);
    mObjectInfo.reset();
    mDelayedMouseMoveTimer.reset();
    mRenderMethodTable.reset();
    // The listening pointers must not call back into a half-destroyed panel.
    for (OXMObjectIOCPtr* ptr : listeningPointers()) {
        *ptr = nullptr;
    }
}

// --- selection and binding -------------------------------------------------------------------

OXMObjectPath OXWClassificationToolGUI::findSelection()
{
    OXWApplication* app = application();
    if (!app) {
        return OXMObjectPath();
    }
    const std::vector<OXMObjectPath> regions =
        OXMObject::arrayOf<OXMObjectPath>(app, OXM::RegionOfInterestSelectionList);
    if (regions.size() == 1) {
        return regions.front();
    }
    if (regions.empty()) {
        const std::vector<OXMObjectPath> objects =
            OXMObject::arrayOf<OXMObjectPath>(app, OXM::RenderObjectSelectionList);
        if (objects.size() == 1) {
            return objects.front();
        }
    }
    return OXMObjectPath();
}

bool OXWClassificationToolGUI::isUsableSelection(const OXMObjectPath& path, bool volumesOnly)
{
    if (path.isEmpty() || !path.getLink(-1)) {
        return false;
    }
    const OXMenum list = path.getPathElement(-1).getPropertyID();
    return list == OXM::VolumeRenderObjectList ||
           (!volumesOnly && list == OXM::RegionOfInterestList);
}

void OXWClassificationToolGUI::takeSceneAndRights()
{
    OXWApplication* app = application();
    mScene = app ? OXMObject::linkedObject(app, OXM::Scene) : nullptr;
    mRights = OXMObject::linkedObject(mScene.get(), TulvoRightsName);
    mLUTWorkArea->setRights(dynamic_cast<OXMTulvoRights*>(mRights.get()));
}

void OXWClassificationToolGUI::followSelection()
{
    const OXMObjectPath path = findSelection();
    if (isUsableSelection(path, false)) {
        mSelectedObject = path.getLink(-1);
        if (bindRenderObject()) {
            if (path != mSelectionPath) {
                // Another object shows its whole axis until the re-read restores the view
                // stored with it; selecting writes nothing to the object.
                mZoom = 1.0f;
                mScroll = 0.0f;
                updateScrollBar();
                updateZoomButtons();
                applyZoomToModel();
                startObjectInfoTimer();
            }
            mSelectionPath = path;
        } else {
            // The object can't be classified: the editors show their empty state instead of a
            // classification that belongs to something else.
            releaseRenderObject();
            attachModel(nullptr);
            mObjectInfo.reset();
        }
    } else {
        mSelectedObject = nullptr;
        releaseRenderObject();
        if (mObjectInfo) {
            mObjectInfo->resetIntervals();
        }
    }
    update();
}

OXMObject* OXWClassificationToolGUI::parentOwner(OXMObject* object) const
{
    return object ? object->getParentLink().getOwner() : nullptr;
}

bool OXWClassificationToolGUI::bindRenderObject()
{
    OXMObject* selected = mSelectedObject.get();
    mLUTWorkArea->setRenderObject(selected);
    if (!selected) {
        return false;
    }
    bindRenderMethodTable(selected);

    OXMObject* material = OXMObject::linkedObject(selected, OXM::ApplicationSampleMaterial);
    OXMObject* grid = linkedOfSelection(selected, OXM::SampleGrid);
    if (!material || !grid) {
        return false;
    }
    mDataType = OXMTypeInfo(OXM::Unknown);
    grid->getValue(OXM::SampleDataType, mDataType);
    OXMObject* opacity = OXMObject::linkedObject(material, OXM::Opacity);
    OXMenum inputChannel = OXM::Unknown;
    if (opacity) {
        opacity->getValue(OXM::InputChannel, inputChannel);
    }
    mInputChannel = mDataType.getChannel(inputChannel);
    OXMObject* histogram = findHistogram(selected, inputChannel);
    retargetPresetHandler(selected, histogram);

    const bool newHistogram = histogram != mHistogram.get();
    if (newHistogram) {
        abortCalculation();
        mHistogram = histogram;
    }
    const bool materialChanged = material != mMaterial.get();
    if (materialChanged) {
        mMaterial = material;
        mOpacity = opacity;
        mTransparency = OXMObject::linkedObject(material, OXM::Transparency);
        mShininess = OXMObject::linkedObject(material, OXM::Shininess);
        updateDiffuseSharedFromObject();
        colorModeUpdate();
    }
    enableColourEditing(!isRgbType(mDataType.getID()));
    if (newHistogram || materialChanged) {
        updateObjectInfo();
        readMaterialSpinBoxes();
    }
    return true;
}

void OXWClassificationToolGUI::bindRenderMethodTable(OXMObject* selected)
{
    if (!mRenderMethodTable) {
        return;
    }
    const bool isRegion = selected->isRoleActive(OXM::RegionOfInterest);
    OXMObject* owner = isRegion ? parentOwner(selected) : nullptr;
    OXMObject* volume = !isRegion                                               ? selected
                        : owner && owner->isRoleActive(OXM::VolumeRenderObject) ? owner
                                                                                : nullptr;
    if (!volume) {
        mRenderMethodTable->clear();
        return;
    }
    OXMObject* roi = isRegion ? selected : nullptr;
    OXMObject* plugin = OXMObject::linkedObject(volume, OXM::RenderPlugin);
    OXMObject* settings = roi ? roi : volume;
    if (plugin && plugin->isOfType("OXMOxm2RenderPlugin")) {
        settings = OXWRenderMethodTable::findRenderSettings();
    }
    mRenderMethodTable->mVolume = volume;
    mRenderMethodTable->mROI = roi;
    mRenderMethodTable->mRenderPlugin = plugin;
    mRenderMethodTable->mRenderSettings = settings;
}

OXMObject* OXWClassificationToolGUI::linkedOfSelection(OXMObject* selected, OXMenum id) const
{
    OXMObject* linked = OXMObject::linkedObject(selected, id);
    return linked ? linked : OXMObject::linkedObject(parentOwner(selected), id);
}

OXMObject* OXWClassificationToolGUI::findHistogram(OXMObject* selected, OXMenum inputChannel) const
{
    std::vector<OXMObjectLink> histograms =
        OXMObject::arrayOf<OXMObjectLink>(selected, OXM::HistogramList);
    if (histograms.empty()) {
        histograms = OXMObject::arrayOf<OXMObjectLink>(parentOwner(selected), OXM::HistogramList);
    }
    for (const OXMObjectLink& link : histograms) {
        OXMObject* transfer = OXMObject::linkedObject(link.getLink(), OXM::SampleTransferSpec);
        OXMenum channel = OXM::Unknown;
        if (transfer && transfer->getValue(OXM::InputChannel, channel) && channel == inputChannel) {
            return link.getLink();
        }
    }
    return nullptr;
}

void OXWClassificationToolGUI::retargetPresetHandler(OXMObject* target, OXMObject* histogram)
{
    if (OXWPresetHandler* handler = OXWPresetHandler::getPresetHandler(PresetHandlerName)) {
        handler->setTargetObject(target);
        handler->setHistogramObject(histogram);
    }
}

void OXWClassificationToolGUI::enableColourEditing(bool editable)
{
    for (QWidget* colourEditor :
         std::initializer_list<QWidget*>{mAmbientLUTColorBar, mDiffuseLUTColorBar,
                                         mSpecularColorWidget, mDiffuseSharedColortableCheckBox}) {
        colourEditor->setEnabled(editable);
    }
}

void OXWClassificationToolGUI::releaseRenderObject()
{
    retargetPresetHandler(nullptr, nullptr);
    mLUTWorkArea->setRenderObject(mSelectedObject.get());
    mMaterial = nullptr;
    mOpacity = nullptr;
    mTransparency = nullptr;
    mShininess = nullptr;
    mRed = nullptr;
    mGreen = nullptr;
    mBlue = nullptr;
    mIntensity = nullptr;
    mDiffuseRedLink = nullptr;
    mDiffuseGreenLink = nullptr;
    mDiffuseBlueLink = nullptr;
    abortCalculation();
    mHistogram = nullptr;
    mSelectionPath = OXMObjectPath();
    if (mRenderMethodTable) {
        mRenderMethodTable->clear();
    }
    mZoom = 1.0f;
    mScroll = 0.0f;
    mLUTWorkArea->setHistogramObject(nullptr);
}

void OXWClassificationToolGUI::abortCalculation()
{
    OXMObject* histogram = mHistogram.get();
    OXMAction* action = histogram ? histogram->getAction(OXM::Calculate) : nullptr;
    if (action && action->isRunning()) {
        action->getTaskInfo()->requestAbort();
    }
}

// --- change messages -------------------------------------------------------------------------

void OXWClassificationToolGUI::iocCallback(OXMIOC::Message& message)
{
    routeMessage(message);
    OXMIOC::iocCallback(message);
}

void OXWClassificationToolGUI::routeMessage(const OXMIOC::Message& message)
{
    OXMObject* sender = message.getInitialSender();
    const OXMenum property = message.getPropertyID();
    OXWApplication* app = application();
    const auto is = [sender](const OXMObjectIOCPtr& ptr) { return sender && sender == ptr.get(); };
    const bool fromApplication = sender && app && sender == app;
    const auto isAnyOf = [&property](std::initializer_list<OXMenum> ids) {
        return std::find(ids.begin(), ids.end(), property) != ids.end();
    };

    if ((fromApplication && property == OXM::Scene) ||
        (is(mScene) && property == OXMenum(TulvoRightsName))) {
        takeSceneAndRights();
        update();
    } else if (is(mRights)) {
        update();
    } else if ((fromApplication &&
                isAnyOf({OXM::RegionOfInterestSelectionList, OXM::RenderObjectSelectionList})) ||
               (is(mSelectedObject) &&
                isAnyOf({OXM::HistogramList, OXM::ApplicationSampleMaterial}))) {
        followSelection();
    } else if (is(mMaterial) && (isAnyOf({OXM::IntervalIndexList, OXM::IntervalModeList,
                                          OXM::IntervalNameList, OXM::IsosurfaceValueList}) ||
                                 message.getType() == OXMIOC::Dying)) {
        reReadLater();
    } else if (is(mHistogram)) {
        histogramChanged();
    } else if (is(mOpacity) && property == OXM::LookupTableHandleList) {
        reReadLater();
    } else if (is(mRed) || is(mGreen) || is(mBlue) || is(mDiffuseRedLink) ||
               is(mDiffuseGreenLink) || is(mDiffuseBlueLink)) {
        colourChannelChanged();
    } else if (is(mIntensity) || is(mShininess) || is(mTransparency)) {
        materialScalarChanged(sender);
    } else if (mRenderMethodTable && is(mRenderMethodTable->mVolume)) {
        renderedVolumeChanged(property);
    } else if (mRenderMethodTable &&
               (is(mRenderMethodTable->mRenderPlugin) || is(mRenderMethodTable->mRenderSettings)) &&
               isAnyOf({OXM::SamplingDistance, OXMenum(ShadingModelName), OXM::RenderingMode,
                        OXMenum(ShadingCountLimitName), OXMenum(SurfaceInvertedName)})) {
        reReadLater();
        update();
    }
}

void OXWClassificationToolGUI::reReadLater()
{
    if (mListening) {
        startObjectInfoTimer();
    }
}

void OXWClassificationToolGUI::histogramChanged()
{
    if (mListening) {
        startAnalyzerTimer();
    }
    update();
}

void OXWClassificationToolGUI::colourChannelChanged()
{
    if (mListening) {
        updateDiffuseSharedFromObject();
        colorModeUpdate();
        update();
    }
}

void OXWClassificationToolGUI::materialScalarChanged(const OXMObject* sender)
{
    if (!mListening) {
        return;
    }
    if (sender == mIntensity.get()) {
        readIntensitySpinBox();
    } else if (sender == mShininess.get()) {
        readShininessSpinBox();
    } else {
        readTransparencySpinBox();
    }
}

void OXWClassificationToolGUI::renderedVolumeChanged(OXMenum property)
{
    if (property == OXM::RenderPlugin) {
        OXMObject* volume = mRenderMethodTable->mVolume.get();
        retargetPresetHandler(mSelectedObject.get(), mHistogram.get());
        mRenderMethodTable->mRenderPlugin = OXMObject::linkedObject(volume, OXM::RenderPlugin);
        colorModeUpdate();
        readTransparencySpinBox();
        startObjectInfoTimer();
    } else if (property == OXM::VolumeComponentList || property == OXM::VolumeComponentMode ||
               property == OXM::GradientNormalization) {
        reReadLater();
        update();
    }
}

void OXWClassificationToolGUI::startObjectInfoTimer()
{
    if (mUpdateObjectInfoTimer && !mUpdateObjectInfoTimer->isActive()) {
        mUpdateObjectInfoTimer->start(ObjectInfoDelay);
    }
}

void OXWClassificationToolGUI::startAnalyzerTimer()
{
    if (mUpdateAnalyzerTimer && !mUpdateAnalyzerTimer->isActive()) {
        mUpdateAnalyzerTimer->start(AnalyzerDelay);
    }
}

// --- zoom, scroll and the delayed mouse moves ------------------------------------------------

void OXWClassificationToolGUI::workAreaZoomPlusSlot()
{
    if (mZoom < ZoomLimit) {
        mZoom *= ZoomStep;
    }
    updateScrollBar();
    updateZoomButtons();
    applyZoom();
}

void OXWClassificationToolGUI::workAreaZoomMinusSlot()
{
    if (mZoom > 1.0f) {
        mZoom /= ZoomStep;
    }
    updateScrollBar();
    updateZoomButtons();
    applyZoom();
}

void OXWClassificationToolGUI::workAreaScrollSlot()
{
    mScroll = float(mWorkAreaScrollbar->value() - mWorkAreaScrollbar->minimum());
    applyZoom();
}

void OXWClassificationToolGUI::updateScrollBar()
{
    OXWBlockSignalsScope block(mWorkAreaScrollbar);
    if (mZoom <= 1.0f) {
        mWorkAreaScrollbar->setRange(0, 0);
        mWorkAreaScrollbar->setPageStep(100);
        mWorkAreaScrollbar->setEnabled(false);
    } else {
        const int step = int(std::floor(100.0f / mZoom));
        mWorkAreaScrollbar->setRange(0, 100 - step);
        mWorkAreaScrollbar->setPageStep(step);
        mWorkAreaScrollbar->setEnabled(true);
    }
    mWorkAreaScrollbar->setValue(int(mScroll));
}

void OXWClassificationToolGUI::updateZoomButtons()
{
    mWorkAreaZoomMinusButton->setEnabled(mZoom > 1.0f);
    mWorkAreaZoomPlusButton->setEnabled(mZoom < ZoomLimit);
}

void OXWClassificationToolGUI::applyZoom()
{
    if (!mObjectInfo) {
        return;
    }
    applyZoomToModel();
    updateVisibleOpacityArea();
    update();
}

void OXWClassificationToolGUI::applyZoomToModel()
{
    if (mObjectInfo) {
        mObjectInfo->setVisibleGreyRange(mScroll / 100.0f, mScroll / 100.0f + 1.0f / mZoom);
    }
}

bool OXWClassificationToolGUI::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::MouseMove) {
        if (!mSendingDelayedEvent) {
            const auto* move = static_cast<QMouseEvent*>(event);
            mDelayedEvent =
                QMouseEvent(QEvent::MouseMove, move->localPos(), move->windowPos(),
                            move->screenPos(), move->button(), move->buttons(), move->modifiers());
            mDelayedEventTarget = watched;
            mDelayedEventPending = true;
            if (!mDelayedMouseMoveTimer->isActive()) {
                mDelayedMouseMoveTimer->start(MouseMoveDelay);
            }
            return true;
        }
        return false;
    }
    if (mDelayedEventPending) {
        sendDelayedMouseMoveEvent();
    }
    return OXWClassificationToolGUIUI::eventFilter(watched, event);
}

void OXWClassificationToolGUI::sendDelayedMouseMoveEvent()
{
    if (!mDelayedEventPending) {
        return;
    }
    mDelayedEventPending = false;
    QObject* target = mDelayedEventTarget.data();
    if (!target) {
        return;
    }
    mSendingDelayedEvent = true;
    QMouseEvent event(mDelayedEvent);
    QApplication::sendEvent(target, &event);
    mSendingDelayedEvent = false;
}

// --- painting and enabling -------------------------------------------------------------------

bool OXWClassificationToolGUI::isEditAllowed() const
{
    const auto* rights = dynamic_cast<const OXMTulvoRights*>(mRights.get());
    return !rights || rights->getAllowClassificationEdit();
}

void OXWClassificationToolGUI::paintEvent(QPaintEvent* event)
{
    applyEditingState();
    OXWClassificationToolGUIUI::paintEvent(event);
}

void OXWClassificationToolGUI::scheduleEditingState()
{
    if (mEditingStatePending) {
        return;
    }
    mEditingStatePending = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            mEditingStatePending = false;
            applyEditingState();
        },
        Qt::QueuedConnection);
}

void OXWClassificationToolGUI::applyEditingState()
{
    setEnabled(isEditAllowed());
    const bool ok =
        mMaterial.get() && mRenderMethodTable && mRenderMethodTable->mRenderPlugin.get();
    for (QWidget* widget :
         std::initializer_list<QWidget*>{mPresetGroupBox, mLUTWorkArea, mColorManipulationGroupBox,
                                         mTransparencySpinBox, mRenderMethodGroupBox}) {
        widget->setEnabled(ok);
    }
    // The scroll bar and the zoom buttons follow the zoom as well. Each widget is set once to
    // its final state: enabling one only to disable it again would repaint it, and its repaint
    // paints the panel below it, which would come back here.
    if (ok) {
        updateScrollBar();
        updateZoomButtons();
    } else {
        for (QWidget* widget : std::initializer_list<QWidget*>{
                 mWorkAreaScrollbar, mWorkAreaZoomPlusButton, mWorkAreaZoomMinusButton}) {
            widget->setEnabled(false);
        }
    }
    for (int page = 0; page < mColorManipulationTabWidget->count(); ++page) {
        mColorManipulationTabWidget->widget(page)->setEnabled(ok);
    }
    OXMObject* selected = mSelectedObject.get();
    mWorkAreaToggleRenderingSettingsButton->setEnabled(
        selected && selected->isRoleActive(OXM::RegionOfInterest));
    if (!ok) {
        mWorkAreaUseCalibrationButton->setEnabled(false);
    }
    emit updateLUTWidgets();
}

void OXWClassificationToolGUI::relabelColorTabs()
{
    static const char* const Full[] = {QT_TR_NOOP("Ambient"), QT_TR_NOOP("Diffuse"),
                                       QT_TR_NOOP("Specular"), QT_TR_NOOP("Transparency")};
    static const char* const Short[] = {QT_TR_NOOP("Amb.."), QT_TR_NOOP("Diff.."),
                                        QT_TR_NOOP("Spec.."), QT_TR_NOOP("Trans..")};
    const int current = mColorManipulationTabWidget->currentIndex();
    for (int page = 0; page < 4 && page < mColorManipulationTabWidget->count(); ++page) {
        mColorManipulationTabWidget->setTabText(page,
                                                tr(page == current ? Full[page] : Short[page]));
    }
}

void OXWClassificationToolGUI::languageChange()
{
    OXWClassificationToolGUIUI::languageChange();
    // The form labels every page in full; the panel shortens all but the current one. The
    // form's constructor calls this before the panel exists, and then only the form's texts
    // apply.
    relabelColorTabs();
}

void OXWClassificationToolGUI::colorTabChanged()
{
    relabelColorTabs();
    updateDiffuseSharedFromObject();
    colorModeUpdate();
    readMaterialSpinBoxes();
}

// --- colour sets -----------------------------------------------------------------------------

OXMObject* OXWClassificationToolGUI::resolveColorChannel(OXMenum channel) const
{
    OXMObject* object = OXMObject::linkedObject(mMaterial.get(), channel);
    // A reference chain longer than the material's channel count is a cycle.
    for (int step = 0; object && step < 64; ++step) {
        OXMenum mode = OXM::Unknown;
        if (!object->getValue(OXM::MapMode, mode) || mode != OXM::Reference) {
            return object;
        }
        object = OXMObject::linkedObject(object, OXM::Reference);
    }
    return nullptr;
}

void OXWClassificationToolGUI::colorModeUpdate()
{
    const int page = mColorManipulationTabWidget->currentIndex();
    OXMenum red = OXM::SpecularRed;
    OXMenum green = OXM::SpecularGreen;
    OXMenum blue = OXM::SpecularBlue;
    OXMenum intensity = OXM::SpecularIntensity;
    if (page == AmbientPage) {
        red = OXM::AmbientRed;
        green = OXM::AmbientGreen;
        blue = OXM::AmbientBlue;
        intensity = OXM::AmbientIntensity;
    } else if (page == DiffusePage) {
        red = OXM::DiffuseRed;
        green = OXM::DiffuseGreen;
        blue = OXM::DiffuseBlue;
        intensity = OXM::DiffuseIntensity;
    }
    mRed = resolveColorChannel(red);
    mGreen = resolveColorChannel(green);
    mBlue = resolveColorChannel(blue);
    mIntensity = resolveColorChannel(intensity);
    if (page == DiffusePage) {
        mDiffuseRedLink = OXMObject::linkedObject(mMaterial.get(), OXM::DiffuseRed);
        mDiffuseGreenLink = OXMObject::linkedObject(mMaterial.get(), OXM::DiffuseGreen);
        mDiffuseBlueLink = OXMObject::linkedObject(mMaterial.get(), OXM::DiffuseBlue);
    } else {
        mDiffuseRedLink = nullptr;
        mDiffuseGreenLink = nullptr;
        mDiffuseBlueLink = nullptr;
    }
    if (page >= SpecularPage) {
        float rgb[3] = {1.0f, 1.0f, 1.0f};
        const OXMObjectIOCPtr* objects[3] = {&mRed, &mGreen, &mBlue};
        for (int c = 0; c < 3; ++c) {
            if (OXMObject* object = objects[c]->get()) {
                if (!object->getValue(OXM::Scale, rgb[c])) {
                    rgb[c] = 1.0f;
                }
            }
        }
        const auto component = [](float v) { return qBound(0, int(std::lround(v * 255.0f)), 255); };
        mSpecularColorWidget->setColor(
            QColor(component(rgb[0]), component(rgb[1]), component(rgb[2])));
    }
    startObjectInfoTimer();
}

void OXWClassificationToolGUI::updateDiffuseSharedFromObject()
{
    static const OXMenum Diffuse[3] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    static const OXMenum Ambient[3] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    OXMObject* material = mMaterial.get();
    bool shared = material != nullptr;
    for (int c = 0; c < 3 && shared; ++c) {
        OXMObject* diffuse = OXMObject::linkedObject(material, Diffuse[c]);
        OXMenum mode = OXM::Unknown;
        shared = diffuse && diffuse->getValue(OXM::MapMode, mode) && mode == OXM::Reference;
    }
    if (shared) {
        for (int c = 0; c < 3; ++c) {
            OXMObject* diffuse = OXMObject::linkedObject(material, Diffuse[c]);
            diffuse->setValue(OXM::Reference,
                              OXMObjectLink(OXMObject::linkedObject(material, Ambient[c])));
        }
    }
    OXWBlockSignalsScope block(mDiffuseSharedColortableCheckBox);
    mDiffuseSharedColortableCheckBox->setChecked(shared);
}

void OXWClassificationToolGUI::setDiffuseShared(bool shared)
{
    static const OXMenum Diffuse[3] = {OXM::DiffuseRed, OXM::DiffuseGreen, OXM::DiffuseBlue};
    static const OXMenum Ambient[3] = {OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    OXMObject* material = mMaterial.get();
    if (!material) {
        update();
        return;
    }
    OXWApplication::UserActionScope action(tr("Change color settings"));
    bool ok = true;
    for (int c = 0; c < 3; ++c) {
        OXMObject* diffuse = OXMObject::linkedObject(material, Diffuse[c]);
        if (!diffuse) {
            ok = false;
            continue;
        }
        ok &= diffuse->setValue(OXM::Reference,
                                OXMObjectLink(OXMObject::linkedObject(material, Ambient[c])));
        ok &= diffuse->setValue(OXM::MapMode, shared ? OXM::Reference : OXM::LookupTable);
    }
    if (!ok) {
        updateDiffuseSharedFromObject();
        update();
    }
}

// --- writing the classification --------------------------------------------------------------

std::vector<OXMVector2<float>> OXWClassificationToolGUI::collectHandles(int channel,
                                                                        float scale) const
{
    std::vector<Vector> list;
    const OXWLUTObjectInfo& model = *mObjectInfo;
    for (int i = 0; i < model.intervalCount(); ++i) {
        const OXWLUTIntervalInfo* interval = model.interval(i);
        for (const auto& handle : interval->handles(channel)) {
            list.emplace_back(model.greyFromPosition(interval->globalFromLocal(handle.x)),
                              model.opacityFromPosition(handle.y) * scale);
        }
    }
    return list;
}

void OXWClassificationToolGUI::writeHandleList(OXMObject* object,
                                               const std::vector<OXMVector2<float>>& handles,
                                               bool& ok)
{
    ok &= object->setArray(OXM::LookupTableHandleList, handles);
    ok &= object->setValue(OXM::LookupTableHandleMode, OXM::Linear);
}

void OXWClassificationToolGUI::updateOpacity()
{
    OXMObject* opacity = mOpacity.get();
    if (!mModelValid || !mObjectInfo || !opacity) {
        return;
    }
    OXWApplication::UserActionScope action(tr("Change opacity"));
    {
        const WritingScope writing(*this);
        bool ok = opacity->setValue(OXM::MapMode, OXM::LookupTable);
        writeHandleList(opacity, collectHandles(OXWLUTIntervalInfo::OpacityChannel, 1.0f), ok);
    }
    scheduleEditingState();
}

void OXWClassificationToolGUI::updateColor()
{
    OXMObject* objects[3] = {mRed.get(), mGreen.get(), mBlue.get()};
    if (!mModelValid || !mObjectInfo || !objects[0] || !objects[1] || !objects[2]) {
        return;
    }
    static const int Channels[3] = {OXWLUTIntervalInfo::RedChannel,
                                    OXWLUTIntervalInfo::GreenChannel,
                                    OXWLUTIntervalInfo::BlueChannel};
    OXWApplication::UserActionScope action(tr("Change color"));
    {
        const WritingScope writing(*this);
        bool ok = true;
        for (int c = 0; c < 3; ++c) {
            writeHandleList(objects[c], collectHandles(Channels[c], ColourHandleScale), ok);
        }
    }
    scheduleEditingState();
}

void OXWClassificationToolGUI::updateIntervals()
{
    OXMObject* material = mMaterial.get();
    if (!mModelValid || !mObjectInfo || !material) {
        return;
    }
    // One undo step for the whole change of the interval set: the lists, then the curves that
    // the change reshaped (their own actions join this one).
    OXWApplication::UserActionScope step(tr("Change interval settings"));
    const WritingScope writing(*this);
    writeIntervalLists(material);
    updateOpacity();
    updateColor();
}

void OXWClassificationToolGUI::writeIntervalLists(OXMObject* material) const
{
    const OXWLUTObjectInfo& model = *mObjectInfo;
    std::vector<int> borders;
    std::vector<OXMenum> modes;
    std::vector<QString> names;
    for (int i = 0; i < model.intervalCount(); ++i) {
        const OXWLUTIntervalInfo* interval = model.interval(i);
        if (i == 0) {
            borders.push_back(int(std::floor(model.greyFromPosition(interval->from()))));
        }
        borders.push_back(int(std::floor(model.greyFromPosition(interval->to()))));
        modes.push_back(interval->isEnabled() ? OXM::Enabled : OXM::Disabled);
        names.push_back(interval->name());
    }
    ::writeIntervalLists(material, borders, modes, names);
}

void OXWClassificationToolGUI::updateIsosurface()
{
    OXMObject* material = mMaterial.get();
    if (!mModelValid || !mObjectInfo || !material) {
        return;
    }
    OXWApplication::UserActionScope action(tr("Change isosurface"));
    {
        const WritingScope writing(*this);
        const float native = mObjectInfo->calibratedFromPosition(mObjectInfo->isosurface());
        const float value = mInputChannel ? mInputChannel->nativeToFloat(native) : native;
        material->setArray(OXM::IsosurfaceValueList, std::vector<float>{value});
    }
    update();
}

void OXWClassificationToolGUI::updateVisibleOpacityArea()
{
    OXMObject* material = mMaterial.get();
    if (!mObjectInfo || !material) {
        return;
    }
    const WritingScope writing(*this);
    const OXWLUTObjectInfo& model = *mObjectInfo;
    const float w = model.greyStep() / 2.0f;
    material->setValue(OXM::VisibleOpacityIndexRange,
                       FloatPair(model.greyFromPosition(model.visibleGreyFrom() + w),
                                 model.greyFromPosition(model.visibleGreyTo() - w)));
    float top = model.opacityFromPosition(model.visibleOpacityTo());
    if (model.verticalZoom() > 0.0f && model.verticalZoom() < 1.0f) {
        top = 1.0f / model.verticalZoom();
    }
    material->setValue(OXM::VisibleOpacityValueRange,
                       FloatPair(model.opacityFromPosition(model.visibleOpacityFrom()), top));
}

void OXWClassificationToolGUI::updateSpecularColor(const OXMRGBf& rgb)
{
    OXMObject* material = mMaterial.get();
    if (!material) {
        return;
    }
    OXWApplication::UserActionScope action(tr("Change color"));
    bool ok = writeScale(OXMObject::linkedObject(material, OXM::SpecularRed), rgb.r);
    ok &= writeScale(OXMObject::linkedObject(material, OXM::SpecularGreen), rgb.g);
    ok &= writeScale(OXMObject::linkedObject(material, OXM::SpecularBlue), rgb.b);
    if (!ok) {
        update();
    }
}

bool OXWClassificationToolGUI::writeScale(OXMObject* object, float value)
{
    return object && object->setValue(OXM::Scale, value);
}

void OXWClassificationToolGUI::updateIntensity()
{
    OXWSpinBox* box = mSpecularIntensitySpinBox;
    const int page = mColorManipulationTabWidget->currentIndex();
    if (page == AmbientPage) {
        box = mAmbientIntensitySpinBox;
    } else if (page == DiffusePage) {
        box = mDiffuseIntensitySpinBox;
    }
    OXWApplication::UserActionScope action(tr("Change intensity"));
    if (!writeScale(mIntensity.get(), float(box->value() * 0.01))) {
        readIntensitySpinBox();
        update();
    }
}

void OXWClassificationToolGUI::updateShininess()
{
    OXWApplication::UserActionScope action(tr("Change shininess"));
    if (!writeScale(mShininess.get(), float(mSpecularShininessSpinBox->value()))) {
        readShininessSpinBox();
        update();
    }
}

void OXWClassificationToolGUI::updateTransparency()
{
    OXWApplication::UserActionScope action(tr("Set material transparency"));
    if (!writeScale(mTransparency.get(), float(mTransparencySpinBox->value() * 0.01))) {
        readTransparencySpinBox();
        update();
    }
}

// --- reading the material scalars ------------------------------------------------------------

void OXWClassificationToolGUI::readIntensitySpinBox()
{
    OXWSpinBox* box = mSpecularIntensitySpinBox;
    const int page = mColorManipulationTabWidget->currentIndex();
    if (page == AmbientPage) {
        box = mAmbientIntensitySpinBox;
    } else if (page == DiffusePage) {
        box = mDiffuseIntensitySpinBox;
    }
    float value = 0.0f;
    if (OXMObject* object = mIntensity.get(); object && object->getValue(OXM::Scale, value)) {
        OXWBlockSignalsScope block(box);
        box->setValue(double(value) * 100.0);
    }
}

void OXWClassificationToolGUI::readShininessSpinBox()
{
    float value = 0.0f;
    if (OXMObject* object = mShininess.get(); object && object->getValue(OXM::Scale, value)) {
        OXWBlockSignalsScope block(mSpecularShininessSpinBox);
        mSpecularShininessSpinBox->setValue(double(value));
    }
}

void OXWClassificationToolGUI::readTransparencySpinBox()
{
    float value = 0.0f;
    if (OXMObject* object = mTransparency.get(); object && object->getValue(OXM::Scale, value)) {
        OXWBlockSignalsScope block(mTransparencySpinBox);
        mTransparencySpinBox->setValue(double(value) * 100.0);
    }
}

void OXWClassificationToolGUI::readMaterialSpinBoxes()
{
    readIntensitySpinBox();
    readShininessSpinBox();
    readTransparencySpinBox();
}

// --- re-reading the classification -----------------------------------------------------------

bool OXWClassificationToolGUI::hasClassificationObjects() const
{
    return mMaterial.get() && mHistogram.get() && mOpacity.get() && mTransparency.get() &&
           mRed.get() && mGreen.get() && mBlue.get() && mSelectedObject.get();
}

bool OXWClassificationToolGUI::calculateHistogram()
{
    OXMObject* histogram = mHistogram.get();
    OXMAction* action = histogram->getAction(OXM::Calculate);
    if (action && action->isRunning()) {
        startObjectInfoTimer();
        return false;
    }
    OXWTaskProgress::beginStatusBarCallback();
    const bool ok = histogram->execute(OXM::Calculate, nullptr);
    OXWTaskProgress::endStatusBarCallback();
    if (!ok) {
        action = histogram->getAction(OXM::Calculate);
        const OXMenum code = action ? action->getErrorCode() : OXMenum();
        if (code == OXM::Running || code == OXM::Abort) {
            startObjectInfoTimer();
        }
        return false;
    }
    return true;
}

bool OXWClassificationToolGUI::binnedValueRange(int first, int last, FloatPair& range) const
{
    OXMObject* result = OXMObject::linkedObject(mHistogram.get(), OXM::Result);
    if (!result || !result->getValue(OXMenum(DataRangeName), range) ||
        !(range.second >= range.first)) {
        return false;
    }
    // Integer data with one bin per value count their bins by value.
    return !mInputChannel->isInteger() ||
           !(range.first == float(first) && range.second == float(last));
}

void OXWClassificationToolGUI::updateObjectInfo()
{
    if (!mListening) {
        return;
    }
    if (!updatesEnabled()) {
        mUpdateObjectInfoTimer->start(ObjectInfoDelay);
        return;
    }
    if (!hasClassificationObjects()) {
        releaseRenderObject();
        return;
    }
    IntervalLists lists = readIntervalLists(mMaterial.get());
    if (!calculateHistogram()) {
        return;
    }
    if (!hasClassificationObjects()) {
        releaseRenderObject();
        return;
    }
    int first = 0;
    int last = -1;
    if (!histogramIndexRange(first, last)) {
        return;
    }
    OXMObject* material = mMaterial.get();
    resetStaleVisibleRange(material, lists.borders, first, last);
    writeDefaultClassification(material, lists, first, last);
    rebuildModel(first, last);
    if (mObjectInfo) {
        readIsosurfaceState(material);
    }
    mLUTWorkArea->setHistogramObject(mHistogram.get());
    if (mObjectInfo) {
        buildIntervals(lists.borders, lists.modes, lists.names, first, last);
        readHandles();
        readVisibleRanges(material);
    }
    readRenderingControls();

    // The view read back is the view stored: nothing to write.
    updateScrollBar();
    updateZoomButtons();
    applyZoomToModel();
    mModelValid = true;
    update();
}

OXWClassificationToolGUI::IntervalLists
OXWClassificationToolGUI::readIntervalLists(const OXMObject* material)
{
    IntervalLists lists;
    lists.borders = OXMObject::arrayOf<int>(material, OXM::IntervalIndexList);
    lists.modes = OXMObject::arrayOf<OXMenum>(material, OXM::IntervalModeList);
    lists.names = readNames(material);
    return lists;
}

bool OXWClassificationToolGUI::histogramIndexRange(int& first, int& last) const
{
    OXMObject* result = OXMObject::linkedObject(mHistogram.get(), OXM::Result);
    const auto* values = OXMValueArrayPropertyIF<float>::getInterface(
        result ? result->getProperty(OXM::Histogram) : nullptr);
    return values && values->getArrayIndexRange(first, last);
}

void OXWClassificationToolGUI::resetStaleVisibleRange(OXMObject* material,
                                                      const std::vector<int>& borders, int first,
                                                      int last)
{
    if (!borders.empty() && (borders.front() + 1 != first || borders.back() != last)) {
        OXMLocalClassFlags flags(material, 0, MaterialBookkeepingFlag);
        material->setValue(OXM::VisibleOpacityIndexRange,
                           FloatPair(float(first) - 0.5f, float(last) + 0.5f));
    }
}

void OXWClassificationToolGUI::writeDefaultClassification(OXMObject* material, IntervalLists& lists,
                                                          int first, int last)
{
    if (!lists.borders.empty() && !lists.modes.empty() && !lists.names.empty()) {
        return;
    }
    const WritingScope writing(*this);
    OXMLocalClassFlags flags(material, 0, MaterialBookkeepingFlag);
    lists.borders = {first - 1, last};
    lists.modes = {OXM::Enabled};
    lists.names = {OXWLUTObjectInfo::tr("Interval 1")};
    ::writeIntervalLists(material, lists.borders, lists.modes, lists.names);
}

void OXWClassificationToolGUI::attachModel(OXWLUTObjectInfo* model)
{
    mLUTWorkArea->setObjectInfo(model);
    mAmbientLUTColorBar->setModel(model);
    mDiffuseLUTColorBar->setModel(model);
}

void OXWClassificationToolGUI::rebuildModel(int first, int last)
{
    mModelValid = false;
    attachModel(nullptr);
    mObjectInfo.reset();
    if (last >= first) {
        double nativeMin = first;
        double nativeMax = last;
        int decimals = 0;
        valueAxis(first, last, nativeMin, nativeMax, decimals);
        mObjectInfo = std::make_unique<OXWLUTObjectInfo>(float(first) - 0.5f, float(last) + 0.5f,
                                                         0.0f, 1.0f, last - first + 1,
                                                         float(nativeMin), float(nativeMax));
        mObjectInfo->setValueDecimals(decimals);
        mObjectInfo->setOpacityDecimals(4);
    }
    attachModel(mObjectInfo.get());
    ++mObjectInfoReadCount;
}

void OXWClassificationToolGUI::valueAxis(int first, int last, double& nativeMin, double& nativeMax,
                                         int& decimals) const
{
    FloatPair binned(0.0f, 0.0f);
    if (mInputChannel && binnedValueRange(first, last, binned)) {
        // Bins whose centres run from the smallest to the largest value.
        const double half = (double(binned.second) - double(binned.first)) /
                            std::max(1.0, double(last - first)) / 2.0;
        nativeMin = double(binned.first) - half;
        nativeMax = double(binned.second) + half;
        decimals = mInputChannel->isInteger() ? 0 : 5;
    } else if (mInputChannel) {
        nativeMin = mInputChannel->intToNative(first);
        nativeMax = mInputChannel->intToNative(last);
        if (mInputChannel->isInteger()) {
            nativeMin -= 0.5;
            nativeMax += 0.5;
        } else {
            const double half = (nativeMax - nativeMin) / double(last - first) / 2.0;
            nativeMin -= half;
            nativeMax += half;
            decimals = 5;
        }
    }
}

void OXWClassificationToolGUI::readIsosurfaceState(const OXMObject* material)
{
    OXMObject* selected = mSelectedObject.get();
    OXMObject* owner = parentOwner(selected);
    OXMObject* plugin = linkedOfSelection(selected, OXM::RenderPlugin);
    const OXMMetaClass* meta = plugin ? plugin->getMetaClass() : nullptr;
    mLUTWorkArea->setIsosurfaceShown(meta &&
                                     QByteArray(meta->getClassName()).contains("Isosurface"));

    std::vector<OXMObjectLink> components =
        OXMObject::arrayOf<OXMObjectLink>(selected, OXM::VolumeComponentList);
    if (components.empty()) {
        components = OXMObject::arrayOf<OXMObjectLink>(owner, OXM::VolumeComponentList);
    }
    OXMenum componentMode = OXM::Unknown;
    selected->getValue(OXM::VolumeComponentMode, componentMode);
    if (componentMode == OXM::Unknown && owner) {
        owner->getValue(OXM::VolumeComponentMode, componentMode);
    }
    mLUTWorkArea->setIsosurfaceActive(!(components.size() >= 2 && componentMode != OXM::Disabled));

    const std::vector<float> iso = OXMObject::arrayOf<float>(material, OXM::IsosurfaceValueList);
    if (!iso.empty()) {
        const double native =
            mInputChannel ? mInputChannel->floatToNative(double(iso.front())) : iso.front();
        mObjectInfo->setIsosurface(mObjectInfo->positionFromCalibrated(float(native)));
    }
}

void OXWClassificationToolGUI::readVisibleRanges(const OXMObject* material)
{
    FloatPair greyRange(0.0f, 0.0f);
    FloatPair opacityRange(0.0f, 1.0f);
    material->getValue(OXM::VisibleOpacityIndexRange, greyRange);
    material->getValue(OXM::VisibleOpacityValueRange, opacityRange);
    if (greyRange.first >= greyRange.second) {
        return;
    }
    OXWLUTObjectInfo& model = *mObjectInfo;
    const float tA = model.snapDownToCell(model.positionFromGrey(greyRange.first));
    const float tB = model.snapUpToCell(model.positionFromGrey(greyRange.second));
    const float oA = model.positionFromOpacity(opacityRange.first);
    const float oB = model.positionFromOpacity(opacityRange.second);
    model.setVisibleGreyRange(tA, tB);
    model.setVisibleOpacityRange(oA, oB);
    if (oB > oA) {
        model.setVerticalZoom(1.0f / (oB - oA));
    }
    if (tB > tA) {
        mZoom = 1.0f / (tB - tA);
    }
    mScroll = std::floor(tA * 100.0f + 0.5f);
}

void OXWClassificationToolGUI::buildIntervals(const std::vector<int>& borders,
                                              const std::vector<OXMenum>& modes,
                                              const std::vector<QString>& names, int first,
                                              int last)
{
    OXWLUTObjectInfo& model = *mObjectInfo;
    for (size_t i = 1; i + 1 < borders.size(); ++i) {
        const int border = borders[i];
        if (first <= border && border < last) {
            model.newInterval(model.positionFromGrey(float(border) + 0.5f), true);
        }
    }
    for (size_t i = 0; i < modes.size(); ++i) {
        OXWLUTIntervalInfo* interval = model.interval(int(i));
        if (!interval) {
            continue;
        }
        if (i < names.size()) {
            interval->setName(names[i]);
        }
        interval->setEnabled(modes[i] == OXM::Enabled);
    }
}

namespace {
// The interval that holds position x: the first whose range contains it. The intervals tile
// the axis in ascending order, so the search starts at the hint (the interval of the previous
// position) and falls back to a binary search.
OXWLUTIntervalInfo* intervalFor(const OXWLUTObjectInfo& model, float x, int& hint)
{
    const int count = model.intervalCount();
    if (hint >= 0 && hint < count) {
        const OXWLUTIntervalInfo* at = model.interval(hint);
        const OXWLUTIntervalInfo* before = hint > 0 ? model.interval(hint - 1) : nullptr;
        if (at->from() <= x && x <= at->to() && !(before && x <= before->to())) {
            return model.interval(hint);
        }
    }
    int lo = 0;
    int hi = count;
    while (lo < hi) {
        const int mid = (lo + hi) / 2;
        if (model.interval(mid)->to() < x) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    if (lo < count && model.interval(lo)->from() <= x && x <= model.interval(lo)->to()) {
        hint = lo;
        return model.interval(lo);
    }
    return model.intervalAt(x);
}
} // namespace

namespace {

using Info = OXWLUTIntervalInfo;

// The host's four handle lists as readHandles() reads them.
struct HandleSource
{
    int channel;
    bool colour;
    std::vector<OXMVector2<float>> list;
    std::vector<float> positions; // model positions of the list's x, in list order
    bool ascending = true;
};

// A part of the work: the intervals [firstInterval, endInterval) and, of each list, the handles
// [begin, end) whose cells lie in them.
struct HandleShare
{
    int firstInterval = 0;
    int endInterval = 0;
    std::array<std::pair<std::size_t, std::size_t>, 4> span;
};

float handleValue(const OXWLUTObjectInfo& model, const HandleSource& source, float y)
{
    return source.colour ? clampColour(y * 256.0f) : model.positionFromOpacity(y);
}

// Every host handle lands in the interval that holds its cell centre. A red handle also puts
// zeros into green and blue; green and blue handles put zeros only where the other colour
// channels have no handle yet. Commits wait for the end (insertHandle works on the fitted
// curve alone), which keeps the pass linear.
void readListHandles(const OXWLUTObjectInfo& model, const std::array<HandleSource, 4>& sources,
                     const HandleShare& share)
{
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const HandleSource& source = sources[s];
        if (source.list.size() <= 1) {
            continue;
        }
        int hint = share.firstInterval;
        for (std::size_t j = share.span[s].first; j < share.span[s].second; ++j) {
            const float p = model.snapToCellCentre(source.positions[j]);
            Info* interval = intervalFor(model, p, hint);
            if (!interval) {
                continue;
            }
            interval->insertHandle(source.channel, p, handleValue(model, source, source.list[j].y),
                                   false);
            if (source.channel == Info::RedChannel) {
                interval->insertHandle(Info::GreenChannel, p, 0.0f, false);
                interval->insertHandle(Info::BlueChannel, p, 0.0f, false);
            } else if (source.colour) {
                for (int other : {Info::RedChannel, Info::GreenChannel, Info::BlueChannel}) {
                    if (other != source.channel && !interval->hasHandleAt(other, p)) {
                        interval->insertHandle(other, p, 0.0f, false);
                    }
                }
            }
        }
    }
}

// The host curve's value at a position: a handle for each host segment that spans it.
void insertCurveAt(const OXWLUTObjectInfo& model, const HandleSource& source, Info* interval,
                   float position)
{
    const auto& list = source.list;
    const auto& positions = source.positions;
    std::size_t j = 0;
    std::size_t end = list.size() - 1;
    if (source.ascending) {
        // Pairs with x0' <= position <= x1' lie between the first x1' >= position and the
        // last x0' <= position.
        const auto firstRight = std::lower_bound(positions.begin() + 1, positions.end(), position);
        j = std::size_t(firstRight - positions.begin()) - 1;
        const auto lastLeft = std::upper_bound(positions.begin(), positions.end() - 1, position);
        end = std::size_t(lastLeft - positions.begin());
    }
    for (; j < end; ++j) {
        const float x0 = positions[j];
        const float x1 = positions[j + 1];
        if (!(x0 <= position && position <= x1)) {
            continue;
        }
        float y0 = list[j].y;
        float y1 = list[j + 1].y;
        if (!source.colour) {
            y0 = model.positionFromOpacity(y0);
            y1 = model.positionFromOpacity(y1);
        }
        float y = x0 >= x1 ? y0 : y0 + (position - x0) / (x1 - x0) * (y1 - y0);
        if (source.colour) {
            y = clampColour(y * 256.0f);
        }
        interval->insertHandle(source.channel, position, y, false);
    }
}

// Both ends of every interval of the share follow the host's curve.
void readIntervalEnds(const OXWLUTObjectInfo& model, const std::array<HandleSource, 4>& sources,
                      const HandleShare& share)
{
    const float half = model.greyStep() / 2.0f;
    for (const HandleSource& source : sources) {
        if (source.list.size() < 2) {
            continue;
        }
        for (int i = share.firstInterval; i < share.endInterval; ++i) {
            Info* interval = model.interval(i);
            insertCurveAt(model, source, interval, model.snapToCellCentre(interval->from() + half));
            insertCurveAt(model, source, interval, model.snapToCellCentre(interval->to() - half));
        }
    }
}

// The whole work in one share, or in two (the lower and the upper half of the intervals, each
// on its own core) when the lists are long and ascending: a handle's interval follows from its
// position, and the two halves touch no interval in common.
std::vector<HandleShare> shareHandles(const OXWLUTObjectInfo& model,
                                      const std::array<HandleSource, 4>& sources)
{
    HandleShare whole;
    whole.endInterval = model.intervalCount();
    std::size_t handles = 0;
    bool ascending = true;
    for (std::size_t s = 0; s < sources.size(); ++s) {
        whole.span[s] = {0, sources[s].list.size()};
        handles += sources[s].list.size();
        ascending = ascending && sources[s].ascending;
    }
    constexpr std::size_t MinimumToShare = 20000;
    const int intervals = model.intervalCount();
    if (!ascending || intervals < 2 || handles < MinimumToShare ||
        std::thread::hardware_concurrency() < 2) {
        return {whole};
    }
    HandleShare lower = whole;
    HandleShare upper = whole;
    lower.endInterval = upper.firstInterval = intervals / 2;
    const float border = model.interval(lower.endInterval - 1)->to();
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const auto& positions = sources[s].positions;
        const auto split = std::partition_point(positions.begin(), positions.end(), [&](float x) {
            return model.snapToCellCentre(x) <= border;
        });
        lower.span[s].second = upper.span[s].first = std::size_t(split - positions.begin());
    }
    return {lower, upper};
}

} // namespace

void OXWClassificationToolGUI::readHandles()
{
    OXWLUTObjectInfo& model = *mObjectInfo;
    std::array<HandleSource, 4> sources = {HandleSource{Info::OpacityChannel, false, {}, {}},
                                           HandleSource{Info::RedChannel, true, {}, {}},
                                           HandleSource{Info::GreenChannel, true, {}, {}},
                                           HandleSource{Info::BlueChannel, true, {}, {}}};
    OXMObject* objects[4] = {mOpacity.get(), mRed.get(), mGreen.get(), mBlue.get()};
    for (std::size_t s = 0; s < sources.size(); ++s) {
        HandleSource& source = sources[s];
        source.list = OXMObject::arrayOf<Vector>(objects[s], OXM::LookupTableHandleList);
        source.positions.resize(source.list.size());
        for (std::size_t j = 0; j < source.list.size(); ++j) {
            source.positions[j] = model.positionFromGrey(source.list[j].x);
            source.ascending =
                source.ascending && (j == 0 || source.positions[j - 1] <= source.positions[j]);
        }
    }
    const std::vector<HandleShare> shares = shareHandles(model, sources);
    const auto read = [&](const HandleShare& share) {
        readListHandles(model, sources, share);
        readIntervalEnds(model, sources, share);
    };
    std::vector<std::thread> helpers;
    for (std::size_t k = 1; k < shares.size(); ++k) {
        helpers.emplace_back(read, shares[k]);
    }
    read(shares.front());
    for (std::thread& helper : helpers) {
        helper.join();
    }
    for (int i = 0; i < model.intervalCount(); ++i) {
        model.interval(i)->commitChannel(OXWLUTIntervalInfo::AllChannels);
    }
}

// --- rendering controls ----------------------------------------------------------------------

void OXWClassificationToolGUI::readRenderingControls()
{
    if (!mRenderMethodTable) {
        return;
    }
    OXWRenderMethodTable& table = *mRenderMethodTable;
    OXMObject* volume = table.mVolume.get();
    OXMObject* plugin = table.mRenderPlugin.get();
    OXMObject* settings = table.mRenderSettings.get();
    readOversampling(plugin, settings);
    OXMenum shading = OXM::Unknown;
    if (plugin && settings && !plugin->getValue(OXMenum(ShadingModelName), shading)) {
        settings->getValue(OXM::RenderingMode, shading);
    }
    readRenderMethod(plugin, shading);

    const bool isosurface = plugin && plugin->isOfType("OXMRaytracing::Isosurface::RenderPlugin");
    OXWBlockSignalsScope blockHidden(mHiddenSurfaceRemovalCheckBox);
    OXWBlockSignalsScope blockInverted(mSurfaceInvertedCheckBox);
    OXWBlockSignalsScope blockGradient(mGradientNormalizationCheckBox);
    OXWBlockSignalsScope blockCalibration(mWorkAreaUseCalibrationButton);
    readSurfaceSwitches(isosurface ? settings : nullptr);
    OXMenum normalization = OXM::False;
    const bool hasNormalization = shading == OXM::Phong && volume &&
                                  volume->getValue(OXM::GradientNormalization, normalization);
    mGradientNormalizationCheckBox->setChecked(normalization == OXM::True);
    mGradientNormalizationCheckBox->setEnabled(hasNormalization);
    OXMenum mode = OXM::Unknown;
    const bool calibrated =
        isosurface && volume &&
        OXMObject::arrayOf<OXMObjectLink>(volume, OXM::VolumeComponentList).size() >= 2 &&
        volume->getValue(OXM::VolumeComponentMode, mode);
    if (calibrated) {
        mWorkAreaUseCalibrationButton->setIcon(OXWApplication::getMiniIconSet(
            mode == OXM::True ? "object_calibrate" : "object_uncalibrate"));
    }
    mWorkAreaUseCalibrationButton->setChecked(calibrated && mode == OXM::True);
    mWorkAreaUseCalibrationButton->setEnabled(calibrated);
}

void OXWClassificationToolGUI::readOversampling(const OXMObject* plugin, const OXMObject* settings)
{
    if (!plugin || !settings) {
        mOversamplingSpinBox->setEnabled(false);
        return;
    }
    float distance = 1.0f;
    if (plugin->getValue(OXM::SamplingDistance, distance) ||
        settings->getValue(OXM::SamplingDistance, distance)) {
        mOversamplingSpinBox->setEnabled(true);
        OXWBlockSignalsScope block(mOversamplingSpinBox);
        if (distance > 0.0f) {
            mOversamplingSpinBox->setValue(1.0 / double(distance));
        }
    }
}

void OXWClassificationToolGUI::readRenderMethod(const OXMObject* plugin, OXMenum shading)
{
    if (!plugin) {
        mRenderMethodComboBox->clear();
        mRenderMethodComboBox->addItem(tr("--"));
        mRenderMethodGroupBox->setEnabled(false);
        return;
    }
    mRenderMethodGroupBox->setEnabled(true);
    const OXMMetaClass* meta = plugin->getMetaClass();
    mRenderMethodTable->fillComboBox(
        mRenderMethodComboBox, mRenderMethodTable->displayNameFor(
                                   QString::fromLatin1(meta ? meta->getClassName() : ""), shading));
}

void OXWClassificationToolGUI::readSurfaceSwitches(const OXMObject* isosurfaceSettings)
{
    OXMenum inverted = OXM::False;
    int limit = 0;
    if (isosurfaceSettings) {
        isosurfaceSettings->getValue(OXMenum(SurfaceInvertedName), inverted);
        isosurfaceSettings->getValue(OXMenum(ShadingCountLimitName), limit);
    }
    mSurfaceInvertedCheckBox->setChecked(inverted == OXM::True);
    mHiddenSurfaceRemovalCheckBox->setChecked(limit == 1);
    mSurfaceInvertedCheckBox->setEnabled(isosurfaceSettings != nullptr);
    mHiddenSurfaceRemovalCheckBox->setEnabled(isosurfaceSettings != nullptr);
}

// --- histogram -------------------------------------------------------------------------------

void OXWClassificationToolGUI::updateAnalyzer()
{
    OXMObject* histogram = mHistogram.get();
    if (!histogram) {
        return;
    }
    OXMenum code(-1);
    const bool needed = histogram->checkExecute(OXM::Calculate, nullptr, &code);
    if (!needed || code == OXM::NoError) {
        updateObjectInfo();
    }
}

void OXWClassificationToolGUI::saveHistogram()
{
    if (!mInputChannel) {
        return;
    }
    const QStringList filters{tr("CSV files") + QStringLiteral(" (*.csv *.CSV)")};
    const QString start = OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"));
    const QString fileName =
        OXWFileDialog::getSaveFileName(OXM::Scene, start, filters, OXWMainWindow::getInstance(),
                                       nullptr, tr("Save csv as..."), nullptr, true, true);
    // A cancelled dialog is the user changing their mind, not a failure to report.
    if (fileName.isEmpty()) {
        return;
    }
    OXMObject* result = OXMObject::linkedObject(mHistogram.get(), OXM::Result);
    const std::vector<float> counts = OXMObject::arrayOf<float>(result, OXM::Histogram);
    FloatPair range(0.0f, 0.0f);
    if (result) {
        result->getValue(OXMenum(DataRangeName), range);
    }
    const double lo = mInputChannel->floatToNative(double(range.first));
    const double hi = mInputChannel->floatToNative(double(range.second));
    const size_t n = counts.size();
    const double step = n > 1 ? (hi - lo) / double(n - 1) : 0.0;
    std::vector<Vector> points;
    points.reserve(n);
    for (size_t i = 0; i < n; ++i) {
        points.emplace_back(float(lo + double(i) * step), counts[i]);
    }
    if (!OXWExportCSVUtilities::exportPointsAsCSV(fileName, points.data(), int(points.size()))) {
        QMessageBox::warning(OXWMainWindow::getInstance(), tr("Save Histogram"),
                             tr("Unable to save %1").arg(fileName), QMessageBox::Ok);
    }
}

// --- rendering controls ----------------------------------------------------------------------

void OXWClassificationToolGUI::renderMethodSlot()
{
    if (!mRenderMethodTable) {
        return;
    }
    OXWRenderMethodTable& table = *mRenderMethodTable;
    OXMObject* volume = table.mVolume.get();
    OXMObject* oldPlugin = table.mRenderPlugin.get();
    OXMObject* oldSettings = table.mRenderSettings.get();
    if (!volume || !oldPlugin || !oldSettings) {
        return;
    }
    const QString actionName = tr("Change rendering method");
    OXWApplication::UserActionScope action(actionName);
    const QString text = mRenderMethodComboBox->currentText();
    const OXMenum shading = table.shadingModelFor(text);
    if (!switchRenderPlugin(table.classNameFor(text), actionName)) {
        return;
    }
    OXWApplication::UserActionScope shadingStep(tr("Change shading model"));
    OXMObject* settings = table.mRenderSettings.get();
    if (settings && settings->isOfType("OXMOxm2RenderSettings")) {
        settings->setValue(OXM::RenderingMode, shading);
    } else if (OXMObject* plugin = table.mRenderPlugin.get()) {
        plugin->setValue(OXMenum(ShadingModelName), shading);
    }
}

bool OXWClassificationToolGUI::switchRenderPlugin(const QString& className,
                                                  const QString& actionName)
{
    OXWRenderMethodTable& table = *mRenderMethodTable;
    OXMObject* volume = table.mVolume.get();
    OXMObject* oldPlugin = table.mRenderPlugin.get();
    const OXMMetaClass* oldMeta = oldPlugin->getMetaClass();
    if (className == QString::fromLatin1(oldMeta ? oldMeta->getClassName() : "")) {
        return volume->setValue(OXM::RenderPlugin, OXMObjectLink(oldPlugin));
    }
    const QByteArray name = className.toLatin1();
    OXMObjectRefPtr created(name.constData());
    OXMObject* plugin = created.get();
    if (!plugin) {
        return false;
    }
    plugin->prepareRoles();
    plugin->setScope(OXM::Global);
    OXWApplication::UserActionScope nested(actionName);
    OXMObject* settings = carryRenderSettingsOver(plugin, oldPlugin, volume);
    // The volume's link takes the reference below; until then the holder keeps it.
    table.mRenderPlugin = plugin;
    table.mRenderSettings = settings;
    return volume->setValue(OXM::RenderPlugin, OXMObjectLink(plugin));
}

OXMObject* OXWClassificationToolGUI::carryRenderSettingsOver(OXMObject* plugin,
                                                             OXMObject* oldPlugin,
                                                             OXMObject* volume)
{
    OXWRenderMethodTable& table = *mRenderMethodTable;
    OXMObject* oldSettings = table.mRenderSettings.get();
    OXMObject* settings = table.mROI.get() ? table.mROI.get() : volume;
    if (plugin->isOfType("OXMOxm2RenderPlugin")) {
        // The camera ray tracer keeps shading and sampling in the camera's settings.
        settings = OXWRenderMethodTable::findRenderSettings();
        if (settings) {
            OXMenum oldShading = OXM::Unknown;
            if (oldPlugin->getValue(OXMenum(ShadingModelName), oldShading)) {
                settings->setValue(OXM::RenderingMode, oldShading);
            }
            settings->copyProperty(oldPlugin, OXM::SamplingDistance);
        }
    } else if (oldSettings->isOfType("OXMOxm2RenderSettings")) {
        OXMenum oldShading = OXM::Unknown;
        if (oldSettings->getValue(OXM::RenderingMode, oldShading)) {
            plugin->setValue(OXMenum(ShadingModelName), oldShading);
        }
        plugin->copyProperty(oldSettings, OXM::SamplingDistance);
    } else {
        plugin->copyProperty(oldPlugin, OXMenum(ShadingModelName));
        plugin->copyProperty(oldPlugin, OXM::SamplingDistance);
    }
    return settings;
}

bool OXWClassificationToolGUI::renderingTargets(OXMObject*& settings, OXMObject*& volume) const
{
    const OXWRenderMethodTable* table = mRenderMethodTable.get();
    settings = table ? table->mRenderSettings.get() : nullptr;
    volume = table ? table->mVolume.get() : nullptr;
    return table && table->mRenderPlugin.get() && settings;
}

void OXWClassificationToolGUI::oversamplingSlot()
{
    OXMObject* settings = nullptr;
    OXMObject* volume = nullptr;
    const double value = mOversamplingSpinBox->value();
    if (!renderingTargets(settings, volume) || !(value > 0.0)) {
        return;
    }
    OXWApplication::UserActionScope action(tr("Change oversampling"));
    const float distance = float(1.0 / value);
    if (!mRenderMethodTable->mRenderPlugin.get()->setValue(OXM::SamplingDistance, distance)) {
        settings->setValue(OXM::SamplingDistance, distance);
    }
}

namespace {
// A check box counts as checked in any state but off.
bool isChecked(const QCheckBox* box)
{
    return box->checkState() != Qt::Unchecked;
}
} // namespace

template <typename T>
void OXWClassificationToolGUI::writeRenderingProperty(bool ofVolume, OXMenum id, const T& value,
                                                      const QString& action)
{
    OXMObject* settings = nullptr;
    OXMObject* volume = nullptr;
    OXMObject* target =
        renderingTargets(settings, volume) ? (ofVolume ? volume : settings) : nullptr;
    if (target) {
        OXWApplication::UserActionScope scope(action);
        target->setValue(id, value);
    }
}

void OXWClassificationToolGUI::renderInnerSurfacesSlot()
{
    writeRenderingProperty(false, OXMenum(ShadingCountLimitName),
                           isChecked(mHiddenSurfaceRemovalCheckBox) ? 1 : 0,
                           tr("Remove inner surfaces"));
}

void OXWClassificationToolGUI::surfaceInvertedSlot()
{
    writeRenderingProperty(false, OXMenum(SurfaceInvertedName),
                           isChecked(mSurfaceInvertedCheckBox) ? OXM::True : OXM::False,
                           tr("Swap inner/outer areas"));
}

void OXWClassificationToolGUI::gradientNormalizationSlot()
{
    writeRenderingProperty(true, OXM::GradientNormalization,
                           isChecked(mGradientNormalizationCheckBox) ? OXM::True : OXM::False,
                           tr("Normalize gradients"));
}

void OXWClassificationToolGUI::volumeComponentModeSlot()
{
    writeRenderingProperty(true, OXM::VolumeComponentMode,
                           mWorkAreaUseCalibrationButton->isChecked() ? OXM::True : OXM::False,
                           tr("Use calibration"));
}

// --- extraction of grey-value intervals ------------------------------------------------------

namespace {
// The application's scene manager; null, reported, when its link names anything else.
OXWSceneManager* sceneManager()
{
    OXMObject* object = OXMObject::linkedObject(application(), OXM::SceneManager);
    auto* manager = dynamic_cast<OXWSceneManager*>(object);
    if (!manager) {
        OXMError::emitError(object, OXM::InvalidOperation,
                            OXWClassificationToolGUI::tr("The scene manager is missing."));
    }
    return manager;
}

// The name of object's OXM::Name, empty when it has none.
QString nameOf(const OXMObject* object)
{
    const char* name = nullptr;
    return object && object->getValue(OXM::Name, name) && name ? QString::fromLocal8Bit(name)
                                                               : QString();
}

// A copy of the placement of the volume at the path for a volume cut out of it: centred on the
// new volume's bounding box, its transform locked when the source's is. Null on failure.
OXMObjectPtr placementFor(const OXMObjectPath& volumePath, const OXMObject* volume)
{
    const OXMObject* source = volumePath.getAuxLink(-1);
    OXMObjectPtr copy(source ? dynamic_cast<OXMObject*>(OXMMetaClass::clone(source)) : nullptr);
    std::pair<OXMVector3<float>, OXMVector3<float>> box;
    if (!copy || !copy->prepareRoles() || !volume->getValue(OXM::BoundingBox, box)) {
        return OXMObjectPtr();
    }
    const OXMVector3<float>& lo = box.first;
    const OXMVector3<float>& hi = box.second;
    if (!(lo.x < hi.x && lo.y < hi.y && lo.z < hi.z)) {
        return OXMObjectPtr();
    }
    copy->setValue(OXM::Origin, (lo + hi) / 2.0f);
    const OXMProperty* transform = source->getProperty(OXM::TransformMatrix);
    if (OXMProperty* copied = copy->getProperty(OXM::TransformMatrix);
        copied && transform && transform->isLocked()) {
        copied->lock();
    }
    return copy;
}
} // namespace

bool OXWClassificationToolGUI::greyvalueInterval(int index, OXMInterval& interval) const
{
    const OXMObject* material = mMaterial.get();
    const auto* borders = OXMValueArrayPropertyIF<int>::getInterface(
        material ? material->getProperty(OXM::IntervalIndexList) : nullptr);
    int first = 0;
    int last = -1;
    int pair[2] = {0, 0};
    if (!borders || !borders->getArrayIndexRange(first, last) || index < first ||
        index + 1 > last || !borders->getArrayItems(index, index + 1, pair)) {
        return false;
    }
    interval = OXMInterval(pair[0], pair[1]);
    return true;
}

QString OXWClassificationToolGUI::extractedVolumeName(int index, const OXMObjectPath& roiPath,
                                                      const OXMObjectPath& volumePath) const
{
    const std::vector<QString> names = readNames(mMaterial.get());
    QString name = index < int(names.size()) ? names[std::size_t(index)] : QString();
    for (const OXMObjectPath* path : {&roiPath, &volumePath}) {
        const QString of = path->isEmpty() ? QString() : nameOf(path->getLink(-1));
        if (!of.isEmpty()) {
            name += tr(" of ") + of;
        }
    }
    return name;
}

void OXWClassificationToolGUI::createSegmentFromGreyvalueIntervalSlot(int index)
{
    OXWApplication::UserActionScope action(tr("create ROI from gray value interval"));
    const OXMObjectPath path = mSelectionPath;
    OXMInterval interval;
    if (!mInputChannel || !greyvalueInterval(index, interval)) {
        return;
    }
    const OXMObjectPtr roi(OXWRoiAndVolumeExtractor::createROIFromGreyvalueInterval(
        path, mInputChannel->getID(), interval));
    OXWSceneManager* manager = roi ? sceneManager() : nullptr;
    if (!manager) {
        return;
    }
    OXMObjectLink link(roi.get());
    link.setPropertyID(OXM::RegionOfInterestList);
    if (manager->addAndSelectObject(link, path)) {
        roi->execute(OXM::Init);
    }
}

void OXWClassificationToolGUI::extractGreyvalueIntervalSlot(int index)
{
    OXWApplication::UserActionScope action(tr("extract gray value interval"));
    const OXMObjectPath path = mSelectionPath;
    const OXMObject* last = path.getLink(-1);
    OXMObjectPath volumePath = path;
    OXMObjectPath roiPath;
    if (last && last->isOfType("OXMRegionOfInterest")) {
        roiPath = path;
        volumePath.truncate(0, -2);
    } else if (!last || !last->isOfType("OXMVolumeRenderObject")) {
        return;
    }
    OXMInterval interval;
    if (!mInputChannel || !greyvalueInterval(index, interval)) {
        return;
    }
    const OXMObjectPtr volume(
        OXWRoiAndVolumeExtractor::createVolumeRenderObjectFromGreyvalueInterval(
            path, mInputChannel->getID(), interval));
    if (!volume) {
        return;
    }
    const QByteArray name = extractedVolumeName(index, roiPath, volumePath).toLocal8Bit();
    volume->setValue(OXM::Name, name.constData());
    const OXMObjectPtr placement = placementFor(volumePath, volume.get());
    OXWSceneManager* manager = placement ? sceneManager() : nullptr;
    if (!manager) {
        return;
    }
    OXMObjectLink link(volume.get(), placement.get());
    link.setPropertyID(OXM::VolumeRenderObjectList);
    OXMObjectPath parent = volumePath;
    parent.truncate(0, -2);
    manager->addAndSelectObject(link, parent);
}
