#pragma once

#include "OXWClassificationTable.h"

#include "OXWObjectWatch.h"

#include <OXMObjectWeakPtr.h>
#include <OXMVector3.h>

#include <QImage>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <array>
#include <memory>
#include <vector>

class OXMObject;
class OXMRegionOfInterest;

// An axial, a coronal and a sagittal slice of one volume, side by side under the captions
// "Axial", "Coronal" and "Sagittal" with the slice's number. Every pixel is the
// classification's colour of its voxel over black (OXWClassificationTable); a region of
// interest shows its volume's voxels with the region's classification, voxels outside the
// region black; a volume shows the voxels of its regions with their classification, as the 3D
// view does. Each slice is scaled to fit its third of the widget, keeping the aspect of
// its physical size (voxel spacing).
//
// Navigation: the mouse wheel over a slice moves through its slices (one per notch, ten with
// Shift); a new object starts at the middle slices. Dragging with the right mouse button sets
// window and level of the display (to the right a wider window, upwards a brighter level: a
// colour c in 0..1 is shown as (c - level + window / 2) / window, clamped); a double click
// resets them to window 1, level 0.5, which shows the colours as they are.
//
// The view listens to the object, its material, every channel object the table reads (and
// the objects their references pass through), the grid and the histogram. Any message of
// them schedules one recompute on a short single-shot timer, so a burst of changes costs a
// single recompute; the recompute rebinds to whatever the object links now (a replaced
// material, a new grid) and shows an empty state when the object died.
//
// Axial: a slice z, x to the right, y downwards. Coronal: a slice y, x to the right, z upwards.
// Sagittal: a slice x, y to the right, z upwards.
class OXWSliceView : public QWidget
{
    Q_OBJECT

public:
    enum Plane
    {
        Axial = 0,
        Coronal = 1,
        Sagittal = 2,
    };

    // The delay of the coalescing timer, in milliseconds.
    static constexpr int RecomputeDelay = 15;

    explicit OXWSliceView(QWidget* parent = nullptr);
    ~OXWSliceView() override;

    // Shows the object (a volume or a region of interest) at once; null shows the empty state.
    void setObject(OXMObject* object);
    OXMObject* getObject() const;

    // Whether slices are shown; else getEmptyText() says why not.
    bool hasSlices() const { return !mSlices[Axial].isNull(); }
    QString getEmptyText() const { return mEmptyText; }
    // One slice at voxel resolution (QImage::Format_RGB32, premultiplied colour over black);
    // null in the empty state.
    QImage getSliceImage(Plane plane) const { return mSlices[plane]; }
    // The widget's picture at its current size, as paintEvent draws it.
    QImage getRenderedImage();
    const OXWClassificationTable& getClassification() const { return mClassification; }
    // How many recomputes ran (setObject and the timer each count one).
    int getRecomputeCount() const { return mRecomputeCount; }
    bool isRecomputePending() const { return mTimer.isActive(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    static QString planeCaption(Plane plane);

    // The slice shown of a plane (0 .. sliceCount - 1) and how many there are (0 when none).
    int sliceIndex(Plane plane) const { return mSliceIndex[plane]; }
    int sliceCount(Plane plane) const;
    // Shows slice index of the plane (clamped to the slices there are).
    void setSliceIndex(Plane plane, int index);

    double window() const { return mWindow; }
    double level() const { return mLevel; }
    // Window clamped to at least 0.01.
    void setWindowLevel(double window, double level);

public slots:
    // Rebuilds the table and the slices now (a pending timer is stopped).
    void recompute();

signals:
    // After every recompute.
    void recomputed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    struct Region
    {
        OXMObjectWeakPtr object;
        OXWClassificationTable table;
    };

    void scheduleRecompute();
    // The regions of a volume (none for a region) and their tables; the objects read are
    // appended to sources.
    void readRegions(const OXMObject* object, std::vector<OXMObject*>& sources);
    void buildSlices();
    // Fills the picture of one plane at its slice index; false without memory.
    bool buildSlice(Plane plane);
    void compose();
    // The plane whose third of the widget holds x.
    Plane planeAt(int x) const;
    QImage windowed(const QImage& slice) const;

    // The object shown and every object its classification is read from.
    OXWObjectWatch mWatch;
    OXMObjectWeakPtr mObject;
    OXWClassificationTable mClassification;
    std::vector<Region> mRegions;
    std::array<QImage, 3> mSlices;
    std::array<QSizeF, 3> mPhysicalSizes;
    std::array<int, 3> mSliceIndex = {{0, 0, 0}};
    OXMVector3<int> mDimensions;
    double mWindow = 1.0;
    double mLevel = 0.5;
    QPoint mDragStart;
    double mDragWindow = 1.0;
    double mDragLevel = 0.5;
    int mWheelRemainder = 0;
    QString mEmptyText;
    QImage mComposed;
    bool mComposedValid = false;
    QTimer mTimer;
    int mRecomputeCount = 0;
};
