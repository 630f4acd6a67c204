// Changes or removes an environment variable, and restores it at the end of the scope.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class EnvironmentScope {
 public:
  // Removes the variable if `value` is absent.
  EnvironmentScope(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) old_ = old;
    set(value);
  }
  ~EnvironmentScope() { set(old_); }
  EnvironmentScope(const EnvironmentScope&) = delete;
  EnvironmentScope& operator=(const EnvironmentScope&) = delete;

  void set(const std::optional<std::string>& value) {
    if (value)
      setenv(name_.c_str(), value->c_str(), 1);
    else
      unsetenv(name_.c_str());
  }

 private:
  std::string name_;
  std::optional<std::string> old_;
};
