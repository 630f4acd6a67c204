// Asking one process of an application to quit normally.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

// Whom to ask. A bus gives a unique name to one connection only, so a connection that is still there, with the same
// process, is that very process, whatever has become of process identifiers meanwhile.
struct QuitAddressee {
  std::string identifier;                // the application's: its name on the session bus
  std::uint32_t process = 0;             // as the bus numbers it
  std::vector<std::string> connections;  // the process's own, by their unique names; tried in this order
};

// Activates the application's action "quit" through org.freedesktop.Application, at the object that its identifier
// makes ("/com/example/web_browser" for com.example.web-browser). If it does not know that interface, or says through
// org.gtk.Actions that it has no such action, the process gets SIGTERM instead, and never anything stronger. Starts no
// application.
//
// Answers whether the request was delivered: false if the process has left, if it may not be spoken to or not be
// signalled, or if the bus does not answer. All of it takes no longer than `patience`. The application has a quarter of
// that for each answer; one that does not answer is not signalled, because it may be busy with work that a signal would
// lose. The request to activate the action waits for it, and so counts as delivered.
bool requestQuit(const QuitAddressee& addressee, std::chrono::microseconds patience);
