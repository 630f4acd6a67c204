// The platform of a Linux desktop, on Qt.
#include <unistd.h>

#include <QApplication>
#include <array>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/collation_locale.h"
#include "platform/linux/session/session_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "platform/linux/updates/private_file.h"
#include "platform/linux/updates/system_packages.h"
#include "platform/linux/updates/update_controller.h"
#include "platform/platform.h"
#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_network.h"
#include "platform/qt/qt_screen.h"
#include "platform/qt/qt_update_windows.h"
#include "platform/qt/qt_user_interface.h"
#include "values/harmless_text.h"
#include "values/log_line.h"

namespace {

constexpr std::array displayVariables = {"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"};

void requireScreen() {
  for (const char* variable : displayVariables)
    if (std::getenv(variable) != nullptr) return;
  throw Error("Desktop", 1, "There is no desktop to run on: neither DISPLAY nor WAYLAND_DISPLAY is set.");
}

// If Qt cannot reach the display, it aborts the process with a page of text. This ends it with one line instead.
[[noreturn]] void endWithoutDisplay() {
  std::string known;
  for (const char* variable : displayVariables)
    if (const char* value = std::getenv(variable); value != nullptr)
      known += std::string(known.empty() ? "" : ", ") + variable + " is “" + harmlessLine(value) + "”";
  logLine(std::cerr, "quillery: The display couldn’t be reached (" + known + ").");
  _exit(EXIT_FAILURE);
}

// Messages while Qt connects to the display. If it fails, the last one is fatal, and the others say the same.
std::vector<std::pair<QtMsgType, QString>>& messagesOfQt() {
  static std::vector<std::pair<QtMsgType, QString>> messages;
  return messages;
}

void keepMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  if (type == QtFatalMsg) endWithoutDisplay();
  messagesOfQt().emplace_back(type, text);
}

std::unique_ptr<QApplication> connectedApplication(int& argumentCount, char** arguments) {
  const QtMessageHandler usual = qInstallMessageHandler(keepMessage);
  auto application = std::make_unique<QApplication>(argumentCount, arguments);
  qInstallMessageHandler(usual);
  for (const auto& [type, text] : std::exchange(messagesOfQt(), {})) qt_message_output(type, {}, text);
  return application;
}

class NativeDesktop {
 public:
  explicit NativeDesktop(const Platform& screenless)
      : packages_(eventLoop_, screenless.bundle.executablePath()),
        updater_({.loop = mainLoop_,
                  .userDefaults = screenless.userDefaults,
                  .network = network_,
                  .windows = updateWindows_,
                  .packages = packages_,
                  .source = updateSource(),
                  .system = runningSystem(),
                  .ownVersion = screenless.bundle.information("CFBundleShortVersionString").value_or(""),
                  .downloadFolder = cacheFolder(),
                  .relaunch = [this] { return application_.relaunch(); }}),
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
  std::unique_ptr<QApplication> qt_ = connectedApplication(argumentCount_, arguments_.data());
  QtEventLoop eventLoop_;
  QtApplication application_{*qt_, eventLoop_};
  SessionMainLoop mainLoop_{eventLoop_};
  SessionWorkspace workspace_{eventLoop_};
  QtScreen screen_{eventLoop_};
  QtUserInterface userInterface_{application_};
  QtNetwork network_;
  QtUpdateWindows updateWindows_;
  SystemPackages packages_;
  LinuxUpdater updater_;
  const Desktop desktop_{application_, mainLoop_, workspace_, screen_, updater_};
  const Platform platform_;
};

}  // namespace

const Platform& nativeDesktopPlatform() {
  requireScreen();
  rememberCollationLocale(nativePlatform().userDefaults);
  // Never destroyed, because Qt's own statics would be destroyed before it.
  static const auto* const desktop = new NativeDesktop(nativePlatform());
  return desktop->platform();
}
