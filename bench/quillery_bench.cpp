// Measures, on one bookmark file, the whole sort job, each of its steps, plain input and output of the same bytes, what
// the memory of the machine allows, and a script that sorts. Each round measures all of them in turn, so that other
// load on the machine affects all of them alike.
//
// usage: quillery_bench FILE ROUNDS flush|noflush [SCRIPT ROUNDS_OF_SCRIPT]
//        quillery_bench FILE plain
//
// Works in a scratch home folder beside the file. Prints a line per measurement: its name, a tab, and the milliseconds
// of each round, separated by spaces. SCRIPT is run by python3 with the names of the file, of a new file and of a
// backup; it takes part in the first rounds only, because it is slow. The second form runs plain input and output once,
// so that its memory can be measured.
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "engine/backups.h"
#include "engine/bookmark_file.h"
#include "engine/sort_job.h"
#include "engine/sort_order.h"
#include "platform/linux/posix_file_system.h"
#include "platform/platform.h"

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// Times by name, in the order of the first measurement of each name.
class Figures {
 public:
  template <class Action>
  auto measure(const std::string& name, const Action& action) {
    const Clock::time_point start = Clock::now();
    if constexpr (std::is_void_v<decltype(action())>) {
      action();
      add(name, Clock::now() - start);
    } else {
      auto result = action();
      add(name, Clock::now() - start);
      return result;
    }
  }

  void print() const {
    for (const auto& [name, times] : figures_) {
      std::printf("%s\t", name.c_str());
      for (const double time : times) std::printf(" %.3f", time);
      std::printf("\n");
    }
  }

 private:
  void add(const std::string& name, Milliseconds time) {
    auto found =
        std::find_if(figures_.begin(), figures_.end(), [&](const auto& figure) { return figure.first == name; });
    if (found == figures_.end()) found = figures_.insert(figures_.end(), {name, {}});
    found->second.push_back(time.count());
  }

  std::vector<std::pair<std::string, std::vector<double>>> figures_;
};

void check(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what + ": " + std::strerror(errno));
}

struct Descriptor {
  Descriptor(const std::string& path, int flags) : number(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    check(number >= 0, path);
  }
  ~Descriptor() { close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number;
};

// Memory that is not initialised, because it is read into next.
using Uninitialised = std::unique_ptr<std::byte[]>;  // NOLINT(modernize-avoid-c-arrays)

struct Block {
  Uninitialised bytes;
  std::size_t size = 0;
};

Block plainRead(const std::string& path) {
  const Descriptor file(path, O_RDONLY);
  struct stat status {};
  check(fstat(file.number, &status) == 0, path);
  Block block{Uninitialised(new std::byte[static_cast<std::size_t>(status.st_size)]),
              static_cast<std::size_t>(status.st_size)};
  for (std::size_t done = 0; done < block.size;) {
    const ssize_t count = read(file.number, block.bytes.get() + done, block.size - done);
    check(count > 0, path);
    done += static_cast<std::size_t>(count);
  }
  return block;
}

void plainWrite(const std::string& path, const Block& block, bool flush) {
  const Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL);
  for (std::size_t done = 0; done < block.size;) {
    const ssize_t count = write(file.number, block.bytes.get() + done, block.size - done);
    check(count > 0, path);
    done += static_cast<std::size_t>(count);
  }
  if (!flush) return;
  check(fsync(file.number) == 0, path);
  const Descriptor folder(std::filesystem::path(path).parent_path(), O_RDONLY | O_DIRECTORY);
  check(fsync(folder.number) == 0, path);
}

// The input and output that any safe program needs for the same bytes: read, write a backup, read again and compare,
// write a new file and rename it over the old one.
void plainInputAndOutput(const std::string& file, const std::string& backup, bool flush) {
  const std::string temporary = file + ".plain";
  const Block block = plainRead(file);
  plainWrite(backup, block, flush);
  const Block again = plainRead(file);
  check(block.size == again.size && std::memcmp(block.bytes.get(), again.bytes.get(), block.size) == 0, "changed");
  plainWrite(temporary, again, flush);
  std::filesystem::rename(temporary, file);
}

// Allocates, writes to and frees this much memory. On a virtual machine whose host reclaims free memory, the first use
// of memory after a pause costs far more than the rest of the work, and varies. Called before each measurement, this
// keeps that cost out of all of them.
void warmMemory(std::size_t size) {
  void* block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  check(block != MAP_FAILED, "memory");
  std::memset(block, 1, size);
  munmap(block, size);
}

// Measures the steps of the job separately, in the order of the job.
void steps(Figures& figures, FileSystem& files, const std::filesystem::path& scratch) {
  PropertyLists& propertyLists = platform().propertyLists;
  const std::string path = bookmarkFile();
  const std::string backup = scratch / "step backup";
  const Bytes bytes = figures.measure("step: read", [&] { return files.read(path); });
  const auto parsed = figures.measure("step: parse", [&] { return propertyLists.parse(bytes); });
  const PlistValue inOrder = figures.measure("step: sort", [&] { return sorted(parsed.value, true); });
  const bool same = figures.measure("step: compare trees", [&] { return inOrder == parsed.value; });
  figures.measure("step: back up", [&] { files.writeNew(backup, bytes); });
  const BytePieces out =
      figures.measure("step: serialize", [&] { return propertyLists.serializeInPieces(inOrder, parsed.format); });
  const bool verified = figures.measure("step: verify", [&] { return propertyLists.parsesTo(inOrder, out); });
  const bool replaced = figures.measure(
      "step: compare and write", [&] { return files.replaceIfHolds(path, bytes, out, [] { return true; }).done; });
  std::filesystem::remove(backup);
  if (same || !verified || !replaced) throw std::runtime_error("the file was in order already, or changed");
}

// Measures how long the memory takes to copy, compare and search as many bytes as the file has.
void memoryFloors(Figures& figures, std::size_t size) {
  const std::vector<char> from(size, 'a');
  std::vector<char> to(size, 'a');
  const bool same = figures.measure("floor: compare", [&] { return std::memcmp(from.data(), to.data(), size) == 0; });
  const void* found = figures.measure("floor: scan", [&] { return std::memchr(from.data(), 'b', size); });
  figures.measure("floor: copy", [&] { std::memcpy(to.data(), from.data(), size); });
  if (!same || found != nullptr || to.back() != 'a') throw std::runtime_error("memory");
}

// Runs a script in a process of its own, as a user would.
void runScript(const std::string& script, const std::string& file, const std::filesystem::path& scratch) {
  const std::string target = scratch / "script target";
  const std::string backup = scratch / "script backup";
  std::vector<std::string> words = {"python3", script, file, target, backup};
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t process = 0;
  int status = 0;
  errno = posix_spawnp(&process, "python3", nullptr, nullptr, arguments.data(), environ);
  check(errno == 0 && waitpid(process, &status, 0) == process && status == 0, script);
  std::filesystem::remove(target);
  std::filesystem::remove(backup);
}

struct Plan {
  std::string file;
  int rounds;
  bool flush;
  std::string script;
  int roundsOfScript = 0;
};

std::filesystem::path makeHome(const std::string& file) {
  std::filesystem::path home = std::filesystem::absolute(file).parent_path() / "quillery bench home";
  std::filesystem::remove_all(home);
  std::filesystem::create_directories(home / "Library/Safari");
  setenv("HOME", home.c_str(), 1);
  return home;
}

void runPlain(const std::string& file) {
  const std::filesystem::path home = makeHome(file);
  std::filesystem::copy_file(file, home / "copy");
  plainInputAndOutput(home / "copy", home / "backup", false);
  std::filesystem::remove_all(home);
}

void run(const Plan& plan) {
  const std::filesystem::path scratch = makeHome(plan.file);
  PosixFileSystem files(plan.flush ? Flush::toDisk : Flush::never);
  const Platform& native = nativePlatform();
  const Platform measured{
      native.propertyLists, files,         native.runningApplications, native.calendars,   native.collation,
      native.userInterface, native.bundle, native.processes,           native.userDefaults};
  const PlatformScope scope(measured);

  Figures figures;
  const std::size_t size = std::filesystem::file_size(plan.file);
  const auto prepare = [&] {
    std::filesystem::copy_file(plan.file, bookmarkFile(), std::filesystem::copy_options::overwrite_existing);
    warmMemory(4 * size);
  };
  for (int round = -1; round < plan.rounds; ++round) {
    Figures warmUp;
    Figures& target = round < 0 ? warmUp : figures;
    prepare();
    const std::string backup = scratch / "plain backup";
    target.measure("plain input and output", [&] { plainInputAndOutput(bookmarkFile(), backup, plan.flush); });
    std::filesystem::remove(backup);
    prepare();
    if (!target.measure("whole job", [] { return sortBookmarkFile(bookmarkFile()); }))
      throw std::runtime_error("the file was in order already");
    std::filesystem::remove_all(backupsFolder());
    prepare();
    steps(target, files, scratch);
    memoryFloors(target, size);
    if (round >= 0 && round < plan.roundsOfScript)
      target.measure("script", [&] { runScript(plan.script, plan.file, scratch); });
  }
  std::filesystem::remove_all(scratch);
  figures.print();
}

int runWith(const std::vector<std::string>& arguments) {
  if (arguments.size() == 2 && arguments[1] == "plain") {
    runPlain(arguments[0]);
  } else if (arguments.size() == 3) {
    run({arguments[0], std::stoi(arguments[1]), arguments[2] == "flush", {}});
  } else if (arguments.size() == 5) {
    run({arguments[0], std::stoi(arguments[1]), arguments[2] == "flush", arguments[3], std::stoi(arguments[4])});
  } else {
    std::cerr << "usage: quillery_bench FILE ROUNDS flush|noflush [SCRIPT ROUNDS_OF_SCRIPT]\n"
                 "       quillery_bench FILE plain\n";
    return 2;
  }
  return 0;
}

}  // namespace

int main(int count, char** values) {
  try {
    return runWith({values + 1, values + count});
  } catch (const std::exception& error) {
    std::cerr << "quillery_bench: " << error.what() << '\n';
    return 1;
  }
}
