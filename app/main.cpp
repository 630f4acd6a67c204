// The program's entry point.
#include <iostream>

#include "app/alert.h"
#include "app/arguments.h"
#include "app/self_test.h"
#include "platform/platform.h"

int main(int count, char** values) {
  const PlatformScope scope(nativePlatform());
  automatic = false;
  const Arguments arguments = argumentsOf(count, values);
  if (contains(arguments, "--self-test")) {
    runSelfTest();
    return 0;
  }
  std::cerr << "quillery: the menu-bar program is not built yet; run quillery --self-test, or quilleryctl\n";
  return 1;
}
