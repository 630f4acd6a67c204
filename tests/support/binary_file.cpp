#include "tests/support/binary_file.h"

namespace {

std::string bigEndian(std::uint64_t number, unsigned size) {
  std::string bytes;
  for (unsigned byte = size; byte-- > 0;)
    bytes.push_back(static_cast<char>(byte < 8 ? number >> (8 * byte) & 0xFF : 0));
  return bytes;
}

constexpr unsigned offsetSize = 4;

}  // namespace

std::uint32_t BinaryFile::add(std::string object) {
  objects_.push_back(std::move(object));
  return static_cast<std::uint32_t>(objects_.size() - 1);
}

std::string BinaryFile::counted(unsigned marker, std::size_t count) const {
  if (count < 15) return {static_cast<char>(marker | count)};
  return std::string(1, static_cast<char>(marker | 15)) + '\x12' + bigEndian(count, 4);
}

std::string BinaryFile::reference(std::uint32_t object) const { return bigEndian(object, referenceSize_); }

std::uint32_t BinaryFile::string(const std::string& ascii) { return add(counted(0x50, ascii.size()) + ascii); }

std::uint32_t BinaryFile::array(const std::vector<std::uint32_t>& elements) {
  std::string object = counted(0xA0, elements.size());
  for (const std::uint32_t element : elements) object += reference(element);
  return add(object);
}

std::uint32_t BinaryFile::dictionary(const std::vector<std::uint32_t>& keys, const std::vector<std::uint32_t>& values) {
  std::string object = counted(0xD0, keys.size());
  for (const std::uint32_t key : keys) object += reference(key);
  for (const std::uint32_t value : values) object += reference(value);
  return add(object);
}

std::uint32_t BinaryFile::folder(const std::string& title, const std::vector<std::uint32_t>& children) {
  return dictionary({string("WebBookmarkType"), string("Title"), string("Children")},
                    {string("WebBookmarkTypeList"), string(title), array(children)});
}

std::uint32_t BinaryFile::leaf(const std::string& title) {
  return dictionary({string("WebBookmarkType"), string("Title")}, {string("WebBookmarkTypeLeaf"), string(title)});
}

Bytes BinaryFile::bytes(std::uint32_t top) const {
  std::string file = "bplist00";
  std::string table;
  for (const std::string& object : objects_) {
    table += bigEndian(file.size(), offsetSize);
    file += object;
  }
  const std::size_t place = file.size();
  file += table + std::string(6, '\0') + static_cast<char>(offsetSize) + static_cast<char>(referenceSize_);
  file += bigEndian(objects_.size(), 8) + bigEndian(top, 8) + bigEndian(place, 8);
  return Bytes(std::move(file));
}
