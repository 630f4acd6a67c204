#include "platform/linux/plist/binary_rewriter.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/linux/plist/rearrangement.h"
#include "platform/posix/large_memory.h"

std::optional<Bytes> rewriteBinary(const PlistValue& value) {
  const PlistValue::Place* place = value.placeOrOrigin();
  if (place == nullptr || place->document->layout.referenceSize == 0) return std::nullopt;
  const PlistDocument& document = *place->document;
  const auto arrays = rearrangedArrays(value, document.layout.root);
  if (!arrays) return std::nullopt;

  LargeBuffer buffer(document.source.size());
  buffer.resize(document.source.size());
  std::memcpy(buffer.data(), document.source.data(), document.source.size());
  for (const RearrangedArray& rearranged : *arrays) {
    std::byte* reference = buffer.data() + document.records[rearranged.array].high();
    for (const std::uint32_t object : rearranged.elements)
      for (unsigned byte = document.layout.referenceSize; byte-- > 0;)
        *reference++ = static_cast<std::byte>(byte < sizeof object ? object >> (8 * byte) & 0xFF : 0);
  }
  return std::move(buffer).take();
}
