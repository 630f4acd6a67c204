// Everything that can happen in a course of events.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/course.h"

// No event lets so much time pass, unless it leads to the scheduled time.
inline constexpr std::chrono::minutes farAway{20};

// All events. A course begins with one of the launches, after which no other of these is possible.
const std::vector<CourseEvent>& courseEvents();

// The event of this name. Throws if there is none.
const CourseEvent& courseEvent(const std::string& name);

// The events that are possible now.
std::vector<const CourseEvent*> possibleEvents(const Course& course);

// Plays the events of these names. Returns what is broken; empty if nothing is.
std::string play(const std::vector<std::string>& names);
