#include "platform/linux/plist/property_list_codec.h"

#include <string_view>

#include "platform/linux/plist/binary_reader.h"
#include "platform/linux/plist/binary_writer.h"
#include "platform/linux/plist/old_style_reader.h"
#include "platform/linux/plist/plist_error.h"
#include "platform/linux/plist/rearranged_source.h"
#include "platform/linux/plist/text_encoding.h"
#include "platform/linux/plist/xml_reader.h"
#include "platform/linux/plist/xml_writer.h"

namespace {

// Returns true if text begins with an XML tag and not with data of an old-style property list, such as "<0fbd77>".
bool beginsWithTag(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\n\r");
  if (first == std::string_view::npos || text[first] != '<') return false;
  constexpr std::string_view data = "0123456789abcdefABCDEF> \t\n\r";
  // "<array>" begins with a hexadecimal digit too, so check every character up to the bracket.
  const std::size_t other = text.find_first_not_of(data, first + 1);
  return other != std::string_view::npos && text.find('>', first) > other;
}

}  // namespace

PropertyLists::Parsed PropertyListCodec::parse(const Bytes& bytes) {
  if (bytes.empty()) throw unreadable("it is empty");
  if (bytes.size() > PlistDocument::maximumSize) throw unreadable(tooLarge);
  if (looksBinary(bytes)) return {readBinary(bytes), PropertyListFormat::binary};
  const Bytes text = toUtf8(bytes);
  if (beginsWithTag(text.text())) return {readXml(bytes, text), PropertyListFormat::xml};
  return {readOldStyle(text), PropertyListFormat::oldStyle};
}

Bytes PropertyListCodec::serialize(const PlistValue& value, PropertyListFormat format) {
  return serializeInPieces(value, format).joined();
}

BytePieces PropertyListCodec::serializeInPieces(const PlistValue& value, PropertyListFormat format) {
  switch (format) {
    case PropertyListFormat::binary: return writeBinary(value);
    case PropertyListFormat::xml: return writeXml(value);
    case PropertyListFormat::oldStyle: break;
  }
  throw unwritable("the old-style format can be read but not written");
}

bool PropertyListCodec::parsesTo(const PlistValue& value, const BytePieces& bytes) {
  return isRearrangedSource(bytes, value) || PropertyLists::parsesTo(value, bytes);
}
