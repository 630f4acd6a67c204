// Every course of events to a bound, and ten thousand random ones that are longer. Both play the events of
// tests/support/course_events.cpp and compare the controller with tests/support/controller_model.cpp.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/course_events.h"
#include "tests/support/course_explorer.h"
#include "tests/support/random_seed.h"

namespace {

using namespace std::chrono_literals;

// Without QUILLERY_COURSE_SECONDS, every course of so many events after the launch.
constexpr std::size_t shortBound = 3;
constexpr std::size_t noBound = 1000;

constexpr int mostRandomEvents = 30;

using Tally = std::map<std::string, std::size_t>;

// How much processor time to explore for; none for the short bound.
std::optional<std::chrono::seconds> explorationTime() {
  const char* seconds = std::getenv("QUILLERY_COURSE_SECONDS");
  return seconds != nullptr ? std::optional(std::chrono::seconds(std::strtol(seconds, nullptr, 10))) : std::nullopt;
}

void print(const Tally& tally) {
  for (const auto& [what, count] : tally) std::printf("%9zu  %s\n", count, what.c_str());
}

void print(const Exploration& found) {
  print(found.events);
  std::size_t all = 0;
  for (std::size_t length = 0; length < found.states.size(); ++length) {
    all += found.states[length];
    std::printf("%9zu states after %zu events that fewer do not reach\n", found.states[length], length);
  }
  std::printf("%zu courses from %zu states; every course of %zu events was tried\n", found.courses, all,
              found.completeEvents);
}

TEST(Courses, allKeepEveryInvariant) {
  const auto seconds = explorationTime();
  const Exploration found =
      explore(courseEvents(), seconds ? ExplorationBounds{noBound, *seconds} : ExplorationBounds{shortBound, 1h});
  print(found);
  EXPECT_EQ(found.broken, "") << asTest(found);
  if (found.completeEvents < shortBound) return;
  for (const CourseEvent& event : courseEvents()) EXPECT_TRUE(found.events.contains(event.name)) << event.name;
}

// --- The explorer itself ---

// Some events, and a mistake that the controller does not make.
std::vector<CourseEvent> eventsAndAMistake(const std::vector<std::string>& names) {
  std::vector<CourseEvent> events;
  events.reserve(names.size() + 1);
  for (const std::string& name : names) events.push_back(courseEvent(name));
  const auto isWaiting = [](const Course& course) { return course.model().sequence.has_value(); };
  events.push_back({"busyIsForgotten", isWaiting,
                    [](Course& course) { course.happensOutside([&] { course.controller_->busy = false; }); }});
  return events;
}

TEST(Courses, explorerFindsTheShortestCourseToAMistake) {
  const Exploration found = explore(
      eventsAndAMistake({"launch", "minutePasses", "safariStarts", "userSortsNow", "userPressesFirstButton"}), {9, 1h});
  EXPECT_EQ(found.broken, "not busy in a sort");
  EXPECT_EQ(asTest(found), R"(TEST(Courses, keepTheInvariants) {
  EXPECT_EQ(play({"launch",
                  "safariStarts",
                  "userSortsNow",
                  "userPressesFirstButton",
                  "busyIsForgotten"}),
            "");
}
)");
}

TEST(Courses, explorerVisitsEqualStatesOnce) {
  const std::vector<CourseEvent> events = {courseEvent("launch"), courseEvent("userTogglesSorting")};
  const Exploration found = explore(events, {9, 1h});
  EXPECT_EQ(found.states, (std::vector<std::size_t>{1, 1, 0})) << "running and stopped";
  EXPECT_EQ(found.courses, 3);
}

TEST(Courses, explorerStopsInTime) {
  const Exploration found = explore(courseEvents(), {noBound, 0ms});
  EXPECT_EQ(found.courses, 0);
  EXPECT_EQ(found.completeEvents, 0);
}

TEST(Courses, playReportsActsThatTheModelDoesNotExpect) {
  EXPECT_EQ(play({"launch", "safariStarts", "userSortsNow", "userPressesFirstButton", "minutePasses"}), "");
  Course course([started = false](const Course&) mutable -> const CourseEvent* {
    static const CourseEvent secretSort{"secretSort", {}, [](Course& secret) {
                                          secret.happensOutside([&] { secret.controller_->closeSortReopen(true); });
                                        }};
    return std::exchange(started, true) ? &secretSort : &courseEvent("launch");
  });
  course.run();
  EXPECT_EQ(course.broken(), "expected nothing; the program did sort, write, printed Bookmarks sorted");
}

// --- Random courses ---

// One random course: longer than the explored ones, with random times. In the end, everything finishes.
class RandomCourse {
 public:
  RandomCourse(unsigned seed, unsigned number, Tally& tally) : tally_(tally) {
    std::seed_seq seeds{seed, number};
    random_.seed(seeds);
  }

  void run() {
    events_ = below(mostRandomEvents) + 1;
    Course course([this](const Course& now) { return next(now); });
    course.whenActing = [this](const std::string& act) { ++tally_[act.starts_with("quit ") ? "quit" : act]; };
    course.run();
    EXPECT_EQ(course.broken(), "") << names_;
    if (!course.isRunning() || course.isAtEnd()) return;
    EXPECT_FALSE(course.model().busy);
    EXPECT_FALSE(course.model().isUpdateWaiting);
    EXPECT_TRUE(!course.world().safaris.empty() || course.model().ownQuits.empty());
  }

 private:
  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }
  bool chance(int oneIn) { return below(oneIn) == 0; }
  template <class Choices>
  const auto& oneOf(const Choices& choices) {
    return choices.at(static_cast<std::size_t>(below(static_cast<int>(choices.size()))));
  }
  std::chrono::milliseconds milliseconds(int limit) { return std::chrono::milliseconds(below(limit)); }

  const CourseEvent* next(const Course& course) {
    const CourseEvent* const event = events_-- > 0 ? chosen(course) : settling(course);
    if (event != nullptr) names_ += std::string(event->name) + '\n';
    return event;
  }

  const CourseEvent* chosen(const Course& course) {
    if (course.isRunning() && !course.isAtEnd() && chance(4)) return &oneOf(randomEvents_);
    std::vector<const CourseEvent*> possible = possibleEvents(course);
    // In a dialog, that would end the course.
    if (!course.dialogs().empty()) std::erase(possible, &courseEvent("userQuitsProgram"));
    return possible.empty() ? nullptr : oneOf(possible);
  }

  // Closes the dialogs and lets time pass while the user quits Safari.
  const CourseEvent* settling(const Course& course) {
    if (!course.isRunning() || course.isAtEnd()) return nullptr;
    if (!course.dialogs().empty()) return &lastButton(course);
    const bool isSettled = ++minutes_ > 3 && !course.model().busy;
    return isSettled || minutes_ > 10 ? nullptr : &minute_;
  }
  static const CourseEvent& lastButton(const Course& course) {
    static const std::array<const CourseEvent*, 3> buttons = {&courseEvent("userPressesFirstButton"),
                                                              &courseEvent("userPressesSecondButton"),
                                                              &courseEvent("userPressesThirdButton")};
    const std::size_t count = course.dialogs().back().buttons.size();
    return *buttons.at(count > 0 ? count - 1 : 0);
  }

  Tally& tally_;
  std::mt19937 random_;
  int events_ = 0;
  int minutes_ = 0;
  std::string names_;

  QuitBehavior someBehavior() {
    QuitBehavior behavior;
    behavior.isRefused = chance(8);
    behavior.quitsAfter = milliseconds(50'000);
    if (chance(2)) behavior.quitsAfter = milliseconds(2'000);
    if (chance(6)) behavior.quitsAfter = std::nullopt;
    if (chance(6)) behavior.restartsAfter = milliseconds(5'000);
    return behavior;
  }
  void damageSettings(Course& course) {
    static const std::array<PlistValue, 7> values = {u"YES",  7,           0.5,  PlistValue::array({u"a"}),
                                                     Bytes(), PlistDate{}, false};
    static const std::array<std::string, 5> keys = {"sortOnSafariQuit", "scheduleDays", "dailyEnabled", "dailyHour",
                                                    "dailyMinute"};
    course.machine_.defaults.put(oneOf(keys), oneOf(values));
  }
  void sleep(Course& course) {
    const auto place = chance(2) ? VirtualMainLoop::Place::front : VirtualMainLoop::Place::back;
    course.happensOutside([&] { course.machine_.sleep(milliseconds(100'000'000), place); });
  }
  void setClock(Course& course) {
    course.machine_.loop.setClock(course.machine_.loop.clock() + milliseconds(7'200'000) - 1h);
  }

  // What has no random counterpart among the events of every course.
  const std::vector<CourseEvent> randomEvents_ = {
      {"someTimePasses", {}, [this](Course& course) { course.letPass(milliseconds(chance(3) ? 120'000 : 2'000)); }},
      {"threadIsOccupied", {}, [this](Course& course) { course.machine_.loop.occupy(milliseconds(200'000)); }},
      {"machineSleeps", {}, [this](Course& course) { sleep(course); }},
      {"clockIsSet", {}, [this](Course& course) { setClock(course); }},
      {"someSafariStarts",
       {},
       [this](Course& course) { course.happensOutside([&] { course.startSafari(someBehavior()); }); }},
      {"settingsAreDamaged", {}, [this](Course& course) { damageSettings(course); }},
  };
  const CourseEvent minute_{"minutePassesWithoutSafari", {}, [](Course& course) {
                              course.hangBus(false);
                              course.happensOutside([&] { course.machine_.applications.end(safari); });
                              course.letPass(1min);
                            }};
};

// What courses must contain, because courses in which little happens would prove nothing.
void expectAllActs(const Tally& acts, std::size_t least) {
  for (const char* act : {"sort",
                          "write",
                          "quit",
                          "open Safari",
                          "install",
                          "after 1000 ms",
                          "register",
                          "terminate",
                          "show access window",
                          "hide access window",
                          "alert Safari is open",
                          "alert Safari did not close",
                          "alert Choose a day",
                          "alert Bookmarks sorted",
                          "alert Already sorted",
                          "alert Safari is still open",
                          "alert Bookmarks could not be sorted",
                          "alert Login setup failed",
                          "printed Bookmarks sorted",
                          "printed Bookmarks could not be sorted",
                          "set sortingPaused true",
                          "set sortingPaused false"}) {
    const auto found = acts.find(act);
    EXPECT_GE(found == acts.end() ? 0 : found->second, least) << act << ": too rare to prove anything";
  }
}

TEST(Courses, randomOnesKeepEveryInvariant) {
  const unsigned seed = randomSeed();
  const unsigned rounds = randomRounds();
  Tally tally;
  for (unsigned number = 0; number < rounds && !testing::Test::HasFailure(); ++number) {
    SCOPED_TRACE("QUILLERY_SEED=" + std::to_string(seed) + ", course " + std::to_string(number));
    RandomCourse(seed, number, tally).run();
  }
  print(tally);
  expectAllActs(tally, rounds / 1000);
}

}  // namespace
