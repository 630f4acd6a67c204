// Work done in a process of its own, for what would otherwise change the whole test program: its user, its limits,
// its view of the file systems.
#pragma once

#include <functional>
#include <string>

// Runs `work` in a forked process and answers what it returned. Fails the test if the process ends in another way.
std::string inChildProcess(const std::function<std::string()>& work);

// The same as a user without privileges, so that permissions count even if the superuser runs the tests.
std::string inUnprivilegedProcess(const std::function<std::string()>& work);

// Gives the current process mounts of its own, which end with it. Answers the empty string, or why it cannot.
std::string separateMounts();
