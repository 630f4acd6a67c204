#include "tests/support/course_state.h"

#include <chrono>
#include <map>
#include <set>

#include "schedule/schedule_settings.h"
#include "tests/support/course.h"
#include "tests/support/course_events.h"

using namespace std::chrono_literals;

namespace {

using Duration = VirtualMainLoop::Duration;

class StateText {
 public:
  explicit StateText(const Course& course) : course_(course), model_(course.model()) {}

  std::string text() {
    processes();
    world();
    for (const Alert& alert : course_.dialogs()) text_ += alert.messageText + '|';
    if (course_.isAtEnd()) return text_ + "at the end";
    if (course_.isRunning()) {
      controller();
    } else {
      text_ += course_.wasLaunched() ? "quit" : "not launched";
    }
    for (const auto& pending : course_.machine_.loop.pending()) add(pending);
    return text_;
  }

 private:
  void add(const std::string& name, bool value) { text_ += name + (value ? "+" : "-"); }
  void add(const std::string& name, Duration duration) {
    text_ += name + (duration > farAway ? "far"
                     : duration < -farAway
                         ? "long ago"
                         : std::to_string(std::chrono::floor<std::chrono::milliseconds>(duration).count()));
  }
  void add(const std::string& name, const std::set<int>& processes) {
    text_ += name;
    for (const int process : processes) text_ += named(process);
  }

  // Numbers the processes anew.
  std::string named(int process) {
    return std::to_string(names_.try_emplace(process, static_cast<int>(names_.size())).first->second) + ',';
  }
  // A description with its process, if it has one, numbered anew.
  std::string named(const std::string& description) {
    const std::size_t digits = description.find_last_not_of("0123456789") + 1;
    if (digits == description.size()) return description;
    return description.substr(0, digits) + named(std::stoi(description.substr(digits)));
  }

  void processes() {
    for (const auto& process : course_.machine_.applications.processes()) {
      text_ += named(process.number);
      add("refuses", process.behavior.isRefused);
      add("quits", process.behavior.quitsAfter.value_or(1h));
      add("restarts", process.behavior.restartsAfter.value_or(1h));
    }
  }

  void world() {
    add("readable", course_.isReadable());
    add("in order", course_.isReadable() && course_.isInOrder());
    add("broken", course_.isLoginSetUpBroken());
    add("delay", course_.machine_.workspace.notificationDelay());
    text_ += "fault" + std::to_string(static_cast<int>(course_.fault()));
    add("bus hung", course_.isBusHung());
    add("paused", sortingIsPaused());
    add("sorts on quit", sortsOnSafariQuit());
    add("scheduled", course_.isScheduleOn());
    add("until half past nine", untilHalfPastNine());
  }

  // Every schedule of a course is daily at this time.
  Duration untilHalfPastNine() const {
    const Instant now = course_.machine_.loop.clock();
    const Duration until = std::chrono::floor<std::chrono::days>(now) + 9h + 30min - now;
    return until > Duration::zero() ? until : until + 24h;
  }

  void controller() {
    add("enabled", model_.enabled);
    add("access", model_.needsAccess);
    add("busy", model_.busy);
    add("update", model_.updateInstallPending);
    add("window", model_.isScheduleOpen);
    text_ += "access window" + std::to_string(static_cast<int>(model_.accessWindow));
    add("own", model_.ownQuits);
    if (!model_.sequence) return;
    add("asked", model_.sequence->asked);
    add("quiet", model_.sequence->isQuiet);
    add("deadline", model_.sequence->deadline - course_.machine_.loop.clock());
  }

  void add(const VirtualMainLoop::Pending& pending) {
    const bool isScheduled = pending.description.starts_with("at ");
    add('/' + (isScheduled ? "scheduled" : named(pending.description)), pending.remaining);
    if (pending.isFiring) text_ += "firing";
    if (course_.isRunning() && pending.timer && pending.timer == course_.controller_->updateWaitTimer.get())
      text_ += "update";
  }

  const Course& course_;
  const ControllerModel& model_;
  std::map<int, int> names_;
  std::string text_;
};

}  // namespace

std::string stateOf(const Course& course) { return StateText(course).text(); }
