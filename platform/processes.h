// Services of the operating system for processes.
#pragma once

#include <string>

class Processes {
 public:
  virtual ~Processes() = default;

  // A fresh random UUID in canonical form: 36 characters, upper-case digits, 8-4-4-4-12.
  virtual std::string randomUuid() = 0;
};
