#include "companion/companion.h"

#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <variant>

#include "app/alert.h"
#include "values/harmless_text.h"
#include "app/probes.h"
#include "platform/product.h"
#include "companion/backup_table.h"
#include "companion/command_line.h"
#include "companion/instant_text.h"
#include "companion/preview_json.h"
#include "companion/preview_text.h"
#include "companion/styles.h"
#include "engine/backups.h"
#include "engine/bookmark_file.h"
#include "engine/restore_job.h"
#include "engine/sort_job.h"
#include "engine/sort_order.h"
#include "platform/platform.h"
#include "schedule/schedule_settings.h"

namespace {

enum ExitStatus { success = 0, failure = 1, notInOrder = 1, wrongUsage = 2, checkFailed = 3, safariOpen = 75 };

// How many entries a preview lists of any file; beyond these, no more than the file has bytes.
constexpr std::size_t entriesOfASmallFile = 100'000;

// Keeps what is written to standard output from it, for as long as it lives and is wanted.
class Silence {
 public:
  explicit Silence(bool isWanted) : isWanted_(isWanted) {
    if (isWanted_) std::cout.setstate(std::ios::failbit);
  }
  ~Silence() {
    if (isWanted_) std::cout.clear();
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  bool isWanted_;
};

// While it lives, nobody is asked anything.
class Unattended {
 public:
  Unattended() { automatic = true; }
  ~Unattended() { automatic = false; }
  Unattended(const Unattended&) = delete;
  Unattended& operator=(const Unattended&) = delete;
};

void complain(const std::string& text) { std::cerr << "quilleryctl: " << harmlessText(text) << '\n'; }

std::string absolute(const std::string& path) {
  return path.starts_with('/') ? path : platform().processes.workingFolder() + "/" + path;
}

// The file that an operand names; absent if there is no such operand.
std::optional<std::string> namedFile(const Request& request, std::size_t index) {
  return index < request.operands.size() ? std::optional(absolute(request.operands[index])) : std::nullopt;
}

std::string chosenFile(const Request& request) {
  const std::optional<std::string> file = namedFile(request, 0);
  return file ? *file : bookmarkFile();
}

int safariIsInTheWay() {
  complain("Safari is running; nothing was read");
  return safariOpen;
}

int sort(const Request& request) {
  const std::optional<std::string> file = namedFile(request, 0);
  const Unattended unattended;
  const Silence silence(request.quiet);
  const SortResult result = performSort(file);
  switch (result.outcome) {
    case SortOutcome::sorted:
    case SortOutcome::alreadyInOrder: return success;
    case SortOutcome::safariRunning: return safariIsInTheWay();
    case SortOutcome::onDiskImage:  // asked only of a sort that a person watches
    case SortOutcome::failed: complain(result.message); return failure;
  }
  return failure;
}

int restore(const Request& request) {
  const std::string& name = request.operands[0];
  const std::string backup = name.find('/') == name.npos ? backupsFolder() + "/" + name : absolute(name);
  const std::optional<std::string> file = namedFile(request, 1);
  const Unattended unattended;
  const Silence silence(request.quiet);
  const RestoreResult result = performRestore(backup, file);
  switch (result.outcome) {
    case RestoreOutcome::restored:
    case RestoreOutcome::alreadyThere: return success;
    case RestoreOutcome::safariRunning: return safariIsInTheWay();
    case RestoreOutcome::failed: complain(result.message); return failure;
  }
  return failure;
}

int preview(const Request& request) {
  const std::string file = chosenFile(request);
  const Bytes bytes = platform().fileSystem.read(file);
  const PlistValue root = parseBookmarks(bytes).value;
  SortPreview preview(root, bytes.size() + entriesOfASmallFile);
  if (request.json) {
    std::cout << previewJson(preview, root, request.all, file);
    return success;
  }
  std::cout << previewText(preview, root, request.all, outputStyles());
  if (!request.quiet) std::cout << previewSummary(preview);
  return success;
}

int check(const Request& request) {
  const PlistValue root = parseBookmarks(platform().fileSystem.read(chosenFile(request))).value;
  const bool isInOrder = sorted(root, true) == root;
  if (!request.quiet) std::cout << "Your Safari bookmarks are " << (isInOrder ? "already" : "not") << " in order.\n";
  return isInOrder ? success : notInOrder;
}

// The bytes of the user's bookmark file, to compare backups with; absent if they cannot be read, which is said.
std::optional<Bytes> currentBytes() {
  try {
    return platform().fileSystem.read(bookmarkFile());
  } catch (const Error& error) {
    complain(error.description());
    return std::nullopt;
  }
}

int backups(const Request& request) {
  if (request.quiet) {
    for (const FileEntry& file : backupFiles()) std::cout << harmlessLine(file.name) << '\n';
  } else {
    std::cout << backupTable(listBackups(currentBytes()), outputStyles());
  }
  return success;
}

int next(const Request& request, Instant now) {
  const std::optional<Instant> date = sortingIsPaused() ? std::nullopt : nextScheduledSort(now);
  if (date)
    std::cout << instantText(*date) << '\n';
  else if (!request.quiet)
    std::cout << (sortingIsPaused() ? "No sort is scheduled: automatic sorting is stopped.\n"
                                    : "No sort is scheduled.\n");
  return success;
}

int perform(const Request& request, Instant now) {
  switch (request.command) {
    case Command::preview: return preview(request);
    case Command::sort: return sort(request);
    case Command::check: return check(request);
    case Command::backups: return backups(request);
    case Command::restore: return restore(request);
    case Command::next: return next(request, now);
    case Command::help: std::cout << usageText << helpText; return success;
    case Command::version: std::cout << "quilleryctl " << product::version << '\n'; return success;
  }
  return failure;
}

int failureOf(Command command) { return command == Command::check ? checkFailed : failure; }

}  // namespace

int runCompanion(const Arguments& arguments, Instant now) {
  const auto asked = requestOf(arguments);
  if (const auto* complaint = std::get_if<Complaint>(&asked)) {
    complain(complaint->text);
    std::cerr << usageText;
    return wrongUsage;
  }
  const auto& request = std::get<Request>(asked);
  try {
    const int status = perform(request, now);
    if (std::cout.flush()) return status;
    complain("not all of the output could be written");
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return failureOf(request.command);
}
