// The feed of updates: RSS with Sparkle's elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A version for one system. All texts come from the feed, which anybody may have written.
struct AppcastItem {
  std::string version;        // what versions are compared by
  std::string shownVersion;   // what the user reads; the same as `version` if the feed has no other
  std::string minimumSystem;  // empty if there is no minimum
  std::string notes;          // plain text
  std::string address;        // of the package
  std::uint64_t length = 0;   // of the package, in bytes; 0 if it is not a number
  std::string system;         // "linux"; empty if the feed has none, which Sparkle takes for a Mac
  std::string processor;      // in Debian's words, such as "amd64"; empty for every processor
  std::string signature;      // of the package: Ed25519, in base64
};

// The largest feed that is read, and the most bytes of an item's notes that are kept.
inline constexpr std::size_t largestAppcast = std::size_t{1} << 20;
inline constexpr std::size_t longestNotes = std::size_t{16} << 10;

// Returns the items of a feed in its order. Skips elements and attributes that it does not know. Throws Error if the
// feed is too large, is not XML in UTF-8, has a document type, too many levels or too many items, or is not an appcast.
std::vector<AppcastItem> readAppcast(std::string_view xml);
