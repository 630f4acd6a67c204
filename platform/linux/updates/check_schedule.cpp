#include "platform/linux/updates/check_schedule.h"

#include <cmath>
#include <optional>
#include <utility>

#include "values/plist_value.h"

namespace {

constexpr const char* consentKey = "SUEnableAutomaticChecks";
constexpr const char* lastCheckKey = "SULastCheckTime";
constexpr Instant epoch = std::chrono::sys_days(std::chrono::year(2001) / 1 / 1);  // of dates in property lists

}  // namespace

bool CheckSchedule::isAllowed() const {
  const std::optional<PlistValue> stored = userDefaults_.object(consentKey);
  return stored && stored->boolean().value_or(false);
}

void CheckSchedule::setAllowed(bool allowed) { userDefaults_.set(consentKey, allowed); }

void CheckSchedule::noteCheck() {
  userDefaults_.set(lastCheckKey, PlistDate{std::floor(std::chrono::duration<double>(loop_.now() - epoch).count())});
}

Instant CheckSchedule::nextCheck() const {
  const Instant now = loop_.now();
  const std::optional<PlistValue> stored = userDefaults_.object(lastCheckKey);
  const std::optional<PlistDate> last = stored ? stored->date() : std::nullopt;
  if (!last) return now;
  const std::chrono::duration<double> passed = now - epoch - std::chrono::duration<double>(last->seconds);
  // Also false for a date that is no number.
  const bool isWaiting = passed >= passed.zero() && passed < interval;
  return isWaiting ? now + std::chrono::ceil<Instant::duration>(interval - passed) : now;
}

void CheckSchedule::start(std::function<void()> due) {
  stop();
  if (!isAllowed()) return;
  timer_ = loop_.timerAt(nextCheck(), [due = std::move(due)](Timer&) { due(); });
}

void CheckSchedule::stop() {
  if (timer_) std::exchange(timer_, nullptr)->invalidate();
}
