#include "engine/title_comparison.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

namespace {

bool isLong(std::size_t units) {
  constexpr std::size_t longestShort = 256;
  return units > longestShort;
}

// Long titles are stored once, so they are compared by address; short ones by content.
struct TitleHash {
  std::size_t operator()(std::u16string_view title) const {
    return isLong(title.size()) ? std::hash<const void*>()(title.data()) : std::hash<std::u16string_view>()(title);
  }
};
struct SameTitle {
  bool operator()(std::u16string_view a, std::u16string_view b) const {
    return isLong(a.size()) ? a.data() == b.data() : a == b;
  }
};

}  // namespace

void TitleComparison::prepare(std::vector<SortableEntry>& entries) {
  isRanked_ = gather(entries);
  if (isRanked_) rank(entries);
}

// Stores the titles as UTF-16. Returns true if entries share a long one.
bool TitleComparison::gather(std::vector<SortableEntry>& entries) {
  struct Span {
    std::size_t start;
    std::size_t length;
  };
  bool isShared = false;
  std::unordered_map<const void*, Span> longTitles;
  std::vector<Span> spans;
  spans.reserve(entries.size());
  titles_.clear();
  for (const SortableEntry& entry : entries) {
    const bool mayRecur = isLong(entry.title.count());
    const auto known = mayRecur ? longTitles.find(entry.title.start()) : longTitles.end();
    if (known != longTitles.end()) {
      spans.push_back(known->second);
      isShared = true;
      continue;
    }
    const std::size_t start = titles_.size();
    entry.title.appendTo(titles_);
    spans.push_back({start, titles_.size() - start});
    if (mayRecur) longTitles.emplace(entry.title.start(), spans.back());
  }
  for (std::size_t index = 0; index < entries.size(); ++index)
    entries[index].units = std::u16string_view(titles_).substr(spans[index].start, spans[index].length);
  return isShared;
}

void TitleComparison::rank(std::vector<SortableEntry>& entries) const {
  std::unordered_map<std::u16string_view, std::size_t, TitleHash, SameTitle> ranks;
  for (const SortableEntry& entry : entries) ranks.emplace(entry.units, 0);
  std::vector<std::u16string_view> titles;
  titles.reserve(ranks.size());
  for (const auto& [title, rank] : ranks) titles.push_back(title);
  std::sort(titles.begin(), titles.end(), [this](auto a, auto b) { return isBefore(a, b); });
  std::size_t rank = 0;
  for (std::size_t index = 0; index < titles.size(); ++index) {
    if (index > 0 && isBefore(titles[index - 1], titles[index])) ++rank;
    ranks[titles[index]] = rank;
  }
  for (SortableEntry& entry : entries) entry.rank = ranks[entry.units];
}
