#pragma once

#include <QComboBox>
#include <QString>

class OXWPresetHandler;

// The preset selector of a tool: a combo box that lists the presets of one preset handler and
// offers saving, removing, importing and exporting them. The listing and the preset actions
// come with the preset handler (OXWPresetHandler); until a handler provides presets the box
// stays empty.
//
// Configuration, also through Qt's property mechanism (forms set it that way):
// - "handlerID": the registered name of the handler whose presets the box shows
//   ("PresetClassificationHandler"); presetHandler() finds the handler registered under it.
// - "saveAction", "removeAction", "importAction", "exportAction": whether the box offers the
//   corresponding preset action (all off by default).
// - "groupIcons": whether presets are shown with the icon of their group (off by default).
// - usesMainWindowIconSize: whether the items take the main window's icon size (off by
//   default).
// The preset type given at construction narrows the listing to one type of the handler's
// presets; a null type lists all of them.
class OXWPresetComboBox : public QComboBox
{
    Q_OBJECT
    Q_PROPERTY(QString handlerID READ handlerID WRITE setHandlerID)
    Q_PROPERTY(bool saveAction READ saveAction WRITE setSaveAction)
    Q_PROPERTY(bool removeAction READ removeAction WRITE setRemoveAction)
    Q_PROPERTY(bool importAction READ importAction WRITE setImportAction)
    Q_PROPERTY(bool exportAction READ exportAction WRITE setExportAction)
    Q_PROPERTY(bool groupIcons READ groupIcons WRITE setGroupIcons)

public:
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

private:
    QString mPresetType;
    QString mHandlerID;
    bool mSaveAction = false;
    bool mRemoveAction = false;
    bool mImportAction = false;
    bool mExportAction = false;
    bool mGroupIcons = false;
    bool mUsesMainWindowIconSize = false;
};
