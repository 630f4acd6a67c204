#include "tests/support/virtual_property_lists.h"

#include <string>

namespace {

std::string nameOf(PropertyListFormat format) {
  switch (format) {
    case PropertyListFormat::binary: return "binary";
    case PropertyListFormat::xml: return "xml";
    case PropertyListFormat::oldStyle: break;
  }
  return "old-style";
}

}  // namespace

PropertyLists::Parsed VirtualPropertyLists::parse(const Bytes& bytes) {
  return journal_.perform("parse", {}, [&] { return codec_.parse(bytes); });
}

Bytes VirtualPropertyLists::serialize(const PlistValue& value, PropertyListFormat format) {
  return journal_.perform("serialize", nameOf(format), [&] {
    return codec_.serialize(std::exchange(serialized_, std::nullopt).value_or(value), format);
  });
}

bool VirtualPropertyLists::parsesTo(const PlistValue& value, const BytePieces& bytes) {
  return journal_.perform("verify", {}, [&] { return codec_.parsesTo(value, bytes); });
}
