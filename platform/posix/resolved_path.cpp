#include "platform/posix/resolved_path.h"

#include <cstdlib>
#include <memory>

namespace {

struct Release {
  void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

std::string resolvedPath(const std::string& path) {
  if (const std::unique_ptr<char, Release> resolved(realpath(path.c_str(), nullptr)); resolved) return resolved.get();
  const std::size_t slash = path.rfind('/');
  if (slash == 0 || slash == path.npos) return path;
  return resolvedPath(path.substr(0, slash)) + path.substr(slash);
}
