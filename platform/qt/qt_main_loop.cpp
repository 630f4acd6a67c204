#include "platform/qt/qt_main_loop.h"

#include <QCoreApplication>
#include <utility>

namespace {

class PostedWork : public QEvent {
 public:
  explicit PostedWork(Work work) : QEvent(QEvent::User), work_(std::move(work)) {}
  void run() const { work_(); }

 private:
  Work work_;
};

}  // namespace

Instant QtMainLoop::now() { return std::chrono::system_clock::now(); }

bool QtMainLoop::Worker::event(QEvent* event) noexcept {
  if (event->type() != QEvent::User) return QObject::event(event);
  static_cast<PostedWork*>(event)->run();
  return true;
}

// Qt takes the event over.
void QtMainLoop::post(Work work) { QCoreApplication::postEvent(&worker_, new PostedWork(std::move(work))); }

void QtMainLoop::after(std::chrono::milliseconds delay, Work work) {
  steadyClock_.after(delay, [work = std::move(work)](Timer&) { work(); });
}

std::shared_ptr<Timer> QtMainLoop::timerAt(Instant fireDate, TimerHandler handler) {
  return wallClock_.at(fireDate.time_since_epoch(), std::move(handler));
}

std::shared_ptr<Timer> QtMainLoop::repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) {
  return steadyClock_.every(interval, std::move(handler));
}
