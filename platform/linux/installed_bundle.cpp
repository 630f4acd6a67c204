#include "platform/linux/installed_bundle.h"

#include <filesystem>
#include <system_error>

#include "platform/error.h"

std::string installationFolder(const std::string& executable) {
  const std::filesystem::path folder = std::filesystem::path(executable).parent_path();
  return (folder.filename() == "bin" ? folder.parent_path() : folder).string();
}

std::string InstalledBundle::path() {
  std::error_code problem;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", problem);
  if (problem)
    throw Error("POSIX", problem.value(),
                "The program’s own folder couldn’t be found because the system answered “" + problem.message() +
                    "” (/proc/self/exe).");
  return installationFolder(executable.string());
}
