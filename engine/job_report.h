// The texts that report the outcome of a job. Showing them is up to the caller.
#pragma once

#include <exception>
#include <optional>
#include <string>

struct Report {
  std::string title;
  std::string message;
};

// The report of sortBookmarkFile(), by what it returned. The path of the backup is one line, escaped by harmlessLine.
Report sortReport(const std::optional<std::string>& backup);

// The report of a job that failed. The message ends with a hint at missing access.
Report failureReport(const std::string& title, const std::exception& error);

// The title of a failed sort.
inline constexpr const char* sortFailed = "Bookmarks could not be sorted";
