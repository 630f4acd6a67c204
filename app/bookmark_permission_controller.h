// Finds out whether Safari's bookmarks can be read and, while they cannot, leads the user to the setting that allows
// it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/window.h"

// How often the file is tried while the access window is open.
inline constexpr std::chrono::seconds accessPollInterval{1};

// Idle, or waiting with its window open. The three members are set together and cleared together.
class BookmarkPermissionController : public std::enable_shared_from_this<BookmarkPermissionController> {
 public:
  // Told whether there is access.
  using Completion = std::function<void(bool isGranted)>;

  // The one of this process, made on first use.
  static const std::shared_ptr<BookmarkPermissionController>& shared();

  // Whether the bookmark file can be read now, by reading it.
  bool canRead() const;

  // Makes sure of access. If it is there, notes that, ends a wait that is going on, and calls `completion` before it
  // returns. Else opens the access window and calls `completion` when access has come, or the user has cancelled. While
  // the window is open already it only comes to the front, and this `completion` is never called: whoever opened it
  // is told.
  void check(Completion completion);

  // Ends a wait, if one goes on, and tells whoever began it. Access that is granted is noted in any case.
  void finish(bool isGranted);

  // The buttons: shows the program in the file manager, so that it can be dragged into the list, and opens the list;
  // tries the file; gives up.
  void settings();
  void retry();
  void cancel();

  std::shared_ptr<Window> dialog;
  std::shared_ptr<Timer> timer;
  Completion completion;

 private:
  void showDialog();
};
