#include "platform/linux/session/program_search.h"

#include <paths.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>
#include <system_error>

#include "platform/posix/surroundings.h"

namespace {

bool isExecutable(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0;
}

}  // namespace

bool isProgramInstalled(const std::string& program) {
  if (program.starts_with('/')) return isExecutable(program);
  std::istringstream folders(variableOfEnvironment("PATH").value_or(_PATH_DEFPATH));
  for (std::string folder; std::getline(folders, folder, ':');)
    if (!folder.empty() && isExecutable(folder.append("/").append(program))) return true;
  return false;
}
