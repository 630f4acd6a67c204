// The updater's windows on Qt's dialogs.
#pragma once

#include <QPointer>
#include <QProgressBar>
#include <memory>
#include <string>

#include "platform/linux/updates/update_windows.h"
#include "platform/qt/text_dialog.h"

// Shows all texts verbatim, with the characters that would hide or reorder others as escapes (see harmlessText). A new
// window comes to the front of the program's windows, but behind an open alert, which keeps the user from answering
// other windows.
class QtUpdateWindows : public UpdateWindows {
 public:
  QtUpdateWindows() = default;
  ~QtUpdateWindows() override { QtUpdateWindows::close(); }
  QtUpdateWindows(const QtUpdateWindows&) = delete;
  QtUpdateWindows& operator=(const QtUpdateWindows&) = delete;

  void showFound(const UpdateNews& news, std::function<void(UpdateAnswer)> answered) override;
  void showProgress(const std::string& text, Work cancelled) override;
  void setProgress(std::uint64_t done, std::uint64_t whole) override;
  void disableCancel() override;
  void showMessage(const std::string& heading, const std::string& text, Work closed) override;
  void bringToFront() override;
  void close() override;

 private:
  TextDialog& open(const std::string& heading, const std::string& text);
  QPushButton& addButton(const std::string& title, KeyEquivalent key, Work pressed);

  TextDialog* dialog_ = nullptr;
  QPointer<QProgressBar> bar_;
  QPointer<QPushButton> cancel_;
};
