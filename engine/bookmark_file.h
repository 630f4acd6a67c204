// Safari's bookmark file: where it is, whether it can be read, and what counts as one.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/property_lists.h"

// The path of the current user's bookmark file.
std::string bookmarkFile();

// Returns the size of the bookmark file in bytes; absent if it cannot be read. Reads all of it, because macOS shows
// only on reading whether it grants access to Safari's data. No error is reported.
std::optional<std::size_t> readableBookmarks();

// Parses the bytes of a bookmark file. Throws the parser's Error, or SorterError::notABookmarkTree if the root is not a
// dictionary whose `Children` is an array of dictionaries.
PropertyLists::Parsed parseBookmarks(const Bytes& bytes);
