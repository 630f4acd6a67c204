// The installed program.
#pragma once

#include <string>

#include "platform/bundle.h"

class InstalledBundle : public Bundle {
 public:
  // The folder that the program was installed under: the one that holds the bin folder of the running executable
  // ("/usr"), or the executable's own folder if that is not named bin. Throws Error if the system does not say.
  std::string path() override;
};

// The same for the executable at `executable`, an absolute path.
std::string installationFolder(const std::string& executable);
