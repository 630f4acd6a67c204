// When to look for updates without being asked.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/user_defaults.h"

// A check is due a day after the last one, and at once if the clock was set back before that. There is none until the
// user has switched automatic checks on: that is the consent to contact the maker's server.
class CheckSchedule {
 public:
  static constexpr std::chrono::hours interval{24};

  // Both objects must outlive this. Destroying this stops it.
  CheckSchedule(MainLoop& loop, UserDefaults& userDefaults) : loop_(loop), userDefaults_(userDefaults) {}
  ~CheckSchedule() { stop(); }
  CheckSchedule(const CheckSchedule&) = delete;
  CheckSchedule& operator=(const CheckSchedule&) = delete;

  // The stored consent: "SUEnableAutomaticChecks", false unless it is the Boolean true.
  bool isAllowed() const;
  void setAllowed(bool allowed);

  // Stores that a check happens now, as "SULastCheckTime".
  void noteCheck();

  // Calls `due` once, when the next check is due, unless it is stopped before. No-op without consent. Replaces the
  // previous start.
  void start(std::function<void()> due);
  void stop();

 private:
  Instant nextCheck() const;

  MainLoop& loop_;
  UserDefaults& userDefaults_;
  std::shared_ptr<Timer> timer_;
};
