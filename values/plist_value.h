// A property-list value: a string, integer, real, Boolean, date, data, an array of values, or a dictionary from
// string keys to values. Values are immutable and held by value; copying one costs a reference count, because
// storage is shared: with other values, or with the document that the value was parsed from.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "values/bytes.h"
#include "values/plist_document.h"
#include "values/plist_text.h"

class PlistValue;

template <class Number>
concept PlistNumber = std::integral<Number> && !std::same_as<Number, bool>;

// A whole number from -2^63 to 2^64-1, the range of the format.
class PlistInteger {
 public:
  template <PlistNumber Number>
  constexpr PlistInteger(Number number)  // NOLINT(google-explicit-constructor): a number is one
      : bits_(static_cast<std::uint64_t>(number)), negative_(number < 0) {}
  // The low 64 bits of a number, which is negative as said.
  static constexpr PlistInteger fromBits(std::uint64_t bits, bool negative) {
    PlistInteger integer{bits};
    integer.negative_ = negative;
    return integer;
  }

  constexpr std::uint64_t bits() const { return bits_; }
  constexpr bool isNegative() const { return negative_; }
  // The number where 64 bits with a sign can hold it.
  constexpr std::optional<std::int64_t> signedValue() const {
    const auto value = static_cast<std::int64_t>(bits_);
    return (value < 0) == negative_ ? std::optional(value) : std::nullopt;
  }
  // The number, or the nearest one that an int can hold.
  constexpr int nearestInt() const {
    constexpr std::numeric_limits<int> limits;
    const std::optional<std::int64_t> value = signedValue();
    if (!value) return limits.max();
    return static_cast<int>(std::clamp<std::int64_t>(*value, limits.min(), limits.max()));
  }
  std::string decimal() const;
  friend constexpr bool operator==(PlistInteger, PlistInteger) = default;

 private:
  std::uint64_t bits_;
  bool negative_;
};

// An instant as the format counts it: seconds since 2001-01-01 00:00 UTC, kept to the bit.
struct PlistDate {
  double seconds = 0;
};

// A text known beforehand that is looked for often: a dictionary key, say. Its hash is computed once, and if it is
// short and ASCII, so are its bytes.
class PlistKey {
 public:
  constexpr PlistKey(const char16_t* units) : PlistKey(std::u16string_view(units)) {}  // NOLINT: a literal is one
  constexpr explicit PlistKey(std::u16string_view units) : units_(units) {
    for (const char16_t unit : units) hash_ = plistHashStep(hash_, unit);
    isShortAscii_ = units.size() <= bytes_.size();
    for (std::size_t index = 0; index < units.size() && isShortAscii_; ++index) {
      isShortAscii_ = units[index] < 0x80;
      bytes_[index] = static_cast<char>(units[index]);
    }
  }
  constexpr std::u16string_view units() const { return units_; }
  constexpr std::uint32_t hash() const { return hash_; }

  friend bool operator==(const PlistText& text, const PlistKey& key) {
    const bool bytes = text.encoding() == PlistEncoding::latin1 || text.encoding() == PlistEncoding::utf8;
    if (!bytes || !key.isShortAscii_) return text == key.units_;
    return text.count() == key.units_.size() && std::memcmp(text.start(), key.bytes_.data(), text.count()) == 0;
  }

 private:
  std::u16string_view units_;
  std::uint32_t hash_ = plistHashStart;
  bool isShortAscii_ = false;
  std::array<char, 24> bytes_{};
};

struct PlistEntry;

class PlistValue {
 public:
  // Where a value's storage is: equal identities mean the very same value. Scalars that are held in the value
  // itself have none (`storage` is null).
  struct Identity {
    const void* storage = nullptr;
    std::uint32_t record = 0;
    friend bool operator==(Identity, Identity) = default;
  };
  // A value's place in a parsed document.
  struct Place {
    std::shared_ptr<const PlistDocument> document;
    std::uint32_t record = 0;
  };

  PlistValue(std::u16string string);                                              // NOLINT: a string is a value
  PlistValue(std::u16string_view string) : PlistValue(std::u16string(string)) {}  // NOLINT
  PlistValue(const char16_t* string) : PlistValue(std::u16string(string)) {}      // NOLINT
  PlistValue(PlistInteger integer) : storage_(integer) {}                         // NOLINT
  PlistValue(PlistDate date) : storage_(date) {}                                  // NOLINT
  PlistValue(Bytes data);                                                         // NOLINT
  template <PlistNumber Number>
  PlistValue(Number number) : storage_(PlistInteger(number)) {}  // NOLINT
  template <std::same_as<bool> Boolean>
  PlistValue(Boolean boolean) : storage_(boolean) {}  // NOLINT
  template <std::floating_point Real>
  PlistValue(Real real) : storage_(static_cast<double>(real)) {}  // NOLINT

  // Containers of the given values, in this order. Of entries with the same key the first is kept.
  // More than plistMaximumDepth levels throw std::length_error.
  static PlistValue array(std::vector<PlistValue> elements);
  static PlistValue dictionary(std::vector<PlistEntry> entries);
  // The value of one record of a document.
  explicit PlistValue(Place place) : storage_(std::move(place)) {}

  PlistKind kind() const;
  bool is(PlistKind wanted) const { return kind() == wanted; }

  // The value of a scalar, absent where the value is of another kind. The text stays valid for as long as this
  // value, or anything that holds it, lives.
  std::optional<PlistText> string() const;
  std::optional<PlistInteger> integer() const;
  std::optional<double> real() const;
  std::optional<bool> boolean() const;
  std::optional<PlistDate> date() const;
  std::optional<Bytes> data() const;

  // How many elements an array or entries a dictionary has; 0 for every other kind.
  std::size_t size() const;
  // Levels of containers from here down: 0 for a scalar, 1 for a container that holds no other.
  unsigned depth() const;

  // Arrays only; `index` below size().
  PlistValue at(std::size_t index) const;
  // Dictionaries only; `index` below size(), in the order of the file.
  PlistText keyAt(std::size_t index) const;
  PlistValue valueAt(std::size_t index) const;

  // What at(index) or valueAt(index) is, and its text if it is a string, without taking hold of it.
  PlistKind kindAt(std::size_t index) const;
  std::optional<PlistText> stringAt(std::size_t index) const;

  // Where a key is and what it has; absent in every value that is not a dictionary.
  std::optional<std::size_t> indexOf(const PlistKey& key) const;
  std::optional<PlistValue> value(const PlistKey& key) const;

  // The same for several keys in one pass; `absent` for each that is not there.
  static constexpr std::size_t absent = static_cast<std::size_t>(-1);
  template <std::size_t count>
  std::array<std::size_t, count> indicesOf(const std::array<PlistKey, count>& keys) const {
    std::array<std::size_t, count> indices;
    indices.fill(absent);
    locate(keys.data(), indices.data(), count);
    return indices;
  }

  // This dictionary with the value of entry `index` replaced.
  PlistValue replacing(std::size_t index, PlistValue value) const;
  // This array with the same number of other elements: itself reordered, or with changed elements.
  PlistValue rearranged(std::vector<PlistValue> elements) const;

  Identity identity() const;
  // Whether more than one place may hold this very container: walks over a value whose parts are shared must
  // then remember what they have seen, or they take time in the expanded tree and not in the stored one.
  bool mayBeShared() const;
  // The place in a document, for a value that is one of its records.
  const Place* place() const { return std::get_if<Place>(&storage_); }
  // The place of the container that this one was made from by `replacing` or `rearranged`, if that was in a
  // document: what a writer needs to leave alone what did not change.
  const Place* origin() const;
  // Where in a document this value comes from: its own place, else its origin.
  const Place* placeOrOrigin() const { return place() != nullptr ? place() : origin(); }

  // Structural equality: the same kind and the same content; the order of keys does not count. Reals and dates
  // are the same when their bits are, so that a value always equals itself.
  friend bool operator==(const PlistValue& a, const PlistValue& b);

 private:
  struct Array;
  struct Dictionary;
  using Storage = std::variant<bool, PlistInteger, double, PlistDate, std::shared_ptr<const std::u16string>,
                               std::shared_ptr<const Bytes>, std::shared_ptr<const Array>,
                               std::shared_ptr<const Dictionary>, Place>;

  // Where the keys are, if this is a large dictionary; else null.
  PlistKeyIndex* keyIndex() const;
  void locate(const PlistKey* keys, std::size_t* indices, std::size_t count) const;
  static PlistValue makeArray(std::vector<PlistValue> elements, Place origin);
  explicit PlistValue(Storage storage) : storage_(std::move(storage)) {}
  const PlistRecord* record() const;
  // What an array or dictionary that is not in a document holds at `index`, or null where it is in one.
  const PlistValue* builtAt(std::size_t index) const;
  // The record of what an array or dictionary that is in a document holds at `index`.
  const PlistRecord& recordAt(std::size_t index) const;
  // The one alternative of the storage, or null.
  template <class Shared>
  const Shared* shared() const {
    const auto* pointer = std::get_if<std::shared_ptr<const Shared>>(&storage_);
    return pointer ? pointer->get() : nullptr;
  }

  Storage storage_;
};

// One entry of a dictionary under construction. The key must be a string.
struct PlistEntry {
  PlistValue key;
  PlistValue value;
};

template <>
struct std::hash<PlistValue::Identity> {
  std::size_t operator()(const PlistValue::Identity& identity) const noexcept {
    return std::hash<const void*>()(identity.storage) * 31 + identity.record;
  }
};
