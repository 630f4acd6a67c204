#include "engine/fewest_moves.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

// An increasing subsequence, represented by its last entry.
struct Run {
  std::uint64_t score = 0;  // its length first, then the number of its entries that keep their index
  std::size_t last = none;
};

// Between equal scores, the run that ends further down wins.
bool isBetter(const Run& run, const Run& other) {
  if (run.score != other.score) return run.score > other.score;
  return run.score != 0 && run.last > other.last;
}

// The best run that ends below a given rank: a Fenwick tree of maxima.
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

// For each place of the order, the rank of the place that its entry comes from.
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
