// The one exception type that the platform and the program throw for failures that a user may see.
#pragma once

#include <exception>
#include <string>
#include <utility>

// `domain` names the part that failed and gives `code` its meaning ("POSIX": an error number of the system).
// `description` is a sentence for the user, in UTF-8.
class Error : public std::exception {
 public:
  Error(std::string domain, int code, std::string description)
      : domain_(std::move(domain)), code_(code), description_(std::move(description)) {}

  const std::string& domain() const { return domain_; }
  int code() const { return code_; }
  const std::string& description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::string domain_;
  int code_;
  std::string description_;
};
