// Sorts once, as the companion does, but overwrites files in place instead of renaming a temporary file over them. The
// fault tests must report losses.
#include <cstdlib>
#include <exception>
#include <fstream>

#include "engine/bookmark_file.h"
#include "engine/sort_job.h"
#include "platform/linux/posix_file_system.h"
#include "platform/platform.h"

namespace {

class CarelessFileSystem : public PosixFileSystem {
 public:
  void writeNew(const std::string& path, const Bytes& bytes) override { write(path, bytes); }
  Replacement replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                             const std::function<bool()>& mayReplace) override {
    if (!mayReplace() || read(path) != expected) return {};
    write(path, bytes.joined());
    return {true, false, std::nullopt};
  }

 private:
  static void write(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary) << bytes.text() << std::flush;
  }
};

}  // namespace

int main() {
  CarelessFileSystem fileSystem;
  const Platform& native = nativePlatform();
  const Platform careless{native.propertyLists, fileSystem,       native.runningApplications,
                          native.calendars,     native.collation, native.userInterface,
                          native.bundle,        native.processes, native.userDefaults};
  const PlatformScope scope(careless);
  try {
    return sortBookmarkFile(bookmarkFile()) ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception&) {
    return EXIT_FAILURE;
  }
}
