#include "OXWSceneTreeView.h"

#include <OXMIOC.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>

#include <QItemSelectionModel>

#include <algorithm>

class OXWSceneTreeView::Listener : public OXMIOC
{
public:
    Listener(OXWSceneTreeView* view, bool application) : mView(view), mApplication(application) {}
    // Only the properties that shape the tree count; nothing is read from the sender here.
    void iocCallback(Message& message) override
    {
        if (message.getType() == OXMIOC::Dying) {
            mView->scheduleRefresh();
            return;
        }
        const OXMenum id = message.getPropertyID();
        if (mApplication) {
            const bool selection =
                id == OXM::RenderObjectSelectionList || id == OXM::RegionOfInterestSelectionList;
            if (id == OXM::Scene || (selection && !mView->mWritingSelection))
                mView->scheduleRefresh();
            return;
        }
        if (id == OXM::Name || id == OXM::VolumeRenderObjectList || id == OXM::RegionOfInterestList)
            mView->scheduleRefresh();
    }

private:
    OXWSceneTreeView* mView;
    bool mApplication;
};

namespace {

QString nameOf(const OXMObject* object, const QString& fallback)
{
    const char* name = nullptr;
    if (object->getValue(OXM::Name, name) && name && *name)
        return QString::fromLocal8Bit(name);
    return fallback;
}

} // namespace

OXWSceneTreeView::OXWSceneTreeView(QWidget* parent)
    : QTreeWidget(parent), mListener(std::make_unique<Listener>(this, false)),
      mApplicationListener(std::make_unique<Listener>(this, true))
{
    mApplication.setListener(mApplicationListener.get());
    setColumnCount(1);
    setHeaderHidden(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    mTimer.setSingleShot(true);
    mTimer.setInterval(RefreshDelay);
    connect(&mTimer, &QTimer::timeout, this, &OXWSceneTreeView::refresh);
    connect(this, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (mRebuilding)
            return;
        writeSelection();
        updateCurrent();
    });
}

OXWSceneTreeView::~OXWSceneTreeView()
{
    // The base class's teardown changes the selection: nobody hears of it any more.
    blockSignals(true);
    mTimer.stop();
    // Unregister from the objects before the listeners go.
    mWatched.clear();
    mApplication = nullptr;
}

void OXWSceneTreeView::setApplication(OXMObject* application)
{
    mApplication = application;
    refresh();
}

OXMObject* OXWSceneTreeView::getApplication() const
{
    return mApplication.get();
}

OXMObject* OXWSceneTreeView::getScene() const
{
    return OXMObject::linkedObject(mApplication.get(), OXM::Scene);
}

void OXWSceneTreeView::scheduleRefresh()
{
    if (!mTimer.isActive())
        mTimer.start();
}

void OXWSceneTreeView::listenTo(OXMObject* object)
{
    if (object)
        mWatched.push_back(std::make_unique<OXMObjectIOCPtr>(object, mListener.get()));
}

QTreeWidgetItem* OXWSceneTreeView::addItem(OXMObject* object, QTreeWidgetItem* parent)
{
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(this);
    const bool region = object->isRoleActive(OXM::RegionOfInterest);
    item->setText(0, nameOf(object, region ? tr("Unnamed region") : tr("Unnamed volume")));
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    mEntries.push_back(Entry{item, OXMObjectWeakPtr(object)});
    listenTo(object);
    return item;
}

std::vector<OXMObjectWeakPtr> OXWSceneTreeView::selectionToRestore() const
{
    std::vector<OXMObjectWeakPtr> selected;
    OXMObject* application = mApplication.get();
    if (!application) {
        for (OXMObject* o : getSelectedObjects())
            selected.emplace_back(o);
        return selected;
    }
    for (OXMenum id : {OXM::RenderObjectSelectionList, OXM::RegionOfInterestSelectionList}) {
        auto* list =
            OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(application->getProperty(id));
        for (const OXMObjectPath& path : list ? list->getArray() : std::vector<OXMObjectPath>())
            selected.emplace_back(path.getLink(-1));
    }
    return selected;
}

void OXWSceneTreeView::refresh()
{
    mTimer.stop();
    const std::vector<OXMObjectWeakPtr> selected = selectionToRestore();
    OXMObjectWeakPtr current(currentItem() ? objectForItem(currentItem()) : nullptr);
    const auto isSelected = [&selected](const OXMObject* o) {
        return std::any_of(selected.begin(), selected.end(),
                           [o](const OXMObjectWeakPtr& s) { return s.get() == o; });
    };
    if (!isSelected(current.get()))
        current = selected.empty() ? nullptr : selected.front().get();

    mRebuilding = true;
    clear();
    mEntries.clear();
    mWatched.clear();
    OXMObject* scene = getScene();
    listenTo(scene);
    for (const OXMObjectLink& v :
         OXMObject::arrayOf<OXMObjectLink>(scene, OXM::VolumeRenderObjectList)) {
        OXMObject* volume = v.getLink();
        if (!volume)
            continue;
        QTreeWidgetItem* item = addItem(volume, nullptr);
        for (const OXMObjectLink& r :
             OXMObject::arrayOf<OXMObjectLink>(volume, OXM::RegionOfInterestList))
            if (OXMObject* region = r.getLink())
                addItem(region, item);
        item->setExpanded(true);
    }
    if (QTreeWidgetItem* item = itemForObject(current.get())) {
        setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
        scrollToItem(item);
    }
    for (const OXMObjectWeakPtr& o : selected)
        if (QTreeWidgetItem* item = itemForObject(o.get()))
            item->setSelected(true);
    mRebuilding = false;

    // Objects that went leave the selection.
    writeSelection();
    updateCurrent();
}

QTreeWidgetItem* OXWSceneTreeView::itemForObject(const OXMObject* object) const
{
    if (!object)
        return nullptr;
    for (const Entry& e : mEntries)
        if (e.object.get() == object)
            return e.item;
    return nullptr;
}

OXMObject* OXWSceneTreeView::objectForItem(const QTreeWidgetItem* item) const
{
    for (const Entry& e : mEntries)
        if (e.item == item)
            return e.object.get();
    return nullptr;
}

std::vector<OXMObject*> OXWSceneTreeView::getSelectedObjects() const
{
    // mEntries is in tree order: each volume, then its regions.
    std::vector<OXMObject*> objects;
    for (const Entry& e : mEntries)
        if (e.item->isSelected() && e.object.get())
            objects.push_back(e.object.get());
    return objects;
}

bool OXWSceneTreeView::selectObject(OXMObject* object)
{
    if (!object) {
        clearSelection();
        return true;
    }
    QTreeWidgetItem* item = itemForObject(object);
    if (!item)
        return false;
    // One selection change: one write of the lists.
    selectionModel()->setCurrentIndex(indexFromItem(item), QItemSelectionModel::ClearAndSelect |
                                                               QItemSelectionModel::Rows);
    scrollToItem(item);
    return true;
}

void OXWSceneTreeView::writeSelection()
{
    OXMObject* application = mApplication.get();
    if (!application)
        return;
    std::vector<OXMObjectPath> volumes, regions;
    for (OXMObject* o : getSelectedObjects()) {
        const OXMObjectPath path = OXMObjectPath::fromObject(o);
        (o->isRoleActive(OXM::RegionOfInterest) ? regions : volumes).push_back(path);
    }
    auto* volumeList = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        application->getProperty(OXM::RenderObjectSelectionList));
    auto* regionList = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
        application->getProperty(OXM::RegionOfInterestSelectionList));
    // Writes only what differs, in one batch of messages.
    mWritingSelection = true;
    application->lock(OXM::PropertyMessage);
    if (volumeList && volumeList->getArray() != volumes)
        volumeList->setArray(volumes);
    if (regionList && regionList->getArray() != regions)
        regionList->setArray(regions);
    application->unlock(OXM::PropertyMessage);
    mWritingSelection = false;
}

void OXWSceneTreeView::updateCurrent()
{
    const std::vector<OXMObject*> objects = getSelectedObjects();
    OXMObject* first = objects.empty() ? nullptr : objects.front();
    // A current object that died (the weak pointer reads null) changes to null as well.
    if (first == mCurrent.get() && (first || !mHasCurrent))
        return;
    mCurrent = first;
    mHasCurrent = first != nullptr;
    emit currentObjectChanged(first);
}
