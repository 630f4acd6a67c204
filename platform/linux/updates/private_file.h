// A file that nobody but this user can reach.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/posix/file_descriptor.h"

// The only file in a new folder, which only this user may enter. Destroying this removes both, unless they are kept.
class PrivateFile {
 public:
  // Removes the folders that earlier files have left in `parent`, which is created if missing, and creates the new
  // folder and the file there. Throws Error, also if `parent` is empty.
  PrivateFile(const std::string& parent, const std::string& name);
  ~PrivateFile();
  PrivateFile(const PrivateFile&) = delete;
  PrivateFile& operator=(const PrivateFile&) = delete;

  const std::string& path() const { return path_; }
  std::uint64_t size() const { return size_; }

  // Throws Error, for example if the disk is full.
  void append(std::string_view bytes);

  // Makes the file read-only and returns its content. Throws Error.
  std::string sealed();

  // Returns true if the file at the path is still this one, and was not changed since `sealed`.
  bool isUnchanged() const;

  // Leaves the folder and the file to the user.
  void keep() { isKept_ = true; }

 private:
  std::string folder_;
  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
  struct stat sealed_ {};
  bool isKept_ = false;
};

// Returns the folder for this program's cached files: in XDG_CACHE_HOME if that is an absolute path, otherwise in
// .cache in the home folder. Returns the empty string if there is no home folder either.
std::string cacheFolder();
