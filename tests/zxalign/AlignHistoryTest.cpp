#include "zxalign/AlignHistory.h"

#include "support/Random.h"

#include <gtest/gtest.h>

namespace {

/// An edit as a user or a script makes them: of one number, one flip, the landmarks or the pair.
void edit(AlignState& state, Random& random)
{
  SliceInfo& slice = state.slices[static_cast<std::size_t>(random.below(3))];
  switch (random.below(6)) {
  case 0:
    slice.translationX += 1.5f;
    break;
  case 1:
    slice.rotation -= 2.25f;
    break;
  case 2:
    slice.flip = !slice.flip;
    break;
  case 3:
    for (SliceInfo& each : state.slices) each.landmarks.append(QPoint(random.below(99), random.below(99)));
    break;
  case 4:
    if (slice.landmarks.isEmpty()) break; // no change at all
    for (SliceInfo& each : state.slices) each.landmarks.remove(0);
    break;
  default:
    state.side = -state.side;
    state.currentSlice = 1 - state.currentSlice;
  }
}

/// Everything that a state holds, so that a record with wrong landmarks or a wrong pair is no match.
class History : public testing::Test {
protected:
  History() { present.slices.resize(3); }

  void change(Random& random)
  {
    history.save(present);
    // A snapshot that equals the one before is none.
    if (states.empty() || !(states.back() == present)) states.push_back(present);
    edit(present, random);
  }
  bool stepBack()
  {
    const std::optional<AlignState> state = history.undo(present);
    if (state) present = *state;
    return state.has_value();
  }
  bool stepForward()
  {
    const std::optional<AlignState> state = history.redo(present);
    if (state) present = *state;
    return state.has_value();
  }
  void expectState(const AlignState& expected)
  {
    EXPECT_EQ(present.currentSlice, expected.currentSlice);
    EXPECT_EQ(present.side, expected.side);
    EXPECT_EQ(present.slices, expected.slices);
  }

  AlignHistory history;
  AlignState present;
  std::vector<AlignState> states; ///< all that were saved, oldest first
};

} // namespace

TEST_F(History, TakesBackAndRedoesAnySequence)
{
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    history.clear();
    states.clear();
    const int edits = 1 + random.below(seed % 8 ? 12 : 140);
    for (int i = 0; i < edits; ++i) change(random);
    const AlignState end = present;

    const int some = random.below(static_cast<int>(std::min<std::size_t>(states.size(), 60)) + 1);
    for (int i = 0; i < some; ++i) ASSERT_TRUE(stepBack());
    if (some > 0) expectState(states[states.size() - static_cast<std::size_t>(some)]);
    for (int i = 0; i < some; ++i) ASSERT_TRUE(stepForward());
    expectState(end);
    EXPECT_FALSE(stepForward());

    std::size_t steps = 0;
    while (stepBack()) ++steps;
    // Saving an equal state at the limit costs the oldest one, so that there may be a few less.
    EXPECT_LE(steps, std::min(states.size(), AlignHistory::limit));
    EXPECT_TRUE(steps == states.size() || states.size() > 90);
    expectState(states[states.size() - steps]);
    while (stepForward()) --steps;
    EXPECT_EQ(steps, 0U);
    expectState(end);
    if (HasFailure()) return;
  }
}

TEST_F(History, KeepsTheNewestHundred)
{
  for (int i = 0; i < 101; ++i) {
    present.slices[0].translationX = static_cast<float>(i);
    history.save(present);
  }
  int steps = 0;
  while (stepBack()) ++steps;
  EXPECT_EQ(steps, 100);
  EXPECT_EQ(present.slices[0].translationX, 1.0f);
}

TEST_F(History, KeepsWhatCanBeRedoneWhenSomethingNewIsSaved)
{
  history.save(present);
  history.save(present); // equal: one snapshot
  present.slices[1].translationX = 1;
  const AlignState changed = present;
  ASSERT_TRUE(stepBack());
  EXPECT_FALSE(history.canUndo());
  present.slices[1].rotation = 5;
  history.save(present);
  ASSERT_TRUE(stepForward());
  expectState(changed);
  // Different landmarks or another pair make a snapshot of their own.
  history.clear();
  history.save(present);
  present.slices[2].landmarks.append(QPoint(1, 2));
  history.save(present);
  present.side = -1;
  history.save(present);
  int steps = 0;
  while (stepBack()) ++steps;
  EXPECT_EQ(steps, 3);
}
