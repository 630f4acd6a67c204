// The implementations of each interface that the tests of this folder run over: those of this system, which
// tests/platform/linux/implementations.cpp or tests/platform/macos/implementations.mm registers, and the virtual ones.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/calendar.h"
#include "platform/collation.h"
#include "platform/file_system.h"
#include "platform/processes.h"
#include "platform/property_lists.h"
#include "platform/user_defaults.h"
#include "tests/interfaces/implementation.h"
#include "tests/interfaces/main_loops.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

// Files

// A file system under test, an empty folder in it, and access to its files without it.
class FileSystemSubject {
 public:
  virtual ~FileSystemSubject() = default;

  virtual FileSystem& files() = 0;
  virtual std::string folder() const = 0;
  virtual void put(const std::string& path, const std::string& content, unsigned mode) = 0;
  virtual void remove(const std::string& path) = 0;
  virtual std::string content(const std::string& path) const = 0;
  virtual unsigned mode(const std::string& path) const = 0;
  // Returns the sorted names of the files in the folder, including hidden ones.
  virtual std::vector<std::string> names() const = 0;
};

// A file system of the machine's disks.
class RealFiles : public FileSystemSubject {
 public:
  explicit RealFiles(std::unique_ptr<FileSystem> files) : files_(std::move(files)) {}

  FileSystem& files() override { return *files_; }
  std::string folder() const override { return scratch_.path(); }
  void put(const std::string& path, const std::string& content, unsigned mode) override;
  void remove(const std::string& path) override { std::filesystem::remove(path); }
  std::string content(const std::string& path) const override { return contentOf(path); }
  unsigned mode(const std::string& path) const override { return modeOf(path); }
  std::vector<std::string> names() const override { return namesIn(scratch_.path()); }

 private:
  ScratchFolder scratch_;
  std::unique_ptr<FileSystem> files_;
};

Implementation<FileSystemSubject> nativeFileSystem();
std::vector<Implementation<FileSystemSubject>> fileSystems();

// Property lists

Implementation<PropertyLists> nativePropertyLists();
std::vector<Implementation<PropertyLists>> propertyLists();

// Calendars

// Calendars under test, and the time zone that their system has.
class CalendarsSubject {
 public:
  virtual ~CalendarsSubject() = default;

  virtual Calendars& calendars() = 0;
  virtual void moveTo(const std::string& zone) = 0;
};

// Calendars of a system that takes its time zone from the environment.
template <class SystemCalendars>
class ZoneInTheEnvironment : public CalendarsSubject {
 public:
  Calendars& calendars() override { return calendars_; }
  void moveTo(const std::string& zone) override { zone_.set(zone); }

 private:
  EnvironmentScope zone_{"TZ", std::nullopt};
  SystemCalendars calendars_;
};

Implementation<CalendarsSubject> nativeCalendars();
std::vector<Implementation<CalendarsSubject>> calendars();

// Collation, for the locales that an implementation can be given. They include "en".

struct CollationImplementation {
  std::string name;
  std::vector<std::string> locales;
  std::function<std::unique_ptr<Collation>(const std::string& locale)> make;
};

CollationImplementation nativeCollation();
std::vector<CollationImplementation> collations();

// Settings

// The keys that tests may use.
inline const std::string testKey = "quillery test";
inline const std::string otherTestKey = "quillery test: another key";

class UserDefaultsSubject {
 public:
  virtual ~UserDefaultsSubject() = default;

  virtual UserDefaults& defaults() = 0;
  // Makes the defaults anew, as the next start of the program does.
  virtual void startAnew() = 0;
};

Implementation<UserDefaultsSubject> nativeUserDefaults();
std::vector<Implementation<UserDefaultsSubject>> userDefaults();

// Processes

Implementation<Processes> nativeProcesses();
std::vector<Implementation<Processes>> processes();

// Main loops. See main_loops.h; on Linux quillery_tests has only the virtual one.

std::vector<Implementation<MainLoopSubject>> nativeMainLoops();
