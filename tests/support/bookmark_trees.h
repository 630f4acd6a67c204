// Builds bookmark trees and shows their order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/property_lists.h"
#include "values/plist_value.h"

// A folder and a bookmark of Safari's shape.
PlistValue folderNode(std::u16string_view title, std::vector<PlistValue> children);
PlistValue leafNode(std::u16string_view title);

// An entry that is neither a folder nor a bookmark.
PlistValue proxyNode(std::u16string_view title);

// The root of a bookmark file with these children.
PlistValue rootNode(std::vector<PlistValue> children);

// Serializes a tree to a bookmark file, and parses one.
std::string fileOf(const PlistValue& tree, PropertyListFormat format = PropertyListFormat::binary);
PlistValue treeOf(const std::string& file);

// The children of a node in one line: bookmarks by their titles, folders as "title[children]", anything else as
// "<title>".
std::string outline(const PlistValue& node);
// The same for the root of a bookmark file.
std::string outlineOf(const std::string& file);
