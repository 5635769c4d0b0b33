// User presets as files: saved, listed, loaded and removed; names the user may or may not
// give; a read-only folder; files that are no usable preset are skipped with one line each in
// the error channel; a failed save leaves the previous file as it was. (Import and export:
// OXWPresetComboBoxTest.)

#include "OXWPresetTestHandler.h"

#include <OXMError.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class PresetStorage : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        handler.store().setDirectory(folder.filePath("presets"));
        target.setAutoDelete(false);
        handler.setTargetObject(&target);
        mErrors =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }
    void TearDown() override { OXMError::removeHandler(mErrors); }

    bool save(const QString& name, float scale)
    {
        target.setValue(OXM::Scale, scale);
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
    PresetTestHandler handler;
    PresetTestRecord target;
    QStringList errors;

private:
    int mErrors = 0;
};

} // namespace

TEST_F(PresetStorage, SavedPresetsAreListedByNameAndLoadAndGoWhenRemoved)
{
    ASSERT_TRUE(save("bone", 0.25f));
    ASSERT_TRUE(save("CT/Lung", 0.75f));
    ASSERT_TRUE(save("Ärger", 0.5f));
    EXPECT_EQ(userPresets(), (QStringList{"bone", "CT/Lung", "Ärger"}));
    EXPECT_EQ(loadedScale("CT/Lung"), 0.75f);
    EXPECT_TRUE(QFile::exists(handler.store().directory() + "/CT_Lung.oxwpreset"));
    EXPECT_TRUE(QFile::exists(handler.store().directory() + "/_rger.oxwpreset"));

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

TEST_F(PresetStorage, NamesTheUserMayNotGiveAreRefusedWithTheReason)
{
    const struct
    {
        QString name;
        const char* reason; // empty: accepted
    } cases[] = {
        {"", "needs a name"},
        {"   ", "needs a name"},
        {QString(1000, 'x'), "at most 200 characters; this one has 1000"},
        {QString(200, 'x'), ""},
        {"Ramp", "name of a built-in preset"},
        {"two\nlines", "control characters"},
        {"tab\there", "control characters"},
        {"CT/Lung \\ 2", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name.left(20).toStdString());
        EXPECT_EQ(handler.checkPresetName(c.name).isEmpty(), !*c.reason);
        EXPECT_TRUE(handler.checkPresetName(c.name).contains(c.reason));
        EXPECT_EQ(save(c.name, 0.5f), !*c.reason);
        EXPECT_TRUE(handler.lastError().contains(c.reason));
    }
    EXPECT_EQ(userPresets().size(), 2);
}

TEST_F(PresetStorage, AReadOnlyFolderIsSaidSoAndItsPresetsStillLoad)
{
    ASSERT_TRUE(save("bone", 0.25f));
    const QString dir = handler.store().directory();
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup |
                                   QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
    EXPECT_FALSE(save("lung", 0.5f));
    EXPECT_TRUE(handler.lastError().contains("is read-only")) << handler.lastError().toStdString();
    EXPECT_EQ(userPresets(), QStringList{"bone"});
    EXPECT_EQ(loadedScale("bone"), 0.25f);
    QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(PresetStorage, UnusableFilesAreSkippedWithOneLineEachNamingFileAndReason)
{
    ASSERT_TRUE(save("good", 0.5f));
    const QString dir = handler.store().directory();
    const QByteArray good = contents(dir + "/good.oxwpreset");
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
        write(dir + "/" + c.file + ".oxwpreset", c.bytes);
    EXPECT_EQ(userPresets(), QStringList{"good"});
    ASSERT_EQ(errors.size(), int(std::size(cases)));
    for (const auto& c : cases) {
        const QString file = QDir::toNativeSeparators(dir + "/" + c.file + ".oxwpreset");
        EXPECT_EQ(errors.filter(file + " skipped: ").size(), 1) << c.file;
        EXPECT_EQ(errors.filter(c.reason).size() >= 1, true) << c.reason;
    }
    userPresets();
    EXPECT_EQ(errors.size(), int(std::size(cases))) << "reported once, not at every listing";

    // A file that is fine until its objects are read: listed, but never half-applied.
    write(dir + "/good.oxwpreset",
          QByteArray(good).replace("\"OXM::Scale\": 0.5", "\"OXM::Scale\": []"));
    target.setValue(OXM::Scale, 2.0f);
    EXPECT_FALSE(handler.applyPresetToTarget("good", OXM::UserPreset));
    EXPECT_TRUE(handler.lastError().contains("/OXM::Scale: expected a number"));
    EXPECT_EQ(target.scale(), 2.0f);
}

TEST_F(PresetStorage, AFailedSaveLeavesThePreviousFileAsItWas)
{
    ASSERT_TRUE(save("bone", 0.25f));
    const QString fileName = handler.store().directory() + "/bone.oxwpreset";
    const QByteArray before = contents(fileName);
    PresetTestRecord odd;
    odd.setAutoDelete(false);
    odd.addProperty(OXM::Name, new OXMSingleValueOP<QString>, true); // no document holds it
    EXPECT_FALSE(handler.savePreset(&odd, "bone", OXM::UserPreset));
    EXPECT_TRUE(handler.lastError().contains("can't be stored"));
    EXPECT_EQ(contents(fileName), before);
    EXPECT_EQ(QDir(handler.store().directory()).entryList(QDir::Files).size(), 1);
}
