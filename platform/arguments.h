// Command-line arguments. An argument is matched whole, at any position.
#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

using Arguments = std::vector<std::string_view>;

// Returns the parameters of main() without the program's name. They refer to the memory of `values`.
inline Arguments argumentsOf(int count, char** values) { return {values + (count > 0 ? 1 : 0), values + count}; }

inline bool contains(const Arguments& arguments, std::string_view wanted) {
  return std::find(arguments.begin(), arguments.end(), wanted) != arguments.end();
}
