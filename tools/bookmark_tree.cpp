// Prints a bookmark file as an indented tree: one line per node, folders marked with a triangle. Titles are untrusted,
// so no control character of a title reaches the terminal.
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bookmark_node.h"
#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"
#include "values/harmless_text.h"

namespace {

enum ExitStatus { success = 0, failure = 1, wrongUsage = 2 };

std::string label(const PlistValue& node) {
  const std::string text = harmlessLine(title(node));
  return text.empty() ? "(no title)" : text;
}

std::string_view mark(NodeType type) {
  switch (type) {
    case NodeType::list: return "▸ ";
    case NodeType::leaf: return "  ";
    case NodeType::other: return "· ";
  }
  return "";
}

void printNode(const PlistValue& node, std::size_t level) {
  std::cout << std::string(2 * level, ' ') << mark(fieldsOf(node).type) << label(node) << '\n';
  const std::optional<PlistValue> children = childrenOf(node);
  for (std::size_t index = 0; children && index < children->size(); ++index) printNode(children->at(index), level + 1);
}

// Prints the nodes below the root; the root itself has no useful title.
int printFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  const Bytes bytes(std::string(std::istreambuf_iterator<char>(file), {}));
  if (!file) throw Error("bookmark_tree", failure, "The file cannot be read.");
  const std::optional<PlistValue> children = childrenOf(PropertyListCodec().parse(bytes).value);
  if (!children) throw Error("bookmark_tree", failure, "The file is not a bookmark tree.");
  for (std::size_t index = 0; index < children->size(); ++index) printNode(children->at(index), 0);
  return success;
}

}  // namespace

int main(int count, char** values) {
  if (count != 2) {
    std::cerr << "usage: bookmark_tree FILE\n";
    return wrongUsage;
  }
  try {
    return printFile(values[1]);
  } catch (const std::exception& error) {
    std::cerr << "bookmark_tree: " << values[1] << ": " << error.what() << '\n';
    return failure;
  }
}
