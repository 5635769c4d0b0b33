#include "OXWPreferenceDialog.h"

#include "OXWObjectEditorHandlerIF.h"
#include "OXWPreferenceManager.h"

#include <OXMClassManager.h>
#include <OXMMetaClass.h>
#include <OXMObjectPath.h>

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int NodeRole = Qt::UserRole;
constexpr int OrderRole = Qt::UserRole + 1;

// Siblings by order, then label.
class OrderedItem : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override
    {
        const int a = data(0, OrderRole).toInt(), b = other.data(0, OrderRole).toInt();
        return a != b ? a < b : text(0) < other.text(0);
    }
};
} // namespace

struct OXWPreferenceDialog::Node
{
    QTreeWidgetItem* item = nullptr;
    QString description;
    std::vector<int> mappings;
    QWidget* page = nullptr;
};

OXWPreferenceDialog::OXWPreferenceDialog(OXWPreferenceManager* manager, QWidget* parent)
    : QDialog(parent), mManager(manager), mTree(new QTreeWidget), mPages(new QStackedWidget)
{
    setObjectName(QStringLiteral("OXWPreferenceDialog"));
    setWindowTitle(tr("Preferences"));
    mTree->setObjectName(QStringLiteral("mPreferenceTree"));
    mTree->setHeaderHidden(true);
    mTree->setColumnCount(1);
    auto* splitter = new QSplitter;
    splitter->addWidget(mTree);
    splitter->addWidget(mPages);
    splitter->setStretchFactor(1, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter);
    layout->addWidget(buttons);
    buildTree();
    connect(mTree, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem* item) { showItem(item); });
    showItem(firstPageWithEditors());
    splitter->setSizes({220, 560});
    resize(800, 440);
}

OXWPreferenceDialog::~OXWPreferenceDialog()
{
    // The editors' widgets are children of the pages; the editors go first, their own way.
    for (OXWObjectEditorHandlerIF* editor : mEditors)
        OXMMetaClass::destruct(editor, true);
}

void OXWPreferenceDialog::buildTree()
{
    if (!mManager)
        return;
    const auto& mappings = mManager->enumMappings();
    for (int m = 0; m < int(mappings.size()); ++m) {
        QTreeWidgetItem* item = nullptr;
        for (const auto& level : OXWObjectEditor::parseTreeText(mappings[std::size_t(m)].treeText))
            item = nodeFor(item, level.label, level.order, level.description);
        if (item)
            mNodes[item->data(0, NodeRole).toUInt()]->mappings.push_back(m);
    }
    mTree->sortItems(0, Qt::AscendingOrder);
    mTree->expandAll();
}

QTreeWidgetItem* OXWPreferenceDialog::childByLabel(QTreeWidgetItem* parent,
                                                   const QString& label) const
{
    const int count = parent ? parent->childCount() : mTree->topLevelItemCount();
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem* child = parent ? parent->child(i) : mTree->topLevelItem(i);
        if (child->text(0) == label)
            return child;
    }
    return nullptr;
}

QTreeWidgetItem* OXWPreferenceDialog::nodeFor(QTreeWidgetItem* parent, const QString& label,
                                              int order, const QString& description)
{
    if (QTreeWidgetItem* existing = childByLabel(parent, label))
        return existing;
    auto* item = parent ? new OrderedItem(parent) : new OrderedItem(mTree);
    item->setText(0, label);
    item->setData(0, OrderRole, order);
    item->setData(0, NodeRole, uint(mNodes.size()));
    item->setToolTip(0, description);
    auto node = std::make_unique<Node>();
    node->item = item;
    node->description = description;
    mNodes.push_back(std::move(node));
    return item;
}

QTreeWidgetItem* OXWPreferenceDialog::firstPageWithEditors() const
{
    for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
        if (!mNodes[(*it)->data(0, NodeRole).toUInt()]->mappings.empty())
            return *it;
    }
    return mTree->topLevelItem(0);
}

QTreeWidgetItem* OXWPreferenceDialog::findItem(const QString& labelPath) const
{
    QTreeWidgetItem* item = nullptr;
    for (const QString& label : labelPath.split(QLatin1Char('/'))) {
        item = childByLabel(item, label);
        if (!item)
            return nullptr;
    }
    return item;
}

void OXWPreferenceDialog::showItem(QTreeWidgetItem* item)
{
    if (!item)
        return;
    Node& node = *mNodes[item->data(0, NodeRole).toUInt()];
    if (!node.page) {
        node.page = buildPage(node);
        mPages->addWidget(node.page);
    }
    if (mTree->currentItem() != item)
        mTree->setCurrentItem(item);
    mPages->setCurrentWidget(node.page);
}

QWidget* OXWPreferenceDialog::buildPage(const Node& node)
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    auto* title = new QLabel(QStringLiteral("<b>%1</b>").arg(node.description.toHtmlEscaped()));
    layout->addWidget(title);
    // Editors of their own first, then the groups by order.
    std::vector<std::pair<int, int>> order; // (group order or -1, mapping)
    const auto& mappings = mManager->enumMappings();
    for (int m : node.mappings) {
        QString label;
        int groupOrder = 0;
        const bool grouped =
            OXWObjectEditor::parseGroupText(mappings[std::size_t(m)].groupText, label, groupOrder);
        order.emplace_back(grouped ? groupOrder : -1, m);
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [groupOrder, m] : order) {
        QString label;
        int unused = 0;
        if (groupOrder < 0 ||
            !OXWObjectEditor::parseGroupText(mappings[std::size_t(m)].groupText, label, unused)) {
            layout->addWidget(createEditor(m, page));
            continue;
        }
        auto* group = new QGroupBox(label, page);
        auto* groupLayout = new QVBoxLayout(group);
        groupLayout->addWidget(createEditor(m, group));
        layout->addWidget(group);
    }
    layout->addStretch(1);
    return page;
}

QWidget* OXWPreferenceDialog::createEditor(int mapping, QWidget* parent)
{
    const OXWObjectEditor::EnumMapping& m = mManager->enumMappings()[std::size_t(mapping)];
    OXMObject* object = mManager->editedObject(m);
    auto* editor = dynamic_cast<OXWObjectEditorHandlerIF*>(
        OXMClassManager::createObject(m.editorClass.toUtf8().constData()));
    const OXMObjectPath path(std::vector<OXMObjectLink>{OXMObjectLink(object)});
    if (!editor || !object || !editor->canEdit(&path, 1) || !editor->editorWidget()) {
        if (editor)
            OXMMetaClass::destruct(editor, true);
        return new QLabel(tr("The editor '%1' of the preference '%2' is not available.")
                              .arg(m.editorClass, m.pathText),
                          parent);
    }
    mEditors.push_back(editor);
    editor->setEditedObjects(&path, 1);
    QWidget* widget = editor->editorWidget();
    widget->setParent(parent, Qt::Widget);
    widget->show();
    return widget;
}
