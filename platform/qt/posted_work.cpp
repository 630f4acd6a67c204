#include "platform/qt/posted_work.h"

#include <QTimer>
#include <utility>

// Uses a timer without delay because clang's analyser reports a queued call as a leak.
void post(QObject& owner, Work work) {
  auto* const timer = new QTimer(&owner);
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, work = std::move(work)]() noexcept {
    timer->deleteLater();
    work();
  });
  timer->start(0);
}
