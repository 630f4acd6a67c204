// Foundation's files, property lists, settings, calendars and programs: what the layer passes on and reports. Not
// judged: what GNUstep's parser accepts, and results of the rig's stand-ins.
#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/macos/appkit_applications.h"
#include "platform/macos/conversions.h"
#include "platform/macos/desktop/appkit_workspace.h"
#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_file_system.h"
#include "platform/macos/foundation_processes.h"
#include "platform/macos/foundation_property_lists.h"
#include "platform/macos/main_bundle.h"
#include "platform/macos/standard_defaults.h"
#include "tests/gnustep/instances.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

std::string textIn(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// --- Property lists ---

TEST(PropertyLists, areReadAsTheyWereWritten) {
  FoundationPropertyLists lists;
  const PlistValue value = PlistValue::dictionary(
      {{u"text", u"é & <b>"}, {u"number", 7}, {u"list", PlistValue::array({true, 2.5, Bytes(std::string("data"))})}});
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const Bytes written = lists.serialize(value, format);
    EXPECT_EQ(textIn(written).substr(0, 5), format == PropertyListFormat::xml ? "<?xml" : "bplis");
    const PropertyLists::Parsed read = lists.parse(written);
    EXPECT_EQ(read.value, value);
    EXPECT_EQ(read.format, format);
  }
  EXPECT_EQ(lists.parse(Bytes(std::string("{ a = (b, \"c d\"); }"))).format, PropertyListFormat::oldStyle);
  EXPECT_NE(textIn(lists.serialize(value, PropertyListFormat::oldStyle)).substr(0, 1), "<");
}

TEST(PropertyLists, reportWhatCannotBeRead) {
  FoundationPropertyLists lists;
  for (const char* malformed : {"", "bplist00", "<?xml version=\"1.0\"?><plist><dict><key>a</key></plist>"}) {
    try {
      lists.parse(Bytes(std::string(malformed)));
      ADD_FAILURE() << malformed;
    } catch (const Error& error) {
      EXPECT_EQ(error.description().find("an object of the class"), std::string::npos) << "the parser's own error";
    }
  }
}

TEST(PropertyLists, keepNoMemory) {
  FoundationPropertyLists lists;
  const auto owner = std::make_shared<std::string>();
  Bytes written =
      lists.serialize(PlistValue::array({u"text", Bytes(std::string(1000, 'x'))}), PropertyListFormat::binary);
  *owner = textIn(written);
  const Bytes bytes(owner, reinterpret_cast<const std::byte*>(owner->data()), owner->size());
  const int before = instancesOf(@"RigSharedData");
  const PlistValue value = lists.parse(bytes).value;
  EXPECT_EQ(instancesOf(@"RigSharedData"), before);
  EXPECT_EQ(owner.use_count(), 2);
  EXPECT_EQ(value.at(1).data()->size(), 1000U);
}

// --- Settings and the bundle ---

TEST(Settings, thatAreNoPropertyListCountAsAbsent) {
  @autoreleasepool {
    StandardDefaults defaults;
    [NSUserDefaults.standardUserDefaults registerDefaults:@{@"unusable" : [NSNull null], @"usable" : @5}];
    EXPECT_EQ(defaults.object("unusable"), std::nullopt);
    EXPECT_EQ(defaults.object("usable"), PlistValue(5));
    EXPECT_EQ(defaults.object("absent"), std::nullopt);
  }
}

TEST(MainBundleTest, knowsItsPathsAndInformation) {
  @autoreleasepool {
    MainBundle bundle;
    EXPECT_EQ(bundle.path(), textOf(NSBundle.mainBundle.bundlePath));
    EXPECT_EQ(bundle.executablePath(), std::filesystem::canonical("/proc/self/exe"));
    EXPECT_EQ(bundle.iconPath(), bundle.path() + "/Contents/Resources/AppIcon.icns");
    EXPECT_EQ(bundle.information("NoSuchKey"), std::nullopt);
    EXPECT_NE(bundle.information("NSExecutable"), std::optional<std::string>(""));
  }
}

// --- Time and order ---

TEST(Calendars, makeInstantsAndComponents) {
  @autoreleasepool {
    const auto berlin = FoundationCalendars().inTimeZone("Europe/Berlin");
    const Instant summer{std::chrono::seconds(1'782'936'000)};  // 2026-07-01 20:00:00 UTC, a Wednesday
    const DateComponents found = berlin->components(summer);
    EXPECT_EQ(found.year, 2026);
    EXPECT_EQ(found.month, 7);
    EXPECT_EQ(found.day, 1);
    EXPECT_EQ(found.hour, 22);
    EXPECT_EQ(found.minute, 0);
    EXPECT_EQ(found.second, 0);
    EXPECT_EQ(found.weekday, 4);
    EXPECT_EQ(berlin->instant({.year = 2026, .month = 7, .day = 1, .hour = 22}), summer);
  }
}

TEST(Calendars, searchForTheNextMatchOnly) {
  @autoreleasepool {
    const auto utc = FoundationCalendars().inTimeZone("UTC");
    const Instant start{std::chrono::seconds(1'782'936'000)};
    EXPECT_EQ(utc->nextDate(start, {.weekday = std::nullopt, .hour = 20, .minute = 5}),
              start + std::chrono::minutes(5));
    for (const int days : {1, 2, 3})
      EXPECT_EQ(utc->nextDate(start, {.weekday = 4 + days, .hour = 20, .minute = 0}),
                start + days * std::chrono::hours(24));
    for (const auto& [hour, minute] : {std::pair(-1, 0), std::pair(24, 0), std::pair(0, -1), std::pair(0, 60)})
      EXPECT_EQ(utc->nextDate(start, {.weekday = std::nullopt, .hour = hour, .minute = minute}), std::nullopt);
  }
}

TEST(Calendars, knowTheSystemsZoneAndNoOthers) {
  @autoreleasepool {
    EXPECT_EQ(FoundationCalendars().current()->components(Instant{}).year / 10, 197);
    EXPECT_THROW(FoundationCalendars().inTimeZone("No/Such"), Error);
  }
}

TEST(CollationOfTitles, ordersEqualTitlesByTheirUnits) {
  const FoundationCollation collation;
  EXPECT_TRUE(collation.localizedStandardCompare(u"a", u"b") < 0);
  EXPECT_TRUE(collation.localizedStandardCompare(u"b", u"A") > 0);
  EXPECT_TRUE(collation.localizedStandardCompare(u"same", u"same") == 0);
}

// --- Files ---

TEST(Files, haveErrorsWithTheirPath) {
  FoundationFileSystem files;
  const ScratchFolder scratch;
  for (const auto& call : {std::function<void()>([&] { files.read(scratch.path("none")); }),
                           std::function<void()>([&] { files.setMode(scratch.path("none"), 0600); })}) {
    try {
      call();
      ADD_FAILURE();
    } catch (const Error& error) {
      EXPECT_NE(error.description().find(" (" + scratch.path("none") + ")"), std::string::npos);
      EXPECT_FALSE(error.domain().empty());
    }
  }
}

TEST(Files, homeFolderIsEmptyForTheRoot) {
  const EnvironmentScope home("HOME", "/");
  EXPECT_EQ(FoundationFileSystem().homeFolder(), "");
}

// --- Programs and the session ---

TEST(Programs, reportWhyTheyWereNotLaunched) {
  try {
    FoundationProcesses().run("/nonexistent", {});
    ADD_FAILURE() << "launched";
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), ENOENT);
  }
}

// Starts a copy of sleep.
pid_t start(std::string path) {
  std::string seconds = "60";
  char* const arguments[] = {path.data(), seconds.data(), nullptr};
  pid_t child = 0;
  EXPECT_EQ(posix_spawn(&child, path.c_str(), nullptr, nullptr, arguments, environ), 0);
  return child;
}

class SessionTest : public testing::Test {
 protected:
  SessionTest() {
    for (const char* folder : {"running", "installed"}) std::filesystem::create_directory(rig_.path(folder));
  }
  std::string events() const {
    return std::filesystem::exists(rig_.path("events")) ? contentOf(rig_.path("events")) : "";
  }

  const ScratchFolder rig_;
  EnvironmentScope variable_{"QUILLERY_RIG", rig_.path()};
  AppKitWorkspace workspace_;
};

TEST_F(SessionTest, findsRunningApplications) {
  @autoreleasepool {
    makeFile(rig_.path("running/com.example.one"), std::to_string(getpid()));
    const auto found = AppKitApplications().withBundleIdentifier("com.example.one");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]->processIdentifier(), getpid());
    EXPECT_EQ(found[0]->bundleIdentifier(), "com.example.one");
    EXPECT_TRUE(AppKitApplications().withBundleIdentifier("com.example.two").empty());
    EXPECT_EQ(runningApplicationOf([[NSRunningApplication alloc] init])->bundleIdentifier(), std::nullopt);
    EXPECT_TRUE(AppKitApplications().areKnown());
  }
}

TEST_F(SessionTest, asksApplicationsToQuit) {
  @autoreleasepool {
    const pid_t child = start("/bin/sleep");
    makeFile(rig_.path("running/com.example.one"), std::to_string(child));
    EXPECT_TRUE(AppKitApplications().withBundleIdentifier("com.example.one")[0]->terminate());
    EXPECT_EQ(events(), "quit com.example.one\n");
  }
}

TEST_F(SessionTest, findsApplicationsThatAreNotRegisteredYet) {
  @autoreleasepool {
    const std::string folder = rig_.path("One.app/Contents/MacOS");
    std::filesystem::create_directories(folder);
    std::filesystem::create_directories(rig_.path("One.app/Resources"));
    std::filesystem::copy_file("/bin/sleep", folder + "/One");
    makeFile(rig_.path("One.app/Resources/Info-gnustep.plist"),  // GNUstep's place for Contents/Info.plist

             "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.example.one"
             "</string><key>CFBundleExecutable</key><string>One</string><key>NSExecutable</key><string>One</string>"
             "</dict></plist>");
    const pid_t child = start(folder + "/One");
    std::vector<std::shared_ptr<RunningApplication>> found;
    EXPECT_TRUE(runUntil([&] {
      found = AppKitApplications().withBundleIdentifier("com.example.one");
      return !found.empty();
    }));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]->processIdentifier(), child);
    EXPECT_EQ(found[0]->bundleIdentifier(), "com.example.one");
    EXPECT_FALSE(found[0]->terminate());
    EXPECT_TRUE(AppKitApplications().withBundleIdentifier("com.example.two").empty());
    kill(child, SIGKILL);
  }
}

TEST_F(SessionTest, locatesAndOpensThings) {
  @autoreleasepool {
    makeFile(rig_.path("installed/com.example.one"), "/bin/true");
    EXPECT_EQ(workspace_.locateApplication("com.example.one"), "/bin/true");
    EXPECT_EQ(workspace_.locateApplication("com.example.two"), std::nullopt);
    workspace_.openApplication("/bin/true");
    workspace_.openAddress("https://example.com/");
    workspace_.openAddress("not an address \xFF");
    std::filesystem::create_directory(rig_.path("a b"));
    workspace_.openFolder(rig_.path("a b/missing"));
    workspace_.revealFile("/tmp/c d");
    EXPECT_EQ(events(), "launch /bin/true\nopen https://example.com/\nopen file://" + rig_.path("a%20b") +
                            "/\nreveal /tmp/c d\n");
  }
}

TEST_F(SessionTest, knowsIfTheAgentIsSwitchedOff) {
  EXPECT_FALSE(workspace_.hasSwitchedOff("/agent.plist"));
  makeFile(rig_.path("switched-off"), "");
  EXPECT_TRUE(workspace_.hasSwitchedOff("/agent.plist"));
}

TEST_F(SessionTest, observesTerminationsAndWakes) {
  @autoreleasepool {
    std::vector<std::string> noted;
    const auto note = [&](const std::shared_ptr<RunningApplication>& application) {
      noted.push_back(application ? application->bundleIdentifier().value_or("no identifier") : "no application");
    };
    const Observation terminations = workspace_.observeTerminations(note);
    const Observation wakes = workspace_.observeWake([&] { noted.emplace_back("woke"); });
    NSNotificationCenter* const center = NSWorkspace.sharedWorkspace.notificationCenter;
    id const ended = [NSRunningApplication endedApplicationWithBundleIdentifier:@"com.example.one"];
    NSString* const name = NSWorkspaceDidTerminateApplicationNotification;
    [center postNotificationName:name object:nil userInfo:@{NSWorkspaceApplicationKey : ended}];
    [center postNotificationName:name object:nil userInfo:@{NSWorkspaceApplicationKey : @"something else"}];
    [center postNotificationName:name object:nil];
    [center postNotificationName:NSWorkspaceDidWakeNotification object:nil];
    EXPECT_TRUE(runUntil([&] { return noted.size() == 4; }));
    EXPECT_EQ(noted, (std::vector<std::string>{"com.example.one", "no application", "no application", "woke"}));
  }
}

}  // namespace
