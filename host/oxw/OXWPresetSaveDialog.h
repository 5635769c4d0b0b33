#pragma once

#include <QDialog>

class OXWPresetDefaultHandler;
class QDialogButtonBox;
class QLineEdit;

// The dialog that asks for the name of a new user preset: a line "Name", the handler's save
// dialog extension (createSaveDialogExtension, taken over by the dialog) below it, and OK and
// Cancel.
//
// OK checks the name: a name the handler refuses (checkPresetName) is explained in a message
// box and the dialog stays; the name of an existing user preset asks "Replace?" first (No
// keeps the dialog open). The name is trimmed. The extension acts at once (a check box writes
// its handler's flag when clicked); cancelling does not undo that.
class OXWPresetSaveDialog : public QDialog
{
    Q_OBJECT

public:
    OXWPresetSaveDialog(OXWPresetDefaultHandler* handler, const QString& suggestion,
                        QWidget* parent = nullptr);

    QString presetName() const;
    QLineEdit* nameEdit() const { return mNameEdit; }
    // The handler's extension inside the dialog; null when the handler has none.
    QWidget* extension() const { return mExtension; }

    // Shows the dialog; the chosen name, or an empty string when cancelled.
    static QString getPresetName(OXWPresetDefaultHandler* handler, const QString& suggestion,
                                 QWidget* parent = nullptr);

public slots:
    void accept() override;

private:
    OXWPresetDefaultHandler* mHandler;
    QLineEdit* mNameEdit;
    QWidget* mExtension;
    QDialogButtonBox* mButtons;
};
