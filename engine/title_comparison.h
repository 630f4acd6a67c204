// Comparing the titles of one folder.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/title_ranks.h"
#include "platform/collation.h"
#include "values/plist_value.h"

// An entry that takes part in its folder's order.
struct SortableEntry {
  PlistText title;       // TitleComparison::prepare() may convert it to UTF-16
  std::uint32_t offset;  // its index among all entries of the folder
  std::uint32_t rank;    // set by TitleComparison::prepare() if the titles are ranked
  bool folder;

  // Only after TitleComparison::prepare(), and only if the titles are not ranked.
  std::u16string_view units() const { return {static_cast<const char16_t*>(title.start()), title.count()}; }
};

// Compares titles as the file manager does. A hostile file can give the same titles to many entries of many folders,
// or a title of which each comparison reads everything, and so make a small file slow. So this class adds up what the
// titles of the folders could cost, and as soon as that is out of proportion to the size of the file, it ranks all
// titles of the tree, and entries compare by rank. Other files, nearly all, do without the ranks.
class TitleComparison {
 public:
  // For the entries of folders in `tree`, which exists as long as this object.
  TitleComparison(const Collation& collation, const PlistValue& tree);

  // Takes the entries of the next folder. They can be compared until the next call.
  void prepare(std::vector<SortableEntry>& entries);

  // True if a's title goes before b's. Both are from the last prepare().
  bool isBefore(const SortableEntry& a, const SortableEntry& b) const {
    if (ranks_) return a.rank < b.rank;
    return collation_.localizedStandardCompare(a.units(), b.units()) == std::strong_ordering::less;
  }

 private:
  bool isCostly(const std::vector<SortableEntry>& entries);
  void convert(std::vector<SortableEntry>& entries);

  const Collation& collation_;
  const PlistValue& tree_;
  std::size_t costLimit_;
  std::size_t cost_ = 0;   // of the folders so far
  std::u16string titles_;  // of the folder, one after another
  std::optional<TitleRanks> ranks_;
};
