#include "platform/linux/plist/rearrangement.h"

#include <algorithm>
#include <utility>

namespace {

class Comparison {
 public:
  explicit Comparison(const PlistDocument& document) : document_(document) {}

  // Returns true if `value` is the record `index` except for the order of arrays.
  bool holds(const PlistValue& value, std::uint32_t index) {
    if (recordIn(document_, value) != index) return false;
    if (value.place() != nullptr) return true;
    const PlistRecord& record = document_.records[index];
    if (record.has(PlistRecord::shared) || record.kind != value.kind() || record.count != value.size()) return false;
    return record.kind == PlistKind::array ? holdsArray(value, index) : holdsDictionary(value, record);
  }

  std::vector<RearrangedArray> take() && { return std::move(arrays_); }

 private:
  bool holdsDictionary(const PlistValue& value, const PlistRecord& record) {
    for (std::size_t entry = 0; entry < record.count; ++entry)
      if (!(value.keyAt(entry) == document_.text(document_.records[document_.key(record, entry)])) ||
          !holds(value.valueAt(entry), document_.value(record, entry)))
        return false;
    return true;
  }

  bool holdsArray(const PlistValue& value, std::uint32_t index) {
    const PlistRecord& record = document_.records[index];
    std::vector<std::uint32_t> elements;
    elements.reserve(record.count);
    for (std::size_t element = 0; element < record.count; ++element) {
      const PlistValue child = value.at(element);
      const std::optional<std::uint32_t> origin = recordIn(document_, child);
      if (!origin || !holds(child, *origin)) return false;
      elements.push_back(*origin);
    }
    if (!isPermutation(elements, record)) return false;
    arrays_.push_back({index, std::move(elements)});
    return true;
  }

  bool isPermutation(std::vector<std::uint32_t> elements, const PlistRecord& array) const {
    const auto first = document_.links.begin() + array.low();
    std::vector<std::uint32_t> before(first, first + array.count);
    std::sort(before.begin(), before.end());
    std::sort(elements.begin(), elements.end());
    return elements == before;
  }

  const PlistDocument& document_;
  std::vector<RearrangedArray> arrays_;
};

}  // namespace

std::optional<std::uint32_t> recordIn(const PlistDocument& document, const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  return place != nullptr && place->document.get() == &document ? std::optional(place->record) : std::nullopt;
}

std::optional<std::vector<RearrangedArray>> rearrangedArrays(const PlistValue& value, std::uint32_t root) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr) return std::nullopt;
  Comparison comparison(*place->document);
  if (!comparison.holds(value, root)) return std::nullopt;
  return std::move(comparison).take();
}
