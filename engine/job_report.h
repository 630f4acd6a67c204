// The texts that report the outcome of a job. Showing them is up to the caller.
#pragma once

#include <exception>
#include <optional>
#include <string>

#include "engine/guarded_rewrite.h"

struct Report {
  std::string title;
  std::string message;
};

// The report of sortBookmarkFile(), by what it returned.
Report sortReport(const std::optional<Rewrite>& rewrite);

// The end of the report of a replaced file: where its backups are. Each path is one line, escaped by
// harmlessLine.
std::string backupsOf(const Rewrite& rewrite);

// The report of a job that failed. The message ends with a hint at missing access.
Report failureReport(const std::string& title, const std::exception& error);

// The title of a failed sort.
inline constexpr const char* sortFailed = "Bookmarks could not be sorted";
