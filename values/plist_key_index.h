// Where the keys of a large dictionary are. No bookmark has so many that it needs one; a file made to waste time can
// have one dictionary in many places, and looking through all of it for each would take the square of the file's size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

class PlistKeyIndex {
 public:
  // Whether a dictionary of that many entries is worth an index.
  static constexpr bool isFor(std::size_t entries) { return entries > 64; }

  // Calls `keyAt(entry)` for each entry of the dictionary, unless that has been done; it answers a PlistText.
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
