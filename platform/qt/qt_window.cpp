#include "platform/qt/qt_window.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCursor>
#include <QDialog>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTimeEdit>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/qt/fitted_font.h"
#include "platform/qt/image_widget.h"
#include "platform/qt/interface_text.h"
#include "platform/qt/key_equivalents.h"
#include "platform/qt/qt_controls.h"
#include "platform/qt/time_field.h"
#include "platform/qt/window_order.h"

namespace {

Qt::WindowFlags flagsFor(const WindowDescription& description) {
  // Desktops give a dialog no buttons to minimise or maximise it.
  const Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
  return description.isClosable ? flags | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint : flags;
}

// Returns the width that a button with this font has for its title.
int titleWidth(const QAbstractButton& button, QStyle::SubElement contents, const QFont& font) {
  QStyleOptionButton option;
  option.initFrom(&button);
  option.text = button.text();
  option.fontMetrics = QFontMetrics(font);
  return button.style()->subElementRect(contents, &option, &button).width();
}

// `margins` is the total space to keep free on the left and the right of the title.
void fitTitle(QAbstractButton& button, QStyle::SubElement contents, int margins) {
  button.setFont(fittedFont(button.font(), [&](const QFont& font) {
    const QFontMetrics metrics(font);
    const QSize title = metrics.size(Qt::TextShowMnemonic, button.text());
    return title.width() + margins <= titleWidth(button, contents, font) && metrics.height() <= button.height();
  }));
}

// For fields, whose size hint covers every value that they can show.
void fitContent(QWidget& field) {
  field.setFont(fittedFont(field.font(), [&](const QFont& font) {
    field.setFont(font);
    return field.sizeHint().width() <= field.width() && QFontMetrics(font).height() <= field.height();
  }));
}

QFont labelFont(const Label& label, QFont font) {
  constexpr double usualSize = 13;
  const double pixelSize = QFontInfo(font).pixelSize() * label.fontSize / usualSize;
  font.setPixelSize(std::max(static_cast<int>(std::lround(pixelSize)), 1));
  font.setBold(label.isBold);
  return font;
}

// Breaks words only if the text fits in no font size.
void showText(QLabel& label, const QString& text, const QFont& wanted) {
  const auto shows = [&](const QString& content, const QFont& font) {
    return labelShows(content, font, label.size(), label.wordWrap());
  };
  QString content = text;
  QFont font = fittedFont(wanted, [&](const QFont& candidate) { return shows(text, candidate); });
  if (label.wordWrap() && !shows(text, font)) {
    font = fittedFont(wanted, [&](const QFont& candidate) {
      content = breakable(text, QFontMetrics(candidate), label.width());
      return shows(content, candidate);
    });
  }
  label.setFont(font);
  label.setText(content);
  label.setAccessibleName(text);
}

QRect screenOfPointer() {
  const QScreen* const screen = QGuiApplication::screenAt(QCursor::pos());
  return (screen != nullptr ? screen : QGuiApplication::primaryScreen())->availableGeometry();
}

// Keeps the keys of its open list from the window's buttons.
class PopUpField : public QComboBox {
 public:
  explicit PopUpField(QWidget* parent) : QComboBox(parent) { view()->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::ShortcutOverride) event->accept();  // which Qt forgets when it has handled the key
    return QComboBox::eventFilter(object, event);
  }
};

}  // namespace

// A dialog to screen readers, without what a dialog of Qt does with Return.
class QtWindow::Widget : public QDialog {
 public:
  Widget(Qt::WindowFlags flags, bool isClosable) : QDialog(nullptr, flags), isClosable_(isClosable) {}
  void setEscapeButton(QAbstractButton* button) { escapeButton_ = button; }
  void reject() override { close(); }

 protected:
  // Some window managers have a close button on every window. It does what Escape does.
  void closeEvent(QCloseEvent* event) override {
    event->setAccepted(isClosable_);
    if (!isClosable_ && escapeButton_) escapeButton_->click();
  }

 private:
  bool isClosable_;
  QPointer<QAbstractButton> escapeButton_;
};

QtWindow::QtWindow(const WindowDescription& description)
    : widget_(new Widget(flagsFor(description), description.isClosable)), height_(description.height) {
  widget_->setWindowTitle(QString::fromStdString(description.title));
  chooseScale(QSize(description.width, description.height));
  widget_->setFixedSize(scaled(QRect(0, 0, description.width, description.height)).size());
}

QtWindow::~QtWindow() {
  widget_->hide();
  widget_->deleteLater();
}

std::shared_ptr<Button> QtWindow::add(const PushButton& button) {
  auto* const pushButton = new QPushButton(mnemonics_.mark(button.title), widget_);
  pushButton->setAutoDefault(false);  // otherwise the focused button would become the default
  placeControl(pushButton, button.frame);
  fitTitle(*pushButton, QStyle::SE_PushButtonContents, 8);
  if (button.action) QObject::connect(pushButton, &QPushButton::clicked, pushButton, button.action);
  pressWithKey(*pushButton, button.key);
  pushButton->setDefault(button.key == KeyEquivalent::returnKey);
  if (button.key == KeyEquivalent::escape) widget_->setEscapeButton(pushButton);
  return std::make_shared<QtButton>(pushButton, 0);
}

std::shared_ptr<Button> QtWindow::add(const CheckBox& checkBox) {
  auto* const box = new QCheckBox(mnemonics_.mark(checkBox.title), widget_);
  placeControl(box, checkBox.frame);
  fitTitle(*box, QStyle::SE_CheckBoxContents, 0);
  // Not `clicked`, which is missing if a screen reader toggles the box.
  if (checkBox.action) QObject::connect(box, &QCheckBox::toggled, box, checkBox.action);
  return std::make_shared<QtButton>(box, checkBox.tag);
}

std::shared_ptr<PopUpButton> QtWindow::add(const PopUp& popUp) {
  auto* const comboBox = new PopUpField(widget_);
  for (const std::string& item : popUp.items) comboBox->addItem(QString::fromStdString(item));
  placeControl(comboBox, popUp.frame);
  fitContent(*comboBox);
  if (popUp.action) QObject::connect(comboBox, &QComboBox::activated, comboBox, popUp.action);
  return std::make_shared<QtPopUpButton>(comboBox);
}

std::shared_ptr<DatePicker> QtWindow::addTimePicker(const Frame& frame) {
  auto* const timeEdit = new TimeField(widget_);
  placeControl(timeEdit, frame);
  fitContent(*timeEdit);
  return std::make_shared<QtDatePicker>(timeEdit);
}

void QtWindow::add(const Label& label) {
  auto* const text = new QLabel(widget_);
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(label.wraps);
  text->setAlignment(Qt::AlignTop | (label.isCentered ? Qt::AlignHCenter : Qt::AlignLeft));
  place(text, label.frame);
  showText(*text, QString::fromStdString(label.text), labelFont(label, text->font()));
}

void QtWindow::add(const Image& image) {
  place(new ImageWidget(QString::fromStdString(image.path), widget_), image.frame);
}

void QtWindow::center() {
  QRect frame = widget_->frameGeometry();
  frame.moveCenter(screenOfPointer().center());
  widget_->move(frame.topLeft());
}

void QtWindow::makeKeyAndOrderFront() {
  orderFront(*widget_);
  if (!std::exchange(wasShown_, true)) startFocus();
}

QWidget& QtWindow::widget() { return *widget_; }

void QtWindow::orderOut() { widget_->hide(); }

// The origin of a frame is at the bottom, and that of a Qt widget at the top.
void QtWindow::place(QWidget* control, const Frame& frame) {
  control->setGeometry(scaled(QRect(frame.x, height_ - frame.y - frame.height, frame.width, frame.height)));
  control->show();
}

void QtWindow::placeControl(QWidget* control, const Frame& frame) {
  place(control, frame);
  if (lastControl_) QWidget::setTabOrder(lastControl_, control);
  lastControl_ = control;
}

// If the screen is too small for windows of this font, all texts get the same smaller one.
void QtWindow::chooseScale(QSize size) {
  constexpr double usualPixelSize = 13;
  constexpr double greatestPart = 0.9;  // leaves room for the title bar
  const QSizeF room = QSizeF(screenOfPointer().size()) * greatestPart;
  const double most = std::min(room.width() / size.width(), room.height() / size.height());
  const double wanted = QFontInfo(widget_->font()).pixelSize() / usualPixelSize;
  scale_ = std::max(std::min(wanted, most), 1.0);
  if (wanted <= scale_) return;
  QFont font = widget_->font();
  font.setPixelSize(static_cast<int>(scale_ * usualPixelSize));
  widget_->setFont(font);
}

// Rounds edges, not lengths, so that frames that touch still do.
QRect QtWindow::scaled(const QRect& frame) const {
  const auto edge = [this](int place) { return static_cast<int>(std::lround(place * scale_)); };
  return {QPoint(edge(frame.x()), edge(frame.y())),
          QPoint(edge(frame.x() + frame.width()) - 1, edge(frame.y() + frame.height()) - 1)};
}

// As on a Mac, keys go to a field at first, or else to the window itself, and to no button or check box.
void QtWindow::startFocus() {
  const QList<QTimeEdit*> fields = widget_->findChildren<QTimeEdit*>();
  const auto field = std::find_if(fields.begin(), fields.end(), [](const QTimeEdit* one) { return one->isEnabled(); });
  if (field == fields.end()) return widget_->setFocus();
  (*field)->setFocus();
  (*field)->setSelectedSection(QDateTimeEdit::HourSection);
}
