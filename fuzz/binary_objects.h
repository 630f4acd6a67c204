// A binary property list taken apart into its objects, so that they can be changed one by one and put together again.
// It is for making hostile files, so it knows of the format only what that takes and shares nothing with the reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a file begins with, and how many bytes it ends with that say where all else is.
inline constexpr std::string_view binaryMagic = "bplist00";
inline constexpr std::size_t binaryTrailerSize = 32;

// The number in these bytes, the highest first.
std::uint64_t numberIn(std::span<const std::uint8_t> bytes);

struct BinaryObject {
  std::uint8_t marker = 0;  // the byte that an object begins with; its low half is set by fileOf if it is a count
  std::string content;      // what follows the marker and the count; of no container
  std::vector<std::uint64_t> references;  // of a container: its elements, or its keys and then its values
  bool longCount = false;                 // whether a count is written as an integer even if it would fit the marker
};

struct BinaryObjects {
  std::vector<BinaryObject> objects;
  std::uint64_t top = 0;
  unsigned offsetSize = 1;     // bytes
  unsigned referenceSize = 1;  // bytes
};

// The kind of an object, as the high half of its marker.
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

// Takes a file apart. Objects that do not fit it come back empty. Absent if the trailer does not lead to a table, or
// if objects lie over one another so that taking them apart would take much more than the file.
std::optional<BinaryObjects> objectsOf(std::span<const std::uint8_t> file);

// Puts a file together, the objects in their order and nothing between them. Numbers that do not fit their size are
// cut off.
std::string fileOf(const BinaryObjects& objects);
