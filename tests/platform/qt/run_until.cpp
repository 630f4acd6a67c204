#include "tests/platform/qt/run_until.h"

#include <QCoreApplication>
#include <QTimer>

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  QTimer turn;  // what is waited for may be none of the loop's own events
  turn.start(std::chrono::milliseconds(5));
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  }
  return true;
}
