// The program's entry point.
#include <iostream>

#include "app/entry.h"
#include "platform/platform.h"
#include "values/log_line.h"

int main(int count, char** values) {
  const PlatformScope scope(nativePlatform());
  try {
    return runQuillery(argumentsOf(count, values), nativeDesktopPlatform);
  } catch (const Error& error) {
    logLine(std::cerr, "quillery: " + error.description());
    return 1;
  }
}
