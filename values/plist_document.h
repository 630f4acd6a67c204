// A parsed property list as one arena: a tape of small fixed-size records over the bytes of the file itself.
// Parsers fill it, PlistValue reads it, and nothing that it says changes afterwards. Strings and data stay where they
// lie in the file; only what the file does not hold as it is (an escaped string, say) is kept beside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "values/bytes.h"
#include "values/plist_key_index.h"
#include "values/plist_text.h"

enum class PlistKind : std::uint8_t { string, integer, real, boolean, date, data, array, dictionary };

// How many arrays and dictionaries may lie one in another; the platform's own readers stop there too.
inline constexpr unsigned plistMaximumDepth = 512;

struct PlistRecord {
  static constexpr std::uint8_t encodingMask = 0x03;  // strings: a PlistEncoding
  static constexpr std::uint8_t aside = 0x04;         // strings and data: the offset is into `aside`, not `source`
  static constexpr std::uint8_t verbatim = 0x08;      // strings: XML can hold them as they are, with no escapes
  static constexpr std::uint8_t base64 = 0x10;        // data: the span is base64 text, with white space anywhere
  static constexpr std::uint8_t negative = 0x20;      // integers: `bits` is a signed number below zero
  static constexpr std::uint8_t shared = 0x40;        // containers: reached from more than one place

  // string: low half the offset, high half the hash if the string is a key; data: low half the offset;
  // integer: the low 64 bits; real, date: the bits of the double; boolean: 0 or 1;
  // array, dictionary: low half the first link; high half, of a binary file, the place of the references, and of a
  // text, for a dictionary, where its element begins.
  std::uint64_t bits = 0;
  // string: units (bytes for UTF-8); data: bytes of the span; array: elements; dictionary: entries.
  std::uint32_t count = 0;
  // Containers: the levels from here down; 1 for one that holds no other.
  std::uint16_t depth = 0;
  PlistKind kind = PlistKind::boolean;
  std::uint8_t flags = 0;

  std::uint32_t low() const { return static_cast<std::uint32_t>(bits); }
  std::uint32_t high() const { return static_cast<std::uint32_t>(bits >> 32); }
  bool has(std::uint8_t flag) const { return (flags & flag) != 0; }
  PlistEncoding encoding() const { return static_cast<PlistEncoding>(flags & encodingMask); }
};
static_assert(sizeof(PlistRecord) == 16);

struct PlistDocument {
  // Offsets and counts are 32 bits wide, so a file of 4 GiB or more is refused before it is parsed.
  static constexpr std::size_t maximumSize = 0xFFFF'FFFF;

  explicit PlistDocument(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
      : records(memory), links(memory) {}

  Bytes source;
  std::string aside;
  std::pmr::vector<PlistRecord> records;
  // Arrays: a record number for each element. Dictionaries: key and value in turn, equal keys being one record, and
  // in a text format after them where the element ends.
  std::pmr::vector<std::uint32_t> links;
  // What is needed to rewrite the file instead of writing it anew: where its parts are.
  struct Layout {
    std::uint32_t root = 0;  // the record of the whole
    // Binary: the bytes of a reference, where no two objects share a byte; record numbers are object numbers.
    std::uint8_t referenceSize = 0;
    bool isXml = false;  // XML whose file is `source` itself
  };
  Layout layout;
  // Of large dictionaries, by their records; filled by the first who asks for a key. A document is one thread's.
  mutable std::unordered_map<std::uint32_t, PlistKeyIndex> keyIndices;

  const std::byte* start(const PlistRecord& record) const {
    return (record.has(PlistRecord::aside) ? reinterpret_cast<const std::byte*>(aside.data()) : source.data()) +
           record.low();
  }
  PlistText text(const PlistRecord& record) const { return {start(record), record.count, record.encoding()}; }
  std::span<const std::byte> span(const PlistRecord& record) const { return {start(record), record.count}; }
  std::uint32_t element(const PlistRecord& array, std::size_t index) const { return links[array.low() + index]; }
  std::uint32_t key(const PlistRecord& dictionary, std::size_t index) const {
    return links[dictionary.low() + 2 * index];
  }
  std::uint32_t value(const PlistRecord& dictionary, std::size_t index) const {
    return links[dictionary.low() + 2 * index + 1];
  }
  // Where the element of a dictionary of a text format ends; it begins at high().
  std::uint32_t elementEnd(const PlistRecord& dictionary) const {
    return links[dictionary.low() + 2 * std::size_t{dictionary.count}];
  }
};
