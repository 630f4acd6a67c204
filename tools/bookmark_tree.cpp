// Prints a bookmark file as an indented tree, for people: a line for each node, folders marked with a triangle.
// Whatever a title may hold, no control character reaches the terminal.
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bookmark_node.h"
#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"

namespace {

enum ExitStatus { success = 0, failure = 1, wrongUsage = 2 };

// UTF-8 text with every control character as "\u{...}". Those of C1 are two bytes: 0xC2 and the character itself.
std::string printable(std::string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto escaped = [&](unsigned character) {
    return std::string("\\u{") + digits[character >> 4] + digits[character & 0xF] + '}';
  };
  std::string out;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const auto byte = static_cast<unsigned char>(text[index]);
    const auto next = index + 1 < text.size() ? static_cast<unsigned char>(text[index + 1]) : 0U;
    if (byte < 0x20 || byte == 0x7F) {
      out += escaped(byte);
    } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
      out += escaped(next);
      ++index;
    } else {
      out += text[index];
    }
  }
  return out;
}

std::string label(const PlistValue& node) {
  const std::string text = printable(utf8(title(node)));
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

// Prints what is below the root; the root itself has no title worth a line.
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
