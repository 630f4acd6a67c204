#include "platform/macos/foundation_file_system.h"

#include "platform/macos/conversions.h"
#include "platform/posix/durable_files.h"
#include "platform/posix/folder_listing.h"

namespace {

NSDictionary<NSFileAttributeKey, id>* permissions(unsigned mode) {
  return @{NSFilePosixPermissions : @(mode)};
}

}  // namespace

std::string FoundationFileSystem::homeFolder() {
  const std::string path = textOf(NSFileManager.defaultManager.homeDirectoryForCurrentUser.path);
  return path == "/" ? "" : path;
}

Bytes FoundationFileSystem::read(const std::string& path) {
  @autoreleasepool {
    NSError* error = nil;
    NSData* const data = [NSData dataWithContentsOfFile:stringOf(path) options:0 error:&error];
    if (data == nil) throw errorOf(error);
    return bytesOf(data);
  }
}

std::vector<FileEntry> FoundationFileSystem::filesIn(const std::string& path) { return regularFilesIn(path); }

void FoundationFileSystem::createFolder(const std::string& path, unsigned mode) {
  @autoreleasepool {
    NSError* error = nil;
    const bool isThere = [NSFileManager.defaultManager createDirectoryAtURL:fileAddress(path)
                                                withIntermediateDirectories:YES
                                                                 attributes:permissions(mode)
                                                                      error:&error];
    if (!isThere) throw errorOf(error);
  }
}

void FoundationFileSystem::writeNew(const std::string& path, const Bytes& bytes) { writeNewFile(path, bytes); }

void FoundationFileSystem::setMode(const std::string& path, unsigned mode) {
  @autoreleasepool {
    NSError* error = nil;
    if (![NSFileManager.defaultManager setAttributes:permissions(mode) ofItemAtPath:stringOf(path) error:&error])
      throw errorOf(error);
  }
}

void FoundationFileSystem::writeAtomically(const std::string& path, const Bytes& bytes) {
  replaceFile(path, bytes, modeOfNewFiles());
}

bool FoundationFileSystem::replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) {
  return replaceFileIf(path, bytes, [&] { return read(path) == expected; });
}
