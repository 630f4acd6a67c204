#include "companion/companion.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "companion/backup_table.h"
#include "companion/command_line.h"
#include "companion/instant_text.h"
#include "companion/preview_json.h"
#include "companion/preview_text.h"
#include "companion/progress.h"
#include "companion/report_json.h"
#include "companion/standard_input.h"
#include "companion/styles.h"
#include "engine/backups.h"
#include "engine/bookmark_file.h"
#include "engine/job_report.h"
#include "engine/restore_job.h"
#include "engine/safari.h"
#include "engine/sort_job.h"
#include "engine/sort_order.h"
#include "engine/sorter_error.h"
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

constexpr const char* standardStream = "-";

// The file that a command works on.
struct Subject {
  std::string path;  // "-" is standard input
  std::string name;  // as the user named it, escaped; empty for the user's own bookmark file

  // The beginning of a sentence about its order.
  std::string is() const { return name.empty() ? "Your Safari bookmarks are" : name + " is"; }
};

// The file that an operand names, or the user's bookmark file if there is no such operand.
Subject chosenFile(const Request& request, std::size_t operand) {
  if (operand >= request.operands.size()) return {bookmarkFile(), ""};
  if (request.operands[operand] == standardStream) return {standardStream, "standard input"};
  return {absolute(request.operands[operand]), harmlessLine(request.operands[operand])};
}

Bytes contentOf(const Subject& file) {
  return file.path == standardStream ? standardInput() : platform().fileSystem.read(file.path);
}

// Returns true if a file is what browsers export their bookmarks to.
bool isBrowserExport(const std::string& path) {
  if (path == standardStream) return false;  // it cannot be read again
  constexpr std::string_view start = "<!DOCTYPE NETSCAPE-Bookmark-file";
  try {
    return platform().fileSystem.read(path).text().substr(0, 100).find(start) != std::string_view::npos;
  } catch (const Error&) {
    return false;
  }
}

// What failed with a file, in one line that names the file.
void complainAbout(const std::string& path, const Error& error) {
  std::string text = error.description();
  if (path == standardStream)
    text = "standard input: " + text;
  else if (text.find(path) == std::string::npos)
    text = harmlessLine(path) + ": " + text;
  if (isBrowserExport(path)) text += " It is a browser’s HTML export, and no property list as Safari’s own file is.";
  complain(text);
}

// Prints a report as one line, as soon as it is known.
void print(const Report& report, const Request& request) {
  if (!request.quiet) std::cout << harmlessText(report.title + ": " + report.message) << '\n' << std::flush;
}

bool isSafariRunning(const Request& request) {
  const Progress progress(!request.quiet);
  return safariRunning();
}

// Runs a job while Safari is closed and returns its exit status.
int runWithoutSafari(const Request& request, const std::function<int()>& job) {
  try {
    if (isSafariRunning(request)) {
      complain("Safari is running; nothing was read");
      return tryLater;
    }
    if (!request.quiet && !canLookForSafari())
      complain("there is no login session, so Safari could not be looked for and counts as closed");
    return job();
  } catch (const SafariUnknown& error) {
    complain(error.description());
  } catch (const Error& error) {
    if (!isSorterError(error, SorterError::safariIsOpen)) throw;
    complain("Safari was started meanwhile; the file was left as it was");
  }
  return tryLater;
}

// The file that a job writes, and the one that it parses.
struct JobFiles {
  std::string written;
  std::string parsed;
};

// Runs a job. Returns success, or the exit status of its failure, which is reported. Throws what concerns Safari.
int runJob(const Request& request, const JobFiles& files, const std::function<void()>& job) {
  try {
    const Progress progress(!request.quiet);
    job();
    return success;
  } catch (const SafariUnknown&) {
    throw;
  } catch (const Error& error) {
    if (isSorterError(error, SorterError::safariIsOpen)) throw;
    complainAbout(isSorterError(error, SorterError::changedMeanwhile) ? files.written : files.parsed, error);
    return failure;
  }
}

// Runs a command on each of its files, and returns the highest of the exit statuses.
int forEachFile(const Request& request, int (*command)(const Request&, const Subject&)) {
  int status = success;
  for (std::size_t file = 0; file < std::max<std::size_t>(request.operands.size(), 1); ++file)
    status = std::max(status, command(request, chosenFile(request, file)));
  return status;
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

// The report of a sorted file.
Report reportOf(const Subject& file, const Rewrite& rewrite) {
  if (file.name.empty()) return sortReport(rewrite);
  return {"Bookmarks sorted",
          "In " + file.name + " folders come first, followed by bookmarks in alphabetical order." + backupsOf(rewrite)};
}

int sortFile(const Request& request, const Subject& file) {
  std::optional<Rewrite> rewrite;
  const int status = runJob(request, {file.path, file.path}, [&] { rewrite = sortBookmarkFile(file.path); });
  if (!rewrite) return status;
  return printed([&] { return reportOf(file, *rewrite); }, request);
}

// Writes a sorted copy. Never replaces a file, so it needs no backup.
int copySorted(const Request& request, const Subject& file) {
  const std::string output = request.output.value_or(standardStream);
  Bytes content;
  const int status = runJob(request, {file.path, file.path}, [&] { content = sortedContent(contentOf(file)); });
  if (status != success) return status;
  if (output == standardStream)
    std::cout << content.text();
  else
    platform().fileSystem.writeNew(absolute(output), content);
  return success;
}

int sort(const Request& request) {
  const bool isCopy = request.output || chosenFile(request, 0).path == standardStream;
  if (isCopy) return forEachFile(request, copySorted);
  return runWithoutSafari(request, [&] { return forEachFile(request, sortFile); });
}

// The end of the report of a restored file.
std::string endOf(const Subject& file, const RestoreResult& result) {
  return (file.name.empty() ? " You can reopen Safari." : "") +
         (result.rewrite ? backupsOf(*result.rewrite) : std::string());
}

Report restoreReport(const Subject& file, const RestoreResult& result) {
  if (result.outcome == RestoreOutcome::alreadyThere)
    return {"Already restored", file.is() + " already the same as this backup."};
  return {"Bookmarks restored", (file.name.empty() ? "Your bookmarks are as they were" : file.name + " is as it was") +
                                    " when the backup was made." + endOf(file, result)};
}

// The report of a file that got the content of a bookmark file that is no backup of it.
Report foreignReport(const std::string& backup, const Subject& file, const RestoreResult& result) {
  return {result.outcome == RestoreOutcome::restored ? "Bookmarks replaced" : "Already restored",
          file.name + " has the content of " + harmlessLine(backup) + " now." + endOf(file, result)};
}

// The path of the backup that an operand names: a path, or the name of one of the file's backups or its beginning.
// Absent if there is not exactly one; that is reported.
std::optional<std::string> chosenBackup(const std::string& operand, const std::string& file) {
  if (operand.find('/') != operand.npos) return absolute(operand);
  std::vector<std::string> found = backupsNamed(operand, file);
  if (found.size() == 1) return found.front();
  complain(found.empty() ? "there is no backup “" + harmlessLine(operand) + "” of " + harmlessLine(file)
                         : "“" + harmlessLine(operand) + "” is the beginning of " + std::to_string(found.size()) +
                               " backups of " + harmlessLine(file));
  return std::nullopt;
}

int restore(const Request& request) {
  const Subject file = chosenFile(request, 1);
  const std::optional<std::string> backup = chosenBackup(request.operands[0], file.path);
  if (!backup) return failure;
  const bool isForeign = !isBackupOf(*backup, file.path);
  if (isForeign && !(request.foreign && request.operands.size() == 2)) {
    complain(harmlessLine(*backup) + " is no backup of " + harmlessLine(file.path) +
             "; to replace that file with it all the same, add the file and --foreign");
    return failure;
  }
  std::optional<RestoreResult> result;
  const int status = runWithoutSafari(request, [&] {
    return runJob(request, {file.path, *backup}, [&] { result = restoreBookmarkFile(*backup, file.path); });
  });
  if (!result) return status;
  return printed([&] { return isForeign ? foreignReport(*backup, file, *result) : restoreReport(file, *result); },
                 request);
}

int undo(const Request& request) {
  const Subject file = chosenFile(request, 0);
  std::optional<RestoreResult> result;
  const int status = runWithoutSafari(request, [&] {
    return runJob(request, {file.path, file.path}, [&] {
      if (const auto backup = lastDifferentBackup(file.path)) result = restoreBookmarkFile(*backup, file.path);
    });
  });
  if (result) return printed([&] { return restoreReport(file, *result); }, request);
  if (status != success) return status;
  complain("there is no backup of " + harmlessLine(file.path) + " that differs from it");
  return failure;
}

// Prints a preview, with the name of the file if there are several.
void printPreview(const Request& request, const Subject& file) {
  std::unique_ptr<SortPreview> preview;
  PlistValue root = false;
  std::size_t size = 0;
  {
    const Progress progress(!request.quiet);
    const Bytes bytes = contentOf(file);
    size = bytes.size();
    root = parseBookmarks(bytes).value;
    preview = std::make_unique<SortPreview>(root, mostEntriesOfPreview(size));
  }
  BoundedOutput output(std::cout, mostBytesOfPreview(size));
  if (request.json) {
    printPreviewJson(*preview, root, request.all, file.path, output);
    return;
  }
  const Styles styles = outputStyles(request.color);
  if (request.operands.size() > 1) std::cout << styles.bold(file.name) << ":\n";
  printPreviewText(*preview, root, request.all, styles, output);
  if (!request.quiet) std::cout << previewSummary(*preview, file.is());
}

int preview(const Request& request, const Subject& file) {
  printPreview(request, file);
  return success;
}

bool isInOrder(const Request& request, const Subject& file) {
  const Progress progress(!request.quiet);
  const PlistValue root = parseBookmarks(contentOf(file)).value;
  return sorted(root, true) == root;
}

int check(const Request& request, const Subject& file) {
  const bool inOrder = isInOrder(request, file);
  if (request.json)
    std::cout << orderJson(file.path, inOrder);
  else if (!request.quiet)
    std::cout << file.is() << (inOrder ? " already" : " not") << " in order.\n";
  return inOrder ? success : notInOrder;
}

int failureOf(Command command) { return command == Command::check ? checkFailed : failure; }

// Runs a command that only reads a file, and returns the exit status.
template <int (*command)(const Request&, const Subject&)>
int readOnly(const Request& request, const Subject& file) {
  try {
    return command(request, file);
  } catch (const Error& error) {
    complainAbout(file.path, error);
    return failureOf(request.command);
  }
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
  const std::string file = chosenFile(request, 0).path;
  if (request.quiet && !request.json) {
    for (const FileEntry& backup : backupFiles(file)) std::cout << harmlessLine(backup.name) << '\n';
    return success;
  }
  const std::optional<Bytes> current = currentBytes(file);
  std::vector<Backup> list;
  {
    const Progress progress(!request.quiet);
    list = listBackups(file, current);
  }
  std::cout << (request.json ? backupsJson(file, list) : backupTable(list, outputStyles(request.color)));
  return success;
}

int next(const Request& request, Instant now) {
  const std::optional<Instant> date = sortingIsPaused() ? std::nullopt : nextScheduledSort(now);
  if (request.json)
    std::cout << nextJson(date, sortingIsPaused());
  else if (date)
    std::cout << instantText(*date) << '\n';
  else if (!request.quiet)
    std::cout << (sortingIsPaused() ? "No sort is scheduled: automatic sorting is stopped.\n"
                                    : "No sort is scheduled.\n");
  return success;
}

int perform(const Request& request, Instant now) {
  switch (request.command) {
    case Command::preview: return forEachFile(request, readOnly<preview>);
    case Command::sort: return sort(request);
    case Command::check: return forEachFile(request, readOnly<check>);
    case Command::backups: return backups(request);
    case Command::restore: return restore(request);
    case Command::undo: return undo(request);
    case Command::next: return next(request, now);
    case Command::help: std::cout << usageText << helpText; return success;
    case Command::version: std::cout << "quilleryctl " << product::version << '\n'; return success;
  }
  return failure;
}

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
    complain(complaint->text + "; see quilleryctl --help");
    return wrongUsage;
  }
  return performed(std::get<Request>(asked), now);
}
