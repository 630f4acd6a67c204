#include "platform/qt/key_equivalents.h"

#include <QShortcut>

#include "platform/qt/interface_text.h"

namespace {

QList<QKeySequence> keySequences(KeyEquivalent key) {
  if (key == KeyEquivalent::none) return {};
  if (key == KeyEquivalent::escape) return {Qt::Key_Escape};
  return {Qt::Key_Return, Qt::Key_Enter};
}

}  // namespace

// A shortcut comes before the focused control. That of the button itself would let the key through to the control while
// the button is disabled.
void pressWithKey(QAbstractButton& button, KeyEquivalent key) {
  const QList<QKeySequence> sequences = keySequences(key);
  if (sequences.isEmpty()) return;
  auto* const shortcut = new QShortcut(button.window());
  shortcut->setKeys(sequences);
  shortcut->setAutoRepeat(false);
  QObject::connect(shortcut, &QShortcut::activated, &button, &QAbstractButton::click);
}

QString Mnemonics::mark(const std::string& title) {
  QString marked = controlTitle(title);
  const auto isFree = [&](qsizetype place) {
    return marked.at(place).isLetter() && !used_.contains(marked.at(place), Qt::CaseInsensitive);
  };
  const auto begins = [&](qsizetype place) { return place == 0 || marked.at(place - 1).isSpace(); };
  for (const bool onlyFirstLetters : {true, false})
    for (qsizetype place = 0; place < marked.size(); ++place)
      if (isFree(place) && (begins(place) || !onlyFirstLetters)) {
        used_ += marked.at(place);
        return marked.insert(place, '&');
      }
  return marked;
}
