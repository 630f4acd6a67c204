#include "platform/qt/qt_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QCursor>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHash>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTimeEdit>
#include <algorithm>
#include <cmath>

#include "platform/qt/fitted_font.h"
#include "platform/qt/image_widget.h"
#include "platform/qt/interface_text.h"
#include "platform/qt/qt_controls.h"

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
}

// Returns the time format of the user's locale, without seconds.
QString timeFormat() {
  const QString format = QLocale().timeFormat(QLocale::ShortFormat);
  return format.contains('s') ? "HH:mm" : format;
}

// Selects the hour or minute on a click, as Qt does for the keyboard only. Without a selection, Qt ignores digits typed
// after two others.
class TimeField : public QTimeEdit {
 public:
  explicit TimeField(QWidget* parent) : QTimeEdit(parent) { lineEdit()->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (object == lineEdit() && event->type() == QEvent::MouseButtonRelease) setSelectedSection(currentSection());
    return QTimeEdit::eventFilter(object, event);
  }
};

}  // namespace

// Receives keys that the focused control ignores. An open list receives its own keys.
class QtWindow::Widget : public QWidget {
 public:
  Widget(Qt::WindowFlags flags, bool isClosable) : QWidget(nullptr, flags), isClosable_(isClosable) {}
  void setButton(Qt::Key key, QAbstractButton* button) { buttons_.insert(key, button); }

 protected:
  void closeEvent(QCloseEvent* event) override { event->setAccepted(isClosable_); }

  void keyPressEvent(QKeyEvent* event) override {
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    const QPointer<QAbstractButton> button = isPlain ? buttons_.value(event->key()) : nullptr;
    if (!button) return QWidget::keyPressEvent(event);
    if (!event->isAutoRepeat()) button->click();
  }

 private:
  bool isClosable_;
  QHash<int, QPointer<QAbstractButton>> buttons_;
};

QtWindow::QtWindow(const WindowDescription& description)
    : widget_(new Widget(flagsFor(description), description.isClosable)) {
  widget_->setWindowTitle(QString::fromStdString(description.title));
  widget_->setFixedSize(description.width, description.height);
}

QtWindow::~QtWindow() {
  widget_->hide();
  widget_->deleteLater();
}

std::shared_ptr<Button> QtWindow::add(const PushButton& button) {
  auto* const pushButton = new QPushButton(controlTitle(button.title), widget_);
  placeControl(pushButton, button.frame);
  fitTitle(*pushButton, QStyle::SE_PushButtonContents, 8);
  if (button.action) QObject::connect(pushButton, &QPushButton::clicked, pushButton, button.action);
  press(pushButton, button.key);
  if (button.key == KeyEquivalent::returnKey) pushButton->setDefault(true);
  return std::make_shared<QtButton>(pushButton, 0);
}

std::shared_ptr<Button> QtWindow::add(const CheckBox& checkBox) {
  auto* const box = new QCheckBox(controlTitle(checkBox.title), widget_);
  placeControl(box, checkBox.frame);
  fitTitle(*box, QStyle::SE_CheckBoxContents, 0);
  if (checkBox.action) QObject::connect(box, &QCheckBox::clicked, box, checkBox.action);
  return std::make_shared<QtButton>(box, checkBox.tag);
}

std::shared_ptr<PopUpButton> QtWindow::add(const PopUp& popUp) {
  auto* const comboBox = new QComboBox(widget_);
  for (const std::string& item : popUp.items) comboBox->addItem(QString::fromStdString(item));
  placeControl(comboBox, popUp.frame);
  fitContent(*comboBox);
  if (popUp.action) QObject::connect(comboBox, &QComboBox::activated, comboBox, popUp.action);
  return std::make_shared<QtPopUpButton>(comboBox);
}

std::shared_ptr<DatePicker> QtWindow::addTimePicker(const Frame& frame) {
  auto* const timeEdit = new TimeField(widget_);
  timeEdit->setDisplayFormat(timeFormat());
  timeEdit->setWrapping(true);
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
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  QRect frame = widget_->frameGeometry();
  frame.moveCenter(screen->availableGeometry().center());
  widget_->move(frame.topLeft());
}

void QtWindow::makeKeyAndOrderFront() {
  widget_->setWindowState(widget_->windowState() & ~Qt::WindowMinimized);
  widget_->show();
  widget_->raise();
  widget_->activateWindow();
}

QWidget& QtWindow::widget() { return *widget_; }

void QtWindow::orderOut() { widget_->hide(); }

// The origin of a frame is at the bottom, and that of a Qt widget at the top.
void QtWindow::place(QWidget* control, const Frame& frame) {
  control->setGeometry(frame.x, widget_->height() - frame.y - frame.height, frame.width, frame.height);
  control->show();
}

void QtWindow::placeControl(QWidget* control, const Frame& frame) {
  place(control, frame);
  if (lastControl_) QWidget::setTabOrder(lastControl_, control);
  lastControl_ = control;
}

void QtWindow::press(QAbstractButton* button, KeyEquivalent key) {
  if (key == KeyEquivalent::escape) widget_->setButton(Qt::Key_Escape, button);
  if (key != KeyEquivalent::returnKey) return;
  for (const Qt::Key code : {Qt::Key_Return, Qt::Key_Enter}) widget_->setButton(code, button);
}
