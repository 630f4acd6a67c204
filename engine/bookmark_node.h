// Bookmark nodes: the dictionaries of Safari's bookmark file, and the few keys that the program interprets.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "values/plist_value.h"

namespace bookmark {

inline constexpr PlistKey type = u"WebBookmarkType";
inline constexpr PlistKey title = u"Title";
inline constexpr PlistKey children = u"Children";
inline constexpr PlistKey uriDictionary = u"URIDictionary";
inline constexpr PlistKey uriTitle = u"title";
inline constexpr PlistKey address = u"URLString";

inline constexpr PlistKey listType = u"WebBookmarkTypeList";
inline constexpr PlistKey leafType = u"WebBookmarkTypeLeaf";
inline constexpr PlistKey readingListTitle = u"com.apple.ReadingList";
inline constexpr std::u16string_view reservedPrefix = u"com.apple.";

}  // namespace bookmark

enum class NodeType { list, leaf, other };

// The interpreted fields of a node, found in one pass over its keys. The title is a view into the node.
struct NodeFields {
  NodeType type = NodeType::other;
  PlistText title{u""};
  std::size_t children = PlistValue::absent;  // the index of the `Children` entry, whatever its value
};
NodeFields fieldsOf(const PlistValue& node);

// Returns true if a node is a folder: its type is exactly "WebBookmarkTypeList".
bool folder(const PlistValue& node);

// Returns a node's title: `Title` if that is a string, else the `title` of `URIDictionary` if that is one, else "".
std::u16string title(const PlistValue& node);

// Returns the address of a bookmark, a view into the node: `URLString` if that is a string, else "".
PlistText addressOf(const PlistValue& node);

// Returns a node's entries: `Children` if that is an array of dictionaries only, else none. Takes time linear in the
// length of the list.
std::optional<PlistValue> childrenOf(const PlistValue& node);

// Returns the entries of the nodes of a tree, which exists as long as this object. Remembers which lists it has
// checked, because thousands of folders can share a node, or nodes a list.
class EntryLists {
 public:
  std::optional<PlistValue> of(const PlistValue& node);

 private:
  std::unordered_map<PlistValue::Identity, bool> isValid_;
};
