// The path of the bookmark file, and the read probe.
#include "engine/bookmark_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "tests/support/bookmark_places.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BookmarkFileTest : public testing::Test {
 protected:
  VirtualMachine machine_;
};

TEST_F(BookmarkFileTest, isInTheUsersLibrary) {
  EXPECT_EQ(bookmarkFile(), bookmarks);
  EXPECT_THAT(machine_.journal.entries(), IsEmpty());
}

TEST_F(BookmarkFileTest, isReadableIfReadingItSucceeds) {
  machine_.files.put(bookmarks, "anything at all");
  EXPECT_EQ(readableBookmarks(), 15U);
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks)) << "an actual read and nothing else";
}

TEST_F(BookmarkFileTest, isReadableIfEmpty) {
  machine_.files.put(bookmarks, "");
  EXPECT_EQ(readableBookmarks(), 0U);
}

TEST_F(BookmarkFileTest, isNotReadableIfMissing) {
  EXPECT_EQ(readableBookmarks(), std::nullopt);
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks)) << "nothing is reported";
}

TEST_F(BookmarkFileTest, isNotReadableIfReadingFails) {
  machine_.files.put(bookmarks, "");
  int time = 0;
  for (const int problem : {EACCES, EPERM, EIO, ENOMEM}) {
    machine_.files.failOn("read", problem, ++time);
    EXPECT_EQ(readableBookmarks(), std::nullopt) << problem;
  }
  EXPECT_EQ(readableBookmarks(), 0U) << "every call reads again";
}

}  // namespace
