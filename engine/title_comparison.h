// Comparing the titles of one folder.
#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/collation.h"
#include "values/plist_text.h"

// An entry that takes part in its folder's order.
struct SortableEntry {
  std::size_t offset;  // its index among all entries of the folder
  bool folder;
  PlistText title;

  // Set by TitleComparison::prepare().
  std::u16string_view units = {};  // the title as UTF-16
  std::size_t rank = 0;            // the title's place among the folder's titles, if they are ranked
};

// Compares titles as the file manager does. A hostile file can give one long title to thousands of entries and so make
// a small file slow: all titles together would be far longer than the file, and comparing each pair would read them
// again and again. So a long title is stored once however many entries share it, and if one is shared, the different
// titles are ranked once and entries compare by rank.
class TitleComparison {
 public:
  explicit TitleComparison(const Collation& collation) : collation_(collation) {}

  // Takes the entries of the next folder. They can be compared until the next call.
  void prepare(std::vector<SortableEntry>& entries);

  // True if a's title goes before b's. Both are from the last prepare().
  bool isBefore(const SortableEntry& a, const SortableEntry& b) const {
    return isRanked_ ? a.rank < b.rank : isBefore(a.units, b.units);
  }

 private:
  bool isBefore(std::u16string_view a, std::u16string_view b) const {
    return collation_.localizedStandardCompare(a, b) == std::strong_ordering::less;
  }

  bool gather(std::vector<SortableEntry>& entries);
  void rank(std::vector<SortableEntry>& entries) const;

  const Collation& collation_;
  std::u16string titles_;  // of the folder, one after another
  bool isRanked_ = false;
};
