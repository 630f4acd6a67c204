// An index of the keys of a large dictionary, against hostile files: bookmarks have few keys, but an attacker can refer
// to one large dictionary from many places. A linear search at each place would take time quadratic in the size of the
// file.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class PlistKeyIndex {
 public:
  // Returns true if a dictionary of that many entries gets an index.
  static constexpr bool isFor(std::size_t entries) { return entries > 64; }

  // Fills the index unless it is full already: calls `hashAt(entry)` for each entry, which returns the hash of its key.
  template <class HashAt>
  void fill(std::size_t entries, HashAt hashAt) {
    if (!places_.empty()) return;
    places_.reserve(entries);
    for (std::size_t entry = 0; entry < entries; ++entry) places_.push_back({hashAt(entry), entry});
    std::sort(places_.begin(), places_.end());
  }

  // Calls `visit` with each entry whose key may have this hash.
  template <class Visit>
  void visit(std::uint32_t hash, Visit visit) const {
    auto place = std::lower_bound(places_.begin(), places_.end(), Place{hash, 0});
    for (; place != places_.end() && place->first == hash; ++place) visit(place->second);
  }

 private:
  using Place = std::pair<std::uint32_t, std::size_t>;  // the hash of a key and its entry

  // Sorted. A hash table would be slow for keys that are made to be in the same bucket.
  std::vector<Place> places_;
};
