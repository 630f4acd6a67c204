#include "platform/linux/session/package_updater.h"

#include <optional>

#include "values/plist_value.h"

namespace {

constexpr const char* automaticChecksKey = "SUEnableAutomaticChecks";

class PackageUpdaterController : public UpdaterController {
 public:
  explicit PackageUpdaterController(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

  bool automaticallyChecksForUpdates() const override {
    const std::optional<PlistValue> stored = userDefaults_.object(automaticChecksKey);
    return !stored || stored->boolean().value_or(true);
  }
  void setAutomaticallyChecksForUpdates(bool checks) override { userDefaults_.set(automaticChecksKey, checks); }

  bool canCheckForUpdates() const override { return false; }
  Observation observeCanCheckForUpdates(std::function<void()> handler) override {
    handler();
    return std::make_shared<bool>(false);  // the value never changes
  }
  void checkForUpdates() override {}

 private:
  UserDefaults& userDefaults_;
};

}  // namespace

std::shared_ptr<UpdaterController> PackageUpdater::start(const std::weak_ptr<UpdaterDelegate>&) {
  return std::make_shared<PackageUpdaterController>(userDefaults_);
}
