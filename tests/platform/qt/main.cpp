// The tests of what needs an event loop: there is one application for all of them, on a screen that nobody sees.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  setenv("LC_ALL", "C.UTF-8", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);  // the session of whoever runs the tests is not touched
  const QApplication application(argumentCount, arguments);
  return RUN_ALL_TESTS();
}
