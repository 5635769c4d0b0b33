#include "OXWUndoTestObjects.h"

#include <OXMObjectPtr.h>
#include <OXMPropertyValue.h>
#include <OXWApplication.h>
#include <OXWUndoStack.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

// The saved values of every property of every object, in order.
using Snapshot = std::vector<std::unique_ptr<OXMPropertyValue>>;

Snapshot snapshot(const std::vector<std::unique_ptr<OXWTestItem>>& items)
{
    Snapshot s;
    for (const auto& item : items) {
        for (int i = 0; i < item->getPropertyCount(); ++i)
            s.push_back(item->getPropertyAt(i)->saveValue());
    }
    return s;
}

// Bit-identical comparison: floats by their bits, the rest by value.
bool identical(const OXMPropertyValue& a, const OXMPropertyValue& b)
{
    if (const float* fa = a.get<float>()) {
        const float* fb = b.get<float>();
        return fb && std::memcmp(fa, fb, sizeof(float)) == 0;
    }
    if (const auto* va = a.get<std::vector<float>>()) {
        const auto* vb = b.get<std::vector<float>>();
        return vb && va->size() == vb->size() &&
               (va->empty() ||
                std::memcmp(va->data(), vb->data(), va->size() * sizeof(float)) == 0);
    }
    return a.equals(b);
}

::testing::AssertionResult sameState(const Snapshot& expected, const Snapshot& actual)
{
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure() << "different number of properties";
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!identical(*expected[i], *actual[i]))
            return ::testing::AssertionFailure() << "property value " << i << " differs";
    }
    return ::testing::AssertionSuccess();
}

class Editor
{
public:
    Editor(unsigned seed, std::vector<std::unique_ptr<OXWTestItem>>& items,
           std::vector<std::unique_ptr<OXWTestItem>>& targets)
        : mRandom(seed), mItems(items), mTargets(targets)
    {
    }

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRandom); }
    float randomFloat()
    {
        // A few repeated values make writes that change nothing.
        if (pick(8) == 0)
            return 0.5f;
        return std::uniform_real_distribution<float>(-100.0f, 100.0f)(mRandom);
    }

    void edit()
    {
        OXWTestItem& item = *mItems[std::size_t(pick(int(mItems.size())))];
        switch (pick(5)) {
        case 0:
            item.opacity.setValue(randomFloat());
            break;
        case 1:
            item.shininess.setValue(pick(5));
            break;
        case 2: {
            std::vector<float> values(static_cast<std::size_t>(pick(20)));
            for (float& v : values)
                v = randomFloat();
            item.table.initArray(0, int(values.size()) - 1, values.data());
            break;
        }
        case 3: {
            // A range inside the array or growing it.
            const int size = item.table.getArraySize();
            const int first = pick(size + 1);
            const int count = 1 + pick(6);
            std::vector<float> values(static_cast<std::size_t>(count));
            for (float& v : values)
                v = randomFloat();
            item.table.setArrayItems(first, first + count - 1, values.data());
            break;
        }
        default: {
            const int choice = pick(int(mTargets.size()) + 2);
            if (choice < int(mTargets.size())) {
                item.reference.setValue(OXMObjectLink(mTargets[std::size_t(choice)].get()));
            } else if (choice == int(mTargets.size())) {
                item.reference.setValue(OXMObjectLink());
            } else {
                // A new object that only links (and undo steps) keep alive.
                item.reference.setValue(OXMObjectLink(new OXWTestItem(true)));
            }
            break;
        }
        }
    }

private:
    std::mt19937 mRandom;
    std::vector<std::unique_ptr<OXWTestItem>>& mItems;
    std::vector<std::unique_ptr<OXWTestItem>>& mTargets;
};

class OXWUndoRandom : public ::testing::TestWithParam<unsigned>
{
};

} // namespace

TEST_P(OXWUndoRandom, UndoingAndRedoingEverythingRestoresEveryValue)
{
    std::vector<std::unique_ptr<OXWTestItem>> targets;
    for (int i = 0; i < 4; ++i)
        targets.push_back(std::make_unique<OXWTestItem>());
    std::vector<std::unique_ptr<OXWTestItem>> items;
    for (int i = 0; i < 6; ++i)
        items.push_back(std::make_unique<OXWTestItem>());
    OXWTestItem view; // changed outside actions only

    OXWApplication app;
    OXWUndoStack& stack = *app.undoStack();
    stack.setStepLimit(1 << 20);
    Editor editor(GetParam(), items, targets);

    // states[k]: the state after k stored steps.
    std::vector<Snapshot> states;
    states.push_back(snapshot(items));
    std::vector<int> open;
    int edits = 0;
    while (edits < 1000 || !open.empty()) {
        const int r = editor.pick(10);
        if (edits < 1000 && (r < 2 && open.size() < 4)) {
            open.push_back(app.userActionBegin(QString("Action %1").arg(edits)));
        } else if (!open.empty() && (r < 4 || edits >= 1000)) {
            // Close the innermost or, now and then, one further out (closing those inside).
            const std::size_t at =
                editor.pick(4) == 0 ? std::size_t(editor.pick(int(open.size()))) : open.size() - 1;
            const int before = stack.count();
            app.userActionEnd(open[at], editor.pick(3) == 0 ? QString("Renamed") : QString());
            open.resize(at);
            if (open.empty()) {
                EXPECT_LE(stack.count(), before + 1);
                if (stack.count() == before + 1)
                    states.push_back(snapshot(items));
                else
                    EXPECT_TRUE(sameState(states.back(), snapshot(items)));
            }
        } else if (open.empty()) {
            view.opacity.setValue(editor.randomFloat()); // not recorded
            EXPECT_EQ(stack.openEntryCount(), 0);
        } else {
            editor.edit();
            ++edits;
        }
    }
    ASSERT_FALSE(app.isUserActionOpen());
    ASSERT_EQ(std::size_t(stack.count()) + 1, states.size());
    EXPECT_EQ(edits, 1000);
    // Random nesting groups the edits into many steps of several edits each.
    EXPECT_GT(stack.count(), 50);
    EXPECT_LT(stack.count(), 1000);
    ::testing::Test::RecordProperty("steps", stack.count());
    ::testing::Test::RecordProperty("entries", stack.entryCount());
    const float viewOpacity = view.opacity.getValue();

    // Undo step by step: every intermediate state comes back.
    for (std::size_t k = states.size() - 1; k > 0; --k) {
        ASSERT_TRUE(stack.undo());
        ASSERT_TRUE(sameState(states[k - 1], snapshot(items))) << "after undoing step " << k;
    }
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.undo());
    EXPECT_EQ(view.opacity.getValue(), viewOpacity);

    for (std::size_t k = 1; k < states.size(); ++k) {
        ASSERT_TRUE(stack.redo());
        ASSERT_TRUE(sameState(states[k], snapshot(items))) << "after redoing step " << k;
    }
    EXPECT_FALSE(stack.canRedo());

    // And once more all the way down and up.
    while (stack.undo()) {
    }
    EXPECT_TRUE(sameState(states.front(), snapshot(items)));
    while (stack.redo()) {
    }
    EXPECT_TRUE(sameState(states.back(), snapshot(items)));

    stack.clear();
    states.clear();
    items.clear();
}

INSTANTIATE_TEST_SUITE_P(Seeds, OXWUndoRandom, ::testing::Values(1u, 42u, 20240611u));
