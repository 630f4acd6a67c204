// An index of the keys of a large dictionary, against hostile files: bookmarks have few keys, but an attacker can refer
// to one large dictionary from many places. A linear search at each place would take time quadratic in the size of the
// file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

class PlistKeyIndex {
 public:
  // Returns true if a dictionary of that many entries gets an index.
  static constexpr bool isFor(std::size_t entries) { return entries > 64; }

  // Fills the index unless it is full already: calls `keyAt(entry)` for each entry, which returns a PlistText.
  template <class KeyAt>
  void fill(std::size_t entries, KeyAt keyAt) {
    if (!places_.empty()) return;
    places_.reserve(entries);
    for (std::size_t entry = 0; entry < entries; ++entry) places_.emplace(keyAt(entry).hash(), entry);
  }

  // Calls `visit` with each entry whose key may have this hash.
  template <class Visit>
  void visit(std::uint32_t hash, Visit visit) const {
    const auto [first, last] = places_.equal_range(hash);
    for (auto place = first; place != last; ++place) visit(place->second);
  }

 private:
  std::unordered_multimap<std::uint32_t, std::size_t> places_;
};
