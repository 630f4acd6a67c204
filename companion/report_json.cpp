#include "companion/report_json.h"

#include "companion/instant_text.h"
#include "companion/json_text.h"
#include "values/plist_text.h"

namespace {

std::string json(const std::string& text) { return jsonString(utf16(text)); }

std::string json(const Backup& backup, const std::string& folder) {
  return R"({"name": )" + json(backup.file.name) + R"(, "path": )" + json(folder + "/" + backup.file.name) +
         R"(, "time": )" + json(universalInstantText(backup.file.modified)) + R"(, "size": )" +
         std::to_string(backup.file.size) + R"(, "bookmarks": )" +
         (backup.bookmarks ? std::to_string(*backup.bookmarks) : "null") + R"(, "isCurrent": )" +
         std::string(jsonTruth(backup.isCurrent)) + "}";
}

}  // namespace

std::string orderJson(const std::string& file, bool isInOrder) {
  return R"({"file": )" + json(file) + R"(, "isInOrder": )" + std::string(jsonTruth(isInOrder)) + "}\n";
}

std::string backupsJson(const std::string& file, const std::vector<Backup>& backups) {
  const std::string folder = backupsFolderOf(file);
  std::string list;
  for (const Backup& backup : backups) list += (list.empty() ? "" : ", ") + json(backup, folder);
  return R"({"file": )" + json(file) + R"(, "backups": [)" + list + R"(], "size": )" +
         std::to_string(totalSize(backups)) + "}\n";
}

std::string nextJson(const std::optional<Instant>& next, bool isStopped) {
  return R"({"next": )" + (next ? json(universalInstantText(*next)) : "null") + R"(, "isStopped": )" +
         std::string(jsonTruth(isStopped)) + "}\n";
}
