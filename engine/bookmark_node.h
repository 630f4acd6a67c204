// Bookmark nodes: the dictionaries of Safari's bookmark file, and the few keys of theirs that mean something here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "values/plist_value.h"

namespace bookmark {

inline constexpr PlistKey type = u"WebBookmarkType";
inline constexpr PlistKey title = u"Title";
inline constexpr PlistKey children = u"Children";
inline constexpr PlistKey uriDictionary = u"URIDictionary";
inline constexpr PlistKey uriTitle = u"title";

inline constexpr PlistKey listType = u"WebBookmarkTypeList";
inline constexpr PlistKey leafType = u"WebBookmarkTypeLeaf";
inline constexpr PlistKey readingListTitle = u"com.apple.ReadingList";
inline constexpr std::u16string_view reservedPrefix = u"com.apple.";

}  // namespace bookmark

enum class NodeType { list, leaf, other };

// What a node says of itself, found in one pass over its keys. The title is valid for as long as the node is.
struct NodeFields {
  NodeType type = NodeType::other;
  PlistText title{u""};
  std::size_t children = PlistValue::absent;  // the index of that entry, whatever its value
};
NodeFields fieldsOf(const PlistValue& node);

// Whether a node is a folder: its type is exactly "WebBookmarkTypeList".
bool folder(const PlistValue& node);

// A node's title: its `Title` if that is a string, else its URIDictionary's `title` if that is one, else "".
std::u16string title(const PlistValue& node);

// A node's entries: its `Children`, if that is an array of nothing but dictionaries.
std::optional<PlistValue> childrenOf(const PlistValue& node);
