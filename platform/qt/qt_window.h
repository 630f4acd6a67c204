// Windows on Qt's widgets.
#pragma once

#include <QPointer>
#include <QRect>
#include <QSize>
#include <QWidget>
#include <memory>

#include "platform/qt/key_equivalents.h"
#include "platform/window.h"

// A point is a device-independent pixel. If the desktop's text is larger than usual, the window and all frames are
// larger in proportion, as far as the screen allows. Text has the desktop's size, or a smaller one if its frame is too
// small. A label of size 13 has the desktop's size, and other sizes are in proportion. Titles of buttons get mnemonics.
class QtWindow : public Window {
 public:
  explicit QtWindow(const WindowDescription& description);
  // The event loop deletes the widgets later, because an action of one of them may destroy the window.
  ~QtWindow() override;
  QtWindow(const QtWindow&) = delete;
  QtWindow& operator=(const QtWindow&) = delete;

  std::shared_ptr<Button> add(const PushButton& button) override;
  std::shared_ptr<Button> add(const CheckBox& checkBox) override;
  std::shared_ptr<PopUpButton> add(const PopUp& popUp) override;
  std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) override;
  void add(const Label& label) override;
  void add(const Image& image) override;

  // Uses the screen with the pointer.
  void center() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;

  QWidget& widget();

 private:
  class Widget;

  void place(QWidget* control, const Frame& frame);
  void placeControl(QWidget* control, const Frame& frame);
  void chooseScale(QSize size);
  QRect scaled(const QRect& frame) const;
  void startFocus();

  Widget* widget_;
  int height_;
  double scale_ = 1;
  bool wasShown_ = false;  // and the user may have moved the focus since
  Mnemonics mnemonics_;
  QPointer<QWidget> lastControl_;  // in Tab order
};
