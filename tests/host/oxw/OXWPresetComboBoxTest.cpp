#include "OXWPresetComboBox.h"

#include "OXWModalAnswers.h"
#include "OXWPresetHandler.h"
#include "OXWPresetImportDialog.h"
#include "OXWPresetSaveDialog.h"
#include "OXWPresetTestHandler.h"

#include <OXMError.h>
#include <OXMRegisteredEnum.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWUndoStack.h>

#include <QAction>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

TEST(OXWPresetComboBox, FindsTheHandlerRegisteredUnderItsHandlerID)
{
    static const OXMRegisteredEnum id("ComboBoxTestHandler", false, "oxwpresettests");
    OXWPresetComboBox box(nullptr, "box", nullptr);
    EXPECT_EQ(box.presetHandler(), nullptr);
    box.setProperty("handlerID", QStringLiteral("ComboBoxTestHandler"));
    EXPECT_EQ(box.presetHandler(), nullptr);
    {
        OXWPresetHandler handler(id);
        EXPECT_EQ(box.presetHandler(), &handler);
    }
    EXPECT_EQ(box.presetHandler(), nullptr);
}

// --- with a handler that stores presets --------------------------------------------------------

namespace {

class PresetBox : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.filePath("settings"));
        OXWFileDialog::clearTestAnswers();
        handler.store().setDirectory(folder.filePath("presets"));
        target = new PresetTestRecord;
        holdTarget = target;
        handler.setTargetObject(target);
        box.setProperty("handlerID", QStringLiteral("PresetTestHandler"));
        for (const char* flag : {"saveAction", "removeAction", "importAction", "exportAction"})
            box.setProperty(flag, true);
        mErrors =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }
    void TearDown() override
    {
        OXMError::removeHandler(mErrors);
        OXWFileDialog::clearTestAnswers();
    }
    QStringList texts() const
    {
        QStringList t;
        for (int i = 0; i < box.count(); ++i)
            t << box.itemText(i);
        return t;
    }
    void pick(const QString& text)
    {
        const int index = box.findText(text);
        ASSERT_GE(index, 0) << text.toStdString();
        box.setCurrentIndex(index);
        emit box.activated(index);
    }
    bool saveAs(const QString& name, float scale)
    {
        target->setValue(OXM::Scale, scale);
        OXWModalAnswers answers{OXWModalAnswers::type(name)};
        box.savePresetAction()->trigger();
        return answers.pending() == 0 && handler.hasUserPreset(name);
    }

    QTemporaryDir folder;
    OXWApplication app;
    PresetTestHandler handler;
    PresetTestRecord* target = nullptr;
    OXMObjectPtr holdTarget;
    OXWPresetComboBox box{nullptr, "box", nullptr};
    QStringList errors;

private:
    int mErrors = 0;
};

} // namespace

TEST_F(PresetBox, ListsBuiltInThenUserPresetsThenTheOfferedActions)
{
    box.refresh();
    EXPECT_EQ(texts(), (QStringList{"Ramp", "", "Save Preset...", "Remove Preset...",
                                    "Import Preset...", "Export Preset..."}));
    ASSERT_TRUE(saveAs("Bone", 0.25f));
    EXPECT_EQ(texts(), (QStringList{"Ramp", "", "Bone", "", "Save Preset...", "Remove Preset...",
                                    "Import Preset...", "Export Preset..."}));
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone")) << "the saved preset is current";
    EXPECT_TRUE(box.removePresetAction()->isEnabled());

    OXWPresetComboBox userOnly(nullptr, nullptr, "UserPreset");
    userOnly.setProperty("handlerID", QStringLiteral("PresetTestHandler"));
    userOnly.refresh();
    EXPECT_EQ(userOnly.count(), 1);
}

TEST_F(PresetBox, PickingAPresetAppliesItAsOneUndoStepAndAnEditMarksItModified)
{
    ASSERT_TRUE(saveAs("Bone", 0.25f));
    target->setValue(OXM::Scale, 3.0f);
    const int steps = app.undoStack()->count();
    pick("Ramp");
    EXPECT_EQ(target->scale(), 0.5f);
    EXPECT_EQ(app.undoStack()->count(), steps + 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Apply preset \"Ramp\""));
    EXPECT_EQ(box.currentText(), QStringLiteral("Ramp"));
    EXPECT_FALSE(box.removePresetAction()->isEnabled()) << "built-in presets stay";

    target->setValue(OXM::Scale, 0.75f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Ramp (modified)"));
    pick("Bone");
    EXPECT_EQ(target->scale(), 0.25f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone"));
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_EQ(target->scale(), 0.75f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone (modified)"));

    // A preset whose file went bad: one line in the error channel, the selection stays.
    QFile file(handler.store().directory() + "/Bone.oxwpreset");
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QByteArray bytes =
        file.readAll().replace("\"OXM::Scale\": 0.25", "\"OXM::Scale\": \"x\"");
    file.resize(0);
    file.write(bytes);
    file.close();
    pick("Ramp");
    pick("Bone");
    EXPECT_EQ(target->scale(), 0.5f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Ramp"));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains("\"Bone\" could not be applied")) << errors[0].toStdString();
}

TEST_F(PresetBox, SavingShowsTheExtensionAndAsksBeforeReplacing)
{
    ASSERT_TRUE(saveAs("Bone", 0.25f));
    target->setValue(OXM::Scale, 0.5f);
    bool extensionShown = false;
    OXWModalAnswers answers{[&](QWidget* dialog) {
                                auto* save = qobject_cast<OXWPresetSaveDialog*>(dialog);
                                extensionShown = save &&
                                                 qobject_cast<QCheckBox*>(save->extension()) &&
                                                 save->extension()->isVisibleTo(save);
                                OXWModalAnswers::type("Ramp")(dialog);
                            },
                            OXWModalAnswers::button(QMessageBox::Ok), // built-in name refused
                            OXWModalAnswers::type("Bone"),
                            OXWModalAnswers::button(QMessageBox::No), // kept open
                            OXWModalAnswers::type("Bone"),
                            OXWModalAnswers::button(QMessageBox::Yes)};
    box.savePresetAction()->trigger();
    EXPECT_TRUE(extensionShown);
    EXPECT_EQ(answers.pending(), 0u);
    EXPECT_EQ(answers.unexpected, 0);
    ASSERT_EQ(answers.texts.size(), 3);
    EXPECT_TRUE(answers.texts[0].contains("name of a built-in preset"));
    EXPECT_TRUE(answers.texts[1].contains("\"Bone\" exists already. Replace it?"));
    EXPECT_EQ(dynamic_cast<PresetTestRecord*>(handler.loadPreset("Bone", OXM::UserPreset, 0).get())
                  ->scale(),
              0.5f);
}

TEST_F(PresetBox, ExportImportAndRemoveGoThroughTheHostsDialogs)
{
    ASSERT_TRUE(saveAs("Bone", 0.25f));
    const QString shared = folder.filePath("Bone.oxwpreset");
    OXWFileDialog::queueTestAnswer({shared, QString()});
    box.exportPresetAction()->trigger();
    EXPECT_EQ(OXWFileDialog::lastRequest().identity, OXM::Preset);
    ASSERT_TRUE(QFile::exists(shared));
    {
        OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Yes)};
        box.removePresetAction()->trigger();
        EXPECT_TRUE(answers.texts.value(0).contains("Remove the preset \"Bone\"?"));
    }
    EXPECT_EQ(box.findPreset("Bone"), -1);
    OXWFileDialog::queueTestAnswer({shared, QString()});
    box.importPresetAction()->trigger();
    EXPECT_GE(box.findPreset("Bone"), 0);

    OXWFileDialog::queueTestAnswer({folder.filePath("settings"), QString()});
    OXWModalAnswers answers{OXWModalAnswers::button(QMessageBox::Ok)};
    box.importPresetAction()->trigger();
    EXPECT_TRUE(answers.texts.value(0).contains("is no usable preset file"));
}

// A file of several presets of another viewer: all of it, or the one picked, becomes user
// presets; one log line for a preset imported without something it holds.
TEST_F(PresetBox, ImportsAllOrThePickedPresetsOfAnotherViewersFile)
{
    using Dialog = OXWPresetImportDialog;
    const struct
    {
        OXWModalAnswers::Answer answer;
        QStringList imported;
        int logLines;
    } rows[] = {{[](QWidget* w) { qobject_cast<Dialog*>(w)->importAllButton()->click(); },
                 {"CT-Bone", "MR-Flat"},
                 1},
                {[](QWidget* w) {
                     qobject_cast<Dialog*>(w)->presetList()->item(0)->setSelected(true);
                     qobject_cast<Dialog*>(w)->importButton()->click();
                 },
                 {"CT-Bone"},
                 0}};
    for (const auto& row : rows) {
        for (const char* name : {"CT-Bone", "MR-Flat"})
            handler.deletePreset(name, OXM::UserPreset);
        errors.clear();
        OXWFileDialog::queueTestAnswer({QStringLiteral(OXW_TEST_PRESET_FILES "/slicer.xml"), {}});
        OXWModalAnswers answers{row.answer};
        box.importPresetAction()->trigger();
        EXPECT_EQ(answers.unexpected, 0);
        QStringList names;
        handler.getPresetList(names, OXM::UserPreset);
        EXPECT_EQ(names, row.imported);
        EXPECT_EQ(errors.size(), row.logLines);
        EXPECT_EQ(
            dynamic_cast<PresetTestRecord*>(handler.loadPreset("CT-Bone", OXM::UserPreset, 0).get())
                ->scale(),
            4.0f);
    }
}
