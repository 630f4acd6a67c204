#include "platform/qt/qt_update_windows.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTextOption>
#include <algorithm>
#include <utility>

#include "platform/qt/window_order.h"
#include "values/harmless_text.h"

namespace {

// Lays out only the lines that it shows, so long notes cost little.
QPlainTextEdit* makeNotes(const std::string& notes) {
  constexpr int linesOfNotes = 12;
  auto* const field = new QPlainTextEdit(QString::fromStdString(harmlessText(notes)));
  field->setReadOnly(true);
  field->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  field->setTabChangesFocus(true);
  field->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  field->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  field->setAccessibleName("Release notes");
  const int tallest = QGuiApplication::primaryScreen()->availableSize().height() / 3;
  field->setFixedHeight(std::min(field->fontMetrics().lineSpacing() * linesOfNotes, tallest));
  return field;
}

void showInFront(QWidget& window) {
  orderFront(window);
  if (QWidget* const alert = QApplication::activeModalWidget()) orderFront(*alert);
}

}  // namespace

void QtUpdateWindows::showFound(const UpdateNews& news, std::function<void(UpdateAnswer)> answered) {
  TextDialog& dialog = open(news.heading, news.text);
  dialog.addContent(makeNotes(news.notes));
  const auto add = [&](const char* title, KeyEquivalent key, UpdateAnswer answer) -> QPushButton& {
    return addButton(title, key, [answered, answer] { answered(answer); });
  };
  add("Skip This Version", KeyEquivalent::none, UpdateAnswer::skip);
  dialog.pressWithEscape(add("Remind Me Later", KeyEquivalent::none, UpdateAnswer::remindLater));
  add("Install Update", KeyEquivalent::returnKey, UpdateAnswer::install);
  showInFront(dialog);
}

// The button is not the default, because Return may be pressed twice in the window before.
void QtUpdateWindows::showProgress(const std::string& text, Work cancelled) {
  TextDialog& dialog = open(text, "");
  bar_ = new QProgressBar;
  bar_->setRange(0, 0);
  bar_->setAccessibleName(QString::fromStdString(harmlessText(text)));
  dialog.addContent(bar_);
  cancel_ = &addButton("Cancel", KeyEquivalent::none, std::move(cancelled));
  dialog.pressWithEscape(*cancel_);
  showInFront(dialog);
  dialog.setFocus();
}

void QtUpdateWindows::setProgress(std::uint64_t done, std::uint64_t whole) {
  if (!bar_) return;
  constexpr int steps = 1000;
  const double part = static_cast<double>(std::min(done, whole)) / static_cast<double>(whole);
  bar_->setRange(0, steps);
  bar_->setValue(static_cast<int>(part * steps));
}

void QtUpdateWindows::disableCancel() {
  if (!cancel_) return;
  QSizePolicy policy = cancel_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  cancel_->setSizePolicy(policy);
  cancel_->setEnabled(false);
  cancel_->hide();
}

void QtUpdateWindows::showMessage(const std::string& heading, const std::string& text, Work closed) {
  TextDialog& dialog = open(heading, text);
  dialog.pressWithEscape(addButton("OK", KeyEquivalent::returnKey, std::move(closed)));
  showInFront(dialog);
}

void QtUpdateWindows::bringToFront() {
  if (dialog_ != nullptr) showInFront(*dialog_);
}

// Deletes the window later, because one of its buttons may be running the handler that closes it.
void QtUpdateWindows::close() {
  bar_.clear();
  cancel_.clear();
  if (TextDialog* const dialog = std::exchange(dialog_, nullptr)) {
    dialog->hide();
    dialog->deleteLater();
  }
}

TextDialog& QtUpdateWindows::open(const std::string& heading, const std::string& text) {
  close();
  dialog_ = new TextDialog(harmlessText(heading), harmlessText(text));
  return *dialog_;
}

// The window closes before the handler runs, so that the handler can open the next one.
QPushButton& QtUpdateWindows::addButton(const std::string& title, KeyEquivalent key, Work pressed) {
  QPushButton& button = dialog_->addButton(title, key);
  QObject::connect(&button, &QPushButton::clicked, dialog_, [this, dialog = dialog_, pressed = std::move(pressed)] {
    if (dialog != dialog_) return;
    close();
    pressed();
  });
  return button;
}
