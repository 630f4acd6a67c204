#include "engine/sort_order.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/bookmark_node.h"
#include "platform/platform.h"

namespace {

bool sortable(const NodeFields& fields) {
  return fields.type != NodeType::other && !fields.title.startsWith(bookmark::reservedPrefix);
}

bool isLong(std::size_t units) {
  constexpr std::size_t longestShort = 256;
  return units > longestShort;
}

// Tell gathered titles apart: long ones by their place, as each is gathered once, short ones by their units.
struct GatheredHash {
  std::size_t operator()(std::u16string_view title) const {
    return isLong(title.size()) ? std::hash<const void*>()(title.data()) : std::hash<std::u16string_view>()(title);
  }
};
struct SameGathered {
  bool operator()(std::u16string_view a, std::u16string_view b) const {
    return isLong(a.size()) ? a.data() == b.data() : a == b;
  }
};

class Sorter {
 public:
  Sorter(const Collation& collation, ChangeListener listener) : collation_(collation), listener_(std::move(listener)) {}

  PlistValue sorted(const PlistValue& node, bool root) { return sorted(node, fieldsOf(node), root); }

 private:
  // A sortable child and what its place depends on.
  struct Record {
    std::size_t offset;  // among the children
    bool folder;
    PlistText title;
    std::u16string_view units = {};  // of the title, once all of the folder's are gathered
    std::size_t rank = 0;            // of the title among the folder's, where those are ranked
  };

  PlistValue sorted(const PlistValue& node, const NodeFields& fields, bool root) {
    if (fields.children == PlistValue::absent || fields.title == bookmark::readingListTitle) return node;
    // A node that several folders hold is sorted once, and stays one node.
    const bool remember = !root && node.mayBeShared();
    if (remember)
      if (const auto done = done_.find(node.identity()); done != done_.end()) return done->second.second;
    PlistValue result = withSortedChildren(node, fields, root);
    if (remember) done_.emplace(node.identity(), std::pair(node, result));
    return result;
  }

  PlistValue withSortedChildren(const PlistValue& node, const NodeFields& fields, bool root) {
    const std::optional<PlistValue> children = childrenOf(node);
    if (!children) return node;
    bool changed = false;
    std::vector<PlistValue> elements;
    std::vector<Record> records;
    elements.reserve(children->size());
    records.reserve(root ? 0 : children->size());
    for (std::size_t index = 0; index < children->size(); ++index) {
      PlistValue& element = elements.emplace_back(children->at(index));
      const NodeFields child = fieldsOf(element);
      if (!root && sortable(child)) records.push_back({index, child.type == NodeType::list, child.title});
      if (child.children == PlistValue::absent) continue;
      PlistValue inOrder = sorted(element, child, false);
      if (inOrder.identity() == element.identity()) continue;
      element = std::move(inOrder);
      changed = true;
    }
    FolderOrder told;
    changed |= order(elements, records, told);
    if (!changed) return node;
    if (listener_) listener_(node, told);
    return node.replacing(fields.children, children->rearranged(std::move(elements)));
  }

  // Puts the elements of the records in order, each into a place of one of them; answers whether any moved, and for
  // a listener which.
  bool order(std::vector<PlistValue>& elements, std::vector<Record>& records, FolderOrder& told) {
    const bool isRanked = gatherTitles(records);
    if (isRanked) rankTitles(records);
    const auto before = [&](const Record& a, const Record& b) {
      if (a.folder != b.folder) return a.folder;
      return isRanked ? a.rank < b.rank : isBefore(a.units, b.units);
    };
    if (std::is_sorted(records.begin(), records.end(), before)) return false;
    std::vector<Record> inOrder = records;
    std::stable_sort(inOrder.begin(), inOrder.end(), before);
    std::vector<PlistValue> moved;
    moved.reserve(records.size());
    for (const Record& record : inOrder) moved.push_back(std::move(elements[record.offset]));
    for (std::size_t place = 0; place < records.size(); ++place)
      elements[records[place].offset] = std::move(moved[place]);
    if (listener_) told = {offsetsOf(records), offsetsOf(inOrder)};
    return true;
  }

  static std::vector<std::size_t> offsetsOf(const std::vector<Record>& records) {
    std::vector<std::size_t> offsets;
    offsets.reserve(records.size());
    for (const Record& record : records) offsets.push_back(record.offset);
    return offsets;
  }

  bool isBefore(std::u16string_view a, std::u16string_view b) const {
    return collation_.localizedStandardCompare(a, b) == std::strong_ordering::less;
  }

  // Puts the titles of a folder's records side by side as UTF-16. A long one that many nodes share is put there
  // once, or the titles together could be far longer than the file that they are in; answers whether there is such a
  // one.
  bool gatherTitles(std::vector<Record>& records) {
    struct Span {
      std::size_t start;
      std::size_t length;
    };
    bool isShared = false;
    std::unordered_map<const void*, Span> longOnes;
    std::vector<Span> spans;
    spans.reserve(records.size());
    titles_.clear();
    for (const Record& record : records) {
      const bool mayRecur = isLong(record.title.count());
      const auto known = mayRecur ? longOnes.find(record.title.start()) : longOnes.end();
      if (known != longOnes.end()) {
        spans.push_back(known->second);
        isShared = true;
        continue;
      }
      const std::size_t start = titles_.size();
      record.title.appendTo(titles_);
      spans.push_back({start, titles_.size() - start});
      if (mayRecur) longOnes.emplace(record.title.start(), spans.back());
    }
    for (std::size_t index = 0; index < records.size(); ++index)
      records[index].units = std::u16string_view(titles_).substr(spans[index].start, spans[index].length);
    return isShared;
  }

  // Orders the titles themselves, each once however many records have it: comparing them again for every pair of
  // records could take far longer than the file that they are in is long.
  void rankTitles(std::vector<Record>& records) const {
    std::unordered_map<std::u16string_view, std::size_t, GatheredHash, SameGathered> ranks;
    for (const Record& record : records) ranks.emplace(record.units, 0);
    std::vector<std::u16string_view> titles;
    titles.reserve(ranks.size());
    for (const auto& [title, rank] : ranks) titles.push_back(title);
    std::sort(titles.begin(), titles.end(), [this](auto a, auto b) { return isBefore(a, b); });
    std::size_t rank = 0;
    for (std::size_t index = 0; index < titles.size(); ++index) {
      if (index > 0 && isBefore(titles[index - 1], titles[index])) ++rank;
      ranks[titles[index]] = rank;
    }
    for (Record& record : records) record.rank = ranks[record.units];
  }

  const Collation& collation_;
  ChangeListener listener_;
  std::u16string titles_;  // of the folder that is being put in order
  // What shared nodes became; the node is kept too, so that its identity stays its own.
  std::unordered_map<PlistValue::Identity, std::pair<PlistValue, PlistValue>> done_;
};

}  // namespace

bool sortable(const PlistValue& child) { return sortable(fieldsOf(child)); }

PlistValue sorted(const PlistValue& node, bool root) { return Sorter(platform().collation, {}).sorted(node, root); }

void tellChanges(const PlistValue& node, bool root, const ChangeListener& listener) {
  Sorter(platform().collation, listener).sorted(node, root);
}
