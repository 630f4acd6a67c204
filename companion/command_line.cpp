#include "companion/command_line.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "companion/nearest_word.h"
#include "values/harmless_text.h"

const char* const usageText =
    "usage: quilleryctl preview [--all] [--json] [--quiet] [FILE]\n"
    "       quilleryctl sort [--quiet] [FILE]\n"
    "       quilleryctl check [--quiet] [FILE]\n"
    "       quilleryctl backups [--quiet] [FILE]\n"
    "       quilleryctl restore [--quiet] [--foreign] BACKUP [FILE]\n"
    "       quilleryctl undo [--quiet] [FILE]\n"
    "       quilleryctl next [--quiet]\n"
    "       quilleryctl --help | --version\n";

const char* const helpText =
    "\n"
    "preview  shows what a sort would move, and writes nothing\n"
    "sort     sorts once, unattended: folders first, then bookmarks, in natural order\n"
    "check    prints whether the bookmarks are in order, and writes nothing\n"
    "backups  lists the backups, newest first: name, time, size in bytes, number of\n"
    "         bookmarks, and which of them equal the bookmark file\n"
    "restore  gives the bookmark file the exact bytes of a backup\n"
    "undo     restores the last backup that differs from the bookmark file\n"
    "next     prints when the next scheduled sort is due\n"
    "\n"
    "FILE is a bookmark file to use instead of your own, with backups of its own.\n"
    "BACKUP is a name from the list of backups of that file, or the beginning of one,\n"
    "or a path with a slash in it. sort, restore and undo back up a file before they\n"
    "replace it, and read nothing while Safari is running.\n"
    "\n"
    "-a, --all    shows the whole tree, not only the moved entries and the folders\n"
    "             around them\n"
    "-j, --json   prints JSON: every entry of each folder that changes, in its new\n"
    "             order, with its present position (\"from\", counted from 0)\n"
    "-q, --quiet  sort, restore, undo and check print only errors; preview omits its\n"
    "             last line; backups prints only names; next prints only a time\n"
    "--foreign    lets restore give FILE the content of any other bookmark file\n"
    "-h, --help   prints this help\n"
    "--version    prints the version\n"
    "\n"
    "Exit status: 0 success, or in order; 1 failure (message on standard error), or\n"
    "for check: not in order; 2 wrong usage; 3 for check: failure; 74 success, but\n"
    "the output could not be written; 75 Safari is running, or it is unknown whether\n"
    "it is (nothing was changed).\n";

namespace {

constexpr unsigned bit(Command command) { return 1U << static_cast<unsigned>(command); }
constexpr unsigned everyCommand = ~0U;

struct Option {
  std::string_view name;
  std::string_view letter;  // empty if there is none
  bool Request::*field;
  unsigned commands;  // the bits of the commands that take it
};

constexpr std::array<Option, 4> options = {{{"--all", "-a", &Request::all, bit(Command::preview)},
                                            {"--json", "-j", &Request::json, bit(Command::preview)},
                                            {"--quiet", "-q", &Request::quiet, everyCommand},
                                            {"--foreign", "", &Request::foreign, bit(Command::restore)}}};

struct Form {
  std::string_view name;
  Command command;
  std::size_t operandsAtLeast;
  std::size_t operandsAtMost;
};

constexpr std::array<Form, 8> forms = {{{"preview", Command::preview, 0, 1},
                                        {"sort", Command::sort, 0, 1},
                                        {"check", Command::check, 0, 1},
                                        {"backups", Command::backups, 0, 1},
                                        {"restore", Command::restore, 1, 2},
                                        {"undo", Command::undo, 0, 1},
                                        {"next", Command::next, 0, 0},
                                        {"help", Command::help, 0, 1}}};

std::string quoted(std::string_view text) { return "“" + harmlessLine(text) + "”"; }

Complaint unknownCommand(std::string_view typed) {
  std::array<std::string_view, forms.size()> names;
  std::ranges::transform(forms, names.begin(), &Form::name);
  const auto nearest = nearestWord(typed, names);
  return {"there is no command " + quoted(typed) + (nearest ? " (did you mean " + quoted(*nearest) + "?)" : "")};
}

// The arguments, split into options and operands.
struct Words {
  std::vector<std::string_view> options;
  std::vector<std::string_view> operands;
};

Words wordsOf(const Arguments& arguments) {
  Words words;
  bool mayBeOption = true;
  for (const std::string_view argument : arguments) {
    if (mayBeOption && argument == "--")
      mayBeOption = false;
    else
      (mayBeOption && argument.size() > 1 && argument.front() == '-' ? words.options : words.operands)
          .push_back(argument);
  }
  return words;
}

std::optional<Complaint> readOptions(const std::vector<std::string_view>& words, const Form& form, Request& request) {
  for (const std::string_view word : words) {
    const auto option =
        std::ranges::find_if(options, [&](const Option& known) { return word == known.name || word == known.letter; });
    if (option == options.end()) return Complaint{"there is no option " + quoted(word)};
    if ((option->commands & bit(form.command)) == 0)
      return Complaint{quoted(form.name) + " has no option " + quoted(word)};
    request.*option->field = true;
  }
  return std::nullopt;
}

std::optional<Complaint> readOperands(const std::vector<std::string_view>& words, const Form& form, Request& request) {
  if (words.size() < form.operandsAtLeast) return Complaint{quoted(form.name) + " needs the name of a backup"};
  if (words.size() > form.operandsAtMost)
    return Complaint{quoted(words[form.operandsAtMost]) + " is one argument too many for " + quoted(form.name)};
  request.operands.assign(words.begin(), words.end());
  return std::nullopt;
}

}  // namespace

std::variant<Request, Complaint> requestOf(const Arguments& arguments) {
  Words words = wordsOf(arguments);
  if (contains(words.options, "--help") || contains(words.options, "-h")) return Request{Command::help};
  if (arguments.size() == 1 && contains(words.options, "--version")) return Request{Command::version};
  if (words.operands.empty())
    return Complaint{words.options.empty() ? "there is no command"
                                           : "there is no command with " + quoted(words.options.front())};
  const auto form = std::ranges::find(forms, words.operands.front(), &Form::name);
  if (form == forms.end()) return unknownCommand(words.operands.front());
  words.operands.erase(words.operands.begin());
  Request request{form->command};
  if (auto complaint = readOptions(words.options, *form, request)) return *complaint;
  if (auto complaint = readOperands(words.operands, *form, request)) return *complaint;
  return request;
}
