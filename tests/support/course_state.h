// The state at a moment of a course as text: equal texts have equal futures.
#pragma once

#include <string>

class Course;

// Names everything that can matter to what may follow. Times are relative to now, processes are numbered in the order
// of their appearance, and what is further away than the events of a course can reach is only "far".
std::string stateOf(const Course& course);
