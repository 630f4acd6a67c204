#include "platform/linux/updates/update_choice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

AppcastItem item(const std::string& version) {
  AppcastItem item;
  item.version = item.shownVersion = version;
  item.system = "linux";
  item.processor = "amd64";
  item.minimumSystem = "12";
  return item;
}

class UpdateChoiceTest : public testing::Test {
 protected:
  // The version that is chosen; "none" without one.
  std::string chosen() const {
    const auto choice = choose(items_, wish_);
    return choice.item ? choice.item->version : "none";
  }

  std::vector<AppcastItem> items_ = {item("0.1"), item("0.3"), item("0.2")};
  UpdateWish wish_{"0.1.0", {.processor = "amd64", .version = "12", .isLikeDebian = true}, std::nullopt};
};

TEST_F(UpdateChoiceTest, isTheNewestVersion) { EXPECT_EQ(chosen(), "0.3"); }

TEST_F(UpdateChoiceTest, isNewerThanTheProgram) {
  wish_.ownVersion = "0.3.0";
  EXPECT_EQ(chosen(), "none");
  wish_.ownVersion = "1";
  EXPECT_EQ(chosen(), "none");
  EXPECT_FALSE(choose(items_, wish_).unsuitable);
}

TEST_F(UpdateChoiceTest, isForThisSystem) {
  items_[1].system = "macos";
  EXPECT_EQ(chosen(), "0.2");
  items_[2].system = "";
  EXPECT_EQ(chosen(), "none");
}

TEST_F(UpdateChoiceTest, isForThisProcessor) {
  items_[1].processor = "arm64";
  EXPECT_EQ(chosen(), "0.2");
  items_[2].processor = "";
  EXPECT_EQ(chosen(), "0.2") << "for every processor";
}

TEST_F(UpdateChoiceTest, isForASystemAsOldAsThis) {
  items_[1].minimumSystem = "13";
  EXPECT_EQ(chosen(), "0.2");
  wish_.system.version = "11";
  EXPECT_EQ(chosen(), "none");
  EXPECT_EQ(choose(items_, wish_).unsuitable->version, "0.3");
  items_[1].minimumSystem = "";
  EXPECT_EQ(chosen(), "0.3");
}

TEST_F(UpdateChoiceTest, leavesTheMinimumToAPackageManager) {
  wish_.system.version = "";
  EXPECT_EQ(chosen(), "0.3");
}

TEST_F(UpdateChoiceTest, isNothingForOtherSystems) {
  wish_.system.isLikeDebian = false;
  EXPECT_EQ(chosen(), "none");
  EXPECT_EQ(choose(items_, wish_).unsuitable->version, "0.3");
}

TEST_F(UpdateChoiceTest, isNotTheSkippedVersion) {
  wish_.skipped = "0.3.0";
  EXPECT_EQ(chosen(), "0.2");
}

}  // namespace
