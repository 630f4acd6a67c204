// The implementations of macOS, for the tests of interfaces.
#include "tests/interfaces/implementations.h"

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/main_run_loop.h"
#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_file_system.h"
#include "platform/macos/foundation_processes.h"
#include "platform/macos/foundation_property_lists.h"
#include "platform/macos/standard_defaults.h"

namespace {

// The settings of the test program itself, from which the tests' keys are removed again.
class SettingsOfTheTests : public UserDefaultsSubject {
 public:
  SettingsOfTheTests() { forget(); }
  ~SettingsOfTheTests() override { forget(); }
  SettingsOfTheTests(const SettingsOfTheTests&) = delete;
  SettingsOfTheTests& operator=(const SettingsOfTheTests&) = delete;

  UserDefaults& defaults() override { return defaults_; }
  void startAnew() override { defaults_ = StandardDefaults(); }

 private:
  static void forget() {
    for (const std::string& key : {testKey, otherTestKey})
      [NSUserDefaults.standardUserDefaults setObject:nil forKey:stringOf(key)];
  }

  StandardDefaults defaults_;
};

class LoopOfTheMainThread : public MainLoopSubject {
 public:
  MainLoop& loop() override { return loop_; }
  bool runUntil(const std::function<bool()>& condition) override {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      if (std::chrono::steady_clock::now() >= end) return false;
      @autoreleasepool {
        [NSRunLoop.mainRunLoop runUntilDate:[NSDate dateWithTimeIntervalSinceNow:0.001]];
      }
    }
    return true;
  }
  void beBusyFor(std::chrono::milliseconds span) override { beBusy(span); }

 private:
  MainRunLoop loop_;
};

}  // namespace

Implementation<FileSystemSubject> nativeFileSystem() {
  return {"Foundation", [] { return std::make_unique<RealFiles>(std::make_unique<FoundationFileSystem>()); }};
}

Implementation<PropertyLists> nativePropertyLists() {
  return {"Foundation", [] { return std::make_unique<FoundationPropertyLists>(); }};
}

// Foundation takes the time zone from the environment too, each time that it forgets the one that it has.
Implementation<CalendarsSubject> nativeCalendars() {
  return {"Foundation", [] { return std::make_unique<ZoneInTheEnvironment<FoundationCalendars>>(); }};
}

// Foundation compares by the user's language only, which must be English for the tests.
CollationImplementation nativeCollation() {
  return {"Foundation", {"en"}, [](const std::string&) { return std::make_unique<FoundationCollation>(); }};
}

Implementation<UserDefaultsSubject> nativeUserDefaults() {
  return {"Standard", [] { return std::make_unique<SettingsOfTheTests>(); }};
}

Implementation<Processes> nativeProcesses() {
  return {"Foundation", [] { return std::make_unique<FoundationProcesses>(); }};
}

std::vector<Implementation<MainLoopSubject>> nativeMainLoops() {
  return {{"RunLoop", [] { return std::make_unique<LoopOfTheMainThread>(); }}};
}
