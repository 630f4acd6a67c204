// Runs the tests of the session layer, which link no toolkit.
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  setenv("LC_ALL", "C.UTF-8", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);  // so that tests do not touch the real session
  return RUN_ALL_TESTS();
}
