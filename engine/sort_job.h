// The sort job: the one operation that sorts Safari's bookmark file.
#pragma once

#include <optional>
#include <string>

// Sorts the bookmark file at `path`; see guarded_rewrite.h for the steps and the errors. A file keeps its format.
// Returns the path of the backup, or none if the file was in order already; nothing was written then.
std::optional<std::string> sortBookmarkFile(const std::string& path);
