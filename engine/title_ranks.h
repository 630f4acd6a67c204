// The order of all titles of a bookmark tree as numbers.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/collation.h"
#include "values/plist_value.h"

// Compares every title of a tree once and gives each a rank. However often the tree refers to a title, and however long
// it is, that takes n log n comparisons of n titles, and in all reads each title only about log n times.
class TitleRanks {
 public:
  TitleRanks(const Collation& collation, const PlistValue& tree);

  // Returns the rank of a title of the tree. Equal titles have equal ranks.
  std::uint32_t of(const PlistText& title) const { return ranks_[numbers_.at(title)]; }

 private:
  void collect(const PlistValue& node);
  void rank(const Collation& collation);

  std::unordered_set<PlistValue::Identity> visited_;
  std::unordered_map<PlistText, std::uint32_t, PlistText::PlaceHash, PlistText::SamePlace> numbers_;
  std::vector<PlistText> titles_;  // by number, as are the ranks
  std::vector<std::uint32_t> ranks_;
};
