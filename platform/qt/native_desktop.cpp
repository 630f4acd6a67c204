// The platform of a Linux desktop, on Qt.
#include <QApplication>
#include <array>
#include <cstdlib>

#include "platform/linux/session/package_updater.h"
#include "platform/linux/session/session_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "platform/platform.h"
#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_screen.h"
#include "platform/qt/qt_user_interface.h"

namespace {

// Without a screen, Qt would abort the process.
void requireScreen() {
  for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"})
    if (std::getenv(variable) != nullptr) return;
  throw Error("Desktop", 1, "There is no desktop to run on: neither DISPLAY nor WAYLAND_DISPLAY is set.");
}

class NativeDesktop {
 public:
  explicit NativeDesktop(const Platform& screenless)
      : updater_(screenless.userDefaults),
        platform_{screenless.propertyLists,
                  screenless.fileSystem,
                  screenless.runningApplications,
                  screenless.calendars,
                  screenless.collation,
                  userInterface_,
                  screenless.bundle,
                  screenless.processes,
                  screenless.userDefaults,
                  &desktop_} {
    // Without a tray, the user reaches the menu by opening the program again.
    application_.setReopened([this] {
      if (screen_.isWithoutTray()) screen_.popUpMenu();
    });
  }

  const Platform& platform() const { return platform_; }

 private:
  int argumentCount_ = 1;
  std::array<char, 9> name_{"quillery"};
  std::array<char*, 2> arguments_{name_.data(), nullptr};
  QApplication qt_{argumentCount_, arguments_.data()};
  QtEventLoop eventLoop_;
  QtApplication application_{qt_, eventLoop_};
  SessionMainLoop mainLoop_{eventLoop_};
  SessionWorkspace workspace_{eventLoop_};
  QtScreen screen_{eventLoop_};
  QtUserInterface userInterface_{application_};
  PackageUpdater updater_;
  const Desktop desktop_{application_, mainLoop_, workspace_, screen_, updater_};
  const Platform platform_;
};

}  // namespace

const Platform& nativeDesktopPlatform() {
  requireScreen();
  // Never destroyed, because Qt's own statics would be destroyed before it.
  static const auto* const desktop = new NativeDesktop(nativePlatform());
  return desktop->platform();
}
