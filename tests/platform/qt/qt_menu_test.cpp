#include "platform/qt/qt_menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/qt/run_until.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class QtMenuTest : public testing::Test {
 protected:
  QAction& action(qsizetype place) { return *menu_->menu().actions().at(place); }

  std::shared_ptr<QtMenu> menu_ = std::make_shared<QtMenu>();
  std::vector<std::string> done_;
};

TEST_F(QtMenuTest, itemsAndSeparatorsAreInOrder) {
  menu_->addItem("First", nullptr);
  menu_->addSeparator();
  menu_->addItem("Second", nullptr);
  ASSERT_EQ(menu_->menu().actions().size(), 3);
  EXPECT_EQ(action(0).text(), "First");
  EXPECT_TRUE(action(1).isSeparator());
  EXPECT_EQ(action(2).text(), "Second");
  EXPECT_FALSE(action(2).isSeparator());
}

TEST_F(QtMenuTest, aNewItemIsEnabledAndNotCheckable) {
  menu_->addItem("Item", nullptr);
  EXPECT_TRUE(action(0).isEnabled());
  EXPECT_FALSE(action(0).isCheckable());
  EXPECT_TRUE(action(0).shortcut().isEmpty());
}

TEST_F(QtMenuTest, titlesAreShownVerbatim) {
  const auto item = menu_->addItem("Sort & Quit", nullptr);
  EXPECT_EQ(item->title(), "Sort & Quit");
  EXPECT_EQ(action(0).text(), "Sort && Quit") << "one ampersand would mark a key";
  item->setTitle("Über …");
  EXPECT_EQ(item->title(), "Über …");
  EXPECT_EQ(action(0).text(), QString::fromUtf8("Über …"));
}

TEST_F(QtMenuTest, itemsCanBeEnabledAndMarked) {
  const auto item = menu_->addItem("Item", nullptr);
  item->setEnabled(false);
  item->setOn(true);
  EXPECT_FALSE(action(0).isEnabled());
  EXPECT_TRUE(action(0).isCheckable());
  EXPECT_TRUE(action(0).isChecked());
  item->setEnabled(true);
  item->setOn(false);
  EXPECT_TRUE(action(0).isEnabled());
  EXPECT_FALSE(action(0).isChecked());
}

TEST_F(QtMenuTest, choosingAnItemRunsItsActionAndKeepsItsMark) {
  const auto item = menu_->addItem("Item", [this] { done_.emplace_back("chosen"); });
  item->setOn(true);
  action(0).trigger();
  EXPECT_THAT(done_, IsEmpty());
  EXPECT_TRUE(runUntil([this] { return !done_.empty(); }));
  EXPECT_TRUE(action(0).isChecked());
  item->setOn(false);
  action(0).trigger();
  EXPECT_TRUE(runUntil([this] { return done_.size() == 2; }));
  EXPECT_FALSE(action(0).isChecked());
}

TEST_F(QtMenuTest, aDisabledItemCannotBeChosen) {
  menu_->addItem("Item", [this] { done_.emplace_back("disabled"); })->setEnabled(false);
  menu_->addItem("Other", [this] { done_.emplace_back("enabled"); });
  action(0).trigger();
  action(1).trigger();
  EXPECT_TRUE(runUntil([this] { return !done_.empty(); }));
  EXPECT_THAT(done_, ElementsAre("enabled"));
}

TEST_F(QtMenuTest, anActionMayDestroyTheMenu) {
  const auto item = menu_->addItem("Item", [this] {
    menu_.reset();
    done_.emplace_back("destroyed");
  });
  action(0).trigger();
  EXPECT_TRUE(runUntil([this] { return !done_.empty(); }));
  item->setTitle("Still valid");
  item->setEnabled(true);
  item->setOn(true);
  EXPECT_EQ(item->title(), "Still valid");
}

TEST_F(QtMenuTest, storesAutoenablesItems) {
  EXPECT_TRUE(menu_->autoenablesItems());
  menu_->setAutoenablesItems(false);
  EXPECT_FALSE(menu_->autoenablesItems());
}

}  // namespace
