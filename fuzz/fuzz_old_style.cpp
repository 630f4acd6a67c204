// Fuzzes the reader of old-style ASCII property lists, including the conversion from other encodings.
#include "fuzz/harness.h"
#include "fuzz/round_trips.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  checkRoundTrips(copyOf(data, size), PropertyListFormat::oldStyle);
  return 0;
}
