#include "platform/qt/text_dialog.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <utility>

#include "platform/qt/interface_text.h"

namespace {

// A line width that is easy to read, in letters.
constexpr int lettersInLine = 56;

QLabel* makeText(const std::string& text, bool isBold, int width) {
  auto* const label = new QLabel;
  QFont font = label->font();
  font.setBold(isBold);
  label->setFont(font);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  label->setText(breakable(QString::fromStdString(text), QFontMetrics(font), width));
  label->setAccessibleName(QString::fromStdString(text));  // a screen reader would spell the broken words
  label->setFixedWidth(width);
  label->setFixedHeight(label->heightForWidth(width));
  return label;
}

QWidget* makeIcon(const QWidget& window) {
  auto* const label = new QLabel;
  const int side = window.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  label->setPixmap(QApplication::windowIcon().pixmap(QSize(side, side), window.devicePixelRatioF()));
  return label;
}

QWidget* makeTexts(const QWidget& window, const std::string& heading, const std::string& informativeText) {
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  const int width = std::min(window.fontMetrics().averageCharWidth() * lettersInLine, screen.width() / 2);
  auto* const texts = new QWidget;
  auto* const column = new QVBoxLayout(texts);
  column->setContentsMargins(0, 0, 0, 0);
  for (const auto& [text, isBold] : {std::pair(heading, true), std::pair(informativeText, false)})
    if (!text.empty()) column->addWidget(makeText(text, isBold, width));
  texts->setFixedSize(column->sizeHint());
  const int tallest = screen.height() * 2 / 3;
  if (texts->height() <= tallest) return texts;
  auto* const scroller = new QScrollArea;
  scroller->setFrameShape(QFrame::NoFrame);
  scroller->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroller->setWidget(texts);
  scroller->setFixedSize(texts->width() + scroller->verticalScrollBar()->sizeHint().width(), tallest);
  return scroller;
}

}  // namespace

TextDialog::TextDialog(const std::string& heading, const std::string& text) {
  setWindowTitle(QGuiApplication::applicationDisplayName());
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
  auto* const all = new QVBoxLayout(this);
  all->setSizeConstraint(QLayout::SetFixedSize);
  auto* const top = new QHBoxLayout;
  top->setSpacing(2 * style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing));
  top->addWidget(makeIcon(*this), 0, Qt::AlignTop);
  column_ = new QVBoxLayout;
  column_->addWidget(makeTexts(*this, heading, text));
  top->addLayout(column_, 1);
  all->addLayout(top);
  buttons_ = new QHBoxLayout;
  buttons_->addStretch(1);
  all->addLayout(buttons_);
  connect(QGuiApplication::clipboard(), &QClipboard::changed, this, &TextDialog::cleanCopy);
}

void TextDialog::addContent(QWidget* content) { column_->addWidget(content); }

// Does not use QDialogButtonBox, which orders the buttons by the desktop's rules.
QPushButton& TextDialog::addButton(const std::string& title, KeyEquivalent key) {
  auto* const button = new QPushButton(mnemonics_.mark(title), this);
  button->setAutoDefault(false);  // otherwise the focused button would become the default
  buttons_->addWidget(button);
  pressWithKey(*button, key);
  if (key == KeyEquivalent::returnKey) {
    button->setDefault(true);
    button->setFocus();
  }
  return *button;
}

// Removes what lets a long path break into lines from a copy of a text.
void TextDialog::cleanCopy(QClipboard::Mode mode) {
  QClipboard& clipboard = *QGuiApplication::clipboard();
  for (const QLabel* const label : findChildren<QLabel*>()) {
    if (!label->hasSelectedText()) continue;
    const QString copy = clipboard.text(mode);
    const bool isOurs = QString(copy).replace('\n', QChar::ParagraphSeparator) == label->selectedText();
    if (isOurs && unbroken(copy) != copy) return clipboard.setText(unbroken(copy), mode);
  }
}

void TextDialog::reject() {
  if (escapeButton_ != nullptr) escapeButton_->click();
}
