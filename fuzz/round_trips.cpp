#include "fuzz/round_trips.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/sort_order.h"
#include "platform/linux/plist/property_list_codec.h"
#include "platform/platform.h"

namespace {

void check(bool condition, std::string_view property) {
  if (condition) return;
  std::cerr << "Property violated: " << property << '\n';
  std::abort();
}

// The XML form of a value.
struct XmlForm {
  std::size_t size = 0;  // an estimate of the bytes of the text, with every occurrence of shared parts; saturates
  bool exact = true;     // true if a round trip returns an equal value
};

// XML has only whole seconds, one NaN, and no negative zero in dates.
bool isExactInXml(const PlistValue& value) {
  if (const std::optional<PlistDate> date = value.date())
    return std::trunc(date->seconds) == date->seconds &&
           std::bit_cast<std::uint64_t>(date->seconds) != std::bit_cast<std::uint64_t>(-0.0);
  if (const std::optional<double> real = value.real()) return !std::isnan(*real);
  return true;
}

std::size_t textSize(const PlistText& text) {
  constexpr std::size_t longestEscape = 6;
  return text.count() * longestEscape;
}

std::size_t scalarSize(const PlistValue& value) {
  constexpr std::size_t tags = 64;
  if (const std::optional<PlistText> text = value.string()) return tags + textSize(*text);
  if (const std::optional<Bytes> data = value.data()) return tags + 2 * data->size();
  return tags;
}

// Finds the XML form of a value in time linear in the size of its storage, however large its text would be.
class XmlMeasure {
 public:
  XmlForm of(const PlistValue& value) {
    if (value.size() == 0) return {scalarSize(value), isExactInXml(value)};
    if (const auto known = known_.find(value.identity()); known != known_.end()) return known->second;
    const XmlForm form = ofContainer(value);
    known_.emplace(value.identity(), form);
    return form;
  }

 private:
  XmlForm ofContainer(const PlistValue& value) {
    const bool dictionary = value.is(PlistKind::dictionary);
    XmlForm form{scalarSize(value), true};
    for (std::size_t index = 0; index < value.size(); ++index) {
      const XmlForm child = of(dictionary ? value.valueAt(index) : value.at(index));
      add(form.size, child.size + (dictionary ? textSize(value.keyAt(index)) : 0));
      form.exact = form.exact && child.exact;
    }
    return form;
  }

  static void add(std::size_t& sum, std::size_t more) {
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max() / 4;
    sum = std::min(sum + more, largest);
  }

  std::unordered_map<PlistValue::Identity, XmlForm> known_;
};

PropertyListCodec& codec() {
  static PropertyListCodec instance;
  return instance;
}

// The bytes of a value in a format, and the value parsed from them.
struct RoundTrip {
  Bytes bytes;
  PlistValue value;
};

// Absent if the format cannot represent the value.
std::optional<Bytes> written(const PlistValue& value, PropertyListFormat format) {
  try {
    return codec().serialize(value, format);
  } catch (const Error&) {
    return std::nullopt;
  }
}
std::optional<RoundTrip> roundTrip(const PlistValue& value, PropertyListFormat format) {
  const std::optional<Bytes> bytes = written(value, format);
  if (!bytes) return std::nullopt;
  const PropertyLists::Parsed parsed = codec().parse(*bytes);
  check(parsed.format == format, "the format of a written file is detected");
  return RoundTrip{*bytes, parsed.value};
}

std::optional<RoundTrip> checkRoundTrip(const PlistValue& value, PropertyListFormat format, bool exact) {
  std::optional<RoundTrip> trip = roundTrip(value, format);
  if (!trip) return std::nullopt;
  check(!exact || trip->value == value, "a round trip returns an equal value");
  check(written(trip->value, format) == trip->bytes, "a parsed file is written with the same bytes");
  return trip;
}

// Checks the value as part of another one, so that the writer cannot rewrite the file that the value is from.
void checkRoundTripAnew(const PlistValue& value, PropertyListFormat format, bool exact) {
  if (value.depth() == plistMaximumDepth) return;
  const std::optional<RoundTrip> trip = checkRoundTrip(PlistValue::array({value}), format, exact);
  if (!trip) return;
  const PlistValue again = PlistValue::array({trip->value.at(0)});
  check(written(again, format) == trip->bytes, "a parsed value is written anew with the same bytes");
}

void checkBinary(const PlistValue& value) {
  check(written(value, PropertyListFormat::binary).has_value(), "the binary format can represent every value");
  checkRoundTrip(value, PropertyListFormat::binary, true);
  checkRoundTripAnew(value, PropertyListFormat::binary, true);
}

void checkXml(const PlistValue& value) {
  constexpr std::size_t largestText = 1 << 18;  // bytes; larger ones only take time
  const XmlForm form = XmlMeasure().of(value);
  if (form.size > largestText) return;
  checkRoundTrip(value, PropertyListFormat::xml, form.exact);
  checkRoundTripAnew(value, PropertyListFormat::xml, form.exact);
}

void checkSorting(const PlistValue& value) {
  if (!value.is(PlistKind::dictionary)) return;
  const PlistValue inOrder = sorted(value, true);
  checkBinary(inOrder);
  checkXml(inOrder);
  check(sorted(inOrder, true).identity() == inOrder.identity(), "sorting a sorted tree returns the identical value");
}

// Errors are shown on the screen and written to the log.
void checkDescription(const std::string& description) {
  constexpr std::size_t longest = 200;  // bytes
  check(description.size() <= longest, "an error is short, however large the file");
  check(std::ranges::none_of(description, [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }),
        "an error has no control characters of the file");
}

std::optional<PropertyLists::Parsed> read(const Bytes& bytes) {
  try {
    return codec().parse(bytes);
  } catch (const Error& error) {
    checkDescription(error.description());
    return std::nullopt;
  }
}

}  // namespace

Bytes copyOf(const std::uint8_t* data, std::size_t size) {
  return Bytes(std::string(reinterpret_cast<const char*>(data), size));
}

void checkRoundTrips(const Bytes& bytes, PropertyListFormat format) {
  static const PlatformScope scope(nativePlatform());
  const std::optional<PropertyLists::Parsed> parsed = read(bytes);
  if (!parsed || parsed->format != format) return;
  check(parsed->value == codec().parse(bytes).value, "parsing the same bytes again returns an equal value");
  checkBinary(parsed->value);
  checkXml(parsed->value);
  checkSorting(parsed->value);
}
