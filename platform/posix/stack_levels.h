// How deeply property lists may be nested on this process's stack.
#pragma once

// Returns the most levels of nested arrays and dictionaries that all recursive functions can handle: plistMaximumDepth,
// or fewer if the limit of the stack (RLIMIT_STACK) is less than 384 KB.
unsigned stackLevels();
