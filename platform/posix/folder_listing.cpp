#include "platform/posix/folder_listing.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "platform/posix/file_attempt.h"

namespace {

using std::chrono::seconds;

Instant modified(const struct stat& status) {
#ifdef __APPLE__
  const timespec& time = status.st_mtimespec;
#else
  const timespec& time = status.st_mtim;
#endif
  // Some file systems store any number of seconds, more than an Instant can have.
  const auto whole = std::clamp(seconds(time.tv_sec), std::chrono::ceil<seconds>(Instant::duration::min()),
                                std::chrono::floor<seconds>(Instant::duration::max()) - seconds(1));
  return Instant(whole) + std::chrono::floor<Instant::duration>(std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace

std::vector<FileEntry> regularFilesIn(const std::string& path) {
  std::vector<FileEntry> files;
  std::error_code problem;
  std::filesystem::directory_iterator entry(path, problem);
  if (problem == std::errc::no_such_file_or_directory) return files;
  for (; !problem && entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
    struct stat status {};
    if (stat(entry->path().c_str(), &status) != 0) continue;  // removed meanwhile, or a dangling link
    if (!S_ISREG(status.st_mode)) continue;
    files.push_back({entry->path().filename().string(), modified(status), static_cast<std::uint64_t>(status.st_size)});
  }
  if (problem) throw FileAttempt{"folder", path, "opened"}.failure(problem.value());
  return files;
}
