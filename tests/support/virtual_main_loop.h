// The clock of a virtual machine, which only tests advance, and the main loop that runs on it.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/main_loop.h"
#include "tests/support/journal.h"

// Converts an instant to "2026-09-25 09:30:00" in UTC, without fractions of a second, and back.
std::string utcText(Instant instant);
Instant utc(const std::string& text);

// Runs only while a test advances the time, also from within a modal dialog, like a nested event loop. Records "post",
// "after" with the delay, "timer" with its date or interval ("at 2026-09-25 09:30:00", "every 250 ms") and "invalidate"
// with the same.
class VirtualMainLoop : public MainLoop {
 public:
  using Duration = Instant::duration;

  explicit VirtualMainLoop(Journal& journal) : journal_(journal) {}

  Instant now() override { return clock_; }
  // The wall clock and the steady clock, for tests.
  Instant clock() const { return clock_; }
  Duration uptime() const { return steady_; }
  void post(Work work) override;
  void after(std::chrono::milliseconds delay, Work work) override;
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

  // Advances the time and runs whatever becomes due, each at its time. May be called from work that runs.
  void advance(Duration duration);
  void advanceTo(Instant instant) { advance(instant - clock_); }
  // Runs what is due now, without advancing the time.
  void run() { advance(Duration::zero()); }
  // Runs only the next thing, at its time, if it is due within this duration. Returns false if nothing is.
  bool runNext(Duration within) { return runNextUntil(steady_ + within, false); }
  // Advances the time while the main thread is occupied: only outside events run, not the loop's work.
  void occupy(Duration duration);
  // Advances only the wall clock, as while a machine sleeps.
  void sleep(Duration duration) { clock_ += duration; }
  // Advances the time without running anything.
  void pass(Duration duration);
  // Sets the wall clock.
  void setClock(Instant instant) { clock_ = instant; }

  // Schedules an event outside of the program, such as the end of another application. `description` is for pending().
  void elsewhere(Duration delay, Work event, std::string description = {});
  // Queues work from outside of the program, like post() but unrecorded. Place::front is before all work that is due.
  enum class Place { back, front };
  void deliver(Work work, Place place = Place::back, std::string description = {});

  // Forgets posted and delayed work that has not run yet.
  void dropPosted();
  // Forgets everything but the events outside of the program, as if the program had ended.
  void dropProgram();

  // Something that the loop will run.
  struct Pending {
    std::string description;  // what is recorded, or the description of elsewhere() and deliver()
    Duration remaining;       // until it is due; negative if it is overdue
    const Timer* timer;       // null if it is not a timer
    bool isFiring;            // its handler is running, in a dialog for example
  };
  // Everything that the loop will run, in the order in which it will run if nothing else happens.
  std::vector<Pending> pending() const;

  // How many timers are valid.
  int armedTimers() const;
  // The fire date of the next timerAt() timer as "2026-09-25 09:30:00", or "none".
  std::string nextTimer() const;

 private:
  class VirtualTimer;

  // Something that becomes due at a time of the steady clock or, if it has a fire date, of the wall clock.
  struct Entry {
    std::string description;
    bool isElsewhere;
    std::optional<Instant> fireDate;
    Duration due;
    Work work;
    std::shared_ptr<VirtualTimer> timer;
  };
  using Entries = std::list<Entry>;

  std::shared_ptr<Timer> add(Entry entry, TimerHandler handler);
  Duration remaining(const Entry& entry) const;
  Entries::iterator earliest(bool elsewhereOnly);
  bool runNextUntil(Duration target, bool elsewhereOnly);
  void runUntil(Duration target, bool elsewhereOnly);
  void run(Entries::iterator entry);

  Journal& journal_;
  Instant clock_ = utc("2026-09-21 08:00:00");  // a Monday
  Duration steady_ = Duration::zero();
  Entries entries_;  // in the order in which they were added
};
