#include "OXWSliceView.h"

#include <OXMIOC.h>
#include <OXMObject.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMTypeInfo.h>
#include <OXMVector3.h>

#include <QEvent>
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace {

// Voxel access for one slice: index of pixel (u, v) in the grid's buffer.
struct SliceGeometry
{
    int width = 0;
    int height = 0;
    long long origin = 0; // voxel index of pixel (0, 0)
    long long stepU = 0;  // voxel index step per pixel to the right
    long long stepV = 0;  // voxel index step per pixel downwards
};

SliceGeometry sliceGeometry(OXWSliceView::Plane plane, const OXMVector3<int>& d)
{
    const long long nx = d.x, ny = d.y, nz = d.z;
    const long long sliceXY = nx * ny;
    SliceGeometry g;
    switch (plane) {
    case OXWSliceView::Axial:
        g.width = d.x;
        g.height = d.y;
        g.origin = (nz / 2) * sliceXY;
        g.stepU = 1;
        g.stepV = nx;
        break;
    case OXWSliceView::Coronal:
        g.width = d.x;
        g.height = d.z;
        g.origin = (nz - 1) * sliceXY + (ny / 2) * nx;
        g.stepU = 1;
        g.stepV = -sliceXY;
        break;
    case OXWSliceView::Sagittal:
        g.width = d.y;
        g.height = d.z;
        g.origin = (nz - 1) * sliceXY + nx / 2;
        g.stepU = nx;
        g.stepV = -sliceXY;
        break;
    }
    return g;
}

template <typename T>
void fillSlice(QImage& image, const SliceGeometry& g, const std::uint8_t* data, int components,
               int component, const std::uint8_t* mask, const OXWClassificationTable& lookup)
{
    const T* samples = reinterpret_cast<const T*>(data);
    for (int v = 0; v < g.height; ++v) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(v));
        long long index = g.origin + g.stepV * v;
        for (int u = 0; u < g.width; ++u, index += g.stepU) {
            QRgb entry = 0;
            if (!mask || mask[index]) {
                const T value = samples[index * components + component];
                if constexpr (std::is_floating_point<T>::value)
                    entry = lookup.entryForValue(double(value));
                else
                    entry = lookup.entryForBin((long long)value);
            }
            // Premultiplied colour over black: the colour components themselves.
            line[u] = 0xff000000u | (entry & 0x00ffffffu);
        }
    }
}

} // namespace

OXWSliceView::OXWSliceView(QWidget* parent)
    : QWidget(parent), mWatch([this] { scheduleRecompute(); })
{
    mTimer.setSingleShot(true);
    mTimer.setInterval(RecomputeDelay);
    connect(&mTimer, &QTimer::timeout, this, &OXWSliceView::recompute);
    setAttribute(Qt::WA_OpaquePaintEvent);
    mEmptyText = tr("No volume selected");
}

OXWSliceView::~OXWSliceView() = default;

QString OXWSliceView::planeCaption(Plane plane)
{
    switch (plane) {
    case Axial:
        return tr("Axial");
    case Coronal:
        return tr("Coronal");
    case Sagittal:
        return tr("Sagittal");
    }
    return QString();
}

void OXWSliceView::setObject(OXMObject* object)
{
    mObject = object;
    recompute();
}

OXMObject* OXWSliceView::getObject() const
{
    return mObject.get();
}

void OXWSliceView::scheduleRecompute()
{
    if (!mTimer.isActive())
        mTimer.start();
}

void OXWSliceView::recompute()
{
    mTimer.stop();
    ++mRecomputeCount;
    OXMObject* object = mObject.get();
    mClassification.build(object);
    std::vector<OXMObject*> sources = mClassification.getSources();
    sources.push_back(object);
    mWatch.watch(sources);
    buildSlices();
    mComposedValid = false;
    update();
    emit recomputed();
}

void OXWSliceView::buildSlices()
{
    for (QImage& slice : mSlices)
        slice = QImage();
    OXMObject* object = mObject.get();
    switch (mClassification.getStatus()) {
    case OXWClassificationTable::Status::Empty:
        mEmptyText = tr("No volume selected");
        return;
    case OXWClassificationTable::Status::NoMaterial:
        mEmptyText = tr("The selected object has no classification");
        return;
    case OXWClassificationTable::Status::NoGrid:
        mEmptyText = tr("The selected object has no voxels");
        return;
    case OXWClassificationTable::Status::NoRange:
        mEmptyText = tr("The data type of the voxels cannot be shown");
        return;
    case OXWClassificationTable::Status::NoOpacity:
        mEmptyText = tr("The classification has no opacity channel");
        return;
    case OXWClassificationTable::Status::Ok:
        break;
    }

    auto* grid = dynamic_cast<const OXMSampleGrid*>(mClassification.getGrid());
    const OXMTypeInfo type = grid ? grid->getDataType() : OXMTypeInfo();
    const OXMTypeInfo::Channel* channel = type.getChannel(mClassification.getComponent());
    const OXMVector3<int> d = grid ? grid->getDimensions() : OXMVector3<int>();
    const long long voxels = (long long)d.x * d.y * d.z;
    if (!grid || !channel || voxels <= 0 ||
        grid->getByteCount() < std::size_t(voxels) * std::size_t(type.getSize())) {
        mEmptyText = tr("The selected object has no voxels");
        return;
    }

    // A region shows only its voxels.
    const std::uint8_t* mask = nullptr;
    std::vector<std::uint8_t> none;
    if (object->isRoleActive(OXM::RegionOfInterest)) {
        auto* region = dynamic_cast<const OXMRegionOfInterest*>(object);
        if (region && (long long)region->getMask().size() == voxels) {
            mask = region->getMask().data();
        } else {
            none.assign(std::size_t(voxels), 0); // no usable mask: an empty region
            mask = none.data();
        }
    }

    const OXMVector3<float> s = grid->getSpacing();
    mPhysicalSizes[Axial] = QSizeF(d.x * double(s.x), d.y * double(s.y));
    mPhysicalSizes[Coronal] = QSizeF(d.x * double(s.x), d.z * double(s.z));
    mPhysicalSizes[Sagittal] = QSizeF(d.y * double(s.y), d.z * double(s.z));

    const int components = type.getChannelCount();
    const int component = mClassification.getComponent();
    const std::uint8_t* data = grid->getData();
    for (Plane plane : {Axial, Coronal, Sagittal}) {
        const SliceGeometry g = sliceGeometry(plane, d);
        QImage image(g.width, g.height, QImage::Format_RGB32);
        if (image.isNull()) {
            mEmptyText = tr("Not enough memory for the slices");
            for (QImage& slice : mSlices)
                slice = QImage();
            return;
        }
        const OXMenum t = channel->getDataType();
        if (t == OXM::UInt8)
            fillSlice<std::uint8_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::Int8)
            fillSlice<std::int8_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::UInt16)
            fillSlice<std::uint16_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::Int16)
            fillSlice<std::int16_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::UInt32)
            fillSlice<std::uint32_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::Int32)
            fillSlice<std::int32_t>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::Float32)
            fillSlice<float>(image, g, data, components, component, mask, mClassification);
        else if (t == OXM::Float64)
            fillSlice<double>(image, g, data, components, component, mask, mClassification);
        else
            image.fill(Qt::black);
        mSlices[plane] = image;
    }
}

void OXWSliceView::compose()
{
    const QSize size = this->size();
    if (mComposedValid && mComposed.size() == size)
        return;
    mComposed = QImage(size.expandedTo(QSize(1, 1)), QImage::Format_RGB32);
    mComposedValid = true;
    QPainter p(&mComposed);
    if (!hasSlices()) {
        p.fillRect(mComposed.rect(), palette().window());
        p.setPen(palette().color(QPalette::WindowText));
        p.drawText(mComposed.rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                   mEmptyText);
        return;
    }
    p.fillRect(mComposed.rect(), Qt::black);
    const QFontMetrics fm(font());
    const int captionHeight = fm.height() + 4;
    const int gap = 4;
    const int cellWidth = std::max(1, (size.width() - 2 * gap) / 3);
    for (Plane plane : {Axial, Coronal, Sagittal}) {
        const QRect cell(plane * (cellWidth + gap), 0, cellWidth, size.height());
        p.setPen(QColor(220, 220, 220));
        p.drawText(QRect(cell.left(), 0, cell.width(), captionHeight), Qt::AlignCenter,
                   planeCaption(plane));
        const QRect area = cell.adjusted(0, captionHeight, 0, 0);
        QSizeF physical = mPhysicalSizes[plane];
        if (!(physical.width() > 0.0 && physical.height() > 0.0))
            physical = mSlices[plane].size();
        const QSize fitted = physical.scaled(area.size(), Qt::KeepAspectRatio).toSize();
        if (fitted.isEmpty())
            continue;
        const QRect target(area.left() + (area.width() - fitted.width()) / 2,
                           area.top() + (area.height() - fitted.height()) / 2, fitted.width(),
                           fitted.height());
        p.drawImage(target, mSlices[plane]);
    }
}

QImage OXWSliceView::getRenderedImage()
{
    compose();
    return mComposed;
}

void OXWSliceView::paintEvent(QPaintEvent* event)
{
    compose();
    QPainter p(this);
    p.drawImage(event->rect(), mComposed, event->rect());
}

void OXWSliceView::resizeEvent(QResizeEvent* event)
{
    mComposedValid = false;
    QWidget::resizeEvent(event);
}

void OXWSliceView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        mComposedValid = false;
    QWidget::changeEvent(event);
}

QSize OXWSliceView::sizeHint() const
{
    return QSize(720, 280);
}

QSize OXWSliceView::minimumSizeHint() const
{
    return QSize(150, 80);
}
