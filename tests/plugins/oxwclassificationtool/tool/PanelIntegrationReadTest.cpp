// Reading the classification back from the host: the round trip of a written classification,
// the default classification of a material without interval lists, and the coalescing of
// change messages into one re-read.

#include "PanelFixture.h"

#include <cmath>

using namespace paneltest;

namespace {

class PanelRead : public PanelFixture
{
protected:
    struct Snapshot
    {
        std::vector<float> from;
        std::vector<float> to;
        std::vector<QString> names;
        std::vector<bool> enabled;
        std::vector<HandleList> curves[4];
    };

    Snapshot snapshot() const
    {
        Snapshot s;
        const OXWLUTObjectInfo* m = model();
        for (int i = 0; i < m->intervalCount(); ++i) {
            const Info* interval = m->interval(i);
            s.from.push_back(interval->from());
            s.to.push_back(interval->to());
            s.names.push_back(interval->name());
            s.enabled.push_back(interval->isEnabled());
            for (int c = 0; c < 4; ++c) {
                s.curves[c].push_back(interval->handles(Opacity + c));
            }
        }
        return s;
    }

    static void expectSame(const Snapshot& a, const Snapshot& b)
    {
        ASSERT_EQ(a.from.size(), b.from.size());
        for (std::size_t i = 0; i < a.from.size(); ++i) {
            EXPECT_FLOAT_EQ(a.from[i], b.from[i]) << "interval " << i;
            EXPECT_FLOAT_EQ(a.to[i], b.to[i]) << "interval " << i;
            EXPECT_EQ(a.names[i], b.names[i]) << "interval " << i;
            EXPECT_EQ(a.enabled[i], b.enabled[i]) << "interval " << i;
            for (int c = 0; c < 4; ++c) {
                const HandleList& ha = a.curves[c][i];
                const HandleList& hb = b.curves[c][i];
                ASSERT_EQ(ha.size(), hb.size()) << "interval " << i << " channel " << c + 1;
                for (std::size_t k = 0; k < ha.size(); ++k) {
                    EXPECT_FLOAT_EQ(ha[k].x, hb[k].x)
                        << "interval " << i << " channel " << c + 1 << " handle " << k;
                    EXPECT_FLOAT_EQ(ha[k].y, hb[k].y)
                        << "interval " << i << " channel " << c + 1 << " handle " << k;
                }
            }
        }
    }

    float centre(int cell) const { return (float(cell) + 0.5f) / float(Cells); }
};

} // namespace

TEST_F(PanelRead, HostIntervalsAndCurvesReadIntoTheModel)
{
    const int reads = panel->objectInfoReadCount();
    ASSERT_TRUE(setArray<int>(material(), OXM::IntervalIndexList, {9, 13, 18, 25}));
    ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList,
                                  {OXM::Enabled, OXM::Disabled, OXM::Enabled}));
    ASSERT_TRUE(setArray<const char*>(material(), OXM::IntervalNameList, {"Air", "Soft", "Bone"}));
    ASSERT_TRUE(setArray(channel(OXM::Opacity), OXM::LookupTableHandleList,
                         HandleList({{10.0f, 0.0f}, {16.0f, 0.5f}, {25.0f, 1.0f}})));
    ASSERT_TRUE(waitForReread(reads));

    const OXWLUTObjectInfo* m = model();
    ASSERT_EQ(m->intervalCount(), 3);
    // Border b lies at b + 0.5 in index units: 13 -> cells 10..13, 18 -> 14..18, 25 -> 19..25.
    EXPECT_FLOAT_EQ(m->greyFromPosition(m->interval(0)->to()), 13.5f);
    EXPECT_FLOAT_EQ(m->greyFromPosition(m->interval(1)->to()), 18.5f);
    EXPECT_EQ(m->interval(0)->name(), QStringLiteral("Air"));
    EXPECT_EQ(m->interval(1)->name(), QStringLiteral("Soft"));
    EXPECT_EQ(m->interval(2)->name(), QStringLiteral("Bone"));
    EXPECT_TRUE(m->interval(0)->isEnabled());
    EXPECT_FALSE(m->interval(1)->isEnabled());
    EXPECT_TRUE(m->interval(2)->isEnabled());
    // The host's handle at 16 lies in the middle interval; every interval ends on the curve.
    const Info* middle = m->interval(1);
    bool found = false;
    for (const Handle& h : middle->handles(Opacity)) {
        if (std::fabs(m->greyFromPosition(middle->globalFromLocal(h.x)) - 16.0f) < 1e-3f) {
            found = true;
            EXPECT_FLOAT_EQ(h.y, 0.5f);
        }
    }
    EXPECT_TRUE(found);
    const HandleList& first = m->interval(0)->handles(Opacity);
    ASSERT_GE(first.size(), 2u);
    EXPECT_FLOAT_EQ(first.front().y, 0.0f);
    EXPECT_NEAR(first.back().y, 0.5f * 3.0f / 6.0f, 1e-6f); // grey 13 on the line 10 -> 16
}

TEST_F(PanelRead, ColourHandlesAtOnePlaceKeepTheirOwnValues)
{
    ASSERT_TRUE(settle());
    // One interval; red, green and blue share an inner handle at grey value 17, as the colour
    // bar writes them.
    const int reads = panel->objectInfoReadCount();
    const float x0 = float(First);
    const float x1 = float(Last);
    ASSERT_TRUE(setArray(channel(OXM::AmbientRed), OXM::LookupTableHandleList,
                         HandleList({{x0, 1.0f}, {17.0f, 0.5f}, {x1, 1.0f}})));
    ASSERT_TRUE(setArray(channel(OXM::AmbientGreen), OXM::LookupTableHandleList,
                         HandleList({{x0, 1.0f}, {17.0f, 0.25f}, {x1, 1.0f}})));
    ASSERT_TRUE(setArray(channel(OXM::AmbientBlue), OXM::LookupTableHandleList,
                         HandleList({{x0, 1.0f}, {17.0f, 0.75f}, {x1, 1.0f}})));
    ASSERT_TRUE(waitForReread(reads));

    const Info* interval = model()->interval(0);
    const float expected[] = {128.0f, 64.0f, 192.0f};
    const char* names[] = {"red", "green", "blue"};
    for (int c = 0; c < 3; ++c) {
        const HandleList& handles = interval->handles(Red + c);
        ASSERT_EQ(handles.size(), 3u) << names[c];
        EXPECT_FLOAT_EQ(model()->greyFromPosition(interval->globalFromLocal(handles[1].x)), 17.0f)
            << names[c];
        EXPECT_FLOAT_EQ(handles[1].y, expected[c]) << names[c];
    }
}

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

    const Snapshot written = snapshot();
    const HandleList hostLists[4] = {
        handleList(channel(OXM::Opacity)), handleList(channel(OXM::AmbientRed)),
        handleList(channel(OXM::AmbientGreen)), handleList(channel(OXM::AmbientBlue))};
    reread();
    expectSame(snapshot(), written);

    // Writing the re-read model again changes nothing on the host.
    QMetaObject::invokeMethod(panel.get(), "updateIntervals", Qt::DirectConnection);
    EXPECT_EQ(array<int>(material(), OXM::IntervalIndexList), borders);
    EXPECT_EQ(handleList(channel(OXM::Opacity)), hostLists[0]);
    EXPECT_EQ(handleList(channel(OXM::AmbientRed)), hostLists[1]);
    EXPECT_EQ(handleList(channel(OXM::AmbientGreen)), hostLists[2]);
    EXPECT_EQ(handleList(channel(OXM::AmbientBlue)), hostLists[3]);
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

    ASSERT_NE(model(), nullptr);
    ASSERT_EQ(model()->intervalCount(), 1);
    EXPECT_EQ(model()->interval(0)->name(), QStringLiteral("Interval 1"));
    EXPECT_TRUE(model()->interval(0)->isEnabled());
    EXPECT_FLOAT_EQ(model()->interval(0)->from(), 0.0f);
    EXPECT_FLOAT_EQ(model()->interval(0)->to(), 1.0f);

    // The panel's own default writes start no further re-read.
    ASSERT_TRUE(settle());
    EXPECT_EQ(app.undoStack()->count(), 0);
}

// A burst of changes of the interval lists or of a channel is read once, after the timer.
TEST_F(PanelRead, ABurstOfChangeMessagesCausesOneReread)
{
    ASSERT_TRUE(settle());
    for (bool lists : {true, false}) {
        SCOPED_TRACE(lists);
        const int reads = panel->objectInfoReadCount();
        for (int i = 1; i <= 10; ++i) {
            if (lists) {
                const QByteArray name = "Burst " + QByteArray::number(i);
                ASSERT_TRUE(
                    setArray<const char*>(material(), OXM::IntervalNameList, {name.constData()}));
                ASSERT_TRUE(setArray<OXMenum>(material(), OXM::IntervalModeList,
                                              {i % 2 ? OXM::Disabled : OXM::Enabled}));
            } else {
                ASSERT_TRUE(
                    setArray(channel(OXM::Opacity), OXM::LookupTableHandleList,
                             HandleList({{float(First), 0.0f}, {float(Last), 0.1f * float(i)}})));
            }
        }
        EXPECT_EQ(panel->objectInfoReadCount(), reads);
        EXPECT_TRUE(panel->updateObjectInfoTimer()->isActive());
        EXPECT_EQ(panel->updateObjectInfoTimer()->interval(),
                  OXWClassificationToolGUI::ObjectInfoDelay);
        ASSERT_TRUE(waitForReread(reads));
        QTest::qWait(120);
        EXPECT_EQ(panel->objectInfoReadCount(), reads + 1);
        ASSERT_EQ(model()->intervalCount(), 1);
    }
    EXPECT_EQ(model()->interval(0)->name(), QStringLiteral("Burst 10"));
    EXPECT_TRUE(model()->interval(0)->isEnabled());
    EXPECT_FLOAT_EQ(model()->interval(0)->handles(Opacity).back().y, 1.0f);
}
