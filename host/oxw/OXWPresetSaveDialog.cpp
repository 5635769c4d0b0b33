#include "OXWPresetSaveDialog.h"

#include "OXWPresetDefaultHandler.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

OXWPresetSaveDialog::OXWPresetSaveDialog(OXWPresetDefaultHandler* handler,
                                         const QString& suggestion, QWidget* parent)
    : QDialog(parent), mHandler(handler), mNameEdit(new QLineEdit(suggestion, this)),
      mExtension(handler ? handler->createSaveDialogExtension() : nullptr),
      mButtons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setObjectName(QStringLiteral("OXWPresetSaveDialog"));
    setWindowTitle(tr("Save %1 Preset").arg(handler ? handler->presetCategoryText() : QString()));
    mNameEdit->setObjectName(QStringLiteral("mNameEdit"));
    auto* form = new QFormLayout;
    form->addRow(tr("Name:"), mNameEdit);
    auto* column = new QVBoxLayout(this);
    column->addLayout(form);
    if (mExtension)
        column->addWidget(mExtension); // the dialog owns it from here on
    column->addWidget(mButtons);
    connect(mButtons, &QDialogButtonBox::accepted, this, &OXWPresetSaveDialog::accept);
    connect(mButtons, &QDialogButtonBox::rejected, this, &OXWPresetSaveDialog::reject);
    mNameEdit->selectAll();
}

QString OXWPresetSaveDialog::presetName() const
{
    return mNameEdit->text().trimmed();
}

void OXWPresetSaveDialog::accept()
{
    const QString name = presetName();
    const QString refused = mHandler ? mHandler->checkPresetName(name) : tr("No presets here.");
    if (!refused.isEmpty()) {
        QMessageBox::warning(this, windowTitle(), refused);
        return;
    }
    if (mHandler->hasUserPreset(name) &&
        QMessageBox::question(
            this, windowTitle(), tr("A preset named \"%1\" exists already. Replace it?").arg(name),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    QDialog::accept();
}

QString OXWPresetSaveDialog::getPresetName(OXWPresetDefaultHandler* handler,
                                           const QString& suggestion, QWidget* parent)
{
    OXWPresetSaveDialog dialog(handler, suggestion, parent);
    return dialog.exec() == QDialog::Accepted ? dialog.presetName() : QString();
}
