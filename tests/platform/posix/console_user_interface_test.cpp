#include "platform/posix/console_user_interface.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(ConsoleUserInterface, printsTheTitleAndTheText) {
  std::ostringstream output;
  ConsoleUserInterface userInterface(output);
  userInterface.becomeAccessory();
  userInterface.activateIgnoringOthers();
  EXPECT_EQ(output.str(), "");
  EXPECT_EQ(userInterface.runModal({"Already sorted", "Your Safari bookmarks are already in order.", {}}), 0U);
  EXPECT_EQ(output.str(), "Already sorted\nYour Safari bookmarks are already in order.\n");
}

TEST(ConsoleUserInterface, printsOnStandardErrorByDefault) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  ConsoleUserInterface().runModal({"Title", "Text", {"Retry", "Cancel"}});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Title\nText\n");
}

TEST(ConsoleUserInterface, escapesTerminalControlCharacters) {
  std::ostringstream output;
  ConsoleUserInterface(output).runModal({"Title\x1b[2J", "Text\x07", {}});
  EXPECT_EQ(output.str(), "Title\\u{1B}[2J\nText\\u{07}\n");
}

TEST(ConsoleUserInterface, returnsTheLastButton) {
  std::ostringstream output;
  ConsoleUserInterface userInterface(output);
  EXPECT_EQ(userInterface.runModal({"Title", "Text", {"OK"}}), 0U);
  EXPECT_EQ(userInterface.runModal({"Title", "Text", {"Retry", "Cancel"}}), 1U);
  EXPECT_EQ(userInterface.runModal({"Title", "Text", {"One", "Two", "Three"}}), 2U);
}

}  // namespace
