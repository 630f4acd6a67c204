// Runs work in a forked process, if it would otherwise change the user, the limits or the mounts of the test program.
#pragma once

#include <functional>
#include <string>

// Runs `work` in a forked process and returns its result. Fails the test if the process ends in another way. The work
// may not use Foundation, which a process that forked cannot.
std::string inChildProcess(const std::function<std::string()>& work);

// The ID of the user and group "nobody".
inline constexpr unsigned unprivilegedUser = 65534;

// Does the same without privileges, so that permissions have an effect: as unprivilegedUser if the superuser runs the
// tests, otherwise as the current user.
std::string inUnprivilegedProcess(const std::function<std::string()>& work);
