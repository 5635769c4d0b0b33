// The host's preset machinery with a handler of a simple kind: the registry of handlers; user
// presets as files (saved, listed, loaded, removed; names refused; a read-only folder; files
// that are no usable preset skipped with one line each; a failed save leaving the previous file
// as it was; background writes listed at once, stored all or none and waited for); and the
// preset box that applies, saves, imports, exports and removes them.

#include "OXWModalAnswers.h"
#include "OXWPresetComboBox.h"
#include "OXWPresetImportDialog.h"
#include "OXWPresetSaveDialog.h"

#include <OXMClassFactory.h>
#include <OXMError.h>
#include <OXMMetaClass.h>
#include <OXMObjectIOCPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleValueOP.h>
#include <OXWApplication.h>
#include <OXWFileDialog.h>
#include <OXWPresetDefaultHandler.h>
#include <OXWUndoStack.h>

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// A record of one value, OXM::Scale.
class PresetTestRecord : public OXMObject
{
public:
    PresetTestRecord() { addProperty(OXM::Scale, new OXMSingleValueOP<float>(1.0f), true); }
    static const OXMMetaClass* metaClass()
    {
        static OXMDefaultClassFactory<PresetTestRecord> factory;
        static OXMMetaClass meta("PresetTestRecord", sizeof(PresetTestRecord),
                                 OXMObject::metaClass(), &factory, "oxwpresettests");
        return &meta;
    }
    const OXMMetaClass* getMetaClass() const override { return metaClass(); }
    float scale() const
    {
        float v = 0.0f;
        getValue(OXM::Scale, v);
        return v;
    }
};

// The target and the records are PresetTestRecord objects. There is one built-in preset,
// "Ramp" (scale 0.5); the save dialog extension is a check box; a change of the target's scale
// marks the current preset modified. Another viewer's preset becomes a record whose scale is
// its number of colour points.
class PresetTestHandler : public OXWPresetDefaultHandler
{
public:
    PresetTestHandler() : OXWPresetDefaultHandler(id(), QStringLiteral("Test"))
    {
        PresetTestRecord::metaClass();
        mTarget.setListener(this);
    }
    static OXMenum id()
    {
        static const OXMRegisteredEnum registration("PresetTestHandler", false, "oxwpresettests");
        return registration;
    }
    bool getPresetList(QStringList& list, OXMenum type) const override
    {
        if (type != OXM::DefaultPreset)
            return OXWPresetDefaultHandler::getPresetList(list, type);
        list = QStringList{QStringLiteral("Ramp")};
        return true;
    }
    bool saveTargetAsPreset(const QString& name, OXMenum type) override
    {
        OXMObjectPtr record(new PresetTestRecord);
        return record->copyProperty(getTargetObject(), OXM::Scale) &&
               savePreset(record.get(), name, type);
    }
    bool applyPresetToTarget(const QString& name, OXMenum type) override
    {
        OXMObject* target = getTargetObject();
        if (type == OXM::DefaultPreset)
            return target && name == QLatin1String("Ramp") && target->setValue(OXM::Scale, 0.5f);
        const OXMObjectPtr record = loadPreset(name, type, 0);
        return target && record && target->copyProperty(record.get(), OXM::Scale);
    }
    OXMObjectPtr recordFromTransferFunction(const OXWTransferFunction& preset) const override
    {
        OXMObjectPtr record(new PresetTestRecord);
        record->setValue(OXM::Scale, float(preset.colours.size()));
        return record;
    }
    QWidget* createSaveDialogExtension() override { return new QCheckBox(QStringLiteral("Extra")); }
    bool setTargetObject(OXMObject* target) override
    {
        mTarget = target;
        return OXWPresetDefaultHandler::setTargetObject(target);
    }
    void iocCallback(OXMIOC::Message& message) override
    {
        if (message.getInitialSender() == mTarget.get() && message.getPropertyID() == OXM::Scale)
            setCurrentPresetModified(true);
        OXWPresetDefaultHandler::iocCallback(message);
    }

private:
    OXMObjectIOCPtr mTarget;
};

// A handler with its presets in a temporary folder, its target, and the error channel's lines.
class Presets : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.filePath("settings"));
        OXWFileDialog::clearTestAnswers();
        handler.store().setDirectory(folder.filePath("presets"));
        handler.setTargetObject(target);
        mErrors =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }
    void TearDown() override
    {
        OXMError::removeHandler(mErrors);
        OXWFileDialog::clearTestAnswers();
    }
    bool save(const QString& name, float scale)
    {
        target->setValue(OXM::Scale, scale);
        return handler.saveTargetAsPreset(name, OXM::UserPreset);
    }
    QStringList userPresets() const
    {
        QStringList names;
        handler.getPresetList(names, OXM::UserPreset);
        return names;
    }
    float loadedScale(const QString& name) const
    {
        const OXMObjectPtr record = handler.loadPreset(name, OXM::UserPreset, 0);
        auto* r = dynamic_cast<PresetTestRecord*>(record.get());
        return r ? r->scale() : -1.0f;
    }
    QString fileOf(const QString& name) const
    {
        return handler.store().directory() + "/" + name + ".oxwpreset";
    }
    static QByteArray contents(const QString& fileName)
    {
        QFile file(fileName);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void write(const QString& fileName, const QByteArray& bytes)
    {
        QFile file(fileName);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir folder;
    OXWApplication app;
    PresetTestHandler handler;
    PresetTestRecord* target = new PresetTestRecord;
    OXMObjectPtr holdTarget{target};
    QStringList errors;

private:
    int mErrors = 0;
};

OXMenum testID(const char* name)
{
    // Registrations live for the process, like the identifiers of real handlers.
    static std::vector<std::unique_ptr<OXMRegisteredEnum>> registrations;
    registrations.push_back(std::make_unique<OXMRegisteredEnum>(name, false, "oxwpresettests"));
    return *registrations.back();
}

} // namespace

// A handler is registered under its identifier while it lives (a reference released does not
// destroy it: its creator owns it); a later one shadows an earlier one until it goes. A preset
// box finds the handler of its handlerID.
TEST(OXWPresetHandler, TheRegistryAnswersTheLatestLivingHandlerOfAnIdentifier)
{
    const OXMenum id = testID("Shadowed");
    const OXMenum other = testID("Other");
    OXWPresetComboBox box(nullptr, "box", nullptr);
    EXPECT_EQ(box.presetHandler(), nullptr);
    box.setProperty("handlerID", QStringLiteral("Shadowed"));
    EXPECT_EQ(box.presetHandler(), nullptr);
    auto first = std::make_unique<OXWPresetHandler>(id);
    OXWPresetHandler second(other);
    EXPECT_EQ(first->getHandlerID(), id);
    EXPECT_EQ(box.presetHandler(), first.get());
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(other), &second);
    EXPECT_TRUE(second.isOfType("OXWPresetHandler") && second.isOfType("OXMObject"));
    {
        OXMObjectPtr hold(first.get());
        EXPECT_EQ(first->getRefCount(), 1);
    }
    auto later = std::make_unique<OXWPresetHandler>(id);
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), later.get());
    later.reset();
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), first.get());
    later = std::make_unique<OXWPresetHandler>(id);
    first.reset(); // withdrawing the earlier one leaves the later one
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(id), later.get());
    later.reset();
    EXPECT_EQ(box.presetHandler(), nullptr);
    OXWPresetHandler invalid{OXMenum()};
    EXPECT_FALSE(invalid.getHandlerID().isValid());
    EXPECT_EQ(OXWPresetHandler::getPresetHandler(OXMenum()), nullptr);

    auto object = std::make_unique<OXMObject>(); // target and histogram read null once gone
    EXPECT_TRUE(second.setTargetObject(object.get()));
    EXPECT_TRUE(second.setHistogramObject(object.get()));
    EXPECT_EQ(second.getHistogramObject(), object.get());
    object.reset();
    EXPECT_EQ(second.getTargetObject(), nullptr);
    EXPECT_EQ(second.getHistogramObject(), nullptr);
}

TEST_F(Presets, SavedPresetsAreListedByNameAndLoadAndGoWhenRemoved)
{
    ASSERT_TRUE(save("bone", 0.25f));
    ASSERT_TRUE(save("CT/Lung", 0.75f));
    ASSERT_TRUE(save("Ärger", 0.5f));
    EXPECT_EQ(userPresets(), (QStringList{"bone", "CT/Lung", "Ärger"}));
    EXPECT_EQ(loadedScale("CT/Lung"), 0.75f);
    EXPECT_TRUE(QFile::exists(fileOf("CT_Lung")));
    EXPECT_TRUE(QFile::exists(fileOf("_rger")));
    ASSERT_TRUE(save("bone", 0.125f)); // the same name replaces
    EXPECT_EQ(loadedScale("bone"), 0.125f);
    EXPECT_EQ(QDir(handler.store().directory()).entryList(QDir::Files).size(), 3);
    handler.setCurrentPreset("bone");
    EXPECT_TRUE(handler.deletePreset("bone", OXM::UserPreset));
    EXPECT_EQ(userPresets(), (QStringList{"CT/Lung", "Ärger"}));
    EXPECT_TRUE(handler.getCurrentPreset().isEmpty());
    EXPECT_FALSE(handler.deletePreset("bone", OXM::UserPreset));
    EXPECT_TRUE(handler.lastError().contains("no preset named \"bone\""));
    EXPECT_FALSE(handler.loadPreset("bone", OXM::UserPreset, 0));
    EXPECT_TRUE(errors.isEmpty());
}

TEST_F(Presets, NamesTheUserMayNotGiveAreRefusedWithTheReason)
{
    const std::pair<QString, const char*> cases[] = {
        {"", "needs a name"},
        {"   ", "needs a name"},
        {QString(1000, 'x'), "at most 200 characters; this one has 1000"},
        {QString(200, 'x'), ""},
        {"Ramp", "name of a built-in preset"},
        {"two\nlines", "control characters"},
        {"tab\there", "control characters"},
        {"CT/Lung \\ 2", ""},
    };
    for (const auto& [name, reason] : cases) {
        SCOPED_TRACE(name.left(20).toStdString());
        EXPECT_EQ(handler.checkPresetName(name).isEmpty(), !*reason);
        EXPECT_TRUE(handler.checkPresetName(name).contains(reason));
        EXPECT_EQ(save(name, 0.5f), !*reason);
        EXPECT_TRUE(handler.lastError().contains(reason));
    }
    EXPECT_EQ(userPresets().size(), 2);
}

// A read-only folder is said so and its presets still load; a save that fails leaves the
// previous file as it was.
TEST_F(Presets, AFailedSaveLeavesThePreviousFileAsItWas)
{
    ASSERT_TRUE(save("bone", 0.25f));
    const QByteArray before = contents(fileOf("bone"));
    PresetTestRecord odd;
    odd.setAutoDelete(false);
    odd.addProperty(OXM::Name, new OXMSingleValueOP<QString>, true); // no document holds it
    EXPECT_FALSE(handler.savePreset(&odd, "bone", OXM::UserPreset));
    EXPECT_TRUE(handler.lastError().contains("can't be stored"));
    EXPECT_EQ(contents(fileOf("bone")), before);
    const QString dir = handler.store().directory();
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_FALSE(save("lung", 0.5f));
    EXPECT_TRUE(handler.lastError().contains("is read-only")) << handler.lastError().toStdString();
    EXPECT_EQ(userPresets(), QStringList{"bone"});
    EXPECT_EQ(loadedScale("bone"), 0.25f);
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(Presets, UnusableFilesAreSkippedWithOneLineEachNamingFileAndReason)
{
    ASSERT_TRUE(save("good", 0.5f));
    const QByteArray good = contents(fileOf("good"));
    const struct
    {
        const char* file;
        QByteArray bytes;
        const char* reason;
    } cases[] = {
        {"broken", "{ this is not json", "not valid JSON"},
        {"truncated", good.left(good.size() - 40), "not valid JSON"},
        {"newer", QByteArray(good).replace("\"version\": 1", "\"version\": 7"), "newer version"},
        {"other", QByteArray(good).replace("\"kind\": \"preset\"", "\"kind\": \"scene\""),
         "holds no preset"},
        {"foreign", QByteArray(good).replace("PresetTestHandler", "Else"), "of another kind"},
        {"twin", good, "another file holds a preset of the name \"good\""},
        {"nameless", QByteArray(good).replace("\"name\": \"good\"", "\"name\": \"\""),
         "no valid name"},
    };
    for (const auto& c : cases)
        write(fileOf(c.file), c.bytes);
    EXPECT_EQ(userPresets(), QStringList{"good"});
    ASSERT_EQ(errors.size(), int(std::size(cases)));
    for (const auto& c : cases) {
        EXPECT_EQ(errors.filter(QDir::toNativeSeparators(fileOf(c.file)) + " skipped: ").size(), 1)
            << c.file;
        EXPECT_FALSE(errors.filter(c.reason).isEmpty()) << c.reason;
    }
    userPresets();
    EXPECT_EQ(errors.size(), int(std::size(cases))) << "reported once, not at every listing";
    // A file that is fine until its objects are read: listed, but never half-applied.
    write(fileOf("good"), QByteArray(good).replace("\"OXM::Scale\": 0.5", "\"OXM::Scale\": []"));
    target->setValue(OXM::Scale, 2.0f);
    EXPECT_FALSE(handler.applyPresetToTarget("good", OXM::UserPreset));
    EXPECT_TRUE(handler.lastError().contains("/OXM::Scale: expected a number"));
    EXPECT_EQ(target->scale(), 2.0f);
}

// Background writes are listed at once and stored all or none: when one of them can't be
// written, a preset they replaced gets its bytes back and a new one goes, with one line.
TEST_F(Presets, BackgroundWritesAreListedAtOnceAndStoredAllOrNone)
{
    OXWPresetStore& store = handler.store();
    QString error;
    ASSERT_TRUE(store.saveInBackground({"bone", "lung"},
                                       {new PresetTestRecord, new PresetTestRecord}, error));
    EXPECT_EQ(userPresets(), (QStringList{"bone", "lung"})) << "listed before they are written";
    EXPECT_EQ(loadedScale("lung"), 1.0f) << "loading waits for the write";
    const QByteArray bone = contents(fileOf("bone"));
    auto* odd = new PresetTestRecord;
    odd->addProperty(OXM::Name, new OXMSingleValueOP<QString>, true); // no document holds it
    ASSERT_TRUE(store.saveInBackground({"bone", "new", "odd"},
                                       {new PresetTestRecord, new PresetTestRecord, odd}, error));
    EXPECT_EQ(userPresets().size(), 4);
    store.waitForWrites();
    EXPECT_EQ(userPresets(), (QStringList{"bone", "lung"}));
    EXPECT_EQ(contents(fileOf("bone")), bone);
    EXPECT_EQ(QDir(store.directory()).entryList(QDir::Files).size(), 2);
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains("\"odd\" can't be stored")) << errors[0].toStdString();
}

TEST_F(Presets, TheStoreWaitsForItsBackgroundWritesWhenItGoes)
{
    std::vector<OXMObjectPtr> records;
    QStringList names;
    for (int i = 0; i < 20; ++i) {
        records.emplace_back(new PresetTestRecord);
        names << QString::number(i);
    }
    {
        OXWPresetStore store(QStringLiteral("oxwpresettests::PresetTestHandler"));
        store.setDirectory(folder.filePath("gone"));
        QString error;
        ASSERT_TRUE(store.saveInBackground(names, std::move(records), error));
    }
    EXPECT_EQ(QDir(folder.filePath("gone")).entryList(QDir::Files).size(), 20);
}

// --- the preset box ----------------------------------------------------------------------------

namespace {

class PresetBox : public Presets
{
protected:
    void SetUp() override
    {
        Presets::SetUp();
        box.setProperty("handlerID", QStringLiteral("PresetTestHandler"));
        for (const char* flag : {"saveAction", "removeAction", "importAction", "exportAction"})
            box.setProperty(flag, true);
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
    bool saveInBox(const QString& name, float scale)
    {
        target->setValue(OXM::Scale, scale);
        OXWModalAnswers answers{OXWModalAnswers::type(name)};
        box.savePresetAction()->trigger();
        return answers.pending() == 0 && handler.hasUserPreset(name);
    }

    OXWPresetComboBox box{nullptr, "box", nullptr};
};

} // namespace

TEST_F(PresetBox, ListsThePresetsAndAppliesThePickedOneAsOneUndoStep)
{
    box.refresh();
    const QStringList actions = {"", "Save Preset...", "Remove Preset...", "Import Preset...",
                                 "Export Preset..."};
    EXPECT_EQ(texts(), QStringList{"Ramp"} + actions);
    ASSERT_TRUE(saveInBox("Bone", 0.25f));
    EXPECT_EQ(texts(), QStringList({"Ramp", "", "Bone"}) + actions);
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone")) << "the saved preset is current";
    EXPECT_TRUE(box.removePresetAction()->isEnabled());
    OXWPresetComboBox userOnly(nullptr, nullptr, "UserPreset");
    userOnly.setProperty("handlerID", QStringLiteral("PresetTestHandler"));
    userOnly.refresh();
    EXPECT_EQ(userOnly.count(), 1);
    // Picking a preset applies it as one undo step; an edit marks it modified; a preset whose
    // file went bad is one line in the error channel and the selection stays.
    target->setValue(OXM::Scale, 3.0f);
    const int steps = app.undoStack()->count();
    pick("Ramp");
    EXPECT_EQ(target->scale(), 0.5f);
    EXPECT_EQ(app.undoStack()->count(), steps + 1);
    EXPECT_EQ(app.undoStack()->undoName(), QStringLiteral("Apply preset \"Ramp\""));
    EXPECT_FALSE(box.removePresetAction()->isEnabled()) << "built-in presets stay";
    target->setValue(OXM::Scale, 0.75f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Ramp (modified)"));
    pick("Bone");
    EXPECT_EQ(target->scale(), 0.25f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone"));
    ASSERT_TRUE(app.undoStack()->undo());
    EXPECT_EQ(target->scale(), 0.75f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Bone (modified)"));

    write(fileOf("Bone"),
          contents(fileOf("Bone")).replace("\"OXM::Scale\": 0.25", "\"OXM::Scale\": \"x\""));
    pick("Ramp");
    pick("Bone");
    EXPECT_EQ(target->scale(), 0.5f);
    EXPECT_EQ(box.currentText(), QStringLiteral("Ramp"));
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains("\"Bone\" could not be applied")) << errors[0].toStdString();
}

TEST_F(PresetBox, SavingShowsTheExtensionAndAsksBeforeReplacing)
{
    ASSERT_TRUE(saveInBox("Bone", 0.25f));
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
    EXPECT_EQ(loadedScale("Bone"), 0.5f);
}

TEST_F(PresetBox, ExportImportAndRemoveGoThroughTheHostsDialogs)
{
    ASSERT_TRUE(saveInBox("Bone", 0.25f));
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
        EXPECT_EQ(userPresets(), row.imported);
        EXPECT_EQ(errors.size(), row.logLines);
        EXPECT_EQ(loadedScale("CT-Bone"), 4.0f);
    }
}
