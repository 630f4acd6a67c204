// Standard input as a file.
#pragma once

#include <cstddef>

#include "values/bytes.h"

// Reads standard input to its end. Throws Error if that fails, or if there are more than `most` bytes: an endless pipe
// would take all memory.
Bytes standardInput(std::size_t most = std::size_t{1} << 30);
