// Checks whether Safari's bookmarks can be read and, if not, leads the user to the setting that allows it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/window.h"

// How often the bookmark file is read while the access window is open.
inline constexpr std::chrono::seconds accessPollInterval{1};

// Either idle, or waiting with its window open. The three members are set together and cleared together.
class BookmarkPermissionController : public std::enable_shared_from_this<BookmarkPermissionController> {
 public:
  // Called with true if access is granted.
  using Completion = std::function<void(bool isGranted)>;

  // The only instance, made on first use.
  static const std::shared_ptr<BookmarkPermissionController>& shared();

  // Returns true if the bookmark file can be read now; reads it.
  bool canRead() const;

  // Ensures access. With access, stores that, finishes a wait if there is one, and calls `completion` before it
  // returns. Without access, opens the access window and calls `completion` once access is granted or the user cancels.
  // If the window is open already, only brings it to the front and never calls this `completion`: only the caller that
  // opened the window learns the outcome.
  void check(Completion completion);

  // Closes the window and calls the completion of a wait, if there is one. Stores that access is granted in any case.
  void finish(bool isGranted);

  // The buttons. `settings` reveals the program in the file manager, so that the user can drag it into the list, and
  // opens the list in System Settings; where there is no such list, it opens the folder of the bookmark file. `retry`
  // reads the file again; `cancel` finishes without access.
  void settings();
  void retry();
  void cancel();

  std::shared_ptr<Window> dialog;
  std::shared_ptr<Timer> timer;
  Completion completion;

 private:
  void showDialog();
};
