#include "companion/preview_json.h"

#include <string_view>
#include <utility>

#include "companion/json_text.h"
#include "engine/bookmark_node.h"

namespace {

std::string_view kind(NodeType type) {
  switch (type) {
    case NodeType::list: return "folder";
    case NodeType::leaf: return "bookmark";
    case NodeType::other: return "other";
  }
  return "";
}

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
    add("\"");
    if (fields.title.empty() && fields.type == NodeType::leaf) {
      add(R"(, "address": )");
      add(jsonString(addressOf(entry.node).utf16()));
    }
    add(R"(, "from": )");
    add(std::to_string(entry.from));
    add(R"(, "moved": )");
    add(jsonTruth(entry.isMoved));
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
  json.add(jsonTruth(preview.isInOrder()));
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
