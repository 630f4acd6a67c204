#include "tests/support/plist_json.h"

#include <algorithm>
#include <bit>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::string hexadecimal(std::uint64_t number, int digits) {
  std::ostringstream text;
  text << std::hex << std::setfill('0') << std::setw(digits) << number;
  return text.str();
}

std::string hexadecimal(const Bytes& bytes) {
  std::string text;
  for (const std::byte byte : bytes.span()) text += hexadecimal(std::to_integer<std::uint64_t>(byte), 2);
  return text;
}

nlohmann::json string(const std::u16string& units) {
  std::string text = utf8(units);
  if (utf16(text) == units) return {{"str", text}};
  std::string all;
  for (const char16_t unit : units) all += hexadecimal(unit, 4);
  return {{"utf16", all}};
}

nlohmann::json dictionary(const PlistValue& value) {
  std::vector<std::pair<std::string, nlohmann::json>> pairs;
  for (std::size_t index = 0; index < value.size(); ++index)
    pairs.emplace_back(utf8(value.keyAt(index).utf16()), toJson(value.valueAt(index)));
  std::sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) { return utf16(a.first) < utf16(b.first); });
  nlohmann::json list = nlohmann::json::array();
  for (auto& [key, entry] : pairs) list.push_back(nlohmann::json::array({key, std::move(entry)}));
  return {{"dict", list}};
}

}  // namespace

nlohmann::json toJson(const PlistValue& value) {
  switch (value.kind()) {
    case PlistKind::string: return string(value.string()->utf16());
    case PlistKind::integer: return {{"int", value.integer()->decimal()}};
    case PlistKind::real: return {{"real", hexadecimal(std::bit_cast<std::uint64_t>(*value.real()), 16)}};
    case PlistKind::boolean: return {{"bool", *value.boolean()}};
    case PlistKind::date: return {{"date", hexadecimal(std::bit_cast<std::uint64_t>(value.date()->seconds), 16)}};
    case PlistKind::data: return {{"data", hexadecimal(*value.data())}};
    case PlistKind::dictionary: return dictionary(value);
    case PlistKind::array: break;
  }
  nlohmann::json elements = nlohmann::json::array();
  for (std::size_t index = 0; index < value.size(); ++index) elements.push_back(toJson(value.at(index)));
  return {{"array", elements}};
}

unsigned nestedArrays(const PlistValue& value) {
  return value.is(PlistKind::array) && value.size() == 1 ? 1 + nestedArrays(value.at(0)) : 0;
}

PlistValue scalarCopy(const PlistValue& value) {
  switch (value.kind()) {
    case PlistKind::string: return value.string()->utf16();
    case PlistKind::integer: return *value.integer();
    case PlistKind::real: return *value.real();
    case PlistKind::boolean: return *value.boolean();
    case PlistKind::date: return *value.date();
    case PlistKind::data: return Bytes(std::string(value.data()->text()));
    case PlistKind::array:
    case PlistKind::dictionary: break;
  }
  throw std::invalid_argument("a container");
}

PlistValue deepCopy(const PlistValue& value) {
  if (value.is(PlistKind::array)) {
    std::vector<PlistValue> elements;
    for (std::size_t index = 0; index < value.size(); ++index) elements.push_back(deepCopy(value.at(index)));
    return PlistValue::array(std::move(elements));
  }
  if (!value.is(PlistKind::dictionary)) return scalarCopy(value);
  std::vector<PlistEntry> entries;
  for (std::size_t index = 0; index < value.size(); ++index)
    entries.push_back({value.keyAt(index).utf16(), deepCopy(value.valueAt(index))});
  return PlistValue::dictionary(std::move(entries));
}
