#include "tests/support/course_explorer.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <unordered_set>

#include "tests/support/course_state.h"

namespace {

// The processor time of this process: how far an exploration gets does not depend on what else runs.
std::chrono::microseconds processorTime() {
  return std::chrono::microseconds(static_cast<std::int64_t>(std::clock()) * 1'000'000 /
                                   static_cast<std::int64_t>(CLOCKS_PER_SEC));
}

// A course is the numbers of its events, and it remembers those that are possible after it.
using Numbers = std::basic_string<char>;
struct Known {
  Numbers course;
  Numbers possible;
};

class Explorer {
 public:
  Explorer(const std::vector<CourseEvent>& events, const ExplorationBounds& bounds)
      : events_(events), bounds_(bounds), end_(processorTime() + bounds.time) {}

  Exploration explore() {
    std::vector<Known> frontier = {{}};
    for (char number = 0; number < static_cast<char>(events_.size()); ++number)
      frontier.front().possible.push_back(number);
    // The launch comes first.
    for (std::size_t length = 0; length <= bounds_.events && !frontier.empty(); ++length) {
      std::vector<Known> next;
      for (const Known& known : frontier)
        if (!extend(known, next)) return found_;
      found_.states.push_back(next.size());
      found_.completeEvents = length;
      frontier = std::move(next);
    }
    return found_;
  }

 private:
  // Tries every event after a course. Returns false if the exploration is over.
  bool extend(const Known& known, std::vector<Known>& next) {
    for (const char number : known.possible) {
      if (processorTime() >= end_) return false;
      Known longer{known.course + number, {}};
      if (!tryCourse(longer)) return false;
      if (!longer.possible.empty()) next.push_back(std::move(longer));
    }
    return true;
  }

  // Plays a course. Fills its possible events if it leads to a new state. Returns false if something is broken.
  bool tryCourse(Known& known) {
    std::size_t played = 0;
    std::string state;
    Numbers possible;
    Course course([&](const Course& now) -> const CourseEvent* {
      if (played < known.course.size()) return &event(known.course[played++]);
      state = stateOf(now);
      possible = possibleAfter(now);
      return nullptr;
    });
    // The launch may be impossible only in an empty course.
    if (known.course.size() == 1 && !event(known.course[0]).isPossible(course)) return true;
    course.run();
    ++found_.courses;
    ++found_.events[event(known.course.back()).name];
    if (!course.broken().empty()) {
      found_.broken = course.broken();
      for (const char number : known.course) found_.course.emplace_back(event(number).name);
      return false;
    }
    if (states_.insert(std::hash<std::string>()(state)).second) known.possible = possible;
    return true;
  }

  Numbers possibleAfter(const Course& course) const {
    Numbers possible;
    for (std::size_t number = 0; number < events_.size(); ++number)
      if (events_[number].isPossible(course)) possible.push_back(static_cast<char>(number));
    return possible;
  }

  const CourseEvent& event(char number) const { return events_[static_cast<std::size_t>(number)]; }

  const std::vector<CourseEvent>& events_;
  ExplorationBounds bounds_;
  std::chrono::microseconds end_;
  std::unordered_set<std::size_t> states_;  // their hashes; of a million, two are equal with a chance of 1 : 30 million
  Exploration found_;
};

}  // namespace

Exploration explore(const std::vector<CourseEvent>& events, const ExplorationBounds& bounds) {
  return Explorer(events, bounds).explore();
}

std::string asTest(const Exploration& exploration) {
  std::string test = "TEST(Courses, keepTheInvariants) {\n  EXPECT_EQ(play({";
  for (const std::string& name : exploration.course)
    test += (&name == &exploration.course.front() ? "\"" : ",\n                  \"") + name + '"';
  return test + "}),\n            \"\");\n}\n";
}
