#include "OXWVolumeView.h"

#include "OXWVolumePipeline.h"

#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPath.h>
#include <OXMSceneNames.h>
#include <OXMSingleton.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXMVector3.h>
#include <OXWApplication.h>

#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <vtkCamera.h>
#include <vtkGenericOpenGLRenderWindow.h>
#include <vtkInteractorStyleTrackballCamera.h>
#include <vtkLight.h>
#include <vtkNew.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <algorithm>
#include <cstring>

namespace {

// Whether the renderer string names a software OpenGL; the environment can decide instead.
bool softwareRenderer(const char* renderer)
{
    const QByteArray choice = qgetenv("OXW_VOLUME_RENDERER");
    if (choice == "software" || choice == "hardware")
        return choice == "software";
    const QByteArray name = QByteArray(renderer ? renderer : "").toLower();
    return name.isEmpty() || name.contains("llvmpipe") || name.contains("softpipe") ||
           name.contains("software");
}

std::vector<OXMObject*> allLinks(const OXMObject* object, OXMenum list)
{
    auto* p = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        object ? object->getProperty(list) : nullptr);
    std::vector<OXMObject*> objects;
    for (const OXMObjectLink& link : p ? p->getArray() : std::vector<OXMObjectLink>())
        if (link.getLink())
            objects.push_back(link.getLink());
    return objects;
}

OXMObject* firstLink(const OXMObject* object, OXMenum list)
{
    const std::vector<OXMObject*> objects = allLinks(object, list);
    return objects.empty() ? nullptr : objects.front();
}

OXMVector3<float> toVector(const double v[3])
{
    return OXMVector3<float>(float(v[0]), float(v[1]), float(v[2]));
}

} // namespace

OXWVolumeView::OXWVolumeView(QWidget* parent)
    : QVTKOpenGLNativeWidget(parent), mWatch([this] { scheduleUpdate(); }), mCameraWatch([this] {
          if (!mWritingCamera && !mCameraTimer.isActive())
              mCameraTimer.start();
      })
{
    vtkNew<vtkGenericOpenGLRenderWindow> window;
    mRenderWindow = window;
    setRenderWindow(window);
    vtkNew<vtkRenderer> renderer;
    mRenderer = renderer;
    mRenderer->GradientBackgroundOn();
    mRenderer->SetBackground(0.02, 0.02, 0.03);
    mRenderer->SetBackground2(0.16, 0.17, 0.2);
    mRenderWindow->AddRenderer(mRenderer);
    vtkNew<vtkLight> light;
    mLight = light;
    mLight->SetLightTypeToHeadlight();
    mRenderer->AddLight(mLight);
    vtkNew<vtkTextActor> text;
    mText = text;
    mText->GetTextProperty()->SetFontSize(16);
    mText->GetTextProperty()->SetColor(0.8, 0.8, 0.8);
    mText->GetTextProperty()->SetJustificationToCentered();
    mText->GetTextProperty()->SetVerticalJustificationToCentered();
    mText->GetPositionCoordinate()->SetCoordinateSystemToNormalizedViewport();
    mText->SetPosition(0.5, 0.5);
    mRenderer->AddActor2D(mText);
    mPipeline = std::make_unique<OXWVolumePipeline>(mRenderer);

    vtkNew<vtkInteractorStyleTrackballCamera> style;
    interactor()->SetInteractorStyle(style);
    style->AddObserver(vtkCommand::StartInteractionEvent, this, &OXWVolumeView::startInteraction);
    style->AddObserver(vtkCommand::EndInteractionEvent, this, &OXWVolumeView::endInteraction);

    mUpdateTimer.setSingleShot(true);
    mUpdateTimer.setInterval(0);
    connect(&mUpdateTimer, &QTimer::timeout, this, &OXWVolumeView::updateNow);
    mRefineTimer.setSingleShot(true);
    mRefineTimer.setInterval(RefineDelay);
    connect(&mRefineTimer, &QTimer::timeout, this, &OXWVolumeView::refine);
    mCameraTimer.setSingleShot(true);
    mCameraTimer.setInterval(0);
    connect(&mCameraTimer, &QTimer::timeout, this, [this] {
        applyCamera();
        render(isInteractionGoing());
    });
    mEmptyText = tr("No volume selected");
    showEmptyText();
}

OXWVolumeView::~OXWVolumeView()
{
    mWatch.clear();
    mCameraWatch.clear();
    mRegions.clear();
    mPipeline.reset();
}

QSize OXWVolumeView::sizeHint() const
{
    return QSize(800, 600);
}

bool OXWVolumeView::isShowing() const
{
    return mPipeline->isShowing() ||
           std::any_of(mRegions.begin(), mRegions.end(),
                       [](const Region& r) { return r.pipeline->isShowing(); });
}

bool OXWVolumeView::usesHardwareRayCasting() const
{
    return mPipeline->usesHardware();
}

void OXWVolumeView::initializeGL()
{
    QVTKOpenGLNativeWidget::initializeGL();
    const QOpenGLContext* context = QOpenGLContext::currentContext();
    const auto* name =
        context ? reinterpret_cast<const char*>(context->functions()->glGetString(GL_RENDERER))
                : nullptr;
    const bool hardware = !softwareRenderer(name);
    forEachPipeline([hardware](OXWVolumePipeline& p) { p.useHardware(hardware); });
    // The GPU ray caster's exact table is filled by an update.
    if (hardware && isShowing())
        scheduleUpdate();
}

void OXWVolumeView::forEachPipeline(const std::function<void(OXWVolumePipeline&)>& apply)
{
    apply(*mPipeline);
    for (Region& region : mRegions)
        apply(*region.pipeline);
}

void OXWVolumeView::setObject(OXMObject* object)
{
    if (object != mObject.get())
        mCameraPlaced = false;
    mObject = object;
    updateNow();
}

void OXWVolumeView::scheduleUpdate()
{
    if (!mUpdateTimer.isActive())
        mUpdateTimer.start();
}

void OXWVolumeView::updateNow()
{
    mUpdateTimer.stop();
    OXMObject* object = OXWVolumePlacement::volumeOf(mObject.get());
    mTable.build(object);
    std::vector<OXMObject*> sources = mTable.getSources();
    mStyle = OXWRenderStyle::read(object, &sources);
    sources.push_back(object);
    mPlacement = OXWVolumePlacement::read(object, &sources);
    const std::vector<const OXMObject*> regions = readRegions(object, sources);
    mWatch.watch(sources);
    OXMObject* camera = findCamera();
    if (camera != mCamera.get())
        mCameraPlaced = false;
    mCamera = camera;
    mCameraWatch.watch({camera});

    const float* highlight = mTable.getLighting().specularColour;
    mLight->SetSpecularColor(highlight[0], highlight[1], highlight[2]);
    mPipeline->setPlacement(mPlacement);
    const bool shown = mPipeline->update(object, mTable, mStyle, regions);
    for (Region& region : mRegions) {
        region.pipeline->setPlacement(mPlacement);
        region.pipeline->update(region.object, region.table, region.style);
    }
    if (shown || !regions.empty()) {
        mEmptyText.clear();
    } else {
        mEmptyText = !object            ? tr("No volume selected")
                     : mTable.isValid() ? tr("The voxels of the selected object cannot be shown")
                                        : tr("The selected object has no classification to show");
    }
    showEmptyText();
    if (!mCameraPlaced)
        applyCamera();
    render(isInteractionGoing());
}

std::vector<const OXMObject*> OXWVolumeView::readRegions(const OXMObject* volume,
                                                         std::vector<OXMObject*>& sources)
{
    const std::vector<OXMObject*> objects = allLinks(volume, OXM::RegionOfInterestList);
    while (mRegions.size() > objects.size())
        mRegions.pop_back();
    while (mRegions.size() < objects.size()) {
        mRegions.emplace_back();
        mRegions.back().pipeline = std::make_unique<OXWVolumePipeline>(mRenderer);
        mRegions.back().pipeline->useHardware(mPipeline->usesHardware());
    }
    std::vector<const OXMObject*> drawn;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        Region& region = mRegions[i];
        region.object = objects[i];
        region.table.build(objects[i]);
        sources.insert(sources.end(), region.table.getSources().begin(),
                       region.table.getSources().end());
        region.style = OXWRenderStyle::read(objects[i], &sources);
        if (region.table.isValid())
            drawn.push_back(objects[i]);
    }
    return drawn;
}

bool OXWVolumeView::isInteractionGoing() const
{
    const OXWApplication* app = OXMSingleton<OXWApplication>::getInstance();
    return mInteracting || (app && app->isUserActionOpen());
}

void OXWVolumeView::render(bool interactive)
{
    forEachPipeline([interactive](OXWVolumePipeline& p) { p.setInteractive(interactive); });
    mRenderWindow->Render();
    ++mRenderCount;
    if (interactive)
        mRefineTimer.start();
    else
        mRefineTimer.stop();
    emit rendered(interactive);
}

void OXWVolumeView::refine()
{
    if (isInteractionGoing()) {
        mRefineTimer.start();
        return;
    }
    render(false);
}

void OXWVolumeView::startInteraction()
{
    mInteracting = true;
    forEachPipeline([](OXWVolumePipeline& p) { p.setInteractive(true); });
}

void OXWVolumeView::endInteraction()
{
    mInteracting = false;
    writeCamera();
    mRefineTimer.start();
}

void OXWVolumeView::showEmptyText()
{
    mText->SetInput(mEmptyText.toUtf8().constData());
    mText->SetVisibility(mEmptyText.isEmpty() ? 0 : 1);
}

QImage OXWVolumeView::grabImage()
{
    if (isUpdatePending())
        updateNow();
    return grabFramebuffer();
}

// --- camera ----------------------------------------------------------------------------------

OXMObject* OXWVolumeView::findCamera() const
{
    OXMObjectPath path;
    const OXMObject* object = mObject.get();
    if (!object || !object->getValue(OXM::ScenePath, path) || path.isEmpty())
        return nullptr;
    return firstLink(path.getLink(0), OXMSceneNames::sceneCameraList());
}

void OXWVolumeView::applyCamera()
{
    const OXMObject* camera = mCamera.get();
    OXMVector3<float> position, focal, up(0.0f, 1.0f, 0.0f);
    float angle = 30.0f;
    const bool hasView = camera && camera->getValue(OXMSceneNames::cameraPosition(), position) &&
                         camera->getValue(OXMSceneNames::cameraFocalPoint(), focal) &&
                         !(position == focal);
    // A volume of other bounds than the one the camera was placed around is shown whole.
    double bounds[6];
    const bool otherBounds =
        mPipeline->getBounds(bounds) && !std::equal(bounds, bounds + 6, mFramedBounds.begin());
    if (!hasView || (!mCameraPlaced && otherBounds)) {
        if (!mCameraPlaced && isShowing())
            resetCamera();
        return;
    }
    camera->getValue(OXMSceneNames::cameraViewUp(), up);
    camera->getValue(OXMSceneNames::cameraViewAngle(), angle);
    vtkCamera* c = mRenderer->GetActiveCamera();
    c->SetPosition(position.x, position.y, position.z);
    c->SetFocalPoint(focal.x, focal.y, focal.z);
    c->SetViewUp(up.x, up.y, up.z);
    c->SetViewAngle(angle);
    mRenderer->ResetCameraClippingRange();
    mCameraPlaced = true;
}

void OXWVolumeView::writeCamera()
{
    OXMObject* camera = mCamera.get();
    if (!camera)
        return;
    const vtkCamera* c = mRenderer->GetActiveCamera();
    mWritingCamera = true;
    camera->lock(OXM::PropertyMessage);
    camera->setValue(OXMSceneNames::cameraPosition(),
                     toVector(const_cast<vtkCamera*>(c)->GetPosition()));
    camera->setValue(OXMSceneNames::cameraFocalPoint(),
                     toVector(const_cast<vtkCamera*>(c)->GetFocalPoint()));
    camera->setValue(OXMSceneNames::cameraViewUp(),
                     toVector(const_cast<vtkCamera*>(c)->GetViewUp()));
    camera->setValue(OXMSceneNames::cameraViewAngle(),
                     float(const_cast<vtkCamera*>(c)->GetViewAngle()));
    camera->unlock(OXM::PropertyMessage);
    mWritingCamera = false;
}

void OXWVolumeView::resetCamera()
{
    double bounds[6];
    if (!mPipeline->getBounds(bounds))
        return;
    vtkCamera* c = mRenderer->GetActiveCamera();
    // Looking at the volume's front as the coronal slice shows it: from its -y axis, its z axis
    // up, wherever its placement turns them.
    const std::array<double, 3> front = OXWVolumePlacement::direction(mPlacement, {{0, 1, 0}});
    const std::array<double, 3> up = OXWVolumePlacement::direction(mPlacement, {{0, 0, 1}});
    c->SetFocalPoint(0.0, 0.0, 0.0);
    c->SetPosition(-front[0], -front[1], -front[2]);
    c->SetViewUp(up[0], up[1], up[2]);
    mRenderer->ResetCamera(bounds);
    std::copy(bounds, bounds + 6, mFramedBounds.begin());
    mCameraPlaced = true;
    writeCamera();
    if (isVisible())
        render(false);
}
