// Qt's event loop for the session layer.
#pragma once

#include <QEvent>
#include <QObject>
#include <memory>

#include "platform/linux/session/event_loop.h"

// Does not run the loop: the application does, and so do the nested loops of dialogs and menus. A QCoreApplication must
// exist as long as this. An exception that leaves a handler or work ends the process.
class QtEventLoop : public EventLoop {
 public:
  std::unique_ptr<DescriptorWatch> watch(int descriptor, Readiness readiness, Work handler) override;
  void post(Work work) override;

 private:
  // Receives posted work. Qt drops the work when the receiver is destroyed.
  class Worker : public QObject {
   public:
    bool event(QEvent* event) noexcept override;
  };

  Worker worker_;
};
