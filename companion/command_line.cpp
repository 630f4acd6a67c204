#include "companion/command_line.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>

#include "companion/nearest_word.h"
#include "values/harmless_text.h"

const char* const usageText =
    "usage: quilleryctl preview [--all] [--json] [--quiet] [FILE...]\n"
    "       quilleryctl sort [--dry-run] [--quiet] [FILE...]\n"
    "       quilleryctl sort -o OUT [FILE]\n"
    "       quilleryctl check [--json] [--quiet] [FILE...]\n"
    "       quilleryctl backups [--json] [--quiet] [FILE]\n"
    "       quilleryctl restore [--quiet] [--foreign] BACKUP [FILE]\n"
    "       quilleryctl undo [--quiet] [FILE]\n"
    "       quilleryctl next [--json] [--quiet]\n"
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
    "\"-\" is standard input; sort then writes to standard output. BACKUP is a name from\n"
    "the list of backups of that file, or the beginning of one, or a path with a slash\n"
    "in it. sort, restore and undo back up a file before they replace it, and read\n"
    "nothing while Safari is running.\n"
    "\n"
    "-a, --all     shows the whole tree, not only the moved entries and the folders\n"
    "              around them\n"
    "-j, --json    prints JSON; a preview has every entry of each folder that\n"
    "              changes, in its new order, with its present position (\"from\",\n"
    "              counted from 0)\n"
    "-q, --quiet   sort, restore, undo and check print only errors; preview omits its\n"
    "              last line; backups prints only names; next prints only a time\n"
    "-n, --dry-run makes sort a preview\n"
    "-o, --output  makes sort write a sorted copy to the new file OUT, or to \"-\"\n"
    "--foreign     lets restore give FILE the content of any other bookmark file\n"
    "--color WHEN  colours: always, never, or auto, which is on a terminal\n"
    "-h, --help    prints this help\n"
    "--version     prints the version\n"
    "\n"
    "Exit status: 0 success, or in order; 1 failure (message on standard error), or\n"
    "for check: not in order; 2 wrong usage; 3 for check: failure; 74 success, but\n"
    "the output could not be written; 75 Safari is running, or it is unknown whether\n"
    "it is (nothing was changed). Of several files, the highest of their statuses.\n";

namespace {

constexpr unsigned bit(Command command) { return 1U << static_cast<unsigned>(command); }
constexpr unsigned everyCommand = ~0U;

struct Option {
  std::string_view name;
  std::string_view letter;                     // empty if there is none
  bool Request::*flag;                         // null if it takes a value
  std::optional<std::string> Request::*value;  // null if it takes none
  unsigned commands;                           // the bits of the commands that take it
};

constexpr std::array<Option, 7> options = {
    {{"--all", "-a", &Request::all, nullptr, bit(Command::preview)},
     {"--json", "-j", &Request::json, nullptr,
      bit(Command::preview) | bit(Command::check) | bit(Command::backups) | bit(Command::next)},
     {"--quiet", "-q", &Request::quiet, nullptr, everyCommand},
     {"--dry-run", "-n", &Request::dryRun, nullptr, bit(Command::sort)},
     {"--foreign", "", &Request::foreign, nullptr, bit(Command::restore)},
     {"--output", "-o", nullptr, &Request::output, bit(Command::sort)},
     {"--color", "", nullptr, &Request::color, everyCommand}}};

struct Form {
  std::string_view name;
  Command command;
  std::size_t operandsAtLeast;
  std::size_t operandsAtMost;
};

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();

constexpr std::array<Form, 8> forms = {{{"preview", Command::preview, 0, any},
                                        {"sort", Command::sort, 0, any},
                                        {"check", Command::check, 0, any},
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

// An option as it was given.
struct Word {
  std::string_view text;
  std::string_view name;
  std::optional<std::string_view> value;
};

const Option* optionOf(const Word& word) {
  const auto option = std::ranges::find_if(
      options, [&](const Option& known) { return word.name == known.name || word.name == known.letter; });
  return option == options.end() ? nullptr : &*option;
}

// Splits "--name=value".
Word wordOf(std::string_view text) {
  const std::size_t equals = text.starts_with("--") ? text.find('=') : text.npos;
  if (equals == text.npos) return {text, text, std::nullopt};
  return {text, text.substr(0, equals), text.substr(equals + 1)};
}

// The arguments, split into options and operands.
struct Words {
  std::vector<Word> options;
  std::vector<std::string_view> operands;

  bool have(std::string_view option) const { return std::ranges::find(options, option, &Word::text) != options.end(); }
};

Words wordsOf(const Arguments& arguments) {
  Words words;
  bool mayBeOption = true;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string_view argument = arguments[index];
    if (mayBeOption && argument == "--") {
      mayBeOption = false;
    } else if (mayBeOption && argument.size() > 1 && argument.front() == '-') {
      Word& word = words.options.emplace_back(wordOf(argument));
      const Option* const option = optionOf(word);
      const bool needsValue = option != nullptr && option->value != nullptr && !word.value;
      if (needsValue && index + 1 < arguments.size()) word.value = arguments[++index];
    } else {
      words.operands.push_back(argument);
    }
  }
  return words;
}

std::optional<Complaint> readOptions(const std::vector<Word>& words, const Form& form, Request& request) {
  for (const Word& word : words) {
    const Option* const option = optionOf(word);
    if (option == nullptr || (option->flag != nullptr && word.value))
      return Complaint{"there is no option " + quoted(word.text)};
    if ((option->commands & bit(form.command)) == 0)
      return Complaint{quoted(form.name) + " has no option " + quoted(word.text)};
    if (option->flag != nullptr)
      request.*option->flag = true;
    else if (word.value)
      request.*option->value = *word.value;
    else
      return Complaint{quoted(word.text) + " needs a value"};
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

bool hasStream(const Request& request) { return std::ranges::find(request.operands, "-") != request.operands.end(); }

// What options and operands exclude each other.
std::optional<Complaint> contradictionIn(const Request& request) {
  if (request.color && *request.color != "always" && *request.color != "never" && *request.color != "auto")
    return Complaint{"“--color” is always, never or auto"};
  const bool writesElsewhere = request.output || hasStream(request);
  if (request.command == Command::sort && writesElsewhere && request.operands.size() > 1)
    return Complaint{"“sort” writes one file to “-o” or “-”"};
  const bool takesStream = request.command == Command::preview || request.command == Command::check;
  if (!takesStream && request.command != Command::sort && hasStream(request))
    return Complaint{"“-” is for preview, sort and check"};
  if (request.output && request.dryRun) return Complaint{"“--dry-run” writes nothing, so it takes no “-o”"};
  return std::nullopt;
}

}  // namespace

std::variant<Request, Complaint> requestOf(const Arguments& arguments) {
  Words words = wordsOf(arguments);
  if (words.have("--help") || words.have("-h")) return Request{Command::help};
  if (arguments.size() == 1 && words.have("--version")) return Request{Command::version};
  if (words.operands.empty())
    return Complaint{words.options.empty() ? "there is no command"
                                           : "there is no command with " + quoted(words.options.front().text)};
  const auto form = std::ranges::find(forms, words.operands.front(), &Form::name);
  if (form == forms.end()) return unknownCommand(words.operands.front());
  words.operands.erase(words.operands.begin());
  Request request{form->command};
  if (auto complaint = readOptions(words.options, *form, request)) return *complaint;
  if (auto complaint = readOperands(words.operands, *form, request)) return *complaint;
  if (auto complaint = contradictionIn(request)) return *complaint;
  if (request.dryRun) request.command = Command::preview;
  return request;
}
