#include "tests/support/bookmark_trees.h"

#include <utility>

#include "engine/bookmark_node.h"
#include "tests/support/native_parts.h"

PlistValue folderNode(std::u16string_view title, std::vector<PlistValue> children) {
  return PlistValue::dictionary({{u"Children", PlistValue::array(std::move(children))},
                                 {u"Title", title},
                                 {u"WebBookmarkType", u"WebBookmarkTypeList"},
                                 {u"WebBookmarkUUID", u"uuid of " + std::u16string(title)}});
}

PlistValue leafNode(std::u16string_view title) {
  return PlistValue::dictionary({{u"URIDictionary", PlistValue::dictionary({{u"title", title}})},
                                 {u"URLString", u"https://bookmark.example.org/"},
                                 {u"WebBookmarkType", u"WebBookmarkTypeLeaf"},
                                 {u"WebBookmarkUUID", u"uuid of " + std::u16string(title)}});
}

PlistValue proxyNode(std::u16string_view title) {
  return PlistValue::dictionary(
      {{u"Title", title}, {u"WebBookmarkIdentifier", title}, {u"WebBookmarkType", u"WebBookmarkTypeProxy"}});
}

PlistValue rootNode(std::vector<PlistValue> children) {
  return PlistValue::dictionary({{u"Children", PlistValue::array(std::move(children))},
                                 {u"Title", u""},
                                 {u"WebBookmarkFileVersion", 1},
                                 {u"WebBookmarkType", u"WebBookmarkTypeList"}});
}

std::string fileOf(const PlistValue& tree, PropertyListFormat format) {
  return std::string(NativePropertyLists().serialize(tree, format).text());
}

PlistValue treeOf(const std::string& file) { return NativePropertyLists().parse(Bytes(file)).value; }

std::string outline(const PlistValue& node) {
  const PlistValue children = node.value(u"Children").value();
  std::string line;
  for (std::size_t index = 0; index < children.size(); ++index) {
    const PlistValue child = children.at(index);
    const std::string name = utf8(title(child));
    const bool isLeaf = child.value(u"WebBookmarkType") == PlistValue(u"WebBookmarkTypeLeaf");
    if (index > 0) line += ' ';
    line += folder(child) ? name + '[' + outline(child) + ']' : isLeaf ? name : '<' + name + '>';
  }
  return line;
}

std::string outlineOf(const std::string& file) { return outline(treeOf(file)); }
