// Preferences registered with the manager are stored when they change and given back in the
// next run; what can't be used is reported and left alone.

#include <OXMError.h>
#include <OXMRegisteredEnum.h>
#include <OXMTulvoRights.h>
#include <OXWPreferenceManager.h>

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class OXWPreferenceManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        handler =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }
    void TearDown() override { OXMError::removeHandler(handler); }
    // A manager as a run of the application has it, with one preference registered.
    std::unique_ptr<OXWPreferenceManager> run(OXMTulvoRights& preference)
    {
        auto manager = std::make_unique<OXWPreferenceManager>();
        manager->setStorageDirectory(folder.path());
        preference.setAutoDelete(false);
        EXPECT_TRUE(manager->addPreference(id, &preference));
        return manager;
    }
    QByteArray stored() const
    {
        QFile file(fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString fileName() const
    {
        OXWPreferenceManager manager;
        manager.setStorageDirectory(folder.path());
        return manager.storageFile(id);
    }

    QTemporaryDir folder;
    OXMRegisteredEnum id{"TestPreference", false, "oxwtest"};
    QStringList errors;
    int handler = 0;
};

// Nothing changed, nothing written; a change is stored and given back in the next run. An
// unusable file gives the defaults and one line naming it, and stays until a change.
TEST_F(OXWPreferenceManagerTest, AChangeIsStoredAndGivenBackInTheNextRun)
{
    {
        OXMTulvoRights first;
        auto manager = run(first);
        EXPECT_TRUE(stored().isEmpty());
        ASSERT_TRUE(first.setAllowClassificationEdit(false));
        ASSERT_TRUE(manager->removePreference(id));
    }
    EXPECT_EQ(fileName(), folder.filePath("oxwtest.TestPreference.json"));
    {
        OXMTulvoRights second;
        auto manager = run(second);
        EXPECT_FALSE(second.getAllowClassificationEdit());
        EXPECT_TRUE(errors.isEmpty()) << errors.join('\n').toStdString();
        manager->removePreference(id);
    }
    for (const QByteArray& broken : {QByteArray("{\"format\": \"oxm-objects\", \"vers"),
                                     QByteArray("{\"format\":\"oxm-objects\",\"version\":1,"
                                                "\"root\":{\"class\":\"OXMObject\"}}")}) {
        errors.clear();
        QFile file(fileName());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(broken);
        file.close();
        OXMTulvoRights preference;
        auto manager = run(preference);
        EXPECT_TRUE(preference.getAllowClassificationEdit());
        ASSERT_EQ(errors.size(), 1);
        EXPECT_TRUE(errors.front().contains(fileName())) << errors.front().toStdString();
        EXPECT_EQ(stored(), broken);
        ASSERT_TRUE(preference.setAllowClassificationEdit(false));
        EXPECT_NE(stored(), broken);
        manager->removePreference(id);
    }
}

TEST_F(OXWPreferenceManagerTest, RefusesWhatItCantRegisterAndWithdrawsMappingsWithTheirPreference)
{
    OXWPreferenceManager manager;
    OXMTulvoRights preference, other;
    preference.setAutoDelete(false);
    other.setAutoDelete(false);
    EXPECT_FALSE(manager.addPreference(OXMenum(), &preference));
    EXPECT_FALSE(manager.addPreference(id, nullptr));
    ASSERT_TRUE(manager.addPreference(id, &preference));
    EXPECT_FALSE(manager.addPreference(id, &other));
    EXPECT_EQ(manager.getPreference(id), &preference);
    EXPECT_EQ(manager.findPreference("TestPreference"), &preference);

    const char* editor = "OXWSomeEditor";
    EXPECT_TRUE(
        manager.addEnumMapping({"Preferences/TestPreference", "A|1|a/B|0|b", editor, {}, 2}));
    EXPECT_TRUE(manager.addEnumMapping({"Preferences/TestPreference", "C|0|c", editor, "G|3", 2}));
    EXPECT_FALSE(manager.addEnumMapping({"Preferences/NoSuchName", "A|1|a", editor, {}, 2}));
    EXPECT_FALSE(manager.addEnumMapping({"TestPreference", "A|1|a", editor, {}, 2}));
    EXPECT_FALSE(
        manager.addEnumMapping({"Preferences/TestPreference", "A|1|a/|0|", editor, {}, 2}));
    EXPECT_FALSE(manager.addEnumMapping({"Preferences/TestPreference", "A", editor, "|3", 2}));
    ASSERT_EQ(manager.enumMappings().size(), 2u);
    EXPECT_EQ(manager.editedObject(manager.enumMappings().front()), &preference);

    EXPECT_TRUE(manager.removePreference(id));
    EXPECT_FALSE(manager.removePreference(id));
    EXPECT_TRUE(manager.enumMappings().empty());
    EXPECT_EQ(preference.getRefCount(), 0);
}

} // namespace
