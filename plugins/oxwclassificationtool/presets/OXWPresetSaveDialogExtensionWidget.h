#pragma once

#include <QCheckBox>

class OXWPresetClassificationHandler;

// The classification handler's part of the host's save dialog: one check box, "Absolute
// Preset", through which the user decides whether the preset about to be saved is applied
// later at its stored grey values (checked) or stretched onto the grey-value range of the data
// it is applied to. It shows the handler's absolute flag when it is made and writes it on
// every click, at once (cancelling the dialog does not restore it). The handler is not owned;
// a widget made without one never writes.
class OXWPresetSaveDialogExtensionWidget : public QCheckBox
{
    Q_OBJECT

public:
    OXWPresetSaveDialogExtensionWidget(OXWPresetClassificationHandler* handler,
                                       QWidget* parent = nullptr, const char* name = nullptr);

public slots:
    void triggerHandler();

private:
    OXWPresetClassificationHandler* mHandler;
};
