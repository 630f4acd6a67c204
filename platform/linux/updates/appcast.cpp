#include "platform/linux/updates/appcast.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <utility>

#include "platform/error.h"
#include "platform/linux/trimmed_text.h"
#include "platform/product.h"

namespace {

constexpr std::string_view sparkle = "http://www.andymatuschak.org/xml-namespaces/sparkle";
constexpr XML_Char separator = ' ';  // between a namespace and a name; neither has one
constexpr std::size_t mostLevels = 32;
constexpr std::size_t mostItems = 10'000;
constexpr std::size_t longestText = 4096;  // of everything but the notes

Error unreadable(const std::string& reason) {
  return {"Updates", 1, "The list of updates couldn’t be read: " + reason + "."};
}

std::string qualified(std::string_view space, std::string_view name) {
  return std::string(space) + separator + std::string(name);
}

// Returns at most the first `most` bytes of UTF-8, without half a character at the end.
std::string cut(std::string_view text, std::size_t most) {
  std::size_t length = std::min(text.size(), most);
  while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) --length;
  return std::string(text.substr(0, length));
}

std::uint64_t numberOf(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  return problem == std::errc() && end == text.data() + text.size() ? number : 0;
}

class AppcastReader {
 public:
  std::vector<AppcastItem> read(std::string_view xml) {
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(parser_.get(), onText);
    XML_SetStartDoctypeDeclHandler(parser_.get(), onDocumentType);
    const XML_Status status = XML_Parse(parser_.get(), xml.data(), static_cast<int>(xml.size()), XML_TRUE);
    if (!refusal_.empty()) throw unreadable(refusal_);
    if (status != XML_STATUS_OK)
      throw unreadable(std::string("line ") + std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ", " +
                       XML_ErrorString(XML_GetErrorCode(parser_.get())));
    if (!hasChannel_) throw unreadable("it is not an appcast");
    return std::move(items_);
  }

 private:
  struct Closer {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  static void onStart(void* self, const XML_Char* name, const XML_Char** attributes) {
    static_cast<AppcastReader*>(self)->start(name, attributes);
  }
  static void onEnd(void* self, const XML_Char*) { static_cast<AppcastReader*>(self)->end(); }
  static void onText(void* self, const XML_Char* text, int length) {
    static_cast<AppcastReader*>(self)->text_.append(text, static_cast<std::size_t>(length));
  }
  static void onDocumentType(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    static_cast<AppcastReader*>(self)->refuse("it has a document type");
  }

  void refuse(std::string reason) {
    refusal_ = std::move(reason);
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  bool isInItem() const {
    return path_.size() >= 3 && path_[0] == "rss" && path_[1] == "channel" && path_[2] == "item";
  }

  void start(const XML_Char* name, const XML_Char** attributes) {
    if (path_.size() == mostLevels) return refuse("it has too many levels");
    path_.emplace_back(name);
    text_.clear();
    if (path_.size() == 2 && path_[0] == "rss" && path_[1] == "channel") hasChannel_ = true;
    if (!isInItem()) return;
    if (path_.size() == 3) addItem();
    if (path_.size() == 4 && path_[3] == "enclosure") readEnclosure(attributes);
  }

  void addItem() {
    if (items_.size() == mostItems) return refuse("it has too many items");
    items_.emplace_back();
  }

  // Adds an enclosure to the last item.
  void readEnclosure(const XML_Char** attributes) {
    AppcastItem& item = items_.back();
    for (const XML_Char** each = attributes; *each != nullptr; each += 2) {
      const std::string name = each[0];
      const std::string value = cut(trimmed(each[1]), longestText);
      if (name == "url") item.address = value;
      if (name == "length") item.length = numberOf(value);
      if (name == qualified(sparkle, "os")) item.system = value;
      if (name == qualified(sparkle, "edSignature")) item.signature = value;
      if (name == qualified(sparkle, "version")) item.version = value;
      if (name == qualified(product::feedNamespace, "processor")) item.processor = value;
    }
  }

  void end() {
    if (isInItem() && path_.size() == 4) readText(path_[3]);
    if (isInItem() && path_.size() == 3 && items_.back().shownVersion.empty())
      items_.back().shownVersion = items_.back().version;
    path_.pop_back();
    text_.clear();
  }

  void readText(const std::string& name) {
    AppcastItem& item = items_.back();
    const std::string value = cut(trimmed(text_), longestText);
    if (name == qualified(sparkle, "version")) item.version = value;
    if (name == qualified(sparkle, "shortVersionString")) item.shownVersion = value;
    if (name == qualified(sparkle, "minimumSystemVersion")) item.minimumSystem = value;
    if (name == "description") item.notes = cut(trimmed(text_), longestNotes);
  }

  std::unique_ptr<std::remove_pointer_t<XML_Parser>, Closer> parser_{XML_ParserCreateNS("UTF-8", separator)};
  std::vector<std::string> path_;  // the names of the open elements
  std::string text_;               // of the innermost open element, since its last child
  std::vector<AppcastItem> items_;
  std::string refusal_;
  bool hasChannel_ = false;
};

}  // namespace

std::vector<AppcastItem> readAppcast(std::string_view xml) {
  if (xml.size() > largestAppcast) throw unreadable("it is too large");
  return AppcastReader().read(xml);
}
