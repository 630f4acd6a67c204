// One course of events: everything that can happen to the controller, one event at a time, also while dialogs are open.
// After each event, before each dialog and after each thing that the main loop runs, the controller is compared with
// its model and the invariants are checked.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/controller_model.h"
#include "tests/support/controller_test.h"

class Course;

// Something that can happen. The table of all events is in course_events.cpp.
struct CourseEvent {
  const char* name;
  std::function<bool(const Course& course)> isPossible;
  std::function<void(Course& course)> happen;
};

class Course : public ControllerMachine {
 public:
  // Chooses the next event. None ends the course: what is open then unwinds unwatched.
  using Chooser = std::function<const CourseEvent*(const Course& course)>;

  explicit Course(Chooser chooser);
  ~Course();
  Course(const Course&) = delete;
  Course& operator=(const Course&) = delete;

  // Lets events happen until the chooser ends the course or something is wrong.
  void run();

  // What is wrong; empty if nothing is. Filled once: what follows may be a consequence.
  const std::string& broken() const { return broken_; }
  // Called with each act of the program, see ControllerModel::acts.
  std::function<void(const std::string& act)> whenActing;

  // --- For events ---

  // Performs a stimulus of the controller. `expect` changes the model as the controller must change.
  template <class... Parameters, class... Arguments>
  void stimulate(const std::function<void()>& stimulus, void (ControllerModel::*expect)(Parameters...),
                 Arguments&&... arguments) {
    begin();
    (model_.*expect)(std::forward<Arguments>(arguments)...);
    stimulus();
    end();
  }
  // The same for an event that must not make the program do anything.
  void happensOutside(const std::function<void()>& event) { stimulate(event, &ControllerModel::nothingHappens); }

  // Runs the main loop for this long, or until a dialog was open.
  void letPass(VirtualMainLoop::Duration duration);
  // Runs the next thing if the main loop has one within this duration.
  bool runNext(VirtualMainLoop::Duration within);
  void launchProgram();
  void quitProgram();
  // The user presses a button of the innermost dialog.
  void press(std::size_t button) { pressed_ = button; }
  void updateAsks();
  void prepare(Fault fault) { fault_ = fault; }
  void breakLoginSetUp();
  void changeBookmarks();
  // While the bus hangs, nobody replies whether Safari runs.
  void hangBus(bool isHung) { machine_.applications.setUnresponsive(isHung); }

  World world() const;
  const ControllerModel& model() const { return model_; }
  bool isRunning() const { return controller_ != nullptr; }
  bool wasLaunched() const { return wasLaunched_; }
  // The program was quit from within a dialog, so that nothing more can happen.
  bool isAtEnd() const { return isAtEnd_; }
  bool isReadable() const { return machine_.files.files().contains(bookmarks); }
  bool isInOrder() const;
  // True if the settings schedule a daily sort.
  bool isScheduleOn() const;
  Fault fault() const { return fault_; }
  bool isBusHung() const { return machine_.applications.isUnresponsive(); }
  bool isLoginSetUpBroken() const { return isLoginSetUpBroken_; }
  // The open dialogs, the innermost last.
  const std::vector<Alert>& dialogs() const { return dialogs_; }

  using ControllerMachine::controller_;
  using ControllerMachine::machine_;
  using ControllerMachine::putUnsortedBookmarks;
  using ControllerMachine::removeBookmarks;
  using ControllerMachine::saveSchedule;
  using ControllerMachine::startSafari;
  using ControllerMachine::status_;
  using ControllerMachine::storeDaily;

 private:
  void happen(const CourseEvent& event);
  void watch();
  void began(const std::string& operation, const std::string& object);
  void act(const std::string& act);
  std::string actOf(const std::string& operation, const std::string& object) const;
  void goWrong(const std::string& operation, const std::string& object);
  std::size_t answer(const Alert& alert);
  void expectReactionTo(const VirtualMainLoop::Pending& next);
  void begin();
  void end();
  // Returns a sentence about the first thing that is wrong while the program waits, see course_invariants.cpp; empty if
  // nothing is.
  std::string brokenInvariant() const;
  void fail(const std::string& what);

  Chooser choose_;
  ControllerModel model_;
  Entries acts_;
  std::vector<Alert> dialogs_;
  int alerts_ = 0;  // so far
  std::optional<std::size_t> pressed_;
  std::string lastRead_;  // a path
  int writes_ = 0;        // of the bookmarks
  Fault fault_ = Fault::none;
  bool wasLaunched_ = false;
  bool isLoginSetUpBroken_ = false;
  bool isSetUpQueued_ = false;
  bool isAtEnd_ = false;
  bool isOver_ = false;
  std::string broken_;
};
