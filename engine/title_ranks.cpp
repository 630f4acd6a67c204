#include "engine/title_ranks.h"

#include <algorithm>
#include <compare>
#include <numeric>
#include <set>
#include <string>

#include "engine/bookmark_node.h"

TitleRanks::TitleRanks(const Collation& collation, const PlistValue& tree) {
  collect(tree);
  rank(collation);
}

// Collects the titles below a node. Nodes and lists that are shared are visited once.
void TitleRanks::collect(const PlistValue& node) {
  const std::optional<PlistValue> entries = node.value(bookmark::children);
  if (!entries || !entries->is(PlistKind::array)) return;
  if (entries->mayBeShared() && !visited_.insert(entries->identity()).second) return;
  for (std::size_t index = 0; index < entries->size(); ++index) {
    if (entries->kindAt(index) != PlistKind::dictionary) continue;
    const PlistValue entry = entries->at(index);
    if (entry.mayBeShared() && !visited_.insert(entry.identity()).second) continue;
    const NodeFields fields = fieldsOf(entry);
    if (numbers_.emplace(fields.title, titles_.size()).second) titles_.push_back(fields.title);
    if (fields.children != PlistValue::absent) collect(entry);
  }
}

// Inserts the titles into an ordered set, short ones first: a comparison then reads at most twice the length of the
// title that is inserted. In another order one long title could be read again for each of many short ones.
void TitleRanks::rank(const Collation& collation) {
  std::vector<std::u16string> units;
  units.reserve(titles_.size());
  for (const PlistText& title : titles_) units.push_back(title.utf16());
  std::vector<std::uint32_t> byLength(units.size());
  std::iota(byLength.begin(), byLength.end(), 0U);
  std::sort(byLength.begin(), byLength.end(),
            [&](std::uint32_t a, std::uint32_t b) { return units[a].size() < units[b].size(); });
  const auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
    return collation.localizedStandardCompare(units[a], units[b]) == std::strong_ordering::less;
  };
  std::set<std::uint32_t, decltype(isBefore)> inOrder(isBefore);
  std::vector<std::uint32_t> firstOfEqual(units.size());
  for (const std::uint32_t number : byLength) firstOfEqual[number] = *inOrder.insert(number).first;
  ranks_.resize(units.size());
  std::uint32_t rank = 0;
  for (const std::uint32_t number : inOrder) ranks_[number] = rank++;
  for (std::uint32_t number = 0; number < ranks_.size(); ++number) ranks_[number] = ranks_[firstOfEqual[number]];
}
