// Builds the document of a text format, record by record.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "values/plist_value.h"
#include "platform/linux/plist/key_table.h"

class DocumentBuilder {
 public:
  // For a text, which the document keeps.
  explicit DocumentBuilder(const Bytes& text);

  // Scalars; each answers the number of its record. A span of the source must be valid UTF-8.
  std::uint32_t addSourceText(std::size_t offset, std::size_t size, bool verbatim);
  std::uint32_t addSourceBase64(std::size_t offset, std::size_t size);
  std::uint32_t addText(std::u16string_view units);  // kept beside the source, as all below
  std::uint32_t addText(std::string_view utf8Text);
  std::uint32_t addData(std::string_view bytes);
  std::uint32_t addInteger(PlistInteger integer);
  std::uint32_t addReal(double real);
  std::uint32_t addDate(double seconds);
  std::uint32_t addBoolean(bool truth);

  // The record of a key with the text of a string record: that one, or an earlier one that equals it.
  std::uint32_t key(std::uint32_t string);
  // The record of a key that stands in the source, which is added only if it is new.
  std::uint32_t sourceKey(std::size_t offset, std::size_t size, bool verbatim);

  // A container: opened, filled, and closed into a record. What is filled in is added to the innermost open one.
  // `start` and `end` are the offsets of its element in the source.
  void open(std::size_t start);
  void element(std::uint32_t record);
  void entry(std::uint32_t key, std::uint32_t value);  // an equal key that is there already gets the new value
  std::uint32_t closeArray();
  std::uint32_t closeDictionary(std::size_t end);

  // The value of the root record; the builder is done then. `rewritable` says that the source is an XML file itself,
  // which can be rewritten.
  PlistValue finish(std::uint32_t root, bool rewritable);

 private:
  struct Open {
    std::size_t start;  // in the source
    std::size_t first;  // of its links, in pending_
    unsigned deepest;
  };

  std::uint32_t add(const PlistRecord& record);
  std::uint32_t addAside(std::string_view bytes, PlistRecord record);
  std::uint32_t close(PlistKind kind, std::size_t count);
  void deepen(std::uint32_t record);
  void keepLastOfEqualKeys(std::size_t first);
  void measureDictionary(std::size_t first);

  std::shared_ptr<PlistDocument> document_;
  KeyTable keys_;
  std::vector<Open> open_;
  std::vector<std::uint32_t> pending_;  // links of the open containers, innermost last
};
