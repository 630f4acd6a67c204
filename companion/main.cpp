// The entry point of the command-line companion.
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "companion/companion.h"
#include "platform/platform.h"

int main(int count, char** values) {
  try {
    const PlatformScope scope(nativePlatform());
    return runCompanion(argumentsOf(count, values),
                        std::chrono::floor<Instant::duration>(std::chrono::system_clock::now()));
  } catch (const std::exception& error) {  // before anything was done, because memory has run out
    std::cerr << "quilleryctl: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
