#include "platform/linux/plist/rearranged_source.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/plist/rearrangement.h"

namespace {

// What both formats compare: bytes, and a container that was made from one of the document.
class SourceComparison {
 public:
  SourceComparison(const PlistDocument& document, const BytePieces& bytes) : document_(document), bytes_(bytes) {}

 protected:
  // Returns true if the file goes on with the source from `from` to `to`, and continues after it.
  bool hasSource(BytePieces::Reader& file, std::size_t from, std::size_t to) const {
    return from <= to && to <= document_.source.size() && file.skip(document_.source.text().substr(from, to - from));
  }

  // Returns true if a container that is not of the document has the kind and size of the one that it was made from.
  static bool hasShape(const PlistValue& value, const PlistRecord& record) {
    return record.kind == value.kind() && record.count == value.size();
  }

  bool hasKey(const PlistValue& dictionary, const PlistRecord& record, std::size_t entry) const {
    return dictionary.keyAt(entry) == document_.text(document_.records[document_.key(record, entry)]);
  }

  const PlistDocument& document_;
  const BytePieces& bytes_;
};

// Every object stays in its place; only the references of arrays differ.
class BinaryComparison : SourceComparison {
 public:
  using SourceComparison::SourceComparison;

  bool holds(const PlistValue& root) {
    if (bytes_.size() != document_.source.size() || !holds(root, document_.layout.root)) return false;
    std::sort(references_.begin(), references_.end());
    std::size_t from = 0;
    for (const auto& [start, end] : references_) {
      if (!hasSource(from, start)) return false;
      from = end;
    }
    return hasSource(from, bytes_.size());
  }

 private:
  // Returns true if the object `index` of the file is `value`, provided that what is not in references_ is as before.
  bool holds(const PlistValue& value, std::size_t index) {
    if (recordIn(document_, value) != index) return false;
    if (value.place() != nullptr) return true;
    const PlistRecord& record = document_.records[index];
    if (record.has(PlistRecord::shared) || !hasShape(value, record)) return false;
    return record.kind == PlistKind::array ? holdsArray(value, record) : holdsDictionary(value, record);
  }

  bool holdsArray(const PlistValue& array, const PlistRecord& record) {
    const std::size_t start = record.high();
    BytePieces::Reader references(bytes_, start);
    for (std::size_t element = 0; element < record.count; ++element)
      if (!holds(array.at(element), reference(references))) return false;
    references_.emplace_back(start, start + record.count * std::size_t{document_.layout.referenceSize});
    return true;
  }

  bool holdsDictionary(const PlistValue& dictionary, const PlistRecord& record) {
    for (std::size_t entry = 0; entry < record.count; ++entry)
      if (!hasKey(dictionary, record, entry) || !holds(dictionary.valueAt(entry), document_.value(record, entry)))
        return false;
    return true;
  }

  std::size_t reference(BytePieces::Reader& file) const {
    std::size_t object = 0;
    for (std::size_t left = document_.layout.referenceSize; left != 0;) {
      const std::string_view bytes = file.take(left);
      for (const char byte : bytes) object = object << 8 | static_cast<unsigned char>(byte);
      left -= bytes.size();
    }
    return object;
  }

  // Returns true if the bytes from `from` to `to` are the same in the file and the source.
  bool hasSource(std::size_t from, std::size_t to) const {
    BytePieces::Reader file(bytes_, from);
    return SourceComparison::hasSource(file, from, to);
  }

  std::vector<std::pair<std::size_t, std::size_t>> references_;  // of the arrays: start and end
};

// The text of each element stays; only the place of dictionaries inside arrays differs.
class XmlComparison : SourceComparison {
 public:
  XmlComparison(const PlistDocument& document, const BytePieces& bytes)
      : SourceComparison(document, bytes), file_(bytes_) {}

  bool holds(const PlistValue& root) {
    const PlistRecord& record = document_.records[document_.layout.root];
    return recordIn(document_, root) == document_.layout.root && record.kind == PlistKind::dictionary &&
           hasText(0, record.high()) && hasElement(root) &&
           hasText(document_.elementEnd(record), document_.source.size()) && file_.isAtEnd();
  }

 private:
  bool hasText(std::size_t from, std::size_t to) { return hasSource(file_, from, to); }

  // Returns true if the file goes on with the element of a dictionary.
  bool hasElement(const PlistValue& dictionary) {
    const auto index = recordIn(document_, dictionary);
    if (!index) return false;
    const PlistRecord& record = document_.records[*index];
    if (record.kind != PlistKind::dictionary) return false;
    if (dictionary.place() != nullptr) return hasText(record.high(), document_.elementEnd(record));
    if (!hasShape(dictionary, record)) return false;
    std::size_t from = record.high();
    for (std::size_t entry = 0; entry < record.count; ++entry)
      if (!hasKey(dictionary, record, entry) ||
          !hasChanges(dictionary.valueAt(entry), document_.value(record, entry), from))
        return false;
    return hasText(from, document_.elementEnd(record));
  }

  // Returns true if the value is or was made from the record `index`, and the file goes on with the source from `from`
  // to the end of the last change inside the value. Moves `from` there.
  bool hasChanges(const PlistValue& value, std::uint32_t index, std::size_t& from) {
    if (recordIn(document_, value) != index) return false;
    if (value.place() != nullptr) return true;
    const PlistRecord& record = document_.records[index];
    if (!hasShape(value, record)) return false;
    if (record.kind == PlistKind::dictionary) return replaces(record, value, from);
    for (std::size_t element = 0; element < record.count; ++element)
      if (!replaces(document_.records[document_.element(record, element)], value.at(element), from)) return false;
    return true;
  }

  // Returns true if the file has the element of `dictionary` where the source has the element `before`.
  bool replaces(const PlistRecord& before, const PlistValue& dictionary, std::size_t& from) {
    if (before.kind != PlistKind::dictionary || !hasText(from, before.high()) || !hasElement(dictionary)) return false;
    from = document_.elementEnd(before);
    return true;
  }

  BytePieces::Reader file_;
};

}  // namespace

bool isRearrangedSource(const BytePieces& bytes, const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr) return false;
  const PlistDocument& document = *place->document;
  if (document.layout.referenceSize != 0) return BinaryComparison(document, bytes).holds(value);
  return document.layout.xml == PlistDocument::Xml::original && XmlComparison(document, bytes).holds(value);
}
