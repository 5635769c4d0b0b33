// The histogram of the bound object: a running calculation is aborted when the selection
// moves on, histogram change messages are coalesced into one check, and the histogram is
// exported as a CSV file.

#include "PanelFixture.h"

#include <OXMAction.h>

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QStringList>

#include <cstring>

using namespace paneltest;

namespace {

// Closes every modal message box that opens while it lives (with its OK button) and records
// what the boxes said.
class MessageBoxCloser : public QObject
{
public:
    MessageBoxCloser()
    {
        connect(&mTimer, &QTimer::timeout, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box) {
                return;
            }
            titles << box->windowTitle();
            texts << box->text();
            QAbstractButton* ok = box->button(QMessageBox::Ok);
            hadOkButton.push_back(ok != nullptr);
            if (ok) {
                ok->click();
            } else {
                box->reject();
            }
        });
        mTimer.start(10);
    }

    QStringList titles;
    QStringList texts;
    std::vector<bool> hadOkButton;

private:
    QTimer mTimer;
};

class PanelHistogram : public PanelFixture
{
protected:
    // The exported points: the lines after the header, as (x, y).
    static bool readCsv(const QString& fileName, QString& header, HandleList& points)
    {
        QFile file(fileName);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            return false;
        }
        const QStringList lines =
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        if (lines.isEmpty()) {
            return false;
        }
        header = lines.front();
        for (int i = 1; i < lines.size(); ++i) {
            const QStringList cells = lines[i].split(QLatin1Char(','));
            if (cells.size() != 2) {
                return false;
            }
            bool okX = false;
            bool okY = false;
            points.emplace_back(cells[0].toFloat(&okX), cells[1].toFloat(&okY));
            if (!okX || !okY) {
                return false;
            }
        }
        return true;
    }

    // Selects a new volume with these 8-bit voxels and waits until the panel is idle.
    OXMVolumeRenderObject* selectVolume(const char* name, const std::vector<std::uint8_t>& voxels)
    {
        OXMVolumeRenderObject* v = addVolume(name, voxels);
        if (!v) {
            return nullptr;
        }
        select({v});
        return settle() && panel->selectedObject() == v ? v : nullptr;
    }

    // New voxels for the test volume, so that its histogram must be calculated again.
    void changeTestVolumeData()
    {
        std::vector<std::uint8_t> voxels = greyRamp(First, Last, 3);
        ASSERT_TRUE(volume->getSampleGrid()->setSamples(OXMVector3<int>(int(voxels.size()), 1, 1),
                                                        OXM::UInt8, voxels));
        ASSERT_TRUE(volume->getHistogram()->needsCalculation());
    }
};

} // namespace

TEST_F(PanelHistogram, SelectingAnotherVolumeAbortsARunningCalculation)
{
    ASSERT_TRUE(settle());
    OXMHistogram* running = volume->getHistogram();
    ASSERT_EQ(panel->histogramObject(), running);
    changeTestVolumeData();
    OXMAction* calculate = running->getAction(OXM::Calculate);
    ASSERT_NE(calculate, nullptr);
    const OXMTaskInfo* task = calculate->getTaskInfo();

    // The first progress report of the calculation selects another volume.
    OXMVolumeRenderObject* other = sample.volume8;
    bool switched = false;
    bool abortRequested = false;
    bool done = true;
    {
        ProgressHandlerScope progress([&](const OXMTaskInfo& t, float) {
            if (&t != task || switched) {
                return;
            }
            switched = true;
            EXPECT_FALSE(t.isAbortRequested());
            select({other});
            abortRequested = t.isAbortRequested();
        });
        done = running->execute(OXM::Calculate);
    }
    EXPECT_TRUE(switched);
    EXPECT_TRUE(abortRequested);
    EXPECT_FALSE(done);
    EXPECT_EQ(calculate->getErrorCode(), OXM::Abort);
    EXPECT_EQ(panel->selectedObject(), other);
    EXPECT_EQ(panel->histogramObject(), other->getHistogram());
    ASSERT_TRUE(settle());
    EXPECT_EQ(panel->selectedObject(), other);
    EXPECT_TRUE(panel->isModelValid());
}

TEST_F(PanelHistogram, SelectingAnotherVolumeDuringThePanelsOwnCalculationAbortsIt)
{
    ASSERT_TRUE(settle());
    OXMHistogram* running = volume->getHistogram();
    changeTestVolumeData();
    OXMVolumeRenderObject* other = sample.volume8;
    // The panel's calculation reports progress through the status bar, which lets timers
    // run: this one moves the selection while the calculation runs.
    bool runningWhenSwitched = false;
    QTimer::singleShot(0, panel.get(), [&] {
        runningWhenSwitched = running->getAction(OXM::Calculate)->isRunning();
        select({other});
    });
    reread();
    EXPECT_TRUE(runningWhenSwitched);
    EXPECT_EQ(running->getAction(OXM::Calculate)->getErrorCode(), OXM::Abort);
    EXPECT_TRUE(running->needsCalculation());
    EXPECT_EQ(panel->selectedObject(), other);
    ASSERT_TRUE(settle());
    EXPECT_EQ(panel->selectedObject(), other);
    EXPECT_EQ(panel->histogramObject(), other->getHistogram());
    EXPECT_EQ(workArea()->histogramObject(), other->getHistogram());
    EXPECT_TRUE(panel->isModelValid());
    ASSERT_NE(model(), nullptr);
    const std::vector<float> bins = other->getHistogram()->getResult()->getCounts();
    EXPECT_FLOAT_EQ(model()->greyCount(), float(bins.size()));
}

// A burst of histogram messages causes one check after a delay; an up-to-date histogram is
// re-read once, new data is calculated first.
TEST_F(PanelHistogram, ABurstOfHistogramMessagesCausesOneCheck)
{
    ASSERT_TRUE(settle());
    OXMHistogram* histogram = volume->getHistogram();
    for (bool newData : {false, true}) {
        SCOPED_TRACE(newData);
        const int reads = panel->objectInfoReadCount();
        if (newData) {
            changeTestVolumeData();
        }
        for (int i = 0; i < 10; ++i) {
            histogram->sendMessage(OXM::PropertyChanged, OXM::Result);
        }
        EXPECT_TRUE(panel->updateAnalyzerTimer()->isActive());
        EXPECT_EQ(panel->updateAnalyzerTimer()->interval(),
                  OXWClassificationToolGUI::AnalyzerDelay);
        EXPECT_EQ(panel->objectInfoReadCount(), reads);
        ASSERT_TRUE(waitForReread(reads));
        QTest::qWait(120);
        EXPECT_EQ(panel->objectInfoReadCount(), reads + 1);
        EXPECT_FALSE(histogram->needsCalculation());
    }
    EXPECT_EQ(histogram->getResult()->getCounts(), std::vector<float>(std::size_t(Cells), 3.0f));
}

// One point per bin, from the first value to the last; the work area's menu item exports too.
TEST_F(PanelHistogram, ExportsOnePointPerBin)
{
    HandleList everyBin;
    for (int g = First; g <= Last; ++g) {
        everyBin.emplace_back(float(g), 2.0f);
    }
    const struct
    {
        std::vector<std::uint8_t> voxels; // none: the test volume
        HandleList points;
    } cases[] = {{{9, 9, 9, 9}, {{9.0f, 4.0f}}},
                 {{5, 5, 5, 6}, {{5.0f, 3.0f}, {6.0f, 1.0f}}},
                 {{}, everyBin}};
    int n = 0;
    QString firstStart;
    for (const auto& c : cases) {
        SCOPED_TRACE(n);
        if (!c.voxels.empty()) {
            ASSERT_NE(selectVolume("Exported", c.voxels), nullptr);
        } else {
            select({volume});
            ASSERT_TRUE(settle());
        }
        const QString fileName = files.filePath(QStringLiteral("%1.csv").arg(++n));
        OXWFileDialog::queueTestAnswer({fileName, QString()});
        MessageBoxCloser boxes;
        if (n == 3) {
            emit workArea()->histogramSaveActivated();
        } else {
            panel->saveHistogram();
        }
        EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
        EXPECT_TRUE(boxes.titles.isEmpty());
        QString header;
        HandleList points;
        ASSERT_TRUE(readCsv(fileName, header, points));
        EXPECT_EQ(header, QStringLiteral("x,y"));
        EXPECT_EQ(points, c.points);
        if (n == 1) {
            firstStart = OXWFileDialog::lastRequest().startDirectory;
        }
    }
    const OXWFileDialog::Request request = OXWFileDialog::lastRequest();
    EXPECT_TRUE(request.save);
    EXPECT_EQ(request.caption, QStringLiteral("Save csv as..."));
    EXPECT_EQ(request.filters, QStringList({QStringLiteral("CSV files (*.csv *.CSV)")}));
    // The first dialog started in the user's documents, the later ones where the last ended.
    EXPECT_EQ(QDir::cleanPath(request.startDirectory), QDir::cleanPath(files.path()));
    EXPECT_NE(firstStart, files.path());
    EXPECT_EQ(QDir::cleanPath(firstStart),
              QDir::cleanPath(OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"))));
}

// A file that can't be written gets a warning naming it; a cancelled dialog gets nothing.
TEST_F(PanelHistogram, AFailedExportShowsAWarningAndACancelledOneNothing)
{
    ASSERT_TRUE(settle());
    const QString fileName = files.filePath(QStringLiteral("missing/folder/h.csv"));
    for (const QString& answer : {fileName, QString()}) {
        OXWFileDialog::queueTestAnswer({answer, QString()});
        MessageBoxCloser boxes;
        panel->saveHistogram();
        QTest::qWait(50);
        EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
        if (answer.isEmpty()) {
            EXPECT_TRUE(boxes.titles.isEmpty());
            continue;
        }
        ASSERT_EQ(boxes.titles.size(), 1);
        EXPECT_EQ(boxes.titles[0], QStringLiteral("Save Histogram"));
        EXPECT_EQ(boxes.texts[0], QStringLiteral("Unable to save %1").arg(fileName));
        EXPECT_TRUE(boxes.hadOkButton[0]);
    }
    EXPECT_TRUE(QDir(files.path()).entryList(QDir::Files).isEmpty());
    EXPECT_EQ(app.undoStack()->count(), 0);
}

namespace {
template <typename T>
std::vector<std::uint8_t> asBytes(const std::vector<T>& values)
{
    std::vector<std::uint8_t> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}
} // namespace

// Data whose bins do not count one value each show their own values on the tool's axis: the
// centre of the first bin is the smallest value, that of the last bin the largest.
TEST_F(PanelHistogram, FloatAndWideIntegerDataClassifyInTheirOwnValues)
{
    std::vector<float> floats;
    for (int i = 0; i <= 100; ++i) {
        floats.push_back(-1000.0f + 40.0f * float(i)); // -1000 .. 3000
    }
    const std::vector<std::uint32_t> wide = {0u, 1000u, 4000000000u};
    const struct
    {
        const char* name;
        OXMenum type;
        std::vector<std::uint8_t> bytes;
        int count;
        double low;
        double high;
    } cases[] = {
        {"float", OXM::Float32, asBytes(floats), int(floats.size()), -1000.0, 3000.0},
        {"32-bit", OXM::UInt32, asBytes(wide), int(wide.size()), 0.0, 4.0e9},
    };
    for (const auto& c : cases) {
        OXMVolumeRenderObject* v =
            addVolume(c.name, c.bytes, c.type, OXMVector3<int>(c.count, 1, 1));
        ASSERT_NE(v, nullptr) << c.name;
        select({v});
        ASSERT_TRUE(settle() && panel->selectedObject() == v) << c.name;
        const OXWLUTObjectInfo* info = model();
        ASSERT_NE(info, nullptr) << c.name;
        const auto valueAtBin = [info](float bin) {
            return double(info->calibratedFromPosition(info->positionFromGrey(bin)));
        };
        const double tolerance = (c.high - c.low) * 1e-5;
        EXPECT_NEAR(valueAtBin(info->greyMin() + 0.5f), c.low, tolerance) << c.name;
        EXPECT_NEAR(valueAtBin(info->greyMax() - 0.5f), c.high, tolerance) << c.name;
    }
}
