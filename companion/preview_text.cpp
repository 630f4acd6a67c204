#include "companion/preview_text.h"

#include <string_view>
#include <utility>

#include "engine/bookmark_node.h"
#include "values/harmless_text.h"

namespace {

std::string_view sign(NodeType type) {
  switch (type) {
    case NodeType::list: return "▸ ";
    case NodeType::leaf: return "  ";
    case NodeType::other: return "· ";
  }
  return "";
}

class TextPreview {
 public:
  TextPreview(SortPreview& preview, bool all, const Styles& styles) : preview_(preview), all_(all), styles_(styles) {}

  void addBelow(const PlistValue& folder, std::size_t level) {
    preview_.forEachEntry(folder, [&](const PreviewEntry& entry) {
      if (!all_ && !entry.isMoved && !entry.changesInside) return;
      addLine(entry, level);
      if (all_ || entry.changesInside) addBelow(entry.node, level + 1);
    });
  }

  std::string text() && { return std::move(text_); }

 private:
  void addLine(const PreviewEntry& entry, std::size_t level) {
    const NodeFields fields = fieldsOf(entry.node);
    std::string label = harmlessLine(fields.title.utf16());
    if (label.empty()) label = "(no title)";
    if (fields.type == NodeType::list) label = styles_.bold(label);
    const std::string line = std::string(2 * level, ' ').append(sign(fields.type)) + label;
    text_ += entry.isMoved ? moved(entry, line) : "  " + line;
    text_ += '\n';
  }

  std::string moved(const PreviewEntry& entry, const std::string& line) const {
    const std::string places = std::to_string(entry.from + 1) + " → " + std::to_string(entry.to + 1);
    return styles_.green(entry.to < entry.from ? "↑ " : "↓ ") + line + "  " +
           styles_.dim(std::string("(").append(places) + ")");
  }

  SortPreview& preview_;
  bool all_;
  const Styles& styles_;
  std::string text_;
};

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

std::string previewText(SortPreview& preview, const PlistValue& root, bool all, const Styles& styles) {
  TextPreview text(preview, all, styles);
  if (all || !preview.isInOrder()) text.addBelow(root, 0);
  return std::move(text).text();
}

std::string previewSummary(const SortPreview& preview) {
  if (preview.isInOrder()) return "Your Safari bookmarks are already in order.\n";
  return "A sort would move " + counted(preview.movedEntries(), "entry", "entries") + " in " +
         counted(preview.foldersWithMoves(), "folder", "folders") + ". Nothing was written.\n";
}
