#include "platform/linux/plist/binary_rewriter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/plist/rearrangement.h"

namespace {

// The references of rearranged arrays.
class References {
 public:
  struct Range {
    std::size_t start;  // in the file
    std::size_t size;
    std::size_t offset;  // in the new references
  };

  References(const PlistDocument& document, const std::vector<RearrangedArray>& arrays) {
    const unsigned width = document.layout.referenceSize;
    std::string bytes;
    for (const RearrangedArray& array : arrays) {
      ranges_.push_back({document.records[array.array].high(), array.elements.size() * width, bytes.size()});
      for (const std::uint32_t object : array.elements)
        for (unsigned byte = width; byte-- > 0;)
          bytes += static_cast<char>(byte < sizeof object ? object >> (8 * byte) & 0xFF : 0);
    }
    std::sort(ranges_.begin(), ranges_.end(), [](const Range& a, const Range& b) { return a.start < b.start; });
    bytes_ = Bytes(std::move(bytes));
  }

  // The ranges of the file that have new references, in the order of the file.
  const std::vector<Range>& ranges() const { return ranges_; }
  Bytes of(const Range& range) const { return bytes_.slice(range.offset, range.size); }

 private:
  std::vector<Range> ranges_;
  Bytes bytes_;
};

}  // namespace

std::optional<BytePieces> rewriteBinary(const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr || place->document->layout.referenceSize == 0) return std::nullopt;
  const PlistDocument& document = *place->document;
  const auto arrays = rearrangedArrays(value, document.layout.root);
  if (!arrays) return std::nullopt;

  const References references(document, *arrays);
  BytePieces pieces;
  std::size_t from = 0;
  for (const References::Range& range : references.ranges()) {
    pieces.append(document.source.slice(from, range.start - from));
    pieces.append(references.of(range));
    from = range.start + range.size;
  }
  pieces.append(document.source.slice(from, document.source.size() - from));
  return pieces;
}
