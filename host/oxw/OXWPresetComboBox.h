#pragma once

#include <OXMIOC.h>
#include <OXMObjectIOCPtr.h>
#include <OXMenum.h>
#include <OXWTransferFunction.h>

#include <QComboBox>
#include <QString>

class OXWPresetDefaultHandler;
class OXWPresetHandler;
class QAction;

// The preset selector of a tool: a combo box that lists the presets of one preset handler,
// applies the one the user picks and offers saving, removing, importing and exporting them.
//
// Configuration, also through Qt's property mechanism (forms set it that way):
// - "handlerID": the registered name of the handler whose presets the box shows
//   ("PresetClassificationHandler"); presetHandler() finds the handler registered under it.
// - "saveAction", "removeAction", "importAction", "exportAction": whether the box offers the
//   corresponding preset action (all off by default).
// - "groupIcons": whether presets are shown with their picture (getPresetPixmap; off by
//   default).
// - usesMainWindowIconSize: whether the items take the main window's icon size (off by
//   default).
// The preset type given at construction ("DefaultPreset", "UserPreset") narrows the listing to
// that type; a null type lists the built-in presets, then the user's.
//
// The list: the presets of each type (a separator between the groups), then a separator and
// the offered actions as items ("Save Preset...", ...; an action that can't act now is shown
// disabled). Without a handler the box is empty. The box lists again when its popup opens, when
// it is shown and when the handler announces a change of its stored presets.
//
// Picking a preset applies it to the handler's target as one user action, one undo step
// ("Apply preset"), and makes it the handler's current preset; a preset that can't be applied
// is reported as one line in the host's error channel and the box shows the current preset
// again. The current preset is the selected item; once the user changes something the preset
// holds, its text carries the marker " (modified)". Picking an action item runs the action and
// leaves the selection as it was.
//
// The actions, each also a QAction of the box (savePresetAction(), ...):
// - Save: asks for a name in OXWPresetSaveDialog (with the handler's extension widget;
//   replacing asks first) and saves the target; the saved preset becomes current.
// - Remove: removes the current user preset after asking.
// - Import: picks a preset file with the host's file dialog (identity OXM::Preset), checks it
//   completely and copies it among the user presets (replacing asks first). A ParaView
//   colour-map or 3D Slicer presets file (OXWTransferFunctionFile, told by its content) becomes
//   user presets through the handler (importTransferFunctions); when it holds several presets,
//   OXWPresetImportDialog lets the user pick some or import all.
// - Export: writes the current user preset to a file chosen with the host's file dialog; a
//   ".json" or ".xml" file receives the target's state as a ParaView colour map or as Slicer
//   presets (exportTransferFunction), also when no user preset is current.
// They need a handler that stores presets (OXWPresetDefaultHandler); their failures are
// explained in a message box.
class OXWPresetComboBox : public QComboBox, public OXMIOC
{
    Q_OBJECT
    Q_PROPERTY(QString handlerID READ handlerID WRITE setHandlerID)
    Q_PROPERTY(bool saveAction READ saveAction WRITE setSaveAction)
    Q_PROPERTY(bool removeAction READ removeAction WRITE setRemoveAction)
    Q_PROPERTY(bool importAction READ importAction WRITE setImportAction)
    Q_PROPERTY(bool exportAction READ exportAction WRITE setExportAction)
    Q_PROPERTY(bool groupIcons READ groupIcons WRITE setGroupIcons)

public:
    // Item data: a preset item's name and type (OXMenum::toInt()); an action item's ActionKind.
    static constexpr int NameRole = Qt::UserRole;
    static constexpr int TypeRole = Qt::UserRole + 1;
    static constexpr int ActionRole = Qt::UserRole + 2;
    enum ActionKind
    {
        NoAction,
        SaveAction,
        RemoveAction,
        ImportAction,
        ExportAction
    };

    explicit OXWPresetComboBox(QWidget* parent = nullptr, const char* name = nullptr,
                               const char* presetType = nullptr);
    ~OXWPresetComboBox() override;

    // The preset type given at construction; null when none was.
    QString presetType() const { return mPresetType; }

    QString handlerID() const { return mHandlerID; }
    void setHandlerID(const QString& id) { mHandlerID = id; }
    // The handler registered under handlerID(); null when there is none.
    OXWPresetHandler* presetHandler() const;

    bool saveAction() const { return mSaveAction; }
    void setSaveAction(bool on) { mSaveAction = on; }
    bool removeAction() const { return mRemoveAction; }
    void setRemoveAction(bool on) { mRemoveAction = on; }
    bool importAction() const { return mImportAction; }
    void setImportAction(bool on) { mImportAction = on; }
    bool exportAction() const { return mExportAction; }
    void setExportAction(bool on) { mExportAction = on; }
    bool groupIcons() const { return mGroupIcons; }
    void setGroupIcons(bool on) { mGroupIcons = on; }

    bool usesMainWindowIconSize() const { return mUsesMainWindowIconSize; }
    void setUsesMainWindowIconSize(bool on) { mUsesMainWindowIconSize = on; }

    QAction* savePresetAction() const { return mActions[SaveAction]; }
    QAction* removePresetAction() const { return mActions[RemoveAction]; }
    QAction* importPresetAction() const { return mActions[ImportAction]; }
    QAction* exportPresetAction() const { return mActions[ExportAction]; }

    // The item of the preset of that name; -1 when it is not listed.
    int findPreset(const QString& name) const;
    // The item of an action; -1 when it is not offered.
    int findAction(ActionKind kind) const;

    void iocCallback(OXMIOC::Message& message) override;

public slots:
    // Lists the handler's presets and the offered actions again.
    void refresh();
    // Applies a listed preset as one user action; false when it can't be applied.
    bool applyPreset(const QString& name, OXMenum type);
    void savePreset();
    void removePreset();
    void importPreset();
    void exportPreset();

protected:
    void showPopup() override;
    void showEvent(QShowEvent* event) override;

private:
    void itemActivated(int index);
    // Selects the current preset's item with its marker and enables the actions.
    void showCurrent();
    void addActionItems();
    void importNativePreset(const QString& fileName);
    void importForeignPresets(const QString& fileName,
                              const std::vector<OXWTransferFunction>& presets);
    // The handler when it stores presets.
    OXWPresetDefaultHandler* storingHandler() const;
    // The current preset when it is a user preset; empty otherwise.
    QString currentUserPreset() const;
    bool confirm(const QString& question);
    // Asks before replacing those of the user presets named that exist; true when none does.
    bool confirmReplacing(const QStringList& names);
    void warn(const QString& text);

    QString mPresetType;
    QString mHandlerID;
    bool mSaveAction = false;
    bool mRemoveAction = false;
    bool mImportAction = false;
    bool mExportAction = false;
    bool mGroupIcons = false;
    bool mUsesMainWindowIconSize = false;
    QAction* mActions[5] = {};
    OXMObjectIOCPtr mHandler;
};
