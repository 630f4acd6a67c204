// The installed application itself.
#pragma once

#include <optional>
#include <string>

class Bundle {
 public:
  virtual ~Bundle() = default;

  // The folder of the application bundle, or what stands for it on this platform.
  virtual std::string path() = 0;

  // The running executable: an absolute path.
  virtual std::string executablePath() = 0;

  // The image file of the application's icon; whether it is there is not looked at.
  virtual std::string iconPath() = 0;

  // A text of the bundle's information, by its key ("CFBundleVersion"); absent if there is none or it is no text.
  virtual std::optional<std::string> information(const std::string& key) = 0;
};
