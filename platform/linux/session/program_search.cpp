#include "platform/linux/session/program_search.h"

#include <QFile>
#include <QStandardPaths>

std::optional<std::string> findProgram(const std::string& program) {
  const QString found = QStandardPaths::findExecutable(QFile::decodeName(program.c_str()));
  if (found.isEmpty()) return std::nullopt;
  return QFile::encodeName(found).toStdString();
}
