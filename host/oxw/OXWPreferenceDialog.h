#pragma once

#include <QDialog>

#include <memory>
#include <vector>

class OXWObjectEditorHandlerIF;
class OXWPreferenceManager;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

// The "Preferences" dialog: a tree of the preference manager's editor mappings on the left,
// the page of the chosen node on the right; it opens on the first node that has an editor. Each
// level of a mapping's tree text is a node (levels of the same label under the same parent share
// it; siblings sorted by order, then label); the last level's node shows the mapping's editor,
// alone or as a titled group.
//
// A page is built when its node is first chosen: its description, then its editors, each
// created by class name through the class manager and given the edited object. Edits apply
// at once (the editors write the preference objects); the dialog only closes. The editors
// are destroyed through their meta-classes when the dialog goes. A mapping whose editor
// class is unknown or can't edit the object shows a line saying so.
class OXWPreferenceDialog : public QDialog
{
    Q_OBJECT
public:
    explicit OXWPreferenceDialog(OXWPreferenceManager* manager, QWidget* parent = nullptr);
    ~OXWPreferenceDialog() override;

    QTreeWidget* tree() const { return mTree; }
    // The tree item of a path of labels ("Advanced settings/Default 3D rendering"); null if
    // there is none.
    QTreeWidgetItem* findItem(const QString& labelPath) const;
    // Chooses the node (building its page).
    void showItem(QTreeWidgetItem* item);
    // The editors created so far.
    int editorCount() const { return int(mEditors.size()); }

private:
    struct Node;

    void buildTree();
    // The first node, top to bottom, that shows an editor (the page the dialog opens on).
    QTreeWidgetItem* firstPageWithEditors() const;
    // The child of that label (a top-level item for a null parent), or null.
    QTreeWidgetItem* childByLabel(QTreeWidgetItem* parent, const QString& label) const;
    QTreeWidgetItem* nodeFor(QTreeWidgetItem* parent, const QString& label, int order,
                             const QString& description);
    QWidget* buildPage(const Node& node);
    QWidget* createEditor(int mapping, QWidget* parent);

    OXWPreferenceManager* mManager;
    QTreeWidget* mTree;
    QStackedWidget* mPages;
    std::vector<std::unique_ptr<Node>> mNodes;
    std::vector<OXWObjectEditorHandlerIF*> mEditors;
};
