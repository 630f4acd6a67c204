// Running the event loop in a test.
#pragma once

#include <chrono>
#include <functional>

// Runs it until the condition holds, which is asked after every turn and at least every few milliseconds. Answers
// whether it does; not if patience runs out first.
bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience = std::chrono::seconds(20));
