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

// Returns a text, or the start of a long one.
std::u16string shortened(const PlistText& title) {
  constexpr std::size_t most = 300;
  std::u16string units = title.utf16(most + 1);
  if (units.size() <= most) return units;
  const bool splitsPair = units[most - 1] >= 0xD800 && units[most - 1] <= 0xDBFF;
  units.resize(splitsPair ? most - 1 : most);
  return units + u'…';
}

class TextPreview {
 public:
  TextPreview(SortPreview& preview, bool all, const Styles& styles, BoundedOutput& output)
      : preview_(preview), all_(all), styles_(styles), output_(output) {}

  void addBelow(const PlistValue& folder, std::size_t level) {
    preview_.forEachEntry(folder, [&](const PreviewEntry& entry) {
      if (!all_ && !entry.isMoved && !entry.changesInside) return;
      addLine(entry, level);
      if (all_ || entry.changesInside) addBelow(entry.node, level + 1);
    });
  }

 private:
  void addLine(const PreviewEntry& entry, std::size_t level) {
    const NodeFields fields = fieldsOf(entry.node);
    std::string label = harmlessLine(shortened(fields.title));
    if (label.empty()) label = "(no title)" + address(entry.node, fields.type);
    if (fields.type == NodeType::list) label = styles_.bold(label);
    const std::string line = std::string(2 * level, ' ').append(sign(fields.type)) + label;
    output_.add(entry.isMoved ? moved(entry, line) : "  " + line);
    output_.add("\n");
  }

  static std::string address(const PlistValue& node, NodeType type) {
    const std::string text = type == NodeType::leaf ? harmlessLine(shortened(addressOf(node))) : "";
    return text.empty() ? "" : " " + text;
  }

  std::string moved(const PreviewEntry& entry, const std::string& line) const {
    const std::string places = std::to_string(entry.from + 1) + " → " + std::to_string(entry.to + 1);
    return styles_.green(entry.to < entry.from ? "↑ " : "↓ ") + line + "  " +
           styles_.dim(std::string("(").append(places) + ")");
  }

  SortPreview& preview_;
  bool all_;
  const Styles& styles_;
  BoundedOutput& output_;
};

std::string counted(std::size_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

void printPreviewText(SortPreview& preview, const PlistValue& root, bool all, const Styles& styles,
                      BoundedOutput& output) {
  TextPreview text(preview, all, styles, output);
  if (all || !preview.isInOrder()) text.addBelow(root, 0);
  output.finish();
}

std::string previewSummary(const SortPreview& preview, const std::string& subject) {
  if (preview.isInOrder()) return subject + " already in order.\n";
  return "A sort would move " + counted(preview.movedEntries(), "entry", "entries") + " in " +
         counted(preview.foldersWithMoves(), "folder", "folders") + ". Nothing was written.\n";
}
