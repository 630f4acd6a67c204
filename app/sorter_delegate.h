// The controller: owns all run-time state of the menu-bar program and decides when to sort.
#pragma once

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

// How long Safari may take to quit, from the request on.
inline constexpr std::chrono::seconds quitDeadline{45};
// How often the program looks whether it has.
inline constexpr std::chrono::milliseconds quitPollInterval{250};
// How long after Safari's end the sort comes that follows it.
inline constexpr std::chrono::seconds sortOnQuitDelay{1};
// A scheduled sort that is as late as this is skipped.
inline constexpr std::chrono::seconds latenessLimit{90};
// How often a postponed update looks whether the sort that it waits for has ended.
inline constexpr std::chrono::milliseconds updatePollInterval{250};

// One for the life of the process, owned by a shared pointer. All of it runs on the main thread. Whatever waits
// (timers, observers, posted work) holds it weakly, so that it may go at any moment.
class SorterDelegate : public ApplicationDelegate,
                       public UpdaterDelegate,
                       public std::enable_shared_from_this<SorterDelegate> {
 public:
  // Starts Running, or Stopped if the user had stopped sorting.
  SorterDelegate();

  // --- Launch (app/launch.cpp) ---

  // Sets everything up: the status item and its menu, updates, observers, and the first-run setup.
  void applicationDidFinishLaunching() override;

  // --- Run state (app/run_state.cpp) ---

  // Switches automatic sorting on for good, if the bookmarks can be read; else asks for access, and the user's earlier
  // wish stays stored.
  void start();
  // Switches automatic sorting off for good.
  void stop();
  // The status line's action.
  void toggleRunning();
  // Makes the status line say what the state is. The status item and the line must exist.
  void refresh();
  // Switches automatic sorting off until start() succeeds, because the bookmarks cannot be read. Stores nothing.
  void pauseForAccess();
  // Sorts once, unattended, if sorting is on and nothing is in its way. Safari must be known to be closed.
  void tick();

  // --- Sorting around Safari (app/safari_orchestration.cpp) ---

  // The menu's command: sorts at once, or asks what to do about an open Safari.
  void sortNow();
  // Asks every Safari to quit, sorts unattended once all have, and opens Safari again if it was running. Gives up after
  // `quitDeadline`, and says so unless `quiet`. Returns at once; does nothing while a sort runs or an update waits.
  void closeSortReopen(bool quiet);
  // From now on follows each quit of Safari by its user with a sort, as long as the settings say so.
  void observeTerminations();

  // --- Schedule (schedule/) ---

  // What storedDays() answers.
  std::vector<int> selectedDays() const;
  // Whether the end of Safari is followed by a sort.
  bool sortOnQuit() const;
  // Arms the timer for the next scheduled sort by the settings as they are now, in the place of any earlier one.
  void scheduleDaily();
  // The same.
  void schedule();
  // From now on arms the timer anew whenever the machine wakes.
  void observeWake();

  // --- The schedule window (schedule/schedule_window.cpp) ---

  // Opens the window with what is stored, or brings the open one forward with what its user has changed.
  void showSchedule();
  // Enables what the schedule's check box and the chosen preset leave to be edited.
  void scheduleControlsChanged();
  // Checks the days of the chosen preset; "Selected days" leaves them as they are.
  void presetChanged();
  // Validates and stores what the controls say, closes the window and arms the timer anew. If it is not accepted, the
  // user is told and the window stays.
  void saveSchedule();
  // Closes the window; nothing is stored.
  void cancelSchedule();

  // --- The menu's other commands (app/menu_commands.cpp) ---

  void showAbout();
  void openWebsite();
  void support();
  // Shows the folder of the backups, which is made first if there is none yet.
  void openBackups();
  // Ends the program at once; a sequence that waits for Safari is given up.
  void quit();
  bool applicationShouldTerminate() override;
  // Checks the access to the bookmarks, for whoever wonders why nothing happens.
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

  // --- First-run setup (access/first_run_setup.cpp) ---

  // Refuses to run from a disk image, makes sure of access to the bookmarks, registers the login agent and arms the
  // timer. Returns before that if access has to be waited for.
  void setUp();

  // --- Updates (app/updates.cpp) ---

  void checkForUpdates();
  void toggleAutomaticUpdates();
  bool supportsGentleScheduledUpdateReminders() const override;
  // Puts a reminder of an update that a scheduled check has found into the menu and the tool tip.
  void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) override;
  void standardUserDriverDidReceiveUserAttention() override;
  void standardUserDriverWillFinishUpdateSession() override;
  // Blocks new sorts until the update session ends. If a sort is in progress answers true and calls `install` once when
  // it has ended; else answers false, and never calls it.
  bool shouldPostponeRelaunch(Work install) override;

  // --- State ---

  std::shared_ptr<UpdaterController> updaterController;
  std::shared_ptr<MenuItem> updateMenuItem;
  std::shared_ptr<MenuItem> automaticUpdateMenuItem;
  Observation updateObservation;
  bool updateInstallPending = false;       // an update waits to relaunch; no sort may start
  std::shared_ptr<Timer> updateWaitTimer;  // waits for the sort to end before the relaunch
  std::shared_ptr<StatusItem> item;
  std::shared_ptr<Timer> dailyTimer;  // the next scheduled sort; stays when it is invalidated, until the next arming
  std::shared_ptr<Timer> quitTimer;   // waits for Safari to quit
  std::shared_ptr<Window> settingsWindow;
  std::shared_ptr<Button> dailyToggle;
  std::shared_ptr<DatePicker> timePicker;
  std::shared_ptr<Button> quitToggle;
  std::shared_ptr<PopUpButton> dayPreset;
  std::vector<std::shared_ptr<Button>> dayButtons;
  std::vector<Observation> observers;
  std::set<int> ownQuitPIDs;  // processes of Safari that this program asked to quit and has not yet seen end
  std::shared_ptr<Window> aboutWindow;
  bool enabled;              // automatic sorting is on
  bool busy = false;         // a sort, or all that happens around one, is in progress
  bool needsAccess = false;  // the bookmark file could not be read
  std::shared_ptr<MenuItem> status;

 private:
  using Applications = std::vector<std::shared_ptr<RunningApplication>>;

  // What is to be read while no reminder of an update stands.
  static constexpr const char* normalToolTip = "Quillery";
  static constexpr const char* normalUpdateTitle = "Check for Updates…";

  void pollForQuit(Timer& timer, Instant deadline, const Applications& asked, bool quiet);
  void giveUpQuitting(const Applications& asked, bool quiet);
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
  // What calls one of the commands for as long as this lives.
  Action calling(void (SorterDelegate::*command)());
};
