#include "tests/platform/qt/dialog_driver.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <memory>

void withNextDialog(std::function<void(QDialog&)> work) {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + std::chrono::seconds(20);
  const QPointer<QWidget> present(QApplication::activeModalWidget());
  auto* const look = new QTimer(QCoreApplication::instance());
  QObject::connect(look, &QTimer::timeout, look, [=, work = std::move(work)] {
    QWidget* const modal = QApplication::activeModalWidget();
    auto* const dialog = modal == present ? nullptr : qobject_cast<QDialog*>(modal);
    if (dialog == nullptr && steady_clock::now() < end) return;
    look->stop();
    look->deleteLater();
    if (dialog != nullptr) return work(*dialog);
    ADD_FAILURE() << "no dialog appeared";
    QApplication::exit(1);
  });
  look->start(std::chrono::milliseconds(2));
}
