// Keys in windows and alerts, with the settings of each desktop.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>
#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_user_interface.h"
#include "platform/qt/qt_window.h"
#include "tests/platform/qt/dialog_driver.h"
#include "tests/platform/qt/run_until.h"
#include "tests/support/program.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KeysTest : public testing::Test {
 protected:
  Action note(const std::string& what) {
    return [this, what] { done_.push_back(what); };
  }
  void addControls() {
    window_->add(CheckBox{{0, 50, 90, 18}, "Check", note("checked")});
    picker_ = window_->addTimePicker({0, 150, 100, 26});
    window_->add(PopUp{{0, 100, 100, 26}, {"One", "Two"}, note("chosen")});
    window_->add(PushButton{{0, 0, 90, 32}, "Cancel", note("cancelled"), KeyEquivalent::escape});
    window_->add(PushButton{{100, 0, 90, 32}, "Save", note("saved"), KeyEquivalent::returnKey});
    window_->add(PushButton{{200, 0, 90, 32}, "Other", note("other")});
  }
  void show() {
    window_->makeKeyAndOrderFront();
    ASSERT_TRUE(runUntil([this] { return QApplication::activeWindow() == &window_->widget(); }));
  }
  static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }

  std::shared_ptr<QtWindow> window_ = std::make_shared<QtWindow>(WindowDescription{300, 200, "Title"});
  std::shared_ptr<DatePicker> picker_;
  std::vector<std::string> done_;
};

TEST_F(KeysTest, returnAndEscapePressTheirButtonsWithAnyFocus) {
  addControls();
  show();
  for (QWidget* const control : window_->widget().findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
    control->setFocus();
    ASSERT_TRUE(runUntil([&] { return control->hasFocus(); }));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) press(key);
    EXPECT_THAT(done_, ElementsAre("saved", "saved", "cancelled")) << control->metaObject()->className();
    done_.clear();
  }
}

TEST_F(KeysTest, spacePressesTheFocusedButton) {
  addControls();
  show();
  for (QPushButton* const button : window_->widget().findChildren<QPushButton*>()) {
    button->setFocus();
    press(Qt::Key_Space);
  }
  EXPECT_THAT(done_, ElementsAre("cancelled", "saved", "other"));
}

TEST_F(KeysTest, theFocusStartsOnNoButton) {
  addControls();
  picker_->setEnabled(false);
  show();
  EXPECT_EQ(QApplication::focusWidget(), &window_->widget());
  press(Qt::Key_Space);
  EXPECT_THAT(done_, IsEmpty());
  press(Qt::Key_Return);
  EXPECT_THAT(done_, ElementsAre("saved"));
  press(Qt::Key_Tab);
  EXPECT_TRUE(window_->widget().findChild<QCheckBox*>()->hasFocus());
}

TEST_F(KeysTest, theFocusStartsInAnEnabledTimeField) {
  addControls();
  show();
  auto& field = *window_->widget().findChild<QTimeEdit*>();
  EXPECT_TRUE(field.hasFocus());
  QTest::keyClicks(&field, "1745");
  EXPECT_EQ(field.time(), QTime(17, 45));
}

TEST_F(KeysTest, returnPressesTheDefaultButtonOfAnAlert) {
  QtEventLoop loop;
  QtApplication application(*qApp, loop);
  QtUserInterface userInterface(application);
  for (const int focused : {0, 1, 2}) {
    withNextDialog([&](QDialog& dialog) {
      EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &dialog; }));
      EXPECT_EQ(QApplication::focusWidget(), dialog.findChildren<QPushButton*>().at(0)) << "at first";
      dialog.findChildren<QPushButton*>().at(focused)->setFocus();
      press(Qt::Key_Return);
      if (dialog.isVisible()) ADD_FAILURE() << "Return is without effect";
    });
    EXPECT_EQ(userInterface.runModal({"Text", "More", {"Quit", "Retry", "Cancel"}}), 0U);
  }
}

TEST_F(KeysTest, mnemonicsReachEachControlWithATitle) {
  addControls();
  show();
  QStringList letters;
  for (const QAbstractButton* const button : window_->widget().findChildren<QAbstractButton*>())
    letters += button->shortcut().toString();
  EXPECT_EQ(letters, QStringList({"Alt+C", "Alt+A", "Alt+S", "Alt+O"})) << "each letter once";
  press(Qt::Key_C, Qt::AltModifier);
  press(Qt::Key_O, Qt::AltModifier);
  EXPECT_TRUE(runUntil([&] { return done_.size() == 2; }));
  EXPECT_THAT(done_, ElementsAre("checked", "other"));
}

TEST_F(KeysTest, anOpenPopUpReceivesReturnAndEscape) {
  addControls();
  show();
  auto& comboBox = *window_->widget().findChild<QComboBox*>();
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    comboBox.showPopup();
    ASSERT_TRUE(runUntil([] { return QApplication::activePopupWidget() != nullptr; }));
    QWidget* const list = QApplication::activePopupWidget()->focusWidget();
    QTest::keyClick(list, key == Qt::Key_Return ? Qt::Key_Down : Qt::Key_Up);
    QTest::keyClick(list, key);
    EXPECT_TRUE(runUntil([] { return QApplication::activePopupWidget() == nullptr; }));
  }
  EXPECT_THAT(done_, ElementsAre("chosen"));
  EXPECT_EQ(comboBox.currentIndex(), 1);
}

// A headless X display.
class Display {
 public:
  Display() {
    Pipe ready;
    process_ = fork();
    if (process_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      dup2(ready.writer(), STDOUT_FILENO);
      dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);  // it mentions displays of others
      execlp("Xvfb", "Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp", nullptr);
      _exit(127);
    }
    ready.closeWriter();
    // The number and the end of its line arrive by themselves.
    for (std::string part; !name_.ends_with('\n') && !(part = ready.receive()).empty();) name_ += part;
    name_ = ":" + name_.substr(0, name_.find('\n'));
  }
  ~Display() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  const std::string& name() const { return name_; }

 private:
  pid_t process_ = 0;
  std::string name_;
};

// Runs the tests above as on each desktop: on X, Qt takes from the desktop which keys press a button.
TEST(Keys, areTheSameOnEveryDesktop) {
  const Display display;
  for (const char* const desktop : {"GNOME", "XFCE", "MATE", "X-Cinnamon", "KDE", ""}) {
    const Ending ending = run("/proc/self/exe", {"--gtest_filter=KeysTest.*"},
                              {{"QT_QPA_PLATFORM", "xcb"},
                               {"DISPLAY", display.name()},
                               {"XDG_CURRENT_DESKTOP", desktop},
                               {"KDE_SESSION_VERSION", "5"}});
    EXPECT_EQ(ending.status, 0) << desktop << ":\n" << ending.output << ending.error;
    EXPECT_NE(ending.output.find("[  PASSED  ] 7 tests."), std::string::npos) << desktop;
  }
}

}  // namespace
