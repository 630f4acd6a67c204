#include "platform/linux/plist/xml_rewriter.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "platform/linux/plist/rearrangement.h"

namespace {

class XmlRewriter {
 public:
  explicit XmlRewriter(const PlistDocument& document) : document_(document) {}

  // Adds arrays, which exist as long as this object. Returns false if an element of one is not a dictionary.
  bool add(const std::vector<RearrangedArray>& arrays) {
    for (const RearrangedArray& rearranged : arrays) {
      const PlistRecord& array = document_.records[rearranged.array];
      if (array.count == 0) continue;
      for (const std::uint32_t element : rearranged.elements)
        if (document_.records[element].kind != PlistKind::dictionary) return false;
      moves_.push_back({startOf(document_.element(array, 0)), &rearranged});
    }
    // In the order of the text: an array comes before the arrays inside it.
    std::sort(moves_.begin(), moves_.end(), [](const Move& a, const Move& b) { return a.start < b.start; });
    return true;
  }

  BytePieces write() && {
    append(0, document_.source.size());
    pieces_.append(document_.source.slice(start_, end_ - start_));
    return std::move(pieces_);
  }

 private:
  struct Move {
    std::size_t start;  // of the first element
    const RearrangedArray* array;
  };

  std::size_t startOf(std::uint32_t dictionary) const { return document_.records[dictionary].high(); }
  std::size_t endOf(std::uint32_t dictionary) const { return document_.elementEnd(document_.records[dictionary]); }

  // Appends the text from `from` to `to` with rearranged arrays in their new order.
  void append(std::size_t from, std::size_t to) {
    // Arrays inside an element start after `from`. An array that starts at `from` is the one around the element.
    auto next = std::upper_bound(moves_.begin(), moves_.end(), from,
                                 [](std::size_t place, const Move& move) { return place < move.start; });
    while (next != moves_.end() && next->start < to) {
      const std::vector<std::uint32_t>& elements = next->array->elements;
      const PlistRecord& array = document_.records[next->array->array];
      for (std::size_t index = 0; index < array.count; ++index) {
        const std::uint32_t before = document_.element(array, index);
        copy(from, startOf(before));
        append(startOf(elements[index]), endOf(elements[index]));
        from = endOf(before);
      }
      // The calls above have appended the arrays inside these elements.
      while (next != moves_.end() && next->start < from) ++next;
    }
    copy(from, to);
  }

  // Appends the source from `from` to `to`, which is one piece with what was appended last if it follows on that.
  void copy(std::size_t from, std::size_t to) {
    if (from != end_) {
      pieces_.append(document_.source.slice(start_, end_ - start_));
      start_ = from;
    }
    end_ = to;
  }

  const PlistDocument& document_;
  std::vector<Move> moves_;
  BytePieces pieces_;
  std::size_t start_ = 0;  // of the piece that is not appended yet, in the source
  std::size_t end_ = 0;
};

}  // namespace

std::optional<BytePieces> rewriteXml(const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr || place->document->layout.xml != PlistDocument::Xml::original) return std::nullopt;
  const auto arrays = rearrangedArrays(value, place->document->layout.root);
  if (!arrays) return std::nullopt;
  XmlRewriter rewriter(*place->document);
  if (!rewriter.add(*arrays)) return std::nullopt;
  return std::move(rewriter).write();
}
