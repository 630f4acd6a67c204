#include "companion/nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

constexpr std::size_t mostDifferences = 2;

// The number of letters to insert, remove, replace or swap with the next one, to make one word into the other.
std::size_t differences(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> least(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i)
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        least[i][j] = i + j;
        continue;
      }
      const std::size_t replaced = least[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      least[i][j] = std::min({replaced, least[i - 1][j] + 1, least[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        least[i][j] = std::min(least[i][j], least[i - 2][j - 2] + 1);
    }
  return least[a.size()][b.size()];
}

}  // namespace

std::optional<std::string_view> nearestWord(std::string_view typed, std::span<const std::string_view> words) {
  std::optional<std::string_view> nearest;
  std::size_t least = mostDifferences + 1;
  for (const std::string_view word : words) {
    if (typed.size() > word.size() + mostDifferences) continue;
    const std::size_t count = differences(typed, word);
    if (count >= least || count >= word.size()) continue;
    least = count;
    nearest = word;
  }
  return nearest;
}
