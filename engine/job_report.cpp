#include "engine/job_report.h"

#include "values/harmless_text.h"

Report sortReport(const std::optional<Rewrite>& rewrite) {
  if (!rewrite) return {"Already sorted", "Your Safari bookmarks are already in order."};
  return {
      "Bookmarks sorted",
      "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari." + backupsOf(*rewrite)};
}

std::string backupsOf(const Rewrite& rewrite) {
  std::string text;
  if (rewrite.changedLate)
    text = "\n\nAnother program changed the file at the same moment. Its version is not in the file; " +
           (rewrite.lateBackup ? "it is in this backup: " + harmlessLine(*rewrite.lateBackup)
                               : "no backup of it could be made.");
  return text + "\n\nBackup: " + harmlessLine(rewrite.backup);
}

Report failureReport(const std::string& title, const std::exception& error) {
  return {title, std::string(error.what()) +
                     "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in System "
                     "Settings → Privacy & Security. No permissions are changed automatically."};
}
