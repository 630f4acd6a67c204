// A folder of a test's own, gone with everything in it when the test is over.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  // The path of something in it.
  std::string path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// What a file holds, and making one that holds something, without the code under test.
std::string contentOf(const std::string& path);
void makeFile(const std::string& path, const std::string& content);

// The permission bits of a file or folder.
unsigned modeOf(const std::string& path);

// The names in a folder, sorted.
std::vector<std::string> namesIn(const std::string& folder);
