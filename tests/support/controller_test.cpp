#include "tests/support/controller_test.h"

#include <algorithm>

#include "app/bookmark_permission_controller.h"
#include "tests/support/bookmark_trees.h"

namespace {

std::string backup(int number) { return backups + "/Bookmarks-" + VirtualProcesses::uuid(number) + ".plist"; }

}  // namespace

ControllerMachine::ControllerMachine() { putUnsortedBookmarks(); }

void ControllerMachine::putUnsortedBookmarks() {
  static const std::string file = fileOf(rootNode({folderNode(u"BookmarksBar", {leafNode(u"b"), leafNode(u"a")})}));
  machine_.files.put(bookmarks, file);
}

bool ControllerMachine::isSorted() const { return outlineOf(machine_.files.content(bookmarks)) == "BookmarksBar[a b]"; }

ControllerMachine::~ControllerMachine() { endProgram(); }

void ControllerMachine::launch() {
  launchWithSetUp();
  machine_.loop.dropPosted();  // the first-run setup, which first_run_setup_test.cpp tests
}

void ControllerMachine::launchWithSetUp() {
  controller_ = std::make_shared<SorterDelegate>();
  machine_.application.setDelegate(controller_);
  controller_->applicationDidFinishLaunching();
  status_ = std::dynamic_pointer_cast<VirtualMenuItem>(controller_->status);
  menu_ = std::dynamic_pointer_cast<VirtualMenu>(controller_->item->menu());
  noted();
}

void ControllerMachine::endProgram() {
  controller_.reset();
  // The singleton outlives the program, so reset it for the next one.
  BookmarkPermissionController::shared()->completion = nullptr;
  BookmarkPermissionController::shared()->finish(false);
  machine_.loop.dropProgram();
}

void ControllerMachine::launchStopped() {
  machine_.defaults.put("sortingPaused", true);
  launch();
}

void ControllerMachine::launchWithoutAccess() {
  removeBookmarks();
  launch();
  controller_->pauseForAccess();
  noted();
}

void ControllerMachine::storeDaily(int hour, int minute, const std::vector<int>& days) {
  machine_.defaults.put("dailyEnabled", true);
  machine_.defaults.put("dailyHour", hour);
  machine_.defaults.put("dailyMinute", minute);
  machine_.defaults.put("scheduleDays", numberList(days));
}

void ControllerMachine::saveSchedule(const ScheduleChoice& choice) {
  controller_->showSchedule();
  VirtualWindow& window = machine_.screen.window("Schedule");
  controller_->quitToggle->setOn(choice.sortOnQuit);
  controller_->dailyToggle->setOn(choice.isScheduled);
  controller_->timePicker->setDateValue(choice.time);
  for (const auto& button : controller_->dayButtons)
    button->setOn(std::ranges::find(choice.checkedDays, button->tag()) != choice.checkedDays.end());
  noted();
  window.press("Save");
}

Entries ControllerMachine::noted() {
  const Entries& all = machine_.journal.entries();
  Entries fresh;
  for (; notedSoFar_ < all.size(); ++notedSoFar_)
    if (!all[notedSoFar_].starts_with("running? ")) fresh.push_back(all[notedSoFar_]);
  return fresh;
}

std::string ControllerMachine::nextSort() const {
  const auto& timer = controller_->dailyTimer;
  if (!timer || !timer->isValid()) return "none";
  return machine_.loop.nextTimer();
}

Entries sortOfAFileInOrder() {
  return {"remove abandoned " + bookmarks, "remove abandoned " + backups + "/", "read " + bookmarks, "parse"};
}

Entries sortEntries(int number) {
  return sortOfAFileInOrder() + Entries{"create folder " + backups + " 0700",
                                        "uuid",
                                        "write new " + backup(number),
                                        "set mode " + backup(number) + " 0600",
                                        "serialize binary",
                                        "verify",
                                        "write beside " + bookmarks,
                                        "holds " + bookmarks,
                                        "write atomically " + bookmarks};
}

std::string sortedMessage(int number) {
  return "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\nBackup: " +
         backup(number);
}

Entries attendedSort(int number) {
  return Entries{"bundle path"} + sortEntries(number) + Entries{"accessory", "activate", "alert Bookmarks sorted"};
}

Entries unattendedSort(int number) {
  return sortEntries(number) + Entries{"printed Bookmarks sorted: " + sortedMessage(number) + "\n"};
}

Entries refreshed(const std::string& title) { return {"title " + title, "enable " + title, "autoenable off"}; }
