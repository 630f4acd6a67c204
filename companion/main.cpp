// The entry point of the command-line companion.
#include <cstdlib>
#include <exception>

#include "companion/companion.h"
#include "platform/platform.h"

int main(int count, char** values) {
  try {
    const PlatformScope scope(nativePlatform());
    return runCompanion(argumentsOf(count, values), systemTime());
  } catch (const std::exception& error) {  // before anything was done, because memory has run out
    complain(error.what());
    return EXIT_FAILURE;
  }
}
