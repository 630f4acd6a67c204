#include "engine/job_report.h"

#include "values/harmless_text.h"

Report sortReport(const std::optional<std::string>& backup) {
  if (!backup) return {"Already sorted", "Your Safari bookmarks are already in order."};
  return {"Bookmarks sorted",
          "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\nBackup: " +
              harmlessLine(*backup)};
}

Report failureReport(const std::string& title, const std::exception& error) {
  return {title, std::string(error.what()) +
                     "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in System "
                     "Settings → Privacy & Security. No permissions are changed automatically."};
}
