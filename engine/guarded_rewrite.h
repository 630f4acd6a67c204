// Replacing the bookmark file without losing anybody's changes.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "values/bytes.h"

// Makes the new content of a file. Called once the old content is backed up.
using MakeContent = std::function<Bytes()>;

// Replaces the bookmark file at `path`, in this order: checks that Safari is closed, reads the file, calls `decide`
// with the old bytes, writes them to a new backup file, calls the function that `decide` returned, checks that Safari
// is still closed and that the file still has the old bytes, and replaces the file atomically. Returns the path of the
// backup, or none if `decide` returned none; nothing was written then. Throws Error, and the file is unchanged:
// SorterError::safariIsOpen, SorterError::changedMeanwhile, whatever `decide` throws, and errors of the file system.
std::optional<std::string> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide);

// Throws SorterError::safariIsOpen if Safari is running.
void requireSafariClosed();
