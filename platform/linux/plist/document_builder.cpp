#include "platform/linux/plist/document_builder.h"

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <utility>

#include "platform/linux/plist/plist_error.h"
#include "platform/posix/large_memory.h"

namespace {

// An estimate of the bytes of text per record. With a wrong one a vector grows once more, or has unused capacity.
constexpr std::size_t bytesPerRecord = 48;

PlistRecord scalar(PlistKind kind, std::uint64_t bits, std::uint8_t flags = 0) {
  return {.bits = bits, .kind = kind, .flags = flags};
}

constexpr auto utf8Flag = static_cast<std::uint8_t>(PlistEncoding::utf8);
constexpr auto utf16Flag = static_cast<std::uint8_t>(PlistEncoding::utf16BigEndian);

}  // namespace

DocumentBuilder::DocumentBuilder(const Bytes& text)
    : document_(std::make_shared<PlistDocument>(largeMemory())), keys_(*document_) {
  document_->source = text;
  document_->records.reserve(text.size() / bytesPerRecord + 16);
  document_->links.reserve(text.size() / bytesPerRecord + 16);
}

std::uint32_t DocumentBuilder::add(const PlistRecord& record) {
  document_->records.push_back(record);
  return static_cast<std::uint32_t>(document_->records.size() - 1);
}

std::uint32_t DocumentBuilder::addAside(std::string_view bytes, PlistRecord record) {
  record.bits = document_->aside.size();
  record.flags |= PlistRecord::aside;
  document_->aside.append(bytes);
  if (document_->aside.size() > PlistDocument::maximumSize) throw unreadable(tooLarge);
  return add(record);
}

std::uint32_t DocumentBuilder::addSourceText(std::size_t offset, std::size_t size, bool verbatim) {
  PlistRecord record = scalar(PlistKind::string, offset, utf8Flag);
  record.count = static_cast<std::uint32_t>(size);
  if (verbatim) record.flags |= PlistRecord::verbatim;
  return add(record);
}

std::uint32_t DocumentBuilder::addSourceBase64(std::size_t offset, std::size_t size) {
  PlistRecord record = scalar(PlistKind::data, offset, PlistRecord::base64);
  record.count = static_cast<std::uint32_t>(size);
  return add(record);
}

std::uint32_t DocumentBuilder::addText(std::u16string_view units) {
  std::string bytes;
  bytes.reserve(units.size() * 2);
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<char>(unit >> 8));
    bytes.push_back(static_cast<char>(unit & 0xFF));
  }
  PlistRecord record = scalar(PlistKind::string, 0, utf16Flag);
  record.count = static_cast<std::uint32_t>(units.size());
  return addAside(bytes, record);
}

std::uint32_t DocumentBuilder::addText(std::string_view utf8Text) {
  PlistRecord record = scalar(PlistKind::string, 0, utf8Flag);
  record.count = static_cast<std::uint32_t>(utf8Text.size());
  return addAside(utf8Text, record);
}

std::uint32_t DocumentBuilder::addData(std::string_view bytes) {
  PlistRecord record = scalar(PlistKind::data, 0);
  record.count = static_cast<std::uint32_t>(bytes.size());
  return addAside(bytes, record);
}

std::uint32_t DocumentBuilder::addInteger(PlistInteger integer) {
  return add(
      scalar(PlistKind::integer, integer.bits(), integer.isNegative() ? PlistRecord::negative : std::uint8_t{0}));
}

std::uint32_t DocumentBuilder::addReal(double real) {
  return add(scalar(PlistKind::real, std::bit_cast<std::uint64_t>(real)));
}

std::uint32_t DocumentBuilder::addDate(double seconds) {
  return add(scalar(PlistKind::date, std::bit_cast<std::uint64_t>(seconds)));
}

std::uint32_t DocumentBuilder::addBoolean(bool truth) { return add(scalar(PlistKind::boolean, truth ? 1 : 0)); }

std::uint32_t DocumentBuilder::key(std::uint32_t string) {
  const PlistText text = document_->text(document_->records[string]);
  return keys_.intern(text, text.hash(), [&] { return string; });
}

// Nearly every key was met a moment ago, and comparing it with that one is cheaper than computing its hash.
std::uint32_t DocumentBuilder::sourceKey(std::size_t offset, std::size_t size, bool verbatim) {
  if (size == 0) return newSourceKey(offset, size, verbatim);
  const char* start = document_->source.text().data() + offset;
  const auto place =
      size + std::size_t{3} * static_cast<unsigned char>(start[0]) + static_cast<unsigned char>(start[size - 1]);
  std::string_view& text = recentKeys_[place % recentKeys_.size()].text;
  std::uint32_t& record = recentKeys_[place % recentKeys_.size()].record;
  if (text == std::string_view(start, size)) return record;
  text = {start, size};
  return record = newSourceKey(offset, size, verbatim);
}

std::uint32_t DocumentBuilder::newSourceKey(std::size_t offset, std::size_t size, bool verbatim) {
  const PlistText text(document_->source.data() + offset, size, PlistEncoding::utf8);
  return keys_.intern(text, text.hash(), [&] { return addSourceText(offset, size, verbatim); });
}

void DocumentBuilder::open(std::size_t start) { open_.push_back({start, pending_.size(), 0}); }

void DocumentBuilder::deepen(std::uint32_t record) {
  unsigned& deepest = open_.back().deepest;
  deepest = std::max<unsigned>(deepest, document_->records[record].depth);
}

void DocumentBuilder::element(std::uint32_t record) {
  deepen(record);
  pending_.push_back(record);
}

void DocumentBuilder::entry(std::uint32_t key, std::uint32_t value) {
  deepen(value);
  pending_.push_back(key);
  pending_.push_back(value);
}

std::uint32_t DocumentBuilder::close(PlistKind kind, std::size_t count) {
  const Open container = open_.back();
  open_.pop_back();
  PlistRecord record = scalar(kind, std::uint64_t{container.start} << 32 | document_->links.size());
  record.count = static_cast<std::uint32_t>(count);
  record.depth = static_cast<std::uint16_t>(container.deepest + 1);
  document_->links.insert(document_->links.end(), pending_.begin() + static_cast<std::ptrdiff_t>(container.first),
                          pending_.end());
  pending_.resize(container.first);
  return add(record);
}

std::uint32_t DocumentBuilder::closeArray() { return close(PlistKind::array, pending_.size() - open_.back().first); }

std::uint32_t DocumentBuilder::closeDictionary(std::size_t end) {
  const std::size_t first = open_.back().first;
  const std::size_t before = pending_.size();
  keepLastOfEqualKeys(first);
  if (pending_.size() != before) measureDictionary(first);
  const std::size_t count = (pending_.size() - first) / 2;
  pending_.push_back(static_cast<std::uint32_t>(end));
  return close(PlistKind::dictionary, count);
}

// A replaced value may have been deeper than all values that remain.
void DocumentBuilder::measureDictionary(std::size_t first) {
  open_.back().deepest = 0;
  for (std::size_t place = first; place < pending_.size(); place += 2) deepen(pending_[place + 1]);
}

void DocumentBuilder::keepLastOfEqualKeys(std::size_t first) {
  // Few keys are searched in place. Many get a table: a linear search for each would take quadratic time.
  constexpr std::size_t few = 16;
  std::unordered_map<std::uint32_t, std::size_t> places;
  std::size_t end = first;
  for (std::size_t place = first; place < pending_.size(); place += 2) {
    const std::uint32_t key = pending_[place];
    std::size_t earlier = first;
    if (pending_.size() - first <= 2 * few) {
      while (earlier < end && pending_[earlier] != key) earlier += 2;
    } else {
      earlier = places.emplace(key, end).first->second;
    }
    pending_[earlier] = key;
    pending_[earlier + 1] = pending_[place + 1];
    if (earlier == end) end += 2;
  }
  pending_.resize(end);
}

PlistValue DocumentBuilder::finish(std::uint32_t root, PlistDocument::Xml xml) {
  document_->layout = {.root = root, .xml = xml};
  return PlistValue(PlistValue::Place{std::move(document_), root});
}
