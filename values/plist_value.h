// A property-list value: a string, integer, real, Boolean, date, data, an array of values, or a dictionary from
// string keys to values. Values are immutable. A copy costs a reference count: it shares its storage with other values
// or with the document that the value was parsed from.
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
  constexpr PlistInteger(Number number)  // NOLINT(google-explicit-constructor): so that a number can be passed
      : bits_(static_cast<std::uint64_t>(number)), negative_(number < 0) {}
  // From the low 64 bits of a number and its sign.
  static constexpr PlistInteger fromBits(std::uint64_t bits, bool negative) {
    PlistInteger integer{bits};
    integer.negative_ = negative;
    return integer;
  }

  constexpr std::uint64_t bits() const { return bits_; }
  constexpr bool isNegative() const { return negative_; }
  // Returns the number if it fits a signed 64-bit integer.
  constexpr std::optional<std::int64_t> signedValue() const {
    const auto value = static_cast<std::int64_t>(bits_);
    return (value < 0) == negative_ ? std::optional(value) : std::nullopt;
  }
  // Returns the number, or the nearest one that fits an int.
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

// An instant in the unit of the format: seconds since 2001-01-01 00:00 UTC. All bits are kept.
struct PlistDate {
  double seconds = 0;
};

// A dictionary key to look up. As a constant it has its hash, and its bytes if it is short and ASCII, at compile time.
class PlistKey {
 public:
  constexpr PlistKey(const char16_t* units) : PlistKey(std::u16string_view(units)) {}  // NOLINT: for literals
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
  // The storage of a value: values with equal identities share it. A scalar that is stored in the value itself has a
  // null `storage`.
  struct Identity {
    const void* storage = nullptr;
    std::uint32_t record = 0;
    friend bool operator==(Identity, Identity) = default;
  };
  // A record of a parsed document.
  struct Place {
    std::shared_ptr<const PlistDocument> document;
    std::uint32_t record = 0;
  };

  PlistValue(std::u16string string);                                              // NOLINT: implicit, as all of these
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

  // Containers of these values, in this order. Of entries with equal keys only the first is kept. Throws
  // std::length_error for more than plistMaximumDepth levels and std::invalid_argument for a key that is no string.
  static PlistValue array(std::vector<PlistValue> elements);
  static PlistValue dictionary(std::vector<PlistEntry> entries);
  // The value of a record of a document.
  explicit PlistValue(Place place) : storage_(std::move(place)) {}

  PlistKind kind() const;
  bool is(PlistKind wanted) const { return kind() == wanted; }

  // Return the value of a scalar; absent if the value is of another kind. The text stays valid while this value, or a
  // container with it, exists.
  std::optional<PlistText> string() const;
  std::optional<PlistInteger> integer() const;
  std::optional<double> real() const;
  std::optional<bool> boolean() const;
  std::optional<PlistDate> date() const;
  std::optional<Bytes> data() const;

  // Returns the number of elements of an array or entries of a dictionary; 0 for every other kind.
  std::size_t size() const;
  // Returns the levels of nested containers: 0 for a scalar, 1 for a container without containers.
  unsigned depth() const;

  // For arrays only; `index` is below size().
  PlistValue at(std::size_t index) const;
  // For dictionaries only; `index` is below size(), in the order of the file.
  PlistText keyAt(std::size_t index) const;
  PlistValue valueAt(std::size_t index) const;

  // The kind of at(index) or valueAt(index), and its text if it is a string, without a reference count.
  PlistKind kindAt(std::size_t index) const;
  std::optional<PlistText> stringAt(std::size_t index) const;

  // Return the index and the value of a key; absent if the value has no such key or is no dictionary.
  std::optional<std::size_t> indexOf(const PlistKey& key) const;
  std::optional<PlistValue> value(const PlistKey& key) const;

  // Returns the indices of several keys, found in one pass; `absent` for a missing key.
  static constexpr std::size_t absent = static_cast<std::size_t>(-1);
  template <std::size_t count>
  std::array<std::size_t, count> indicesOf(const std::array<PlistKey, count>& keys) const {
    std::array<std::size_t, count> indices;
    indices.fill(absent);
    locate(keys.data(), indices.data(), count);
    return indices;
  }

  // Returns this dictionary with another value for entry `index`.
  PlistValue replacing(std::size_t index, PlistValue value) const;
  // Returns this array with other elements, reordered or changed, of the same number.
  PlistValue rearranged(std::vector<PlistValue> elements) const;

  Identity identity() const;
  // Returns true if more than one container may refer to this container. A traversal must then remember what it has
  // visited; otherwise it takes time linear in the size of the expanded tree, which may be astronomical.
  bool mayBeShared() const;
  // Returns the place of a value that is a record of a document, else null.
  const Place* place() const { return std::get_if<Place>(&storage_); }
  // Returns the place of the container that `replacing` or `rearranged` made this one from, if that was a record of a
  // document, else null. A writer uses it to leave the bytes of unchanged parts as they are.
  const Place* origin() const;
  // Returns this value's own place, else its origin, else null.
  const Place* placeOrOrigin() const { return place() != nullptr ? place() : origin(); }

  // Structural equality: the same kind and content; the order of keys does not matter. Reals and dates are compared by
  // their bits, so that a value always equals itself.
  friend bool operator==(const PlistValue& a, const PlistValue& b);

 private:
  struct Array;
  struct Dictionary;
  using Storage = std::variant<bool, PlistInteger, double, PlistDate, std::shared_ptr<const std::u16string>,
                               std::shared_ptr<const Bytes>, std::shared_ptr<const Array>,
                               std::shared_ptr<const Dictionary>, Place>;

  std::uint32_t keyHashAt(std::size_t index) const;
  // Returns the key index of a large dictionary, else null.
  PlistKeyIndex* keyIndex() const;
  void locate(const PlistKey* keys, std::size_t* indices, std::size_t count) const;
  static PlistValue makeArray(std::vector<PlistValue> elements, Place origin);
  explicit PlistValue(Storage storage) : storage_(std::move(storage)) {}
  const PlistRecord* record() const;
  // Returns the element or entry value at `index` of a container outside a document, null for one in a document.
  const PlistValue* builtAt(std::size_t index) const;
  // Returns the record of the element or entry value at `index` of a container in a document.
  const PlistRecord& recordAt(std::size_t index) const;
  // Returns this alternative of the storage, or null.
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
