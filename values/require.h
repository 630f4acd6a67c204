// Preconditions of the self-test.
#pragma once

#include <cstdlib>

// Aborts the process, without printing anything, unless `condition` holds.
inline void require(bool condition) {
  if (!condition) std::abort();
}

// Returns the value of an optional, which must have one.
template <class Optional>
auto required(const Optional& optional) {
  require(optional.has_value());
  return *optional;
}
