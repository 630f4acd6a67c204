// The keys of a document while it is read. Equal keys become one record. An attacker can make keys whose hashes are
// equal or have one place in the table. Such a file is refused: reading it would take time quadratic in its size.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/plist/plist_error.h"
#include "values/plist_document.h"

class KeyTable {
 public:
  explicit KeyTable(PlistDocument& document) : document_(document), slots_(64, empty) {}

  // Returns the record of the key with this text and hash; if there is none, calls `make` and uses the record that it
  // returns. Throws Error if too many keys have this hash or this place.
  template <class Make>
  std::uint32_t intern(const PlistText& text, std::uint32_t hash, const Make& make) {
    std::size_t slot = hash & (slots_.size() - 1);
    unsigned equalHashes = 0;
    unsigned others = 0;
    for (; slots_[slot] != empty; slot = (slot + 1) & (slots_.size() - 1)) {
      const PlistRecord& record = document_.records[slots_[slot]];
      if (record.high() == hash && document_.text(record) == text) return slots_[slot];
      ++(record.high() == hash ? equalHashes : others);
      if (equalHashes > mostOfEqualHash || others > mostAtOnePlace)
        throw unreadable("too many keys with nearly equal hashes");
    }
    const std::uint32_t key = make();
    PlistRecord& record = document_.records[key];
    record.bits = static_cast<std::uint64_t>(hash) << 32 | record.low();
    slots_[slot] = key;
    if (++count_ * 2 > slots_.size()) grow();
    return key;
  }

 private:
  static constexpr std::uint32_t empty = 0xFFFF'FFFF;
  // Far more than a million keys that nobody has chosen for their hashes ever have.
  static constexpr unsigned mostOfEqualHash = 16;
  static constexpr unsigned mostAtOnePlace = 4096;

  void grow() {
    std::vector<std::uint32_t> larger(slots_.size() * 4, empty);
    for (const std::uint32_t key : slots_) {
      if (key == empty) continue;
      std::size_t slot = document_.records[key].high() & (larger.size() - 1);
      while (larger[slot] != empty) slot = (slot + 1) & (larger.size() - 1);
      larger[slot] = key;
    }
    slots_ = std::move(larger);
  }

  PlistDocument& document_;
  std::vector<std::uint32_t> slots_;  // a hash table with open addressing; its size is a power of two
  std::size_t count_ = 0;
};
