// The errors of the property-list readers and writers.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/error.h"

inline constexpr const char* propertyListDomain = "PropertyList";

// Codes as the platform that owns the format numbers them.
enum PropertyListErrorCode { propertyListReadCorrupt = 3840, propertyListWriteInvalid = 3852 };

// Whether an error may repeat what a file has as a name: it looks like a name, and is no longer than any that means
// something (those of encodings have 40 characters at most, RFC 2978). Else whoever made the file would write the
// error.
inline bool isPlainName(std::string_view text) {
  constexpr std::size_t longest = 40;
  constexpr std::string_view others = "0123456789._-";
  const auto isLetter = [](char character) { return 'a' <= (character | 0x20) && (character | 0x20) <= 'z'; };
  return !text.empty() && text.size() <= longest && isLetter(text.front()) &&
         std::ranges::all_of(
             text, [&](char character) { return isLetter(character) || others.find(character) != others.npos; });
}

// Bytes that are not a property list; `problem` says what is wrong and where, without a full stop.
inline Error unreadable(const std::string& problem) {
  return {propertyListDomain, propertyListReadCorrupt,
          "The data couldn’t be read because it isn’t a valid property list: " + problem + "."};
}

// A value that the format cannot hold.
inline Error unwritable(const std::string& problem) {
  return {propertyListDomain, propertyListWriteInvalid, "The property list couldn’t be written: " + problem + "."};
}
