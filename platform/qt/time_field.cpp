#include "platform/qt/time_field.h"

#include <QLineEdit>
#include <QLocale>

namespace {

// Returns the time format of the user's locale, without seconds.
QString timeFormat() {
  const QString format = QLocale().timeFormat(QLocale::ShortFormat);
  return format.contains('s') ? "HH:mm" : format;
}

bool beginsWith(const QString& text, const QString& typed) { return text.startsWith(typed, Qt::CaseInsensitive); }

}  // namespace

TimeField::TimeField(QWidget* parent) : QTimeEdit(parent) {
  lineEdit()->installEventFilter(this);
  setDisplayFormat(timeFormat());
  setWrapping(true);
}

bool TimeField::eventFilter(QObject* object, QEvent* event) {
  if (object == lineEdit() && event->type() == QEvent::MouseButtonRelease) setSelectedSection(currentSection());
  return QTimeEdit::eventFilter(object, event);
}

void TimeField::keyPressEvent(QKeyEvent* event) {
  const bool isLetter = event->text().size() == 1 && event->text().front().isLetter();
  if (!isLetter || !chooseHalf(event->text())) QTimeEdit::keyPressEvent(event);
}

// Returns true if that is all that the letter does. Some languages name both halves with the same first letter.
bool TimeField::chooseHalf(const QString& typed) {
  const QString morning = locale().amText();
  const QString evening = locale().pmText();
  if (!displayedSections().testFlag(AmPmSection) || beginsWith(morning, evening.left(1))) return false;
  const bool isEvening = beginsWith(evening, typed);
  if (isEvening || beginsWith(morning, typed)) {
    interpretText();
    constexpr int halfDay = 12;  // hours
    setTime({time().hour() % halfDay + (isEvening ? halfDay : 0), time().minute()});
    setSelectedSection(AmPmSection);
  }
  return true;  // the rest of the word changes nothing
}
