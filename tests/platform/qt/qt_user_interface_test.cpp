// Alerts, answered through the widgets that a user would use.
#include "platform/qt/qt_user_interface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/qt/qt_event_loop.h"
#include "tests/platform/qt/dialog_driver.h"
#include "tests/platform/qt/run_until.h"

namespace {

using testing::ElementsAre;

std::vector<QPushButton*> buttonsFromTheLeft(const QDialog& dialog) {
  const QList<QPushButton*> found = dialog.findChildren<QPushButton*>();
  std::vector<QPushButton*> buttons(found.begin(), found.end());
  std::sort(buttons.begin(), buttons.end(), [](const auto* one, const auto* other) { return one->x() < other->x(); });
  return buttons;
}

// Returns the title as a user reads it, with or without a line under its mnemonic.
std::string titleOf(QPushButton& button) {
  return QAccessible::queryAccessibleInterface(&button)->text(QAccessible::Name).toStdString();
}

std::vector<std::string> titlesFromTheLeft(const QDialog& dialog) {
  std::vector<std::string> titles;
  for (QPushButton* button : buttonsFromTheLeft(dialog)) titles.push_back(titleOf(*button));
  return titles;
}

class QtUserInterfaceTest : public testing::Test {
 protected:
  QtEventLoop loop_;
  QtApplication application_{*qApp, loop_};
  QtUserInterface userInterface_{application_};
};

TEST_F(QtUserInterfaceTest, buttonsAreInOrderAndTheFirstIsTheDefault) {
  for (const std::vector<std::string>& titles :
       {std::vector<std::string>{"Quit", "Cancel"}, {"Cancel", "Quit"}, {"No", "Yes", "Help", "Apply"}, {"Only"}}) {
    withNextDialog([&](QDialog& dialog) {
      EXPECT_EQ(titlesFromTheLeft(dialog), titles);
      for (QPushButton* button : buttonsFromTheLeft(dialog))
        EXPECT_EQ(button->isDefault(), (titleOf(*button) == titles.front()));
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    EXPECT_EQ(userInterface_.runModal({"Text", "More", titles}), 0U);
  }
}

TEST_F(QtUserInterfaceTest, returnsTheIndexOfThePressedButton) {
  const std::vector<std::string> titles = {"OK", "Cancel", "Save & Go", "Help"};
  for (std::size_t index = 0; index < titles.size(); ++index) {
    withNextDialog([&](QDialog& dialog) { QTest::mouseClick(buttonsFromTheLeft(dialog).at(index), Qt::LeftButton); });
    EXPECT_EQ(userInterface_.runModal({"Text", "More", titles}), index);
  }
}

TEST_F(QtUserInterfaceTest, anAlertWithoutButtonsHasOk) {
  withNextDialog([](QDialog& dialog) {
    EXPECT_THAT(titlesFromTheLeft(dialog), ElementsAre("OK"));
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  EXPECT_EQ(userInterface_.runModal({"Text", "More", {}}), 0U);
}

TEST_F(QtUserInterfaceTest, escapeAndTheCloseButtonPressCancel) {
  for (const std::size_t place : {0U, 1U, 2U}) {
    std::vector<std::string> titles = {"One", "Two"};
    titles.insert(titles.begin() + static_cast<std::ptrdiff_t>(place), "Cancel");
    withNextDialog([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(userInterface_.runModal({"Text", "", titles}), place);
    withNextDialog([](QDialog& dialog) { dialog.close(); });
    EXPECT_EQ(userInterface_.runModal({"Text", "", titles}), place);
  }
}

TEST_F(QtUserInterfaceTest, escapeDoesNothingWithoutACancelButton) {
  withNextDialog([](QDialog& dialog) {
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(dialog.close());
    EXPECT_TRUE(dialog.isVisible());
    QTest::mouseClick(buttonsFromTheLeft(dialog).at(1), Qt::LeftButton);
  });
  EXPECT_EQ(userInterface_.runModal({"Text", "", {"Yes", "No"}}), 1U);
}

TEST_F(QtUserInterfaceTest, aPathInAnAlertCanBeSelectedAndCopied) {
  const QString path =
      "/home/ann/Library/Application Support/Quillery/Backups/Bookmarks-" + QString(80, 'x') + ".plist";
  withNextDialog([&](QDialog& dialog) {
    auto* const label = dialog.findChildren<QLabel*>().last();
    EXPECT_TRUE(runUntil([&] { return dialog.isActiveWindow(); }));
    QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(label, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), path) << "without what lets it break into lines";
    EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
    QTest::keyClick(label, Qt::Key_Return);
  });
  EXPECT_EQ(userInterface_.runModal({"Text", path.toStdString(), {"Yes", "No"}}), 0U);
}

TEST_F(QtUserInterfaceTest, aScreenReaderReadsALongPathUnbroken) {
  const QString path = "/home/ann/" + QString(200, 'x');
  withNextDialog([&](QDialog& dialog) {
    auto* const label = dialog.findChildren<QLabel*>().last();
    EXPECT_NE(label->text(), path);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), path);
    dialog.close();
  });
  userInterface_.runModal({"Text", path.toStdString(), {}});
}

TEST_F(QtUserInterfaceTest, activatingRestoresAMinimisedAlert) {
  withNextDialog([&](QDialog& dialog) {
    dialog.showMinimized();
    EXPECT_TRUE(dialog.isMinimized());
    userInterface_.activateIgnoringOthers();
    EXPECT_FALSE(dialog.isMinimized());
    EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &dialog; }));
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  userInterface_.runModal({"Text", "", {}});
}

TEST_F(QtUserInterfaceTest, theMainTextIsBoldAndOnTop) {
  withNextDialog([](QDialog& dialog) {
    QList<QLabel*> texts = dialog.findChildren<QLabel*>();
    erase_if(texts, [](const QLabel* label) { return label->text().isEmpty(); });
    ASSERT_EQ(texts.size(), 2);
    EXPECT_EQ(texts[0]->text(), "Main text");
    EXPECT_TRUE(texts[0]->font().bold());
    EXPECT_EQ(texts[1]->text(), "Other\ntext");
    EXPECT_FALSE(texts[1]->font().bold());
    EXPECT_LE(texts[0]->geometry().bottom(), texts[1]->geometry().top());
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  userInterface_.runModal({"Main text", "Other\ntext", {}});
}

TEST_F(QtUserInterfaceTest, textIsShownVerbatim) {
  const QString text = "<b>bold</b> & <img src='picture'>";
  withNextDialog([&](QDialog& dialog) {
    for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
      if (label->text().isEmpty()) continue;
      EXPECT_EQ(label->text(), text);
      EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  userInterface_.runModal({text.toStdString(), text.toStdString(), {}});
}

// Checks that every text lies within its label, and every label within the dialog or the dialog's scroll area.
void expectAllTextInside(QDialog& dialog) {
  for (QLabel* label : dialog.findChildren<QLabel*>()) {
    if (label->text().isEmpty()) continue;
    const QRect needed = label->fontMetrics().boundingRect(QRect(0, 0, label->width(), 1 << 20),
                                                           Qt::AlignTop | Qt::TextWordWrap, label->text());
    EXPECT_LE(needed.width(), label->width());
    EXPECT_LE(needed.height(), label->height());
    EXPECT_TRUE(label->parentWidget()->rect().contains(label->geometry()));
  }
  EXPECT_TRUE(dialog.screen()->availableGeometry().size().expandedTo(dialog.size()) ==
              dialog.screen()->availableGeometry().size())
      << "the dialog is larger than the screen";
}

TEST_F(QtUserInterfaceTest, longTextIsShownInFull) {
  std::string words;
  for (int count = 0; count < 80; ++count) words += "bookmarks are put in order ";
  for (const std::string& text : {words, std::string(300, 'W'), "/home/ann/" + std::string(200, 'x') + "/file.plist"}) {
    withNextDialog([](QDialog& dialog) {
      expectAllTextInside(dialog);
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    userInterface_.runModal({text.substr(0, 200), text, {}});
  }
}

TEST_F(QtUserInterfaceTest, textTallerThanTheScreenCanBeScrolled) {
  std::string lines;
  for (int count = 0; count < 400; ++count) lines += "line " + std::to_string(count) + "\n";
  withNextDialog([](QDialog& dialog) {
    expectAllTextInside(dialog);
    const auto* const scroller = dialog.findChild<QScrollArea*>();
    ASSERT_NE(scroller, nullptr);
    EXPECT_GT(scroller->widget()->height(), scroller->height());
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  userInterface_.runModal({"Text", lines, {}});
}

TEST_F(QtUserInterfaceTest, alertsNest) {
  std::vector<std::size_t> answers;
  withNextDialog([&](QDialog& outer) {
    withNextDialog([](QDialog& inner) { QTest::mouseClick(buttonsFromTheLeft(inner).at(2), Qt::LeftButton); });
    answers.push_back(userInterface_.runModal({"Inner", "", {"A", "B", "C"}}));
    QTest::mouseClick(buttonsFromTheLeft(outer).at(1), Qt::LeftButton);
  });
  answers.push_back(userInterface_.runModal({"Outer", "", {"A", "B"}}));
  EXPECT_THAT(answers, ElementsAre(2U, 1U));
}

TEST_F(QtUserInterfaceTest, activatingRaisesTheNextDialog) {
  userInterface_.activateIgnoringOthers();
  withNextDialog([](QDialog& dialog) {
    EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &dialog; }));
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  EXPECT_EQ(userInterface_.runModal({"Text", "", {"Yes", "No"}}), 0U);
}

TEST_F(QtUserInterfaceTest, activatingRaisesTheVisibleWindow) {
  QWidget one;
  QWidget other;
  other.show();
  one.show();
  one.activateWindow();
  EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &one; }));
  one.hide();
  userInterface_.activateIgnoringOthers();
  EXPECT_TRUE(runUntil([&] { return QApplication::activeWindow() == &other; }));
}

TEST_F(QtUserInterfaceTest, aTerminatingApplicationShowsNoAlert) {
  application_.terminate();
  EXPECT_EQ(userInterface_.runModal({"Text", "", {"Replace", "Cancel", "Help"}}), 1U);
  EXPECT_EQ(userInterface_.runModal({"Text", "", {"Replace", "Keep"}}), 1U);
  EXPECT_EQ(userInterface_.runModal({"Text", "", {}}), 0U);
}

}  // namespace
