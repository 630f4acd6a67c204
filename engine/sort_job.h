// The sort job: the one operation that sorts Safari's bookmark file.
#pragma once

#include <optional>
#include <string>

#include "engine/guarded_rewrite.h"

// Sorts the bookmark file at `path`; see guarded_rewrite.h for the steps and the errors. A file keeps its format.
// Makes sure before the old file is replaced that the new one parses to the sorted tree, else throws
// SorterError::notVerified.
// Returns none if the file was in order already; nothing was written then.
std::optional<Rewrite> sortBookmarkFile(const std::string& path);

// Returns what sortBookmarkFile would write for a file of this content; the same bytes if that is in order. Throws the
// parser's Error, SorterError::notABookmarkTree and SorterError::notVerified.
Bytes sortedContent(const Bytes& content);
