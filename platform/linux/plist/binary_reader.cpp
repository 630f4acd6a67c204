#include "platform/linux/plist/binary_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/linux/plist/key_table.h"
#include "platform/linux/plist/plist_error.h"
#include "platform/posix/large_memory.h"
#include "platform/posix/stack_levels.h"

namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;

// States of a record while the file is read. When the reader is done, no reachable record has either.
constexpr std::uint8_t undecoded = 0x80;     // a flag: `bits` is the object's offset, the rest is not yet known
constexpr std::uint16_t beingRead = 0xFFFF;  // a depth: the reader is inside this container

// Returns the number of `size` bytes, at least one, at `start`; of more than eight bytes the low 64 bits. Reads eight
// bytes whatever the size, so it must not be called for the last bytes of a file; a file ends with the trailer.
std::uint64_t bigEndian(const std::byte* start, std::size_t size) {
  constexpr std::size_t most = sizeof(std::uint64_t);
  if (size > most) return bigEndian(start + size - most, most);
  std::uint64_t word = 0;
  std::memcpy(&word, start, most);
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
  return word >> (8 * (most - size));
}

class BinaryReader {
 public:
  explicit BinaryReader(const Bytes& bytes)
      : document_(std::make_shared<PlistDocument>(largeMemory())), start_(bytes.data()), keys_(*document_) {
    document_->source = bytes;
  }

  PlistValue read() {
    readTrailer();
    readOffsets();
    const auto top = static_cast<std::uint32_t>(top_);
    visit(top, 1);
    document_->layout.root = top;
    if (isWithoutOverlap_) document_->layout.referenceSize = static_cast<std::uint8_t>(referenceSize_);
    return PlistValue(PlistValue::Place{std::move(document_), top});
  }

 private:
  // The last 32 bytes: five unused bytes, the sort version, the sizes of an offset and of a reference, then the number
  // of objects, the top object and the offset of the offset table. All of it must fit the file exactly.
  void readTrailer() {
    const std::size_t size = document_->source.size();
    if (size < headerSize + 1 + trailerSize)
      throw unreadable("the binary file is truncated at byte " + std::to_string(size));
    const std::size_t trailer = size - trailerSize;
    offsetSize_ = bigEndian(start_ + trailer + 6, 1);
    referenceSize_ = bigEndian(start_ + trailer + 7, 1);
    count_ = bigEndian(start_ + trailer + 8, 8);
    top_ = bigEndian(start_ + trailer + 16, 8);
    table_ = bigEndian(start_ + trailer + 24, 8);
    const auto check = [&](bool holds, const char* problem) {
      if (!holds) throw unreadable(std::string(problem) + " in the trailer at byte " + std::to_string(trailer));
    };
    check(offsetSize_ >= 1, "an invalid offset size");
    check(referenceSize_ >= 1, "an invalid reference size");
    check(count_ >= 1, "no objects");
    check(top_ < count_, "a top object out of range");
    check(table_ > headerSize && table_ < trailer, "an offset table out of range");
    check(count_ <= (trailer - table_) / offsetSize_ && table_ + count_ * offsetSize_ == trailer,
          "an offset table of the wrong size");
    check(referenceSize_ >= 8 || count_ < std::uint64_t{1} << (8 * referenceSize_), "an insufficient reference size");
    check(offsetSize_ >= 8 || table_ < std::uint64_t{1} << (8 * offsetSize_), "an insufficient offset size");
  }

  void readOffsets() {
    document_->records.reserve(count_);
    document_->links.reserve(table_ / referenceSize_);
    const std::byte* entry = start_ + table_;
    std::uint64_t previous = 0;
    for (std::uint64_t index = 0; index < count_; ++index, entry += offsetSize_) {
      const std::uint64_t offset = bigEndian(entry, offsetSize_);
      if (offset >= table_)
        throw unreadable("an offset out of range in the offset table at byte " + std::to_string(entry - start_));
      if (offset < previous) isWithoutOverlap_ = false;
      previous = offset;
      document_->records.push_back({.bits = offset, .flags = undecoded});
    }
  }

  // Decodes an object and everything below it. `level` is the number of containers from the top object to this object,
  // itself included.
  void visit(std::uint32_t index, unsigned level) {
    PlistRecord& record = document_->records[index];
    if (record.has(undecoded)) {
      decode(index);
      if (record.kind == PlistKind::array) visitArray(index, level);
      if (record.kind == PlistKind::dictionary) visitDictionary(index, level);
      return;
    }
    if (record.depth == 0) return;
    if (record.depth == beingRead)
      throw unreadable("the object at byte " + std::to_string(offsetOf(index)) + " contains itself");
    record.flags |= PlistRecord::shared;
    requireLevel(level + record.depth - 1U, index);
  }

  void visitArray(std::uint32_t index, unsigned level) {
    requireLevel(level, index);
    const PlistRecord array = open(index, 1);
    const std::byte* references = start_ + array.high();
    for (std::size_t element = 0; element < array.count; ++element)
      document_->links[array.low() + element] = reference(references + element * referenceSize_);
    close(index, array.low(), 1, array.count, level);
  }

  void visitDictionary(std::uint32_t index, unsigned level) {
    requireLevel(level, index);
    const PlistRecord dictionary = open(index, 2);
    const std::byte* keys = start_ + dictionary.high();
    const std::byte* values = keys + dictionary.count * referenceSize_;
    std::uint32_t* links = document_->links.data() + dictionary.low();
    std::size_t entries = 0;
    for (std::size_t entry = 0; entry < dictionary.count; ++entry) {
      const std::uint32_t key = keyOf(reference(keys + entry * referenceSize_), index);
      if (isDuplicate(links, entries, key)) continue;  // the first of equal keys counts
      links[2 * entries] = key;
      links[2 * entries + 1] = reference(values + entry * referenceSize_);
      ++entries;
    }
    seenKeys_.clear();
    document_->records[index].count = static_cast<std::uint32_t>(entries);
    document_->links.resize(dictionary.low() + 2 * entries);
    close(index, dictionary.low() + 1, 2, entries, level);
  }

  // Makes room for the links of a container: one per element, two per entry.
  PlistRecord open(std::uint32_t index, std::size_t linksEach) {
    PlistRecord& record = document_->records[index];
    record.depth = beingRead;
    const std::size_t first = document_->links.size();
    document_->links.resize(first + record.count * linksEach);
    record.bits = std::uint64_t{record.high()} << 32 | first;
    return record;
  }

  // Visits the elements or values of a container and computes its depth.
  void close(std::uint32_t index, std::size_t first, std::size_t step, std::size_t count, unsigned level) {
    unsigned deepest = 0;
    for (std::size_t place = 0; place < count; ++place) {
      const std::uint32_t child = document_->links[first + place * step];
      const PlistRecord& record = document_->records[child];
      if (record.has(undecoded) || record.depth != 0) visit(child, level + 1);
      deepest = std::max<unsigned>(deepest, record.depth);
    }
    document_->records[index].depth = static_cast<std::uint16_t>(deepest + 1);
  }

  std::uint32_t keyOf(std::uint32_t index, std::uint32_t dictionary) {
    PlistRecord& record = document_->records[index];
    if (record.has(undecoded)) {
      const std::uint64_t offset = record.low();
      const int type = std::to_integer<int>(start_[offset]) >> 4;
      if (offset < headerSize || (type != 0x5 && type != 0x6)) throw keyNotString(dictionary);
      decode(index);
    }
    if (record.kind != PlistKind::string) throw keyNotString(dictionary);
    if (record.high() != 0) return index;  // the hash of a key, nearly always
    if (const auto alias = aliases_.find(index); alias != aliases_.end()) return alias->second;
    const PlistText text = document_->text(record);
    const std::uint32_t key = keys_.intern(text, text.hash(), [&] { return index; });
    if (key != index || record.high() == 0) aliases_.emplace(index, key);
    return key;
  }

  Error keyNotString(std::uint32_t dictionary) const {
    return unreadable("a key that is not a string in the dictionary at byte " + std::to_string(offsetOf(dictionary)));
  }

  // Returns true if a key is among the first `entries` of a dictionary. Many entries need a table: a linear search for
  // each would take quadratic time.
  bool isDuplicate(const std::uint32_t* links, std::size_t entries, std::uint32_t key) {
    constexpr std::size_t few = 16;
    if (entries < few) {
      for (std::size_t entry = 0; entry < entries; ++entry)
        if (links[2 * entry] == key) return true;
      return false;
    }
    if (seenKeys_.empty())
      for (std::size_t entry = 0; entry < entries; ++entry) seenKeys_.insert(links[2 * entry]);
    return !seenKeys_.insert(key).second;
  }

  std::uint32_t reference(const std::byte* place) const {
    const std::uint64_t index = bigEndian(place, referenceSize_);
    if (index >= count_) throw unreadable("a reference out of range at byte " + std::to_string(place - start_));
    return static_cast<std::uint32_t>(index);
  }

  // Decodes an object and checks that it ends before the next one begins. A file with overlapping objects cannot be
  // rewritten in place: a change of one object would change another.
  void decode(std::uint32_t index) {
    decode(document_->records[index]);
    if (end_ > startAfter(index)) isWithoutOverlap_ = false;
  }

  // Returns the offset of the object after this one in the offset table.
  std::uint64_t startAfter(std::uint32_t index) const {
    if (index + 1 == count_) return table_;
    const PlistRecord& next = document_->records[index + 1];
    return next.has(undecoded) ? next.low() : offsetOf(index + 1);
  }

  // Fills in a record from the object at its offset. A container gets the offset of its references, but no links yet.
  void decode(PlistRecord& record) {
    const std::size_t offset = record.low();
    if (offset < headerSize) throw unreadable("an object inside the header at byte " + std::to_string(offset));
    end_ = offset + 1;
    const int marker = std::to_integer<int>(start_[offset]);
    const int low = marker & 0x0F;
    record = {};
    switch (marker >> 4) {
      case 0x0:
        if (low != 0x8 && low != 0x9) break;
        record.bits = static_cast<std::uint64_t>(low & 1);
        return;
      case 0x1: return decodeInteger(record, offset);
      case 0x2:
        if (low == 2 || low == 3) return decodeReal(record, offset, low == 2 ? 4 : 8);
        break;
      case 0x3:
        if (low != 0x3) break;
        decodeReal(record, offset, 8);
        record.kind = PlistKind::date;
        return;
      case 0x4: return decodeSpan(record, PlistKind::data, offset, 1);
      case 0x5: return decodeString(record, PlistEncoding::latin1, offset, 1);
      case 0x6: return decodeString(record, PlistEncoding::utf16BigEndian, offset, 2);
      case 0xA: return decodeSpan(record, PlistKind::array, offset, referenceSize_);
      case 0xD: return decodeSpan(record, PlistKind::dictionary, offset, 2 * referenceSize_);
      default: break;
    }
    throw unreadable(std::string(unsupported(marker)) + " at byte " + std::to_string(offset));
  }

  static const char* unsupported(int marker) {
    if (marker == 0x00) return "an unsupported null";
    switch (marker >> 4) {
      case 0x2: return "a real of unsupported size";
      case 0x8: return "an unsupported UID";
      case 0xB:
      case 0xC: return "an unsupported set";
      default: return "an object of unknown type";
    }
  }

  // Integers of one, two and four bytes are unsigned, those of eight bytes signed; numbers above 2^63-1 have sixteen.
  void decodeInteger(PlistRecord& record, std::size_t offset) {
    const std::size_t size = std::size_t{1} << (std::to_integer<unsigned>(start_[offset]) & 0x0F);
    if (size > 16) throw unreadable("an integer of unsupported size at byte " + std::to_string(offset));
    requireInside(offset, offset + 1, size);
    record.kind = PlistKind::integer;
    record.bits = bigEndian(start_ + offset + 1 + (size == 16 ? 8 : 0), std::min<std::size_t>(size, 8));
    bool negative = size == 8 && static_cast<std::int64_t>(record.bits) < 0;
    if (size == 16) {
      const std::uint64_t high = bigEndian(start_ + offset + 1, 8);
      negative = high == ~std::uint64_t{0};
      if (high != 0 && !(negative && static_cast<std::int64_t>(record.bits) < 0))
        throw unreadable("an integer out of range at byte " + std::to_string(offset));
    }
    if (negative) record.flags |= PlistRecord::negative;
  }

  void decodeReal(PlistRecord& record, std::size_t offset, std::size_t size) {
    requireInside(offset, offset + 1, size);
    const std::uint64_t bits = bigEndian(start_ + offset + 1, size);
    record.kind = PlistKind::real;
    record.bits =
        size == 8
            ? bits
            : std::bit_cast<std::uint64_t>(static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits))));
  }

  void decodeString(PlistRecord& record, PlistEncoding encoding, std::size_t offset, std::size_t unitSize) {
    decodeSpan(record, PlistKind::string, offset, unitSize);
    record.flags = static_cast<std::uint8_t>(encoding);
  }

  // Decodes an object of a count and that many items of `size` bytes. A count below 15 is in the marker, a larger one
  // in an integer after it.
  void decodeSpan(PlistRecord& record, PlistKind kind, std::size_t offset, std::size_t size) {
    std::uint64_t count = std::to_integer<std::uint64_t>(start_[offset]) & 0x0F;
    std::size_t first = offset + 1;
    if (count == 0x0F) {
      requireInside(offset, first, 1);
      const int marker = std::to_integer<int>(start_[first]);
      const std::size_t width = std::size_t{1} << (marker & 0x0F);
      if (marker >> 4 != 0x1) throw unreadable("a count that is not an integer at byte " + std::to_string(first));
      requireInside(offset, first + 1, width);
      const std::size_t excess = width > 8 ? width - 8 : 0;
      if (excess > 0 && bigEndian(start_ + first + 1, excess) != 0)
        throw unreadable("a count out of range at byte " + std::to_string(first));
      count = bigEndian(start_ + first + 1 + excess, width - excess);
      first += 1 + width;
    }
    if (count > table_ - first || count * size > table_ - first) throw beyondObjects(offset);
    // In a hostile file objects overlap, and each may extend over nearly the whole file. Without this limit time and
    // memory would be quadratic in the size of the file.
    claimed_ += count * size;
    if (claimed_ > table_) throw unreadable("overlapping objects at byte " + std::to_string(offset));
    end_ = first + count * size;
    record.kind = kind;
    record.count = static_cast<std::uint32_t>(count);
    const bool container = kind == PlistKind::array || kind == PlistKind::dictionary;
    record.bits = container ? std::uint64_t{first} << 32 : first;
  }

  void requireInside(std::size_t offset, std::size_t first, std::size_t size) {
    if (first > table_ || size > table_ - first) throw beyondObjects(offset);
    end_ = first + size;
  }

  static Error beyondObjects(std::size_t offset) {
    return unreadable("the object at byte " + std::to_string(offset) + " extends into the offset table");
  }

  void requireLevel(unsigned level, std::uint32_t index) const {
    if (level > mostLevels_)
      throw unreadable(tooManyLevels(mostLevels_) + " at byte " + std::to_string(offsetOf(index)));
  }

  // Reads the offset table: the record of a decoded object no longer has its offset.
  std::uint64_t offsetOf(std::uint32_t index) const {
    return bigEndian(start_ + table_ + index * offsetSize_, offsetSize_);
  }

  std::shared_ptr<PlistDocument> document_;
  const std::byte* start_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t top_ = 0;
  std::uint64_t table_ = 0;
  std::uint64_t claimed_ = 0;  // bytes of the objects decoded so far
  std::uint64_t end_ = 0;      // the end of the object that was decoded last
  bool isWithoutOverlap_ = true;
  unsigned mostLevels_ = stackLevels();
  KeyTable keys_;
  std::unordered_map<std::uint32_t, std::uint32_t> aliases_;  // string objects to an earlier key with the same text
  std::unordered_set<std::uint32_t> seenKeys_;                // of the large dictionary whose keys are read
};

}  // namespace

bool looksBinary(const Bytes& bytes) { return bytes.text().starts_with("bplist0"); }

PlistValue readBinary(const Bytes& bytes) { return BinaryReader(bytes).read(); }
