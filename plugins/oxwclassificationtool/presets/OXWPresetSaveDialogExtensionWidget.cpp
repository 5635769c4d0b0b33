#include "OXWPresetSaveDialogExtensionWidget.h"

#include "OXWPresetClassificationHandler.h"

OXWPresetSaveDialogExtensionWidget::OXWPresetSaveDialogExtensionWidget(
    OXWPresetClassificationHandler* handler, QWidget* parent, const char* name)
    : QCheckBox(parent), mHandler(handler)
{
    if (name)
        setObjectName(QString::fromLatin1(name));
    setText(tr("Absolute Preset"));
    if (mHandler)
        setChecked(mHandler->isAbsolutePreset());
    connect(this, &QCheckBox::clicked, this, &OXWPresetSaveDialogExtensionWidget::triggerHandler);
}

void OXWPresetSaveDialogExtensionWidget::triggerHandler()
{
    if (mHandler)
        mHandler->setAbsolutePreset(isChecked());
}
