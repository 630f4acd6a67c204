// Builds the document of a property list in a text format, record by record.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux/plist/key_table.h"
#include "values/plist_value.h"

class DocumentBuilder {
 public:
  // For a source text, which the document keeps alive.
  explicit DocumentBuilder(const Bytes& text);

  // Add scalars and return their record numbers. Text in the source must be valid UTF-8.
  std::uint32_t addSourceText(std::size_t offset, std::size_t size, bool verbatim);
  std::uint32_t addSourceBase64(std::size_t offset, std::size_t size);
  std::uint32_t addText(std::u16string_view units);  // stored outside the source, as all below
  std::uint32_t addText(std::string_view utf8Text);
  std::uint32_t addData(std::string_view bytes);
  std::uint32_t addInteger(PlistInteger integer);
  std::uint32_t addReal(double real);
  std::uint32_t addDate(double seconds);
  std::uint32_t addBoolean(bool truth);

  // Returns the key record for the text of a string record: an earlier key with this text, else the record itself.
  std::uint32_t key(std::uint32_t string);
  // Returns the key record for text in the source. Adds a record only if no earlier key has this text.
  std::uint32_t sourceKey(std::size_t offset, std::size_t size, bool verbatim);

  // Build a container: open it, add its elements or entries, close it and get its record. Elements and entries are
  // added to the innermost open container. `start` and `end` are the offsets of the container's element in the source.
  void open(std::size_t start);
  void element(std::uint32_t record);
  void entry(std::uint32_t key, std::uint32_t value);  // replaces the value of an equal key
  std::uint32_t closeArray();
  std::uint32_t closeDictionary(std::size_t end);

  // Returns the value of the root record and empties the builder.
  PlistValue finish(std::uint32_t root, PlistDocument::Xml xml);

 private:
  struct Open {
    std::size_t start;  // offset in the source
    std::size_t first;  // index of its first link in pending_
    unsigned deepest;   // the largest depth of its elements or values
  };

  // A key in the source.
  struct RecentKey {
    std::string_view text;
    std::uint32_t record = 0;
  };

  std::uint32_t add(const PlistRecord& record);
  std::uint32_t addAside(std::string_view bytes, PlistRecord record);
  std::uint32_t newSourceKey(std::size_t offset, std::size_t size, bool verbatim);
  std::uint32_t close(PlistKind kind, std::size_t count);
  void deepen(std::uint32_t record);
  void keepLastOfEqualKeys(std::size_t first);
  void measureDictionary(std::size_t first);

  std::shared_ptr<PlistDocument> document_;
  KeyTable keys_;
  std::array<RecentKey, 128> recentKeys_;  // by their size and two of their characters
  std::vector<Open> open_;
  std::vector<std::uint32_t> pending_;  // links of the open containers, those of the innermost last
};
