// The installed application. Paths are absolute and in UTF-8. Every function may throw Error if the system does not
// know where the application is.
#pragma once

#include <optional>
#include <string>

class Bundle {
 public:
  virtual ~Bundle() = default;

  // Returns the folder of the application bundle, or the folder that the platform installs applications under.
  virtual std::string path() = 0;

  // Returns the path of the running executable.
  virtual std::string executablePath() = 0;

  // Returns true if the application is installed, not run from the folder in which it was built, which may disappear.
  virtual bool isInstalled() = 0;

  // Returns the path of the application's icon, an image file. The file may not exist.
  virtual std::string iconPath() = 0;

  // Returns the text that the bundle's information has for `key`, such as "CFBundleVersion"; absent if there is no such
  // key or its value is not text.
  virtual std::optional<std::string> information(const std::string& key) = 0;
};
