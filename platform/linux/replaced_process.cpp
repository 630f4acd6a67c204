#include "platform/linux/replaced_process.h"

#include <linux/close_range.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/run_error.h"
#include "platform/linux/word_pointers.h"

// Descriptors stay open until the other program runs, because this one needs them if it does not.
void replaceProcess(const std::string& executable) {
  static_cast<void>(close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC));
  std::vector<std::string> words = {executable};
  execv(executable.c_str(), pointersTo(words).data());
  throw cannotRun(executable, errno);
}
