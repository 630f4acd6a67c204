#include "companion/styles.h"

#include "platform/platform.h"

Styles outputStyles(const std::optional<std::string>& color) {
  if (color && *color != "auto") return Styles(*color == "always");
  Processes& processes = platform().processes;
  if (!processes.writesToTerminal()) return Styles(false);
  const bool isForbidden = !processes.environmentVariable("NO_COLOR").value_or("").empty();
  const std::string terminal = processes.environmentVariable("TERM").value_or("dumb");
  return Styles(!isForbidden && terminal != "dumb");
}
