#include "platform/posix/existing_folder.h"

#include <sys/stat.h>

std::string existingFolder(const std::string& path) {
  struct stat status {};
  const bool isFolder = stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  const std::size_t slash = path.rfind('/');
  if (isFolder || slash == path.npos) return path;
  return slash == 0 ? "/" : existingFolder(path.substr(0, slash));
}
