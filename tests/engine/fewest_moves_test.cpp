// Which entries count as moved: the fewest whose removal leaves the rest in order.
#include "engine/fewest_moves.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <utility>

#include "tests/support/random_seed.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Places = std::vector<std::size_t>;

Places firstPlaces(std::size_t count) {
  Places places(count);
  std::iota(places.begin(), places.end(), 0);
  return places;
}

// The moves in a list of sortable entries only.
std::vector<bool> moves(Places from) {
  const std::size_t count = from.size();
  return fewestMoves({firstPlaces(count), std::move(from)});
}

TEST(FewestMoves, areNoneIfNothingIsRearranged) {
  EXPECT_THAT(moves({}), IsEmpty());
  EXPECT_THAT(moves({0, 1, 2}), ElementsAre(false, false, false));
}

TEST(FewestMoves, areOneIfOneEntryMoves) {
  EXPECT_THAT(moves({3, 0, 1, 2}), ElementsAre(true, false, false, false)) << "from the end to the start";
  EXPECT_THAT(moves({1, 2, 3, 0}), ElementsAre(false, false, false, true)) << "from the start to the end";
  EXPECT_THAT(moves({0, 2, 3, 1, 4}), ElementsAre(false, false, false, true, false));
}

TEST(FewestMoves, preferToKeepEntriesInTheirPlaces) {
  EXPECT_THAT(moves({2, 1, 0}), ElementsAre(true, false, true));
  EXPECT_THAT(moves({4, 3, 2, 1, 0}), ElementsAre(true, true, false, true, true));
}

TEST(FewestMoves, preferToKeepEntriesThatEndUpFurtherDown) {
  EXPECT_THAT(moves({1, 0}), ElementsAre(true, false));
  EXPECT_THAT(moves({2, 3, 0, 1}), ElementsAre(true, true, false, false));
}

TEST(FewestMoves, coverSortableEntriesOnly) {
  // Fixed entries are at 0, 2 and 5.
  EXPECT_THAT(fewestMoves({{1, 3, 4, 6}, {6, 1, 3, 4}}), ElementsAre(true, false, false, false));
  EXPECT_THAT(fewestMoves({{1, 3, 4}, {4, 3, 1}}), ElementsAre(true, false, true));
}

// The length of the longest increasing subsequence and, among the longest, the most entries that keep their places.
// Takes quadratic time.
std::pair<std::size_t, std::size_t> bestRun(const FolderOrder& order) {
  std::vector<std::pair<std::size_t, std::size_t>> best(order.from.size());
  std::pair<std::size_t, std::size_t> overall;
  for (std::size_t index = 0; index < order.from.size(); ++index) {
    for (std::size_t before = 0; before < index; ++before)
      if (order.from[before] < order.from[index]) best[index] = std::max(best[index], best[before]);
    ++best[index].first;
    best[index].second += order.from[index] == order.places[index] ? 1U : 0U;
    overall = std::max(overall, best[index]);
  }
  return overall;
}

void expectFewest(const FolderOrder& order) {
  const std::vector<bool> moved = fewestMoves(order);
  ASSERT_EQ(moved.size(), order.places.size());
  std::pair<std::size_t, std::size_t> kept;
  std::optional<std::size_t> last;
  for (std::size_t index = 0; index < moved.size(); ++index) {
    if (moved[index]) continue;
    EXPECT_TRUE(!last || *last < order.from[index]) << "what is not moved keeps its order";
    last = order.from[index];
    ++kept.first;
    kept.second += order.from[index] == order.places[index] ? 1U : 0U;
  }
  EXPECT_EQ(kept, bestRun(order));
}

TEST(FewestMoves, areTheFewestForEveryOrderOfSevenEntries) {
  Places from = firstPlaces(7);
  do {
    expectFewest({firstPlaces(7), from});
  } while (std::next_permutation(from.begin(), from.end()) && !testing::Test::HasFailure());
}

TEST(FewestMoves, areTheFewestForRandomOrdersWithGaps) {
  std::mt19937 random(randomSeed());
  for (unsigned round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
    Places places;
    for (std::size_t place = 0; places.size() < round % 60; ++place)
      if (random() % 3 != 0) places.push_back(place);
    Places from = places;
    if (round % 2 == 0)
      std::shuffle(from.begin(), from.end(), random);
    else if (!from.empty())
      std::rotate(from.begin(), from.begin() + static_cast<std::ptrdiff_t>(random() % from.size()), from.end());
    expectFewest({places, from});
  }
}

TEST(FewestMoves, handleAMillionEntriesWithoutComparingAllPairs) {
  constexpr std::size_t count = 1'000'000;
  Places from = firstPlaces(count);
  std::reverse(from.begin(), from.end());
  const std::vector<bool> moved = moves(from);
  EXPECT_EQ(std::count(moved.begin(), moved.end(), false), 1);
  std::shuffle(from.begin(), from.end(), std::mt19937(1));
  const std::vector<bool> shuffled = moves(from);
  // The longest increasing subsequence of a random order has about twice the square root of its length.
  const auto kept = std::count(shuffled.begin(), shuffled.end(), false);
  EXPECT_GT(kept, 1900);
  EXPECT_LT(kept, 2100);
}

}  // namespace
