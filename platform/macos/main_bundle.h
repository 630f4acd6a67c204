// The application's bundle.
#pragma once

#include "platform/bundle.h"

// NSBundle's main bundle: Quillery.app.
class MainBundle : public Bundle {
 public:
  std::string path() override;
  // Throws Error if the bundle has none.
  std::string executablePath() override;
  // AppIcon.icns among the bundle's resources.
  std::string iconPath() override;
  std::optional<std::string> information(const std::string& key) override;
};
