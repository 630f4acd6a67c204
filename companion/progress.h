// A sign that a command is busy.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

// If standard output is a terminal, says there that the command works once this object has existed for a second, and
// removes that at the end. Nothing else may print on standard output meanwhile.
class Progress {
 public:
  // No-op unless `isWanted`.
  explicit Progress(bool isWanted);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void show();

  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;
};
