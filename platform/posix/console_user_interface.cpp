#include "platform/posix/console_user_interface.h"

#include "values/log_line.h"

std::size_t ConsoleUserInterface::runModal(const Alert& alert) {
  logLine(output_, alert.messageText + "\n" + alert.informativeText);
  return alert.buttons.empty() ? 0 : alert.buttons.size() - 1;
}
