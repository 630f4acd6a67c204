#include "app/disk_image.h"

#include <string>

#include "platform/platform.h"

namespace {

// A translocated copy is below the user's temporary folder: /private/var/folders/…/AppTranslocation/UUID/d/NAME.app.
bool isTranslocated(const std::string& path) {
  const bool isTemporary = path.starts_with("/private/var/folders/") || path.starts_with("/var/folders/");
  return isTemporary && path.find("/AppTranslocation/") != std::string::npos;
}

}  // namespace

bool runsFromDiskImage() {
  const std::string path = platform().bundle.path();
  return path.starts_with("/Volumes/") || isTranslocated(path);
}
