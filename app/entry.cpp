#include "app/entry.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "app/alert.h"
#include "app/self_test.h"
#include "platform/product.h"
#include "values/harmless_text.h"
#include "values/log_line.h"

Application* app = nullptr;
// NOLINTNEXTLINE(cert-err58-cpp): without memory the program cannot start
std::shared_ptr<SorterDelegate>& delegate = *new std::shared_ptr<SorterDelegate>();

namespace {

constexpr int wrongUsage = 2;

constexpr std::string_view help =
    "usage: quillery [--login]\n"
    "       quillery --self-test | --help | --version\n"
    "\n"
    "Shows a menu among the icons of your desktop's panel, and sorts Safari's\n"
    "bookmarks on request, on a schedule, or when Safari quits. If it runs already,\n"
    "it is opened again.\n"
    "\n"
    "--login      ends at once if it runs already; the session passes this at login\n"
    "--self-test  checks the rules of sorting and scheduling, and prints the result\n"
    "-h, --help   prints this help\n"
    "--version    prints the version\n"
    "\n"
    "quilleryctl previews a sort, sorts, and restores backups from the command line.";

constexpr std::array<std::string_view, 5> options = {"--self-test", "--login", "--help", "-h", "--version"};

// Returns true for "--word" and "-x". A longer word after a single dash is a setting that macOS passes on.
bool isOption(std::string_view argument) {
  return argument.starts_with("--") || (argument.size() == 2 && argument.front() == '-');
}

std::optional<std::string_view> unknownOption(const Arguments& arguments) {
  const auto found = std::ranges::find_if(arguments, [](std::string_view argument) {
    return isOption(argument) && std::ranges::find(options, argument) == options.end();
  });
  return found == arguments.end() ? std::nullopt : std::optional<std::string_view>(*found);
}

// Does what needs no platform. Returns the exit status; absent if the program is to run.
std::optional<int> printedInstead(const Arguments& arguments) {
  if (contains(arguments, "--help") || contains(arguments, "-h")) {
    std::cout << help << '\n' << std::flush;
    return 0;
  }
  if (contains(arguments, "--version")) {
    std::cout << "quillery " << product::version << '\n' << std::flush;
    return 0;
  }
  if (const auto option = unknownOption(arguments)) {
    logLine(std::cerr, "quillery: there is no option “" + harmlessLine(*option) + "”; see quillery --help");
    return wrongUsage;
  }
  return std::nullopt;
}

// False if that is unknown: a second instance does less harm than none.
bool anotherInstanceRuns() try {
  const int own = platform().processes.processIdentifier();
  const auto instances = platform().runningApplications.withBundleIdentifier(std::string(product::bundleIdentifier));
  return std::ranges::any_of(instances, [&](const auto& instance) { return instance->processIdentifier() != own; });
} catch (const Error&) {
  return false;
}

}  // namespace

int runQuillery(const Arguments& arguments, const Platform& (*withDesktop)()) {
  automatic = false;
  if (contains(arguments, "--self-test")) {
    runSelfTest();
    return 0;
  }
  if (const std::optional<int> status = printedInstead(arguments)) return *status;
  if (contains(arguments, "--login") && anotherInstanceRuns()) return 0;
  const PlatformScope scope(withDesktop());
  app = &desktop().application;
  delegate = std::make_shared<SorterDelegate>();
  app->setDelegate(delegate);
  platform().userInterface.becomeAccessory();
  app->run();
  delegate = nullptr;
  app = nullptr;
  return 0;
}
