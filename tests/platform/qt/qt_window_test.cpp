// Windows as a user sees them: the geometry of the widgets, and keys as the keyboard sends them.
#include "platform/qt/qt_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>
#include <QTimeEdit>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_user_interface.h"
#include "tests/platform/qt/run_until.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

// Returns the title as a user reads it, without the mark of its mnemonic.
QString shownBy(const QAbstractButton& button) { return button.text().replace(QRegularExpression("&(.)"), "\\1"); }

QAccessibleInterface& accessible(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

class QtWindowTest : public testing::Test {
 protected:
  Action note(const std::string& what) {
    return [this, what] { done_.push_back(what); };
  }
  template <class Widget>
  Widget& only() {
    const QList<Widget*> found = window_->widget().findChildren<Widget*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_EQ(found.size(), 1);
    return *found.at(0);
  }
  void show() {
    window_->makeKeyAndOrderFront();
    ASSERT_TRUE(runUntil([this] { return QApplication::activeWindow() == &window_->widget(); }));
  }
  // Sends the key to the focused widget.
  void press(Qt::Key key) {
    const QWidget* const popUp = QApplication::activePopupWidget();
    QWidget* const focus = popUp != nullptr ? popUp->focusWidget() : QApplication::focusWidget();
    QTest::keyClick(focus != nullptr ? focus : &window_->widget(), key);
  }

  std::shared_ptr<QtWindow> window_ = std::make_shared<QtWindow>(WindowDescription{300, 200, "Title & more"});
  std::vector<std::string> done_;
};

TEST_F(QtWindowTest, isHiddenAtFirstAndHasAFixedSize) {
  QWidget& widget = window_->widget();
  EXPECT_FALSE(widget.isVisible());
  EXPECT_EQ(widget.size(), QSize(300, 200));
  show();
  widget.resize(500, 500);
  EXPECT_EQ(widget.size(), QSize(300, 200));
  EXPECT_EQ(widget.windowTitle(), "Title & more");
  EXPECT_FALSE(widget.windowFlags() & (Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint));
}

TEST_F(QtWindowTest, framesStartAtTheBottomLeft) {
  window_->add(PushButton{{10, 20, 90, 32}, "Push", nullptr});
  window_->add(CheckBox{{1, 2, 120, 18}, "Check", nullptr});
  window_->add(PopUp{{0, 0, 300, 26}, {"One"}, nullptr});
  window_->addTimePicker({200, 172, 100, 28});
  window_->add(Label{{5, 100, 290, 17}, "Label"});
  EXPECT_EQ(only<QPushButton>().geometry(), QRect(10, 148, 90, 32));
  EXPECT_EQ(only<QCheckBox>().geometry(), QRect(1, 180, 120, 18));
  EXPECT_EQ(only<QComboBox>().geometry(), QRect(0, 174, 300, 26));
  EXPECT_EQ(only<QTimeEdit>().geometry(), QRect(200, 0, 100, 28));
  EXPECT_EQ(only<QLabel>().geometry(), QRect(5, 83, 290, 17));
  show();
  EXPECT_EQ(only<QPushButton>().geometry(), QRect(10, 148, 90, 32)) << "showing the window moves nothing";
}

TEST_F(QtWindowTest, controlsAddedLaterAreVisible) {
  show();
  window_->add(Label{{0, 0, 100, 17}, "Late"});
  EXPECT_TRUE(only<QLabel>().isVisible());
}

TEST_F(QtWindowTest, accessibilityLabelsReachScreenReaders) {
  window_->add(CheckBox{{0, 40, 200, 18}, "Sun", nullptr})->setAccessibilityLabel("Sunday");
  window_->add(PopUp{{0, 0, 300, 26}, {"One"}, nullptr})->setAccessibilityLabel("Days");
  window_->addTimePicker({200, 172, 100, 28})->setAccessibilityLabel("Time");
  EXPECT_EQ(only<QCheckBox>().accessibleName(), "Sunday");
  EXPECT_EQ(shownBy(only<QCheckBox>()), "Sun");
  EXPECT_EQ(accessible(only<QTimeEdit>()).text(QAccessible::Name), "Time");
  const auto labels = accessible(only<QComboBox>()).relations(QAccessible::Label);
  ASSERT_EQ(labels.size(), 1) << "Qt gives the selected item as its name";
  EXPECT_EQ(labels.front().first->text(QAccessible::Name), "Days");
  EXPECT_EQ(accessible(window_->widget()).role(), QAccessible::Dialog);
}

TEST_F(QtWindowTest, titlesAreShownVerbatim) {
  window_->add(PushButton{{0, 0, 200, 32}, "Sort & Quit", nullptr});
  window_->add(CheckBox{{0, 40, 200, 18}, "Sort & Quit", nullptr});
  window_->add(Label{{0, 80, 200, 17}, "Sort & <b>Quit</b>"});
  EXPECT_EQ(shownBy(only<QPushButton>()), "Sort & Quit");
  EXPECT_EQ(shownBy(only<QCheckBox>()), "Sort & Quit");
  EXPECT_EQ(only<QLabel>().text(), "Sort & <b>Quit</b>");
  EXPECT_EQ(only<QLabel>().textFormat(), Qt::PlainText);
}

TEST_F(QtWindowTest, labelsCanBeBoldCentredAndLarger) {
  window_->add(Label{.frame = {0, 100, 300, 60}, .text = "Large", .fontSize = 26, .isBold = true, .isCentered = true});
  const int large = QFontInfo(only<QLabel>().font()).pixelSize();
  EXPECT_TRUE(only<QLabel>().font().bold());
  EXPECT_TRUE(only<QLabel>().alignment() & Qt::AlignHCenter);
  delete &only<QLabel>();
  window_->add(Label{{0, 0, 300, 60}, "Usual"});
  EXPECT_EQ(large, 2 * QFontInfo(only<QLabel>().font()).pixelSize());
  EXPECT_FALSE(only<QLabel>().font().bold());
  EXPECT_FALSE(only<QLabel>().alignment() & Qt::AlignHCenter);
}

TEST_F(QtWindowTest, buttonsRunTheirActions) {
  const auto button = window_->add(PushButton{{0, 0, 90, 32}, "Push", note("pushed")});
  const auto box = window_->add(CheckBox{{0, 50, 90, 18}, "Check", nullptr, 7});
  EXPECT_EQ(button->tag(), 0);
  EXPECT_EQ(box->tag(), 7);
  EXPECT_FALSE(box->isOn());
  show();
  QTest::mouseClick(&only<QPushButton>(), Qt::LeftButton);
  only<QCheckBox>().click();
  EXPECT_TRUE(box->isOn());
  EXPECT_THAT(done_, ElementsAre("pushed"));
  button->setEnabled(false);
  QTest::mouseClick(&only<QPushButton>(), Qt::LeftButton);
  EXPECT_THAT(done_, ElementsAre("pushed"));
}

TEST_F(QtWindowTest, aCheckBoxChangesBeforeItsAction) {
  std::shared_ptr<Button> box;
  box = window_->add(CheckBox{{0, 50, 90, 18}, "Check", [&] { done_.emplace_back(box->isOn() ? "on" : "off"); }});
  only<QCheckBox>().click();
  only<QCheckBox>().click();
  EXPECT_THAT(done_, ElementsAre("on", "off"));
  box->setOn(true);
  EXPECT_TRUE(box->isOn());
  EXPECT_THAT(done_, ElementsAre("on", "off")) << "the program's own change is not reported";
}

TEST_F(QtWindowTest, aCheckBoxThatAScreenReaderTogglesRunsItsAction) {
  const auto box = window_->add(CheckBox{{0, 50, 90, 18}, "Check", note("toggled")});
  show();
  QAccessible::queryAccessibleInterface(&only<QCheckBox>())
      ->actionInterface()
      ->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(box->isOn());
  EXPECT_THAT(done_, ElementsAre("toggled"));
}

TEST_F(QtWindowTest, aPopUpButtonReportsOnlyTheUsersChoice) {
  const auto popUp = window_->add(PopUp{{0, 0, 100, 26}, {"One", "Two", "Three"}, note("chosen")});
  EXPECT_EQ(popUp->selectedIndex(), 0U);
  popUp->select(2);
  EXPECT_EQ(popUp->selectedIndex(), 2U);
  popUp->select(3);
  EXPECT_EQ(popUp->selectedIndex(), 2U);
  EXPECT_THAT(done_, IsEmpty());
  show();
  only<QComboBox>().setFocus();
  press(Qt::Key_Up);
  EXPECT_EQ(popUp->selectedIndex(), 1U);
  EXPECT_THAT(done_, ElementsAre("chosen"));
  popUp->setEnabled(false);
  EXPECT_FALSE(only<QComboBox>().isEnabled());
}

TEST_F(QtWindowTest, theReturnButtonIsTheDefault) {
  window_->add(PushButton{{0, 0, 90, 32}, "Save", nullptr, KeyEquivalent::returnKey});
  EXPECT_TRUE(only<QPushButton>().isDefault());
  delete &only<QPushButton>();
  window_->add(PushButton{{0, 0, 90, 32}, "Cancel", nullptr, KeyEquivalent::escape});
  EXPECT_FALSE(only<QPushButton>().isDefault());
}

TEST_F(QtWindowTest, aDisabledButtonIgnoresItsKey) {
  window_->add(PushButton{{0, 0, 90, 32}, "Save", note("saved"), KeyEquivalent::returnKey})->setEnabled(false);
  show();
  press(Qt::Key_Return);
  EXPECT_THAT(done_, IsEmpty());
}

TEST_F(QtWindowTest, returnSavesATypedTime) {
  const auto picker = window_->addTimePicker({0, 150, 100, 26});
  const auto at = [](int hour, int minute) {
    return Instant(std::chrono::milliseconds(QDateTime({2026, 6, 15}, {hour, minute}).toMSecsSinceEpoch()));
  };
  picker->setDateValue(at(9, 30));
  Instant saved{};
  window_->add(PushButton{{0, 0, 90, 32}, "Save", [&] { saved = picker->dateValue(); }, KeyEquivalent::returnKey});
  show();
  auto& field = only<QTimeEdit>();
  field.setFocus();
  field.setKeyboardTracking(false);  // so that only Return accepts the typed time
  field.setSelectedSection(QDateTimeEdit::HourSection);
  QTest::keyClicks(&field, "17");
  press(Qt::Key_Return);
  EXPECT_EQ(saved, at(17, 30));
}

TEST_F(QtWindowTest, aClickInATimeSelectsTheHourOrMinute) {
  window_->addTimePicker({0, 150, 100, 26});
  show();
  auto& field = only<QTimeEdit>();
  field.setTime({9, 30});
  auto& text = *field.findChild<QLineEdit*>();
  for (const auto& [place, selected] :
       {std::pair(QPoint(2, 13), QString("09")),
        std::pair(QPoint(text.fontMetrics().horizontalAdvance("09:3"), 13), QString("30"))}) {
    QTest::mouseClick(&text, Qt::LeftButton, Qt::NoModifier, place);
    EXPECT_EQ(text.selectedText(), selected);
  }
  QTest::mouseClick(&text, Qt::LeftButton, Qt::NoModifier, {2, 13});
  QTest::keyClicks(&field, "1745");
  EXPECT_EQ(field.time(), QTime(17, 45));
}

// The time that is stored after these keys in a field that showed a quarter past three in the morning.
std::string typed(const QString& keys) {
  QtWindow window({300, 200, "Title"});
  const auto picker = window.addTimePicker({0, 150, 100, 26});
  auto& field = *window.widget().findChild<QTimeEdit*>();
  field.setTime({3, 15});
  field.setSelectedSection(QDateTimeEdit::HourSection);
  QTest::keyClicks(&field, keys);
  const QString shown = field.text();
  static_cast<void>(picker->dateValue());
  EXPECT_EQ(QLocale().toTime(shown, field.displayFormat()), field.time()) << keys.toStdString();
  return field.time().toString("HH:mm").toStdString();
}

TEST_F(QtWindowTest, aTimeTypedOnATwelveHourClockIsWhatIsShown) {
  QLocale::setDefault(QLocale("en_US"));
  for (const auto& [keys, stored] : {std::pair("0930p", "21:30"),
                                     {"930pm", "21:30"},
                                     {"9:30 PM", "21:30"},
                                     {"0930a", "09:30"},
                                     {"12:05am", "00:05"},
                                     {"1205p", "12:05"},
                                     {"p", "15:15"},
                                     {"pa", "03:15"},
                                     {"0930", "09:30"}})
    EXPECT_EQ(typed(keys), stored) << keys;
  QLocale::setDefault(QLocale("ko_KR"));  // both halves begin with the same letter
  EXPECT_EQ(typed("0930"), "09:30");
  QLocale::setDefault(QLocale::c());
  EXPECT_EQ(typed("1745p"), "17:45") << "a clock of 24 hours ignores letters";
}

TEST_F(QtWindowTest, tabFollowsTheOrderOfAddition) {
  window_->add(PushButton{{200, 0, 90, 32}, "Save", nullptr});
  window_->add(Label{{0, 180, 90, 17}, "Label"});
  window_->add(CheckBox{{0, 50, 90, 18}, "Check", nullptr});
  window_->addTimePicker({0, 150, 100, 26});
  window_->add(PopUp{{0, 100, 100, 26}, {"One", "Two"}, nullptr});
  window_->add(PushButton{{0, 0, 90, 32}, "Cancel", nullptr});
  show();
  window_->widget().findChild<QPushButton*>()->setFocus();
  std::vector<std::string> order;
  for (int step = 0; step < 6; ++step) {
    order.emplace_back(QApplication::focusWidget()->metaObject()->className());
    // In a time field, Tab first moves to the minutes.
    const QWidget* const before = QApplication::focusWidget();
    for (int attempt = 0; attempt < 3 && QApplication::focusWidget() == before; ++attempt) press(Qt::Key_Tab);
  }
  EXPECT_THAT(order, ElementsAre("QPushButton", "QCheckBox", "QTimeEdit", "QComboBox", "QPushButton", "QPushButton"));
}

TEST_F(QtWindowTest, aWindowThatIsNotClosableStaysOpen) {
  EXPECT_FALSE(window_->widget().windowFlags() & Qt::WindowCloseButtonHint);
  show();
  EXPECT_FALSE(window_->widget().close());
  EXPECT_TRUE(window_->widget().isVisible());
  press(Qt::Key_Escape);
  EXPECT_TRUE(window_->widget().isVisible());
  window_->orderOut();
  EXPECT_FALSE(window_->widget().isVisible());
}

TEST_F(QtWindowTest, closingAWindowThatIsNotClosablePressesEscape) {
  window_->add(PushButton{{0, 0, 90, 32}, "Cancel", note("cancelled"), KeyEquivalent::escape});
  show();
  EXPECT_FALSE(window_->widget().close());
  EXPECT_THAT(done_, ElementsAre("cancelled"));
}

TEST_F(QtWindowTest, theWindowThatIsAskedForComesToTheFront) {
  QtEventLoop loop;
  const QtApplication application(*qApp, loop);
  QtUserInterface userInterface(application);
  const auto other = std::make_shared<QtWindow>(WindowDescription{300, 200, "Other", true});
  for (const auto& window : {window_, other, window_, other}) {
    window->makeKeyAndOrderFront();
    userInterface.activateIgnoringOthers();
    EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &window->widget(); }, 2s));
  }
}

TEST_F(QtWindowTest, aClosedWindowCanBeShownAgain) {
  window_ = std::make_shared<QtWindow>(WindowDescription{300, 200, "Title", true});
  window_->add(Label{{0, 0, 90, 17}, "Label"});
  EXPECT_TRUE(window_->widget().windowFlags() & Qt::WindowCloseButtonHint);
  show();
  EXPECT_TRUE(window_->widget().close());
  EXPECT_FALSE(window_->widget().isVisible());
  show();
  EXPECT_TRUE(only<QLabel>().isVisible());
}

TEST_F(QtWindowTest, centersOnTheScreen) {
  window_->center();
  show();
  const QPoint distance = window_->widget().geometry().center() - QApplication::primaryScreen()->geometry().center();
  EXPECT_LE(distance.manhattanLength(), 8) << "the borders are not known before the window is shown";
}

TEST_F(QtWindowTest, anActionMayDestroyItsWindow) {
  const auto other = window_->add(CheckBox{{0, 50, 90, 18}, "Check", nullptr});
  const auto picker = window_->addTimePicker({0, 150, 100, 26});
  const auto popUp = window_->add(PopUp{{0, 100, 100, 26}, {"One", "Two"}, nullptr});
  const auto button = window_->add(PushButton{{0, 0, 90, 32}, "Close", [this] {
                                                window_.reset();
                                                done_.emplace_back("destroyed");
                                              }});
  show();
  const QPointer<QWidget> widget(&window_->widget());
  QTest::mouseClick(&only<QPushButton>(), Qt::LeftButton);
  EXPECT_THAT(done_, ElementsAre("destroyed"));
  EXPECT_FALSE(widget.isNull()) << "its button was still in use";
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // as a running loop does
  EXPECT_TRUE(widget.isNull());
  for (const auto& control : {button, other}) {
    control->setOn(true);
    control->setEnabled(true);
    EXPECT_FALSE(control->isOn());
  }
  popUp->select(1);
  popUp->setEnabled(true);
  EXPECT_EQ(popUp->selectedIndex(), 0U);
  picker->setEnabled(true);
  picker->setDateValue(Instant(5s));
  EXPECT_EQ(picker->dateValue(), Instant(5s));
}

class QtDatePickerTest : public QtWindowTest {
 protected:
  QtDatePickerTest() { tzset(); }
  ~QtDatePickerTest() override {
    zone_.set(std::nullopt);
    tzset();
  }

  EnvironmentScope zone_{"TZ", "Europe/Berlin"};
  std::shared_ptr<DatePicker> picker_ = window_->addTimePicker({0, 150, 100, 26});
};

TEST_F(QtDatePickerTest, showsTheTimeInTheSystemsTimeZone) {
  picker_->setDateValue(Instant(1'781'512'245s));  // 2026-06-15 08:30:45 UTC
  EXPECT_EQ(only<QTimeEdit>().text(), "10:30");
}

TEST_F(QtDatePickerTest, returnsTheExactInstantUntilTheUserChangesIt) {
  const Instant date = Instant(1'781'512'245s) + 678us;
  picker_->setDateValue(date);
  EXPECT_EQ(picker_->dateValue(), date);
  only<QTimeEdit>().setTime({23, 5});
  EXPECT_EQ(picker_->dateValue(), Instant(1'781'557'500s)) << "23:05 on the same day";
  only<QTimeEdit>().setTime({0, 0});
  EXPECT_EQ(picker_->dateValue(), Instant(1'781'474'400s)) << "the same day's midnight";
  only<QTimeEdit>().setTime({10, 30});
  EXPECT_EQ(picker_->dateValue(), date);
}

TEST_F(QtDatePickerTest, canBeDisabled) {
  picker_->setEnabled(false);
  EXPECT_FALSE(only<QTimeEdit>().isEnabled());
}

// Makes a square red picture and returns its path.
std::string makePicture(const ScratchFolder& scratch) {
  std::string path = scratch.path("picture.svg");
  makeFile(path,
           "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"8\" height=\"8\">"
           "<rect width=\"8\" height=\"8\" fill=\"#ff0000\"/></svg>");
  return path;
}

TEST_F(QtWindowTest, anImageKeepsItsAspectRatio) {
  const ScratchFolder scratch;
  window_->add(Image{{100, 50, 100, 60}, makePicture(scratch)});
  const QImage seen = window_->widget().grab().toImage();
  const auto red = [&](int x, int y) { return seen.pixelColor(QPoint(x, y) * seen.devicePixelRatio()) == Qt::red; };
  for (const int y : {92, 148}) {  // in the widget, the frame is from 90 to 149
    EXPECT_TRUE(red(122, y));
    EXPECT_TRUE(red(177, y));
    EXPECT_FALSE(red(117, y));
    EXPECT_FALSE(red(182, y));
  }
  EXPECT_FALSE(red(150, 88));
  EXPECT_FALSE(red(150, 152));
}

TEST_F(QtWindowTest, anUnreadableImageDrawsNothing) {
  const QImage before = window_->widget().grab().toImage();
  window_->add(Image{{100, 50, 100, 60}, "/nowhere/at/all.png"});
  EXPECT_EQ(window_->widget().grab().toImage(), before);
}

}  // namespace
