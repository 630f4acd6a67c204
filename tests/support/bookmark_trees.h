// Bookmark trees for tests, and a way to look at them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "values/plist_value.h"
#include "platform/property_lists.h"

// A folder, and a bookmark, of the shape that Safari gives them.
PlistValue folderNode(std::u16string_view title, std::vector<PlistValue> children);
PlistValue leafNode(std::u16string_view title);

// An entry that is neither: of a type of its own.
PlistValue proxyNode(std::u16string_view title);

// The top of a bookmark file, with these children.
PlistValue rootNode(std::vector<PlistValue> children);

// The bookmark file of a tree, and the tree in one.
std::string fileOf(const PlistValue& tree, PropertyListFormat format = PropertyListFormat::binary);
PlistValue treeOf(const std::string& file);

// The children of a node in one line: bookmarks by their titles, folders as "title[children]", anything else as
// "<title>".
std::string outline(const PlistValue& node);
// The same of the top of a bookmark file.
std::string outlineOf(const std::string& file);
