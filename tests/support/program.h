// Runs a built program and collects its output.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

struct Ending {
  std::optional<int> status;  // the exit status; absent if a signal ended it
  std::string output;         // of standard output
  std::string error;          // of standard error
};

// Changes to the test's own environment: variables to set or, without a value, to remove.
using Environment = std::map<std::string, std::optional<std::string>>;

// Runs the program at `path` with empty standard input and waits for it to end. If `output` is given, that descriptor
// is its standard output, and Ending::output is empty.
Ending run(const std::string& path, const std::vector<std::string>& arguments, const Environment& environment = {},
           std::optional<int> output = std::nullopt);
