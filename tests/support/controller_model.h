// What the controller must do, as a model that is independent of it: a few facts, and for each stimulus the acts that
// must follow. Courses of events compare the controller with it.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/calendar.h"
#include "tests/support/journal.h"

// What goes wrong during the next sort that gets so far.
enum class Fault {
  none,
  safariStartsBefore,  // between the first two questions whether Safari is open
  safariStartsDuring,  // between the last two questions
  bookmarksChange,     // at the same time
  busHangs,            // at the same time
  writeFails
};

// The facts outside of the controller on which its acts depend.
struct World {
  Instant now;
  bool isReadable;  // the bookmark file
  bool isInOrder;
  Fault fault;
  bool isLoginSetUpBroken;
  struct Safari {
    int process;
    bool isRefusing;  // refuses each request to quit
  };
  std::vector<Safari> safaris;
  bool isSafariUnknown;  // the bus hangs
};

// Between two stimuli the program waits: in its event loop, or in a modal dialog.
class ControllerModel {
 public:
  // A sequence that waits for Safari to quit.
  struct Sequence {
    std::set<int> asked;
    bool isQuiet;
    Instant deadline;
  };
  enum class AccessWindow { closed, ofSetUp, ofReopening };

  bool enabled = false;
  bool needsAccess = false;
  bool busy = false;
  bool updateInstallPending = false;
  bool isUpdateWaiting = false;
  bool isScheduleOpen = false;  // the window
  AccessWindow accessWindow = AccessWindow::closed;
  std::optional<Instant> scheduled;  // the fire date of the daily timer
  std::optional<Sequence> sequence;
  std::set<int> ownQuits;  // asked to quit, and not known to have quit

  // The acts that must follow the last stimulus, until the program waits again: "quit 501", "sort" (the bookmarks are
  // parsed to be sorted), "write", "open Safari", "after 1000 ms", "alert Safari is open", "printed Bookmarks sorted",
  // "set sortingPaused true", "register" (the login agent), "show access window", "hide access window", "install" (an
  // update) and "terminate".
  Entries acts;

  // --- Stimuli ---

  void nothingHappens() {}
  void programIsLaunched(bool isPaused);
  void setUpRuns(const World& world);
  void userChoosesSortNow(const World& world);
  void userTogglesSorting(const World& world);
  // `next` is the next sort by the new settings. They are not valid without a checked day.
  void userSavesSchedule(bool isValid, std::optional<Instant> next);
  void userCancelsSchedule() { isScheduleOpen = false; }
  void userReopensProgram(const World& world);
  void userQuitsProgram();
  void userClosesAlert(const World& world, const std::string& title, std::size_t button);
  void userCancelsAccess();
  // The access window's poll, and its button "Retry".
  void accessIsTriedAgain(const World& world);
  void scheduledTimeComes(const World& world, Instant date);
  void machineWakes(const World& world);
  void quitIsPolled(const World& world);
  void processTerminates(int process, bool sortsOnQuit);
  void delayAfterQuitPasses(const World& world, bool sortsOnQuit);
  void updateAsksToRelaunch();
  void updateIsPolled();
  void updateSessionEnds();

 private:
  void schedule(const World& world);
  void requireAccess();
  void grantAccess(const World& world);
  void closeSortReopen(const World& world, bool isQuiet);
  void sort(const World& world, bool isAttended);
  void sortFile(const World& world, bool isAttended);
  void report(const std::string& title, bool isAttended);
};
