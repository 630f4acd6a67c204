// The process as an application of the desktop.
#pragma once

#include <QApplication>
#include <QObject>
#include <functional>
#include <memory>

#include "platform/application.h"
#include "platform/linux/session/event_loop.h"

class QtApplication : public Application {
 public:
  // Gives Qt's application the program's name and icon. Both parameters must outlive this. Only one may live at a time.
  QtApplication(QApplication& application, EventLoop& loop);
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) override { delegate_ = delegate; }

  // Sets what the platform does, after the delegate, when the user opens the running application again.
  void setReopened(std::function<void()> reopened) { reopened_ = std::move(reopened); }

  // While it runs, the application owns its identifier as a name on the session bus, where it can be opened again and
  // asked to quit (ApplicationService), and SIGTERM and SIGINT terminate it. Opening it again raises its windows if the
  // delegate allows that. Returns at once if the application was terminated before. If another process has the name, or
  // without a bus the InstanceLock, opens that instance instead, as far as it can be reached, and returns.
  void run() override;

  // Also ends nested loops: dialogs and menus return as if nothing had been chosen. A call while the delegate decides
  // is a no-op.
  void terminate() override;

  // Terminates, and makes run() replace the process by the program that is then at its path, as after an update.
  // Returns false if the delegate refuses to terminate.
  bool relaunch();

  // Returns true if the loop is ending or has ended. No dialog may be shown then, because its loop would not run.
  bool isTerminating() const { return isTerminating_; }

 private:
  // Intercepts requests of the desktop to quit, which Qt would handle itself.
  class QuitFilter : public QObject {
   public:
    explicit QuitFilter(QtApplication& owner) : owner_(owner) {}
    bool eventFilter(QObject* object, QEvent* event) override;

   private:
    QtApplication& owner_;
  };

  void runOnce();
  void reopen();

  EventLoop& loop_;
  std::weak_ptr<ApplicationDelegate> delegate_;
  std::function<void()> reopened_;
  bool isAsking_ = false;
  bool isTerminating_ = false;
  bool isRelaunching_ = false;
  QuitFilter quitFilter_{*this};
};
