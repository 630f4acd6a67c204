#include "companion/backup_table.h"

#include <algorithm>
#include <array>

#include "companion/instant_text.h"
#include "values/harmless_text.h"

namespace {

using Row = std::array<std::string, 4>;

// One line: names and times aligned left, numbers right.
std::string line(const Row& row, const std::array<std::size_t, 4>& widths) {
  std::string text;
  for (std::size_t column = 0; column < row.size(); ++column) {
    const std::string space(widths[column] - row[column].size(), ' ');
    if (column > 0) text += "  ";
    text += column < 2 ? row[column] + space : space + row[column];
  }
  return text;
}

Row rowOf(const Backup& backup) {
  return {harmlessLine(backup.file.name), preciseInstantText(backup.file.modified), std::to_string(backup.file.size),
          backup.bookmarks ? std::to_string(*backup.bookmarks) : "damaged"};
}

std::string total(const std::vector<Backup>& backups) {
  return std::to_string(backups.size()) + (backups.size() == 1 ? " backup, " : " backups, ") +
         std::to_string(totalSize(backups)) + " bytes in total\n";
}

}  // namespace

std::string backupTable(const std::vector<Backup>& backups, const Styles& styles) {
  if (backups.empty()) return "There are no backups.\n";
  std::vector<Row> rows = {{"NAME", "TIME", "SIZE", "BOOKMARKS"}};
  for (const Backup& backup : backups) rows.push_back(rowOf(backup));
  std::array<std::size_t, 4> widths{};
  for (const Row& row : rows)
    for (std::size_t column = 0; column < row.size(); ++column)
      widths[column] = std::max(widths[column], row[column].size());
  std::string text = styles.bold(line(rows.front(), widths)) + "\n";
  for (std::size_t index = 0; index < backups.size(); ++index) {
    text += line(rows[index + 1], widths);
    if (backups[index].isCurrent) text += "  " + styles.green("current");
    text += "\n";
  }
  return text + total(backups);
}
