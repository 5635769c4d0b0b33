#pragma once

#include "OXWClassificationToolGUIUI.h"

#include <OXMIOC.h>
#include <OXMInterval.h>
#include <OXMObjectIOCPtr.h>
#include <OXMObjectPath.h>
#include <OXMRGBf.h>
#include <OXMTypeInfo.h>
#include <OXMVector2.h>

#include <QMouseEvent>
#include <QPointer>

#include <array>
#include <memory>
#include <utility>
#include <vector>

class OXMObject;
class OXWLUTObjectInfo;
class OXWRenderMethodTable;
class QTimer;

// The classification tool: the panel that binds the classification model and its editors to
// the volume or region of interest selected in the scene tree.
//
// The panel follows the application's selection lists, finds the selected object's material,
// sample grid, histogram and transfer channels, and rebuilds its model from them
// (updateObjectInfo). Every edit the editors report is written back to the host inside one
// named user action (one undo step); the listening flag is off while the panel writes, so its
// own writes do not schedule a re-read. Every change the host makes to those objects (an
// undo, a preset, another view) comes back as a change message and starts a 30 ms single-shot
// timer, so a burst of messages causes one re-read.
//
// The panel owns the model; the work area and both colour bars hold non-owning pointers to
// it, which the panel sets and clears. The panel is installed as event filter on the editors
// and holds their mouse moves back, delivering only the latest one every 50 ms and never
// letting a press overtake a held move.
class OXWClassificationToolGUI : public OXWClassificationToolGUIUI, public OXMIOC
{
    Q_OBJECT

public:
    explicit OXWClassificationToolGUI(QWidget* parent = nullptr, const char* name = nullptr);
    ~OXWClassificationToolGUI() override;

    // Binds the object held as selected object; false when it can't be classified (no
    // material or no sample grid).
    bool bindRenderObject();
    // Lets go of everything bound; the model stays.
    void releaseRenderObject();
    void startObjectInfoTimer();
    void startAnalyzerTimer();
    void updateScrollBar();
    void updateZoomButtons();
    // Shows the zoomed part of the axis in the model and writes it as the material's view.
    void applyZoom();
    // Only shows it: re-reads and selections write nothing.
    void applyZoomToModel();

    void iocCallback(OXMIOC::Message& message) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

    // State, for the viewer and the tests.
    OXWLUTObjectInfo* objectInfo() const { return mObjectInfo.get(); }
    OXMObject* selectedObject() const { return mSelectedObject.get(); }
    OXMObject* materialObject() const { return mMaterial.get(); }
    OXMObject* histogramObject() const { return mHistogram.get(); }
    OXMObject* opacityObject() const { return mOpacity.get(); }
    OXMObject* redObject() const { return mRed.get(); }
    OXMObject* greenObject() const { return mGreen.get(); }
    OXMObject* blueObject() const { return mBlue.get(); }
    OXMObject* intensityObject() const { return mIntensity.get(); }
    OXMObject* rightsObject() const { return mRights.get(); }
    const OXMObjectPath& selectionPath() const { return mSelectionPath; }
    const OXMTypeInfo& dataType() const { return mDataType; }
    const OXMTypeInfo::Channel* inputChannel() const { return mInputChannel; }
    OXWRenderMethodTable* renderMethodTable() const { return mRenderMethodTable.get(); }
    bool isListening() const { return mListening; }
    bool isModelValid() const { return mModelValid; }
    float zoom() const { return mZoom; }
    float scroll() const { return mScroll; }
    bool isDelayedEventPending() const { return mDelayedEventPending; }
    QTimer* updateObjectInfoTimer() const { return mUpdateObjectInfoTimer; }
    QTimer* updateAnalyzerTimer() const { return mUpdateAnalyzerTimer; }
    QTimer* delayedMouseMoveTimer() const { return mDelayedMouseMoveTimer.get(); }
    // How many re-reads rebuilt the model since construction.
    int objectInfoReadCount() const { return mObjectInfoReadCount; }

    static constexpr float ZoomStep = 1.41421354f;
    static constexpr float ZoomLimit = 100.0f;
    static constexpr int ObjectInfoDelay = 30;
    static constexpr int AnalyzerDelay = 30;
    static constexpr int MouseMoveDelay = 50;

public slots:
    void updateOpacity() override;
    void updateVisibleOpacityArea() override;
    void updateColor() override;
    void updateIntervals() override;
    void colorTabChanged() override;
    void updateShininess() override;
    void updateIntensity() override;
    void updateTransparency() override;
    void updateIsosurface() override;
    void setDiffuseShared(bool shared);
    void saveHistogram();

protected slots:
    // The form's texts, then the colour-page labels of the current page.
    void languageChange() override;
    void workAreaZoomPlusSlot();
    void workAreaZoomMinusSlot();
    void workAreaScrollSlot();
    void createSegmentFromGreyvalueIntervalSlot(int index);
    void extractGreyvalueIntervalSlot(int index);
    void colorModeUpdate();
    void updateSpecularColor(const OXMRGBf& rgb);
    void updateObjectInfo();
    void updateAnalyzer();
    void sendDelayedMouseMoveEvent();
    void renderMethodSlot();
    void oversamplingSlot();
    void renderInnerSurfacesSlot();
    void surfaceInvertedSlot();
    void gradientNormalizationSlot();
    void volumeComponentModeSlot();

signals:
    void updateLUTWidgets();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // The steps of the constructor.
    void createTimers();
    void createRenderMethodTable();
    void bindInitialSelection();
    void connectEditors();
    void connectControls();
    void setUpOversamplingSpinBox();
    // The pointers through which the panel listens to the host's objects.
    std::array<OXMObjectIOCPtr*, 15> listeningPointers();

    // What every paint of the panel does first: the enabled state of its parts by the rights
    // and the bound material and renderer, the zoom controls, then updateLUTWidgets().
    void applyEditingState();
    // applyEditingState() in the next turn of the event loop (once for any number of calls),
    // without repainting the panel's other widgets: after an edit only the editors change.
    void scheduleEditingState();
    // The selection of the application's lists: exactly one ROI, else exactly one render
    // object; an empty path when there is none.
    static OXMObjectPath findSelection();
    // Whether the path leads to an object the panel can bind (with volumesOnly: a volume).
    static bool isUsableSelection(const OXMObjectPath& path, bool volumesOnly);
    void followSelection();
    void takeSceneAndRights();
    void relabelColorTabs();

    OXMObject* resolveColorChannel(OXMenum channel) const;
    void updateDiffuseSharedFromObject();
    void readMaterialSpinBoxes();
    void readIntensitySpinBox();
    void readShininessSpinBox();
    void readTransparencySpinBox();
    void readRenderingControls();
    // The steps of renderMethodSlot(): the render plug-in of the chosen class on the volume (a
    // new one, as a nested step, when the class differs), and the shading and sampling it
    // takes over from the one before; false when the volume refuses it.
    bool switchRenderPlugin(const QString& className, const QString& actionName);
    // Returns the object that holds the new plug-in's render settings.
    OXMObject* carryRenderSettingsOver(OXMObject* plugin, OXMObject* oldPlugin, OXMObject* volume);
    // The steps of readRenderingControls().
    void readOversampling(const OXMObject* plugin, const OXMObject* settings);
    void readRenderMethod(const OXMObject* plugin, OXMenum shading);
    // "Remove inner surfaces" and "Swap inner/outer areas" of the isosurface renderer's
    // settings; off and disabled for other renderers (null).
    void readSurfaceSwitches(const OXMObject* isosurfaceSettings);
    // The render settings and the volume; false unless a render plug-in and its settings are
    // bound, which the rendering controls need to write.
    bool renderingTargets(OXMObject*& settings, OXMObject*& volume) const;
    // Writes one property of the render settings, or of the volume, as the named user action;
    // nothing without the rendering objects.
    template <typename T>
    void writeRenderingProperty(bool ofVolume, OXMenum id, const T& value, const QString& action);
    // Writes OXM::Scale of a transfer channel; true when the channel accepted the value.
    bool writeScale(OXMObject* object, float value);
    void abortCalculation();
    // Calculates the histogram when it has to be; true when its result can be read now. While
    // a calculation runs, or after an abort, a re-read is scheduled instead.
    bool calculateHistogram();
    // Whether the selection, its material with the opacity, transparency and colour channels,
    // and a histogram are bound.
    bool hasClassificationObjects() const;
    // Whether the user's rights allow editing the classification.
    bool isEditAllowed() const;
    // The steps of updateObjectInfo().
    struct IntervalLists
    {
        std::vector<int> borders;
        std::vector<OXMenum> modes;
        std::vector<QString> names;
    };
    static IntervalLists readIntervalLists(const OXMObject* material);
    // The index range of the histogram's bins; false without a histogram result.
    bool histogramIndexRange(int& first, int& last) const;
    // Shows the whole range again when the border list no longer fits the histogram.
    void resetStaleVisibleRange(OXMObject* material, const std::vector<int>& borders, int first,
                                int last);
    // One enabled interval over the whole range when a list is missing; written outside undo
    // and as the host's bookkeeping.
    void writeDefaultClassification(OXMObject* material, IntervalLists& lists, int first, int last);
    // Hands the model (or none) to the work area and both colour bars.
    void attachModel(OXWLUTObjectInfo* model);
    // A new model over the bins first..last, with the axis in the data's values.
    void rebuildModel(int first, int last);
    // The data values at the outer edges of the bins first and last, and the decimals to show.
    void valueAxis(int first, int last, double& nativeMin, double& nativeMax, int& decimals) const;
    // Whether the renderer draws an isosurface, whether it can be edited, and its value.
    void readIsosurfaceState(const OXMObject* material);
    // The stored visible grey-value and opacity ranges, as the model's view, zoom and scroll.
    void readVisibleRanges(const OXMObject* material);
    void buildIntervals(const std::vector<int>& borders, const std::vector<OXMenum>& modes,
                        const std::vector<QString>& names, int first, int last);
    // Collects the model's interval lists and writes them into the material.
    void writeIntervalLists(OXMObject* material) const;
    void readHandles();
    // The values of the first and the last bin of the histogram when its bins do not count
    // one value each (floating-point data, integers too wide): its "DataRange".
    bool binnedValueRange(int first, int last, std::pair<float, float>& range) const;
    std::vector<OXMVector2<float>> collectHandles(int channel, float scale) const;
    void writeHandleList(OXMObject* object, const std::vector<OXMVector2<float>>& handles,
                         bool& ok);
    OXMObject* parentOwner(OXMObject* object) const;
    // iocCallback(): one handler per kind of message, in the order of the cases.
    void routeMessage(const OXMIOC::Message& message);
    // A re-read of the classification after the delay, unless the panel is writing.
    void reReadLater();
    void histogramChanged();
    void colourChannelChanged();
    // Intensity, shininess or transparency changed on the host: the spin box reads it again.
    void materialScalarChanged(const OXMObject* sender);
    void renderedVolumeChanged(OXMenum property);
    // The steps of bindRenderObject().
    void bindRenderMethodTable(OXMObject* selected);
    // The object linked by id of the selection, else of the volume that holds it.
    OXMObject* linkedOfSelection(OXMObject* selected, OXMenum id) const;
    // The histogram of the selection (else of its volume) that reads the input channel.
    OXMObject* findHistogram(OXMObject* selected, OXMenum inputChannel) const;
    // The preset handler applies to and saves from the target, with its histogram.
    static void retargetPresetHandler(OXMObject* target, OXMObject* histogram);
    // The colour editors, off for colour (RGB, RGBA) data.
    void enableColourEditing(bool editable);
    // The border pair (b(i), b(i+1)) of interval i of the material; false when there is no
    // such interval.
    bool greyvalueInterval(int index, OXMInterval& interval) const;
    // The name of a volume cut out of interval i: the interval's name, then " of " and the name
    // of the region and of the volume it comes from, each when it has one.
    QString extractedVolumeName(int index, const OXMObjectPath& roiPath,
                                const OXMObjectPath& volumePath) const;

    QTimer* mUpdateObjectInfoTimer = nullptr;
    QTimer* mUpdateAnalyzerTimer = nullptr;
    bool mEditingStatePending = false;
    std::unique_ptr<OXWLUTObjectInfo> mObjectInfo;

    OXMObjectIOCPtr mScene;
    OXMObjectIOCPtr mRights;
    OXMObjectIOCPtr mMaterial;
    OXMObjectIOCPtr mHistogram;
    OXMObjectIOCPtr mSelectedObject;
    OXMObjectIOCPtr mOpacity;
    OXMObjectIOCPtr mShininess;
    OXMObjectIOCPtr mTransparency;
    OXMObjectIOCPtr mRed;
    OXMObjectIOCPtr mGreen;
    OXMObjectIOCPtr mBlue;
    OXMObjectIOCPtr mIntensity;
    OXMObjectIOCPtr mDiffuseRedLink;
    OXMObjectIOCPtr mDiffuseGreenLink;
    OXMObjectIOCPtr mDiffuseBlueLink;
    OXMObjectPath mSelectionPath;
    OXMTypeInfo mDataType;
    const OXMTypeInfo::Channel* mInputChannel = nullptr;

    // Whether a change message of the host is a change to re-read: not while the panel writes.
    bool mListening = true;
    // Writing to the host: the panel does not listen meanwhile, and listens as before after
    // (scopes nest).
    class WritingScope
    {
    public:
        explicit WritingScope(OXWClassificationToolGUI& panel)
            : mPanel(panel), mWasListening(panel.mListening)
        {
            panel.mListening = false;
        }
        ~WritingScope() { mPanel.mListening = mWasListening; }
        WritingScope(const WritingScope&) = delete;
        WritingScope& operator=(const WritingScope&) = delete;

    private:
        OXWClassificationToolGUI& mPanel;
        bool mWasListening;
    };
    bool mModelValid = true;
    float mZoom = 1.0f;
    float mScroll = 0.0f;

    QMouseEvent mDelayedEvent;
    bool mDelayedEventPending = false;
    std::unique_ptr<QTimer> mDelayedMouseMoveTimer;
    bool mSendingDelayedEvent = false;
    QPointer<QObject> mDelayedEventTarget;

    std::unique_ptr<OXWRenderMethodTable> mRenderMethodTable;
    int mObjectInfoReadCount = 0;
};
