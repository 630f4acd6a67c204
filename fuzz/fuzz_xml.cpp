// Fuzzes the reader of XML property lists, including the conversion from other encodings.
#include "fuzz/harness.h"
#include "fuzz/round_trips.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  checkRoundTrips(copyOf(data, size), PropertyListFormat::xml);
  return 0;
}
