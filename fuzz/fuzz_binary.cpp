// Fuzzes the reader of binary property lists.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "fuzz/harness.h"
#include "fuzz/round_trips.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  checkRoundTrips(copyOf(data, size), PropertyListFormat::binary);
  return 0;
}

// The fuzzer's own way to change an input; in a program without the fuzzer it is not there.
extern "C" __attribute__((weak)) std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,  // NOLINT
                                                              std::size_t largest);

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;

std::uint64_t numberAt(std::span<const std::uint8_t> bytes) {
  std::uint64_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

void putNumber(std::span<std::uint8_t> bytes, std::uint64_t number) {
  for (std::size_t place = bytes.size(); place-- > 0; number >>= 8) bytes[place] = static_cast<std::uint8_t>(number);
}

// Moves the offset table that a file's trailer names to just before that trailer, where inserting or removing
// bytes in front of it has left it.
void mendTrailer(std::span<std::uint8_t> file) {
  const std::span<std::uint8_t> trailer = file.last(trailerSize);
  const std::uint64_t offsetSize = trailer[6];
  const std::uint64_t objects = numberAt(trailer.subspan(8, 8));
  const std::uint64_t body = file.size() - trailerSize - magic.size();
  if (offsetSize == 0 || objects > body / offsetSize) return;
  putNumber(trailer.subspan(24, 8), file.size() - trailerSize - objects * offsetSize);
}

}  // namespace

// Changes bytes as the fuzzer would, but keeps the file one that claims to be binary, and its trailer, three times in
// four, one that leads to the offset table: few changes would otherwise get past the first checks.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,  // NOLINT
                                               unsigned seed) {
  size = LLVMFuzzerMutate(data, size, largest);
  if (size < magic.size() + trailerSize) return size;
  std::copy(magic.begin(), magic.end(), data);
  if (seed % 4 != 0) mendTrailer({data, size});
  return size;
}
