// What the updater needs of a toolkit's windows.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/main_loop.h"

// An update that was found, as its window shows it.
struct UpdateNews {
  std::string heading;  // that there is an update
  std::string text;     // which version it is, and which one this is
  std::string notes;    // plain text, whatever it looks like
};

enum class UpdateAnswer { install, remindLater, skip };

// One window at a time: each show function replaces the window that is open, whose handler is not called any more. All
// handlers are called on the main thread, not by these functions themselves, and at most once for each window. A
// handler may call any of these functions. A window that the user closes counts as its harmless answer: remind later,
// cancel, or the only button.
class UpdateWindows {
 public:
  virtual ~UpdateWindows() = default;

  // Shows the notes with the buttons "Skip This Version", "Remind Me Later" and "Install Update", the last of which is
  // the default.
  virtual void showFound(const UpdateNews& news, std::function<void(UpdateAnswer)> answered) = 0;

  // Shows a text over a bar that moves without an end, with the button "Cancel".
  virtual void showProgress(const std::string& text, Work cancelled) = 0;

  // Gives the bar of the open progress window an end. Both counts are bytes; `whole` is positive.
  virtual void setProgress(std::uint64_t done, std::uint64_t whole) = 0;

  // Takes the button of the open progress window away, because what happens now cannot be cancelled.
  virtual void disableCancel() = 0;

  // Shows a message with the button "OK".
  virtual void showMessage(const std::string& heading, const std::string& text, Work closed) = 0;

  // Brings the open window to the front. No-op if there is none.
  virtual void bringToFront() = 0;

  // Closes the open window without calling its handler. No-op if there is none.
  virtual void close() = 0;
};
