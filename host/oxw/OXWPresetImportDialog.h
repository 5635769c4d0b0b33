#pragma once

#include "OXWTransferFunction.h"

#include <QDialog>

#include <vector>

class QListWidget;
class QPushButton;

// The choice among the presets of a file that holds several (ParaView's colour-map library,
// Slicer's presets file): a list "mPresetList" with one line per preset
// (OXWTransferFunctionFile::describe; presets that are refused are shown but can't be chosen),
// and the buttons "Import" (the selected presets, enabled while one is selected), "Import All"
// (every usable preset) and "Cancel".
class OXWPresetImportDialog : public QDialog
{
    Q_OBJECT

public:
    OXWPresetImportDialog(const std::vector<OXWTransferFunction>& presets, const QString& fileName,
                          QWidget* parent = nullptr);

    // The indices of the presets to import, in the file's order (after accept).
    std::vector<int> chosen() const { return mChosen; }
    QListWidget* presetList() const { return mPresetList; }
    QPushButton* importButton() const { return mImportButton; }
    QPushButton* importAllButton() const { return mImportAllButton; }

    // Shows the dialog; false when cancelled.
    static bool choose(const std::vector<OXWTransferFunction>& presets, const QString& fileName,
                       std::vector<int>& chosen, QWidget* parent = nullptr);

private:
    void finish(bool all);

    QListWidget* mPresetList;
    QPushButton* mImportButton;
    QPushButton* mImportAllButton;
    std::vector<int> mChosen;
};
