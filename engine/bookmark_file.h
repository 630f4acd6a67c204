// Safari's bookmark file: where it is, whether it can be read, and what counts as one.
#pragma once

#include <string>

#include "platform/property_lists.h"

// The path of the current user's bookmark file.
std::string bookmarkFile();

// True if the bookmark file can be read. Reads all of it, because macOS shows only on reading whether it grants access
// to Safari's data. Every error counts as "cannot be read"; none is reported.
bool canReadBookmarks();

// Parses the bytes of a bookmark file. Throws the parser's Error, or SorterError::notABookmarkTree if the root is not a
// dictionary whose `Children` is an array of dictionaries.
PropertyLists::Parsed parseBookmarks(const Bytes& bytes);
