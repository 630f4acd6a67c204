// The installed program as a bundle.
#pragma once

#include <optional>
#include <string>

#include "platform/bundle.h"

class InstalledBundle : public Bundle {
 public:
  // Returns the installation prefix of the running executable: "/usr" for an executable in /usr/bin, or the
  // executable's own folder if that is not named bin.
  std::string path() override;

  std::string executablePath() override;

  // Returns true for an executable in a folder named bin.
  bool isInstalled() override;

  // Returns the path of the scalable icon in the icon theme under path().
  std::string iconPath() override;

  // Has only CFBundleShortVersionString and CFBundleVersion, which are both the program's version.
  std::optional<std::string> information(const std::string& key) override;
};

// Returns the path that the running executable has, or had until it was removed or replaced. Throws Error if /proc does
// not have it.
std::string runningExecutable();

// Returns the installation prefix of the executable at an absolute path, as InstalledBundle::path does.
std::string installationFolder(const std::string& executable);

// Returns the path of a private helper program of the executable at an absolute path: in libexec/quillery under its
// installation prefix, or beside the executable if that is not in a bin folder.
std::string helperProgram(const std::string& executable, const std::string& name);
