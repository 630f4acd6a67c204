// The installed application itself.
#pragma once

#include <string>

class Bundle {
 public:
  virtual ~Bundle() = default;

  // The folder of the application bundle, or what stands for it on this platform.
  virtual std::string path() = 0;
};
