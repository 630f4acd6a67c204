#include "values/log_line.h"

#include "values/harmless_text.h"

void logLine(std::ostream& log, std::string_view utf8) {
  log << harmlessText(utf8) << '\n' << std::flush;
  log.clear();
}
