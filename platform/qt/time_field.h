// A field for a time of day.
#pragma once

#include <QEvent>
#include <QKeyEvent>
#include <QTimeEdit>

// Shows hours and minutes as the user's locale does. A click selects the hour or the minute, as Qt does for the
// keyboard only: without a selection, Qt ignores digits typed after two others. With a 12-hour clock, the first letter
// of either half of the day chooses that half: Qt waits for the second letter, and meanwhile shows one half and means
// the other.
class TimeField : public QTimeEdit {
 public:
  explicit TimeField(QWidget* parent);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool chooseHalf(const QString& typed);
};
