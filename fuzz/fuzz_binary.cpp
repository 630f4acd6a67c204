// Fuzzes the reader of binary property lists.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "fuzz/binary_mutation.h"
#include "fuzz/binary_objects.h"
#include "fuzz/harness.h"
#include "fuzz/round_trips.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  checkRoundTrips(copyOf(data, size), PropertyListFormat::binary);
  return 0;
}

// libFuzzer's own mutation of bytes. Weak, because the replay programs are linked without libFuzzer.
extern "C" __attribute__((weak)) std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size,  // NOLINT
                                                              std::size_t largest);

namespace {

void putNumber(std::span<std::uint8_t> bytes, std::uint64_t number) {
  for (std::size_t place = bytes.size(); place-- > 0; number >>= 8) bytes[place] = static_cast<std::uint8_t>(number);
}

// Makes the trailer name the offset table right before it, where the table is after an insertion or a deletion of
// bytes.
void repairTrailer(std::span<std::uint8_t> file) {
  const std::span<std::uint8_t> trailer = file.last(binaryTrailerSize);
  const std::uint64_t offsetSize = trailer[6];
  const std::uint64_t objects = numberIn(trailer.subspan(8, 8));
  const std::uint64_t body = file.size() - binaryTrailerSize - binaryMagic.size();
  if (offsetSize == 0 || objects > body / offsetSize) return;
  putNumber(trailer.subspan(24, 8), file.size() - binaryTrailerSize - objects * offsetSize);
}

// Changes bytes as libFuzzer does, but restores the header and, for three of four seeds, the place of the offset table:
// otherwise few results would pass the first checks.
std::size_t changeBytes(std::uint8_t* data, std::size_t size, std::size_t largest, unsigned seed) {
  size = LLVMFuzzerMutate(data, size, largest);
  if (size < binaryMagic.size() + binaryTrailerSize) return size;
  std::copy(binaryMagic.begin(), binaryMagic.end(), data);
  if (seed % 4 != 0) repairTrailer({data, size});
  return size;
}

// Copies a new file to the fuzzer's buffer. Returns its size, or 0 if it does not fit.
std::size_t copyToFuzzer(std::string file, unsigned seed, std::uint8_t* place, std::size_t largest) {
  tamper(file, seed);
  if (file.size() > largest) return 0;
  std::copy(file.begin(), file.end(), place);
  return file.size();
}

}  // namespace

// Changes the objects of a file for three of four seeds, its bytes otherwise.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,  // NOLINT
                                               unsigned seed) {
  std::optional<BinaryObjects> objects = objectsOf({data, size});
  if (objects && seed % 4 != 0) {
    mutate(*objects, seed, LLVMFuzzerMutate);
    if (const std::size_t changed = copyToFuzzer(fileOf(*objects), seed, data, largest); changed > 0) return changed;
  }
  return changeBytes(data, size, largest, seed / 4);
}

// Joins the objects of two files.
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* one, std::size_t sizeOfOne,  // NOLINT
                                                 const std::uint8_t* other, std::size_t sizeOfOther,
                                                 std::uint8_t* place, std::size_t largest, unsigned seed) {
  std::optional<BinaryObjects> objects = objectsOf({one, sizeOfOne});
  const std::optional<BinaryObjects> more = objectsOf({other, sizeOfOther});
  if (!objects || !more) return 0;
  graft(*objects, *more, seed);
  return copyToFuzzer(fileOf(*objects), seed, place, largest);
}
