#include "platform/qt/posted_work.h"

#include <QTimer>
#include <utility>

// A timer without delay rather than a queued call, which the analyser of clang takes for a leak of Qt's.
void post(QObject& owner, Work work) {
  auto* const timer = new QTimer(&owner);
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, work = std::move(work)]() noexcept {
    timer->deleteLater();
    work();
  });
  timer->start(0);
}
