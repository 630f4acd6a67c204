// What must hold whenever the program waits.
#include "tests/support/course.h"

#include <algorithm>
#include <optional>

#include "app/alert.h"
#include "app/bookmark_permission_controller.h"

namespace {

// Reports of a sort, and the question that a sort asks.
bool isOfASort(const Alert& alert) {
  const std::string& title = alert.messageText;
  return title != "Safari is open" && title != "Safari did not close" && title != "Choose a day" &&
         title != "Login setup failed";
}

bool isValid(const std::shared_ptr<Timer>& timer) { return timer && timer->isValid(); }

bool isOver(const std::shared_ptr<Timer>& timer) { return timer && !timer->isValid(); }

std::string expectedTitle(const SorterDelegate& controller) {
  if (controller.needsAccess) return accessTitle;
  return controller.enabled ? runningTitle : stoppedTitle;
}

// The fire date of a timer; none if it is not armed.
std::optional<Instant> fireDate(const VirtualMainLoop& loop, const std::shared_ptr<Timer>& timer) {
  if (!isValid(timer)) return std::nullopt;
  for (const auto& pending : loop.pending())
    if (pending.timer == timer.get()) return loop.clock() + pending.remaining;
  return std::nullopt;
}

std::string brokenFlag(const SorterDelegate& controller, const ControllerModel& model) {
  if (automatic) return "automatic outlives the sort";
  if (controller.enabled && controller.needsAccess) return "sorting is on without access";
  if (controller.enabled != model.enabled) return "automatic sorting is wrongly on or off";
  if (controller.needsAccess != model.needsAccess) return "access is wrongly required or not";
  if (controller.busy != model.busy) return controller.busy ? "busy without a sort" : "not busy in a sort";
  if (controller.updateInstallPending != model.updateInstallPending) return "an update is wrongly pending or not";
  if ((controller.settingsWindow != nullptr) != model.isScheduleOpen) return "the schedule is wrongly open or closed";
  if (controller.ownQuitPIDs != model.ownQuits) return "wrong processes count as asked to quit";
  return {};
}

std::string brokenTimer(const Course& course) {
  const SorterDelegate& controller = *course.controller_;
  const ControllerModel& model = course.model();
  if (isValid(controller.quitTimer) != model.sequence.has_value()) return "wrongly waits for Safari or not";
  if (isValid(controller.updateWaitTimer) != model.isUpdateWaiting) return "an update wrongly waits or not";
  if (fireDate(course.machine_.loop, controller.dailyTimer) != model.scheduled) return "the next sort has a wrong date";
  const auto& access = *BookmarkPermissionController::shared();
  if (isOver(controller.quitTimer) || isOver(controller.updateWaitTimer) || isOver(access.timer))
    return "a timer is kept after its end";
  if (isValid(access.timer) != (model.accessWindow != ControllerModel::AccessWindow::closed))
    return "the access window is wrongly open or closed";
  if ((access.dialog != nullptr) != isValid(access.timer) || (access.completion != nullptr) != isValid(access.timer))
    return "the access window is neither open nor closed";
  const auto owned = [&](const VirtualMainLoop::Pending& pending) {
    return pending.timer == nullptr || pending.timer == controller.quitTimer.get() ||
           pending.timer == controller.updateWaitTimer.get() || pending.timer == controller.dailyTimer.get() ||
           pending.timer == access.timer.get() || pending.isFiring;
  };
  if (!std::ranges::all_of(course.machine_.loop.pending(), owned)) return "a timer that nobody owns is armed";
  return {};
}

}  // namespace

std::string Course::brokenInvariant() const {
  if (std::string broken = brokenFlag(*controller_, model_); !broken.empty()) return broken;
  if (std::string broken = brokenTimer(*this); !broken.empty()) return broken;
  const auto sorts = std::ranges::count_if(dialogs_, isOfASort) + (isValid(controller_->quitTimer) ? 1 : 0);
  if (sorts > 1) return "a second sort inside the first";
  if (controller_->busy != (sorts == 1)) return "busy is not what it stands for";
  if (status_->title() != expectedTitle(*controller_)) return "the status line has a wrong title";
  if (!status_->isEnabled()) return "the status line is disabled";
  return {};
}
