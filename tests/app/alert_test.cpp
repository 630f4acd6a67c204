// The alert helper: a dialog, or one printed line while `automatic` is true.
#include "app/alert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AlertTest : public testing::Test {
 protected:
  VirtualMachine machine_;
};

TEST_F(AlertTest, showsADialogInFrontIfNotAutomatic) {
  machine_.userInterface.willAnswer(0);
  alert("Bookmarks sorted", "You can reopen Safari.");
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("accessory", "activate", "alert Bookmarks sorted"));
  ASSERT_EQ(machine_.userInterface.alerts().size(), 1U);
  EXPECT_EQ(machine_.userInterface.alerts()[0].messageText, "Bookmarks sorted");
  EXPECT_EQ(machine_.userInterface.alerts()[0].informativeText, "You can reopen Safari.");
  EXPECT_THAT(machine_.userInterface.alerts()[0].buttons, IsEmpty()) << "the platform adds its single default button";
}

TEST_F(AlertTest, ignoresTheAnswer) {
  machine_.userInterface.willAnswer(3);
  alert("Title", "Message");
}

TEST_F(AlertTest, printsOneFlushedLineAndNoWindowWhileAutomatic) {
  automatic = true;
  alert("Bookmarks could not be sorted", "Unrecognised Safari bookmark format. No changes made.");
  EXPECT_THAT(
      machine_.journal.entries(),
      ElementsAre("printed Bookmarks could not be sorted: Unrecognised Safari bookmark format. No changes made.\n"));
}

TEST_F(AlertTest, printsLineBreaksUnchangedAndAddsOne) {
  automatic = true;
  alert("Title", "one\n\ntwo\n");
  alert("Title", "");
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("printed Title: one\n\ntwo\n\n", "printed Title: \n"));
}

TEST_F(AlertTest, escapesTerminalControlCharacters) {
  automatic = true;
  alert("Title", "Backup: /home/\x1b[2J\x07");
  EXPECT_EQ(machine_.output.text(), "Title: Backup: /home/\\u{1B}[2J\\u{07}\n");
}

TEST_F(AlertTest, printsTheNextLineAfterOneThatCouldNotBePrinted) {
  automatic = true;
  machine_.journal.before("printed", [](const auto&) { throw std::runtime_error("the disk is full"); });
  alert("Title", "lost");
  alert("Title", "printed");
  EXPECT_EQ(machine_.output.text(), "Title: printed\n");
}

TEST_F(AlertTest, printsUtf8Unchanged) {
  automatic = true;
  alert("Title", "System Settings → Privacy");
  EXPECT_EQ(machine_.output.text(), "Title: System Settings → Privacy\n");
}

TEST_F(AlertTest, doesNotChangeAutomatic) {
  automatic = true;
  alert("Title", "Message");
  EXPECT_TRUE(automatic);
  automatic = false;
  machine_.userInterface.willAnswer(0);
  alert("Title", "Message");
  EXPECT_FALSE(automatic);
}

}  // namespace
