// A controller on a virtual machine, with its place in the menu bar and its observers, as after launch; and what its
// tests say about it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/sorter_delegate.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/virtual_machine.h"

inline constexpr const char* runningTitle = "Running — Stop";
inline constexpr const char* stoppedTitle = "Stopped — Start";
inline constexpr const char* accessTitle = "Full Disk Access Required — Start";

class ControllerMachine {
 public:
  ControllerMachine(const ControllerMachine&) = delete;
  ControllerMachine& operator=(const ControllerMachine&) = delete;

 protected:
  // A bookmark file that is not in order, and no Safari.
  ControllerMachine();

  ~ControllerMachine();

  // Makes the controller and launches it, up to the setup that follows, and forgets what that noted.
  void launch();
  // The same for a controller that is to be Stopped, or to be in Access required with a file that is missing.
  void launchStopped();
  void launchWithoutAccess();

  void putUnsortedBookmarks();
  void removeBookmarks() { machine_.files.remove(bookmarks); }
  // Whether the bookmark file is in order now.
  bool isSorted() const;

  // Stores a daily schedule.
  void storeDaily(int hour, int minute, const std::vector<int>& days = {1, 2, 3, 4, 5, 6, 7});

  // Makes a choice in the schedule window, which is opened if it is not, and presses Save.
  void saveSchedule(const ScheduleChoice& choice);

  int startSafari(const QuitBehavior& behavior = {}) { return machine_.applications.start(safari, behavior); }
  int safaris() const { return machine_.applications.count(safari); }

  // What has been noted since the last time, without the questions whether Safari is running.
  Entries noted();
  // How often a sort has written the bookmark file.
  int sorts() const { return machine_.journal.count("write atomically"); }
  // When the daily timer fires, as "2026-09-25 09:30:00"; "none" if no timer is armed.
  std::string nextSort() const;

  VirtualMachine machine_;
  std::shared_ptr<VirtualMenuItem> status_;
  std::shared_ptr<VirtualMenu> menu_;
  std::shared_ptr<SorterDelegate> controller_;

 private:
  std::size_t notedSoFar_ = 0;
};

class ControllerTest : public testing::Test, protected ControllerMachine {};

// What a sort notes that finds something to do, from its first reading on and up to the report: without the questions
// about Safari. `number` counts the backups.
Entries sortEntries(int number = 1);
// What is reported of it.
std::string sortedMessage(int number = 1);
// One with a person in front of it, with the dialog that shows the report.
Entries attendedSort(int number = 1);
// An unattended one with the line that it prints.
Entries unattendedSort(int number = 1);
// What refresh() notes.
Entries refreshed(const std::string& title);
