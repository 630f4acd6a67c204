#include "platform/linux/plist/text_encoding.h"

#include <unicode/ucnv.h>

#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/plist/plist_error.h"

namespace {

struct Mark {
  std::string_view bytes;
  const char* encoding;
};
// The mark of UTF-32LE begins with the mark of UTF-16LE, so it comes first.
constexpr std::array<Mark, 5> marks = {{{std::string_view("\x00\x00\xFE\xFF", 4), "UTF-32BE"},
                                        {std::string_view("\xFF\xFE\x00\x00", 4), "UTF-32LE"},
                                        {"\xEF\xBB\xBF", "UTF-8"},
                                        {"\xFF\xFE", "UTF-16LE"},
                                        {"\xFE\xFF", "UTF-16BE"}}};

// Returns the encoding that the XML declaration at the start of a text names.
std::optional<std::string> declaredEncoding(std::string_view text) {
  constexpr std::string_view opening = "<?xml";
  constexpr std::string_view attribute = "encoding=";
  if (!text.starts_with(opening)) return std::nullopt;
  const std::string_view declaration = text.substr(0, text.find_first_of("?>", opening.size() + 1));
  const std::size_t place = declaration.find(attribute);
  if (place == std::string_view::npos) return std::nullopt;
  const std::string_view value = declaration.substr(place + attribute.size());
  if (value.empty() || (value.front() != '"' && value.front() != '\'')) return std::nullopt;
  const std::size_t close = value.find(value.front(), 1);
  if (close == std::string_view::npos) return std::nullopt;
  return std::string(value.substr(1, close - 1));
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// Returns the offset of the first bytes that are malformed.
std::size_t firstBadByte(UConverter* converter, std::string_view text) {
  ucnv_reset(converter);
  UErrorCode status = U_ZERO_ERROR;
  const char* next = text.data();
  const char* last = next;
  while (U_SUCCESS(status)) {
    last = next;
    ucnv_getNextUChar(converter, &next, text.data() + text.size(), &status);
  }
  return static_cast<std::size_t>(last - text.data());
}

// Converts the text from offset `start` of the file.
Bytes convert(std::string_view file, std::size_t start, const std::string& encoding) {
  if (!isPlainName(encoding)) throw unreadable("an invalid encoding name in the XML declaration");
  const std::string_view text = file.substr(start);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(encoding.c_str(), &status));
  if (U_FAILURE(status)) throw unreadable("the unknown encoding “" + encoding + "” in the XML declaration");
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 4))
    throw unreadable("it is 512 MiB or larger and not in UTF-8");
  std::string out(text.size() * 4, '\0');
  const std::int32_t size =
      ucnv_toAlgorithmic(UCNV_UTF8, converter.get(), out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                         static_cast<std::int32_t>(text.size()), &status);
  if (U_FAILURE(status))
    throw unreadable("invalid " + encoding + " at byte " + std::to_string(start + firstBadByte(converter.get(), text)));
  out.resize(static_cast<std::size_t>(size));
  return Bytes(std::move(out));
}

}  // namespace

Bytes toUtf8(const Bytes& bytes) {
  const std::string_view text = bytes.text();
  for (const Mark& mark : marks) {
    if (!text.starts_with(mark.bytes)) continue;
    if (mark.encoding == std::string_view("UTF-8"))
      return bytes.slice(mark.bytes.size(), bytes.size() - mark.bytes.size());
    return convert(text, mark.bytes.size(), mark.encoding);
  }
  const std::optional<std::string> declared = declaredEncoding(text);
  if (!declared || ucnv_compareNames(declared->c_str(), "UTF-8") == 0) return bytes;
  return convert(text, 0, *declared);
}
