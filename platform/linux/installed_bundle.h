// The installed program.
#pragma once

#include <optional>
#include <string>

#include "platform/bundle.h"

class InstalledBundle : public Bundle {
 public:
  // The folder that the program was installed under: the one that holds the bin folder of the running executable
  // ("/usr"), or the executable's own folder if that is not named bin. Throws Error if the system does not say.
  std::string path() override;

  // Throws Error if the system does not say.
  std::string executablePath() override;

  // The scalable one of the icon theme in the folder of `path`. Throws Error as that does.
  std::string iconPath() override;

  // Both CFBundleShortVersionString and CFBundleVersion are the program's version; there is nothing else.
  std::optional<std::string> information(const std::string& key) override;
};

// The path of the running executable. Throws Error if the system does not say.
std::string runningExecutable();

// The folder that the executable at `executable`, an absolute path, was installed under, as said above.
std::string installationFolder(const std::string& executable);

// Where the executable at `executable`, an absolute path, has a program of this name that is for itself alone: in
// libexec/quillery of the folder that it was installed under, or beside it if it is in no bin folder.
std::string helperProgram(const std::string& executable, const std::string& name);
