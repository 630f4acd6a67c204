#include "engine/fewest_moves.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

// A run of entries that keep their order among each other, by its last one.
struct Run {
  std::uint64_t score = 0;  // its length, and among runs of one length how many of its entries stay at their places
  std::size_t last = none;
};

// Among runs that are as good, the one that ends further down.
bool isBetter(const Run& run, const Run& other) {
  if (run.score != other.score) return run.score > other.score;
  return run.score != 0 && run.last > other.last;
}

// The best run among those that end with an entry from before a given place: a Fenwick tree of maxima.
class BestRuns {
 public:
  explicit BestRuns(std::size_t count) : best_(count + 1) {}

  Run before(std::size_t rank) const {
    Run best;
    for (std::size_t index = rank; index > 0; index &= index - 1)
      if (isBetter(best_[index], best)) best = best_[index];
    return best;
  }

  void add(std::size_t rank, const Run& run) {
    for (std::size_t index = rank + 1; index < best_.size(); index += index & (~index + 1))
      if (isBetter(run, best_[index])) best_[index] = run;
  }

 private:
  std::vector<Run> best_;
};

// For each place of the order, how many of its places come before the one that the entry is from.
std::vector<std::size_t> ranks(const FolderOrder& order) {
  std::vector<std::size_t> rankOf(order.places.empty() ? 0 : order.places.back() + 1);
  for (std::size_t rank = 0; rank < order.places.size(); ++rank) rankOf[order.places[rank]] = rank;
  std::vector<std::size_t> ranks;
  ranks.reserve(order.from.size());
  for (const std::size_t place : order.from) ranks.push_back(rankOf[place]);
  return ranks;
}

}  // namespace

std::vector<bool> fewestMoves(const FolderOrder& order) {
  const std::size_t count = order.places.size();
  const std::vector<std::size_t> rank = ranks(order);
  std::vector<std::size_t> previous(count);
  BestRuns runs(count);
  for (std::size_t index = 0; index < count; ++index) {
    const Run longest = runs.before(rank[index]);
    previous[index] = longest.last;
    runs.add(rank[index], {longest.score + count + 1 + (rank[index] == index ? 1 : 0), index});
  }
  std::vector<bool> moved(count, true);
  for (std::size_t index = runs.before(count).last; index != none; index = previous[index]) moved[index] = false;
  return moved;
}
