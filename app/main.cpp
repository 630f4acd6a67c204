// The program's entry point.
#include <iostream>

#include "app/entry.h"
#include "platform/platform.h"

int main(int count, char** values) {
  const PlatformScope scope(nativePlatform());
  try {
    return runQuillery(argumentsOf(count, values), nativeDesktopPlatform);
  } catch (const Error& error) {
    std::cerr << "quillery: " << error.description() << '\n';
    return 1;
  }
}
