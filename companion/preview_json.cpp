#include "companion/preview_json.h"

#include <string_view>
#include <utility>

#include "engine/bookmark_node.h"

namespace {

// The text as a JSON string, with everything but printable ASCII escaped. The detour through UTF-8 replaces unpaired
// surrogates.
std::string jsonString(std::u16string_view units) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "\"";
  for (const char16_t unit : utf16(utf8(units))) {
    if (unit >= 0x20 && unit < 0x7F) {
      if (unit == u'"' || unit == u'\\') text += '\\';
      text += static_cast<char>(unit);
      continue;
    }
    text += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) text += digits[(unit >> shift) & 0xF];
  }
  return text + '"';
}

std::string_view kind(NodeType type) {
  switch (type) {
    case NodeType::list: return "folder";
    case NodeType::leaf: return "bookmark";
    case NodeType::other: return "other";
  }
  return "";
}

std::string_view truth(bool value) { return value ? "true" : "false"; }

class JsonPreview {
 public:
  JsonPreview(SortPreview& preview, bool all, BoundedOutput& output) : preview_(preview), all_(all), output_(output) {}

  // Adds the array of a folder's entries.
  void addChildren(const PlistValue& folder, std::size_t level) {
    add(R"("children": [)");
    bool isFirst = true;
    preview_.forEachEntry(folder, [&](const PreviewEntry& entry) {
      if (!std::exchange(isFirst, false)) add(",");
      addLineBreak(level);
      addEntry(entry, level);
    });
    if (!isFirst) addLineBreak(level - 1);
    add("]");
  }

  void add(std::string_view text) { output_.add(text); }

 private:
  void addLineBreak(std::size_t level) { add(std::string(1, '\n').append(2 * level, ' ')); }

  void addEntry(const PreviewEntry& entry, std::size_t level) {
    const NodeFields fields = fieldsOf(entry.node);
    add(R"({"title": )");
    add(jsonString(fields.title.utf16()));
    add(R"(, "kind": ")");
    add(kind(fields.type));
    add(R"(", "from": )");
    add(std::to_string(entry.from));
    add(R"(, "moved": )");
    add(truth(entry.isMoved));
    if (entry.changesInside || (all_ && preview_.hasEntries(entry.node))) {
      add(", ");
      addChildren(entry.node, level + 1);
    }
    add("}");
  }

  SortPreview& preview_;
  bool all_;
  BoundedOutput& output_;
};

}  // namespace

void printPreviewJson(SortPreview& preview, const PlistValue& root, bool all, const std::string& file,
                      BoundedOutput& output) {
  JsonPreview json(preview, all, output);
  json.add(R"({"file": )");
  json.add(jsonString(utf16(file)));
  json.add(R"(, "isInOrder": )");
  json.add(truth(preview.isInOrder()));
  if (all || !preview.isInOrder()) {
    json.add(", ");
    json.addChildren(root, 1);
  }
  json.add(R"(, "moved": )");
  json.add(std::to_string(preview.movedEntries()));
  json.add(R"(, "folders": )");
  json.add(std::to_string(preview.foldersWithMoves()));
  json.add("}\n");
  output.finish();
}
