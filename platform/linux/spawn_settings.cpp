#include "platform/linux/spawn_settings.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

SpawnSettings::SpawnSettings(int output) {
  posix_spawn_file_actions_init(&streams_);
  posix_spawn_file_actions_addopen(&streams_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
    if (output < 0)
      posix_spawn_file_actions_addopen(&streams_, stream, "/dev/null", O_WRONLY, 0);
    else
      posix_spawn_file_actions_adddup2(&streams_, output, stream);
  sigset_t signals;
  posix_spawnattr_init(&signals_);
  posix_spawnattr_setflags(&signals_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&signals_, &signals);
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&signals_, &signals);
}

SpawnSettings::~SpawnSettings() {
  posix_spawnattr_destroy(&signals_);
  posix_spawn_file_actions_destroy(&streams_);
}
