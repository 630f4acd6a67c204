// A window of Qt's widgets.
#pragma once

#include <QAbstractButton>
#include <QPointer>
#include <QWidget>
#include <memory>

#include "platform/window.h"

// A point is a pixel before the screen's scale. Text is as large as the desktop writes, or smaller where its frame has
// no room for that; a label of size 13 is as large as the desktop's text, and others are in proportion.
class QtWindow : public Window {
 public:
  explicit QtWindow(const WindowDescription& description);
  // The widgets go by the event loop: an action that runs in one of them may give up the window.
  ~QtWindow() override;
  QtWindow(const QtWindow&) = delete;
  QtWindow& operator=(const QtWindow&) = delete;

  std::shared_ptr<Button> add(const PushButton& button) override;
  std::shared_ptr<Button> add(const CheckBox& checkBox) override;
  std::shared_ptr<PopUpButton> add(const PopUp& popUp) override;
  std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) override;
  void add(const Label& label) override;
  void add(const Image& image) override;

  // In the middle of the screen that the pointer is on.
  void center() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;

  QWidget& widget();

 private:
  class Widget;

  void place(QWidget* control, const Frame& frame);
  void placeControl(QWidget* control, const Frame& frame);
  void press(QAbstractButton* button, KeyEquivalent key);

  Widget* widget_;
  QPointer<QWidget> lastControl_;  // in the order of Tab
};
