#include "platform/linux/plist/xml_rewriter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/linux/plist/rearrangement.h"
#include "platform/posix/large_memory.h"

namespace {

class XmlRewriter {
 public:
  explicit XmlRewriter(const PlistDocument& document) : document_(document), buffer_(document.source.size()) {}

  // Returns false if an element of these arrays is not a dictionary.
  bool add(const std::vector<RearrangedArray>& arrays) {
    for (const RearrangedArray& rearranged : arrays) {
      const PlistRecord& array = document_.records[rearranged.array];
      if (array.count == 0) continue;
      for (const std::uint32_t element : rearranged.elements)
        if (document_.records[element].kind != PlistKind::dictionary) return false;
      moves_.push_back({rearranged.array, rearranged.elements});
    }
    // In the order of the text: an array comes before the arrays inside it.
    std::sort(moves_.begin(), moves_.end(),
              [&](const RearrangedArray& a, const RearrangedArray& b) { return firstStart(a) < firstStart(b); });
    return true;
  }

  Bytes write() && {
    append(0, document_.source.size());
    buffer_.resize(size_);
    return std::move(buffer_).take();
  }

 private:
  std::size_t start(std::uint32_t dictionary) const { return document_.records[dictionary].high(); }
  std::size_t end(std::uint32_t dictionary) const { return document_.elementEnd(document_.records[dictionary]); }
  std::size_t firstStart(const RearrangedArray& array) const {
    return start(document_.element(document_.records[array.array], 0));
  }

  // Appends the text from `from` to `to` with rearranged arrays in their new order.
  void append(std::size_t from, std::size_t to) {
    // Arrays inside an element start after `from`. An array that starts at `from` is the one around the element.
    auto next =
        std::upper_bound(moves_.begin(), moves_.end(), from,
                         [&](std::size_t place, const RearrangedArray& array) { return place < firstStart(array); });
    while (next != moves_.end() && firstStart(*next) < to) {
      const PlistRecord& array = document_.records[next->array];
      for (std::size_t index = 0; index < array.count; ++index) {
        const std::uint32_t before = document_.element(array, index);
        copy(from, start(before));
        append(start(next->elements[index]), end(next->elements[index]));
        from = end(before);
      }
      // The calls above have appended the arrays inside these elements.
      while (next != moves_.end() && firstStart(*next) < from) ++next;
    }
    copy(from, to);
  }

  void copy(std::size_t from, std::size_t to) {
    std::memcpy(buffer_.data() + size_, document_.source.data() + from, to - from);
    size_ += to - from;
  }

  const PlistDocument& document_;
  std::vector<RearrangedArray> moves_;
  LargeBuffer buffer_;
  std::size_t size_ = 0;
};

}  // namespace

std::optional<Bytes> rewriteXml(const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr || place->document->layout.xml != PlistDocument::Xml::original) return std::nullopt;
  const auto arrays = rearrangedArrays(value, place->document->layout.root);
  if (!arrays) return std::nullopt;
  XmlRewriter rewriter(*place->document);
  if (!rewriter.add(*arrays)) return std::nullopt;
  return std::move(rewriter).write();
}
