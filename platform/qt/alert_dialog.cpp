#include "platform/qt/alert_dialog.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/qt/interface_text.h"
#include "platform/qt/key_equivalents.h"

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

}  // namespace

AlertDialog::AlertDialog(const Alert& alert) {
  setWindowTitle(QGuiApplication::applicationDisplayName());
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
  auto* const top = new QHBoxLayout;
  top->setSpacing(2 * style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing));
  top->addWidget(makeIcon(), 0, Qt::AlignTop);
  top->addWidget(makeTexts(alert), 1);
  auto* const all = new QVBoxLayout(this);
  all->addLayout(top);
  all->setSizeConstraint(QLayout::SetFixedSize);
  connect(QGuiApplication::clipboard(), &QClipboard::changed, this, &AlertDialog::cleanCopy);
  makeButtons(alert.buttons.empty() ? std::vector<std::string>{"OK"} : alert.buttons);
}

QWidget* AlertDialog::makeIcon() {
  auto* const label = new QLabel;
  const int side = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  label->setPixmap(QApplication::windowIcon().pixmap(QSize(side, side), devicePixelRatioF()));
  return label;
}

QWidget* AlertDialog::makeTexts(const Alert& alert) {
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  const int width = std::min(QFontMetrics(font()).averageCharWidth() * lettersInLine, screen.width() / 2);
  auto* const texts = new QWidget;
  auto* const column = new QVBoxLayout(texts);
  column->setContentsMargins(0, 0, 0, 0);
  for (const auto& [text, isBold] : {std::pair(alert.messageText, true), std::pair(alert.informativeText, false)})
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

// Does not use QDialogButtonBox, which orders the buttons by the desktop's rules.
void AlertDialog::makeButtons(const std::vector<std::string>& titles) {
  auto* const row = new QHBoxLayout;
  row->addStretch(1);
  Mnemonics mnemonics;
  for (std::size_t index = 0; index < titles.size(); ++index) {
    auto* const button = new QPushButton(mnemonics.mark(titles[index]), this);
    button->setAutoDefault(false);  // otherwise the focused button would become the default
    connect(button, &QPushButton::clicked, this, [this, index] {
      pressed_ = index;
      accept();
    });
    row->addWidget(button);
    buttons_.push_back(button);
  }
  const auto cancel = std::find(titles.begin(), titles.end(), "Cancel");
  if (cancel != titles.end()) cancel_ = static_cast<std::size_t>(cancel - titles.begin());
  if (titles.size() == 1) cancel_ = 0;
  buttons_.front()->setDefault(true);
  buttons_.front()->setFocus();
  pressWithKey(*buttons_.front(), KeyEquivalent::returnKey);
  static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

// Removes what lets a long path break into lines from a copy of a text.
void AlertDialog::cleanCopy(QClipboard::Mode mode) {
  QClipboard& clipboard = *QGuiApplication::clipboard();
  for (const QLabel* const label : findChildren<QLabel*>()) {
    if (!label->hasSelectedText()) continue;
    const QString copy = clipboard.text(mode);
    const bool isOurs = QString(copy).replace('\n', QChar::ParagraphSeparator) == label->selectedText();
    if (isOurs && unbroken(copy) != copy) return clipboard.setText(unbroken(copy), mode);
  }
}

std::size_t AlertDialog::answer() const { return pressed_.value_or(cancel_.value_or(buttons_.size() - 1)); }

void AlertDialog::reject() {
  if (cancel_) buttons_[*cancel_]->click();
}
