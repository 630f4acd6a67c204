// The updater's windows, operated as by a user.
#include "platform/qt/qt_update_windows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPalette>
#include <QPlainTextEdit>
#include <QTest>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/qt/qt_application.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_user_interface.h"
#include "platform/qt/window_order.h"
#include "tests/platform/qt/dialog_driver.h"
#include "tests/platform/qt/run_until.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const UpdateNews news{.heading = "A new version of Quillery is available.",
                      .text = "Quillery 0.2.0 is available; you have 0.1.0. Would you like to install it now?",
                      .notes = "- Sorts faster\n- Keeps <b>markup</b> & such"};

class QtUpdateWindowsTest : public testing::Test {
 protected:
  ~QtUpdateWindowsTest() override {
    windows_.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  void showFound(const UpdateNews& shown = news) {
    windows_.showFound(shown, [this](UpdateAnswer answer) {
      constexpr std::array names = {"install", "later", "skip"};
      answers_.emplace_back(names.at(static_cast<std::size_t>(answer)));
    });
  }
  Work note(const std::string& what) {
    return [this, what] { answers_.push_back(what); };
  }
  // Returns the open window, which is in front.
  static QWidget& window() {
    QWidgetList found = visibleWindows();
    EXPECT_EQ(found.size(), 1);
    EXPECT_EQ(found.front(), frontWindow());
    return *found.front();
  }
  static QPushButton& button(const std::string& title) {
    for (QPushButton* const one : window().findChildren<QPushButton*>())
      if (QAccessible::queryAccessibleInterface(one)->text(QAccessible::Name).toStdString() == title) return *one;
    throw std::runtime_error("no button " + title);
  }
  static void press(Qt::Key key) {
    EXPECT_TRUE(runUntil([] { return window().isActiveWindow(); }));
    QTest::keyClick(&window(), key);
  }

  QtUpdateWindows windows_;
  std::vector<std::string> answers_;
};

TEST_F(QtUpdateWindowsTest, eachButtonIsAnAnswer) {
  for (const char* const title : {"Skip This Version", "Remind Me Later", "Install Update"}) {
    showFound();
    QTest::mouseClick(&button(title), Qt::LeftButton);
    EXPECT_THAT(visibleWindows(), IsEmpty());
  }
  EXPECT_THAT(answers_, ElementsAre("skip", "later", "install"));
}

TEST_F(QtUpdateWindowsTest, returnInstallsAndEscapeRemindsLater) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    showFound();
    press(key);
  }
  EXPECT_THAT(answers_, ElementsAre("install", "install", "later"));
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    showFound();
    window().findChild<QPlainTextEdit*>()->setFocus();
    press(key);
  }
  EXPECT_THAT(answers_, ElementsAre("install", "install", "later", "install", "later"));
}

TEST_F(QtUpdateWindowsTest, closingIsTheHarmlessAnswer) {
  showFound();
  window().close();
  windows_.showProgress("Downloading…", note("cancelled"));
  window().close();
  windows_.showMessage("Up to date", "", note("closed"));
  window().close();
  EXPECT_THAT(answers_, ElementsAre("later", "cancelled", "closed"));
  EXPECT_THAT(visibleWindows(), IsEmpty());
}

TEST_F(QtUpdateWindowsTest, aSecondReturnDoesNotCancel) {
  windows_.showProgress("Downloading…", note("cancelled"));
  press(Qt::Key_Return);
  press(Qt::Key_Space);
  EXPECT_THAT(answers_, IsEmpty());
  press(Qt::Key_Escape);
  EXPECT_THAT(answers_, ElementsAre("cancelled"));
}

TEST_F(QtUpdateWindowsTest, aWindowReplacesTheOneBefore) {
  showFound();
  windows_.showProgress("Checking…", note("cancelled"));
  windows_.showMessage("Up to date", "This is the newest version.", note("closed"));
  press(Qt::Key_Return);
  windows_.close();
  windows_.setProgress(1, 2);
  windows_.disableCancel();
  windows_.bringToFront();
  EXPECT_THAT(answers_, ElementsAre("closed"));
}

TEST_F(QtUpdateWindowsTest, aHandlerMayOpenTheNextWindow) {
  windows_.showFound(news, [this](UpdateAnswer) {
    windows_.showProgress("Downloading…", [this] { windows_.showMessage("Stopped", "", note("closed")); });
  });
  press(Qt::Key_Return);
  press(Qt::Key_Escape);
  press(Qt::Key_Escape);
  EXPECT_THAT(answers_, ElementsAre("closed"));
}

TEST_F(QtUpdateWindowsTest, theBarMovesUntilItHasAnEnd) {
  windows_.showProgress("Downloading…", note("cancelled"));
  const auto& bar = *window().findChild<QProgressBar*>();
  EXPECT_EQ(bar.maximum(), 0);
  windows_.setProgress(1'000'000'000'000, 4'000'000'000'000);
  EXPECT_EQ(bar.text(), "25%");
  windows_.setProgress(9, 4);
  EXPECT_EQ(bar.text(), "100%");
}

TEST_F(QtUpdateWindowsTest, whatCannotBeCancelledHasNoButton) {
  windows_.showProgress("Installing…", note("cancelled"));
  const QSize size = window().size();
  windows_.disableCancel();
  press(Qt::Key_Escape);
  window().close();
  EXPECT_FALSE(window().findChild<QPushButton*>()->isVisible());
  EXPECT_EQ(window().size(), size);
  EXPECT_THAT(answers_, IsEmpty());
}

TEST_F(QtUpdateWindowsTest, textsAreShownVerbatim) {
  showFound({"<h1>Heading</h1>", "<b>0.2</b>\u202Ex\u202C", "<script>x</script>\n\x1B[31m\u202Eevil\u202C\t&amp;"});
  EXPECT_EQ(window().findChild<QPlainTextEdit*>()->toPlainText(),
            "<script>x</script>\n\\u{1B}[31m\\u{202E}evil\\u{202C}\t&amp;");
  std::vector<std::string> texts;
  for (const QLabel* const label : window().findChildren<QLabel*>()) {
    if (label->text().isEmpty()) continue;
    texts.push_back(label->text().toStdString());
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByKeyboard);
  }
  EXPECT_THAT(texts, ElementsAre("<h1>Heading</h1>", "<b>0.2</b>\\u{202E}x\\u{202C}"));
}

TEST_F(QtUpdateWindowsTest, notesCanBeReadButNotChanged) {
  showFound();
  auto& notes = *window().findChild<QPlainTextEdit*>();
  EXPECT_TRUE(runUntil([&] { return window().isActiveWindow(); }));
  notes.setFocus();
  QTest::keyClicks(&notes, "typed");
  QTest::keyClick(&notes, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(notes.toPlainText().toStdString(), news.notes);
  EXPECT_EQ(notes.textCursor().selectedText().size(), notes.toPlainText().size());
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&notes)->text(QAccessible::Name), "Release notes");
  QTest::keyClick(&notes, Qt::Key_Tab);
  EXPECT_FALSE(notes.hasFocus());
}

TEST_F(QtUpdateWindowsTest, longNotesScrollAndCostLittle) {
  UpdateNews most = news;
  for (int line = 0; line < 40'000; ++line) most.notes += "- one more change of one more kind\n";
  const auto start = std::chrono::steady_clock::now();
  showFound(most);
  QTest::qWait(0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_LE(window().height(), window().screen()->availableSize().height());
}

TEST_F(QtUpdateWindowsTest, aMinimisedWindowComesBack) {
  showFound();
  QWidget& shown = window();
  shown.showMinimized();
  EXPECT_TRUE(runUntil([&] { return shown.isMinimized(); }));
  windows_.bringToFront();
  EXPECT_FALSE(shown.isMinimized());
  EXPECT_TRUE(runUntil([&] { return shown.isActiveWindow(); }));
}

TEST_F(QtUpdateWindowsTest, anOpenAlertStaysInFront) {
  QtEventLoop loop;
  const QtApplication application(*qApp, loop);
  QtUserInterface userInterface(application);
  withNextDialog([&](QDialog& alert) {
    windows_.showMessage("Up to date", "", note("closed"));
    EXPECT_TRUE(runUntil([&] { return alert.isActiveWindow(); }));
    QTest::keyClick(&alert, Qt::Key_Return);
  });
  userInterface.runModal({"Text", "", {}});
  windows_.bringToFront();
  press(Qt::Key_Return);
  EXPECT_THAT(answers_, ElementsAre("closed"));
}

void save(QWidget& widget, const std::string& name) {
  const char* const folder = std::getenv("QUILLERY_SCREENSHOTS");
  if (folder == nullptr) return;
  QDir().mkpath(folder);
  EXPECT_TRUE(widget.grab().save(QString("%1/%2.png").arg(folder, name.c_str())));
}

void expectButtonsFit(const QWidget& window) {
  EXPECT_LE(window.height(), window.screen()->availableSize().height());
  for (const QPushButton* const one : window.findChildren<QPushButton*>())
    EXPECT_LE(one->sizeHint().width(), one->width());
}

QPalette darkPalette() {
  QPalette palette(QColor(45, 45, 45));
  palette.setColor(QPalette::Base, QColor(30, 30, 30));
  return palette;
}

TEST_F(QtUpdateWindowsTest, everythingFitsInEachFontAndPalette) {
  QtEventLoop loop;
  const QtApplication application(*qApp, loop);  // sets the icon
  const QFont usual = QApplication::font();
  const QPalette light = QApplication::palette();
  UpdateNews longer = news;
  for (int line = 0; line < 40; ++line)
    longer.notes += "\n- one more change of one more kind, in a line that wraps " + std::to_string(line);
  for (const auto& [name, palette] : {std::pair("light", light), std::pair("dark", darkPalette())})
    for (const int points : {10, 20}) {
      QFont font = usual;
      font.setPointSize(points);
      QApplication::setFont(font);
      QApplication::setPalette(palette);
      const std::string suffix = std::string("-") + name + "-" + std::to_string(points);
      showFound(longer);
      expectButtonsFit(window());
      save(window(), "update-found" + suffix);
      windows_.showProgress("Downloading Quillery 0.2.0…", note(""));
      windows_.setProgress(3, 5);
      expectButtonsFit(window());
      save(window(), "update-progress" + suffix);
      windows_.showMessage("The update couldn’t be installed.", "Its signature isn’t the maker’s.", note(""));
      expectButtonsFit(window());
      save(window(), "update-message" + suffix);
    }
  QApplication::setFont(usual);
  QApplication::setPalette(light);
}

}  // namespace
