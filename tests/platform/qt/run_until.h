// Runs the event loop in a test.
#pragma once

#include <chrono>
#include <functional>

// Runs the loop until the condition holds, and checks it after every turn and at least every few milliseconds. Returns
// false if the timeout passes first.
bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = std::chrono::seconds(20));
