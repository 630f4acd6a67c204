// Hard preconditions of the self-test.
#pragma once

#include <cstdlib>

// Ends the process by a signal, with nothing printed, unless `condition` holds.
inline void require(bool condition) {
  if (!condition) std::abort();
}

// The value of an optional that must have one.
template <class Optional>
auto required(const Optional& optional) {
  require(optional.has_value());
  return *optional;
}
