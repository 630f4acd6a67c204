#include "platform/linux/installed_bundle.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/error.h"
#include "platform/product.h"

namespace {

constexpr const char* ownExecutable = "/proc/self/exe";

// The kernel appends this to the path of a file that was removed or replaced, as an update of the program does.
constexpr std::string_view removedMark = " (deleted)";

bool isInBinFolder(const std::filesystem::path& executable) { return executable.parent_path().filename() == "bin"; }

}  // namespace

std::string runningExecutable() {
  std::error_code problem;
  std::string path = std::filesystem::read_symlink(ownExecutable, problem).string();
  if (problem)
    throw Error("POSIX", problem.value(),
                "The program’s own folder couldn’t be found: " + problem.message() + " (" + ownExecutable + ").");
  const bool isThere = std::filesystem::equivalent(path, ownExecutable, problem);
  if (!isThere && path.ends_with(removedMark)) path.resize(path.size() - removedMark.size());
  return path;
}

std::string installationFolder(const std::string& executable) {
  const std::filesystem::path folder = std::filesystem::path(executable).parent_path();
  return (isInBinFolder(executable) ? folder.parent_path() : folder).string();
}

std::string helperProgram(const std::string& executable, const std::string& name) {
  const std::filesystem::path folder = installationFolder(executable);
  return (isInBinFolder(executable) ? folder / "libexec" / "quillery" / name : folder / name).string();
}

std::string InstalledBundle::path() { return installationFolder(runningExecutable()); }

std::string InstalledBundle::executablePath() { return runningExecutable(); }

bool InstalledBundle::isInstalled() { return isInBinFolder(runningExecutable()); }

std::string InstalledBundle::iconPath() {
  const std::filesystem::path icons = std::filesystem::path(path()) / "share/icons/hicolor/scalable/apps";
  return (icons / (std::string(product::bundleIdentifier) + ".svg")).string();
}

std::optional<std::string> InstalledBundle::information(const std::string& key) {
  if (key == "CFBundleShortVersionString" || key == "CFBundleVersion") return std::string(product::version);
  return std::nullopt;
}
