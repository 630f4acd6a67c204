#include "fuzz/binary_objects.h"

#include <algorithm>

namespace {

constexpr std::uint8_t countFollows = 0x0F;
constexpr unsigned largestNumber = 8;  // bytes

std::string bigEndian(std::uint64_t number, unsigned size) {
  std::string bytes(size, '\0');
  for (unsigned place = size; place-- > 0; number >>= 8) bytes[place] = static_cast<char>(number);
  return bytes;
}

std::uint8_t lowHalf(const BinaryObject& object) { return object.marker & 0x0F; }

// Returns true if the low half of the marker is a count.
bool isCounted(const BinaryObject& object) { return kindOf(object) >= dataKind && kindOf(object) != 8; }

// Returns the bytes, or the references of a container, per counted item.
unsigned unitsPerItem(BinaryKind kind) { return kind == wideTextKind || kind == dictionaryKind ? 2 : 1; }

// Reads the object at the start of a part of the file.
class ObjectReader {
 public:
  ObjectReader(std::span<const std::uint8_t> rest, unsigned referenceSize)
      : rest_(rest), referenceSize_(referenceSize) {}

  BinaryObject read() {
    BinaryObject object;
    if (rest_.empty()) return object;
    object.marker = rest_.front();
    rest_ = rest_.subspan(1);
    const std::uint64_t count = isCounted(object) ? countOf(object) : sizeOf(object);
    if (isContainer(object))
      readReferences(object, count);
    else
      object.content = take(count * unitsPerItem(kindOf(object)));
    return object;
  }

 private:
  static std::uint64_t sizeOf(const BinaryObject& object) {
    const bool sized = kindOf(object) >= integerKind && kindOf(object) <= dateKind;
    return sized ? std::uint64_t{1} << std::min<unsigned>(lowHalf(object), 6) : 0;
  }

  // Returns at most the number of bytes that are left.
  std::uint64_t countOf(BinaryObject& object) {
    std::uint64_t count = lowHalf(object);
    if (count == countFollows) {
      object.longCount = true;
      const std::string number = take(1);
      const unsigned size =
          number.empty() ? 0 : 1U << std::min<unsigned>(static_cast<std::uint8_t>(number[0]) & 0x0F, 3);
      const std::string digits = take(size);
      count = numberIn({reinterpret_cast<const std::uint8_t*>(digits.data()), digits.size()});
    }
    return std::min<std::uint64_t>(count, rest_.size());
  }

  void readReferences(BinaryObject& object, std::uint64_t count) {
    for (std::uint64_t left = count * unitsPerItem(kindOf(object)); left > 0 && rest_.size() >= referenceSize_;
         --left) {
      object.references.push_back(numberIn(rest_.first(referenceSize_)));
      rest_ = rest_.subspan(referenceSize_);
    }
  }

  std::string take(std::uint64_t size) {
    const std::span<const std::uint8_t> taken = rest_.first(std::min<std::uint64_t>(size, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }

  std::span<const std::uint8_t> rest_;
  unsigned referenceSize_;
};

std::string bytesOf(const BinaryObject& object, unsigned referenceSize) {
  if (!isCounted(object)) return static_cast<char>(object.marker) + object.content;
  const std::size_t units = isContainer(object) ? object.references.size() : object.content.size();
  const std::size_t count = units / unitsPerItem(kindOf(object));
  const bool longCount = object.longCount || count >= countFollows;
  std::string bytes(1, static_cast<char>((object.marker & 0xF0) | (longCount ? countFollows : count)));
  if (longCount) bytes += '\x12' + bigEndian(count, 4);
  for (const std::uint64_t reference : object.references) bytes += bigEndian(reference, referenceSize);
  return bytes + object.content;
}

std::size_t sizeOf(const BinaryObject& object) { return object.references.size() + object.content.size(); }

}  // namespace

std::uint64_t numberIn(std::span<const std::uint8_t> bytes) {
  std::uint64_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

BinaryKind kindOf(const BinaryObject& object) { return static_cast<BinaryKind>(object.marker >> 4); }

bool isContainer(const BinaryObject& object) { return kindOf(object) >= arrayKind && kindOf(object) <= dictionaryKind; }

std::optional<BinaryObjects> objectsOf(std::span<const std::uint8_t> file) {
  if (file.size() < binaryMagic.size() + binaryTrailerSize) return std::nullopt;
  const std::span<const std::uint8_t> trailer = file.last(binaryTrailerSize);
  BinaryObjects all{{}, numberIn(trailer.subspan(16, 8)), trailer[6], trailer[7]};
  const std::uint64_t count = numberIn(trailer.subspan(8, 8));
  const std::uint64_t table = numberIn(trailer.subspan(24, 8));
  const std::size_t end = file.size() - binaryTrailerSize;
  const auto isSize = [](unsigned size) { return size >= 1 && size <= largestNumber; };
  if (!isSize(all.offsetSize) || !isSize(all.referenceSize)) return std::nullopt;
  if (count == 0 || table > end || count > (end - table) / all.offsetSize) return std::nullopt;
  std::size_t taken = 0;
  for (std::uint64_t index = 0; index < count; ++index) {
    const std::uint64_t offset = numberIn(file.subspan(table + index * all.offsetSize, all.offsetSize));
    const auto rest = file.first(table).subspan(std::min(offset, table));
    all.objects.push_back(ObjectReader(rest, all.referenceSize).read());
    taken += sizeOf(all.objects.back());
    if (taken > 2 * file.size()) return std::nullopt;
  }
  return all;
}

std::string fileOf(const BinaryObjects& all) {
  std::string file(binaryMagic);
  std::string offsets;
  for (const BinaryObject& object : all.objects) {
    offsets += bigEndian(file.size(), all.offsetSize);
    file += bytesOf(object, all.referenceSize);
  }
  const std::size_t table = file.size();
  file += offsets + std::string(6, '\0');
  file += static_cast<char>(all.offsetSize);
  file += static_cast<char>(all.referenceSize);
  return file + bigEndian(all.objects.size(), 8) + bigEndian(all.top, 8) + bigEndian(table, 8);
}
