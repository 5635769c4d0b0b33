// The panel's re-read against a literal one: intervals from the border list, then every host
// handle inserted one at a time with its commit, zeros into the other colour channels, and
// both ends of every interval placed on the host's curve. The panel batches the commits and
// searches instead of scanning; the model it builds must be the same, bit for bit, on random
// classifications, including unsorted host lists, out-of-range colours and borders that
// don't fit the histogram.

#include <OXWClassificationToolGUI.h>
#include <OXWLUTIntervalInfo.h>
#include <OXWLUTObjectInfo.h>

#include <OXMObjectPath.h>
#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMScene.h>
#include <OXMVolumeRenderObject.h>
#include <OXWApplication.h>
#include <OXWSampleScene.h>

#include <gtest/gtest.h>

#include <QApplication>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace {
using Vector = OXMVector2<float>;
using Info = OXWLUTIntervalInfo;

template <typename T>
void writeArray(OXMObject* object, OXMenum id, const std::vector<T>& values)
{
    auto* array = OXMValueArrayPropertyIF<T>::getInterface(object->getProperty(id));
    ASSERT_NE(array, nullptr);
    ASSERT_TRUE(array->initArray(0, int(values.size()) - 1, values.data()));
}

class PanelReadOracle : public ::testing::Test
{
protected:
    static constexpr int GreyCount = 300; // not a power of two

    void SetUp() override
    {
        OXWSampleScene::Result sample;
        ASSERT_TRUE(OXWSampleScene::build(&app, 4, sample));
        auto* grid = new OXMSampleGrid;
        OXMObjectPtr holdGrid(grid);
        std::vector<std::uint16_t> samples(size_t(GreyCount) * 2);
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = std::uint16_t(100 + i % GreyCount); // bins 100 .. 399
        }
        ASSERT_TRUE(grid->setSamples(OXMVector3<int>(GreyCount, 2, 1), OXM::UInt16, samples));
        OXMObjectPtr holdVolume(OXMVolumeRenderObject::create(grid, "Oracle"));
        volume = static_cast<OXMVolumeRenderObject*>(holdVolume.get());
        ASSERT_TRUE(sample.scene->addVolume(volume));
        auto* selection = OXMValueArrayPropertyIF<OXMObjectPath>::getInterface(
            app.getProperty(OXM::RenderObjectSelectionList));
        const OXMObjectPath path = OXMObjectPath::fromObject(volume);
        ASSERT_TRUE(selection->initArray(0, 0, &path));
        panel = std::make_unique<OXWClassificationToolGUI>(nullptr, "panel");
        ASSERT_NE(panel->objectInfo(), nullptr);
    }

    void TearDown() override { panel.reset(); }

    OXMObject* channel(OXMenum id) const { return volume->getMaterial()->getChannel(id); }

    void reread()
    {
        QMetaObject::invokeMethod(panel.get(), "updateObjectInfo", Qt::DirectConnection);
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

    OXWApplication app;
    OXMVolumeRenderObject* volume = nullptr;
    std::unique_ptr<OXWClassificationToolGUI> panel;
};

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

} // namespace
