// The entry point of the command-line companion.
#include <cstdlib>
#include <iostream>
#include <string>

#include "app/alert.h"
#include "app/arguments.h"
#include "app/product.h"
#include "engine/sort_job.h"
#include "platform/platform.h"

namespace {

enum ExitStatus { success = 0, failure = 1, wrongUsage = 2, safariOpen = 75 };

constexpr const char* usage =
    "usage: quilleryctl sort\n"
    "       quilleryctl --help | --version\n";

constexpr const char* help =
    "\n"
    "sort   sorts your Safari bookmarks once, unattended, and prints what came of it:\n"
    "       folders first, then bookmarks, in natural order. The old file is backed up.\n"
    "\n"
    "Exit status: 0 sorted or already in order, 1 failed (the message is also on\n"
    "standard error), 2 wrong usage, 75 Safari is running (nothing was read).\n";

int sort() {
  automatic = true;
  const SortResult result = performSort();
  automatic = false;
  switch (result.outcome) {
    case SortOutcome::sorted:
    case SortOutcome::alreadyInOrder: return success;
    case SortOutcome::safariRunning:
      std::cerr << "quilleryctl: Safari is running; nothing was read\n";
      return safariOpen;
    case SortOutcome::onDiskImage:  // asked only of a sort that a person watches
    case SortOutcome::failed: std::cerr << "quilleryctl: " << result.message << '\n'; return failure;
  }
  return failure;
}

}  // namespace

int main(int count, char** values) {
  const Arguments arguments = argumentsOf(count, values);
  if (arguments.size() == 1 && arguments[0] == "sort") {
    const PlatformScope scope(nativePlatform());
    return sort();
  }
  if (arguments.size() == 1 && arguments[0] == "--help") {
    std::cout << usage << help;
    return success;
  }
  if (arguments.size() == 1 && arguments[0] == "--version") {
    std::cout << "quilleryctl " << product::version << '\n';
    return success;
  }
  std::cerr << usage;
  return wrongUsage;
}
