// The companion's command line.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/arguments.h"

enum class Command { preview, sort, check, backups, restore, undo, next, help, version };

struct Request {
  Command command;
  std::vector<std::string> operands = {};  // files and backups, at most as many as the command takes
  bool all = false;
  bool json = false;
  bool quiet = false;
  bool foreign = false;
  bool dryRun = false;                     // requestOf() has made the command a preview
  std::optional<std::string> output = {};  // the file, or "-", to which a sort writes a copy
  std::optional<std::string> color = {};   // "always", "never" or "auto"
};

// What is wrong with the arguments: a sentence without a full stop.
struct Complaint {
  std::string text;
};

// Parses the arguments. Options may stand anywhere before "--". "--help" wins over everything else.
std::variant<Request, Complaint> requestOf(const Arguments& arguments);

// The synopsis of each command, and the rest of the help.
extern const char* const usageText;
extern const char* const helpText;
