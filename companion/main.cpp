// The entry point of the command-line companion.
#include <chrono>

#include "companion/companion.h"
#include "platform/platform.h"

int main(int count, char** values) {
  const PlatformScope scope(nativePlatform());
  return runCompanion(argumentsOf(count, values),
                      std::chrono::floor<Instant::duration>(std::chrono::system_clock::now()));
}
