#include "platform/linux/updates/version.h"

#include <algorithm>

Version::Kind Version::kindOf(char character) {
  constexpr std::string_view separators = " \t\r\n!\"#%&'()*,/:;?@[\\]_{}";
  if (character >= '0' && character <= '9') return Kind::number;
  if (character == '.') return Kind::period;
  return separators.find(character) == std::string_view::npos ? Kind::word : Kind::separator;
}

Version::Version(std::string_view text) {
  for (const char character : text.substr(0, text.find('-'))) {
    const Kind kind = kindOf(character);
    const bool isLonger = kind == Kind::number || kind == Kind::word;
    if (parts_.empty() || parts_.back().kind != kind || !isLonger) parts_.push_back({kind, {}});
    if (parts_.back().text == "0" && kind == Kind::number) parts_.back().text.clear();
    parts_.back().text += character;
  }
}

std::weak_ordering Version::compare(const Part& left, const Part& right) {
  if (left.kind == right.kind) {
    if (left.kind == Kind::number && left.text.size() != right.text.size())
      return left.text.size() <=> right.text.size();
    const bool isText = left.kind == Kind::number || left.kind == Kind::word;
    return isText ? left.text <=> right.text : std::strong_ordering::equal;
  }
  if (left.kind == Kind::word || right.kind == Kind::word)
    return (right.kind == Kind::word) <=> (left.kind == Kind::word);
  return (left.kind == Kind::number) <=> (right.kind == Kind::number);
}

// How many parts come before the first that is neither a number nor a period.
std::size_t Version::leadingNumbers() const {
  const auto end = std::ranges::find_if(
      parts_, [](const Part& part) { return part.kind != Kind::number && part.kind != Kind::period; });
  return static_cast<std::size_t>(end - parts_.begin());
}

// The same version with a zero for each leading number that only the other one has.
Version Version::filledUpTo(const Version& other) const {
  Version filled(*this);
  const std::size_t own = leadingNumbers();
  for (std::size_t index = own; index < other.leadingNumbers(); ++index) {
    const Kind kind = other.parts_[index].kind;
    filled.parts_.insert(filled.parts_.begin() + static_cast<std::ptrdiff_t>(index),
                         {kind, kind == Kind::number ? "0" : "."});
  }
  return filled;
}

std::weak_ordering operator<=>(const Version& left, const Version& right) {
  const std::vector<Version::Part> lefts = left.filledUpTo(right).parts_;
  const std::vector<Version::Part> rights = right.filledUpTo(left).parts_;
  const std::size_t both = std::min(lefts.size(), rights.size());
  for (std::size_t index = 0; index < both; ++index)
    if (const auto order = Version::compare(lefts[index], rights[index]); std::is_neq(order)) return order;
  if (lefts.size() == rights.size()) return std::weak_ordering::equivalent;
  const bool isLeftLonger = lefts.size() > rights.size();
  const bool isWord = (isLeftLonger ? lefts : rights)[both].kind == Version::Kind::word;
  return isLeftLonger == isWord ? std::weak_ordering::less : std::weak_ordering::greater;
}
