#include "platform/macos/foundation_file_system.h"

#include "platform/macos/conversions.h"
#include "platform/posix/durable_files.h"
#include "platform/posix/folder_listing.h"
#include "platform/posix/new_folders.h"
#include "platform/posix/resolved_path.h"

namespace {

NSDictionary<NSFileAttributeKey, id>* permissions(unsigned mode) {
  return @{NSFilePosixPermissions : @(mode)};
}

// Foundation's descriptions have the file's name only.
Error withPath(const Error& error, const std::string& path) {
  return {error.domain(), error.code(), error.description() + " (" + path + ")"};
}

}  // namespace

std::string FoundationFileSystem::homeFolder() {
  const std::string path = textOf(NSFileManager.defaultManager.homeDirectoryForCurrentUser.path);
  return path == "/" ? "" : path;
}

std::string FoundationFileSystem::resolved(const std::string& path) { return resolvedPath(path); }

Bytes FoundationFileSystem::read(const std::string& path) {
  @autoreleasepool {
    NSError* error = nil;
    NSData* const data = [NSData dataWithContentsOfFile:stringOf(path) options:0 error:&error];
    if (data == nil) throw withPath(errorOf(error), path);
    return bytesOf(data);
  }
}

std::vector<FileEntry> FoundationFileSystem::filesIn(const std::string& path) { return regularFilesIn(path); }

void FoundationFileSystem::createFolder(const std::string& path, std::optional<unsigned> mode) {
  createFolders(path, mode ? std::optional(static_cast<mode_t>(*mode)) : std::nullopt);
}

void FoundationFileSystem::writeNew(const std::string& path, const Bytes& bytes) { writeNewFile(path, bytes); }

void FoundationFileSystem::setMode(const std::string& path, unsigned mode) {
  @autoreleasepool {
    NSError* error = nil;
    if (![NSFileManager.defaultManager setAttributes:permissions(mode) ofItemAtPath:stringOf(path) error:&error])
      throw withPath(errorOf(error), path);
  }
}

void FoundationFileSystem::writeAtomically(const std::string& path, const Bytes& bytes) {
  replaceFile(path, bytes, modeOfNewFiles());
}

Replacement FoundationFileSystem::replaceIfHolds(const std::string& path, const Bytes& expected,
                                                 const BytePieces& bytes, const std::function<bool()>& mayReplace) {
  return replaceFileIf(path, expected, bytes, mayReplace);
}

void FoundationFileSystem::removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) {
  removeFilesAbandonedBeside(path, inUse);
}
