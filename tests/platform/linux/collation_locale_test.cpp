// The locale of runs inside and outside a session.
#include "platform/linux/collation_locale.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/linux/property_list_defaults.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

class RememberedLocale : public testing::Test {
 protected:
  EnvironmentScope all_{"LC_ALL", std::nullopt};
  EnvironmentScope collate_{"LC_COLLATE", std::nullopt};
  EnvironmentScope lang_{"LANG", std::nullopt};
  ScratchFolder scratch_;
  PropertyListDefaults settings_{scratch_.path("config")};
};

TEST_F(RememberedLocale, isThatOfTheLastSession) {
  lang_.set("sv_SE.UTF-8");
  rememberCollationLocale(settings_);
  lang_.set(std::nullopt);
  EXPECT_EQ(collationLocale(settings_), "sv_SE");
  rememberCollationLocale(settings_);
  EXPECT_EQ(collationLocale(settings_), "sv_SE") << "a run without a locale stores none";
  lang_.set("C");
  EXPECT_EQ(collationLocale(settings_), "root") << "the session's own counts first";
  rememberCollationLocale(settings_);
  lang_.set(std::nullopt);
  EXPECT_EQ(collationLocale(settings_), "root");
}

TEST_F(RememberedLocale, isTheRootIfNoneIsStored) {
  EXPECT_EQ(collationLocale(settings_), "root");
  for (const PlistValue& value : {PlistValue(1), PlistValue(u"../de"), PlistValue(u"")}) {
    settings_.set("sessionLocale", value);
    EXPECT_EQ(collationLocale(settings_), "root");
  }
}

TEST_F(RememberedLocale, isNotStoredForTheRoot) {
  lang_.set("C.UTF-8");
  rememberCollationLocale(settings_);
  EXPECT_FALSE(settings_.object("sessionLocale"));
}

}  // namespace
