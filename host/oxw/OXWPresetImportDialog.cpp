#include "OXWPresetImportDialog.h"

#include "OXWTransferFunctionFile.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

OXWPresetImportDialog::OXWPresetImportDialog(const std::vector<OXWTransferFunction>& presets,
                                             const QString& fileName, QWidget* parent)
    : QDialog(parent), mPresetList(new QListWidget(this))
{
    setObjectName(QStringLiteral("OXWPresetImportDialog"));
    setWindowTitle(tr("Import Presets"));
    mPresetList->setObjectName(QStringLiteral("mPresetList"));
    mPresetList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    for (const OXWTransferFunction& preset : presets) {
        const QString line = OXWTransferFunctionFile::describe(preset);
        auto* item = new QListWidgetItem(line, mPresetList);
        item->setToolTip(line);
        if (!preset.isUsable())
            item->setFlags(item->flags() & ~(Qt::ItemIsSelectable | Qt::ItemIsEnabled));
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    mImportButton = buttons->addButton(tr("Import"), QDialogButtonBox::AcceptRole);
    mImportAllButton = buttons->addButton(tr("Import All"), QDialogButtonBox::AcceptRole);
    mImportButton->setEnabled(false);
    connect(mPresetList, &QListWidget::itemSelectionChanged, this,
            [this] { mImportButton->setEnabled(!mPresetList->selectedItems().isEmpty()); });
    connect(mImportButton, &QPushButton::clicked, this, [this] { finish(false); });
    connect(mImportAllButton, &QPushButton::clicked, this, [this] { finish(true); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(
        tr("%1 holds %2 presets:").arg(QDir::toNativeSeparators(fileName)).arg(presets.size()),
        this));
    layout->addWidget(mPresetList);
    layout->addWidget(buttons);
    resize(640, 400);
}

void OXWPresetImportDialog::finish(bool all)
{
    mChosen.clear();
    for (int i = 0; i < mPresetList->count(); ++i) {
        const QListWidgetItem* item = mPresetList->item(i);
        if ((item->flags() & Qt::ItemIsEnabled) && (all || item->isSelected()))
            mChosen.push_back(i);
    }
    accept();
}

bool OXWPresetImportDialog::choose(const std::vector<OXWTransferFunction>& presets,
                                   const QString& fileName, std::vector<int>& chosen,
                                   QWidget* parent)
{
    OXWPresetImportDialog dialog(presets, fileName, parent);
    const bool ok = dialog.exec() == QDialog::Accepted && !dialog.chosen().empty();
    chosen = dialog.chosen();
    return ok;
}
