#include "engine/title_comparison.h"

#include <algorithm>

namespace {

// Returns the size of the file that a tree is from; 0 if it is from none.
std::size_t fileSize(const PlistValue& tree) {
  const PlistValue::Place* place = tree.placeOrOrigin();
  return place != nullptr ? place->document->source.size() : 0;
}

}  // namespace

TitleComparison::TitleComparison(const Collation& collation, const PlistValue& tree)
    : collation_(collation), tree_(tree) {
  constexpr std::size_t smallFile = std::size_t{1} << 20;
  costLimit_ = 2 * std::max(fileSize(tree), smallFile);
}

void TitleComparison::prepare(std::vector<SortableEntry>& entries) {
  if (!ranks_ && isCostly(entries)) ranks_.emplace(collation_, tree_);
  if (!ranks_) return convert(entries);
  for (SortableEntry& entry : entries) entry.rank = ranks_->of(entry.title);
}

// Assumes that one pass over the entries compares each of them with the longest title. A bookmark takes hundreds of
// bytes in its file, so only a title of a thousand units or more makes an ordinary folder costly.
bool TitleComparison::isCostly(const std::vector<SortableEntry>& entries) {
  constexpr std::size_t costOfAnEntry = 16;
  std::size_t longest = 0;
  for (const SortableEntry& entry : entries) longest = std::max(longest, entry.title.count());
  cost_ += entries.size() * (costOfAnEntry + longest);
  return cost_ > costLimit_;
}

// Stores the titles as UTF-16.
void TitleComparison::convert(std::vector<SortableEntry>& entries) {
  std::size_t most = 0;
  for (const SortableEntry& entry : entries) most += entry.title.count();
  titles_.clear();
  titles_.reserve(most);  // so that no title moves when the next one is appended
  for (SortableEntry& entry : entries) {
    const std::size_t start = titles_.size();
    entry.title.appendTo(titles_);
    entry.title = PlistText(std::u16string_view(titles_).substr(start));
  }
}
