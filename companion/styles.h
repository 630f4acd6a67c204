// How parts of a line stand out on a terminal.
#pragma once

#include <string>
#include <string_view>

// Text in bold, in green, or dim; as it is where there are no colours.
class Styles {
 public:
  explicit Styles(bool hasColors) : hasColors_(hasColors) {}

  std::string bold(std::string_view text) const { return with("\x1b[1m", text); }
  std::string green(std::string_view text) const { return with("\x1b[32m", text); }
  std::string dim(std::string_view text) const { return with("\x1b[2m", text); }

 private:
  std::string with(std::string_view start, std::string_view text) const {
    if (!hasColors_) return std::string(text);
    return std::string(start) + std::string(text) + "\x1b[0m";
  }

  bool hasColors_;
};

// Those for standard output: colours if that is a terminal that can show them and NO_COLOR does not forbid them.
Styles outputStyles();
