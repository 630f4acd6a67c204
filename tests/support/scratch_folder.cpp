#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

ScratchFolder::ScratchFolder() : path_(testing::TempDir() + "quillery-test-XXXXXX") {
  EXPECT_NE(mkdtemp(path_.data()), nullptr) << path_;
  chmod(path_.c_str(), 0755);  // so that other users can enter it
}

ScratchFolder::~ScratchFolder() {
  chmod(path_.c_str(), 0755);  // a test may have removed its own permissions
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

void makeFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  EXPECT_TRUE(file) << path;
}

unsigned modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}
