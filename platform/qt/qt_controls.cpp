#include "platform/qt/qt_controls.h"

#include <QDateTime>
#include <QLabel>
#include <QSignalBlocker>
#include <algorithm>
#include <chrono>

namespace {

QDateTime localDateTime(Instant instant) {
  const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(instant).time_since_epoch();
  return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::LocalTime);
}

QTime minuteOf(const QTime& time) { return {time.hour(), time.minute()}; }

void name(QWidget* widget, const std::string& label) {
  if (widget != nullptr) widget->setAccessibleName(QString::fromStdString(label));
}

}  // namespace

void QtButton::setAccessibilityLabel(const std::string& label) { name(button_, label); }

void QtButton::setOn(bool on) {
  if (!button_) return;
  const QSignalBlocker isNotTheUsersChange(button_);
  button_->setChecked(on);
}

void QtButton::setEnabled(bool enabled) {
  if (button_) button_->setEnabled(enabled);
}

// On Linux, Qt gives screen readers the selected item as the name, and the name as that of a label beside it.
void QtPopUpButton::setAccessibilityLabel(const std::string& label) {
  if (!comboBox_) return;
  auto* const beside = new QLabel(QString::fromStdString(label), comboBox_->parentWidget());
  beside->setBuddy(comboBox_);
  beside->hide();
}

std::size_t QtPopUpButton::selectedIndex() const {
  return comboBox_ ? static_cast<std::size_t>(std::max(comboBox_->currentIndex(), 0)) : 0;
}

void QtPopUpButton::select(std::size_t index) {
  if (comboBox_ && index < static_cast<std::size_t>(comboBox_->count()))
    comboBox_->setCurrentIndex(static_cast<int>(index));
}

void QtPopUpButton::setEnabled(bool enabled) {
  if (comboBox_) comboBox_->setEnabled(enabled);
}

void QtDatePicker::setAccessibilityLabel(const std::string& label) { name(timeEdit_, label); }

Instant QtDatePicker::dateValue() const {
  if (timeEdit_) timeEdit_->interpretText();  // which may have been typed, but not left
  QDateTime dateTime = localDateTime(date_);
  if (!timeEdit_ || minuteOf(timeEdit_->time()) == minuteOf(dateTime.time())) return date_;
  dateTime.setTime(minuteOf(timeEdit_->time()));
  return Instant(std::chrono::milliseconds(dateTime.toMSecsSinceEpoch()));
}

void QtDatePicker::setDateValue(Instant date) {
  date_ = date;
  if (timeEdit_) timeEdit_->setTime(minuteOf(localDateTime(date).time()));
}

void QtDatePicker::setEnabled(bool enabled) {
  if (timeEdit_) timeEdit_->setEnabled(enabled);
}
