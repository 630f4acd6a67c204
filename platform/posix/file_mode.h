// The bits of a file's mode.
#pragma once

#include <sys/types.h>

// The permission bits, with those for setuid, setgid and sticky.
inline constexpr mode_t permissionBits = 07777;

// Returns the bits of `mode` that `mask` has. On macOS mode_t has 16 bits, so `&` returns an int.
inline mode_t masked(mode_t mode, mode_t mask) { return static_cast<mode_t>(mode & mask); }
