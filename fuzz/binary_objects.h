// Splits a binary property list into its objects, to change them and to join them into a file again. It serves to make
// hostile files, so it is independent of the reader and checks as little as possible.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The header of a file, and the size of its trailer in bytes.
inline constexpr std::string_view binaryMagic = "bplist00";
inline constexpr std::size_t binaryTrailerSize = 32;

// Returns the big-endian number in these bytes.
std::uint64_t numberIn(std::span<const std::uint8_t> bytes);

struct BinaryObject {
  std::uint8_t marker = 0;                // the first byte; if its low half is a count, fileOf sets it
  std::string content;                    // the bytes after the marker and the count; empty for a container
  std::vector<std::uint64_t> references;  // of a container: its elements, or its keys and then its values
  bool longCount = false;                 // true to write a count as an integer even if it fits the marker
};

struct BinaryObjects {
  std::vector<BinaryObject> objects;
  std::uint64_t top = 0;
  unsigned offsetSize = 1;     // bytes
  unsigned referenceSize = 1;  // bytes
};

// The kind of an object: the high half of its marker.
enum BinaryKind : std::uint8_t {
  integerKind = 1,
  realKind = 2,
  dateKind = 3,
  dataKind = 4,
  textKind = 5,
  wideTextKind = 6,
  arrayKind = 0xA,
  setKind = 0xC,
  dictionaryKind = 0xD
};

BinaryKind kindOf(const BinaryObject& object);
bool isContainer(const BinaryObject& object);

// Returns the objects of a file. An object that extends beyond the file is truncated. Absent if the trailer does not
// lead to an offset table, or if overlapping objects would make the result much larger than the file.
std::optional<BinaryObjects> objectsOf(std::span<const std::uint8_t> file);

// Returns a file of these objects in their order, without gaps. Numbers that do not fit their size lose their high
// bytes.
std::string fileOf(const BinaryObjects& objects);
