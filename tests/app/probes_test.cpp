// What the program finds out before it sorts.
#include "app/probes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/bookmark_places.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProbesTest : public testing::Test {
 protected:
  VirtualMachine machine_;
};

TEST_F(ProbesTest, safariIsNotRunningWithoutAProcess) { EXPECT_FALSE(safariRunning()); }

TEST_F(ProbesTest, safariIsRunningWithOneProcessOrTwo) {
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.end("com.apple.Safari");
  EXPECT_FALSE(safariRunning());
}

TEST_F(ProbesTest, safariIsKnownByItsIdentifierOnly) {
  machine_.applications.start("com.apple.SafariTechnologyPreview");
  machine_.applications.start("com.apple.safari");
  machine_.applications.start("com.apple");
  EXPECT_FALSE(safariRunning());
}

TEST_F(ProbesTest, sortingIsPausedIfThatIsStored) {
  EXPECT_FALSE(sortingIsPaused());
  machine_.defaults.put("sortingPaused", true);
  EXPECT_TRUE(sortingIsPaused());
}

TEST_F(ProbesTest, theBookmarkFileIsInTheUsersLibrary) {
  EXPECT_EQ(bookmarkFile(), bookmarks);
  EXPECT_THAT(machine_.journal.entries(), IsEmpty());
}

TEST_F(ProbesTest, bookmarksCanBeReadIfReadingTheFileSucceeds) {
  machine_.files.put(bookmarks, "anything at all");
  EXPECT_TRUE(canReadBookmarks());
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks)) << "an actual read, and nothing else";
}

TEST_F(ProbesTest, bookmarksCanBeReadFromAnEmptyFile) {
  machine_.files.put(bookmarks, "");
  EXPECT_TRUE(canReadBookmarks());
}

TEST_F(ProbesTest, bookmarksCannotBeReadIfTheFileIsMissing) {
  EXPECT_FALSE(canReadBookmarks());
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks)) << "and nothing is said";
}

TEST_F(ProbesTest, bookmarksCannotBeReadIfReadingFailsInAnyWay) {
  machine_.files.put(bookmarks, "");
  int time = 0;
  for (const int problem : {EACCES, EPERM, EIO, ENOMEM}) {
    machine_.files.failOn("read", problem, ++time);
    EXPECT_FALSE(canReadBookmarks()) << problem;
  }
  EXPECT_TRUE(canReadBookmarks()) << "each time anew";
}

}  // namespace
