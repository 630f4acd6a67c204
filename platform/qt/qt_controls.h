// The program's handles for Qt's widgets. They may outlive their window: then setters are no-ops, and getters return
// the values of an unused control.
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
  void setAccessibilityLabel(const std::string& label) override;
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
  void setAccessibilityLabel(const std::string& label) override;
  std::size_t selectedIndex() const override;
  // Ignores an index that is out of range.
  void select(std::size_t index) override;
  void setEnabled(bool enabled) override;

 private:
  QPointer<QComboBox> comboBox_;
};

// Shows hours and minutes in the system's time zone. `dateValue` returns exactly the date that was set until the user
// changes the time; then the start of the chosen minute on the same day.
class QtDatePicker : public DatePicker {
 public:
  explicit QtDatePicker(QTimeEdit* timeEdit) : timeEdit_(timeEdit) { QtDatePicker::setDateValue({}); }
  void setAccessibilityLabel(const std::string& label) override;
  Instant dateValue() const override;
  void setDateValue(Instant date) override;
  void setEnabled(bool enabled) override;

 private:
  QPointer<QTimeEdit> timeEdit_;
  Instant date_{};
};
