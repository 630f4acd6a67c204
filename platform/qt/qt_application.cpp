#include "platform/qt/qt_application.h"

#include <QEvent>
#include <QWidget>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/installed_bundle.h"
#include "platform/linux/property_list_defaults.h"
#include "platform/linux/replaced_process.h"
#include "platform/linux/session/instance_lock.h"
#include "platform/linux/session/termination_signals.h"
#include "platform/product.h"
#include "platform/qt/application_service.h"
#include "platform/qt/icon_files.h"
#include "platform/qt/posted_work.h"
#include "platform/qt/svg_icon.h"
#include "platform/qt/window_order.h"
#include "values/log_line.h"

namespace {

QString text(std::string_view value) { return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())); }

// The front window stays in front; it comes last, because a minimised one counts as well.
void raiseWindows() {
  QWidgetList windows = visibleWindows();
  if (QWidget* const front = frontWindow()) windows.append(front);
  for (QWidget* const window : windows) orderFront(*window);
}

}  // namespace

QtApplication::QtApplication(QApplication& application, EventLoop& loop) : loop_(loop) {
  QApplication::setApplicationName(text(product::name));  // no display name, which Qt would add to every title
  QApplication::setApplicationVersion(text(product::version));
  QApplication::setDesktopFileName(text(product::bundleIdentifier));
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(svgIcon(applicationIconFile, text(product::bundleIdentifier)));
  application.installEventFilter(&quitFilter_);
}

// The next program finds the name and the lock free.
void QtApplication::run() {
  if (isTerminating_) return;
  runOnce();
  if (isRelaunching_) replaceProcess(runningExecutable());
}

void QtApplication::runOnce() {
  QObject receiver;  // owns the posted work, so that it does not run after the loop
  const TerminationSignals termination(loop_, [this] { terminate(); });
  ApplicationService service(std::string(product::bundleIdentifier),
                             {.reopen = [this] { reopen(); }, .quit = [this] { terminate(); }});
  if (service.instance() == Instance::second) {
    if (!service.openFirst()) logLine(std::cerr, "quillery: it is running already, and does not reply");
    return;
  }
  std::optional<InstanceLock> lock;
  if (service.instance() == Instance::unknown && !lock.emplace(configurationFolder()).isOurs()) {
    logLine(std::cerr, "quillery: it is running already");
    return;
  }
  post(receiver, [this] {
    if (const auto delegate = delegate_.lock()) delegate->applicationDidFinishLaunching();
  });
  QApplication::exec();
}

void QtApplication::terminate() {
  if (isAsking_ || isTerminating_) return;
  isAsking_ = true;
  const auto delegate = delegate_.lock();
  const bool isAllowed = !delegate || delegate->applicationShouldTerminate();
  isAsking_ = false;
  if (!isAllowed) return;
  isTerminating_ = true;
  QApplication::exit();  // not quit, which a window that cannot be closed refuses
}

bool QtApplication::relaunch() {
  terminate();
  isRelaunching_ = isTerminating_;
  return isRelaunching_;
}

void QtApplication::reopen() {
  const auto delegate = delegate_.lock();
  const bool mayRaise = !delegate || delegate->applicationShouldHandleReopen(!visibleWindows().isEmpty());
  if (mayRaise) raiseWindows();
  if (reopened_) reopened_();
}

bool QtApplication::QuitFilter::eventFilter(QObject* object, QEvent* event) {
  if (object != QCoreApplication::instance() || event->type() != QEvent::Quit) return false;
  owner_.terminate();
  event->setAccepted(owner_.isTerminating());
  return true;
}
