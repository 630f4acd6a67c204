#include "tests/support/course.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "app/alert.h"
#include "app/bookmark_permission_controller.h"
#include "platform/error.h"
#include "tests/support/bookmark_trees.h"

namespace {

// Both are out of order, and they differ.
const std::string& unsortedBookmarks(bool hasThird) {
  static const std::string two = fileOf(rootNode({folderNode(u"BookmarksBar", {leafNode(u"b"), leafNode(u"a")})}));
  static const std::string three =
      fileOf(rootNode({folderNode(u"BookmarksBar", {leafNode(u"b"), leafNode(u"c"), leafNode(u"a")})}));
  return hasThird ? three : two;
}

std::string listOf(const Entries& acts) {
  std::string list;
  for (const std::string& act : acts) list += (list.empty() ? "" : ", ") + act;
  return list.empty() ? "nothing" : list;
}

}  // namespace

Course::Course(Chooser chooser) : choose_(std::move(chooser)) {
  watch();
  machine_.userInterface.willAnswerAll([this](const Alert& alert) { return answer(alert); });
}

Course::~Course() {
  isOver_ = true;
  endProgram();  // it is still watched
}

void Course::run() {
  while (!isOver_ && !pressed_) {
    const CourseEvent* const event = choose_(*this);
    isOver_ = event == nullptr;
    if (event != nullptr) happen(*event);
  }
}

void Course::happen(const CourseEvent& event) {
  try {
    event.happen(*this);
  } catch (const std::exception& error) {
    fail(std::string("the program threw: ") + error.what());
  }
}

void Course::fail(const std::string& what) {
  if (isOver_ || what.empty()) return;
  broken_ = what;
  isOver_ = true;
}

// --- The stretches from a stimulus until the program waits again ---

void Course::begin() {
  acts_.clear();
  model_.acts.clear();
}

void Course::end() {
  if (isOver_) return;
  if (acts_ != model_.acts) return fail("expected " + listOf(model_.acts) + "; the program did " + listOf(acts_));
  if (isRunning() && !isAtEnd_) fail(brokenInvariant());
  begin();
}

std::size_t Course::answer(const Alert& alert) {
  const std::size_t last = alert.buttons.empty() ? 0 : alert.buttons.size() - 1;
  if (isOver_) return last;
  dialogs_.push_back(alert);
  ++alerts_;
  end();
  run();
  if (isOver_) return last;
  const std::size_t button = std::exchange(pressed_, std::nullopt).value_or(last);
  dialogs_.pop_back();
  begin();
  model_.userClosesAlert(world(), alert.messageText, button);
  return button;
}

// --- The acts ---

void Course::watch() {
  for (const char* operation :
       {"running?", "read", "parse", "create folder", "bundle path", "write beside", "write atomically", "quit", "open",
        "alert", "after", "set", "printed", "show", "hide", "terminate"})
    machine_.journal.beforeEach(operation, [this, operation](const std::string& object) { began(operation, object); });
}

void Course::act(const std::string& act) {
  if (isOver_) return;
  acts_.push_back(act);
  if (whenActing) whenActing(act);
}

void Course::began(const std::string& operation, const std::string& object) {
  if (operation == "read") lastRead_ = object;
  goWrong(operation, object);
  if (const std::string done = actOf(operation, object); !done.empty()) act(done);
  if (operation != "write atomically" || object != bookmarks) return;
  if (safaris() > 0) fail("the bookmarks were written while Safari runs");
  if (isBusHung()) fail("the bookmarks were written while Safari may run");
  if (machine_.journal.count("write new") < ++writes_) fail("the bookmarks were written without a backup");
}

// The act that an operation is a sign of; empty if it is of no interest.
std::string Course::actOf(const std::string& operation, const std::string& object) const {
  if (operation == "parse") return lastRead_ == bookmarks ? "sort" : "";
  if (operation == "create folder") return object.find("LaunchAgents") != std::string::npos ? "register" : "";
  if (operation == "write atomically") return object == bookmarks ? "write" : "";
  if (operation == "set") return object.starts_with("sortingPaused") ? "set " + object : "";
  if (operation == "show" || operation == "hide") return object == "Quillery" ? operation + " access window" : "";
  if (operation == "printed") return "printed " + object.substr(0, object.find(':'));
  if (operation == "open") return "open Safari";
  if (operation == "quit" || operation == "alert" || operation == "after") return operation + " " + object;
  return operation == "terminate" ? operation : "";
}

void Course::goWrong(const std::string& operation, const std::string& object) {
  const auto isTime = [this](Fault fault) { return fault_ == fault && std::exchange(fault_, Fault::none) == fault; };
  // An attended sort asks for the program's path just before it asks again whether Safari is open.
  const bool isBeforeSecond = operation == "running?" ? automatic : operation == "bundle path" && controller_->busy;
  if (isBeforeSecond && isTime(Fault::safariStartsBefore)) startSafari();
  if (operation == "write beside" && isTime(Fault::safariStartsDuring)) startSafari();
  if (operation == "write beside" && isTime(Fault::bookmarksChange)) changeBookmarks();
  if (operation == "write beside" && isTime(Fault::busHangs)) hangBus(true);
  if (operation == "write atomically" && object == bookmarks && isTime(Fault::writeFails))
    throw Error("POSIX", EIO, "The write failed.");
}

// --- The main loop ---

bool Course::runNext(VirtualMainLoop::Duration within) {
  for (const VirtualMainLoop::Pending& next : machine_.loop.pending()) {
    if (next.isFiring) continue;
    if (next.remaining > within) return false;
    const auto wait = std::max(VirtualMainLoop::Duration::zero(), next.remaining);
    begin();
    machine_.loop.pass(wait);
    expectReactionTo(next);
    machine_.loop.runNext({});
    end();
    return true;
  }
  return false;
}

void Course::letPass(VirtualMainLoop::Duration duration) {
  const int alertsBefore = alerts_;
  const auto end = machine_.loop.uptime() + duration;
  while (!isOver_ && alerts_ == alertsBefore && runNext(end - machine_.loop.uptime())) continue;
  if (!isOver_ && alerts_ == alertsBefore) machine_.loop.pass(end - machine_.loop.uptime());
}

void Course::expectReactionTo(const VirtualMainLoop::Pending& next) {
  if (!controller_) return;
  const World now = world();
  const auto is = [&](const std::shared_ptr<Timer>& timer) { return next.timer && timer.get() == next.timer; };
  if (is(controller_->quitTimer) && model_.sequence) model_.quitIsPolled(now);
  if (is(controller_->dailyTimer)) model_.scheduledTimeComes(now, now.now + std::min(next.remaining, {}));
  if (is(controller_->updateWaitTimer)) model_.updateIsPolled();
  if (is(BookmarkPermissionController::shared()->timer)) model_.accessIsTriedAgain(now);
  if (next.description == "after 1000 ms") model_.delayAfterQuitPasses(now, controller_->sortOnQuit());
  if (next.description == "wake") model_.machineWakes(now);
  if (next.description == "post" && isSetUpQueued_) {
    isSetUpQueued_ = false;
    model_.setUpRuns(now);
  } else if (next.description == "post") {
    model_.userReopensProgram(now);
  }
  if (next.description.starts_with("termination of ")) {
    const int process = std::stoi(next.description.substr(15));
    if (process > 0) model_.processTerminates(process, controller_->sortOnQuit());
  }
}

// --- The program ---

void Course::launchProgram() {
  wasLaunched_ = true;
  const PlistValue paused = machine_.defaults.object("sortingPaused").value_or(false);
  stimulate([this] { launchWithSetUp(); }, &ControllerModel::programIsLaunched, paused.boolean().value_or(false));
  isSetUpQueued_ = true;
  while (isSetUpQueued_ && runNext({})) continue;
}

void Course::quitProgram() {
  isAtEnd_ = true;
  stimulate([this] { controller_->quit(); }, &ControllerModel::userQuitsProgram);
  for (const auto& timer : {controller_->quitTimer, controller_->dailyTimer})
    if (timer && timer->isValid()) fail("a timer outlives the program");
  if (!dialogs_.empty()) return;
  endProgram();
  model_.programIsLaunched(false);
  isAtEnd_ = false;
}

void Course::updateAsks() {
  const bool wasBusy = model_.busy;
  bool isPostponed = false;
  const auto ask = [&] { isPostponed = controller_->shouldPostponeRelaunch([this] { act("install"); }); };
  stimulate(ask, &ControllerModel::updateAsksToRelaunch);
  if (isPostponed != wasBusy) fail("the update is not postponed exactly while a sort is in progress");
}

void Course::breakLoginSetUp() {
  isLoginSetUpBroken_ = true;
  machine_.processes.willAnswer("bootstrap", 5);
  machine_.processes.willAnswer("print", 5);
}

void Course::changeBookmarks() {
  machine_.files.put(bookmarks, unsortedBookmarks(machine_.files.content(bookmarks) == unsortedBookmarks(false)));
}

bool Course::isInOrder() const {
  const std::string& content = machine_.files.content(bookmarks);
  return content != unsortedBookmarks(false) && content != unsortedBookmarks(true);
}

bool Course::isScheduleOn() const {
  const auto& values = machine_.defaults.values();
  const auto found = values.find("dailyEnabled");
  return found != values.end() && found->second == PlistValue(true);
}

World Course::world() const {
  World world{.now = machine_.loop.clock(),
              .isReadable = isReadable(),
              .isInOrder = isReadable() && isInOrder(),
              .fault = fault_,
              .isLoginSetUpBroken = isLoginSetUpBroken_,
              .safaris = {},
              .isSafariUnknown = isBusHung()};
  for (const auto& process : machine_.applications.processes())
    world.safaris.push_back({process.number, process.behavior.isRefused});
  return world;
}
