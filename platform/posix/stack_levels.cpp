#include "platform/posix/stack_levels.h"

#include <sys/resource.h>

#include <algorithm>

#include "values/plist_document.h"

unsigned stackLevels() {
  // Twice what the deepest recursion takes, and what the rest of a program takes.
  constexpr rlim_t bytesPerLevel = 640;
  constexpr rlim_t reserve = rlim_t{48} << 10;
  struct rlimit stack {};
  if (getrlimit(RLIMIT_STACK, &stack) != 0 || stack.rlim_cur == RLIM_INFINITY) return plistMaximumDepth;
  const rlim_t usable = stack.rlim_cur - std::min(stack.rlim_cur, reserve);
  return static_cast<unsigned>(std::min<rlim_t>(usable / bytesPerLevel, plistMaximumDepth));
}
