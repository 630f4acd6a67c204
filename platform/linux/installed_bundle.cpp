#include "platform/linux/installed_bundle.h"

#include <filesystem>
#include <system_error>

#include "platform/error.h"
#include "platform/product.h"

namespace {

bool isInBinFolder(const std::filesystem::path& executable) { return executable.parent_path().filename() == "bin"; }

}  // namespace

std::string runningExecutable() {
  std::error_code problem;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", problem);
  if (problem)
    throw Error("POSIX", problem.value(),
                "The program’s own folder couldn’t be found: " + problem.message() + " (/proc/self/exe).");
  return executable.string();
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

std::string InstalledBundle::iconPath() {
  const std::filesystem::path icons = std::filesystem::path(path()) / "share/icons/hicolor/scalable/apps";
  return (icons / (std::string(product::bundleIdentifier) + ".svg")).string();
}

std::optional<std::string> InstalledBundle::information(const std::string& key) {
  if (key == "CFBundleShortVersionString" || key == "CFBundleVersion") return std::string(product::version);
  return std::nullopt;
}
