// The application's bundle.
#pragma once

#include "platform/bundle.h"

// Uses the main bundle of NSBundle, which is Quillery.app.
class MainBundle : public Bundle {
 public:
  std::string path() override;
  // Throws Error if the bundle has no executable.
  std::string executablePath() override;
  // Returns true for an executable in an application bundle.
  bool isInstalled() override;
  // Returns the path of AppIcon.icns in the bundle's resources.
  std::string iconPath() override;
  std::optional<std::string> information(const std::string& key) override;
};
