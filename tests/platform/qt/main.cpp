// Runs the tests of the Qt layer, with one application for all of them, on a headless display.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  setenv("LC_ALL", "C.UTF-8", 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);  // so that tests do not touch the real session
  const QApplication application(argumentCount, arguments);
  return RUN_ALL_TESTS();
}
