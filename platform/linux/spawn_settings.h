// How this program starts others.
#pragma once

#include <spawn.h>

// What a started program inherits: standard input from /dev/null, standard output and error to a descriptor, and no
// blocked or ignored signals.
class SpawnSettings {
 public:
  // Without a descriptor, output goes to /dev/null.
  explicit SpawnSettings(int output = -1);
  ~SpawnSettings();
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const posix_spawn_file_actions_t* streams() const { return &streams_; }
  const posix_spawnattr_t* signals() const { return &signals_; }

 private:
  posix_spawn_file_actions_t streams_{};
  posix_spawnattr_t signals_{};
};
