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

TEST_F(PanelHistogram, ABurstOfHistogramMessagesCausesOneCheck)
{
    ASSERT_TRUE(settle());
    OXMHistogram* histogram = volume->getHistogram();
    const int reads = panel->objectInfoReadCount();
    for (int i = 0; i < 10; ++i) {
        histogram->sendMessage(OXM::PropertyChanged, OXM::Result);
    }
    EXPECT_TRUE(panel->updateAnalyzerTimer()->isActive());
    EXPECT_TRUE(panel->updateAnalyzerTimer()->isSingleShot());
    EXPECT_EQ(panel->updateAnalyzerTimer()->interval(), OXWClassificationToolGUI::AnalyzerDelay);
    EXPECT_EQ(panel->objectInfoReadCount(), reads);
    // The up-to-date histogram needs no calculation: the check re-reads once.
    ASSERT_TRUE(waitForReread(reads));
    QTest::qWait(120);
    EXPECT_EQ(panel->objectInfoReadCount(), reads + 1);
    EXPECT_FALSE(panel->updateAnalyzerTimer()->isActive());
}

TEST_F(PanelHistogram, NewDataIsCalculatedAndReadAfterTheCheck)
{
    ASSERT_TRUE(settle());
    OXMHistogram* histogram = volume->getHistogram();
    const int reads = panel->objectInfoReadCount();
    changeTestVolumeData();
    for (int i = 0; i < 10; ++i) {
        histogram->sendMessage(OXM::PropertyChanged, OXM::Result);
    }
    ASSERT_TRUE(waitForReread(reads));
    QTest::qWait(120);
    EXPECT_FALSE(histogram->needsCalculation());
    EXPECT_EQ(histogram->getResult()->getCounts(), std::vector<float>(std::size_t(Cells), 3.0f));
}

TEST_F(PanelHistogram, ExportsAOneBinHistogramAsOnePoint)
{
    ASSERT_NE(selectVolume("One", {9, 9, 9, 9}), nullptr);
    ASSERT_NE(model(), nullptr);
    EXPECT_FLOAT_EQ(model()->greyCount(), 1.0f);
    const QString fileName = files.filePath(QStringLiteral("one.csv"));
    OXWFileDialog::queueTestAnswer({fileName, QString()});
    MessageBoxCloser boxes;
    panel->saveHistogram();
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
    EXPECT_TRUE(boxes.titles.isEmpty());

    const OXWFileDialog::Request request = OXWFileDialog::lastRequest();
    EXPECT_TRUE(request.save);
    EXPECT_EQ(request.identity, OXM::Scene);
    EXPECT_EQ(request.caption, QStringLiteral("Save csv as..."));
    EXPECT_EQ(request.filters, QStringList({QStringLiteral("CSV files (*.csv *.CSV)")}));
    EXPECT_EQ(QDir::cleanPath(request.startDirectory),
              QDir::cleanPath(OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"))));

    QString header;
    HandleList points;
    ASSERT_TRUE(readCsv(fileName, header, points));
    EXPECT_EQ(header, QStringLiteral("x,y"));
    EXPECT_EQ(points, HandleList({{9.0f, 4.0f}}));
}

TEST_F(PanelHistogram, ExportsATwoBinHistogramFromTheFirstToTheLastValue)
{
    ASSERT_NE(selectVolume("Two", {5, 5, 5, 6}), nullptr);
    const QString fileName = files.filePath(QStringLiteral("two.csv"));
    OXWFileDialog::queueTestAnswer({fileName, QString()});
    MessageBoxCloser boxes;
    panel->saveHistogram();
    EXPECT_TRUE(boxes.titles.isEmpty());

    QString header;
    HandleList points;
    ASSERT_TRUE(readCsv(fileName, header, points));
    EXPECT_EQ(header, QStringLiteral("x,y"));
    EXPECT_EQ(points, HandleList({{5.0f, 3.0f}, {6.0f, 1.0f}}));
}

TEST_F(PanelHistogram, ExportsEveryBinOfTheTestVolume)
{
    ASSERT_TRUE(settle());
    const QString fileName = files.filePath(QStringLiteral("test.csv"));
    OXWFileDialog::queueTestAnswer({fileName, QString()});
    panel->saveHistogram();
    QString header;
    HandleList points;
    ASSERT_TRUE(readCsv(fileName, header, points));
    ASSERT_EQ(points.size(), std::size_t(Cells));
    for (int i = 0; i < Cells; ++i) {
        EXPECT_FLOAT_EQ(points[std::size_t(i)].x, float(First + i));
        EXPECT_FLOAT_EQ(points[std::size_t(i)].y, 2.0f);
    }
}

TEST_F(PanelHistogram, AFailedExportShowsAWarning)
{
    ASSERT_TRUE(settle());
    const QString fileName = files.filePath(QStringLiteral("missing/folder/h.csv"));
    OXWFileDialog::queueTestAnswer({fileName, QString()});
    MessageBoxCloser boxes;
    panel->saveHistogram();
    ASSERT_EQ(boxes.titles.size(), 1);
    EXPECT_EQ(boxes.titles[0], QStringLiteral("Save Histogram"));
    EXPECT_EQ(boxes.texts[0], QStringLiteral("Unable to save %1").arg(fileName));
    EXPECT_TRUE(boxes.hadOkButton[0]);
    EXPECT_FALSE(QFileInfo::exists(fileName));
    EXPECT_EQ(app.undoStack()->count(), 0);
}

TEST_F(PanelHistogram, ACancelledDialogShowsNoWarning)
{
    ASSERT_TRUE(settle());
    OXWFileDialog::queueTestAnswer({QString(), QString()});
    MessageBoxCloser boxes;
    panel->saveHistogram();
    QTest::qWait(50);
    EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
    EXPECT_TRUE(boxes.titles.isEmpty()) << boxes.titles.join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(QDir(files.path()).entryList(QDir::Files).isEmpty());
}

TEST_F(PanelHistogram, TheWorkAreaSaveItemExports)
{
    ASSERT_TRUE(settle());
    const QString fileName = files.filePath(QStringLiteral("menu.csv"));
    OXWFileDialog::queueTestAnswer({fileName, QString()});
    emit workArea()->histogramSaveActivated();
    EXPECT_TRUE(QFileInfo::exists(fileName));
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
