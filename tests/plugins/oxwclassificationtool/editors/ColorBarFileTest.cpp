// Colour table import and export through the bar's slots: the dialogs (answered through the
// file dialog's test seam), the chosen filter deciding the format and the extension, the
// signal after every complete import and the refusals in the host's error channel. The file
// formats themselves are tested with OXWLUTColorTableFile.

#include "ColorBarTestSupport.h"

#include <OXMError.h>

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

using namespace colorbartest;

namespace {

const QString kLut = QStringLiteral("*.lut");
const QString kAct = QStringLiteral("*.act");

QByteArray readAll(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return QByteArray();
    }
    return file.readAll();
}

bool writeAll(const QString& fileName, const QByteArray& bytes)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

class ColorBarFile : public ColorBarTest
{
protected:
    void SetUp() override
    {
        ColorBarTest::SetUp();
        setColourCurves(interval(), {{0.0f, 0.0f}, {0.5f, 255.0f}, {1.0f, 255.0f}});
        bar->updateAll();
        bar->hitTest(QPoint(xOf(60), 10));
        ASSERT_EQ(bar->currentIntervalIndex(), 0);
        errorHandler =
            OXMError::addHandler([this](const OXMError::Message& m) { errors << m.getText(); });
    }

    void TearDown() override
    {
        OXMError::removeHandler(errorHandler);
        ColorBarTest::TearDown();
    }

    int errorHandler = 0;
    QStringList errors;
};

} // namespace

TEST_F(ColorBarFile, ExportingAWhiteIntervalWritesTwoWhiteLines)
{
    bar->setIntervalColorWhite();
    OXWFileDialog::queueTestAnswer({path("white.lut"), kLut});
    bar->exportIntervalColor();
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);

    const OXWFileDialog::Request request = OXWFileDialog::lastRequest();
    EXPECT_TRUE(request.save);
    EXPECT_STREQ(request.identity.getName(), "ExportClassificationColor");
    EXPECT_STREQ(request.identity.getNamespace(), "oxwclassificationtool");
    EXPECT_EQ(request.filters, QStringList({kLut, kAct}));
    EXPECT_EQ(request.caption, QStringLiteral("Save color settings to..."));

    const QString first = QString::asprintf("%f 255.000000 255.000000 255.000000\n",
                                            double(interval().handles(kRed)[0].x));
    const QString last = QString::asprintf("%f 255.000000 255.000000 255.000000\n",
                                           double(interval().handles(kRed)[1].x));
    EXPECT_EQ(QString::fromLatin1(readAll(path("white.lut"))),
              QStringLiteral("; Color look up table\n\n") + first + last);
}

TEST_F(ColorBarFile, ThePaletteFilterDecidesFormatAndExtension)
{
    OXWFileDialog::queueTestAnswer({path("plain"), kAct});
    OXWFileDialog::queueTestAnswer({path("upper.ACT"), kAct});
    OXWFileDialog::queueTestAnswer({path("mixed.Act"), kAct});
    bar->exportIntervalColor();
    bar->exportIntervalColor();
    bar->exportIntervalColor();
    EXPECT_EQ(readAll(path("plain.act")).size(), 768);
    EXPECT_EQ(readAll(path("upper.ACT")).size(), 768);
    EXPECT_FALSE(QFileInfo::exists(path("upper.ACT.act")));
    EXPECT_EQ(readAll(path("mixed.Act.act")).size(), 768);
    EXPECT_FALSE(QFileInfo::exists(path("mixed.Act")));
}

TEST_F(ColorBarFile, ACancelledExportWritesNothing)
{
    OXWFileDialog::queueTestAnswer({QString(), kLut});
    bar->exportIntervalColor();
    EXPECT_TRUE(QDir(files.path()).entryList(QDir::Files).isEmpty());
}

TEST_F(ColorBarFile, AnImportEmitsAfterEveryTableRead)
{
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    // Cancelled.
    OXWFileDialog::queueTestAnswer({QString(), kLut});
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 0);

    // A text file without entry lines.
    ASSERT_TRUE(writeAll(path("empty.lut"), "; Color look up table\n\n; nothing\n"));
    OXWFileDialog::queueTestAnswer({path("empty.lut"), kLut});
    const HandleList before = interval().handles(kRed);
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(interval().handles(kRed), before);

    // A complete table.
    ASSERT_TRUE(writeAll(path("two.lut"), "; Color look up table\n\n"
                                          "0.0 10 20 30\n"
                                          "1.0 110 120 130\n"));
    OXWFileDialog::queueTestAnswer({path("two.lut"), kLut});
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_FALSE(OXWFileDialog::lastRequest().save);
    EXPECT_EQ(OXWFileDialog::lastRequest().caption, QStringLiteral("Open project..."));
    EXPECT_STREQ(OXWFileDialog::lastRequest().identity.getName(), "ExportClassificationColor");
    ASSERT_EQ(interval().handles(kRed).size(), 2u);
    EXPECT_FLOAT_EQ(interval().handles(kRed)[0].y, 10.0f);
    EXPECT_FLOAT_EQ(interval().handles(kBlue)[1].y, 130.0f);
    // The bar shows it.
    EXPECT_EQ(bar->colorTable()[0].g, 20);

    // The same table again changes nothing, and is reported all the same.
    OXWFileDialog::queueTestAnswer({path("two.lut"), kLut});
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(ColorBarFile, RefusalsAreOneLineNamingTheFileAndTheReason)
{
    // A pipe and a device are refused at once (a pipe would block the import until ctest's
    // timeout); as root too, so is writing over a directory.
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.lut")).constData(), 0600), 0);
    ASSERT_TRUE(writeAll(path("empty.lut"), "; nothing\n"));
    ASSERT_TRUE(QDir(files.path()).mkdir("folder.lut"));
    const struct
    {
        QString file;
        QString filter;
        void (TestBar::*slot)();
        QString reason;
    } cases[] = {
        {path("pipe.lut"), kLut, &TestBar::importIntervalColor, "not a regular file"},
        {"/dev/zero", kAct, &TestBar::importIntervalColor, "not a regular file"},
        {path("empty.lut"), kLut, &TestBar::importIntervalColor, "no complete colour table"},
        {path("folder.lut"), kLut, &TestBar::exportIntervalColor, "cannot write: "},
    };
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    for (const auto& c : cases) {
        errors.clear();
        OXWFileDialog::queueTestAnswer({c.file, c.filter});
        (bar.get()->*c.slot)();
        ASSERT_EQ(errors.size(), 1) << c.file.toStdString();
        EXPECT_TRUE(errors[0].startsWith(c.file + ": " + c.reason)) << errors[0].toStdString();
    }
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(ColorBarFile, AShortPaletteChangesNothing)
{
    ASSERT_TRUE(writeAll(path("short.act"), QByteArray(767, '\x40')));
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    const OXWLUTIntervalInfo before(interval());
    OXWFileDialog::queueTestAnswer({path("short.act"), kAct});
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 0);
    for (int channel : kColours) {
        EXPECT_EQ(interval().handles(channel), before.handles(channel));
        EXPECT_EQ(interval().referenceHandles(channel), before.referenceHandles(channel));
    }
}

TEST_F(ColorBarFile, AnExportedPaletteImportsBack)
{
    OXWFileDialog::queueTestAnswer({path("ramp.act"), kAct});
    bar->exportIntervalColor();
    QSignalSpy changed(bar.get(), &OXWLUTColorBar::objectColorChanged);
    OXWFileDialog::queueTestAnswer({path("ramp.act"), kAct});
    bar->importIntervalColor();
    EXPECT_EQ(changed.count(), 1);
    // 256 entries over 256 cells: the interval keeps the ramp.
    EXPECT_NEAR(bar->colorTable()[64].r, 128, 3);
    EXPECT_EQ(bar->colorTable()[200].r, 255);
}
