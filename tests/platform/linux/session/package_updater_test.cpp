#include "platform/linux/session/package_updater.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "values/plist_value.h"

namespace {

class MemoryDefaults : public UserDefaults {
 public:
  std::optional<PlistValue> object(const std::string& key) override {
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
  }
  void set(const std::string& key, const PlistValue& value) override { values_.insert_or_assign(key, value); }

 private:
  std::map<std::string, PlistValue> values_;
};

class PackageUpdaterTest : public testing::Test {
 protected:
  MemoryDefaults defaults_;
  PackageUpdater updater_{defaults_};
  std::shared_ptr<UpdaterController> controller_ = updater_.start({});
};

TEST_F(PackageUpdaterTest, checksAutomaticallyByDefault) {
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
  controller_->setAutomaticallyChecksForUpdates(false);
  EXPECT_FALSE(controller_->automaticallyChecksForUpdates());
  EXPECT_FALSE(updater_.start({})->automaticallyChecksForUpdates()) << "the setting is stored";
  EXPECT_EQ(defaults_.object("SUEnableAutomaticChecks").value().boolean(), false);
  controller_->setAutomaticallyChecksForUpdates(true);
  EXPECT_EQ(defaults_.object("SUEnableAutomaticChecks").value().boolean(), true);
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
}

TEST_F(PackageUpdaterTest, ignoresASettingThatIsNoBoolean) {
  defaults_.set("SUEnableAutomaticChecks", u"NO");
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
}

TEST_F(PackageUpdaterTest, canNeverCheck) {
  int calls = 0;
  const Observation observation = controller_->observeCanCheckForUpdates([&] { ++calls; });
  EXPECT_NE(observation, nullptr);
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(controller_->canCheckForUpdates());
  controller_->checkForUpdates();
  controller_->setAutomaticallyChecksForUpdates(false);
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(controller_->canCheckForUpdates());
}

}  // namespace
