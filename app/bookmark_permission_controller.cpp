#include "app/bookmark_permission_controller.h"

#include <array>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "app/bring_to_front.h"
#include "app/weak_action.h"
#include "engine/bookmark_file.h"
#include "platform/platform.h"
#include "schedule/schedule_settings.h"
#include "values/log_line.h"

namespace {

struct DialogButton {
  const char* title;
  void (BookmarkPermissionController::*command)();
  KeyEquivalent key;
};

constexpr std::array<DialogButton, 3> dialogButtons = {{
    {"Cancel", &BookmarkPermissionController::cancel, KeyEquivalent::escape},
    {"Retry", &BookmarkPermissionController::retry, KeyEquivalent::none},
    {"Open Settings", &BookmarkPermissionController::settings, KeyEquivalent::returnKey},
}};

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

const std::shared_ptr<BookmarkPermissionController>& BookmarkPermissionController::shared() {
  // Never destroyed: its window must not outlive the screen at the end of the process.
  static const auto* const controller = new auto(std::make_shared<BookmarkPermissionController>());
  return *controller;
}

bool BookmarkPermissionController::canRead() const { return readableBookmarks().has_value(); }

void BookmarkPermissionController::check(Completion told) {
  if (canRead()) {
    storeAccessGranted();
    if (dialog) finish(true);
    told(true);
  } else if (dialog) {
    dialog->makeKeyAndOrderFront();
  } else {
    completion = std::move(told);
    showDialog();
  }
}

void BookmarkPermissionController::finish(bool isGranted) {
  if (isGranted) storeAccessGranted();
  if (timer) timer->invalidate();
  timer = nullptr;
  if (dialog) dialog->orderOut();
  dialog = nullptr;
  if (const Completion told = std::exchange(completion, nullptr)) told(isGranted);
}

void BookmarkPermissionController::settings() {
  Workspace& workspace = desktop().workspace;
  if (const std::optional<std::string> settings = workspace.fileAccessSettings()) {
    workspace.revealFile(platform().bundle.path());
    workspace.openAddress(*settings);
  } else {
    workspace.openFolder(folderOf(bookmarkFile()));
  }
}

void BookmarkPermissionController::retry() {
  if (canRead()) finish(true);
}

void BookmarkPermissionController::cancel() { finish(false); }

// Where no system settings help, the path does, for which the window's text has no place.
void BookmarkPermissionController::showDialog() {
  if (!desktop().workspace.fileAccessSettings())
    logLine(std::cerr, "quillery: the bookmark file couldn’t be read: " + bookmarkFile());
  dialog = desktop().screen.makeWindow({.width = 480, .height = 330, .title = "Quillery"});
  dialog->add(Image{{208, 238, 64, 64}, platform().bundle.iconPath()});
  dialog->add(Label{.frame = {24, 197, 432, 29},
                    .text = "Allow access to Safari bookmarks",
                    .fontSize = 19,
                    .isBold = true,
                    .isCentered = true,
                    .wraps = false});
  dialog->add(Label{.frame = {32, 78, 416, 109},
                    .text =
                        "Enable Quillery in System Settings → Privacy & Security → Full Disk Access.\n\nThis window "
                        "closes when access is available. If macOS requests Quit & Reopen, allow it.",
                    .fontSize = 14,
                    .isCentered = true});
  int x = 24;
  for (const DialogButton& button : dialogButtons) {
    dialog->add(PushButton{{x, 24, 140, 34}, button.title, weakAction(weak_from_this(), button.command), button.key});
    x += 146;
  }
  dialog->center();
  bringToFront(*dialog);
  timer = desktop().mainLoop.repeatingTimer(accessPollInterval, [weak = weak_from_this()](Timer&) {
    if (const auto self = weak.lock()) self->retry();
  });
}
