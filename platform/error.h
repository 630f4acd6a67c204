// The one type of error that the platform and the program raise.
#pragma once

#include <exception>
#include <string>
#include <utility>

// `domain` names who raised it and what `code` means there; `description` is text for the user, in UTF-8.
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
