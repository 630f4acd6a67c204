// The process as an application of the desktop.
#pragma once

#include <QApplication>
#include <QObject>
#include <functional>
#include <memory>

#include "platform/application.h"

class QtApplication : public Application {
 public:
  // Names Qt's application and gives it the program's icon. It must outlive this one, and there is one of these at a
  // time.
  explicit QtApplication(QApplication& application);
  QtApplication(const QtApplication&) = delete;
  QtApplication& operator=(const QtApplication&) = delete;

  void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) override { delegate_ = delegate; }

  // What else the platform does when the application is opened though it runs, after the delegate was told.
  void setReopened(std::function<void()> reopened) { reopened_ = std::move(reopened); }

  // While it runs, the application has its identifier as its name on the session bus, where it can be opened once more
  // and told to quit (ApplicationService), and SIGTERM and SIGINT terminate it. If the delegate allows it, opening it
  // raises its windows. Returns at once if it was terminated before.
  void run() override;

  // All nested loops end, too: those of dialogs and menus return as if nothing had been chosen. While the delegate is
  // being asked, it is not asked again.
  void terminate() override;

  // Whether the loop is ending or has ended. No dialog may be shown any more: its own loop would not run.
  bool isTerminating() const { return isTerminating_; }

 private:
  // Requests of the desktop to quit, which Qt would otherwise handle by itself.
  class QuitFilter : public QObject {
   public:
    explicit QuitFilter(QtApplication& owner) : owner_(owner) {}
    bool eventFilter(QObject* object, QEvent* event) override;

   private:
    QtApplication& owner_;
  };

  void reopen();

  std::weak_ptr<ApplicationDelegate> delegate_;
  std::function<void()> reopened_;
  bool isAsking_ = false;
  bool isTerminating_ = false;
  QuitFilter quitFilter_{*this};
};
