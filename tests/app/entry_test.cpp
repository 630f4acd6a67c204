// The entry point: its arguments, the single instance at login, and the order of its steps.
#include "app/entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "app/alert.h"
#include "platform/product.h"
#include "tests/support/controller_test.h"
#include "values/harmless_text.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* ownIdentifier = "com.fenwarde.quillery";

class Entry : public ControllerTest {
 protected:
  Entry() { desktopsMade = 0; }

  static int run(const Arguments& arguments) {
    return runQuillery(arguments, []() -> const Platform& {
      ++desktopsMade;
      return platform();
    });
  }
  void expectStarted(const Arguments& arguments) {
    bool hasRun = false;
    machine_.application.whileRunning([&] { hasRun = true; });
    EXPECT_EQ(run(arguments), 0);
    EXPECT_TRUE(hasRun);
    EXPECT_EQ(desktopsMade, 1);
  }
  void expectNotStarted() const {
    EXPECT_EQ(desktopsMade, 0);
    EXPECT_EQ(machine_.journal.count("run"), 0);
    EXPECT_EQ(machine_.journal.count("status item"), 0);
    EXPECT_EQ(machine_.journal.count("accessory"), 0);
  }

  // How often runQuillery() asked for the platform with a desktop. Static, because it takes a plain function.
  inline static int desktopsMade = 0;
};

TEST_F(Entry, becomesAnAccessoryThenRunsTheLoop) {
  machine_.application.whileRunning([&] {
    EXPECT_EQ(app, &machine_.application);
    ASSERT_NE(delegate, nullptr);
    EXPECT_EQ(delegate->item, machine_.screen.statusItem()) << "the launch has finished";
    EXPECT_FALSE(automatic);
  });
  automatic = true;
  EXPECT_EQ(run({}), 0);
  const Entries all = machine_.journal.entries();
  EXPECT_EQ(all.at(0), "accessory");
  EXPECT_EQ(all.at(1), "run");
  EXPECT_EQ(all.at(2), "status item");
  EXPECT_EQ(delegate, nullptr);
  EXPECT_EQ(app, nullptr);
}

// The end of the process inside the loop, as on a Mac. If the controller were destroyed, so would be its observers.
TEST_F(Entry, keepsTheControllerIfTheProcessEndsInsideTheLoop) {
  machine_.application.whileRunning([] {
    delegate->observers.emplace_back(nullptr, [](std::nullptr_t) { _exit(3); });
    std::exit(0);
  });
  EXPECT_EXIT(run({}), testing::ExitedWithCode(0), "");
}

TEST_F(Entry, readsSortingPausedBeforeTheLoopRuns) {
  machine_.defaults.put("sortingPaused", true);
  machine_.application.whileRunning([&] { EXPECT_FALSE(delegate->enabled); });
  EXPECT_EQ(run({}), 0);
}

TEST_F(Entry, selfTestRunsNothingElse) {
  EXPECT_EQ(run({"--self-test"}), 0);
  EXPECT_THAT(machine_.output.text(), StartsWith("PASS: "));
  expectNotStarted();
}

TEST_F(Entry, selfTestWinsOverLogin) {
  machine_.applications.start(ownIdentifier);
  EXPECT_EQ(run({"--login", "--self-test"}), 0);
  EXPECT_THAT(machine_.output.text(), HasSubstr("PASS: "));
  EXPECT_EQ(machine_.journal.count("running?"), 0);
}

TEST_F(Entry, secondLoginEndsBeforeAnyUserInterfaceExists) {
  machine_.applications.start(ownIdentifier);
  EXPECT_EQ(run({"--login"}), 0);
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("running? com.fenwarde.quillery"));
  expectNotStarted();
}

TEST_F(Entry, loginWithoutAnotherInstanceStarts) { expectStarted({"--login"}); }

TEST_F(Entry, loginStartsIfOtherInstancesAreUnknown) {
  machine_.applications.setUnresponsive(true);
  expectStarted({"--login"});
}

TEST_F(Entry, loginIgnoresItsOwnProcess) {
  machine_.applications.startAs(machine_.processes.processIdentifier(), ownIdentifier);
  expectStarted({"--login"});
}

TEST_F(Entry, loginFindsAnotherInstanceBesideItself) {
  machine_.applications.startAs(machine_.processes.processIdentifier(), ownIdentifier);
  machine_.applications.start(ownIdentifier);
  EXPECT_EQ(run({"--login"}), 0);
  expectNotStarted();
}

TEST_F(Entry, manualStartDoesNotLookForOtherInstances) {
  machine_.applications.start(ownIdentifier);
  expectStarted({});
  EXPECT_THAT(machine_.journal.entries(), Not(Contains("running? com.fenwarde.quillery"))) << "it does not even ask";
}

TEST_F(Entry, matchesWholeArgumentsOnly) {
  machine_.applications.start(ownIdentifier);
  expectStarted({"login", "self-test", "-psn_0_1", "-NSQuitAlwaysKeepsWindows", "NO", "-"});
}

TEST_F(Entry, printsItsHelpAndVersionWithoutADesktop) {
  for (const Arguments& arguments : {Arguments{"--help"}, {"-h"}, {"--login", "--help", "--nonsense"}}) {
    EXPECT_EQ(run(arguments), 0);
    EXPECT_THAT(machine_.output.text(), StartsWith("usage: quillery "));
  }
  for (const char* option : {"--login", "--self-test", "--help", "-h", "--version"})
    EXPECT_THAT(machine_.output.text(), HasSubstr(option));
  EXPECT_EQ(run({"--version"}), 0);
  EXPECT_THAT(machine_.output.text(), EndsWith("quillery " + std::string(product::version) + "\n"));
  expectNotStarted();
}

TEST_F(Entry, namesAWrongOption) {
  for (const char* option : {"--nonsense", "--login2", "--self-tests", "-x", "--", "--\x1b"}) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(run({"--login", option}), 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quillery: there is no option “" + harmlessLine(option) + "”; see quillery --help\n");
  }
  EXPECT_EQ(machine_.output.text(), "");
  expectNotStarted();
}

}  // namespace
