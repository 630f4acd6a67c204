// A bookmark file: what counts as one, and replacing it with all the care that somebody else's file asks for.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/error.h"
#include "platform/property_lists.h"

// The tree in the bytes of a bookmark file, and the format of the file. Throws what the parser throws, or says that it
// is no bookmark tree: a dictionary with an array of dictionaries as its children.
PropertyLists::Parsed parseBookmarks(const Bytes& bytes);

// Makes the new content of a file, once the old one is backed up.
using MakeContent = std::function<Bytes()>;

// Replaces the bookmark file at `path` by what `decide` wants, which is handed the old bytes: makes sure that Safari is
// closed, reads the file, asks `decide`, writes the old bytes to a new backup file, has the new ones made, checks that
// neither Safari nor bookmark syncing touched the file meanwhile, and replaces it whole or not at all. Answers the path
// of the backup; absent if `decide` wants nothing changed, and then nothing was written. Throws Error, and the file is
// as it was.
std::optional<std::string> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide);

// Does `work`. If that throws, reports it through the alert helper under `title`, with a hint at access that may be
// missing, and answers the message.
std::optional<std::string> reportingFailure(const std::string& title, const std::function<void()>& work);

// What is raised if Safari is found open where it must be closed.
Error safariIsOpen();
