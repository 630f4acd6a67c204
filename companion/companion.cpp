#include "companion/companion.h"

#include <exception>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "companion/backup_table.h"
#include "companion/command_line.h"
#include "companion/instant_text.h"
#include "companion/preview_json.h"
#include "companion/preview_text.h"
#include "companion/styles.h"
#include "engine/backups.h"
#include "engine/bookmark_file.h"
#include "engine/job_report.h"
#include "engine/restore_job.h"
#include "engine/safari.h"
#include "engine/sort_job.h"
#include "engine/sort_order.h"
#include "platform/platform.h"
#include "platform/product.h"
#include "schedule/schedule_settings.h"
#include "values/harmless_text.h"

namespace {

enum ExitStatus {
  success = 0,
  failure = 1,
  notInOrder = 1,
  wrongUsage = 2,
  checkFailed = 3,
  outputLost = 74,  // EX_IOERR of sysexits.h
  tryLater = 75     // EX_TEMPFAIL
};

// The most entries of a preview of a file. An entry that no other folder refers to takes at least four bytes.
std::size_t mostEntriesOfPreview(std::size_t fileSize) {
  constexpr std::size_t ofASmallFile = 100'000;
  return fileSize / 4 + ofASmallFile;
}

// The most bytes of a preview of a file. In a preview of honest bookmarks, an entry takes fewer bytes than in the file,
// and at most three times as many for each character outside ASCII.
std::size_t mostBytesOfPreview(std::size_t fileSize) {
  constexpr std::size_t ofASmallFile = 8'000'000;
  return 8 * fileSize + ofASmallFile;
}

// Needs no memory.
void complainAboutMemory() noexcept { std::cerr << "quilleryctl: there is not enough memory\n"; }

std::string absolute(const std::string& path) {
  return path.starts_with('/') ? path : platform().processes.workingFolder() + "/" + path;
}

// The file that an operand names, or the user's bookmark file if there is no such operand.
std::string chosenFile(const Request& request, std::size_t operand) {
  return operand < request.operands.size() ? absolute(request.operands[operand]) : bookmarkFile();
}

// Prints a report as one line, as soon as it is known.
void print(const Report& report, const Request& request) {
  if (!request.quiet) std::cout << harmlessText(report.title + ": " + report.message) << '\n' << std::flush;
}

// Runs a job while Safari is closed and returns the exit status.
int runWithoutSafari(const Request& request, const std::function<void()>& job) {
  if (safariRunning()) {
    complain("Safari is running; nothing was read");
    return tryLater;
  }
  if (!request.quiet && !canLookForSafari())
    complain("there is no login session, so Safari could not be looked for and counts as closed");
  job();
  return success;
}

// Runs a job and returns the exit status. A failure is printed on both streams: the log and the terminal.
int runJob(const Request& request, const char* failureTitle, const std::function<void()>& job) {
  try {
    return runWithoutSafari(request, job);
  } catch (const SafariUnknown& error) {
    complain(error.description());
    return tryLater;
  } catch (const std::exception& error) {
    const Report report = failureReport(failureTitle, error);
    print(report, request);
    complain(report.message);
    return failure;
  }
}

// Prints the report of a job that has succeeded. It stays a success if there is no memory for the report.
int printed(const std::function<Report()>& makeReport, const Request& request) noexcept {
  try {
    print(makeReport(), request);
    return success;
  } catch (...) {
    std::cerr << "quilleryctl: the job is done, but there is not enough memory for its report\n";
    return outputLost;
  }
}

int sort(const Request& request) {
  std::optional<Rewrite> rewrite;
  const int status = runJob(request, sortFailed, [&] { rewrite = sortBookmarkFile(chosenFile(request, 0)); });
  if (!rewrite) return status;
  return printed([&] { return sortReport(rewrite); }, request);
}

Report restoreReport(const RestoreResult& result) {
  if (result.outcome == RestoreOutcome::alreadyThere)
    return {"Already restored", "Your Safari bookmarks are already the same as this backup."};
  return {"Bookmarks restored", "Your bookmarks are as they were when the backup was made. You can reopen Safari." +
                                    (result.rewrite ? backupsOf(*result.rewrite) : std::string())};
}

// The report of a file that got the content of a bookmark file that is no backup of it.
Report foreignReport(const std::string& backup, const std::string& file, const RestoreResult& result) {
  return {result.outcome == RestoreOutcome::restored ? "Bookmarks replaced" : "Already restored",
          harmlessLine(file) + " has the content of " + harmlessLine(backup) + " now. You can reopen Safari." +
              (result.rewrite ? backupsOf(*result.rewrite) : std::string())};
}

int restore(const Request& request) {
  const std::string& name = request.operands[0];
  const std::string file = chosenFile(request, 1);
  const std::string backup = name.find('/') == name.npos ? backupsFolderOf(file) + "/" + name : absolute(name);
  const bool isForeign = !isBackupOf(backup, file);
  if (isForeign && !(request.foreign && request.operands.size() == 2)) {
    complain(harmlessLine(backup) + " is no backup of " + harmlessLine(file) +
             "; to replace that file with it all the same, add the file and --foreign");
    return failure;
  }
  std::optional<RestoreResult> result;
  const int status =
      runJob(request, "Bookmarks could not be restored", [&] { result = restoreBookmarkFile(backup, file); });
  if (!result) return status;
  return printed([&] { return isForeign ? foreignReport(backup, file, *result) : restoreReport(*result); }, request);
}

int preview(const Request& request) {
  const std::string file = chosenFile(request, 0);
  const Bytes bytes = platform().fileSystem.read(file);
  const PlistValue root = parseBookmarks(bytes).value;
  SortPreview preview(root, mostEntriesOfPreview(bytes.size()));
  BoundedOutput output(std::cout, mostBytesOfPreview(bytes.size()));
  if (request.json) {
    printPreviewJson(preview, root, request.all, file, output);
    return success;
  }
  printPreviewText(preview, root, request.all, outputStyles(), output);
  if (!request.quiet) std::cout << previewSummary(preview);
  return success;
}

int check(const Request& request) {
  const PlistValue root = parseBookmarks(platform().fileSystem.read(chosenFile(request, 0))).value;
  const bool isInOrder = sorted(root, true) == root;
  if (!request.quiet) std::cout << "Your Safari bookmarks are " << (isInOrder ? "already" : "not") << " in order.\n";
  return isInOrder ? success : notInOrder;
}

// The bytes of a bookmark file, to compare its backups with. None if it cannot be read; that is reported.
std::optional<Bytes> currentBytes(const std::string& file) {
  try {
    return platform().fileSystem.read(file);
  } catch (const Error& error) {
    complain(error.description());
    return std::nullopt;
  }
}

int backups(const Request& request) {
  const std::string file = chosenFile(request, 0);
  if (request.quiet) {
    for (const FileEntry& backup : backupFiles(file)) std::cout << harmlessLine(backup.name) << '\n';
  } else {
    std::cout << backupTable(listBackups(file, currentBytes(file)), outputStyles());
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

// Returns the exit status after this one, once all output is written.
int finished(int status) noexcept {
  if (std::cout.flush()) return status;
  complain("not all of the output could be written");
  return status == success ? outputLost : status;
}

// Performs a command and returns the exit status. Reports every failure.
int performed(const Request& request, Instant now) noexcept {
  try {
    return finished(perform(request, now));
  } catch (const std::bad_alloc&) {
    complainAboutMemory();
  } catch (const std::exception& error) {
    complain(error.what());
  }
  return failureOf(request.command);
}

}  // namespace

void complain(std::string_view text) noexcept {
  try {
    std::cerr << "quilleryctl: " << harmlessText(text) << '\n';
  } catch (...) {
    complainAboutMemory();
  }
}

int runCompanion(const Arguments& arguments, Instant now) {
  const auto asked = requestOf(arguments);
  if (const auto* complaint = std::get_if<Complaint>(&asked)) {
    complain(complaint->text);
    std::cerr << usageText;
    return wrongUsage;
  }
  return performed(std::get<Request>(asked), now);
}
