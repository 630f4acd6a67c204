#include "values/plist_value.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "values/base64.h"
#include "values/plist_key_index.h"

namespace {

void requireDepth(unsigned depth) {
  if (depth > plistMaximumDepth) throw std::length_error("property list nested too deeply");
}

struct TextHash {
  std::size_t operator()(const PlistText& text) const { return text.hash(); }
};

}  // namespace

std::string PlistInteger::decimal() const {
  return negative_ ? std::to_string(static_cast<std::int64_t>(bits_)) : std::to_string(bits_);
}

struct PlistValue::Array {
  std::vector<PlistValue> elements;
  Place origin;
  unsigned depth = 1;
};

struct PlistValue::Dictionary {
  std::vector<PlistEntry> entries;
  mutable PlistKeyIndex keyIndex;  // filled when a key is first looked up
  Place origin;
  unsigned depth = 1;
};

PlistValue::PlistValue(std::u16string string) : storage_(std::make_shared<const std::u16string>(std::move(string))) {}

PlistValue::PlistValue(Bytes data) : storage_(std::make_shared<const Bytes>(std::move(data))) {}

PlistValue PlistValue::makeArray(std::vector<PlistValue> elements, Place origin) {
  auto array = std::make_shared<Array>();
  for (const PlistValue& element : elements) array->depth = std::max(array->depth, element.depth() + 1);
  requireDepth(array->depth);
  array->elements = std::move(elements);
  array->origin = std::move(origin);
  return PlistValue(Storage(std::shared_ptr<const Array>(std::move(array))));
}

PlistValue PlistValue::array(std::vector<PlistValue> elements) { return makeArray(std::move(elements), {}); }

PlistValue PlistValue::dictionary(std::vector<PlistEntry> entries) {
  auto dictionary = std::make_shared<Dictionary>();
  std::unordered_set<PlistText, TextHash> keys;
  for (PlistEntry& entry : entries) {
    const std::optional<PlistText> key = entry.key.string();
    if (!key) throw std::invalid_argument("a dictionary key that is not a string");
    if (!keys.insert(*key).second) continue;
    dictionary->depth = std::max(dictionary->depth, entry.value.depth() + 1);
    dictionary->entries.push_back(std::move(entry));
  }
  requireDepth(dictionary->depth);
  return PlistValue(Storage(std::shared_ptr<const Dictionary>(std::move(dictionary))));
}

const PlistRecord* PlistValue::record() const {
  const Place* own = place();
  return own ? &own->document->records[own->record] : nullptr;
}

PlistKind PlistValue::kind() const {
  if (const PlistRecord* own = record()) return own->kind;
  struct Visitor {
    PlistKind operator()(bool) const { return PlistKind::boolean; }
    PlistKind operator()(PlistInteger) const { return PlistKind::integer; }
    PlistKind operator()(double) const { return PlistKind::real; }
    PlistKind operator()(PlistDate) const { return PlistKind::date; }
    PlistKind operator()(const std::shared_ptr<const std::u16string>&) const { return PlistKind::string; }
    PlistKind operator()(const std::shared_ptr<const Bytes>&) const { return PlistKind::data; }
    PlistKind operator()(const std::shared_ptr<const Array>&) const { return PlistKind::array; }
    PlistKind operator()(const std::shared_ptr<const Dictionary>&) const { return PlistKind::dictionary; }
    PlistKind operator()(const Place&) const { return PlistKind::boolean; }  // unreachable: the record has the kind
  };
  return std::visit(Visitor{}, storage_);
}

std::optional<PlistText> PlistValue::string() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::string ? std::optional(place()->document->text(*own)) : std::nullopt;
  const auto* units = shared<std::u16string>();
  return units ? std::optional(PlistText(*units)) : std::nullopt;
}

std::optional<PlistInteger> PlistValue::integer() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::integer
               ? std::optional(PlistInteger::fromBits(own->bits, own->has(PlistRecord::negative)))
               : std::nullopt;
  const auto* number = std::get_if<PlistInteger>(&storage_);
  return number ? std::optional(*number) : std::nullopt;
}

std::optional<double> PlistValue::real() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::real ? std::optional(std::bit_cast<double>(own->bits)) : std::nullopt;
  const auto* number = std::get_if<double>(&storage_);
  return number ? std::optional(*number) : std::nullopt;
}

std::optional<bool> PlistValue::boolean() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::boolean ? std::optional(own->bits != 0) : std::nullopt;
  const auto* truth = std::get_if<bool>(&storage_);
  return truth ? std::optional(*truth) : std::nullopt;
}

std::optional<PlistDate> PlistValue::date() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::date ? std::optional(PlistDate{std::bit_cast<double>(own->bits)}) : std::nullopt;
  const auto* instant = std::get_if<PlistDate>(&storage_);
  return instant ? std::optional(*instant) : std::nullopt;
}

std::optional<Bytes> PlistValue::data() const {
  if (const PlistRecord* own = record()) {
    if (own->kind != PlistKind::data) return std::nullopt;
    const PlistDocument& document = *place()->document;
    if (own->has(PlistRecord::base64)) {
      const std::span<const std::byte> text = document.span(*own);
      return Bytes(decodeBase64({reinterpret_cast<const char*>(text.data()), text.size()}));
    }
    return Bytes(place()->document, document.start(*own), own->count);
  }
  const auto* bytes = shared<Bytes>();
  return bytes ? std::optional(*bytes) : std::nullopt;
}

std::size_t PlistValue::size() const {
  if (const PlistRecord* own = record())
    return own->kind == PlistKind::array || own->kind == PlistKind::dictionary ? own->count : 0;
  if (const auto* array = shared<Array>()) return array->elements.size();
  if (const auto* dictionary = shared<Dictionary>()) return dictionary->entries.size();
  return 0;
}

unsigned PlistValue::depth() const {
  if (const PlistRecord* own = record()) return own->depth;
  if (const auto* array = shared<Array>()) return array->depth;
  if (const auto* dictionary = shared<Dictionary>()) return dictionary->depth;
  return 0;
}

PlistValue PlistValue::at(std::size_t index) const {
  if (const auto* array = shared<Array>()) return array->elements[index];
  const Place& own = *place();
  return PlistValue(Place{own.document, own.document->element(*record(), index)});
}

PlistText PlistValue::keyAt(std::size_t index) const {
  if (const auto* dictionary = shared<Dictionary>()) return *dictionary->entries[index].key.string();
  const PlistDocument& document = *place()->document;
  return document.text(document.records[document.key(*record(), index)]);
}

PlistValue PlistValue::valueAt(std::size_t index) const {
  if (const auto* dictionary = shared<Dictionary>()) return dictionary->entries[index].value;
  const Place& own = *place();
  return PlistValue(Place{own.document, own.document->value(*record(), index)});
}

const PlistValue* PlistValue::builtAt(std::size_t index) const {
  if (const auto* array = shared<Array>()) return &array->elements[index];
  const auto* dictionary = shared<Dictionary>();
  return dictionary ? &dictionary->entries[index].value : nullptr;
}

const PlistRecord& PlistValue::recordAt(std::size_t index) const {
  const PlistDocument& document = *place()->document;
  const PlistRecord& own = *record();
  return document.records[own.kind == PlistKind::array ? document.element(own, index) : document.value(own, index)];
}

PlistKind PlistValue::kindAt(std::size_t index) const {
  const PlistValue* built = builtAt(index);
  return built ? built->kind() : recordAt(index).kind;
}

std::optional<PlistText> PlistValue::stringAt(std::size_t index) const {
  if (const PlistValue* built = builtAt(index)) return built->string();
  const PlistRecord& found = recordAt(index);
  return found.kind == PlistKind::string ? std::optional(place()->document->text(found)) : std::nullopt;
}

std::optional<std::size_t> PlistValue::indexOf(const PlistKey& key) const {
  std::size_t index = absent;
  locate(&key, &index, 1);
  return index == absent ? std::nullopt : std::optional(index);
}

void PlistValue::locate(const PlistKey* keys, std::size_t* indices, std::size_t count) const {
  if (PlistKeyIndex* index = keyIndex()) {
    index->fill(size(), [this](std::size_t entry) { return keyHashAt(entry); });
    for (std::size_t key = 0; key < count; ++key)
      index->visit(keys[key].hash(), [&](std::size_t entry) {
        if (keyAt(entry) == keys[key]) indices[key] = entry;
      });
    return;
  }
  if (const auto* dictionary = shared<Dictionary>()) {
    for (std::size_t entry = 0; entry < dictionary->entries.size(); ++entry)
      for (std::size_t key = 0; key < count; ++key)
        if (*dictionary->entries[entry].key.string() == keys[key]) indices[key] = entry;
    return;
  }
  const PlistRecord* own = record();
  if (!own || own->kind != PlistKind::dictionary) return;
  const PlistDocument& document = *place()->document;
  for (std::size_t entry = 0; entry < own->count; ++entry) {
    const PlistRecord& candidate = document.records[document.key(*own, entry)];
    for (std::size_t key = 0; key < count; ++key)
      if (candidate.high() == keys[key].hash() && document.text(candidate) == keys[key]) indices[key] = entry;
  }
}

// A document has the hashes of its keys, so that many dictionaries with the same long keys do not read them again.
std::uint32_t PlistValue::keyHashAt(std::size_t index) const {
  if (shared<Dictionary>() != nullptr) return keyAt(index).hash();
  const PlistDocument& document = *place()->document;
  return document.records[document.key(*record(), index)].high();
}

PlistKeyIndex* PlistValue::keyIndex() const {
  if (!PlistKeyIndex::isFor(size()) || kind() != PlistKind::dictionary) return nullptr;
  if (const auto* dictionary = shared<Dictionary>()) return &dictionary->keyIndex;
  return &place()->document->keyIndices[place()->record];
}

std::optional<PlistValue> PlistValue::value(const PlistKey& key) const {
  const std::optional<std::size_t> index = indexOf(key);
  return index ? std::optional(valueAt(*index)) : std::nullopt;
}

PlistValue PlistValue::replacing(std::size_t index, PlistValue value) const {
  auto copy = std::make_shared<Dictionary>();
  if (const auto* dictionary = shared<Dictionary>()) {
    copy->entries = dictionary->entries;
    copy->origin = dictionary->origin;
  } else {
    const Place& own = *place();
    copy->origin = own;
    copy->entries.reserve(size());
    for (std::size_t entry = 0; entry < size(); ++entry)
      copy->entries.push_back({PlistValue(Place{own.document, own.document->key(*record(), entry)}), valueAt(entry)});
  }
  copy->entries[index].value = std::move(value);
  for (const PlistEntry& entry : copy->entries) copy->depth = std::max(copy->depth, entry.value.depth() + 1);
  requireDepth(copy->depth);
  return PlistValue(Storage(std::shared_ptr<const Dictionary>(std::move(copy))));
}

PlistValue PlistValue::rearranged(std::vector<PlistValue> elements) const {
  Place origin;
  if (const Place* own = place())
    origin = *own;
  else if (const auto* array = shared<Array>())
    origin = array->origin;
  return makeArray(std::move(elements), std::move(origin));
}

PlistValue::Identity PlistValue::identity() const {
  if (const Place* own = place()) return {own->document.get(), own->record};
  if (const auto* string = shared<std::u16string>()) return {string};
  if (const auto* data = shared<Bytes>()) return {data};
  if (const auto* array = shared<Array>()) return {array};
  if (const auto* dictionary = shared<Dictionary>()) return {dictionary};
  return {};
}

bool PlistValue::mayBeShared() const {
  if (const PlistRecord* own = record()) return own->has(PlistRecord::shared);
  if (const auto* array = std::get_if<std::shared_ptr<const Array>>(&storage_)) return array->use_count() > 1;
  const auto* dictionary = std::get_if<std::shared_ptr<const Dictionary>>(&storage_);
  return dictionary && dictionary->use_count() > 1;
}

const PlistValue::Place* PlistValue::origin() const {
  const Place* origin = nullptr;
  if (const auto* array = shared<Array>()) origin = &array->origin;
  if (const auto* dictionary = shared<Dictionary>()) origin = &dictionary->origin;
  return origin && origin->document ? origin : nullptr;
}

namespace {

// Compares two values in time linear in their stored size, however often their parts are shared. A pair of containers
// is compared once: the whole comparison ends at the first difference, so a pair that was met before is equal so far.
// A union-find structure stores these pairs as classes of equal containers, so it has at most one entry per container.
class Comparison {
 public:
  bool equal(const PlistValue& a, const PlistValue& b) {
    const PlistKind kind = a.kind();
    if (kind != b.kind()) return false;
    const PlistValue::Identity left = a.identity();
    const PlistValue::Identity right = b.identity();
    if (left.storage != nullptr && left == right) return true;
    switch (kind) {
      case PlistKind::string: return isKnown(a.string()->byteCount(), left, right) || *a.string() == *b.string();
      case PlistKind::integer: return *a.integer() == *b.integer();
      case PlistKind::real: return sameBits(*a.real(), *b.real());
      case PlistKind::boolean: return *a.boolean() == *b.boolean();
      case PlistKind::date: return sameBits(a.date()->seconds, b.date()->seconds);
      case PlistKind::data: return isKnown(a.data()->size(), left, right) || *a.data() == *b.data();
      case PlistKind::array:
      case PlistKind::dictionary: break;
    }
    if (a.size() != b.size() || a.depth() != b.depth()) return false;
    if ((a.mayBeShared() || b.mayBeShared()) && !join(left, right)) return true;
    return kind == PlistKind::array ? equalArrays(a, b) : equalDictionaries(a, b);
  }

 private:
  static bool sameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
  }

  bool equalArrays(const PlistValue& a, const PlistValue& b) {
    for (std::size_t index = 0; index < a.size(); ++index)
      if (!equal(a.at(index), b.at(index))) return false;
    return true;
  }

  bool equalDictionaries(const PlistValue& a, const PlistValue& b) {
    std::unordered_map<PlistText, std::size_t, TextHash> places;
    for (std::size_t index = 0; index < a.size(); ++index) {
      const PlistText key = a.keyAt(index);
      std::size_t other = index;
      // Nearly always both dictionaries have the same keys in the same order, so build the index only on demand.
      if (!(b.keyAt(index) == key)) {
        if (places.empty())
          for (std::size_t entry = 0; entry < b.size(); ++entry) places.emplace(b.keyAt(entry), entry);
        const auto found = places.find(key);
        if (found == places.end()) return false;
        other = found->second;
      }
      if (!equal(a.valueAt(index), b.valueAt(other))) return false;
    }
    return true;
  }

  // Returns true if two strings or data have been compared before. Remembers only long ones, as thousands of containers
  // can share them.
  bool isKnown(std::size_t size, PlistValue::Identity left, PlistValue::Identity right) {
    constexpr std::size_t longestShort = 256;
    return size > longestShort && !join(left, right);
  }

  // Puts both into one class; returns false if they were in one class already.
  bool join(PlistValue::Identity a, PlistValue::Identity b) {
    a = representative(a);
    b = representative(b);
    if (a == b) return false;
    parents_[a] = b;
    return true;
  }

  PlistValue::Identity representative(PlistValue::Identity identity) {
    for (auto parent = parents_.find(identity); parent != parents_.end(); parent = parents_.find(identity)) {
      const auto grandparent = parents_.find(parent->second);
      if (grandparent != parents_.end()) parent->second = grandparent->second;
      identity = parent->second;
    }
    return identity;
  }

  std::unordered_map<PlistValue::Identity, PlistValue::Identity> parents_;
};

}  // namespace

bool operator==(const PlistValue& a, const PlistValue& b) { return Comparison().equal(a, b); }
