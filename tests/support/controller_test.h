// A launched controller on a virtual machine, and the journal entries that its operations record.
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
  // Starts with an unsorted bookmark file and without Safari.
  ControllerMachine();

  ~ControllerMachine();

  // Creates and launches the controller, without the first-run setup, and skips the journal entries of that.
  void launch();
  // Creates and launches the controller and leaves the first-run setup in the queue.
  void launchWithSetUp();
  // Ends the program: destroys the controller and forgets what its main loop would run.
  void endProgram();
  // launch() in the state Stopped, or in Access required with a missing bookmark file.
  void launchStopped();
  void launchWithoutAccess();

  void putUnsortedBookmarks();
  void removeBookmarks() { machine_.files.remove(bookmarks); }
  // True if the bookmark file is in order now.
  bool isSorted() const;

  // Stores a daily schedule.
  void storeDaily(int hour, int minute, const std::vector<int>& days = {1, 2, 3, 4, 5, 6, 7});

  // Opens the schedule window unless it is open, sets its controls to this choice and presses Save.
  void saveSchedule(const ScheduleChoice& choice);

  int startSafari(const QuitBehavior& behavior = {}) { return machine_.applications.start(safari, behavior); }
  int safaris() const { return machine_.applications.count(safari); }

  // The journal entries since the last call, without the queries for running applications.
  Entries noted();
  // How often a sort wrote the bookmark file.
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

// The journal entries of a sort of a file in order, without the queries for running applications.
Entries sortOfAFileInOrder();
// The same entries for an unsorted file. `number` counts the backups from 1.
Entries sortEntries(int number = 1);
// The report of that sort.
std::string sortedMessage(int number = 1);
// The same entries for an interactive sort, with the dialog that shows the report.
Entries attendedSort(int number = 1);
// The same entries for an unattended sort, with the printed report.
Entries unattendedSort(int number = 1);
// The journal entries of refresh().
Entries refreshed(const std::string& title);
