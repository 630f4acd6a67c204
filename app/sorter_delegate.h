// The controller: owns all run-time state of the menu-bar program and decides when to sort.
#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <vector>

#include "platform/application.h"
#include "platform/main_loop.h"
#include "platform/menu.h"
#include "platform/running_applications.h"
#include "platform/updater.h"
#include "platform/window.h"
#include "platform/workspace.h"
#include "schedule/schedule_settings.h"

// A bookmark file of this size takes long enough to sort, some tenths of a second, that the program shows that it
// sorts.
inline constexpr std::size_t largeFile = 16'000'000;
// How long Safari may take to quit, counted from the request.
inline constexpr std::chrono::seconds quitDeadline{45};
// How often the program checks whether Safari has quit.
inline constexpr std::chrono::milliseconds quitPollInterval{250};
// The delay between Safari's termination and the sort that follows it.
inline constexpr std::chrono::seconds sortOnQuitDelay{1};
// A scheduled sort that is this late or later is skipped.
inline constexpr std::chrono::seconds latenessLimit{90};
// How often a postponed relaunch checks whether the sort has ended.
inline constexpr std::chrono::milliseconds updatePollInterval{250};

// There is one per process, owned by a shared pointer. Everything runs on the main thread. Timers, observers and posted
// work hold the controller weakly, so it may be destroyed at any time.
class SorterDelegate : public ApplicationDelegate,
                       public UpdaterDelegate,
                       public std::enable_shared_from_this<SorterDelegate> {
 public:
  // The initial state is Running, or Stopped if the user has stopped sorting.
  SorterDelegate();

  // --- Launch (app/launch.cpp) ---

  // Makes the status item and its menu, starts the updater and the observers, and posts the setup.
  void applicationDidFinishLaunching() override;

  // --- Run state (app/run_state.cpp) ---

  // Turns automatic sorting on and stores that choice if the bookmarks can be read. Otherwise enters Access required
  // and leaves the stored choice unchanged.
  void start();
  // Turns automatic sorting off and stores that choice.
  void stop();
  // The status line's action.
  void toggleRunning();
  // Shows the state in the status line. Requires the status item and the line.
  void refresh();
  // Enters Access required: turns automatic sorting off until start() succeeds, and stores nothing.
  void pauseForAccess();
  // Sorts once, unattended. No-op if sorting is off, a sort is in progress or an update is pending. Requires Safari to
  // be closed.
  void tick();

  // --- Sorting around Safari (app/safari_orchestration.cpp) ---

  // The menu's command: sorts at once, or asks the user what to do if Safari is open.
  void sortNow();
  // Asks every Safari process to quit, sorts unattended after all have quit, and opens Safari again if it was running.
  // Gives up after `quitDeadline`, with a message unless `quiet`. Returns at once. No-op while a sort is in progress or
  // an update is pending.
  void closeSortReopen(bool quiet);
  // From now on sorts each time after the user quits Safari, if the settings say so at that time.
  void observeTerminations();

  // --- The daily timer (app/daily_timer.cpp) ---

  // Arms the timer for the next scheduled sort by the current settings, in place of any earlier timer.
  void scheduleDaily();
  // The same.
  void schedule();
  // From now on re-arms the timer whenever the machine wakes.
  void observeWake();

  // --- The schedule window (app/schedule_window.cpp) ---

  // The stored weekdays and the stored option, see schedule_settings.h.
  std::vector<int> selectedDays() const;
  bool sortOnQuit() const;
  // Opens the window with the stored settings, or brings the open window to the front with its unsaved edits.
  void showSchedule();
  // Enables the controls that can be edited under the current check box and preset.
  void scheduleControlsChanged();
  // Checks the days of the chosen preset. "Selected days" leaves them unchanged.
  void presetChanged();
  // Validates and stores the controls' values, closes the window and re-arms the timer. If the values are rejected,
  // shows a message and leaves the window open.
  void saveSchedule();
  // Closes the window and stores nothing.
  void cancelSchedule();

  // --- The menu's other commands (app/menu_commands.cpp) ---

  void showAbout();
  void openWebsite();
  void support();
  // Opens the backups folder, and creates it first if it is missing.
  void openBackups();
  // Ends the program at once. A sequence that waits for Safari is abandoned.
  void quit();
  bool applicationShouldTerminate() override;
  // Checks the access to the bookmarks, because a missing access is why a user opens a running program again.
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

  // --- First-run setup (app/first_run_setup.cpp) ---

  // Refuses to run from a disk image, checks the access to the bookmarks, registers the login agent and arms the timer.
  // If access is missing, opens the access window and returns; the rest follows when the user grants access.
  void setUp();

  // --- Updates (app/updates.cpp) ---

  void checkForUpdates();
  void toggleAutomaticUpdates();
  bool supportsGentleScheduledUpdateReminders() const override;
  // Returns false: the updater's window never opens unasked, because the menu and the tool tip announce the update.
  bool standardUserDriverShouldHandleShowingScheduledUpdate(bool inImmediateFocus) override;
  // Shows a reminder in the menu and the tool tip if a scheduled check found the update.
  void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) override;
  void standardUserDriverDidReceiveUserAttention() override;
  void standardUserDriverWillFinishUpdateSession() override;
  // Blocks new sorts until the update session ends. If a sort is in progress, returns true and calls `install` once
  // after the sort; otherwise returns false and never calls it.
  bool shouldPostponeRelaunch(Work install) override;

  // --- State ---

  std::shared_ptr<UpdaterController> updaterController;
  std::shared_ptr<MenuItem> updateMenuItem;
  std::shared_ptr<MenuItem> automaticUpdateMenuItem;
  Observation updateObservation;
  bool updateInstallPending = false;       // an update is about to relaunch the program; no sort may start
  std::shared_ptr<Timer> updateWaitTimer;  // waits for the sort to end before the relaunch
  std::shared_ptr<StatusItem> item;
  std::shared_ptr<Timer> dailyTimer;  // the next scheduled sort; kept when invalidated, until it is armed anew
  std::shared_ptr<Timer> quitTimer;   // waits for Safari to quit
  std::shared_ptr<Window> settingsWindow;
  std::shared_ptr<Button> dailyToggle;
  std::shared_ptr<DatePicker> timePicker;
  std::shared_ptr<Button> quitToggle;
  std::shared_ptr<PopUpButton> dayPreset;
  std::vector<std::shared_ptr<Button>> dayButtons;
  std::vector<Observation> observers;
  std::set<int> ownQuitPIDs;  // Safari processes that were asked to quit and have not terminated yet
  std::shared_ptr<Window> aboutWindow;
  bool enabled;              // automatic sorting is on
  bool busy = false;         // a sort, or a sequence around one, is in progress
  bool needsAccess = false;  // the bookmark file could not be read the last time
  std::shared_ptr<MenuItem> status;

 private:
  using Applications = std::vector<std::shared_ptr<RunningApplication>>;

  // Shown while there is no reminder of an update.
  static constexpr const char* normalToolTip = "Quillery";
  const char* toolTip_ = normalToolTip;  // shown while no sort takes long
  bool takesLong_ = false;               // the bookmark file was large when it was read last
  static constexpr const char* normalUpdateTitle = "Check for Updates…";

  // Tests whether the bookmark file can be read, and notes whether its sort will take long.
  bool canReadBookmarks();
  // Sorts, and meanwhile shows that in the menu bar if it takes long.
  void sort();
  void showSorting(bool isSorting) noexcept;
  void pollForQuit(Timer& timer, Instant deadline, const Applications& asked, bool quiet);
  void giveUpQuitting(bool quiet);
  void finish(bool safariWasRunning);
  void applicationTerminated(const RunningApplication& application);
  void sortAfterQuit();
  void dailyTimerFired(Instant fireDate);
  void addScheduleControls();
  void closeSchedule();
  void buildMenu();
  void observeUpdates();
  void clearUpdateReminder();
  void accessWasChecked(bool isGranted);
  // An action that calls a command, and is a no-op once the controller is destroyed.
  Action calling(void (SorterDelegate::*command)());
};
