#include "platform/linux/posix_file_system.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/file_mode.h"
#include "platform/posix/folder_listing.h"
#include "platform/posix/large_memory.h"
#include "platform/posix/new_folders.h"
#include "platform/posix/open_file.h"
#include "platform/posix/resolved_path.h"

namespace {

constexpr const char* errorDomain = "POSIX";
// In bytes. The parsers reject larger files anyway, but reading one first could take all memory.
constexpr std::size_t largestFile = 0xFFFF'FFFF;
constexpr std::size_t smallestRead = 4096;
// The most bytes that a file may grow by while it is read, and the most bytes of holes in it.
constexpr std::size_t mostGrowth = std::size_t{64} << 20;
constexpr off_t mostInHoles = off_t{64} << 20;

FileAttempt opening(const std::string& path) { return {"file", path, "opened"}; }

// Reads up to `size` bytes to `start`. Returns their number, which is 0 at the end of the file.
std::size_t readSome(const FileDescriptor& file, std::byte* start, std::size_t size, const std::string& path) {
  const ssize_t count = uninterrupted([&] { return ::read(file.get(), start, size); });
  if (count < 0) throw opening(path).failure(errno);
  return static_cast<std::size_t>(count);
}

// Throws if a file is large only because of its holes, which take no space on the disk but would take memory here.
void requireFewHoles(const OpenFile& file, const std::string& path) {
  const off_t size = file.status.st_size;
  if (size <= mostInHoles) return;
  off_t inHoles = 0;
  for (off_t data = 0; data < size;) {
    const off_t hole = lseek(file.descriptor.get(), data, SEEK_HOLE);
    if (hole < 0 || hole >= size) break;  // a failure means that the file system reports no holes
    data = lseek(file.descriptor.get(), hole, SEEK_DATA);
    if (data < 0) data = size;
    inHoles += data - hole;
    if (inHoles > mostInHoles) throw opening(path).failure(EFBIG, "it is a sparse file");
  }
  lseek(file.descriptor.get(), 0, SEEK_SET);
}

std::string withoutSlashAtEnd(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  return path;
}

std::string homeInUserDatabase() {
  std::vector<char> buffer(1024);
  struct passwd entry {};
  struct passwd* found = nullptr;
  int problem = 0;
  while ((problem = getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE)
    buffer.resize(2 * buffer.size());
  if (found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') return found->pw_dir;
  const std::string reason = problem != 0 ? ": " + std::generic_category().message(problem)
                                          : " because the user database has none for user " + std::to_string(geteuid());
  throw Error(errorDomain, problem != 0 ? problem : ENOENT, "The home folder couldn’t be found" + reason + ".");
}

}  // namespace

std::string PosixFileSystem::homeFolder() {
  const char* home = std::getenv("HOME");
  return withoutSlashAtEnd(home != nullptr && home[0] == '/' ? home : homeInUserDatabase());
}

std::string PosixFileSystem::resolved(const std::string& path) { return resolvedPath(path); }

Bytes PosixFileSystem::read(const std::string& path) {
  const OpenFile file = openPresent(path, opening(path));
  const auto size = static_cast<std::size_t>(file.status.st_size);
  if (size > largestFile) throw opening(path).failure(EFBIG);
  requireFewHoles(file, path);
  const std::size_t most = std::min(largestFile, size + mostGrowth);
  // At least one byte more than expected, to find the end of the file.
  LargeBuffer content(std::max(size + 1, smallestRead));
  while (const std::size_t count =
             readSome(file.descriptor, content.data() + content.size(), content.capacity() - content.size(), path)) {
    content.resize(content.size() + count);
    if (content.size() > most) throw opening(path).failure(EFBIG, "it grows while it is read");
    if (content.size() == content.capacity()) content.reserve(2 * content.capacity());
  }
  return std::move(content).take();
}

std::vector<FileEntry> PosixFileSystem::filesIn(const std::string& path) { return regularFilesIn(path); }

void PosixFileSystem::createFolder(const std::string& path, std::optional<unsigned> mode) {
  createFolders(path, mode ? std::optional<mode_t>(*mode & permissionBits) : std::nullopt, flush_);
}

void PosixFileSystem::writeNew(const std::string& path, const Bytes& bytes) { writeNewFile(path, bytes, flush_); }

void PosixFileSystem::setMode(const std::string& path, unsigned mode) {
  // O_NOFOLLOW, because an attacker may have put a symbolic link in the file's place.
  const FileDescriptor file(
      uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
  if (!file.isOpen() || fchmod(file.get(), static_cast<mode_t>(mode) & permissionBits) != 0)
    throw FileAttempt{"file", path, "given its permissions"}.failure(errno);
}

void PosixFileSystem::writeAtomically(const std::string& path, const Bytes& bytes) {
  writeAtomically(path, bytes, modeOfNewFiles());
}

void PosixFileSystem::writeAtomically(const std::string& path, const Bytes& bytes, unsigned modeIfNew) {
  replaceFile(path, bytes, static_cast<mode_t>(modeIfNew), flush_);
}

Replacement PosixFileSystem::replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                                            const std::function<bool()>& mayReplace) {
  return replaceFileIf(path, expected, bytes, mayReplace, flush_);
}

void PosixFileSystem::removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) {
  removeFilesAbandonedBeside(path, inUse);
}
