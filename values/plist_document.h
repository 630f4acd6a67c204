// A parsed property list: an array of small fixed-size records that point into the bytes of the file. A reader fills
// it, PlistValue reads it, and nothing changes its content afterwards. Strings and data stay in the bytes of the file;
// only text that the file stores in another form, such as an escaped string, is stored separately.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "values/bytes.h"
#include "values/memory.h"
#include "values/plist_key_index.h"
#include "values/plist_text.h"

enum class PlistKind : std::uint8_t { string, integer, real, boolean, date, data, array, dictionary };

// The most levels of nested arrays and dictionaries. The platform's own readers have the same limit.
inline constexpr unsigned plistMaximumDepth = 512;

struct PlistRecord {
  static constexpr std::uint8_t encodingMask = 0x03;  // strings: a PlistEncoding
  static constexpr std::uint8_t aside = 0x04;         // strings and data: the offset is into `aside`, not `source`
  static constexpr std::uint8_t verbatim = 0x08;      // strings: XML needs no escapes for them
  static constexpr std::uint8_t base64 = 0x10;        // data: the span is base64 text, with white space anywhere
  static constexpr std::uint8_t negative = 0x20;      // integers: `bits` is a signed number below zero
  static constexpr std::uint8_t shared = 0x40;        // containers: referred to from more than one place

  // string: low half the offset, high half the hash if the string is a key
  // data: low half the offset
  // integer: the low 64 bits
  // real, date: the bits of the double
  // boolean: 0 or 1
  // array, dictionary: low half the first link; high half in a binary file the offset of the references, and for a
  // dictionary in a text format the offset of the start of its element
  std::uint64_t bits = 0;
  // string: units (bytes for UTF-8); data: bytes of the span; array: elements; dictionary: entries.
  std::uint32_t count = 0;
  // Containers: the levels of nesting, this one included; 1 if no other container is inside.
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
  // In bytes. Offsets and counts are 32 bits wide, so readers refuse a file of 4 GiB or more before they parse it.
  static constexpr std::size_t maximumSize = 0xFFFF'FFFF;

  // `memory` must outlive the document.
  explicit PlistDocument(Memory& memory)
      : records(MemoryAllocator<PlistRecord>(memory)), links(records.get_allocator()) {}

  Bytes source;
  std::string aside;
  std::vector<PlistRecord, MemoryAllocator<PlistRecord>> records;
  // Arrays: a record number for each element. Dictionaries: the record numbers of each key and its value in turn, then
  // in a text format the offset of the end of the element. Equal keys of a document are one record.
  std::vector<std::uint32_t, MemoryAllocator<std::uint32_t>> links;
  // Whether `source` is an XML file, and if so, with the file's own bytes or converted to UTF-8.
  enum class Xml : std::uint8_t { none, original, converted };
  // What a rewriter needs to change the order of arrays in the bytes of the file.
  struct Layout {
    std::uint32_t root = 0;  // the record of the root value
    // In a binary file the bytes of a reference, or 0 if objects overlap; a record number is an object number.
    std::uint8_t referenceSize = 0;
    Xml xml = Xml::none;
  };
  Layout layout;
  // By the record of a large dictionary; filled when a key is first looked up. Not thread-safe: one thread reads a
  // document.
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
  // The end of a dictionary's element in a text format; high() is its start.
  std::uint32_t elementEnd(const PlistRecord& dictionary) const {
    return links[dictionary.low() + 2 * std::size_t{dictionary.count}];
  }
};
