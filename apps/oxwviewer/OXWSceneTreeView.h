#pragma once

#include <OXMObjectIOCPtr.h>
#include <OXMObjectPath.h>
#include <OXMObjectWeakPtr.h>

#include <QTimer>
#include <QTreeWidget>

#include <memory>
#include <vector>

class OXMObject;

// The volumes of the application's scene as top-level items and, as their children, their
// regions of interest (OXM::RegionOfInterestList), named by OXM::Name. Extended selection.
//
// setApplication(app) takes the object that carries OXM::Scene, OXM::RenderObjectSelectionList
// and OXM::RegionOfInterestSelectionList (the OXWApplication). The tree follows change messages
// of the application (its scene link), the scene, the volumes and the regions, rebuilding on a
// short single-shot timer (refresh() rebuilds at once); the selection survives a rebuild for
// the objects that stay.
//
// On every selection change the view writes the paths (OXMObjectPath::fromObject) of the
// selected volumes to OXM::RenderObjectSelectionList and of the selected regions to
// OXM::RegionOfInterestSelectionList, both in tree order, in one message batch and outside any
// user action: the selection is view state, not an undoable edit. Then it emits
// currentObjectChanged with the first selected object in tree order (null for none) when that
// object changed. A change of the lists made elsewhere (a tool selecting what it created, an
// undo) rebuilds the tree with the objects the lists name selected.
class OXWSceneTreeView : public QTreeWidget
{
    Q_OBJECT

public:
    static constexpr int RefreshDelay = 0;

    explicit OXWSceneTreeView(QWidget* parent = nullptr);
    ~OXWSceneTreeView() override;

    void setApplication(OXMObject* application);
    OXMObject* getApplication() const;
    // The scene shown: the application's OXM::Scene link.
    OXMObject* getScene() const;

    // Selects exactly this object's item (a volume or a region; null clears the selection) and
    // makes it current. False when the object has no item.
    bool selectObject(OXMObject* object);
    // The selected objects in tree order.
    std::vector<OXMObject*> getSelectedObjects() const;
    OXMObject* getCurrentObject() const { return mCurrent.get(); }
    // The item of an object; null if it has none.
    QTreeWidgetItem* itemForObject(const OXMObject* object) const;
    OXMObject* objectForItem(const QTreeWidgetItem* item) const;

public slots:
    // Rebuilds the items from the scene now.
    void refresh();

signals:
    void currentObjectChanged(OXMObject* object);

private:
    class Listener;
    friend class Listener;

    struct Entry
    {
        QTreeWidgetItem* item = nullptr;
        OXMObjectWeakPtr object;
    };

    void scheduleRefresh();
    void onApplicationMessage(OXMenum propertyID);
    void listenTo(OXMObject* object);
    QTreeWidgetItem* addItem(OXMObject* object, QTreeWidgetItem* parent);
    void writeSelection();
    // The objects to select after a rebuild: those of the application's selection lists (the
    // tree's own selection without an application).
    std::vector<OXMObjectWeakPtr> selectionToRestore() const;
    void updateCurrent();

    std::unique_ptr<Listener> mListener;
    std::unique_ptr<Listener> mApplicationListener;
    OXMObjectIOCPtr mApplication;
    std::vector<std::unique_ptr<OXMObjectIOCPtr>> mWatched;
    std::vector<Entry> mEntries;
    OXMObjectWeakPtr mCurrent;
    bool mHasCurrent = false;
    QTimer mTimer;
    bool mRebuilding = false;
    bool mWritingSelection = false;
};
