#pragma once

#include "OXWClassificationTable.h"
#include "OXWObjectWatch.h"
#include "OXWRenderStyle.h"
#include "OXWVolumePlacement.h"

#include <OXMObjectWeakPtr.h>

#include <QImage>
#include <QString>
#include <QTimer>
#include <QVTKOpenGLNativeWidget.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

class OXWVolumePipeline;
class vtkCamera;
class vtkGenericOpenGLRenderWindow;
class vtkLight;
class vtkRenderer;
class vtkTextActor;

// The 3D view: one volume with its regions of interest, each rendered with its own
// classification (OXWClassificationTable) in the way its render plug-in says (OXWRenderStyle),
// through VTK (OXWVolumePipeline): a region's voxels are drawn with the region's classification,
// the volume's other voxels with the volume's. Selecting a region shows its volume so. The
// volume lies in the scene as its placement says (OXWVolumePlacement); the headlight's highlight
// has the volume's specular colour (a region's own specular colour is not shown). The mouse rotates
// (left), pans (middle, or Shift + left) and zooms (right, wheel); "r" or resetCamera() shows the
// whole object again.
//
// Following the scene: the view listens to the object, everything its table and style are
// read from and the scene's camera. Any message schedules one update on a zero-delay
// single-shot timer, so a burst of writes in one event-loop turn renders once.
//
// Quality: while the user drags in the view, or while a user action of the application is
// open (a handle drag in the classification tool), frames are rendered at interactive
// quality; RefineDelay ms after the last of them, once no action is open, the picture is
// rendered again at full quality.
//
// Renderer: on a software OpenGL (Mesa's llvmpipe or softpipe) the CPU ray caster, on
// graphics hardware the GPU ray caster; the environment variable OXW_VOLUME_RENDERER
// ("software" or "hardware") overrides the choice.
//
// Camera: the view shows the scene's first camera ("SceneCameraList"): it applies the
// camera's view when the camera changes, and writes it (outside any user action: view state)
// after the user moved it and when it places the camera around an object: one whose camera has
// no view yet, or a newly shown object of other bounds than the camera was placed around.
class OXWVolumeView : public QVTKOpenGLNativeWidget
{
    Q_OBJECT

public:
    static constexpr int RefineDelay = 150;

    explicit OXWVolumeView(QWidget* parent = nullptr);
    ~OXWVolumeView() override;

    // Shows the object's volume (the object or a region's volume) with its regions; null shows
    // the empty state.
    void setObject(OXMObject* object);
    OXMObject* getObject() const { return mObject.get(); }

    // Whether a volume is drawn; else getEmptyText() says why not.
    bool isShowing() const;
    QString getEmptyText() const { return mEmptyText; }
    const OXWClassificationTable& getClassification() const { return mTable; }
    const OXWRenderStyle& getStyle() const { return mStyle; }
    OXWVolumePipeline& pipeline() const { return *mPipeline; }
    // The pipelines of the volume's regions of interest, in the order of its list.
    int getRegionCount() const { return int(mRegions.size()); }
    OXWVolumePipeline& regionPipeline(int index) const
    {
        return *mRegions[std::size_t(index)].pipeline;
    }
    vtkRenderer* renderer() const { return mRenderer; }
    bool usesHardwareRayCasting() const;
    bool isUpdatePending() const { return mUpdateTimer.isActive(); }
    bool isRefinePending() const { return mRefineTimer.isActive(); }
    // Frames rendered since construction.
    int getRenderCount() const { return mRenderCount; }

    // The picture at the widget's size, after any pending update.
    QImage grabImage();

    QSize sizeHint() const override;

public slots:
    // Re-reads the object and renders now (a pending update is dropped).
    void updateNow();
    // Places the camera around the object and writes it to the scene's camera.
    void resetCamera();

signals:
    // After every frame; interactive tells its quality.
    void rendered(bool interactive);

protected:
    void initializeGL() override;

private:
    struct Region
    {
        const OXMObject* object = nullptr; // while the view updates
        OXWClassificationTable table;
        OXWRenderStyle style;
        std::unique_ptr<OXWVolumePipeline> pipeline;
    };

    void scheduleUpdate();
    // Reads the regions of the volume (their tables, styles and placement); the objects read
    // are appended to sources. Returns the regions that are drawn.
    std::vector<const OXMObject*> readRegions(const OXMObject* volume,
                                              std::vector<OXMObject*>& sources);
    void forEachPipeline(const std::function<void(OXWVolumePipeline&)>& apply);
    void refine();
    void render(bool interactive);
    bool isInteractionGoing() const;
    void startInteraction();
    void endInteraction();
    OXMObject* findCamera() const;
    void applyCamera();
    void writeCamera();
    void showEmptyText();

    OXWObjectWatch mWatch;
    OXWObjectWatch mCameraWatch;
    OXMObjectWeakPtr mObject;
    OXMObjectWeakPtr mCamera;
    OXWClassificationTable mTable;
    OXWRenderStyle mStyle;
    QString mEmptyText;
    vtkGenericOpenGLRenderWindow* mRenderWindow = nullptr;
    vtkRenderer* mRenderer = nullptr;
    vtkTextActor* mText = nullptr;
    std::unique_ptr<OXWVolumePipeline> mPipeline;
    std::vector<Region> mRegions;
    OXWVolumePlacement::Matrix mPlacement = OXWVolumePlacement::identity();
    vtkLight* mLight = nullptr;
    QTimer mUpdateTimer;
    QTimer mRefineTimer;
    QTimer mCameraTimer;
    int mRenderCount = 0;
    bool mInteracting = false;
    bool mWritingCamera = false;
    bool mCameraPlaced = false;
    // The bounds of what the camera was last placed around.
    std::array<double, 6> mFramedBounds = {{0, 0, 0, 0, 0, 0}};
};
