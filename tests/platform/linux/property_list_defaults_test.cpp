// Settings in real files, which several processes write at the same time.
#include "platform/linux/property_list_defaults.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/product.h"
#include "tests/platform/linux/separate_mounts.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string identifier(product::bundleIdentifier);
const std::string fileName = identifier + ".plist";
const std::string lockName = fileName + ".lock";

// Returns an XML property list with a dictionary of these entries.
std::string xmlFile(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n<dict>\n" +
         entries + "</dict>\n</plist>\n";
}

std::string integerEntry(const std::string& key, int number) {
  return "\t<key>" + key + "</key>\n\t<integer>" + std::to_string(number) + "</integer>\n";
}

std::string damagedName(int number) { return identifier + ".damaged-" + std::to_string(number) + ".plist"; }

class PropertyListDefaultsTest : public testing::Test {
 protected:
  ScratchFolder scratch_;
  std::string folder_ = scratch_.path();
  std::string file_ = scratch_.path(fileName);
  PropertyListDefaults defaults_{folder_};

  // Returns what `set` prints on standard error.
  static std::string outputOfSetting(PropertyListDefaults& defaults, const std::string& key, const PlistValue& value) {
    testing::internal::CaptureStderr();
    defaults.set(key, value);
    return testing::internal::GetCapturedStderr();
  }
  std::string outputOfSetting(const std::string& key, const PlistValue& value) {
    return outputOfSetting(defaults_, key, value);
  }
};

// The folder

class ConfigurationFolderTest : public testing::Test {
 protected:
  EnvironmentScope home_{"HOME", "/home/someone"};
  EnvironmentScope configured_{"XDG_CONFIG_HOME", std::nullopt};
};

TEST_F(ConfigurationFolderTest, isInTheHomeFolder) {
  EXPECT_EQ(configurationFolder(), "/home/someone/.config");
  home_.set("/");
  EXPECT_EQ(configurationFolder(), "/.config");
}

TEST_F(ConfigurationFolderTest, isInTheEnvironmentIfThatIsAbsolute) {
  configured_.set("/elsewhere/settings");
  EXPECT_EQ(configurationFolder(), "/elsewhere/settings");
  for (const char* notAbsolute : {"", "settings", "./settings", "~/settings"}) {
    configured_.set(notAbsolute);
    EXPECT_EQ(configurationFolder(), "/home/someone/.config") << notAbsolute;
  }
}

TEST_F(ConfigurationFolderTest, isTheDefaultFolderOfTheSettings) {
  const ScratchFolder scratch;
  home_.set(scratch.path());
  PropertyListDefaults().set("number", 1);
  EXPECT_EQ(contentOf(scratch.path(".config/" + fileName)), xmlFile(integerEntry("number", 1)));
  configured_.set(scratch.path("other"));
  EXPECT_EQ(PropertyListDefaults().object("number"), std::nullopt);
  PropertyListDefaults().set("number", 2);
  EXPECT_EQ(contentOf(scratch.path("other/" + fileName)), xmlFile(integerEntry("number", 2)));
  EXPECT_EQ(contentOf(scratch.path(".config/" + fileName)), xmlFile(integerEntry("number", 1)));
}

TEST_F(PropertyListDefaultsTest, storesNothingWithoutAFolder) {
  PropertyListDefaults nowhere("");
  EXPECT_THAT(outputOfSetting(nowhere, "key", 1), HasSubstr("no home folder"));
  EXPECT_EQ(nowhere.object("key"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists("/" + fileName));
}

// Values

TEST_F(PropertyListDefaultsTest, createsNoFileWhenItReadsAnAbsentValue) {
  EXPECT_EQ(defaults_.object("key"), std::nullopt);
  EXPECT_EQ(PropertyListDefaults(scratch_.path("missing")).object("key"), std::nullopt);
  EXPECT_THAT(namesIn(folder_), IsEmpty());
}

TEST_F(PropertyListDefaultsTest, returnsValuesOfEveryKind) {
  const std::vector<std::pair<std::string, PlistValue>> values = {
      {"string", u"Lesezeichen & <Ordner> \u00FC \U0001F4D6"},
      {"empty string", u""},
      {"integer", -3},
      {"largest integer", std::numeric_limits<std::uint64_t>::max()},
      {"smallest integer", std::numeric_limits<std::int64_t>::min()},
      {"real", 0.1},
      {"infinity", -std::numeric_limits<double>::infinity()},
      {"true", true},
      {"false", false},
      {"date", PlistDate{700000000}},
      {"data", Bytes(std::string("\0\1\xFF data", 8))},
      {"array", PlistValue::array({1, u"two", PlistValue::array({})})},
      {"dictionary", PlistValue::dictionary({{u"inner", PlistValue::array({true, 2.5})}})},
      {"", u"the key may be empty"},
      {"\xC3\xA9t\xC3\xA9 <&>", u"the key may be any text"},
  };
  for (const auto& [key, value] : values) EXPECT_EQ(outputOfSetting(key, value), "") << key;
  PropertyListDefaults other(folder_);
  for (const auto& [key, value] : values) EXPECT_EQ(other.object(key), value) << key;
}

TEST_F(PropertyListDefaultsTest, returnsValuesThatOutliveTheFile) {
  defaults_.set("key", u"text that is longer than what a string holds in itself");
  const std::optional<PlistValue> value = defaults_.object("key");
  std::filesystem::resize_file(file_, 0);
  std::filesystem::remove(file_);
  EXPECT_EQ(value, PlistValue(u"text that is longer than what a string holds in itself"));
}

TEST_F(PropertyListDefaultsTest, refusesValuesThatXmlCannotRepresent) {
  defaults_.set("key", 1);
  EXPECT_THAT(outputOfSetting("key", std::u16string(1, u'\xD800')), HasSubstr("unpaired surrogate"));
  EXPECT_THAT(outputOfSetting("other", PlistDate{std::nan("")}), HasSubstr("date"));
  PlistValue deep = 1;
  for (unsigned level = 0; level < plistMaximumDepth; ++level) deep = PlistValue::array({deep});
  EXPECT_THAT(outputOfSetting("deep", deep), HasSubstr("nested too deeply"));
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 1)));
}

// The file

TEST_F(PropertyListDefaultsTest, writesXmlAndKeepsTheOrderOfEntries) {
  defaults_.set("zebra", 1);
  defaults_.set("apple", 2);
  defaults_.set("mango", 3);
  defaults_.set("zebra", 4);
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("zebra", 4) + integerEntry("apple", 2) + integerEntry("mango", 3)));
}

TEST_F(PropertyListDefaultsTest, keepsUnknownEntries) {
  makeFile(file_, xmlFile("<key>a</key><array><date>2001-01-01T00:00:00Z</date></array><key>key</key><true/>"
                          "<key>z</key><data>AAEC</data>"));
  defaults_.set("key", false);
  EXPECT_EQ(defaults_.object("a"), PlistValue::array({PlistDate{0}}));
  EXPECT_EQ(defaults_.object("key"), PlistValue(false));
  EXPECT_EQ(defaults_.object("z"), PlistValue(Bytes(std::string("\0\1\2", 3))));
}

TEST_F(PropertyListDefaultsTest, readsOtherFormatsAndWritesXml) {
  makeFile(file_, "{ key = text; other = more; }");
  EXPECT_EQ(defaults_.object("key"), PlistValue(u"text"));
  defaults_.set("key", u"new");
  EXPECT_EQ(contentOf(file_), xmlFile("\t<key>key</key>\n\t<string>new</string>\n"
                                      "\t<key>other</key>\n\t<string>more</string>\n"));
}

TEST_F(PropertyListDefaultsTest, createsPrivateFilesAndFolders) {
  const std::string folder = scratch_.path("one/two");
  const mode_t old = umask(0);
  PropertyListDefaults(folder).set("key", 1);
  umask(old);
  EXPECT_EQ(modeOf(scratch_.path("one")), 0700U);
  EXPECT_EQ(modeOf(folder), 0700U);
  EXPECT_EQ(modeOf(folder + "/" + fileName), 0600U);
  EXPECT_EQ(modeOf(folder + "/" + lockName), 0600U);
}

TEST_F(PropertyListDefaultsTest, keepsTheModesOfExistingFilesAndFolders) {
  makeFile(file_, xmlFile(integerEntry("key", 1)));
  chmod(file_.c_str(), 0640);
  defaults_.set("key", 2);
  EXPECT_EQ(defaults_.object("key"), PlistValue(2));
  EXPECT_EQ(modeOf(file_), 0640U);
  EXPECT_EQ(modeOf(folder_), 0755U);
}

TEST_F(PropertyListDefaultsTest, leavesNothingButTheFileAndTheLock) {
  for (int number = 0; number < 20; ++number) defaults_.set("key", number);
  EXPECT_THAT(namesIn(folder_), ElementsAre(fileName, lockName));
}

TEST_F(PropertyListDefaultsTest, neverChangesTheFileInPlace) {
  defaults_.set("key", 1);
  std::filesystem::create_hard_link(file_, scratch_.path("old"));
  defaults_.set("key", 2);
  EXPECT_EQ(contentOf(scratch_.path("old")), xmlFile(integerEntry("key", 1)));
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 2)));
}

TEST_F(PropertyListDefaultsTest, doesNotWriteAValueThatIsAlreadyStored) {
  // This layout is not ours, so any write would change the file.
  const std::string content = xmlFile("<key>key</key><array><integer>1</integer></array>");
  makeFile(file_, content);
  defaults_.set("key", PlistValue::array({1}));
  EXPECT_EQ(contentOf(file_), content);
  EXPECT_THAT(namesIn(folder_), ElementsAre(fileName));
}

TEST_F(PropertyListDefaultsTest, doesNotWriteADateAgainForItsFraction) {
  defaults_.set("date", PlistDate{700000000.25});
  std::filesystem::create_hard_link(file_, scratch_.path("same"));
  defaults_.set("date", PlistDate{700000000.25});
  EXPECT_TRUE(std::filesystem::equivalent(file_, scratch_.path("same")));
  EXPECT_EQ(defaults_.object("date"), PlistValue(PlistDate{700000000}));
}

TEST_F(PropertyListDefaultsTest, followsASymbolicLink) {
  const ScratchFolder elsewhere;
  makeFile(elsewhere.path("settings"), xmlFile(integerEntry("key", 1)));
  std::filesystem::create_symlink(elsewhere.path("settings"), file_);
  EXPECT_EQ(defaults_.object("key"), PlistValue(1));
  defaults_.set("key", 2);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(contentOf(elsewhere.path("settings")), xmlFile(integerEntry("key", 2)));
  EXPECT_THAT(namesIn(elsewhere.path()), ElementsAre("settings"));
}

TEST_F(PropertyListDefaultsTest, followsADanglingSymbolicLink) {
  const ScratchFolder elsewhere;
  std::filesystem::create_symlink(elsewhere.path("settings"), file_);
  EXPECT_EQ(defaults_.object("key"), std::nullopt);
  defaults_.set("key", 1);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(contentOf(elsewhere.path("settings")), xmlFile(integerEntry("key", 1)));
  EXPECT_EQ(modeOf(elsewhere.path("settings")), 0600U);
}

// Other processes

TEST_F(PropertyListDefaultsTest, seesTheChangesOfAnotherProcessAtOnce) {
  defaults_.set("key", 1);
  EXPECT_EQ(defaults_.object("key"), PlistValue(1));
  inChildProcess([&] {
    PropertyListDefaults(folder_).set("key", 2);
    return std::string();
  });
  EXPECT_EQ(defaults_.object("key"), PlistValue(2));
  std::filesystem::remove(file_);
  EXPECT_EQ(defaults_.object("key"), std::nullopt);
}

// Sets `count` keys that begin with `name`, and one key that every caller sets.
void setMany(const std::string& folder, const std::string& name, int count) {
  PropertyListDefaults defaults(folder);
  for (int number = 0; number < count; ++number) {
    defaults.set(name + std::to_string(number), number);
    defaults.set("shared", utf16(name + std::to_string(number)));
  }
}

pid_t inBackground(const std::function<void()>& work) {
  const pid_t process = fork();
  if (process == 0) {
    work();
    _exit(0);
  }
  return process;
}

void expectSuccess(pid_t process) {
  int status = -1;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  EXPECT_EQ(status, 0);
}

TEST_F(PropertyListDefaultsTest, losesNoKeyOfConcurrentProcesses) {
  constexpr int count = 150;
  const std::vector<std::string> names = {"first", "second", "third"};
  std::vector<pid_t> processes;
  processes.reserve(names.size());
  for (const std::string& name : names)
    processes.push_back(inBackground([&] { setMany(scratch_.path("new"), name, count); }));
  for (const pid_t process : processes) expectSuccess(process);
  PropertyListDefaults defaults(scratch_.path("new"));
  for (const std::string& name : names)
    for (int number = 0; number < count; ++number)
      EXPECT_EQ(defaults.object(name + std::to_string(number)), PlistValue(number)) << name << number;
  EXPECT_THAT(namesIn(scratch_.path("new")), ElementsAre(fileName, lockName));
}

TEST_F(PropertyListDefaultsTest, losesNoKeyOfConcurrentThreads) {
  constexpr int count = 100;
  std::thread first([&] { setMany(folder_, "first", count); });
  std::thread second([&] { setMany(folder_, "second", count); });
  first.join();
  second.join();
  for (const char* name : {"first", "second"})
    for (int number = 0; number < count; ++number)
      EXPECT_EQ(defaults_.object(name + std::to_string(number)), PlistValue(number)) << name << number;
}

TEST_F(PropertyListDefaultsTest, readsTheOldOrNewValueDuringAWrite) {
  constexpr int last = 300;
  defaults_.set("number", 0);
  const pid_t writer = inBackground([&] {
    PropertyListDefaults defaults(folder_);
    for (int number = 1; number <= last; ++number) defaults.set("number", number);
  });
  std::int64_t seen = 0;
  int status = 0;
  while (waitpid(writer, &status, WNOHANG) == 0) {
    const std::optional<PlistValue> value = defaults_.object("number");
    ASSERT_TRUE(value && value->integer());
    const std::int64_t number = value->integer()->signedValue().value_or(-1);
    ASSERT_GE(number, seen);
    seen = number;
  }
  EXPECT_EQ(status, 0);
  EXPECT_EQ(defaults_.object("number"), PlistValue(last));
}

// Returns true if a process waits for a lock on this file. /proc/locks marks waiting processes with an arrow.
bool isWaitedFor(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  const std::string inode = ":" + std::to_string(status.st_ino) + " ";
  const std::string locks = contentOf("/proc/locks");
  for (std::size_t start = 0, end = 0; (end = locks.find('\n', start)) != std::string::npos; start = end + 1) {
    const std::string line = locks.substr(start, end - start);
    if (line.find("->") != std::string::npos && line.find(inode) != std::string::npos) return true;
  }
  return false;
}

TEST_F(PropertyListDefaultsTest, waitsForTheLockOnlyToWrite) {
  if (!std::filesystem::exists("/proc/locks"))
    GTEST_SKIP() << "this system does not list the processes that wait for a lock";
  defaults_.set("key", 1);
  const int lock = open(scratch_.path(lockName).c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(lock, 0);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  std::thread setter([&] { PropertyListDefaults(folder_).set("key", 3); });
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!isWaitedFor(scratch_.path(lockName)) && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  EXPECT_TRUE(isWaitedFor(scratch_.path(lockName)));
  EXPECT_EQ(defaults_.object("key"), PlistValue(1));
  makeFile(file_, xmlFile(integerEntry("key", 2) + integerEntry("other", 2)));  // by the owner of the lock
  close(lock);
  setter.join();
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 3) + integerEntry("other", 2)));
}

TEST_F(PropertyListDefaultsTest, releasesTheLockAfterEverySet) {
  defaults_.set("key", 1);
  const int lock = open(scratch_.path(lockName).c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(lock, 0);
  EXPECT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  close(lock);
}

// Damage

const std::vector<std::string>& damagedContents() {
  static const std::vector<std::string> contents = {
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n\t<key>key</key>\n\t<inte",
      "bplist00 and then nothing that makes sense",
      std::string("\0\0\0\0", 4),
      "<plist version=\"1.0\"><array><string>key</string></array></plist>",  // a property list without a dictionary
      "just text",
  };
  return contents;
}

TEST_F(PropertyListDefaultsTest, readsADamagedFileAsEmptyAndKeepsIt) {
  for (const std::string& content : damagedContents()) {
    makeFile(file_, content);
    EXPECT_EQ(defaults_.object("key"), std::nullopt) << content;
    EXPECT_EQ(contentOf(file_), content);
    EXPECT_THAT(namesIn(folder_), ElementsAre(fileName));
  }
}

TEST_F(PropertyListDefaultsTest, savesEveryDamagedFileBesideTheNewOne) {
  int number = 0;
  for (const std::string& content : damagedContents()) {
    makeFile(file_, content);
    const std::string kept = scratch_.path(damagedName(++number));
    EXPECT_THAT(outputOfSetting("key", number), HasSubstr(kept));
    EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", number)));
    EXPECT_EQ(contentOf(kept), content);
    EXPECT_EQ(modeOf(kept), 0600U);
  }
  for (int earlier = 1; earlier <= number; ++earlier)
    EXPECT_EQ(contentOf(scratch_.path(damagedName(earlier))), damagedContents()[static_cast<std::size_t>(earlier - 1)]);
}

TEST_F(PropertyListDefaultsTest, savesADamagedFileUnderAnUnusedName) {
  makeFile(scratch_.path(damagedName(1)), "kept last year");
  std::filesystem::create_directory(scratch_.path(damagedName(2)));
  std::filesystem::create_symlink("nowhere", scratch_.path(damagedName(3)));
  makeFile(file_, "damaged");
  EXPECT_THAT(outputOfSetting("key", 1), HasSubstr(damagedName(4)));
  EXPECT_EQ(contentOf(scratch_.path(damagedName(1))), "kept last year");
  EXPECT_EQ(contentOf(scratch_.path(damagedName(4))), "damaged");
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("nowhere")));
}

TEST_F(PropertyListDefaultsTest, savesADamagedFileOnlyOnce) {
  // As after a `set` that had no room for the new file.
  makeFile(scratch_.path(damagedName(1)), "damaged");
  makeFile(file_, "damaged");
  EXPECT_EQ(outputOfSetting("key", 1), "");
  EXPECT_EQ(defaults_.object("key"), PlistValue(1));
  EXPECT_THAT(namesIn(folder_), ElementsAre(damagedName(1), fileName, lockName));
}

TEST_F(PropertyListDefaultsTest, savesNoCopyOfAnEmptyFile) {
  makeFile(file_, "");
  EXPECT_EQ(defaults_.object("key"), std::nullopt);
  EXPECT_EQ(outputOfSetting("key", 1), "");
  EXPECT_THAT(namesIn(folder_), ElementsAre(fileName, lockName));
}

// Failures

std::string namesAndContent(const std::string& folder) {
  std::string text;
  for (const std::string& name : namesIn(folder)) text += name + "\n";
  return text + contentOf(folder + "/" + fileName);
}

// Sets a key. Returns what it printed, or "changed: ..." if that changed any file.
std::string outputOfFailing(const std::string& folder, const std::string& key, const PlistValue& value) {
  const std::string before = namesAndContent(folder);
  testing::internal::CaptureStderr();
  PropertyListDefaults(folder).set(key, value);
  const std::string output = testing::internal::GetCapturedStderr();
  return namesAndContent(folder) == before ? output : "changed: " + namesAndContent(folder);
}

TEST_F(PropertyListDefaultsTest, changesNothingInAReadOnlyFolder) {
  defaults_.set("key", 1);
  chmod(file_.c_str(), 0666);
  chmod(scratch_.path(lockName).c_str(), 0666);
  chmod(folder_.c_str(), 0555);
  EXPECT_THAT(inUnprivilegedProcess([&] { return outputOfFailing(folder_, "key", 2); }),
              StartsWith(std::string(product::name) + ": The file “" + fileName + "” couldn’t be saved: "));
  chmod(folder_.c_str(), 0755);
  std::filesystem::remove(scratch_.path(lockName));
  chmod(folder_.c_str(), 0555);
  EXPECT_THAT(inUnprivilegedProcess([&] { return outputOfFailing(folder_, "key", 2); }),
              HasSubstr("The settings couldn’t be locked: Permission denied"));
  EXPECT_EQ(inUnprivilegedProcess([&] { return outputOfFailing(folder_, "key", 1); }), "")
      << "the value is already stored";
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 1)));
}

TEST_F(PropertyListDefaultsTest, doesNotReplaceAnUnreadableFile) {
  makeFile(file_, xmlFile(integerEntry("key", 1)));
  chmod(file_.c_str(), 0000);
  chmod(folder_.c_str(), 0777);
  EXPECT_EQ(inUnprivilegedProcess([&] {
              PropertyListDefaults defaults(folder_);
              const bool absent = !defaults.object("key");
              testing::internal::CaptureStderr();
              defaults.set("key", 2);
              return (absent ? "absent; " : "present; ") + testing::internal::GetCapturedStderr();
            }),
            "absent; " + std::string(product::name) + ": The file “" + fileName +
                "” couldn’t be opened: Permission denied (" + file_ + ").\n");
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 1)));
}

TEST_F(PropertyListDefaultsTest, doesNotReplaceAFolder) {
  std::filesystem::create_directory(file_);
  EXPECT_EQ(defaults_.object("key"), std::nullopt);
  EXPECT_THAT(outputOfSetting("key", 1), HasSubstr("couldn’t be opened"));
  EXPECT_TRUE(std::filesystem::is_directory(file_));
}

TEST_F(PropertyListDefaultsTest, survivesAFolderThatCannotBeCreated) {
  makeFile(scratch_.path("file"), "");
  PropertyListDefaults defaults(scratch_.path("file/folder"));
  EXPECT_EQ(defaults.object("key"), std::nullopt);
  EXPECT_NE(outputOfSetting(defaults, "key", 1), "");
  EXPECT_THAT(namesIn(folder_), ElementsAre("file"));
}

TEST_F(PropertyListDefaultsTest, keepsTheFileAfterAPartialWrite) {
  defaults_.set("key", 1);
  const PlistValue large(std::u16string(100000, u'x'));
  EXPECT_THAT(inChildProcess([&] {
                const rlimit limit{5000, 5000};
                if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR || setrlimit(RLIMIT_FSIZE, &limit) != 0)
                  return std::string("no limit");
                return outputOfFailing(folder_, "key", large);
              }),
              HasSubstr("File too large"));
  EXPECT_EQ(contentOf(file_), xmlFile(integerEntry("key", 1)));
}

TEST_F(PropertyListDefaultsTest, keepsTheFileOnAFullDisk) {
  const std::string result = inChildProcess([&]() -> std::string {
    if (const std::string problem = separateMounts(); !problem.empty()) return "no: " + problem;
    if (mount("none", folder_.c_str(), "tmpfs", 0, "size=1m") != 0) return "no: the disk cannot be mounted";
    defaults_.set("key", 1);
    const std::string output = outputOfFailing(folder_, "key", std::u16string(2 << 20, u'x'));
    return defaults_.object("key") == PlistValue(1) ? output : "the value is lost";
  });
  if (result.starts_with("no: ")) GTEST_SKIP() << result;
  EXPECT_THAT(result, HasSubstr("No space left on device"));
}

TEST_F(PropertyListDefaultsTest, keepsADamagedFileThatItCannotSave) {
  const std::string damaged(100000, 'x');
  makeFile(file_, damaged);
  EXPECT_THAT(inChildProcess([&]() -> std::string {
                const rlimit limit{5000, 5000};
                if (std::signal(SIGXFSZ, SIG_IGN) == SIG_ERR || setrlimit(RLIMIT_FSIZE, &limit) != 0) return "no limit";
                testing::internal::CaptureStderr();
                defaults_.set("key", 1);
                return testing::internal::GetCapturedStderr();
              }),
              HasSubstr("File too large"));
  EXPECT_EQ(contentOf(file_), damaged);
  EXPECT_THAT(namesIn(folder_), ElementsAre(fileName, lockName));
}

}  // namespace
