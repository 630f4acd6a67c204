// The controls that a program holds on to, over Qt's widgets. They outlive their window, but then nothing comes of what
// they are told, and they answer as a control that was never used.
#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QPointer>
#include <QTimeEdit>
#include <cstddef>

#include "platform/window.h"

// A push button or a check box.
class QtButton : public Button {
 public:
  QtButton(QAbstractButton* button, int tag) : button_(button), tag_(tag) {}
  bool isOn() const override { return button_ && button_->isChecked(); }
  void setOn(bool on) override;
  void setEnabled(bool enabled) override;
  int tag() const override { return tag_; }

 private:
  QPointer<QAbstractButton> button_;
  int tag_;
};

class QtPopUpButton : public PopUpButton {
 public:
  explicit QtPopUpButton(QComboBox* comboBox) : comboBox_(comboBox) {}
  std::size_t selectedIndex() const override;
  // An index that there is not is ignored.
  void select(std::size_t index) override;
  void setEnabled(bool enabled) override;

 private:
  QPointer<QComboBox> comboBox_;
};

// The hours and minutes are those of the system's time zone. Unless its user changes them, the date is the very
// instant that it was set to; otherwise it is on the same day, and the minute has just begun.
class QtDatePicker : public DatePicker {
 public:
  explicit QtDatePicker(QTimeEdit* timeEdit) : timeEdit_(timeEdit) { QtDatePicker::setDateValue({}); }
  Instant dateValue() const override;
  void setDateValue(Instant date) override;
  void setEnabled(bool enabled) override;

 private:
  QPointer<QTimeEdit> timeEdit_;
  Instant date_{};
};
