#include "OXWSliceView.h"

#include <OXMIOC.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMRegionOfInterest.h>
#include <OXMSampleGrid.h>
#include <OXMSampleLoops.h>
#include <OXMTypeInfo.h>
#include <OXMValueArrayPropertyIF.h>
#include <OXMVector3.h>

#include <QEvent>
#include <QFontMetrics>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
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

SliceGeometry sliceGeometry(OXWSliceView::Plane plane, const OXMVector3<int>& d, int index)
{
    const long long nx = d.x, nz = d.z;
    const long long sliceXY = nx * d.y;
    SliceGeometry g;
    switch (plane) {
    case OXWSliceView::Axial:
        g.width = d.x;
        g.height = d.y;
        g.origin = index * sliceXY;
        g.stepU = 1;
        g.stepV = nx;
        break;
    case OXWSliceView::Coronal:
        g.width = d.x;
        g.height = d.z;
        g.origin = (nz - 1) * sliceXY + index * nx;
        g.stepU = 1;
        g.stepV = -sliceXY;
        break;
    case OXWSliceView::Sagittal:
        g.width = d.y;
        g.height = d.z;
        g.origin = (nz - 1) * sliceXY + index;
        g.stepU = nx;
        g.stepV = -sliceXY;
        break;
    }
    return g;
}

int planeSize(OXWSliceView::Plane plane, const OXMVector3<int>& d)
{
    return plane == OXWSliceView::Axial ? d.z : plane == OXWSliceView::Coronal ? d.y : d.x;
}

// Fills the slice's pixels from the voxels and the table; the voxels outside the mask are black,
// or keep their pixel when overlay is set.
template <typename T>
void fillSlice(QImage& image, const SliceGeometry& g, const std::uint8_t* data, int components,
               int component, const std::uint8_t* mask, const OXWClassificationTable& lookup,
               bool overlay = false)
{
    const T* samples = reinterpret_cast<const T*>(data);
    for (int v = 0; v < g.height; ++v) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(v));
        long long index = g.origin + g.stepV * v;
        for (int u = 0; u < g.width; ++u, index += g.stepU) {
            QRgb entry = 0;
            if (overlay && !mask[index])
                continue;
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
    if (object != mObject.get())
        mDimensions = OXMVector3<int>(); // a new object starts at its middle slices
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
    readRegions(object, sources);
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

    const OXMVector3<float> s = grid->getSpacing();
    mPhysicalSizes[Axial] = QSizeF(d.x * double(s.x), d.y * double(s.y));
    mPhysicalSizes[Coronal] = QSizeF(d.x * double(s.x), d.z * double(s.z));
    mPhysicalSizes[Sagittal] = QSizeF(d.y * double(s.y), d.z * double(s.z));
    if (!(d == mDimensions)) {
        mDimensions = d;
        for (Plane plane : {Axial, Coronal, Sagittal})
            mSliceIndex[plane] = planeSize(plane, d) / 2;
    }
    for (Plane plane : {Axial, Coronal, Sagittal}) {
        if (!buildSlice(plane)) {
            mEmptyText = tr("Not enough memory for the slices");
            for (QImage& slice : mSlices)
                slice = QImage();
            return;
        }
    }
}

void OXWSliceView::readRegions(const OXMObject* object, std::vector<OXMObject*>& sources)
{
    auto* list = OXMValueArrayPropertyIF<OXMObjectLink>::getInterface(
        object && !object->isRoleActive(OXM::RegionOfInterest)
            ? object->getProperty(OXM::RegionOfInterestList)
            : nullptr);
    const std::vector<OXMObjectLink> links = list ? list->getArray() : std::vector<OXMObjectLink>();
    mRegions.resize(links.size());
    for (std::size_t i = 0; i < links.size(); ++i) {
        mRegions[i].object = links[i].getLink();
        mRegions[i].table.build(links[i].getLink());
        sources.insert(sources.end(), mRegions[i].table.getSources().begin(),
                       mRegions[i].table.getSources().end());
    }
}

bool OXWSliceView::buildSlice(Plane plane)
{
    auto* grid = dynamic_cast<const OXMSampleGrid*>(mClassification.getGrid());
    const OXMObject* object = mObject.get();
    const OXMTypeInfo type = grid->getDataType();
    const OXMTypeInfo::Channel* channel = type.getChannel(mClassification.getComponent());
    const long long voxels = grid->getVoxelCount();
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
    const SliceGeometry g = sliceGeometry(plane, mDimensions, mSliceIndex[plane]);
    QImage image(g.width, g.height, QImage::Format_RGB32);
    if (image.isNull())
        return false;
    const int components = type.getChannelCount();
    const int component = mClassification.getComponent();
    const std::uint8_t* data = grid->getData();
    if (!OXMSampleLoops::forComponentType(channel->getDataType(), [&](auto sample) {
            fillSlice<decltype(sample)>(image, g, data, components, component, mask,
                                        mClassification);
            // A volume's regions: their voxels with their classification.
            for (const Region& r : mRegions) {
                auto* region = dynamic_cast<const OXMRegionOfInterest*>(r.object.get());
                if (region && r.table.isValid() && r.table.getGrid() == grid &&
                    (long long)region->getMask().size() == voxels)
                    fillSlice<decltype(sample)>(image, g, data, components, r.table.getComponent(),
                                                region->getMask().data(), r.table, true);
            }
        }))
        image.fill(Qt::black);
    mSlices[plane] = image;
    return true;
}

int OXWSliceView::sliceCount(Plane plane) const
{
    return hasSlices() ? planeSize(plane, mDimensions) : 0;
}

void OXWSliceView::setSliceIndex(Plane plane, int index)
{
    const int count = sliceCount(plane);
    index = std::max(0, std::min(index, count - 1));
    if (count == 0 || index == mSliceIndex[plane])
        return;
    mSliceIndex[plane] = index;
    buildSlice(plane);
    mComposedValid = false;
    update();
}

void OXWSliceView::setWindowLevel(double window, double level)
{
    mWindow = std::max(0.01, window);
    mLevel = level;
    mComposedValid = false;
    update();
}

OXWSliceView::Plane OXWSliceView::planeAt(int x) const
{
    const int third = std::max(1, width() / 3);
    return Plane(std::max(0, std::min(2, x / third)));
}

void OXWSliceView::wheelEvent(QWheelEvent* event)
{
    mWheelRemainder += event->angleDelta().y();
    const int notches = mWheelRemainder / 120;
    mWheelRemainder -= notches * 120;
    const int step = event->modifiers() & Qt::ShiftModifier ? 10 : 1;
    const Plane plane = planeAt(int(event->position().x()));
    setSliceIndex(plane, mSliceIndex[plane] + notches * step);
    event->accept();
}

void OXWSliceView::mousePressEvent(QMouseEvent* event)
{
    mDragStart = event->pos();
    mDragWindow = mWindow;
    mDragLevel = mLevel;
    QWidget::mousePressEvent(event);
}

void OXWSliceView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::RightButton))
        return QWidget::mouseMoveEvent(event);
    // The widget's width doubles or halves the window; its height spans the whole level.
    const QPoint d = event->pos() - mDragStart;
    setWindowLevel(mDragWindow * std::pow(2.0, double(d.x()) / std::max(1, width())),
                   mDragLevel - double(d.y()) / std::max(1, height()));
}

void OXWSliceView::mouseDoubleClickEvent(QMouseEvent* event)
{
    setWindowLevel(1.0, 0.5);
    QWidget::mouseDoubleClickEvent(event);
}

QImage OXWSliceView::windowed(const QImage& slice) const
{
    if (mWindow == 1.0 && mLevel == 0.5)
        return slice;
    std::array<uchar, 256> map;
    for (int c = 0; c < 256; ++c) {
        const double v = (c / 255.0 - mLevel + mWindow / 2.0) / mWindow;
        map[std::size_t(c)] = uchar(std::lround(std::max(0.0, std::min(1.0, v)) * 255.0));
    }
    QImage out = slice.copy();
    for (int y = 0; y < out.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x)
            line[x] = qRgb(map[std::size_t(qRed(line[x]))], map[std::size_t(qGreen(line[x]))],
                           map[std::size_t(qBlue(line[x]))]);
    }
    return out;
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
                   tr("%1 %2/%3")
                       .arg(planeCaption(plane))
                       .arg(mSliceIndex[plane] + 1)
                       .arg(sliceCount(plane)));
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
        p.drawImage(target, windowed(mSlices[plane]));
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
