// The time of a virtual machine, which only a test moves, and the main loop that runs on it.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "platform/main_loop.h"
#include "tests/support/journal.h"

// "2026-09-25 09:30:00" in UTC, fractions of a second left out; and back.
std::string utcText(Instant instant);
Instant utc(const std::string& text);

// It runs only while a test lets time pass, also in the middle of a modal dialog: the nested loop. Noted are "post",
// "after" with the delay, "timer" with what it waits for ("at 2026-09-25 09:30:00", "every 250 ms") and "invalidate"
// with the same.
class VirtualMainLoop : public MainLoop {
 public:
  using Duration = Instant::duration;

  explicit VirtualMainLoop(Journal& journal) : journal_(journal) {}

  Instant now() override { return clock_; }
  void post(Work work) override;
  void after(std::chrono::milliseconds delay, Work work) override;
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

  // Lets time pass and runs whatever falls due, each at its moment; also from within something that runs.
  void advance(Duration duration);
  void advanceTo(Instant instant) { advance(instant - clock_); }
  // Runs what is due now.
  void run() { advance(Duration::zero()); }
  // Lets time pass while the main thread does something else: the world outside goes on, the loop does not.
  void occupy(Duration duration);
  // Lets the clock on the wall go on while everything else stands still, as in a machine that is asleep.
  void sleep(Duration duration) { clock_ += duration; }
  // Sets the clock on the wall.
  void setClock(Instant instant) { clock_ = instant; }

  // Something that happens this much later outside of the program.
  void elsewhere(Duration delay, Work event);
  // Something from outside that the loop is told: it runs as if posted, in front of all that is due if so asked.
  enum class Place { back, front };
  void deliver(Work work, Place place = Place::back);

  // Forgets the work that was posted or delayed and has not been done.
  void dropPosted();

  // How many timers may still fire.
  int armedTimers() const;
  // When the first of those at an instant fires, as "2026-09-25 09:30:00"; "none" if there is none.
  std::string nextTimer() const;

 private:
  class VirtualTimer;

  // Waits for a moment of the steady time, or for one of the clock on the wall.
  struct Entry {
    bool isElsewhere;
    std::optional<Instant> fireDate;
    Duration due;
    Work work;
    std::shared_ptr<VirtualTimer> timer;
  };
  using Entries = std::list<Entry>;

  std::shared_ptr<Timer> add(Entry entry, TimerHandler handler, const std::string& description);
  Duration remaining(const Entry& entry) const;
  Entries::iterator earliest(bool elsewhereOnly);
  void runUntil(Duration target, bool elsewhereOnly);
  void run(Entries::iterator entry);
  void pass(Duration duration);

  Journal& journal_;
  Instant clock_ = utc("2026-09-21 08:00:00");  // a Monday
  Duration steady_ = Duration::zero();
  Entries entries_;  // in the order in which they came
};
