// Properties that must hold for every property list that can be read, in any format.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/property_lists.h"
#include "values/bytes.h"

// Copies an input of the fuzzer, which is only valid until the harness returns.
Bytes copyOf(const std::uint8_t* data, std::size_t size);

// Parses `bytes` and checks the value if they are in `format`. Aborts, after a line on standard error with the failed
// property, unless
// - parsing returns a value or throws an Error with a short and harmless description;
// - parsing the same bytes again returns an equal value;
// - the value is equal after a round trip through the binary format, alone and inside another value;
// - the value is equal after a round trip through XML, if XML can represent it exactly; otherwise the XML text is
// equal;
// - a dictionary can be sorted as a bookmark tree, the same properties hold for the result, and sorting the result
//   returns the identical value.
void checkRoundTrips(const Bytes& bytes, PropertyListFormat format);
