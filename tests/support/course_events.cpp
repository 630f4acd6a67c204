#include "tests/support/course_events.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "schedule/next_sort_date.h"
#include "schedule/schedule_settings.h"

using namespace std::chrono_literals;

namespace {

using Duration = VirtualMainLoop::Duration;
using Place = VirtualMainLoop::Place;

constexpr int mostSafaris = 2;
constexpr std::size_t deepestDialog = 2;

// --- What is possible ---

// What will go wrong with a sort matters to nothing else, so only what may lead to a sort happens then.
bool mayLeadToASort(const Course& course) { return course.isRunning() && !course.isAtEnd(); }
bool isRunning(const Course& course) { return mayLeadToASort(course) && course.fault() == Fault::none; }
bool isNew(const Course& course) { return !course.wasLaunched(); }
bool wasQuit(const Course& course) { return course.wasLaunched() && !course.isRunning(); }
bool mayStartSafari(const Course& course) { return isRunning(course) && course.world().safaris.size() < mostSafaris; }
bool mayStartFirstSafari(const Course& course) { return isRunning(course) && course.world().safaris.empty(); }
bool isSafariOpen(const Course& course) { return isRunning(course) && !course.world().safaris.empty(); }
bool areTwoSafarisOpen(const Course& course) { return isRunning(course) && course.world().safaris.size() > 1; }
// No further dialog opens in the innermost.
bool mayCommand(const Course& course) { return isRunning(course) && course.dialogs().size() < deepestDialog; }
bool isWithoutDialog(const Course& course) { return isRunning(course) && course.dialogs().empty(); }
bool isAccessWindowOpen(const Course& course) {
  return mayCommand(course) && course.model().accessWindow != ControllerModel::AccessWindow::closed;
}
bool isReadable(const Course& course) { return isRunning(course) && course.isReadable(); }
bool isUnreadable(const Course& course) { return isRunning(course) && !course.isReadable(); }
bool isInOrder(const Course& course) { return isReadable(course) && course.isInOrder(); }
bool isBusHung(const Course& course) { return isRunning(course) && course.isBusHung(); }
bool isBusWell(const Course& course) { return isRunning(course) && !course.isBusHung(); }
bool maySort(const Course& course) { return isReadable(course) && !course.isInOrder() && !course.isBusHung(); }
bool maySortAtOnce(const Course& course) {
  const ControllerModel& model = course.model();
  return mayCommand(course) && maySort(course) && course.world().safaris.empty() && !model.busy &&
         !model.updateInstallPending;
}
bool mayUpdate(const Course& course) { return isRunning(course) && !course.model().updateInstallPending; }
bool isUpdating(const Course& course) { return isRunning(course) && course.model().updateInstallPending; }
bool hasDialog(const Course& course) { return mayLeadToASort(course) && !course.dialogs().empty(); }
bool isQuestion(const Course& course) { return hasDialog(course) && course.dialogs().back().buttons.size() > 1; }
bool hasThreeButtons(const Course& course) { return hasDialog(course) && course.dialogs().back().buttons.size() > 2; }
bool maySaveSchedule(const Course& course) {
  return mayCommand(course) && !(course.isScheduleOn() && sortsOnSafariQuit());
}
bool maySaveNoSortOnQuit(const Course& course) { return mayCommand(course) && sortsOnSafariQuit(); }
bool maySaveNoSchedule(const Course& course) { return mayCommand(course) && course.isScheduleOn(); }
bool isScheduleOpen(const Course& course) { return isRunning(course) && course.model().isScheduleOpen; }
bool isScheduled(const Course& course) { return mayLeadToASort(course) && course.model().scheduled; }

// True if the main loop would run something in this time.
bool isDueWithin(const Course& course, Duration duration) {
  if (!mayLeadToASort(course)) return false;
  const auto pending = course.machine_.loop.pending();
  const auto isDue = [&](const auto& thing) { return !thing.isFiring && thing.remaining <= duration; };
  return std::ranges::any_of(pending, isDue);
}
bool isDueSoon(const Course& course) { return isDueWithin(course, farAway); }
bool isDueInASecond(const Course& course) { return isDueWithin(course, 1s); }
bool isDueInAMinute(const Course& course) { return isDueWithin(course, 91s); }

Duration untilScheduled(const Course& course) { return *course.model().scheduled - course.machine_.loop.clock(); }
bool isScheduledSoon(const Course& course) {
  return isScheduled(course) && untilScheduled(course) > 0s && untilScheduled(course) <= farAway;
}
bool isScheduledLater(const Course& course) { return isScheduled(course) && untilScheduled(course) > farAway; }
bool mayMissLater(const Course& course) { return isRunning(course) && isScheduledLater(course); }
bool mayBeLate(const Course& course) { return isRunning(course) && isDueInAMinute(course); }
bool mayBeTooLate(const Course& course) { return isRunning(course) && isScheduledSoon(course); }
// Otherwise a poll would run too often until then.
bool isOnlyScheduled(const Course& course) { return isScheduledLater(course) && !isDueWithin(course, farAway); }
// Nothing else depends on the wall clock.
bool dependsOnTheClock(const Course& course) {
  return isRunning(course) && (course.model().scheduled || course.model().sequence);
}
bool mayMissSchedule(const Course& course) { return isRunning(course) && isScheduled(course); }

// True if a sort may follow without a command of the user.
bool isSortPending(const Course& course) {
  return course.model().sequence || isScheduledSoon(course) || isQuestion(course) ||
         std::ranges::count(course.machine_.loop.pending(), "after 1000 ms", &VirtualMainLoop::Pending::description) >
             0;
}
bool mayGoWrong(const Course& course) { return maySort(course) && isSortPending(course); }

// --- What happens ---

QuitBehavior obliging() { return {}; }
QuitBehavior slow() { return {.quitsAfter = 20s}; }
QuitBehavior stubborn() { return {.quitsAfter = std::nullopt}; }
QuitBehavior refusing() { return {.isRefused = true}; }
QuitBehavior restarting() { return {.restartsAfter = 500ms}; }

template <QuitBehavior behavior()>
void start(Course& course) {
  course.happensOutside([&] { course.startSafari(behavior()); });
}

template <Fault fault>
void prepare(Course& course) {
  course.prepare(fault);
}

void sortNow(Course& course) {
  course.stimulate([&] { course.controller_->sortNow(); }, &ControllerModel::userChoosesSortNow, course.world());
}

template <Fault fault>
void sortNowWith(Course& course) {
  course.prepare(fault);
  sortNow(course);
}

void sleep(Course& course, Duration duration, Place placeOfWake) {
  course.happensOutside([&] { course.machine_.sleep(duration, placeOfWake); });
  course.letPass({});
}
void setClock(Course& course, Instant instant) {
  course.machine_.loop.setClock(instant);
  course.letPass({});
}
void sleepPastScheduledTime(Course& course, Place placeOfWake) {
  sleep(course, course.model().scheduled ? untilScheduled(course) + 30min : 2h, placeOfWake);
}

// Chooses half past nine.
void saveSchedule(Course& course, bool sortOnQuit, bool isScheduled, const std::vector<int>& days) {
  const ScheduleChoice choice{sortOnQuit, days, isScheduled, utc("2026-09-21 09:30:00")};
  const auto next = isScheduled ? nextSortDate(course.machine_.loop.clock(), 9, 30, days) : std::nullopt;
  const bool isValid = !isScheduled || !days.empty();
  course.stimulate([&] { course.saveSchedule(choice); }, &ControllerModel::userSavesSchedule, isValid, next);
}

const std::vector<int>& everyDay() {
  static const std::vector<int> days = {1, 2, 3, 4, 5, 6, 7};
  return days;
}

void pressInAccessWindow(Course& course, const char* button) {
  course.machine_.screen.window("Quillery").press(button);
}

void openAgain(Course& course) {
  course.happensOutside([&] { course.machine_.application.reopen(false); });
  course.letPass({});
}

// A course begins with one of these.
std::vector<CourseEvent> launches() {
  return {
      {"launch", isNew, [](Course& course) { course.launchProgram(); }},
      {"launchScheduled", isNew,
       [](Course& course) {
         course.storeDaily(9, 30);
         course.launchProgram();
       }},
      {"launchWithLateNotifications", isNew,
       [](Course& course) {
         course.storeDaily(9, 30);
         course.machine_.workspace.delayNotifications(1500ms);
         course.launchProgram();
       }},
      {"launchWithoutAccess", isNew,
       [](Course& course) {
         course.storeDaily(9, 30);
         course.removeBookmarks();
         course.launchProgram();
       }},
      {"launchWithBrokenLoginSetUp", isNew,
       [](Course& course) {
         course.storeDaily(9, 30);
         course.breakLoginSetUp();
         course.launchProgram();
       }},
  };
}

std::vector<CourseEvent> timeEvents() {
  return {
      {"nextThingHappens", isDueSoon, [](Course& course) { course.runNext(farAway); }},
      {"secondPasses", isDueInASecond, [](Course& course) { course.letPass(1s); }},
      {"minutePasses", isDueInAMinute, [](Course& course) { course.letPass(46s); }},
      {"scheduledTimeComes", [](const Course& course) { return isScheduledSoon(course) || isOnlyScheduled(course); },
       [](Course& course) { course.letPass(untilScheduled(course)); }},
      {"threadIsOccupiedFor90Seconds", mayBeLate, [](Course& course) { course.machine_.loop.occupy(90s); }},
      {"threadIsOccupiedFor91Seconds", mayBeTooLate, [](Course& course) { course.machine_.loop.occupy(91s); }},
      {"machineSleepsUntilJustBeforeScheduledTime", mayMissLater,
       [](Course& course) { sleep(course, untilScheduled(course) - 1s, Place::front); }},
      {"machineSleepsPastScheduledTime", dependsOnTheClock,
       [](Course& course) { sleepPastScheduledTime(course, Place::back); }},
      {"machineSleepsPastScheduledTimeAndWakeComesFirst", dependsOnTheClock,
       [](Course& course) { sleepPastScheduledTime(course, Place::front); }},
      {"machineSleepsForHalfAMinute",
       [](const Course& course) { return isRunning(course) && (isScheduledSoon(course) || course.model().sequence); },
       [](Course& course) { sleep(course, 30s, Place::back); }},
      {"clockIsSetBack", dependsOnTheClock,
       [](Course& course) { setClock(course, course.machine_.loop.clock() - 1h); }},
      {"clockIsSetPastScheduledTime", mayMissSchedule,
       [](Course& course) { setClock(course, *course.model().scheduled + 30min); }},
  };
}

std::vector<CourseEvent> safariEvents() {
  return {
      {"safariStarts", mayStartSafari, start<obliging>},
      {"slowSafariStarts", mayStartFirstSafari, start<slow>},
      {"stubbornSafariStarts", mayStartSafari, start<stubborn>},
      {"refusingSafariStarts", mayStartFirstSafari, start<refusing>},
      {"restartingSafariStarts", mayStartFirstSafari, start<restarting>},
      {"userQuitsSafari", isSafariOpen,
       [](Course& course) { course.happensOutside([&] { course.machine_.applications.end(safari); }); }},
      {"userQuitsFirstSafari", areTwoSafarisOpen,
       [](Course& course) {
         course.happensOutside([&] { course.machine_.applications.endProcess(course.world().safaris[0].process); });
       }},
      {"busHangs", isBusWell, [](Course& course) { course.hangBus(true); }},
      {"busReplies", isBusHung, [](Course& course) { course.hangBus(false); }},
      {"oddNotificationComes", isWithoutDialog,
       [](Course& course) {
         course.happensOutside([&] { course.machine_.workspace.notifyTermination(nullptr); });
         course.letPass({});
       }},
  };
}

std::vector<CourseEvent> fileEvents() {
  return {
      {"accessIsLost", isReadable, [](Course& course) { course.removeBookmarks(); }},
      {"accessComes", isUnreadable, [](Course& course) { course.putUnsortedBookmarks(); }},
      {"bookmarksChange", isInOrder, [](Course& course) { course.changeBookmarks(); }},
      {"safariWillStartBeforeSort", mayGoWrong, prepare<Fault::safariStartsBefore>},
      {"safariWillStartDuringSort", mayGoWrong, prepare<Fault::safariStartsDuring>},
      {"bookmarksWillChangeDuringSort", mayGoWrong, prepare<Fault::bookmarksChange>},
      {"busWillHangDuringSort", mayGoWrong, prepare<Fault::busHangs>},
      {"writeWillFail", mayGoWrong, prepare<Fault::writeFails>},
  };
}

std::vector<CourseEvent> userEvents() {
  return {
      {"userTogglesSorting", mayCommand,
       [](Course& course) {
         course.stimulate([&] { course.controller_->toggleRunning(); }, &ControllerModel::userTogglesSorting,
                          course.world());
       }},
      {"userSortsNow", mayCommand, sortNow},
      {"userSortsNowAndSafariStarts", maySortAtOnce, sortNowWith<Fault::safariStartsBefore>},
      {"userSortsNowAndSafariStartsLate", maySortAtOnce, sortNowWith<Fault::safariStartsDuring>},
      {"userSortsNowAndBookmarksChange", maySortAtOnce, sortNowWith<Fault::bookmarksChange>},
      {"userSortsNowAndBusHangs", maySortAtOnce, sortNowWith<Fault::busHangs>},
      {"userSortsNowAndWriteFails", maySortAtOnce, sortNowWith<Fault::writeFails>},
  };
}

std::vector<CourseEvent> scheduleEvents() {
  return {
      {"userSavesSchedule", maySaveSchedule, [](Course& course) { saveSchedule(course, true, true, everyDay()); }},
      {"userSavesNoSortOnQuit", maySaveNoSortOnQuit,
       [](Course& course) { saveSchedule(course, false, true, everyDay()); }},
      {"userSavesNoSchedule", maySaveNoSchedule, [](Course& course) { saveSchedule(course, true, false, everyDay()); }},
      {"userSavesScheduleWithoutDays", isWithoutDialog, [](Course& course) { saveSchedule(course, true, true, {}); }},
      {"userCancelsSchedule", isScheduleOpen,
       [](Course& course) {
         course.stimulate([&] { course.controller_->cancelSchedule(); }, &ControllerModel::userCancelsSchedule);
       }},
  };
}

std::vector<CourseEvent> programEvents() {
  return {
      {"userOpensProgramAgain", mayCommand, openAgain},
      {"userCancelsAccess", isAccessWindowOpen,
       [](Course& course) {
         course.stimulate([&] { pressInAccessWindow(course, "Cancel"); }, &ControllerModel::userCancelsAccess);
       }},
      {"userRetriesAccess", isAccessWindowOpen,
       [](Course& course) {
         course.stimulate([&] { pressInAccessWindow(course, "Retry"); }, &ControllerModel::accessIsTriedAgain,
                          course.world());
       }},
      {"userQuitsProgram", isRunning, [](Course& course) { course.quitProgram(); }},
      {"userLaunchesProgramAgain", wasQuit, [](Course& course) { course.launchProgram(); }},
  };
}

std::vector<CourseEvent> dialogEvents() {
  return {
      {"userPressesFirstButton", hasDialog, [](Course& course) { course.press(0); }},
      {"userPressesSecondButton", isQuestion, [](Course& course) { course.press(1); }},
      {"userPressesThirdButton", hasThreeButtons, [](Course& course) { course.press(2); }},
  };
}

std::vector<CourseEvent> updateEvents() {
  return {
      {"updateAsksToRelaunch", mayUpdate, [](Course& course) { course.updateAsks(); }},
      {"updateSessionEnds", isUpdating,
       [](Course& course) {
         course.stimulate([&] { course.controller_->standardUserDriverWillFinishUpdateSession(); },
                          &ControllerModel::updateSessionEnds);
       }},
  };
}

std::vector<CourseEvent> allEvents() {
  std::vector<CourseEvent> all;
  for (const auto& group : {launches(), timeEvents(), safariEvents(), fileEvents(), userEvents(), scheduleEvents(),
                            programEvents(), dialogEvents(), updateEvents()})
    all.insert(all.end(), group.begin(), group.end());
  return all;
}

}  // namespace

const std::vector<CourseEvent>& courseEvents() {
  static const std::vector<CourseEvent> events = allEvents();
  return events;
}

const CourseEvent& courseEvent(const std::string& name) {
  const auto found = std::ranges::find(courseEvents(), name, &CourseEvent::name);
  if (found == courseEvents().end()) throw std::invalid_argument("there is no event " + name);
  return *found;
}

std::vector<const CourseEvent*> possibleEvents(const Course& course) {
  std::vector<const CourseEvent*> possible;
  for (const CourseEvent& event : courseEvents())
    if (event.isPossible(course)) possible.push_back(&event);
  return possible;
}

std::string play(const std::vector<std::string>& names) {
  auto next = names.begin();
  Course course([&](const Course&) { return next == names.end() ? nullptr : &courseEvent(*next++); });
  course.run();
  return course.broken();
}
