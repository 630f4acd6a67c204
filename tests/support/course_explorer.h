// Every course of events to a bound, breadth first: from each state that was not reached before, every possible event.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/course.h"

struct ExplorationBounds {
  std::size_t events = 0;            // the length of the longest courses, without the launch
  std::chrono::milliseconds time{};  // of the processor; no course begins later
};

struct Exploration {
  std::size_t courses = 0;
  std::vector<std::size_t> states;            // new states after the launch, after one event, and so on
  std::size_t completeEvents = 0;             // every course of so many events was tried
  std::map<std::string, std::size_t> events;  // how often each event happened last in a course
  std::string broken;                         // what is broken in the shortest broken course; empty if there is none
  std::vector<std::string> course;            // that course
};

// Explores the courses of these events until a bound is reached or something is broken.
Exploration explore(const std::vector<CourseEvent>& events, const ExplorationBounds& bounds);

// That course as a test that can be pasted.
std::string asTest(const Exploration& exploration);
