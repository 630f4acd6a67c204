#include "app/perform_sort.h"

#include <cstdio>

#include "app/alert.h"
#include "app/disk_image.h"
#include "engine/bookmark_file.h"
#include "engine/job_report.h"
#include "engine/safari.h"
#include "engine/sort_job.h"
#include "platform/platform.h"

namespace {

// Asks the user to close Safari until it is closed. Returns false if the user gives up, and at once if `automatic`.
bool isSafariClosed() {
  while (safariRunning()) {
    if (automatic) return false;
    UserInterface& userInterface = platform().userInterface;
    userInterface.becomeAccessory();
    userInterface.activateIgnoringOthers();
    const std::size_t choice = userInterface.runModal(
        {"Safari is still open",
         "Quit Safari, then click Retry to sort your bookmarks. Your bookmarks have not been changed.",
         {"Retry", "Cancel"}});
    if (choice != 0) return false;
  }
  return true;
}

using ShowSorting = std::function<void(bool isSorting)>;

class SortingScope {
 public:
  explicit SortingScope(const ShowSorting& show) : show_(show) {
    if (show_) show_(true);
  }
  ~SortingScope() {
    if (show_) show_(false);
  }
  SortingScope(const SortingScope&) = delete;
  SortingScope& operator=(const SortingScope&) = delete;

 private:
  const ShowSorting& show_;
};

// Sorts, and returns what to report; none if there is nothing to report.
std::optional<Report> sortUnlessImpossible(const ShowSorting& showSorting) {
  if (!automatic && runsFromDiskImage())
    return Report{"Install the app first",
                  "Drag Quillery into Applications, then open the installed copy. Automatic sorting cannot run from a "
                  "disk image."};
  std::optional<Rewrite> rewrite;
  try {
    if (!isSafariClosed()) return std::nullopt;
    const SortingScope shown(showSorting);
    rewrite = sortBookmarkFile(bookmarkFile());
  } catch (const std::exception& error) {
    return failureReport(sortFailed, error);
  }
  if (!rewrite && automatic) return std::nullopt;
  return sortReport(rewrite);  // a failure of this is not one of the sort
}

}  // namespace

void performSort(const ShowSorting& showSorting) noexcept {
  try {
    if (const std::optional<Report> report = sortUnlessImpossible(showSorting)) alert(report->title, report->message);
  } catch (...) {
    // No dialog could be shown, or memory has run out: this text needs neither.
    static_cast<void>(std::fputs("quillery: the outcome of a sort could not be reported\n", stderr));
  }
}
