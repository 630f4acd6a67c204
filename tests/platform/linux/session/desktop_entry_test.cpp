#include "platform/linux/session/desktop_entry.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

class DesktopEntryTest : public testing::Test {
 protected:
  std::optional<DesktopEntry> read(const std::string& content) {
    makeFile(scratch_.path("entry.desktop"), content);
    return DesktopEntry::read(scratch_.path("entry.desktop"));
  }

  ScratchFolder scratch_;
  EnvironmentScope everything_{"LC_ALL", std::nullopt};
  EnvironmentScope messages_{"LC_MESSAGES", std::nullopt};
  EnvironmentScope language_{"LANG", std::nullopt};
};

TEST_F(DesktopEntryTest, readsOnlyTheDesktopEntryGroup) {
  const auto entry = read(
      "# A comment\n\nStray=1\n[Desktop Entry]\nType=Application\n#Name=Comment\n  Name  =  Two Words  \r\n"
      "Equation=a=b\nEmpty=\nnonsense\nName=Second\n[Desktop Action new]\nName=Action\nExec=action\n");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->text("Name"), "Two Words");
  EXPECT_EQ(entry->text("Equation"), "a=b");
  EXPECT_EQ(entry->text("Empty"), "");
  for (const char* key : {"Exec", "Stray", "name", "nonsense", "#Name", ""}) EXPECT_EQ(entry->text(key), std::nullopt);
}

TEST_F(DesktopEntryTest, escapesAreResolved) {
  const auto entry = read(R"([Desktop Entry]
Type=Application
Name=\sa\sb\n\t\r\\n\;\q\\\\end\
)");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->text("Name"), " a b\n\t\r\\n\\;\\q\\\\end\\");
}

TEST_F(DesktopEntryTest, onlyTheWordTrueIsTrue) {
  const auto entry = read("[Desktop Entry]\nType=Application\nA=true\nB=false\nC=True\nD=1\nE=\n");
  ASSERT_TRUE(entry);
  EXPECT_TRUE(entry->isTrue("A"));
  for (const char* key : {"B", "C", "D", "E", "F"}) EXPECT_FALSE(entry->isTrue(key)) << key;
}

TEST_F(DesktopEntryTest, isAbsentUnlessItDescribesAnApplication) {
  EXPECT_FALSE(read(""));
  EXPECT_FALSE(read("[Desktop Entry]\nName=Nothing\n"));
  EXPECT_FALSE(read("[Desktop Entry]\nType=Link\nURL=https://example.com/\n"));
  EXPECT_FALSE(read("[Other]\nType=Application\n"));
  EXPECT_FALSE(DesktopEntry::read(scratch_.path("missing.desktop")));
  EXPECT_FALSE(DesktopEntry::read(scratch_.path()));
}

TEST_F(DesktopEntryTest, choosesTheBestMatchForTheUsersLanguage) {
  const auto entry = read(
      "[Desktop Entry]\nType=Application\nName=Plain\nName[de]=German\nName[de_AT]=Austrian\nName[de@x]=German X\n"
      "Name[fr_FR@x]=French X\n");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->localizedText("Name"), "Plain");
  const std::vector<std::pair<const char*, const char*>> languages{{"de", "German"},
                                                                   {"de_DE.UTF-8", "German"},
                                                                   {"de_AT.UTF-8", "Austrian"},
                                                                   {"de_AT@x", "Austrian"},
                                                                   {"de_DE.UTF-8@x", "German X"},
                                                                   {"fr_FR.UTF-8@x", "French X"},
                                                                   {"fr_FR", "Plain"},
                                                                   {"C", "Plain"}};
  for (const auto& [language, name] : languages) {
    language_.set(language);
    EXPECT_EQ(entry->localizedText("Name"), name) << language;
  }
  messages_.set("de");
  EXPECT_EQ(entry->localizedText("Name"), "German");
  everything_.set("de_AT");
  EXPECT_EQ(entry->localizedText("Name"), "Austrian");
  EXPECT_EQ(entry->localizedText("Icon"), std::nullopt);
}

}  // namespace
