// Emphasis on a terminal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Returns text in bold, green or dim, or unchanged without colours.
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

// The styles for standard output. `color` is "always", "never" or "auto"; "auto", or none, means colours if it is a
// terminal that supports them and NO_COLOR is not set.
Styles outputStyles(const std::optional<std::string>& color);
