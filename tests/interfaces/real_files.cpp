#include <sys/stat.h>

#include <stdexcept>

#include "tests/interfaces/implementations.h"

void RealFiles::put(const std::string& path, const std::string& content, unsigned mode) {
  makeFile(path, content);
  if (chmod(path.c_str(), static_cast<mode_t>(mode)) != 0) throw std::runtime_error("no mode for " + path);
}
