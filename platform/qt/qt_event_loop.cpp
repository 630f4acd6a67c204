#include "platform/qt/qt_event_loop.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <utility>

namespace {

class PostedWork : public QEvent {
 public:
  explicit PostedWork(Work work) : QEvent(QEvent::User), work_(std::move(work)) {}
  void run() const { work_(); }

 private:
  Work work_;
};

class QtDescriptorWatch : public DescriptorWatch {
 public:
  QtDescriptorWatch(int descriptor, QSocketNotifier::Type type, Work handler) : notifier_(descriptor, type) {
    // Qt keeps the connected function while it runs, even if the function destroys the notifier.
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [handler = std::move(handler)]() noexcept { handler(); });
  }
  void setEnabled(bool enabled) override { notifier_.setEnabled(enabled); }

 private:
  QSocketNotifier notifier_;
};

}  // namespace

std::unique_ptr<DescriptorWatch> QtEventLoop::watch(int descriptor, Readiness readiness, Work handler) {
  const auto type = readiness == Readiness::readable ? QSocketNotifier::Read : QSocketNotifier::Write;
  return std::make_unique<QtDescriptorWatch>(descriptor, type, std::move(handler));
}

// Qt owns a posted event.
void QtEventLoop::post(Work work) { QCoreApplication::postEvent(&worker_, new PostedWork(std::move(work))); }

bool QtEventLoop::Worker::event(QEvent* event) noexcept {
  if (event->type() != QEvent::User) return QObject::event(event);
  static_cast<PostedWork*>(event)->run();
  return true;
}
