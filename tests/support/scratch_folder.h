// A temporary folder for a test, removed with its content at the end of the test.
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
  // Returns the path of a file or folder in it.
  std::string path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Read and write files without the code under test.
std::string contentOf(const std::string& path);
void makeFile(const std::string& path, const std::string& content);

// Returns the permission bits of a file or folder.
unsigned modeOf(const std::string& path);

// Returns the sorted names in a folder.
std::vector<std::string> namesIn(const std::string& folder);
