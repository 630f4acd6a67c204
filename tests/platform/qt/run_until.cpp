#include "tests/platform/qt/run_until.h"

#include <QCoreApplication>
#include <QTimer>

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  QTimer turn;  // the condition may change without an event of the loop
  turn.start(std::chrono::milliseconds(5));
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  }
  return true;
}
