#include "platform/linux/plist/xml_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/plist/date_text.h"
#include "platform/linux/plist/plist_error.h"
#include "platform/linux/plist/xml_rewriter.h"
#include "platform/posix/large_memory.h"
#include "values/base64.h"

namespace {

constexpr std::string_view documentStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

constexpr unsigned base64Columns = 76;
constexpr unsigned columnsPerLevel = 8;
constexpr unsigned mostBase64Levels = 8;

// Sufficient for base64 text, whose other characters are all above the space.
bool isSpaceInBase64(char character) { return character <= ' '; }

class XmlWriter {
 public:
  explicit XmlWriter(std::size_t expectedSize) : out_(expectedSize) {}

  Bytes write(const PlistValue& value) && {
    append(documentStart);
    writeValue(value, 0);
    append("</plist>\n");
    out_.resize(size_);
    return std::move(out_).take();
  }

 private:
  void writeValue(const PlistValue& value, unsigned level) {
    if (const PlistValue::Place* place = value.place()) return writeRecord(*place->document, place->record, level);
    switch (value.kind()) {
      case PlistKind::string: return writeString(*value.string(), level);
      case PlistKind::integer: return writeInteger(*value.integer(), level);
      case PlistKind::real: return writeReal(*value.real(), level);
      case PlistKind::boolean: return writeBoolean(*value.boolean(), level);
      case PlistKind::date: return writeDate(value.date()->seconds, level);
      case PlistKind::data: return writeBase64(encodeBase64(value.data()->text()), level);
      case PlistKind::array:
        return writeContainer("array", value.size(), level,
                              [&](std::size_t index) { writeValue(value.at(index), level + 1); });
      case PlistKind::dictionary:
        return writeContainer("dict", value.size(), level, [&](std::size_t index) {
          writeKey(value.keyAt(index), false, level + 1);
          writeValue(value.valueAt(index), level + 1);
        });
    }
  }

  // Writes a record of a document without copying strings or counting references.
  void writeRecord(const PlistDocument& document, std::uint32_t index, unsigned level) {
    const PlistRecord& record = document.records[index];
    switch (record.kind) {
      case PlistKind::string:
        return writeText("string", document.text(record), record.has(PlistRecord::verbatim), level);
      case PlistKind::integer:
        return writeInteger(PlistInteger::fromBits(record.bits, record.has(PlistRecord::negative)), level);
      case PlistKind::real: return writeReal(std::bit_cast<double>(record.bits), level);
      case PlistKind::boolean: return writeBoolean(record.bits != 0, level);
      case PlistKind::date: return writeDate(std::bit_cast<double>(record.bits), level);
      case PlistKind::data: {
        const auto* text = reinterpret_cast<const char*>(document.start(record));
        const std::string_view bytes(text, record.count);
        return record.has(PlistRecord::base64) ? writeBase64(bytes, level) : writeBase64(encodeBase64(bytes), level);
      }
      case PlistKind::array:
        return writeContainer("array", record.count, level, [&](std::size_t element) {
          writeRecord(document, document.element(record, element), level + 1);
        });
      case PlistKind::dictionary:
        return writeContainer("dict", record.count, level, [&](std::size_t entry) {
          const PlistRecord& key = document.records[document.key(record, entry)];
          writeKey(document.text(key), key.has(PlistRecord::verbatim), level + 1);
          writeRecord(document, document.value(record, entry), level + 1);
        });
    }
  }

  template <class WriteChild>
  void writeContainer(std::string_view name, std::size_t count, unsigned level, const WriteChild& writeChild) {
    indent(level, name.size() + 4);
    put("<");
    put(name);
    if (count == 0) return put("/>\n");
    put(">\n");
    for (std::size_t index = 0; index < count; ++index) writeChild(index);
    indent(level, name.size() + 4);
    put("</");
    put(name);
    put(">\n");
  }

  void writeKey(const PlistText& text, bool verbatim, unsigned level) { writeText("key", text, verbatim, level); }
  void writeString(const PlistText& text, unsigned level) { writeText("string", text, false, level); }

  void writeText(std::string_view name, const PlistText& text, bool verbatim, unsigned level) {
    if (verbatim) return writeElement(name, {static_cast<const char*>(text.start()), text.count()}, level);
    const std::string characters = text.encoding() == PlistEncoding::utf8
                                       ? std::string(static_cast<const char*>(text.start()), text.count())
                                       : utf8OfUnits(text.utf16());
    writeElement(name, escaped(characters), level);
  }

  static std::string utf8OfUnits(const std::u16string& units) {
    std::string characters = utf8(units);
    // Only unpaired surrogates are lost in UTF-8.
    if (utf16(characters) != units) throw unwritable("XML cannot represent a string with an unpaired surrogate");
    return characters;
  }

  static std::string escaped(std::string_view characters) {
    std::string text;
    text.reserve(characters.size() + characters.size() / 8);
    for (const char character : characters) {
      switch (character) {
        case '&': text += "&amp;"; break;
        case '<': text += "&lt;"; break;
        case '>': text += "&gt;"; break;
        default: text += character;
      }
    }
    return text;
  }

  void writeInteger(PlistInteger integer, unsigned level) { writeElement("integer", integer.decimal(), level); }

  void writeReal(double real, unsigned level) { writeElement("real", realText(real), level); }

  static std::string realText(double real) {
    if (std::isnan(real)) return "nan";
    if (std::isinf(real)) return real < 0 ? "-infinity" : "+infinity";
    if (real == 0) return std::signbit(real) ? "-0.0" : "0.0";
    // Seventeen digits identify every double.
    constexpr int digits = 17;
    std::array<char, 32> text{};
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), real, std::chars_format::general, digits);
    return {text.data(), written.ptr};
  }

  void writeBoolean(bool truth, unsigned level) {
    indent(level, 16);
    put(truth ? "<true/>\n" : "<false/>\n");
  }

  void writeDate(double seconds, unsigned level) {
    const auto text = dateText(seconds);
    if (!text) throw unwritable("XML cannot represent a date out of the range of its calendar");
    writeElement("date", *text, level);
  }

  // Writes base64 on lines of 76 columns minus eight per level, for at most eight levels. Leaves out the white space of
  // the given text.
  void writeBase64(std::string_view text, unsigned level) {
    const unsigned counted = std::min(level, mostBase64Levels);
    const std::size_t width = base64Columns - columnsPerLevel * counted;
    indent(level, 8);
    put("<data>\n");
    std::size_t column = 0;
    while (!text.empty()) {
      const std::size_t most = std::min(text.size(), width - column);
      std::size_t run = 0;
      while (run < most && !isSpaceInBase64(text[run])) ++run;
      if (run != 0) {
        if (column == 0) indent(counted, width + 1);
        put(text.substr(0, run));
        column += run;
        if (column == width) {
          put("\n");
          column = 0;
        }
      }
      text.remove_prefix(run);
      while (!text.empty() && isSpaceInBase64(text.front())) text.remove_prefix(1);
    }
    if (column != 0) append("\n");
    indent(level, 8);
    put("</data>\n");
  }

  void writeElement(std::string_view name, std::string_view content, unsigned level) {
    indent(level, 2 * name.size() + content.size() + 8);
    put("<");
    put(name);
    put(">");
    put(content);
    put("</");
    put(name);
    put(">\n");
  }

  // Makes room for `level` tabs and `more` bytes, and appends the tabs.
  void indent(unsigned level, std::size_t more) {
    makeRoom(level + more);
    std::memset(out_.data() + size_, '\t', level);
    size_ += level;
  }

  void append(std::string_view text) {
    makeRoom(text.size());
    put(text);
  }

  // Appends without making room.
  void put(std::string_view text) {
    std::memcpy(out_.data() + size_, text.data(), text.size());
    size_ += text.size();
  }

  void makeRoom(std::size_t more) {
    const std::size_t needed = size_ + more;
    if (needed <= out_.capacity()) return;
    if (needed > PlistDocument::maximumSize) throw unwritable(tooLargeToWrite);
    out_.resize(size_);
    out_.reserve(std::max(needed, out_.capacity() + out_.capacity() / 2));
  }

  LargeBuffer out_;
  std::size_t size_ = 0;
};

// An estimate of the size of the text: the size of the file that the value is from, and a little more.
std::size_t expectedSize(const PlistValue& value) {
  constexpr std::size_t least = std::size_t{64} * 1024;
  const PlistValue::Place* place = value.placeOrOrigin();
  const std::size_t source = place != nullptr ? place->document->source.size() : 0;
  return source + source / 64 + least;
}

}  // namespace

BytePieces writeXml(const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place != nullptr && place->document->layout.xml == PlistDocument::Xml::converted)
    throw unwritable("it is XML in another encoding than UTF-8, which can be read but not written");
  if (std::optional<BytePieces> rewritten = rewriteXml(value)) return *std::move(rewritten);
  return XmlWriter(expectedSize(value)).write(value);
}
