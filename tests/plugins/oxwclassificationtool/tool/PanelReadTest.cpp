// Reading the classification back from the host: host lists into the model, the round trip of
// a written classification, the default classification of a material without interval lists;
// the re-read against a literal one on random classifications; data in their own values.

#include "PanelFixture.h"

#include <OXMAction.h>
#include <OXMTaskInfo.h>
#include <OXWModalAnswers.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>

using namespace paneltest;

namespace {

template <typename T>
std::vector<std::uint8_t> asBytes(const std::vector<T>& values)
{
    std::vector<std::uint8_t> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

class PanelRead : public PanelFixture
{
protected:
    // Borders, switches and the handles of every channel of the model, in one list.
    std::vector<float> flatModel() const
    {
        std::vector<float> values;
        for (int i = 0; i < model()->intervalCount(); ++i) {
            const Info* interval = model()->interval(i);
            values.insert(values.end(),
                          {interval->from(), interval->to(), float(interval->isEnabled())});
            for (int c = 0; c < 4; ++c) {
                values.push_back(-1.0f);
                for (const Handle& h : interval->handles(Opacity + c)) {
                    values.insert(values.end(), {h.x, h.y});
                }
            }
        }
        return values;
    }
    float centre(int cell) const { return (float(cell) + 0.5f) / float(Cells); }
    // New voxels for the test volume, so that its histogram must be calculated again.
    void changeTestVolumeData(int copies)
    {
        std::vector<std::uint8_t> voxels = greyRamp(First, Last, copies);
        ASSERT_TRUE(volume->getSampleGrid()->setSamples(OXMVector3<int>(int(voxels.size()), 1, 1),
                                                        OXM::UInt8, voxels));
        ASSERT_TRUE(volume->getHistogram()->needsCalculation());
    }
};

} // namespace

TEST_F(PanelRead, WritingAndReadingBackReproducesBordersAndCurves)
{
    ASSERT_TRUE(settle());
    OXWLUTObjectInfo* m = model();
    // Two cuts on cell boundaries and a few handles, in the model.
    ASSERT_TRUE(m->newInterval(5.0f / float(Cells), true));
    ASSERT_TRUE(m->newInterval(11.0f / float(Cells), true));
    ASSERT_EQ(m->intervalCount(), 3);
    Info* middle = m->interval(1);
    ASSERT_TRUE(middle->insertHandle(Opacity, centre(7), 0.8f));
    // The colour curves share their handle positions, as the colour bar keeps them.
    ASSERT_TRUE(middle->insertHandle(Red, centre(8), 40.0f));
    ASSERT_TRUE(middle->insertHandle(Green, centre(8), 80.0f));
    ASSERT_TRUE(middle->insertHandle(Blue, centre(8), 120.0f));
    ASSERT_TRUE(m->interval(2)->insertHandle(Red, centre(13), 0.5f));
    ASSERT_TRUE(m->interval(2)->insertHandle(Green, centre(13), 255.5f));
    ASSERT_TRUE(m->interval(2)->insertHandle(Blue, centre(13), 200.5f));
    ASSERT_TRUE(m->interval(0)->setEnabled(false));
    ASSERT_TRUE(m->interval(2)->setName(QStringLiteral("Dense")));

    QMetaObject::invokeMethod(panel.get(), "updateIntervals", Qt::DirectConnection);
    EXPECT_TRUE(panel->isListening());
    // Interval ends lie on k + 0.5 and are written as k.
    const std::vector<int> borders = array<int>(material(), OXM::IntervalIndexList);
    EXPECT_EQ(borders, std::vector<int>({First - 1, First + 4, First + 10, Last}));
    EXPECT_EQ(array<OXMenum>(material(), OXM::IntervalModeList),
              std::vector<OXMenum>({OXM::Disabled, OXM::Enabled, OXM::Enabled}));
    EXPECT_EQ(intervalNames(material()).back(), QByteArray("Dense"));
    // Changes of the panel's own writes schedule no re-read.
    EXPECT_FALSE(panel->updateObjectInfoTimer()->isActive());

    const std::vector<float> written = flatModel();
    const OXMenum ids[] = {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    std::vector<HandleList> hostLists;
    for (OXMenum id : ids) {
        hostLists.push_back(handleList(channel(id)));
    }
    reread();
    const std::vector<float> read = flatModel();
    ASSERT_EQ(read.size(), written.size());
    for (std::size_t k = 0; k < read.size(); ++k) {
        EXPECT_FLOAT_EQ(read[k], written[k]) << k;
    }
    EXPECT_EQ(model()->interval(2)->name(), QStringLiteral("Dense"));

    // Writing the re-read model again changes nothing on the host.
    QMetaObject::invokeMethod(panel.get(), "updateIntervals", Qt::DirectConnection);
    EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList), borders);
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(handleList(channel(ids[c])), hostLists[std::size_t(c)]) << c;
    }
}

TEST_F(PanelRead, AMaterialWithoutIntervalListsGetsTheDefaultClassificationOutsideUndo)
{
    OXMVolumeRenderObject* bare = addVolume("Bare", greyRamp(First, Last, 1));
    ASSERT_NE(bare, nullptr);
    OXMSampleMaterial* m = bare->getMaterial();
    ASSERT_TRUE(setArray<int>(m, OXM::IntervalIndexList, {}));
    ASSERT_TRUE(setArray<OXMenum>(m, OXM::IntervalModeList, {}));
    ASSERT_TRUE(setArray<const char*>(m, OXM::IntervalNameList, {}));
    ASSERT_TRUE(m->setFlags(0x10000000u, 0));
    ASSERT_EQ(app.undoStack()->count(), 0);

    select({bare});
    ASSERT_EQ(panel->selectedObject(), bare);
    EXPECT_EQ(array<int>(m, OXM::IntervalIndexList), std::vector<int>({First - 1, Last}));
    EXPECT_EQ(array<OXMenum>(m, OXM::IntervalModeList), std::vector<OXMenum>({OXM::Enabled}));
    EXPECT_EQ(intervalNames(m), std::vector<QByteArray>({QByteArray("Interval 1")}));
    EXPECT_EQ(app.undoStack()->count(), 0);
    EXPECT_FALSE(app.isUserActionOpen());
    // The host's class flag is restored after the writes.
    EXPECT_EQ(m->getFlags() & 0x10000000u, 0x10000000u);

    ASSERT_EQ(model()->intervalCount(), 1);
    EXPECT_EQ(model()->interval(0)->name(), QStringLiteral("Interval 1"));
    EXPECT_TRUE(model()->interval(0)->isEnabled());

    // The panel's own default writes start no further re-read.
    ASSERT_TRUE(settle());
    EXPECT_EQ(app.undoStack()->count(), 0);
}

// The panel's re-read against a literal one: intervals from the border list, then every host
// handle inserted one at a time with its commit, zeros into the other colour channels, and
// both ends of every interval placed on the host's curve. The panel batches the commits and
// searches instead of scanning; the model it builds must be the same, bit for bit, on random
// classifications, including unsorted host lists, out-of-range colours and borders that
// don't fit the histogram.
namespace {

using Vector = OXMVector2<float>;

template <typename T>
void writeArray(OXMObject* object, OXMenum id, const std::vector<T>& values)
{
    auto* array = OXMValueArrayPropertyIF<T>::getInterface(object->getProperty(id));
    ASSERT_NE(array, nullptr);
    ASSERT_TRUE(array->initArray(0, int(values.size()) - 1, values.data()));
}

class PanelReadOracle : public PanelFixture
{
protected:
    static constexpr int GreyCount = 300; // not a power of two

    void SetUp() override
    {
        PanelFixture::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        std::vector<std::uint16_t> samples(std::size_t(GreyCount) * 2);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = std::uint16_t(100 + i % GreyCount); // bins 100 .. 399
        }
        volume = addVolume("Oracle", asBytes(samples), OXM::UInt16, {GreyCount, 2, 1});
        ASSERT_NE(volume, nullptr);
        select({volume});
    }

    // The literal re-read of intervals and handles into a fresh model with the panel's axis.
    std::unique_ptr<OXWLUTObjectInfo> literalModel(const std::vector<int>& borders,
                                                   const std::vector<OXMenum>& modes,
                                                   const std::vector<QString>& names,
                                                   const std::vector<Vector> lists[4])
    {
        const int first = 100;
        const int last = 399;
        auto model = std::make_unique<OXWLUTObjectInfo>(
            first - 0.5f, last + 0.5f, 0.0f, 1.0f, last - first + 1, first - 0.5f, last + 0.5f);
        OXWLUTObjectInfo& m = *model;
        for (size_t i = 1; i + 1 < borders.size(); ++i) {
            if (first <= borders[i] && borders[i] < last) {
                m.newInterval(m.positionFromGrey(float(borders[i]) + 0.5f), true);
            }
        }
        for (size_t i = 0; i < modes.size(); ++i) {
            if (Info* interval = m.interval(int(i))) {
                if (i < names.size()) {
                    interval->setName(names[i]);
                }
                interval->setEnabled(modes[i] == OXM::Enabled);
            }
        }
        const int channels[4] = {Info::OpacityChannel, Info::RedChannel, Info::GreenChannel,
                                 Info::BlueChannel};
        const auto value = [&m](int c, float y) {
            return c == 0 ? m.positionFromOpacity(y) : std::min(std::max(y * 256.0f, 0.5f), 255.5f);
        };
        for (int c = 0; c < 4; ++c) {
            if (lists[c].size() <= 1) {
                continue;
            }
            for (const Vector& h : lists[c]) {
                const float p = m.snapToCellCentre(m.positionFromGrey(h.x));
                Info* interval = m.intervalAt(p);
                if (!interval) {
                    continue;
                }
                interval->insertHandle(channels[c], p, value(c, h.y));
                if (c == 1) {
                    interval->insertHandle(Info::GreenChannel, p, 0.0f);
                    interval->insertHandle(Info::BlueChannel, p, 0.0f);
                } else if (c > 1) {
                    for (int other = 1; other < 4; ++other) {
                        if (other != c &&
                            interval->findHandle(channels[other], p, 5e-7f, 0.0f, 1000.0f) < 0) {
                            interval->insertHandle(channels[other], p, 0.0f);
                        }
                    }
                }
            }
        }
        const float s = m.greyStep();
        for (int c = 0; c < 4; ++c) {
            const std::vector<Vector>& list = lists[c];
            for (int i = 0; i < m.intervalCount(); ++i) {
                Info* interval = m.interval(i);
                for (float position : {m.snapToCellCentre(interval->from() + s / 2),
                                       m.snapToCellCentre(interval->to() - s / 2)}) {
                    for (size_t j = 0; j + 1 < list.size(); ++j) {
                        const float x0 = m.positionFromGrey(list[j].x);
                        const float x1 = m.positionFromGrey(list[j + 1].x);
                        if (!(x0 <= position && position <= x1)) {
                            continue;
                        }
                        float y0 = c == 0 ? m.positionFromOpacity(list[j].y) : list[j].y;
                        float y1 = c == 0 ? m.positionFromOpacity(list[j + 1].y) : list[j + 1].y;
                        float y = x0 >= x1 ? y0 : y0 + (position - x0) / (x1 - x0) * (y1 - y0);
                        if (c > 0) {
                            y = std::min(std::max(y * 256.0f, 0.5f), 255.5f);
                        }
                        interval->insertHandle(channels[c], position, y);
                    }
                }
            }
        }
        return model;
    }
};

} // namespace

TEST_F(PanelReadOracle, RandomClassificationsReadLikeTheLiteralReRead)
{
    std::mt19937 random(20261123);
    const OXMenum ids[4] = {OXM::Opacity, OXM::AmbientRed, OXM::AmbientGreen, OXM::AmbientBlue};
    const int channels[4] = {Info::OpacityChannel, Info::RedChannel, Info::GreenChannel,
                             Info::BlueChannel};
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        // Borders: sorted, with occasional ones outside the histogram.
        std::uniform_int_distribution<int> count(0, 12);
        std::uniform_int_distribution<int> inner(60, 440);
        std::vector<int> borders{99};
        std::vector<int> cuts;
        if (round == 19) {
            cuts.push_back(250); // lists read on both cores need two intervals at least
        }
        for (int i = count(random); i > 0; --i) {
            cuts.push_back(inner(random));
        }
        if (round == 39) {
            cuts.clear(); // long lists in one interval are read on one core
        }
        std::sort(cuts.begin(), cuts.end());
        cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
        borders.insert(borders.end(), cuts.begin(), cuts.end());
        borders.push_back(399);
        std::vector<OXMenum> modes;
        std::vector<QByteArray> names;
        for (size_t i = 0; i + 1 < borders.size(); ++i) {
            modes.push_back(random() % 3 == 0 ? OXM::Disabled : OXM::Enabled);
            if (random() % 4 != 0 || i == 0) {
                names.push_back("Part " + QByteArray::number(int(i)));
            }
        }
        if (round % 5 == 4 && modes.size() > 1) {
            modes.pop_back(); // a mode list shorter than the intervals
        }
        std::vector<const char*> namePointers;
        std::vector<QString> nameStrings;
        for (const QByteArray& n : names) {
            namePointers.push_back(n.constData());
            nameStrings.push_back(QString::fromLocal8Bit(n));
        }
        // Handle lists: ascending as a rule; every seventh round one list is out of order and
        // one has a single handle (ignored). Two rounds have lists long enough to be read on
        // both cores, one of them with a single interval.
        std::vector<Vector> lists[4];
        const bool longLists = round % 20 == 19;
        for (int c = 0; c < 4; ++c) {
            const int n = longLists ? 7000 : std::uniform_int_distribution<int>(0, 160)(random);
            std::uniform_real_distribution<float> x(90.0f, 410.0f);
            std::uniform_real_distribution<float> y(c == 0 ? 0.0f : -0.2f, c == 0 ? 1.0f : 1.2f);
            for (int k = 0; k < n; ++k) {
                lists[c].emplace_back(x(random), y(random));
            }
            if (!(round % 7 == 3 && c == 2)) {
                std::sort(lists[c].begin(), lists[c].end(),
                          [](const Vector& a, const Vector& b) { return a.x < b.x; });
            }
            if (round % 7 == 5 && c == 1) {
                lists[c].resize(1, Vector(200.0f, 0.5f));
            }
        }

        OXMSampleMaterial* material = volume->getMaterial();
        writeArray(material, OXM::IntervalIndexList, borders);
        writeArray(material, OXM::IntervalModeList, modes);
        writeArray(material, OXM::IntervalNameList, namePointers);
        for (int c = 0; c < 4; ++c) {
            writeArray(channel(ids[c]), OXM::LookupTableHandleList, lists[c]);
        }
        reread();

        const OXWLUTObjectInfo* read = panel->objectInfo();
        ASSERT_NE(read, nullptr);
        const auto expected = literalModel(borders, modes, nameStrings, lists);
        ASSERT_EQ(read->intervalCount(), expected->intervalCount());
        for (int i = 0; i < read->intervalCount(); ++i) {
            const Info* a = read->interval(i);
            const Info* b = expected->interval(i);
            EXPECT_EQ(a->from(), b->from()) << "interval " << i;
            EXPECT_EQ(a->to(), b->to()) << "interval " << i;
            EXPECT_EQ(a->name(), b->name()) << "interval " << i;
            EXPECT_EQ(a->isEnabled(), b->isEnabled()) << "interval " << i;
            for (int c : channels) {
                EXPECT_EQ(a->handles(c), b->handles(c)) << "interval " << i << " channel " << c;
                EXPECT_EQ(a->referenceHandles(c), b->referenceHandles(c))
                    << "interval " << i << " channel " << c;
            }
        }
    }
}

// One point per bin, from the first value to the last; the work area's menu item exports too.
// The first dialog starts in the user's documents, the later ones where the last ended. A file
// that can't be written gets a warning naming it; a cancelled dialog gets nothing.
TEST_F(PanelRead, ExportsOnePointPerBinAndWarnsOfAFileThatCantBeWritten)
{
    QByteArray everyBin = "x,y\n";
    for (int g = First; g <= Last; ++g) {
        everyBin += QByteArray::number(g) + ",2\n";
    }
    const std::pair<std::vector<std::uint8_t>, QByteArray> cases[] = {
        {{9, 9, 9, 9}, "x,y\n9,4\n"}, {{5, 5, 5, 6}, "x,y\n5,3\n6,1\n"}, {{}, everyBin}};
    int n = 0;
    QString firstStart;
    for (const auto& [voxels, csv] : cases) {
        SCOPED_TRACE(n);
        select({voxels.empty() ? volume : addVolume("Exported", voxels)});
        ASSERT_TRUE(settle());
        const QString fileName = files.filePath(QStringLiteral("%1.csv").arg(++n));
        OXWFileDialog::queueTestAnswer({fileName, QString()});
        OXWModalAnswers boxes({OXWModalAnswers::button(QMessageBox::Ok)});
        if (n == 3) {
            emit workArea()->histogramSaveActivated();
        } else {
            panel->saveHistogram();
        }
        EXPECT_TRUE(boxes.texts.isEmpty());
        QFile file(fileName);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), csv);
        firstStart = n == 1 ? OXWFileDialog::lastRequest().startDirectory : firstStart;
    }
    EXPECT_TRUE(OXWFileDialog::lastRequest().save);
    EXPECT_EQ(QDir::cleanPath(OXWFileDialog::lastRequest().startDirectory),
              QDir::cleanPath(files.path()));
    EXPECT_EQ(QDir::cleanPath(firstStart),
              QDir::cleanPath(OXWApplication::parsePath(QStringLiteral("${USER_DOCUMENTS}"))));

    const QString missing = files.filePath(QStringLiteral("missing/folder/h.csv"));
    for (const QString& answer : {missing, QString()}) {
        OXWFileDialog::queueTestAnswer({answer, QString()});
        OXWModalAnswers boxes({OXWModalAnswers::button(QMessageBox::Ok)});
        panel->saveHistogram();
        QTest::qWait(50);
        EXPECT_EQ(OXWFileDialog::pendingTestAnswers(), 0);
        EXPECT_EQ(boxes.texts,
                  answer.isEmpty() ? QStringList() : QStringList{"Unable to save " + missing});
    }
    EXPECT_EQ(QDir(files.path()).entryList(QDir::Files).size(), 3);
}

// Data whose bins do not count one value each show their own values on the tool's axis: the
// centre of the first bin is the smallest value, that of the last bin the largest.
TEST_F(PanelRead, FloatAndWideIntegerDataClassifyInTheirOwnValues)
{
    std::vector<float> floats;
    for (int i = 0; i <= 100; ++i) {
        floats.push_back(-1000.0f + 40.0f * float(i)); // -1000 .. 3000
    }
    const std::vector<std::uint32_t> wide = {0u, 1000u, 4000000000u};
    const struct
    {
        OXMenum type;
        std::vector<std::uint8_t> bytes;
        int count;
        double low;
        double high;
    } cases[] = {
        {OXM::Float32, asBytes(floats), int(floats.size()), -1000.0, 3000.0},
        {OXM::UInt32, asBytes(wide), int(wide.size()), 0.0, 4.0e9},
    };
    for (const auto& c : cases) {
        OXMVolumeRenderObject* v = addVolume("Data", c.bytes, c.type, {c.count, 1, 1});
        ASSERT_NE(v, nullptr);
        select({v});
        ASSERT_TRUE(settle() && panel->selectedObject() == v);
        const OXWLUTObjectInfo* info = model();
        const auto valueAtBin = [info](float bin) {
            return double(info->calibratedFromPosition(info->positionFromGrey(bin)));
        };
        const double tolerance = (c.high - c.low) * 1e-5;
        EXPECT_NEAR(valueAtBin(info->greyMin() + 0.5f), c.low, tolerance);
        EXPECT_NEAR(valueAtBin(info->greyMax() - 0.5f), c.high, tolerance);
    }
}
