#include "tests/support/virtual_file_system.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace {

constexpr unsigned newFileMode = 0644;
constexpr unsigned newFolderMode = 0755;
constexpr int firstChange = 1789977600;  // 2026-09-21 08:00:00 UTC, in seconds since 1970

std::string octal(unsigned mode) {
  std::array<char, 16> text{};
  (void)std::snprintf(text.data(), text.size(), "%04o", mode);
  return text.data();
}

std::string parentOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

std::string participle(const std::string& operation) {
  if (operation == "read" || operation == "holds" || operation == "files in") return "opened";
  return operation == "create folder" ? "created" : "saved";
}

// An error with the domain, code and text of a real system's.
Error failure(const std::string& operation, const std::string& path, int errorNumber) {
  const std::string kind = operation == "create folder" || operation == "files in" ? "folder" : "file";
  return {"POSIX", errorNumber,
          "The " + kind + " “" + path.substr(path.rfind('/') + 1) + "” couldn’t be " + participle(operation) + ": " +
              std::generic_category().message(errorNumber) + " (" + path + ")."};
}

}  // namespace

VirtualFileSystem::VirtualFileSystem(Journal& journal) : journal_(journal) {
  folders_ = {{"", newFolderMode}, {"/home", newFolderMode}, {home_, 0700}, {home_ + "/Library", 0700}};
}

std::string VirtualFileSystem::resolved(const std::string& path) {
  return std::filesystem::path(path).lexically_normal().string();
}

Bytes VirtualFileSystem::read(const std::string& path) {
  return journal_.perform("read", path, [&] {
    const auto file = files_.find(path);
    if (file == files_.end()) throw failure("read", path, folders_.contains(path) ? EISDIR : ENOENT);
    return Bytes(file->second.content);
  });
}

bool VirtualFileSystem::holds(const std::string& path, const Bytes& expected) {
  return journal_.perform("holds", path, [&] {
    const auto file = files_.find(path);
    if (file == files_.end()) throw failure("holds", path, ENOENT);
    return file->second.content == expected.text();
  });
}

std::vector<FileEntry> VirtualFileSystem::filesIn(const std::string& path) {
  return journal_.perform("files in", path, [&] {
    if (files_.contains(path)) throw failure("files in", path, ENOTDIR);
    const std::string folder = path == "/" ? "" : path;
    std::vector<FileEntry> entries;
    for (const auto& [file, contents] : files_)
      if (parentOf(file) == folder)
        entries.push_back({file.substr(folder.size() + 1), modified_.at(file), contents.content.size()});
    return entries;
  });
}

void VirtualFileSystem::createFolder(const std::string& path, std::optional<unsigned> mode) {
  journal_.perform("create folder", path + " " + (mode ? octal(*mode) : "default"), [&] {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
      const std::string folder = path.substr(0, end);
      if (files_.contains(folder)) throw failure("create folder", folder, ENOTDIR);
      folders_.try_emplace(folder, mode.value_or(newFolderMode));
      if (end == std::string::npos) return;
    }
  });
}

void VirtualFileSystem::writeNew(const std::string& path, const Bytes& bytes) {
  journal_.perform("write new", path, [&] {
    requireParent("write new", path);
    if (files_.contains(path) || folders_.contains(path)) throw failure("write new", path, EEXIST);
    files_[path] = {std::string(bytes.text()), newFileMode};
    touch(path);
  });
}

void VirtualFileSystem::setMode(const std::string& path, unsigned mode) {
  journal_.perform("set mode", path + " " + octal(mode), [&] {
    const auto file = files_.find(path);
    if (file == files_.end()) throw failure("set mode", path, ENOENT);
    file->second.mode = mode;
  });
}

void VirtualFileSystem::writeAtomically(const std::string& path, const Bytes& bytes) {
  journal_.perform("write atomically", path, [&] {
    requireParent("write atomically", path);
    if (folders_.contains(path)) throw failure("write atomically", path, EISDIR);
    files_.try_emplace(path, File{{}, newFileMode}).first->second.content = bytes.text();
    touch(path);
  });
}

Replacement VirtualFileSystem::replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                                              const std::function<bool()>& mayReplace) {
  journal_.perform("write beside", path, [&] { requireParent("write beside", path); });
  if (!mayReplace() || !holds(path, expected)) return {};
  writeAtomically(path, bytes.joined());
  Replacement result{true, std::exchange(changesLate_, false), std::nullopt};
  if (result.changedLate && lateContent_) result.lateBytes = Bytes(std::string(*lateContent_));
  return result;
}

void VirtualFileSystem::removeAbandonedFiles(const std::string& path, const std::vector<std::string>&) {
  journal_.perform("remove abandoned", path, [] {});
}

void VirtualFileSystem::failOn(const std::string& operation, int errorNumber, int occurrence) {
  const auto fail = [operation, errorNumber](const std::string& object) {
    // The journal has the mode after the path.
    const bool hasMode = operation == "create folder" || operation == "set mode";
    throw failure(operation, hasMode ? object.substr(0, object.rfind(' ')) : object, errorNumber);
  };
  journal_.before(operation, fail, occurrence);
}

void VirtualFileSystem::put(const std::string& path, std::string content, unsigned mode) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
    folders_.try_emplace(path.substr(0, end), newFolderMode);
  files_[path] = {std::move(content), mode};
  touch(path);
}

void VirtualFileSystem::remove(const std::string& path) { files_.erase(path); }

unsigned VirtualFileSystem::mode(const std::string& path) const {
  const auto file = files_.find(path);
  return file == files_.end() ? folders_.at(path) : file->second.mode;
}

void VirtualFileSystem::touch(const std::string& path) {
  modified_[path] = Instant(std::chrono::seconds(firstChange + changes_++));
}

void VirtualFileSystem::requireParent(const std::string& operation, const std::string& path) const {
  if (!folders_.contains(parentOf(path))) throw failure(operation, path, ENOENT);
}
