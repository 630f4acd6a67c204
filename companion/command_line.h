// What the arguments of the companion ask for.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "platform/arguments.h"

enum class Command { preview, sort, check, backups, restore, next, help, version };

struct Request {
  Command command;
  std::vector<std::string> operands = {};  // files and backups, as many as the command takes
  bool all = false;
  bool json = false;
  bool quiet = false;
};

// Why the arguments ask for nothing: a sentence without a full stop.
struct Complaint {
  std::string text;
};

// Options may stand anywhere before a "--"; "--help" wins over everything but that.
std::variant<Request, Complaint> requestOf(const Arguments& arguments);

// The forms of the command line, a line each; and what there is to know beyond that.
extern const char* const usageText;
extern const char* const helpText;
