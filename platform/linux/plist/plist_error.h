// Errors of the property-list readers and writers.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "values/plist_document.h"

inline constexpr const char* propertyListDomain = "PropertyList";

// The codes of the platform that owns the format.
enum PropertyListErrorCode { propertyListReadCorrupt = 3840, propertyListWriteInvalid = 3852 };

// Returns true if an error may repeat a name from the file: it looks like a name and is not too long (names of
// encodings have at most 40 characters, RFC 2978). Otherwise an attacker could put text into our messages.
inline bool isPlainName(std::string_view text) {
  constexpr std::size_t longest = 40;
  constexpr std::string_view others = "0123456789._-";
  const auto isLetter = [](char character) { return 'a' <= (character | 0x20) && (character | 0x20) <= 'z'; };
  return !text.empty() && text.size() <= longest && isLetter(text.front()) &&
         std::ranges::all_of(
             text, [&](char character) { return isLetter(character) || others.find(character) != others.npos; });
}

// The error for bytes that are not a property list. `problem` is the fault and its place, without a full stop.
inline Error unreadable(const std::string& problem) {
  return {propertyListDomain, propertyListReadCorrupt,
          "The data couldn’t be read because it isn’t a valid property list: " + problem + "."};
}

// The error for a value that the format cannot represent.
inline Error unwritable(const std::string& problem) {
  return {propertyListDomain, propertyListWriteInvalid, "The property list couldn’t be written: " + problem + "."};
}

inline constexpr const char* tooLarge = "it is 4 GiB or larger";
inline constexpr const char* tooLargeToWrite = "it would be 4 GiB or larger";

// The problem of a file with more levels than `most`, which is less than usual on a small stack.
inline std::string tooManyLevels(unsigned most) {
  return "more than " + std::to_string(most) + " levels of nested arrays and dictionaries" +
         (most < plistMaximumDepth ? ", too many for this small stack," : "");
}
