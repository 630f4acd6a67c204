// Running a built program as a user would, and seeing what came of it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

struct Ending {
  std::optional<int> status;  // the exit status; absent if a signal ended it
  std::string output;         // what it wrote to standard output
  std::string error;          // and to standard error
};

// Environment variables to set, or with no value to take away, on top of the test's own.
using Environment = std::map<std::string, std::optional<std::string>>;

// Runs the program at `path`, with nothing on its standard input, and waits for its end.
Ending run(const std::string& path, const std::vector<std::string>& arguments, const Environment& environment = {});
