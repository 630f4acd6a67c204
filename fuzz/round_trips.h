// What must hold of every property list that can be read, whatever format it was in.
#pragma once

#include <cstddef>
#include <cstdint>

#include "values/bytes.h"
#include "platform/property_lists.h"

// A copy of what the fuzzer gives, which is gone when the harness returns.
Bytes copyOf(const std::uint8_t* data, std::size_t size);

// Parses `bytes`, which must answer a value or throw Error with few and harmless words, and checks the value if they
// are in `format`. Aborts, with a line on standard error that says which property failed, unless
// - the same bytes are the same value again;
// - it comes back equal from the binary format, as it is and as part of another value;
// - so it does from XML, if XML can hold it exactly; else it comes back as a value with the same XML text;
// - as a bookmark tree it can be sorted, the same holds of the result, and sorting that again answers the very same
//   value.
void checkRoundTrips(const Bytes& bytes, PropertyListFormat format);
