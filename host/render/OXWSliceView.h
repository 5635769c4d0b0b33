#pragma once

#include "OXWClassificationTable.h"

#include "OXWObjectWatch.h"

#include <OXMObjectWeakPtr.h>

#include <QImage>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <array>
#include <memory>
#include <vector>

class OXMObject;

// The middle axial, coronal and sagittal slices of one volume, side by side under the
// captions "Axial", "Coronal" and "Sagittal". Every pixel is the classification's colour of
// its voxel over black (OXWClassificationTable); a region of interest shows its volume's
// voxels with the region's classification, voxels outside the region black. Each slice is
// scaled to fit its third of the widget, keeping the aspect of its physical size (voxel
// spacing).
//
// The view listens to the object, its material, every channel object the table reads (and
// the objects their references pass through), the grid and the histogram. Any message of
// them schedules one recompute on a short single-shot timer, so a burst of changes costs a
// single recompute; the recompute rebinds to whatever the object links now (a replaced
// material, a new grid) and shows an empty state when the object died.
//
// Axial: the slice z = nz / 2, x to the right, y downwards. Coronal: y = ny / 2, x to the
// right, z upwards. Sagittal: x = nx / 2, y to the right, z upwards.
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

private:
    void scheduleRecompute();
    void buildSlices();
    void compose();

    // The object shown and every object its classification is read from.
    OXWObjectWatch mWatch;
    OXMObjectWeakPtr mObject;
    OXWClassificationTable mClassification;
    std::array<QImage, 3> mSlices;
    std::array<QSizeF, 3> mPhysicalSizes;
    QString mEmptyText;
    QImage mComposed;
    bool mComposedValid = false;
    QTimer mTimer;
    int mRecomputeCount = 0;
};
