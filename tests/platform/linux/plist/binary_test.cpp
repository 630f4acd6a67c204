// The binary format: reading, errors, writing and rewriting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/sort_order.h"
#include "platform/error.h"
#include "platform/linux/plist/binary_reader.h"
#include "platform/linux/plist/binary_rewriter.h"
#include "platform/linux/plist/binary_writer.h"
#include "tests/support/binary_file.h"
#include "tests/support/plist_json.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string problemOf(const Bytes& bytes) {
  try {
    readBinary(bytes);
  } catch (const Error& error) {
    EXPECT_EQ(error.domain(), "PropertyList");
    EXPECT_EQ(error.code(), 3840);
    return error.description();
  }
  return "no error";
}

Bytes withByte(const Bytes& bytes, std::size_t place, char value) {
  std::string copy(bytes.text());
  copy.at(place) = value;
  return Bytes(std::move(copy));
}

Bytes small() {
  BinaryFile file;
  file.array({1, 2});
  file.string("a");
  file.string("b");
  return file.bytes();
}

PlistValue anew(const PlistValue& value) { return readBinary(writeBinary(deepCopy(value)).joined()); }

TEST(BinaryReader, namesTheByteOfATruncatedFile) {
  for (std::size_t size = 8; size < small().size(); ++size)
    EXPECT_THAT(problemOf(small().slice(0, size)), HasSubstr("byte")) << size;
}

std::uint32_t hashFrom(std::uint32_t hash, const std::string& text) {
  for (const char character : text) hash = plistHashStep(hash, static_cast<unsigned char>(character));
  return hash;
}

// Returns two texts that lead from one hash to the same hash.
std::pair<std::string, std::string> collidingTexts(std::uint32_t start) {
  std::unordered_map<std::uint32_t, std::string> seen;
  for (int number = 0;; ++number) {
    const std::string text = std::to_string(number * 7919LL);
    const auto [known, isNew] = seen.emplace(hashFrom(start, text), text);
    if (!isNew) return {known->second, text};
  }
}

TEST(BinaryReader, refusesACycle) {
  BinaryFile file;
  file.array({1});
  file.array({0});
  EXPECT_THAT(problemOf(file.bytes()), HasSubstr("the object at byte 8 contains itself"));
}

TEST(BinaryReader, refusesKeysOfEqualHash) {
  // Each pair has the same hash, whatever comes before and after it.
  std::vector<std::string> keys = {""};
  std::uint32_t state = plistHashStart;
  while (keys.size() < 64) {
    const auto [one, other] = collidingTexts(state);
    std::vector<std::string> longer;
    for (const std::string& key : keys) longer.insert(longer.end(), {key + one, key + other});
    keys = longer;
    state = hashFrom(state, one);
  }
  BinaryFile file;
  const std::uint32_t value = file.string("value");
  std::vector<std::uint32_t> numbers;
  numbers.reserve(keys.size());
  for (const std::string& key : keys) numbers.push_back(file.string(key));
  const std::uint32_t top = file.dictionary(numbers, std::vector<std::uint32_t>(numbers.size(), value));
  EXPECT_THAT(problemOf(file.bytes(top)), HasSubstr("too many keys with nearly equal hashes"));
}

TEST(BinaryReader, refusesAReferenceOutOfRange) {
  BinaryFile file;
  file.array({7});
  EXPECT_THAT(problemOf(file.bytes()), HasSubstr("reference out of range at byte 9"));
}

TEST(BinaryReader, refusesAnOffsetOutOfRange) {
  const Bytes bytes = small();
  const std::size_t table = bytes.size() - 32 - std::size_t{3} * 4;
  EXPECT_THAT(problemOf(withByte(bytes, table + 4, '\x7F')), HasSubstr("offset out of range in the offset table"));
  EXPECT_THAT(problemOf(withByte(bytes, table + 7, '\x02')), HasSubstr("an object inside the header at byte 2"));
}

TEST(BinaryReader, refusesAnInvalidCount) {
  BinaryFile beyond;
  beyond.add(
      "\x5F\x10\x7F"
      "abc");
  EXPECT_THAT(problemOf(beyond.bytes()), HasSubstr("the object at byte 8 extends into the offset table"));
  BinaryFile notANumber;
  notANumber.add(
      "\x5F\x50"
      "abc");
  EXPECT_THAT(problemOf(notANumber.bytes()), HasSubstr("a count that is not an integer at byte 9"));
  BinaryFile huge;
  huge.add(std::string("\x5F\x14\x01") + std::string(15, '\0') + "abc");
  EXPECT_THAT(problemOf(huge.bytes()), HasSubstr("a count out of range at byte 9"));
}

TEST(BinaryReader, refusesEveryInvalidTrailer) {
  const Bytes bytes = small();
  const std::size_t trailer = bytes.size() - 32;
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 6, '\0')), HasSubstr("an invalid offset size in the trailer"));
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 7, '\0')), HasSubstr("an invalid reference size in the trailer"));
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 15, '\0')), HasSubstr("no objects in the trailer"));
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 23, '\5')), HasSubstr("top object out of range in the trailer"));
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 31, '\3')), HasSubstr("offset table out of range in the trailer"));
  EXPECT_THAT(problemOf(withByte(bytes, trailer + 15, '\2')), HasSubstr("offset table of the wrong size"));
}

TEST(BinaryReader, refusesUnsupportedObjects) {
  const std::vector<std::pair<std::string, std::string>> objects = {{std::string(1, '\0'), "an unsupported null"},
                                                                    {"\x80\x01", "an unsupported UID"},
                                                                    {"\xC0", "an unsupported set"},
                                                                    {"\xB0", "an unsupported set"},
                                                                    {"\x70", "unknown type"}};
  for (const auto& [object, problem] : objects) {
    BinaryFile file;
    file.add(object);
    EXPECT_THAT(problemOf(file.bytes()), AllOf(HasSubstr(problem), HasSubstr("at byte 8")));
  }
}

TEST(BinaryReader, refusesAKeyThatIsNotAString) {
  BinaryFile file;
  file.dictionary({1}, {1});
  file.add("\x10\x05");
  EXPECT_THAT(problemOf(file.bytes()), HasSubstr("a key that is not a string"));
}

TEST(BinaryReader, refusesOverlappingObjects) {
  // The top object is an array of 150 arrays. Each of these has 200 references, which are the bytes of the arrays after
  // it: 0xAF, 0x10 and 0xC8. The objects of these numbers are one Boolean, so nothing but the overlap is wrong.
  constexpr std::size_t arrays = 150;
  const std::string array = "\xAF\x10\xC8";
  std::string file = "bplist00\xAF\x10\x96";
  for (std::size_t index = 0; index <= arrays; ++index)
    if (index != 0x10) file += static_cast<char>(index);
  file[11] = '\x01';
  const std::size_t first = file.size();
  for (std::size_t index = 0; index < arrays; ++index) file += array;
  file += std::string(200, '\x10');
  const std::size_t boolean = file.size();
  file += '\x09';
  const std::size_t table = file.size();
  const auto appendOffset = [&](std::size_t offset) {
    file += {static_cast<char>(offset >> 8), static_cast<char>(offset)};
  };
  constexpr std::size_t count = 255;
  for (std::size_t index = 0; index < count; ++index) {
    const std::size_t place = index < 0x10 ? index - 1 : index - 2;
    appendOffset(index == 0 ? 8 : index == 0x10 || index > arrays ? boolean : first + 3 * place);
  }
  file += std::string(6, '\0') + "\2\1" + std::string(7, '\0') + static_cast<char>(count) + std::string(14, '\0');
  appendOffset(table);
  EXPECT_THAT(problemOf(Bytes(file)), HasSubstr("overlapping objects at byte 170"));
}

TEST(BinaryReader, reads512LevelsAndRefusesMore) {
  const auto nested = [](unsigned levels) {
    BinaryFile file(2);
    for (unsigned level = 0; level < levels; ++level) file.array({level + 1});
    file.string("x");
    return file.bytes();
  };
  EXPECT_EQ(nestedArrays(readBinary(nested(512))), 512U);
  EXPECT_THAT(problemOf(nested(513)), HasSubstr("more than 512 levels of nested arrays and dictionaries"));
  EXPECT_THAT(problemOf(nested(60000)), HasSubstr("more than 512 levels of nested arrays and dictionaries"));
}

TEST(BinaryReader, countsTheLevelsOfASharedObjectInEveryPlace) {
  // A chain of 300 arrays, referred to from the top array and from the end of another chain of 300.
  BinaryFile file(2);
  file.array({1, 301});
  for (std::uint32_t object = 1; object < 301; ++object) file.array({object == 300 ? 601 : object + 1});
  for (std::uint32_t object = 301; object < 601; ++object) file.array({object == 600 ? 1 : object + 1});
  file.string("x");
  EXPECT_THAT(problemOf(file.bytes()), HasSubstr("more than 512 levels of nested arrays and dictionaries"));
}

TEST(BinaryFormat, roundTripsIntegers) {
  const std::vector<PlistInteger> integers = {0,
                                              1,
                                              127,
                                              128,
                                              255,
                                              256,
                                              65535,
                                              65536,
                                              4294967295U,
                                              4294967296U,
                                              -1,
                                              -128,
                                              std::numeric_limits<std::int64_t>::min(),
                                              std::numeric_limits<std::int64_t>::max(),
                                              std::uint64_t{1} << 63,
                                              std::numeric_limits<std::uint64_t>::max()};
  for (const PlistInteger integer : integers) EXPECT_EQ(anew(integer), PlistValue(integer)) << integer.decimal();
}

TEST(BinaryFormat, roundTripsRealsAndDates) {
  const std::vector<double> reals = {0.0,
                                     -0.0,
                                     0.1,
                                     1e300,
                                     -1e-300,
                                     5e-324,
                                     std::numeric_limits<double>::max(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     std::bit_cast<double>(0x7FF8000000000123U),
                                     725846400.123456789};
  for (const double real : reals) {
    EXPECT_EQ(anew(real), PlistValue(real)) << real;
    EXPECT_EQ(anew(PlistDate{real}), PlistValue(PlistDate{real})) << real;
  }
}

TEST(BinaryFormat, roundTripsEveryUnit) {
  std::u16string every;
  for (unsigned unit = 0; unit < 0x10000; ++unit) every.push_back(static_cast<char16_t>(unit));  // also unpaired ones
  for (const std::u16string& string : {std::u16string(), std::u16string(1, u'\0'), std::u16string(u"a\r\nb\rc"), every,
                                       std::u16string(u"\U0001F600\U0010FFFF"), std::u16string(1, char16_t{0xD83D})})
    EXPECT_EQ(anew(string), PlistValue(string));
}

TEST(BinaryFormat, roundTripsData) {
  EXPECT_EQ(anew(Bytes(std::string())), PlistValue(Bytes(std::string())));
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  EXPECT_EQ(anew(Bytes(all)), PlistValue(Bytes(all)));
}

TEST(BinaryFormat, keepsTheOrderOfKeys) {
  const PlistValue value = PlistValue::dictionary({{u"z", 1}, {u"a", 2}, {u"", 3}, {u"日本", 4}});
  const PlistValue back = anew(value);
  for (std::size_t index = 0; index < value.size(); ++index) EXPECT_EQ(back.keyAt(index), value.keyAt(index));
}

TEST(BinaryFormat, writesEqualScalarsOnce) {
  std::vector<PlistValue> elements;
  for (int round = 0; round < 100; ++round) {
    elements.insert(elements.end(),
                    {PlistValue(u"a string of some length"), PlistValue(123456), PlistValue(0.5),
                     PlistValue(PlistDate{7}), PlistValue(Bytes(std::string(20, 'x'))), PlistValue(true)});
  }
  // Six scalars, and a reference of one byte for each of six hundred elements.
  EXPECT_LT(writeBinary(PlistValue::array(elements)).size(), 800U);
}

TEST(BinaryFormat, distinguishesKindsOfEqualNumbers) {
  const PlistValue value = PlistValue::array({1, 1.0, PlistDate{1}, true, u"1", Bytes(std::string("1"))});
  EXPECT_EQ(anew(value), value);
}

// 250 nested folders, each with the next folder twice: 2^250 bookmarks if it were expanded.
Bytes astronomicalTree() {
  constexpr std::uint32_t levels = 250;
  BinaryFile file(2);
  file.dictionary({1}, {2});
  file.string("Children");
  file.array({3});
  const std::uint32_t type = 4;
  const std::uint32_t title = 5;
  // 3: the first folder; 4, 5: keys; 6: its type; then for each level a folder and its array.
  const auto folderObject = [](std::uint32_t level) { return level == 0 ? 3U : 7U + 3 * (level - 1) + 2; };
  const auto arrayObject = [](std::uint32_t level) { return 7U + 3 * level; };
  const auto titleObject = [](std::uint32_t level) { return 7U + 3 * level + 1; };
  for (std::uint32_t level = 0; level < levels; ++level) {
    if (level == 0) {
      file.dictionary({type, title, 1}, {6, titleObject(0), arrayObject(0)});
      file.string("WebBookmarkType");
      file.string("Title");
      file.string("WebBookmarkTypeList");
    }
    // The last folder has its bookmarks in the wrong order, so every level changes.
    const std::uint32_t next = folderObject(level + 1);
    const std::uint32_t last = 7U + 3 * levels;
    const bool atEnd = level + 1 == levels;
    file.array(atEnd ? std::vector<std::uint32_t>{last, last + 1} : std::vector<std::uint32_t>{next, next});
    file.string("folder " + std::to_string(level));
    if (!atEnd)
      file.dictionary({type, title, 1}, {6, titleObject(level + 1), arrayObject(level + 1)});
    else
      file.string("unused");
  }
  file.dictionary({type, title}, {6, 7U + 3 * levels + 2});
  file.dictionary({type, title}, {6, 7U + 3 * levels + 3});
  file.string("z");
  file.string("a");
  return file.bytes();
}

TEST(BinaryFormat, handlesATreeOf2ToThe250ValuesInLinearTime) {
  const VirtualMachine machine;
  const Bytes bytes = astronomicalTree();
  const PlistValue value = readBinary(bytes);
  const PlistValue inOrder = sorted(value, true);
  EXPECT_FALSE(inOrder == value);
  EXPECT_EQ(sorted(inOrder, true), inOrder);
  const Bytes written = writeBinary(inOrder).joined();
  EXPECT_LE(written.size(), 2 * bytes.size());
  EXPECT_EQ(readBinary(written), inOrder);
  EXPECT_EQ(readBinary(bytes), value);
}

TEST(BinaryRewriter, changesOnlyTheReferencesOfRearrangedArrays) {
  const VirtualMachine machine;
  BinaryFile file;
  const std::uint32_t inner = file.folder("bar", {file.leaf("b"), file.leaf("a"), file.leaf("c")});
  const std::uint32_t top = file.folder("root", {inner});
  const Bytes before = file.bytes(top);
  const PlistValue value = readBinary(before);
  const PlistValue inOrder = sorted(value, true);
  const std::optional<BytePieces> rewritten = rewriteBinary(inOrder);
  ASSERT_TRUE(rewritten);
  const Bytes after = rewritten->joined();
  ASSERT_EQ(after.size(), before.size());
  std::size_t changed = 0;
  for (std::size_t place = 0; place < before.size(); ++place)
    changed += before.text()[place] != after.text()[place] ? 1 : 0;
  EXPECT_EQ(changed, 2U);
  EXPECT_EQ(readBinary(after), inOrder);
}

TEST(BinaryRewriter, keepsUnusedObjectsAndGaps) {
  const VirtualMachine machine;
  BinaryFile file;
  const std::uint32_t inner = file.folder("bar", {file.leaf("b"), file.leaf("a")});
  file.string("no reference leads here");
  file.add(
      "\x51"
      "x"
      "and these bytes are in no object");
  const Bytes before = file.bytes(file.folder("root", {inner}));
  const std::optional<BytePieces> rewritten = rewriteBinary(sorted(readBinary(before), true));
  ASSERT_TRUE(rewritten);
  const Bytes after = rewritten->joined();
  EXPECT_THAT(std::string(after.text()), HasSubstr("no reference leads here"));
  EXPECT_THAT(std::string(after.text()), HasSubstr("and these bytes are in no object"));
}

TEST(BinaryRewriter, declinesAChangeOfASharedArray) {
  const VirtualMachine machine;
  // An array of children, shared by the Reading List, where it keeps its order, and by a folder, where it is sorted.
  BinaryFile file;
  const std::uint32_t array = file.array({file.leaf("b"), file.leaf("a")});
  const std::uint32_t type = file.string("WebBookmarkType");
  const std::uint32_t title = file.string("Title");
  const std::uint32_t children = file.string("Children");
  const std::uint32_t list = file.string("WebBookmarkTypeList");
  const std::uint32_t readingList =
      file.dictionary({type, title, children}, {list, file.string("com.apple.ReadingList"), array});
  const std::uint32_t folder = file.dictionary({type, title, children}, {list, file.string("folder"), array});
  const PlistValue value = readBinary(file.bytes(file.folder("root", {readingList, folder})));
  const PlistValue inOrder = sorted(value, true);
  EXPECT_FALSE(rewriteBinary(inOrder));
  const PlistValue back = readBinary(writeBinary(inOrder).joined());
  EXPECT_EQ(back, inOrder);
  const PlistValue folders = *back.value(u"Children");
  EXPECT_EQ(folders.at(0), value.value(u"Children")->at(0));
  EXPECT_FALSE(folders.at(1) == value.value(u"Children")->at(1));
}

TEST(BinaryRewriter, declinesOverlappingObjects) {
  const VirtualMachine machine;
  // The data of "Extra" are the bytes of the array of children and must not change with its order.
  std::string file = "bplist00";
  std::string table;
  const auto add = [&](const std::string& object) {
    table += static_cast<char>(file.size());
    file += object;
  };
  for (const char* text :
       {"\x5F\x10\x0FWebBookmarkType", "\x5F\x10\x13WebBookmarkTypeList", "UTitle", "XChildren", "UExtra", "Qb", "Qa"})
    add(text);
  add(std::string("\xD2\0\2\1\5", 5));  // 7: a folder b
  add(std::string("\xD2\0\2\1\6", 5));  // 8: a folder a
  add("\x43\xA2\7\x8");                 // 9: data of three bytes
  table += static_cast<char>(file.size() - 3);
  add(std::string("\xD3\0\3\4\1\xA\x9", 7));  // 11: the folder, with the array 10 and the data 9
  add("\xA1\xB");                             // 12
  add(std::string("\xD2\0\3\1\xC", 5));       // 13: the root
  const std::size_t place = file.size();
  file += table + std::string(6, '\0') + "\1\1" + std::string(7, '\0') + static_cast<char>(table.size());
  file += std::string(7, '\0') + "\xD" + std::string(7, '\0') + static_cast<char>(place);

  const PlistValue value = readBinary(Bytes(file));
  const PlistValue inOrder = sorted(value, true);
  ASSERT_FALSE(inOrder == value);
  EXPECT_FALSE(rewriteBinary(inOrder));
  const PlistValue back = readBinary(writeBinary(inOrder).joined());
  EXPECT_EQ(back, inOrder);
  EXPECT_EQ(back.value(u"Children")->at(0).value(u"Extra")->data()->text(), "\xA2\7\x8");
}

TEST(BinaryRewriter, declinesOtherChangesThanRearrangements) {
  BinaryFile file;
  file.array({1, 2});
  file.string("a");
  file.string("b");
  const PlistValue value = readBinary(file.bytes());
  EXPECT_TRUE(rewriteBinary(value.rearranged({value.at(1), value.at(0)})));
  EXPECT_FALSE(rewriteBinary(value.rearranged({value.at(1), value.at(1)})));
  EXPECT_FALSE(rewriteBinary(value.rearranged({value.at(1), u"new"})));
  EXPECT_FALSE(rewriteBinary(value.at(0)));
  EXPECT_FALSE(rewriteBinary(PlistValue::array({u"a"})));
  EXPECT_EQ(readBinary(writeBinary(value.rearranged({value.at(1), value.at(1)})).joined()),
            PlistValue::array({u"b", u"b"}));
}

TEST(BinaryReader, readsTwoLargeDictionariesWithEqualKeys) {
  BinaryFile file(2);
  std::vector<std::uint32_t> keys;
  std::vector<std::uint32_t> values;
  for (int key = 0; key < 20; ++key) {
    keys.push_back(file.string("key " + std::to_string(key)));
    values.push_back(file.string("value " + std::to_string(key)));
  }
  const std::uint32_t first = file.dictionary(keys, values);
  const std::uint32_t second = file.dictionary(keys, values);
  const PlistValue value = readBinary(file.bytes(file.array({first, second})));
  for (std::size_t element = 0; element < 2; ++element) {
    ASSERT_EQ(value.at(element).size(), 20U) << element;
    for (std::size_t index = 0; index < 20; ++index)
      EXPECT_EQ(value.at(element).valueAt(index), PlistValue(utf16("value " + std::to_string(index)))) << element;
  }
}

TEST(BinaryReader, keepsTheFirstOfEqualKeysAmongMany) {
  BinaryFile file(2);
  std::vector<std::uint32_t> keys;
  std::vector<std::uint32_t> values;
  const std::uint32_t one = file.add("\x10\x01");
  const std::uint32_t two = file.add("\x10\x02");
  for (int key = 0; key < 100; ++key) {
    keys.push_back(file.string("key " + std::to_string(key % 50)));
    values.push_back(key < 50 ? one : two);
  }
  const PlistValue value = readBinary(file.bytes(file.dictionary(keys, values)));
  EXPECT_EQ(value.size(), 50U);
  for (std::size_t index = 0; index < value.size(); ++index) EXPECT_EQ(value.valueAt(index), PlistValue(1));
}

}  // namespace
