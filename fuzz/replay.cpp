// Runs a harness on every file of the given folders, without libFuzzer.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/harness.h"

namespace {

// Returns the number of files.
std::size_t replayFolder(const std::filesystem::path& folder) {
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::cout << entry.path().filename().string() << std::endl;  // flushed, because the harness may abort
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    ++files;
  }
  return files;
}

}  // namespace

int main(int count, char** values) {
  std::size_t files = 0;
  for (int index = 1; index < count; ++index) files += replayFolder(values[index]);
  std::cout << files << " inputs\n";
  return files > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
