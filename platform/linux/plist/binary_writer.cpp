#include "platform/linux/plist/binary_writer.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/linux/plist/binary_rewriter.h"
#include "platform/linux/plist/plist_error.h"

namespace {

constexpr std::string_view header = "bplist00";

enum Marker : std::uint8_t {
  falseMarker = 0x08,
  trueMarker = 0x09,
  integerMarker = 0x10,
  realMarker = 0x23,
  dateMarker = 0x33,
  dataMarker = 0x40,
  asciiMarker = 0x50,
  utf16Marker = 0x60,
  arrayMarker = 0xA0,
  dictionaryMarker = 0xD0,
};

void appendNumber(std::string& out, std::uint64_t number, unsigned size) {
  for (unsigned byte = size; byte-- > 0;)
    out.push_back(static_cast<char>(byte < sizeof number ? number >> (8 * byte) & 0xFF : 0));
}

// Returns the smallest of one, two, four and eight bytes that can store `limit`.
unsigned sizeFor(std::uint64_t limit) { return limit <= 0xFF ? 1 : limit <= 0xFFFF ? 2 : limit <= 0xFFFF'FFFF ? 4 : 8; }

void appendInteger(std::string& out, PlistInteger integer) {
  // Integers of fewer than eight bytes are unsigned.
  const bool beyondSigned = !integer.signedValue();
  const unsigned size = integer.isNegative() ? 8 : beyondSigned ? 16 : sizeFor(integer.bits());
  out.push_back(static_cast<char>(integerMarker | std::countr_zero(size)));
  appendNumber(out, integer.bits(), size);
}

void appendCount(std::string& out, Marker marker, std::size_t count) {
  constexpr std::size_t longForm = 15;
  out.push_back(static_cast<char>(marker | std::min(count, longForm)));
  if (count >= longForm) appendInteger(out, count);
}

void appendString(std::string& out, const PlistText& text) {
  const std::u16string units = text.utf16();
  const bool ascii = std::all_of(units.begin(), units.end(), [](char16_t unit) { return unit < 0x80; });
  appendCount(out, ascii ? asciiMarker : utf16Marker, units.size());
  for (const char16_t unit : units) appendNumber(out, unit, ascii ? 1 : 2);
}

void appendScalar(std::string& out, const PlistValue& value) {
  switch (value.kind()) {
    case PlistKind::string: return appendString(out, *value.string());
    case PlistKind::integer: return appendInteger(out, *value.integer());
    case PlistKind::real:
      out.push_back(realMarker);
      return appendNumber(out, std::bit_cast<std::uint64_t>(*value.real()), 8);
    case PlistKind::date:
      out.push_back(dateMarker);
      return appendNumber(out, std::bit_cast<std::uint64_t>(value.date()->seconds), 8);
    case PlistKind::boolean: out.push_back(*value.boolean() ? trueMarker : falseMarker); return;
    case PlistKind::data: {
      const Bytes data = *value.data();
      appendCount(out, dataMarker, data.size());
      out.append(data.text());
      return;
    }
    case PlistKind::array:
    case PlistKind::dictionary: return;
  }
}

class BinaryWriter {
 public:
  Bytes write(const PlistValue& value) && {
    number(value);
    const unsigned referenceSize = sizeFor(objects_.size());
    std::string out(header);
    std::vector<std::uint64_t> offsets;
    offsets.reserve(objects_.size());
    for (const Object& object : objects_) {
      offsets.push_back(out.size());
      appendObject(out, object, referenceSize);
      requireSize(out.size());
    }
    const std::uint64_t table = out.size();
    const unsigned offsetSize = sizeFor(table);
    for (const std::uint64_t offset : offsets) appendNumber(out, offset, offsetSize);
    out.append(6, '\0');
    appendNumber(out, offsetSize, 1);
    appendNumber(out, referenceSize, 1);
    appendNumber(out, objects_.size(), 8);
    appendNumber(out, 0, 8);
    appendNumber(out, table, 8);
    requireSize(out.size());
    return Bytes(std::move(out));
  }

 private:
  // The range of a scalar's bytes in scalars_ or of a container's references in references_.
  struct Object {
    PlistKind kind;
    std::size_t first;
    std::size_t count;
  };

  // Returns the object number of a value. A new value is numbered first, with everything below it.
  std::uint32_t number(const PlistValue& value) {
    const PlistValue::Identity identity = value.identity();
    if (identity.storage != nullptr)
      if (const auto known = numbers_.find(identity); known != numbers_.end()) return known->second;
    const bool container = value.is(PlistKind::array) || value.is(PlistKind::dictionary);
    const std::uint32_t object =
        container ? numberContainer(value) : numberScalar(value.kind(), [&] { appendScalar(scalars_, value); });
    if (identity.storage != nullptr) numbers_.emplace(identity, object);
    return object;
  }

  // Numbers the scalar that `append` adds to scalars_. Equal scalars have equal bytes, and only the first is kept.
  template <class Append>
  std::uint32_t numberScalar(PlistKind kind, const Append& append) {
    const std::size_t first = scalars_.size();
    append();
    requireSize(scalars_.size());
    const auto object = add({kind, first, scalars_.size() - first});
    const auto [known, isNew] = seen_.insert(object);
    if (isNew) return object;
    objects_.pop_back();
    scalars_.resize(first);
    return *known;
  }

  std::uint32_t numberContainer(const PlistValue& value) {
    const bool dictionary = value.is(PlistKind::dictionary);
    const std::size_t size = value.size();
    const std::size_t first = references_.size();
    references_.resize(first + (dictionary ? 2 * size : size));
    const auto object = add({value.kind(), first, size});
    for (std::size_t index = 0; index < size && dictionary; ++index)
      references_[first + index] = numberKey(value.keyAt(index));
    for (std::size_t index = 0; index < size; ++index) {
      const std::uint32_t child = number(dictionary ? value.valueAt(index) : value.at(index));
      references_[first + (dictionary ? size : 0) + index] = child;
    }
    return object;
  }

  std::uint32_t numberKey(const PlistText& key) {
    const auto [known, isNew] = keys_.emplace(key, 0);
    if (isNew) known->second = numberScalar(PlistKind::string, [&] { appendString(scalars_, key); });
    return known->second;
  }

  std::uint32_t add(const Object& object) {
    objects_.push_back(object);
    return static_cast<std::uint32_t>(objects_.size() - 1);
  }

  void appendObject(std::string& out, const Object& object, unsigned referenceSize) const {
    if (object.kind != PlistKind::array && object.kind != PlistKind::dictionary) {
      out.append(scalars_, object.first, object.count);
      return;
    }
    const bool dictionary = object.kind == PlistKind::dictionary;
    appendCount(out, dictionary ? dictionaryMarker : arrayMarker, object.count);
    const std::size_t references = dictionary ? 2 * object.count : object.count;
    for (std::size_t index = 0; index < references; ++index)
      appendNumber(out, references_[object.first + index], referenceSize);
  }

  static void requireSize(std::size_t size) {
    if (size > PlistDocument::maximumSize) throw unwritable(tooLargeToWrite);
  }

  std::string_view bytesOf(std::uint32_t scalar) const {
    return std::string_view(scalars_).substr(objects_[scalar].first, objects_[scalar].count);
  }

  struct ScalarHash {
    const BinaryWriter* writer;
    std::size_t operator()(std::uint32_t scalar) const {
      return std::hash<std::string_view>()(writer->bytesOf(scalar));
    }
  };
  struct ScalarEqual {
    const BinaryWriter* writer;
    bool operator()(std::uint32_t a, std::uint32_t b) const { return writer->bytesOf(a) == writer->bytesOf(b); }
  };

  std::vector<Object> objects_;
  std::string scalars_;
  std::vector<std::uint32_t> references_;
  std::unordered_map<PlistValue::Identity, std::uint32_t> numbers_;
  std::unordered_map<PlistText, std::uint32_t, PlistText::PlaceHash, PlistText::SamePlace> keys_;
  std::unordered_set<std::uint32_t, ScalarHash, ScalarEqual> seen_{64, ScalarHash{this}, ScalarEqual{this}};
};

}  // namespace

BytePieces writeBinary(const PlistValue& value) {
  if (std::optional<BytePieces> rewritten = rewriteBinary(value)) return *std::move(rewritten);
  return BinaryWriter().write(value);
}
