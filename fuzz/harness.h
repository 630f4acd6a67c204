// The entry point of a fuzz harness, as libFuzzer calls it.
#pragma once

#include <cstddef>
#include <cstdint>

// Tests one input and returns 0. Aborts if a property does not hold.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);  // NOLINT: libFuzzer's name
