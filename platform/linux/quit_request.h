// Requesting one process of an application to quit normally.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

// The process to quit. A bus never reuses the unique name of a connection, so a connection that still exists and has
// the same process ID belongs to the same process, even if process IDs are reused.
struct QuitTarget {
  std::string identifier;                // the application's bus name
  std::uint32_t process = 0;             // its ID, as reported by the bus
  std::vector<std::string> connections;  // the unique names of the process's connections; tried in this order
};

// Activates the application's action "quit" through org.freedesktop.Application, at the object path of its identifier
// (see objectPath). If the application does not have that interface, or org.gtk.Actions does not list the action, sends
// SIGTERM instead, and never a stronger signal. Never starts an application.
//
// Returns true if the request was delivered; false if the process has ended, if permission to call or signal it is
// denied, or if the bus does not reply. Returns within `timeout`, of which each reply of the application may take a
// quarter. An application that does not reply gets no signal, because it may be busy with work that a signal would
// lose. The activation stays in its queue, and so counts as delivered.
bool requestQuit(const QuitTarget& target, std::chrono::microseconds timeout);
