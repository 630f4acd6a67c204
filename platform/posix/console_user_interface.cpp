#include "platform/posix/console_user_interface.h"

std::size_t ConsoleUserInterface::runModal(const Alert& alert) {
  output_ << alert.messageText << '\n' << alert.informativeText << '\n' << std::flush;
  return alert.buttons.empty() ? 0 : alert.buttons.size() - 1;
}
