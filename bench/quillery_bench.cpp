// Measures, on one bookmark file, the whole sort job, each of its steps, and plain input and output of the same bytes.
// They run in turn in one process, so that other load on the machine affects all of them alike.
//
// usage: quillery_bench FILE ROUNDS flush|noflush
//
// Works in a scratch home folder beside the file. Prints a line per measurement: its name, a tab, and the median of the
// rounds in milliseconds.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
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

  void print() {
    for (auto& [name, times] : figures_) {
      std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
      std::printf("%s\t%.3f\n", name.c_str(), times[times.size() / 2]);
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
  const Bytes out = figures.measure("step: serialize", [&] { return propertyLists.serialize(inOrder, parsed.format); });
  const bool replaced = figures.measure(
      "step: compare and write", [&] { return files.replaceIfHolds(path, bytes, out, [] { return true; }).done; });
  std::filesystem::remove(backup);
  if (same || !replaced) throw std::runtime_error("the file was in order already, or changed");
}

int run(const std::string& file, int rounds, bool flush) {
  const std::filesystem::path scratch = std::filesystem::absolute(file).parent_path() / "quillery bench home";
  std::filesystem::remove_all(scratch);
  std::filesystem::create_directories(scratch / "Library/Safari");
  setenv("HOME", scratch.c_str(), 1);

  PosixFileSystem files(flush ? Flush::toDisk : Flush::never);
  const Platform& native = nativePlatform();
  const Platform measured{
      native.propertyLists, files,         native.runningApplications, native.calendars,   native.collation,
      native.userInterface, native.bundle, native.processes,           native.userDefaults};
  const PlatformScope scope(measured);

  Figures figures;
  const auto freshFile = [&] {
    std::filesystem::copy_file(file, bookmarkFile(), std::filesystem::copy_options::overwrite_existing);
  };
  for (int round = -1; round < rounds; ++round) {
    Figures warmUp;
    Figures& target = round < 0 ? warmUp : figures;
    freshFile();
    const std::string backup = scratch / "plain backup";
    const std::size_t memory = 4 * std::filesystem::file_size(file);
    warmMemory(memory);
    target.measure("plain input and output", [&] { plainInputAndOutput(bookmarkFile(), backup, flush); });
    std::filesystem::remove(backup);
    freshFile();
    warmMemory(memory);
    if (!target.measure("whole job", [] { return sortBookmarkFile(bookmarkFile()); }))
      throw std::runtime_error("the file was in order already");
    std::filesystem::remove_all(backupsFolder());
    freshFile();
    warmMemory(memory);
    steps(target, files, scratch);
  }
  std::filesystem::remove_all(scratch);
  figures.print();
  return 0;
}

}  // namespace

int main(int count, char** values) {
  if (count != 4) {
    std::cerr << "usage: quillery_bench FILE ROUNDS flush|noflush\n";
    return 2;
  }
  try {
    return run(values[1], std::stoi(values[2]), std::string(values[3]) == "flush");
  } catch (const std::exception& error) {
    std::cerr << "quillery_bench: " << error.what() << '\n';
    return 1;
  }
}
